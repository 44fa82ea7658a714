// WinMain: the program-style start of the library, which then runs the
// application stages.
#include "engine/command_line.h"
#include "engine/engine_state.h"
#include "engine/init_chain.h"
#include "engine/pascal_string.h"
#include "engine/platform_version.h"
#include "engine/window_messages.h"
#include "logger/log.h"

namespace tollan::engine {
namespace {

constexpr const char *kModule = "mgsource/window";

// No code-page tables are loaded at start-up, so text is walked byte by byte.
constexpr LeadBytePredicate kStartupCodePage = nullptr;

}  // namespace

bool WinMain(void *instance, void *previousInstance, char *commandLine, int32_t showWindow) noexcept
{
    if (!SetCurrentPlatform()) return false;
    TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WinMain", "SetCurrentPlatform returned");

    state.applicationInstance = instance;
    state.windowApplicationInstance = instance;
    state.showWindowCode = showWindow;
    state.noPreviousInstance = previousInstance == nullptr;

    CToPStr(state.applicationName, "zor", kStartupCodePage);
    TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WinMain", "CToPStr returned");
    TOLLAN_LOG(ZOR_LOG_INFO, kModule, "WinMain", "WinMain hInstance=0x%p hPrevInstance=0x%p nCmdShow=0x%x",
               instance, previousInstance, static_cast<unsigned>(showWindow));

    CommandLineArguments arguments;
    if (!ParseCommandLine(commandLine, kStartupCodePage, &arguments)) return false;
    TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WinMain", "ParseCommandLine returned");

    registerWindowMessages();

    int32_t exitCode = WInitApp(arguments.argc, arguments.argv);
    TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WinMain", "WInitApp returned");
    if (exitCode == 0) {
        exitCode = WMain();
        TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WinMain", "WMain returned");
    }
    freeArguments(&arguments);

    const bool succeeded = exitCode == 0;
    TOLLAN_LOG(ZOR_LOG_TRACE, kModule, "WinMain", "Returning %d (exitCode = %d)", succeeded ? 1 : 0,
               exitCode);
    return succeeded;
}

}  // namespace tollan::engine
