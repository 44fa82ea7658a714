// The multimedia timer service: events are served by their deadlines.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "platform/multimedia_timer.h"

using namespace tollan::platform;

namespace {

// Notes the order in which one-shot events reach their targets.
struct ServedOrder {
    std::atomic<int> served{0};
    std::atomic<int> slotOf[3] = {-1, -1, -1};
};

struct Slot {
    ServedOrder *order;
    int index;
    TimerEventTarget target{&Slot::fire, this};

    static void fire(uint32_t, void *context) noexcept
    {
        auto *slot = static_cast<Slot *>(context);
        slot->order->slotOf[slot->index] = slot->order->served.fetch_add(1);
    }
};

}  // namespace

TEST(MultimediaTimer, ShorterDelaysSetLaterAreServedFirst)
{
    std::unique_ptr<MultimediaTimer> service = MultimediaTimer::load();
    ASSERT_NE(service, nullptr);
    ServedOrder order;
    Slot slots[3] = {{&order, 0}, {&order, 1}, {&order, 2}};
    // Set longest first: served in the order they were set, they would come 0, 1, 2.
    const uint32_t delaysMs[3] = {300, 30, 150};
    uint32_t ids[3] = {};
    for (int i = 0; i < 3; ++i) ids[i] = service->setEvent(delaysMs[i], 1, &slots[i].target, false);

    // The deadlines decide the order whenever the events are served, so a
    // slow machine only makes this wait longer.
    for (int i = 0; i < 500 && order.served.load() < 3; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    for (uint32_t id : ids)
        if (id != 0) service->killEvent(id);  // a spent event is refused, which is fine
    for (uint32_t id : ids) ASSERT_NE(id, 0u);
    ASSERT_EQ(order.served.load(), 3);
    EXPECT_EQ(order.slotOf[1].load(), 0);
    EXPECT_EQ(order.slotOf[2].load(), 1);
    EXPECT_EQ(order.slotOf[0].load(), 2);
}
