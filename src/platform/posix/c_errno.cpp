#include "platform/c_errno.h"

#include <cerrno>

namespace tollan::platform {

int *cErrnoLocation() noexcept
{
    return &errno;
}

}  // namespace tollan::platform
