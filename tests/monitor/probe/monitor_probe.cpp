// A program linked with the library, run under tollan-monitor by the
// monitor's tests. argv[1] picks what it does; it prints its results on
// standard output for the test to check.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <tollan/debugger.h>
#include <tollan/engine.h>
#include <tollan/logger.h>

#include "break_in_function.h"

int main(int argc, char **argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "plain") {
        std::printf("probe ran\n");
        return 0;
    }
    if (mode == "break") {
        const int connected = __ZOR_Debug_IsConnected();
        const int debugged = BeingDebuggedByZOR();
        const int result = breakInAFunction();
        std::printf("after break: result %d connected %d debugged %d\n", result, connected, debugged);
        return 0;
    }
    if (mode == "disconnect") {
        const int result = __ZOR_Debug_Disconnect();
        std::printf("disconnect: result %d connected %d\n", result, __ZOR_Debug_IsConnected());
        // Connected again, an ordinary break is just a break.
        const int again = __ZOR_Debug_Connect(nullptr, 0, 0);
        std::printf("reconnect: result %d break %d\n", again, breakInAFunction());
        return 0;
    }
    if (mode == "exit") {
        SetZORLogReportingLocation(ZOR_LOG_LOCATION_DEBUG_OUTPUT, 0, nullptr);
        SetZORLogOutputFormat("[MSG]");
        WriteZORLogMessage(ZOR_LOG_FATAL, 0, 0, __FILE__, __func__, __LINE__, "probe ends with %d", 3);
        std::fflush(stdout);
        std::exit(3);
    }
    std::fprintf(stderr, "monitor_probe: unknown mode '%s'\n", mode.c_str());
    return 2;
}
