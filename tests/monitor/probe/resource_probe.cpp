// A program that ends holding a resource, with resource tracking on, run
// under tollan-monitor by the monitor's tests.
#include <cstdint>
#include <cstdio>

#include <tollan/debugger.h>

int main()
{
    __SetDebuggingLevel(2);
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    ZORFunctionFrame frame{};
    frame.functionName = "open_files";
    frame.startPosition = 10u << 10 | 1;
    frame.endPosition = 20u << 10 | 2;
    __DBG_EnterFunctionInCurrentThreadEnv(record, &frame, "probe.c");
    __DBG_SetCurrentThreadEnvPosition(record, nullptr, 12, 5);
    for (uintptr_t n = 1; n <= 2; ++n)
        __ZOR_Resource_Acquire(reinterpret_cast<void *>(0x1000 + n), "Files", "file %d", static_cast<int>(n));
    __ZOR_Resource_Release(reinterpret_cast<void *>(0x1001));
    std::printf("resource probe: tracking %d\n", __ZOR_Resource_IsEnabled());
    // Ends inside open_files, still holding file 2.
    return 0;
}
