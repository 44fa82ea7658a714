#include "fmtio/format_parser_report.h"

#include <tollan/debugger.h>
#include <tollan/fmtio.h>
#include <tollan/rtcheck.h>

#include "services/messages.h"

namespace tollan::fmtio {

void reportFormatError(int32_t errorOffset, int32_t messageNumber) noexcept
{
    const ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    const int32_t line = record != nullptr ? record->location.line : 0;
    const int32_t column = record != nullptr ? record->location.column : 0;
    const int32_t characterNumber = errorOffset < INT32_MAX ? errorOffset + 1 : INT32_MAX;
    ReportUPError(ZOR_RTE_NON_FATAL, FMT_ERR_AT_CHARACTER_WITH_TEXT, line, column, characterNumber,
                  services::libraryMessage(messageNumber));
}

}  // namespace tollan::fmtio
