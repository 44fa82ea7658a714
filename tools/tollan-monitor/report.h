// Where the monitor's own lines go: standard error, or the file that --log
// names. Every line begins "tollan-monitor: " so that it stands apart from
// the program's own output, which shares the terminal. Standard output is
// left to the program.
#pragma once

#include <cstdio>
#include <string>

namespace tollan::monitor {

class Report {
public:
    // stream: where the lines go; the Report does not close it.
    explicit Report(FILE *stream) noexcept : stream_(stream) {}
    // One line, formatted with printf rules (at most 4095 bytes of it),
    // written and flushed at once.
    void line(const char *format, ...) noexcept __attribute__((format(printf, 2, 3)));
    // One line of any length (a line of the program's output may be long).
    void line(const std::string &text) noexcept;

private:
    void put(const char *text) noexcept;
    FILE *stream_;
};

}  // namespace tollan::monitor
