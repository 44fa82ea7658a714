// Events: process-local ones on the heap, named ones in a shared region so
// that other processes of the user can wait on them and set them.
#include "platform/event.h"

#include <new>

#include "platform/posix/event_state.h"
#include "platform/posix/named_region.h"

namespace tollan::platform {

namespace {

using posix::EventState;

class LocalEvent final : public Event {
public:
    LocalEvent() = default;
    ~LocalEvent() override { posix::destroyEventState(&state_); }
    bool init(bool manualReset, bool initiallySet) noexcept
    {
        return posix::initEventState(&state_, manualReset, initiallySet, false);
    }
    void set() noexcept override { posix::setEvent(&state_); }
    void reset() noexcept override { posix::resetEvent(&state_); }
    WaitResult wait(uint32_t timeoutMs) noexcept override { return posix::waitEvent(&state_, timeoutMs); }

private:
    EventState state_{};
};

// Lives in shared memory, which other processes may still use after this
// one closes it: the state is never destroyed, only unmapped.
class NamedEvent final : public Event {
public:
    explicit NamedEvent(std::unique_ptr<posix::NamedRegion> region) noexcept
        : region_(std::move(region)), state_(static_cast<EventState *>(region_->payload()))
    {
    }
    void set() noexcept override { posix::setEvent(state_); }
    void reset() noexcept override { posix::resetEvent(state_); }
    WaitResult wait(uint32_t timeoutMs) noexcept override { return posix::waitEvent(state_, timeoutMs); }

private:
    std::unique_ptr<posix::NamedRegion> region_;
    EventState *state_;
};

struct EventSetup {
    bool manualReset;
    bool initiallySet;
};

bool initSharedState(void *payload, void *context) noexcept
{
    const auto *setup = static_cast<const EventSetup *>(context);
    return posix::initEventState(new (payload) EventState{}, setup->manualReset, setup->initiallySet, true);
}

std::unique_ptr<Event> acquireNamed(const char *name, bool createIfMissing, EventSetup setup) noexcept
{
    auto region = posix::NamedRegion::acquire(posix::RegionKind::event, name, sizeof(EventState),
                                              createIfMissing, initSharedState, &setup);
    if (!region) return nullptr;
    return std::unique_ptr<Event>(new (std::nothrow) NamedEvent(std::move(region)));
}

}  // namespace

std::unique_ptr<Event> Event::create(bool manualReset, bool initiallySet, const char *name) noexcept
{
    if (name) return acquireNamed(name, true, {manualReset, initiallySet});
    std::unique_ptr<LocalEvent> event(new (std::nothrow) LocalEvent);
    if (!event || !event->init(manualReset, initiallySet)) return nullptr;
    return event;
}

std::unique_ptr<Event> Event::open(const char *name) noexcept
{
    if (!name) return nullptr;
    return acquireNamed(name, false, {});
}

}  // namespace tollan::platform
