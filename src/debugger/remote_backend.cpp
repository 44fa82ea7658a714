// The remote transport (the remote target link, debugging over TCP/IP) is
// not part of this library: its table connects to nothing, so a program
// configured for remote debugging runs as if no debugger were there.
#include "debugger/backend.h"

namespace tollan::debugger {
namespace {

int32_t connect(void *, const char *, intptr_t, int32_t) noexcept
{
    return ZOR_DEBUG_NOT_CONNECTED;
}

constinit BackendTable remote = {.connect = connect};

}  // namespace

BackendTable &remoteBackend() noexcept
{
    return remote;
}

}  // namespace tollan::debugger
