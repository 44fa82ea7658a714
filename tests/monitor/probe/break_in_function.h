// The probes' break: a thread stops in a function entered at probe.c, at
// line 42 column 7, where the monitor's report shows it.
#pragma once

#include <tollan/debugger.h>

inline int breakInAFunction()
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    ZORFunctionFrame frame{};
    frame.functionName = "probe_function";
    frame.startPosition = 40u << 10 | 1;
    frame.endPosition = 50u << 10 | 1;
    __DBG_EnterFunctionInCurrentThreadEnv(record, &frame, "probe.c");
    __DBG_SetCurrentThreadEnvPosition(record, nullptr, 42, 7);
    const int result = __ZOR_Debug_Break();
    __DBG_LeaveFunctionInCurrentThreadEnv(record, &frame);
    return result;
}
