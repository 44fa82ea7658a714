#include "rtcheck/report_position.h"

#include <tollan/debugger.h>

#include "rtcheck/break_settings.h"

namespace tollan::rtcheck {

SourcePosition currentSourcePosition() noexcept
{
    const ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    const ThreadReportState &state = threadReportState();
    const bool statement = record != nullptr && record->location.line > 0;
    SourcePosition position{};
    position.known = statement || state.hasErrorPosition;
    position.file = record != nullptr ? record->location.fileName : nullptr;
    position.firstLine = statement ? record->location.line : state.errorLine;
    position.firstColumn = statement ? record->location.column : state.errorColumn;
    position.lastLine = state.hasErrorPosition ? state.errorLine : position.firstLine;
    position.lastColumn = state.hasErrorPosition ? state.errorColumn : position.firstColumn;
    return position;
}

}  // namespace tollan::rtcheck
