#include "rtcheck/report_interactive.h"

#include <cstring>

#include <tollan/ansi_c.h>

#include "debugger/channel.h"
#include "debugger/environment_start.h"
#include "debugger/events.h"
#include "platform/debugger.h"
#include "platform/system.h"
#include "rtcheck/remote_target.h"
#include "rtcheck/report_choice.h"

namespace tollan::rtcheck {
namespace {

constexpr int kTerminateExitStatus = -1;
constexpr const char *kNoDebuggerNote =
    "Break: no debugger watches this process and none was started; the program goes on.\n";

void carryOut(ReportChoice choice) noexcept
{
    switch (choice) {
        case ReportChoice::breakIntoDebugger:
            if (platform::debuggerPresent() || debugger::startDevelopmentEnvironment())
                debugger::breakIntoDebugger();
            else
                tollan_fputs(kNoDebuggerNote, tollan_standard_stream(2));
            return;
        case ReportChoice::ignore:
            return;
        case ReportChoice::terminate:
            platform::exitProcess(kTerminateExitStatus);
    }
}

}  // namespace

void reportInteractively(int32_t severity, const char *text, const SourcePosition &position) noexcept
{
    // The receivers read the text with its terminating null.
    const auto size = static_cast<uint32_t>(std::strlen(text) + 1);
    if (const RemoteTargetLink *link = remoteTargetLink()) {
        link->exchangeReport(severity, text, size);
        return;
    }
    if (platform::debuggerPresent()) {
        // The debugger reads the text from this thread's stack while the
        // thread stands still in the break that follows.
        debugger::sendEventText(
            "@{run_time_error|%u|%u|%u|%u|%u|%p|%u:16}@", static_cast<unsigned>(position.firstLine),
            static_cast<unsigned>(position.firstColumn), static_cast<unsigned>(position.lastLine),
            static_cast<unsigned>(position.lastColumn), static_cast<unsigned>(severity),
            static_cast<const void *>(text), static_cast<unsigned>(size));
        debugger::breakIntoDebugger();
        return;
    }
    carryOut(askDeveloper(severity, text, position));
}

}  // namespace tollan::rtcheck
