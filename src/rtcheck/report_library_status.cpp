// Reports of error statuses that library functions return while break on
// library errors is on.
#include <tollan/rtcheck.h>

#include "debugger/events.h"
#include "platform/debugger.h"
#include "rtcheck/break_settings.h"
#include "rtcheck/remote_target.h"
#include "rtcheck/report_message.h"
#include "rtcheck/report_sink.h"
#include "services/messages.h"

namespace tollan::rtcheck {
namespace {

constexpr int32_t kUnnamedStatus = 159;
constexpr int32_t kNamedStatus = 160;
constexpr int32_t kUnnamedStatusWithElaboration = 161;
constexpr int32_t kNamedStatusWithElaboration = 162;
constexpr int32_t kReturnValueName = 192;
constexpr unsigned kFunctionNameSize = 512;

struct FunctionName {
    char text[kFunctionNameSize];
};

// The name of the function that contains address, as the remote target's
// host or the watching debugger tells it; empty when nobody answers.
FunctionName functionContaining(void *address) noexcept
{
    FunctionName name{};
    if (const RemoteTargetLink *link = remoteTargetLink()) {
        if (!link->lookupFunctionName(address, name.text, sizeof name.text)) name.text[0] = '\0';
    } else if (platform::debuggerPresent()) {
        // The debugger writes the answer into the buffer while it handles the text.
        debugger::sendEventText("@{lookup_address|%p|%p|%u:16}@", address, static_cast<void *>(name.text),
                                kFunctionNameSize);
    }
    name.text[kFunctionNameSize - 1] = '\0';
    return name;
}

void reportLibraryStatus(const char *name, intptr_t value, const char *elaboration, void *address) noexcept
{
    if (!checkingLevel()) return;
    const ThreadReportState &state = threadReportState();
    if (state.breakOnLibraryErrors == 0 || state.evaluatingCondition != 0) return;
    if (name == nullptr) name = services::libraryMessage(kReturnValueName);
    const FunctionName function = functionContaining(address);
    const bool named = function.text[0] != '\0';
    char text[kReportTextSize];
    if (named && elaboration != nullptr)
        formatMessage(text, sizeof text, kNamedStatusWithElaboration, function.text, name, value, value,
                      elaboration);
    else if (named)
        formatMessage(text, sizeof text, kNamedStatus, function.text, name, value, value);
    else if (elaboration != nullptr)
        formatMessage(text, sizeof text, kUnnamedStatusWithElaboration, name, value, value, elaboration);
    else
        formatMessage(text, sizeof text, kUnnamedStatus, name, value, value);
    reportErrorMessage(ZOR_RTE_NON_FATAL, text);
}

}  // namespace
}  // namespace tollan::rtcheck

void _UPLibBreakpoint(const char *name, intptr_t value, void *retaddr) noexcept
{
    tollan::rtcheck::reportLibraryStatus(name, value, nullptr, retaddr);
}

void _UPLibBreakpointWithElab(const char *name, intptr_t value, const char *elab, void *retaddr) noexcept
{
    tollan::rtcheck::reportLibraryStatus(name, value, elab, retaddr);
}
