// No file-system redirection, no WOW64: there is nothing to switch.
#include "platform/wow64.h"

namespace tollan::platform {

bool enableFileSystemRedirection(bool) noexcept
{
    return false;
}

bool isWow64Process() noexcept
{
    return false;
}

}  // namespace tollan::platform
