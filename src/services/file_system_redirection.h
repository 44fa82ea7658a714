// Switching the WOW64 file-system redirection for a stretch of code and back
// again. Redirection belongs to the calling thread, so each thread keeps its
// own stack of the states it asked for (a byte each; room for 4 at first,
// doubled when full). Without WOW64 the switching does nothing and reports
// so; the stack is kept all the same.
#pragma once

namespace tollan::services {

// Records `enable` and applies it. True when the system made the switch.
bool pushFileSystemRedirection(bool enable) noexcept;
// Drops the state pushed last and applies the one before it (redirection on,
// the system's default, when fewer than two were pushed). True when the
// system made the switch.
bool popFileSystemRedirection() noexcept;

// The stack behind them, with the switching passed in, for tests.
class RedirectionStack {
public:
    using Apply = bool (*)(bool enable) noexcept;
    explicit RedirectionStack(Apply apply) noexcept : apply_(apply) {}
    ~RedirectionStack();
    RedirectionStack(const RedirectionStack &) = delete;
    RedirectionStack &operator=(const RedirectionStack &) = delete;

    // False without applying when there is no memory to record the state.
    bool push(bool enable) noexcept;
    bool pop() noexcept;
    unsigned size() const noexcept { return size_; }
    unsigned capacity() const noexcept { return capacity_; }

private:
    Apply apply_;
    unsigned char *states_ = nullptr;
    unsigned size_ = 0;
    unsigned capacity_ = 0;
};

}  // namespace tollan::services
