#include "fmtio/path_check.h"

#include <cstring>

#include "platform/file.h"

namespace tollan::fmtio {

int32_t checkPath(const char *path) noexcept
{
    if (path == nullptr || path[std::strspn(path, " \t\r\n")] == '\0')
        return platform::ioerror::kInvalidArgument;
    if (std::strlen(path) > kMaxPathLength) return platform::ioerror::kNameTooLong;
    return platform::ioerror::kNone;
}

}  // namespace tollan::fmtio
