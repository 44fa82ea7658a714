// Makes one run-time error report as a user's program would, for the reports
// that end the process or write to standard error. Usage:
//   report_probe file-check ERRORFILE     a fatal check error to an error file
//   report_probe file-argument ERRORFILE  a fatal argument error (code 1) to it
//   report_probe unattended ACTION SEVERITY
//       a report with no error file and nobody to ask; ACTION is the value
//       of TOLLAN_RTE_ACTION ("-" leaves it unset)
//   report_probe debugger -
//       under a debugger: a fatal check error, then a library status with a
//       text, each raising a break
// Returns 7 when the program goes on after the report, 2 on bad usage.
#include <cstdlib>
#include <cstring>
#include <string>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

namespace {

constexpr int kWentOn = 7;

void setAction(const char *action)
{
    if (std::strcmp(action, "-") == 0) return;
#ifdef _WIN32
    _putenv_s("TOLLAN_RTE_ACTION", action);
#else
    setenv("TOLLAN_RTE_ACTION", action, 1);
#endif
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 3) return 2;
    const std::string mode = argv[1];
    __SetDebuggingLevel(2);
    __DBG_SetCurrentThreadEnvLocation(__DBG_GetCurrentThreadEnv(), nullptr, "probe.c", 3, 7);
    if (mode == "file-check" || mode == "file-argument") {
        TollanFILE *file = tollan_fopen(argv[2], "wb");
        if (file == nullptr) return 2;
        __SetUPErrorFile(file);
        if (mode == "file-check")
            ReportUPError(3, 125, 4, 8);
        else
            _UPLibReportError(1, 2);
        return kWentOn;
    }
    if (mode == "unattended" && argc == 4) {
        setAction(argv[2]);
        ReportUPError(std::atoi(argv[3]), 158, 4, 8);
        return kWentOn;
    }
    if (mode == "debugger") {
        ReportUPError(3, 158, 4, 8);
        _UPLibBreakpointWithElab("status", -3, "Port not open", reinterpret_cast<void *>(&setAction));
        return kWentOn;
    }
    return 2;
}
