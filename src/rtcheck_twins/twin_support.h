// What the rows of the twin table (tollan/rtcheck_twins.def) are written
// in besides the plain functions: sizes worked out from the arguments,
// stand-ins for plain functions the library does not have or whose C++
// declarations differ from C's, and the elaboration texts of failures.
#pragma once

#include <cstddef>
#include <cstdint>

#include <tollan/ansi_c.h>

namespace tollan::rtcheck {

// ---- sizes from arguments ----

// A count the plain function takes as signed: below 0 it asks for nothing.
inline uint64_t countOf(int64_t count) noexcept
{
    return count < 0 ? 0 : static_cast<uint64_t>(count);
}

// buffer + index, as the plain functions that take both address it.
inline const char *at(const void *buffer, uint32_t index) noexcept
{
    return static_cast<const char *>(buffer) + index;
}

// The characters CopyString copies from source: all of them for a negative
// maximum, else at most maximum.
size_t copiedLength(const char *source, int64_t maximum) noexcept;
// The length of text, looking at no more than count characters.
size_t boundedLength(const char *text, size_t count) noexcept;

// Whether the stream's error indicator is set: what tells a failure from
// the end of the input when a read returns EOF.
bool streamFailed(TollanFILE *stream) noexcept;

// ---- plain functions ----

// The search functions as C declares them (C++ declares a const and a
// non-const overload instead).
void *findByte(const void *bytes, int value, size_t count) noexcept;
char *findCharacter(const char *text, int value) noexcept;
char *findLastCharacter(const char *text, int value) noexcept;
char *findAnyCharacter(const char *text, const char *stops) noexcept;
char *findString(const char *text, const char *pattern) noexcept;

// The 64-bit conversions under their Windows names.
int64_t textToInt64(const char *text) noexcept;
int64_t textToInt64Base(const char *text, char **end, int base) noexcept;
uint64_t textToUint64Base(const char *text, char **end, int base) noexcept;

// What a failed assertion does: "Assertion failed: ..." on the library's
// standard error, then the process aborts.
[[noreturn]] void assertionFailed(const char *message, const char *file, unsigned line) noexcept;
[[noreturn]] void assertionFailedIn(const char *file, int line, const char *function,
                                    const char *expression) noexcept;

// The plain functions the library does not have: they fail with -1.
int32_t profilingUnavailable() noexcept;
int32_t profilingUnavailableFor(int32_t on) noexcept;

// _putenv: sets, changes or (with "NAME=") removes an environment variable
// from a copy of the setting; 0, or -1 with errno set.
int putEnvironment(const char *setting) noexcept;

// qsort and bsearch whose comparator, user code with checked calls of its
// own, runs between a save and a restore of the thread's checking
// environment while checking is on.
void sortCallingBack(void *base, size_t count, size_t size,
                     int (*compare)(const void *, const void *)) noexcept;
void *searchCallingBack(const void *key, const void *base, size_t count, size_t size,
                        int (*compare)(const void *, const void *)) noexcept;

// ---- elaborations of failures ----

inline constexpr const char *kNoProfilingText = "The library has no profiler.";
inline constexpr const char *kNoCalendarTimeText = "The calendar time cannot be represented.";

// The texts of the calling thread's I/O error, of an RS-232 code, of the
// host C library's errno and of the library's stream errno.
const char *fmtioErrorText() noexcept;
const char *rs232ErrorText(int32_t code) noexcept;
const char *hostErrnoText() noexcept;
const char *streamErrnoText() noexcept;

// A failed open: "(system text) errno text" when the system has a text of
// its own for the failure, else the errno text alone. The text lives in a
// buffer of the calling thread until its next failure.
const char *openFailureText(const char *systemText, const char *errnoText) noexcept;
const char *openFailureText() noexcept;

}  // namespace tollan::rtcheck
