// The exported Fmt family and its byte count.
#include <cstdarg>

#include <tollan/fmtio.h>

#include "fmtio/fmt_arguments.h"
#include "fmtio/fmt_engine.h"
#include "fmtio/fmt_results.h"

using namespace tollan::fmtio;

int32_t Fmt(void *target, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    FormatArguments arguments(args);
    const int32_t result = runFmt(FmtDestination{FmtDestination::Kind::memory, target, 0}, format, arguments);
    va_end(args);
    return result;
}

int32_t FmtFile(int32_t handle, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    FormatArguments arguments(args);
    const int32_t result =
        runFmt(FmtDestination{FmtDestination::Kind::file, nullptr, handle}, format, arguments);
    va_end(args);
    return result;
}

int32_t FmtOut(const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    FormatArguments arguments(args);
    const int32_t result =
        runFmt(FmtDestination{FmtDestination::Kind::standardOutput, nullptr, 0}, format, arguments);
    va_end(args);
    return result;
}

int32_t NumFmtdBytes(void) noexcept
{
    return formatResults().fmtdBytes;
}
