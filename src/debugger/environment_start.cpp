#include "debugger/environment_start.h"

#include <memory>

#include "debugger/library.h"
#include "platform/debugger.h"
#include "platform/developer_prompt.h"
#include "platform/event.h"
#include "services/configuration.h"
#include "services/messages.h"
#include "services/registry.h"

namespace tollan::debugger {
namespace {

constexpr const char *kDebugStartedEvent = "Vantrel - ZOR DBG Event To Signal Debug Started";
constexpr const char *kEnvironmentProgramName = "zor.exe";
constexpr int32_t kFatalTitleMessage = 195;
constexpr int32_t kCannotLaunchMessage = 204;
constexpr int kWindowMessagesAfterStart = 10;
// How often the wait for the debugger looks whether the program it started
// is still there: a program that ended without attaching will never signal.
constexpr uint32_t kStartedCheckMs = 100;

// Waits until the started debugger signals that it has attached; false when
// it ended first.
bool waitUntilAttached(platform::Event &started, platform::StartedDebugger &program) noexcept
{
    for (;;) {
        switch (started.wait(kStartedCheckMs)) {
            case platform::WaitResult::signalled:
                return true;
            case platform::WaitResult::failed:
                return false;
            case platform::WaitResult::timedOut:
                // It may have signalled just before it ended.
                if (!program.running()) return started.wait(0) == platform::WaitResult::signalled;
        }
    }
}

bool startStoredProgram(const char *path) noexcept
{
    // Made before the program starts, so that its signal cannot come before
    // anyone waits for it.
    std::unique_ptr<platform::Event> started = platform::Event::create(false, false, kDebugStartedEvent);
    if (started == nullptr) return false;
    // The name is one for every process: a signal meant for another
    // program's start may still be pending.
    started->reset();
    std::unique_ptr<platform::StartedDebugger> program = platform::startDebugger(path);
    if (program == nullptr || !waitUntilAttached(*started, *program)) return false;
    platform::dispatchWindowMessages(kWindowMessagesAfterStart);
    // Attaches the shared block the debugger made, connects and announces
    // the library, as start-up does for a program started under it.
    CdbInitialize();
    return platform::debuggerPresent();
}

}  // namespace

bool startDevelopmentEnvironment() noexcept
{
    char path[services::kRegStringBufferSize] = "";
    services::configurationText(kEnvironmentPathSetting, path, sizeof path);
    while (path[0] == '\0' || !startStoredProgram(path)) {
        if (!platform::askRetryStart(services::libraryMessage(kFatalTitleMessage),
                                     services::libraryMessage(kCannotLaunchMessage)))
            return false;
        if (platform::askProgramPath(kEnvironmentProgramName, path, sizeof path))
            services::storeConfigurationText(kEnvironmentPathSetting, path);
    }
    return true;
}

}  // namespace tollan::debugger
