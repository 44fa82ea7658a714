// The directive loop of the scanf engine: white space, ordinary bytes and
// conversions in turn, until the format ends or a directive fails.
#include "stdc/scanf_engine.h"

#include "stdc/scanf_arguments.h"
#include "stdc/scanf_float.h"
#include "stdc/scanf_format.h"
#include "stdc/scanf_input.h"
#include "stdc/scanf_integer.h"
#include "stdc/scanf_text.h"

namespace tollan::stdc {
namespace {

ScanOutcome matchByte(ScanInput &input, unsigned char expected) noexcept
{
    const int byte = input.next();
    if (byte < 0) return ScanOutcome::inputFailure;
    if (byte == expected) return ScanOutcome::done;
    input.giveBack(byte);
    return ScanOutcome::matchingFailure;
}

ScanOutcome runConversion(ScanInput &input, const ScanConversion &conversion,
                          ScanArguments &arguments) noexcept
{
    switch (conversion.type) {
        case '%':
            if (!input.skipWhiteSpace()) return ScanOutcome::inputFailure;
            return matchByte(input, '%');
        case 'n':
            storeInteger(arguments, conversion.size, true, input.consumed());
            return ScanOutcome::done;
        case 'c':
            return scanCharacters(input, conversion, arguments);
        case 's':
        case '[':
            return scanRun(input, conversion, arguments);
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
        case 'p':
            return scanInteger(input, conversion, arguments);
        default:
            return scanFloating(input, conversion, arguments);
    }
}

int runDirectives(ScanInput &input, const char *format, ScanArguments &arguments) noexcept
{
    int assigned = 0;
    // Whether a conversion that reads input has completed: an input failure
    // after one no longer returns EOF.
    bool converted = false;
    const char *at = format;
    while (*at != '\0') {
        ScanOutcome outcome = ScanOutcome::done;
        if (isScanSpace(static_cast<unsigned char>(*at))) {
            while (isScanSpace(static_cast<unsigned char>(*at))) ++at;
            input.skipWhiteSpace();
        } else if (*at != '%') {
            outcome = matchByte(input, static_cast<unsigned char>(*at++));
        } else {
            ScanConversion conversion;
            at = parseScanConversion(at, &conversion);
            if (at == nullptr) break;
            outcome = runConversion(input, conversion, arguments);
            if (outcome == ScanOutcome::done && conversion.type != 'n' && conversion.type != '%') {
                converted = true;
                if (!conversion.suppress) ++assigned;
            }
        }
        if (outcome == ScanOutcome::inputFailure) return converted ? assigned : -1;
        if (outcome == ScanOutcome::matchingFailure) break;
    }
    return assigned;
}

}  // namespace

int scanFormatted(TextSource &source, const char *format, va_list arguments) noexcept
{
    ScanArguments taken(arguments);
    ScanInput input(source);
    return runDirectives(input, format, taken);
}

}  // namespace tollan::stdc
