#include "rtcheck_twins/twin_support.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <tollan/fmtio.h>
#include <tollan/rs232.h>
#include <tollan/rtcheck.h>

#include "platform/file.h"
#include "platform/system.h"
#include "services/text_format.h"

namespace tollan::rtcheck {

size_t copiedLength(const char *source, int64_t maximum) noexcept
{
    return maximum < 0 ? std::strlen(source) : boundedLength(source, static_cast<size_t>(maximum));
}

size_t boundedLength(const char *text, size_t count) noexcept
{
    const void *end = std::memchr(text, 0, count);
    return end != nullptr ? static_cast<size_t>(static_cast<const char *>(end) - text) : count;
}

bool streamFailed(TollanFILE *stream) noexcept
{
    return tollan_ferror(stream) != 0;
}

void *findByte(const void *bytes, int value, size_t count) noexcept
{
    return const_cast<void *>(std::memchr(bytes, value, count));
}

char *findCharacter(const char *text, int value) noexcept
{
    return const_cast<char *>(std::strchr(text, value));
}

char *findLastCharacter(const char *text, int value) noexcept
{
    return const_cast<char *>(std::strrchr(text, value));
}

char *findAnyCharacter(const char *text, const char *stops) noexcept
{
    return const_cast<char *>(std::strpbrk(text, stops));
}

char *findString(const char *text, const char *pattern) noexcept
{
    return const_cast<char *>(std::strstr(text, pattern));
}

int64_t textToInt64(const char *text) noexcept
{
    return std::atoll(text);
}

int64_t textToInt64Base(const char *text, char **end, int base) noexcept
{
    return std::strtoll(text, end, base);
}

uint64_t textToUint64Base(const char *text, char **end, int base) noexcept
{
    return std::strtoull(text, end, base);
}

void assertionFailed(const char *message, const char *file, unsigned line) noexcept
{
    tollan_fprintf(tollan_stderr, "Assertion failed: %s, file %s, line %u\n", message, file, line);
    std::abort();
}

void assertionFailedIn(const char *file, int line, const char *function, const char *expression) noexcept
{
    if (function != nullptr)
        tollan_fprintf(tollan_stderr, "Assertion failed: %s, function %s, file %s, line %d\n", expression,
                       function, file, line);
    else
        tollan_fprintf(tollan_stderr, "Assertion failed: %s, file %s, line %d\n", expression, file, line);
    std::abort();
}

int32_t profilingUnavailable() noexcept
{
    return -1;
}

int32_t profilingUnavailableFor(int32_t) noexcept
{
    return -1;
}

int putEnvironment(const char *setting) noexcept
{
    return platform::putEnvironmentSetting(setting) ? 0 : -1;
}

namespace {

using Comparison = int (*)(const void *, const void *);

// The comparator of the sort or search under way on this thread; a sort
// inside a comparator keeps the outer one's for after it.
thread_local Comparison userComparison = nullptr;

int compareInUserCode(const void *a, const void *b)
{
    ZORSavedCheckingEnv saved;
    _UPSaveCurrentEnv(&saved);
    const int order = userComparison(a, b);
    _UPRestoreCurrentEnv(&saved);
    return order;
}

class ComparisonInUserCode {
public:
    explicit ComparisonInUserCode(Comparison compare) noexcept : outer_(userComparison)
    {
        userComparison = compare;
    }
    ~ComparisonInUserCode() { userComparison = outer_; }
    ComparisonInUserCode(const ComparisonInUserCode &) = delete;
    ComparisonInUserCode &operator=(const ComparisonInUserCode &) = delete;

private:
    Comparison outer_;
};

}  // namespace

void sortCallingBack(void *base, size_t count, size_t size, Comparison compare) noexcept
{
    // Without checking, a save per comparison would cost two copies of the
    // environment for nothing.
    if (compare == nullptr || _UPLibIsProtectionAvailable() == 0) {
        std::qsort(base, count, size, compare);
        return;
    }
    const ComparisonInUserCode inUserCode(compare);
    std::qsort(base, count, size, compareInUserCode);
}

void *searchCallingBack(const void *key, const void *base, size_t count, size_t size,
                        Comparison compare) noexcept
{
    if (compare == nullptr || _UPLibIsProtectionAvailable() == 0)
        return std::bsearch(key, base, count, size, compare);
    const ComparisonInUserCode inUserCode(compare);
    return std::bsearch(key, base, count, size, compareInUserCode);
}

const char *fmtioErrorText() noexcept
{
    return GetFmtIOErrorString(GetFmtIOError());
}

const char *rs232ErrorText(int32_t code) noexcept
{
    return GetRS232ErrorString(code);
}

const char *hostErrnoText() noexcept
{
    return std::strerror(errno);
}

const char *streamErrnoText() noexcept
{
    return std::strerror(*tollan_errno());
}

const char *openFailureText(const char *systemText, const char *errnoText) noexcept
{
    if (systemText == nullptr || systemText[0] == '\0') return errnoText;
    thread_local char text[512];
    services::formatTextInto(text, sizeof text, "(%s) %s", systemText, errnoText);
    return text;
}

const char *openFailureText() noexcept
{
    char systemText[256];
    const bool hasOwn = platform::lastOpenFailureText(systemText, sizeof systemText);
    return openFailureText(hasOwn ? systemText : nullptr, streamErrnoText());
}

}  // namespace tollan::rtcheck
