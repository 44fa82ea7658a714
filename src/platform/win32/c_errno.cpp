#include "platform/c_errno.h"

namespace tollan::platform {

namespace {
// The DLL's own: the program's C run-time (msvcrt, ucrt or another) has an
// errno of its own that the library must not disturb.
thread_local int libraryErrno = 0;
}  // namespace

int *cErrnoLocation() noexcept
{
    return &libraryErrno;
}

}  // namespace tollan::platform
