#include "debugger/events.h"

#include <cstdarg>

#include "debugger/debug_control.h"
#include "debugger/runtime_record.h"
#include "platform/debugger.h"
#include "platform/dynamic_library.h"
#include "platform/thread.h"
#include "services/text_format.h"

namespace tollan::debugger {
namespace {

// The version quadruple and the thread-state field positions the debugger
// reads module_attach with.
constexpr unsigned kVersion[] = {17, 0, 0, 295};
constexpr unsigned kRecordFields[] = {32, 36, 40, 44, 48, 65, 69};

}  // namespace

void sendEventText(const char *format, ...) noexcept
{
    if (!platform::debuggerPresent()) return;
    const uint32_t lastError = platform::lastSystemError();
    char text[4096 + 256];
    va_list arguments;
    va_start(arguments, format);
    services::formatText(text, sizeof text, format, arguments);
    va_end(arguments);
    platform::debugEventText(text);
    platform::setLastSystemError(lastError);
}

void sendModuleAttach(void *module, const ZORDebugTableEntry *table) noexcept
{
    if (!platform::debuggerPresent()) return;
    unsigned counted = 0;
    for (const ZORDebugTableEntry *entry = table; entry != nullptr && entry->start != nullptr; ++entry)
        if (entry->start != entry->end) ++counted;
    char fileName[4096];
    if (platform::moduleFileName(module, fileName, sizeof fileName) == 0)
        services::formatTextInto(fileName, sizeof fileName, "<unknown module %p>", module);
    sendEventText("@{module_attach|%p|%3u|%3u|%3u|%3u|%p|%3u|%s:15|%u|%u|%u|%u|%u|%u|%u}@", module,
                  kVersion[0], kVersion[1], kVersion[2], kVersion[3], static_cast<const void *>(table),
                  counted, fileName, kRecordFields[0], kRecordFields[1], kRecordFields[2], kRecordFields[3],
                  kRecordFields[4], kRecordFields[5], kRecordFields[6]);
}

void sendModuleDetach(void *module) noexcept
{
    sendEventText("@{module_detach|%p:15}@", module);
}

void tellSteppingIntoNewContext() noexcept
{
    RuntimeRecord *runtime = runtimeRecord();
    if (runtime == nullptr) return;
    const auto *control = static_cast<const DebugControl *>(runtime->debugControl);
    if (control->steppingThreadId != platform::currentThreadId()) return;
    if (control->steppingMode == kNext || control->steppingMode == kOver)
        sendEventText("@{set_exe_state|into:15}@");
}

}  // namespace tollan::debugger
