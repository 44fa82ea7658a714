// Zero-terminated strings addressed as base pointer plus starting index.
#include <cctype>
#include <cstring>

#include <tollan/fmtio.h>

#include "fmtio/io_error.h"
#include "fmtio/case_fold.h"
#include "fmtio/thread_state.h"
#include "platform/file.h"

int32_t CompareStrings(const char *string1, uint32_t index1, const char *string2, uint32_t index2,
                       int32_t caseSensitive) noexcept
{
    const char *first = string1 + index1;
    const char *second = string2 + index2;
    if (caseSensitive) return tollan::fmtio::signOf(std::strcmp(first, second));
    // Only the first string's end stops the walk: the second's shows up as
    // a mismatch against its terminating zero.
    while (*first != '\0' && tollan::fmtio::sameIgnoringCase(*first, *second)) {
        ++first;
        ++second;
    }
    if (*first == *second) return 0;
    return tollan::fmtio::orderIgnoringCase(*first, *second);
}

void CopyString(char *target, uint32_t targetIndex, const char *source, uint32_t sourceIndex,
                int64_t maximum) noexcept
{
    const char *from = source + sourceIndex;
    size_t length = std::strlen(from);
    if (maximum >= 0 && static_cast<uint64_t>(maximum) < length) length = static_cast<size_t>(maximum);
    char *to = target + targetIndex;
    std::memmove(to, from, length);
    to[length] = '\0';
}

int32_t StringLength(const char *string) noexcept
{
    if (string == nullptr) return tollan::fmtio::failWith(tollan::fmtio::ioerror::kInvalidArgument);
    const size_t length = std::strlen(string);
    if (length > INT32_MAX) return tollan::fmtio::failWith(tollan::fmtio::ioerror::kStringTooLong);
    return static_cast<int32_t>(length);
}

void StringLowerCase(char *string) noexcept
{
    for (char *c = string; *c != '\0'; ++c) {
        if (std::isupper(static_cast<unsigned char>(*c)))
            *c = static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    }
}

void StringUpperCase(char *string) noexcept
{
    for (char *c = string; *c != '\0'; ++c) {
        if (std::islower(static_cast<unsigned char>(*c)))
            *c = static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
    }
}
