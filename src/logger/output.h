// Where lines go. Location 1 is the process's standard output, 3 its standard
// error, 4 the platform's debug output (OutputDebugStringA), 5 a log file
// opened by name; 0 and 2 discard lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "platform/file.h"

namespace tollan::logger {

class Output {
public:
    // The two standard streams are passed in so that tests can stand files
    // in for them.
    Output(std::FILE *standardOutput, std::FILE *standardError) noexcept
        : standardOutput_(standardOutput), standardError_(standardError)
    {
    }
    ~Output() { closeFile(); }
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    // Switches to `location`. For 5, fileFormat 0 truncates fileName and any
    // other value appends to it. False, with the previous output still in
    // force, for a location above 5, for 3 while standard error has failed,
    // and for 5 when the file cannot be opened. Leaving 5 closes the file.
    bool select(uint32_t location, int32_t fileFormat, const char *fileName) noexcept;
    uint32_t location() const noexcept { return location_; }

    // Writes text[0, length) (terminated at length) to the current output;
    // endLine flushes a standard stream, for text that ends its line (the
    // log file has no buffer to flush). Errors are ignored.
    void write(const char *text, size_t length, bool endLine) noexcept;
    // Prints text, at most its first 4095 characters, and a line end to
    // standard output, whatever the location.
    void echo(const char *text, size_t length) noexcept;

private:
    void closeFile() noexcept;

    std::FILE *standardOutput_;
    std::FILE *standardError_;
    // Written with one system call per line, without a C stream's buffer
    // in between.
    platform::NativeFile file_ = platform::kNoFile;
    uint32_t location_ = 3;
};

}  // namespace tollan::logger
