// A program with the library's objects linked in, run under tollan-monitor
// by the monitor's tests. It writes through the C library's streams,
// standard output and error interleaved, and says whether the library
// switched the standard I/O pipe on at start-up.
#include <string>

#include <tollan/ansi_c.h>

#include "platform/standard_io_pipe.h"

int main()
{
    tollan_printf("standard I/O pipe on: %d\n", tollan::platform::standardIoPipeOn() ? 1 : 0);
    tollan_fputs("out1\n", tollan_stdout);
    tollan_fputs("err1\n", tollan_stderr);
    tollan_printf("out%d\n", 2);
    tollan_fprintf(tollan_stderr, "two\n%s\n", "lines");
    tollan_fputs("tab\tand\x01", tollan_stdout);
    const std::string longLine = std::string(5000, 'L') + "\n";
    tollan_fwrite(longLine.data(), 1, longLine.size(), tollan_stdout);
    return 0;
}
