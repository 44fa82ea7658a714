// The calling thread's I/O error and its text.
#include <cstdio>
#include <iterator>

#include <tollan/fmtio.h>

#include "fmtio/thread_state.h"

namespace {

constexpr const char *kTexts[] = {
    "No error",        "File not found",      "General I/O failure",
    "Bad file handle", "Insufficient memory", "File exists",
    "Access denied",   "Invalid argument",    "Too many open files",
    "Disk is full",    "File name too long",  "String too long for representation",
};

}  // namespace

int32_t GetFmtIOError(void) noexcept
{
    return tollan::fmtio::threadBlock().ioError;
}

char *GetFmtIOErrorString(int32_t errorNumber) noexcept
{
    const bool known = errorNumber >= 0 && errorNumber < static_cast<int32_t>(std::size(kTexts));
    char *text = tollan::fmtio::threadBlock().errorText;
    std::snprintf(text, tollan::fmtio::kErrorTextSize, "%s",
                  known ? kTexts[errorNumber] : "Unknown error number");
    return text;
}
