// Makes one fatal variadic or size-information report to an error file, as
// a checked twin in a user's program would. Usage:
//   vacheck_probe MODE ERRORFILE
// MODE: printf-type, scanf-type, fmt-type (106), missing (107), no-memory
// (191). Returns 7 when the program goes on after the report, 2 on bad usage.
#include <cstdint>
#include <string>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

#include "rtcheck_vachecks/recorded_call.h"

namespace {

constexpr int kWentOn = 7;

using namespace tollan::testing;

int twin()
{
    return 0;
}

int check(const std::string &mode)
{
    const void *frame = reinterpret_cast<const void *>(&twin);
    if (mode == "printf-type") {
        RecordedCall call(frame, {kInt, kDouble});
        return _UPLibChkVaArgs("%d and %d", ZOR_VA_PRINTF, 2, frame);
    }
    if (mode == "scanf-type") {
        RecordedCall call(frame, {kInt});
        return _UPLibChkVaArgs("%d", ZOR_VA_SCANF, 2, frame);
    }
    if (mode == "fmt-type") {
        RecordedCall call(frame, {pointerTo(kChar)}, 3);
        return _UPLibChkVaArgs("%s<%d", ZOR_VA_FMT, 3, frame);
    }
    if (mode == "missing") {
        RecordedCall call(frame, {kInt});
        return _UPLibChkVaArgs("%d%d", ZOR_VA_PRINTF, 2, frame);
    }
    if (mode == "no-memory") {
        char *strings[] = {nullptr};
        _UPResizeStringArrayInfo(nullptr, strings, INT64_MAX);
        return 1;
    }
    return -1;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 3) return 2;
    __SetDebuggingLevel(2);
    __DBG_SetCurrentThreadEnvLocation(__DBG_GetCurrentThreadEnv(), nullptr, "probe.c", 3, 7);
    TollanFILE *file = tollan_fopen(argv[2], "wb");
    if (file == nullptr) return 2;
    __SetUPErrorFile(file);
    return check(argv[1]) < 0 ? 2 : kWentOn;
}
