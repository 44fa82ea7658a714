// A program with the library's objects linked in (the pipe's writer is no
// export of the shared library), run under tollan-monitor by the monitor's
// tests. It writes through the standard I/O pipe as the C library's streams
// do, standard output and error interleaved, and reports on its own standard
// output whether the library switched the pipe on at start-up.
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/standard_io_pipe.h"

int main()
{
    std::printf("standard I/O pipe on: %d\n", tollan::platform::standardIoPipeOn() ? 1 : 0);
    std::fflush(stdout);
    static const struct {
        int descriptor;
        const char *text;
    } kWrites[] = {{1, "out1\n"}, {2, "err1\n"}, {1, "out2\n"}, {2, "two\nlines\n"}, {1, "tab\tand\x01"}};
    for (const auto &write : kWrites)
        tollan::platform::writeStandardIoPipe(write.descriptor, write.text, std::strlen(write.text));
    const std::string longLine = std::string(5000, 'L') + "\n";
    tollan::platform::writeStandardIoPipe(1, longLine.data(), longLine.size());
    return 0;
}
