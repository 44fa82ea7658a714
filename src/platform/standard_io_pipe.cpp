// The standard I/O pipe's name and switch, the same on every system; the
// backends own the pipe itself.
#include "platform/standard_io_pipe.h"

#include <atomic>
#include <cstdio>

namespace tollan::platform {
namespace {

constexpr char kBaseName[] = "\\\\.\\pipe\\Vantrel - ZOR Standard IO Pipe";

// Read without a lock on every write to standard output; the backends read it
// again under their own lock, so that a write never opens the pipe after the
// switch went off and the pipe was closed.
std::atomic<bool> switchedOn{false};

}  // namespace

void standardIoPipeName(uint32_t processId, char (&name)[kStandardIoPipeNameSize]) noexcept
{
    std::snprintf(name, sizeof name, "%s %x", kBaseName, static_cast<unsigned>(processId));
}

void setStandardIoPipe(bool on) noexcept
{
    switchedOn.store(on, std::memory_order_relaxed);
}

bool standardIoPipeOn() noexcept
{
    return switchedOn.load(std::memory_order_relaxed);
}

}  // namespace tollan::platform
