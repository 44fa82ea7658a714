#include "fmtio/io_error.h"
#include "fmtio/path_check.h"

#include <cstring>

#include "platform/file.h"

namespace tollan::fmtio {

int32_t checkPath(const char *path) noexcept
{
    if (path == nullptr || path[std::strspn(path, " \t\r\n")] == '\0') return ioerror::kInvalidArgument;
    if (std::strlen(path) > kMaxPathLength) return ioerror::kNameTooLong;
    return ioerror::kNone;
}

}  // namespace tollan::fmtio
