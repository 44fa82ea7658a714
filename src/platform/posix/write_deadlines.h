// Ends serial writes that block in the kernel when their time-out runs out.
// A terminal write has no time-out of its own, and waiting for room in
// poll() between non-blocking writes costs a third of a fast line's
// throughput; so writes block in write() and one thread for the process
// watches their deadlines. An armed deadline costs two atomic stores: the
// thread is woken only when a deadline comes earlier than the one it sleeps
// to, so a stream of writes wakes it about once per time-out.
#pragma once

#include <atomic>
#include <cstdint>

namespace tollan::platform::posix {

// A device whose writes may be ended at their deadline.
class WriteDeadline {
public:
    // Called on the watching thread, once per passed deadline, while the
    // device is watched: it must make the blocked write return.
    virtual void deadlinePassed() noexcept = 0;

    // Monotonic nanoseconds; 0 when no write waits with a time-out, or when
    // the deadline has passed and deadlinePassed() was called.
    std::atomic<int64_t> dueNs{0};

protected:
    ~WriteDeadline() = default;
};

// Adds a device to the watched ones; false when there is no memory.
bool watchWriteDeadlines(WriteDeadline *device) noexcept;
// Removes it; when this returns, deadlinePassed() is neither running nor
// called again for it.
void unwatchWriteDeadlines(WriteDeadline *device) noexcept;
// Arms the device's deadline `timeoutMs` from now; false when the watching
// thread cannot be started.
bool armWriteDeadline(WriteDeadline *device, uint32_t timeoutMs) noexcept;

}  // namespace tollan::platform::posix
