#include "services/path_check.h"

#include <cstring>

namespace tollan::services {

platform::FileError checkPath(const char *path) noexcept
{
    if (path == nullptr || path[std::strspn(path, " \t\r\n")] == '\0')
        return platform::FileError::invalidArgument;
    if (std::strlen(path) > kMaxPathLength) return platform::FileError::nameTooLong;
    return platform::FileError::none;
}

}  // namespace tollan::services
