// InitRTDll and WInitRTDll: the outer two links of the start-up chain.
#include "engine/engine_state.h"
#include "engine/init_chain.h"
#include "logger/log.h"
#include "platform/system.h"

namespace tollan::engine {
namespace {

constexpr const char *kModule = "mgsource/window";

}  // namespace

bool InitRTDll() noexcept
{
    if (!WInitRTDll()) return false;
    TOLLAN_LOG(ZOR_LOG_TEMP, kModule, "InitRTDll", "WInitRTDll returned.");
    return true;
}

bool WInitRTDll() noexcept
{
    void *instance = platform::mainProgramHandle();
    TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WInitRTDll", "GetModuleHandle returned %p", instance);
    bool succeeded = false;
    if (instance != nullptr) {
        const int32_t showWindow = platform::startupShowWindowCode();
        TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WInitRTDll", "GetStartupInfo returned");
        state.showWindowCode = showWindow;
        state.applicationInstance = instance;
        TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WInitRTDll", "Calling WinMain");
        // The library is not a program: it has no command line of its own.
        char commandLine[] = "";
        succeeded = WinMain(instance, nullptr, commandLine, showWindow);
        if (succeeded) TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WInitRTDll", "WinMain returned");
    }
    TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WInitRTDll", "Cleanup code: returning %s",
               succeeded ? "success" : "FAILURE");
    return succeeded;
}

}  // namespace tollan::engine
