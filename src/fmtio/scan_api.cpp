// The exported Scan family and its counts.
#include <cstdarg>

#include <tollan/fmtio.h>

#include "fmtio/fmt_arguments.h"
#include "fmtio/fmt_results.h"
#include "fmtio/scan_engine.h"

using namespace tollan::fmtio;

int32_t Scan(const void *source, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    FormatArguments arguments(args);
    const int32_t result = runScan(ScanOrigin{ScanOrigin::Kind::memory, source, 0}, format, arguments);
    va_end(args);
    return result;
}

int32_t ScanFile(int32_t handle, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    FormatArguments arguments(args);
    const int32_t result = runScan(ScanOrigin{ScanOrigin::Kind::file, nullptr, handle}, format, arguments);
    va_end(args);
    return result;
}

int32_t ScanIn(const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    FormatArguments arguments(args);
    const int32_t result =
        runScan(ScanOrigin{ScanOrigin::Kind::standardInput, nullptr, 0}, format, arguments);
    va_end(args);
    return result;
}

int32_t NumScanItems(void) noexcept
{
    return formatResults().scanItems;
}

int32_t NumScanBytes(void) noexcept
{
    return formatResults().scanBytes;
}
