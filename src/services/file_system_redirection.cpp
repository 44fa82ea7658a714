#include "services/file_system_redirection.h"

#include "platform/wow64.h"
#include "services/memory.h"

namespace tollan::services {
namespace {

constexpr unsigned kInitialCapacity = 4;

bool applyToSystem(bool enable) noexcept
{
    return platform::enableFileSystemRedirection(enable);
}

RedirectionStack &threadStack() noexcept
{
    thread_local RedirectionStack stack(applyToSystem);
    return stack;
}

}  // namespace

RedirectionStack::~RedirectionStack()
{
    freeBlock(states_);
}

bool RedirectionStack::push(bool enable) noexcept
{
    if (size_ == capacity_) {
        const unsigned capacity = capacity_ == 0 ? kInitialCapacity : capacity_ * 2;
        auto *grown = static_cast<unsigned char *>(resizeBlock(states_, capacity));
        if (grown == nullptr) return false;
        states_ = grown;
        capacity_ = capacity;
    }
    states_[size_++] = enable ? 1 : 0;
    return apply_(enable);
}

bool RedirectionStack::pop() noexcept
{
    const bool previous = size_ < 2 ? true : states_[size_ - 2] != 0;
    if (size_ > 0) --size_;
    return apply_(previous);
}

bool pushFileSystemRedirection(bool enable) noexcept
{
    return threadStack().push(enable);
}

bool popFileSystemRedirection() noexcept
{
    return threadStack().pop();
}

}  // namespace tollan::services
