// A program linked against the shared library, as a user's would be: its
// start-up and shutdown run the library's whole attach and detach chains.
// It also ends one thread that used a thread variable, and registers and
// closes a module, so that the log shows those paths too.
#include <cstdio>
#include <thread>

#include <tollan/engine.h>
#include <tollan/logger.h>

namespace {

void onRunState(int32_t event)
{
    std::printf("run state %d\n", static_cast<int>(event));
}

}  // namespace

int main()
{
    std::thread worker([] { SetZORThreadVarValue(1, nullptr); });
    worker.join();

    static int module;
    const ZORRunStateCallback callbacks[] = {onRunState, nullptr};
    InitZORRTDll(&module, callbacks);
    WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "probe", "main", __LINE__, "probe running");
    CloseZORRTDll(&module);
    return 0;
}
