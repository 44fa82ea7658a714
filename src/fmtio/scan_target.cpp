#include "fmtio/scan_target.h"

#include <cstring>

#include "fmtio/fmt_elements.h"
#include "fmtio/scan_integer.h"
#include "fmtio/scan_real.h"
#include "fmtio/scan_string.h"

namespace tollan::fmtio {
namespace {

void passSeparator(ScanText &text, const Conversion &conversion) noexcept
{
    if (conversion.binary) return;
    while (text.at < text.end && isScanSpace(*text.at)) ++text.at;
    const char *separator = conversion.separator ? conversion.separator : ",";
    const size_t length = conversion.separator ? conversion.separatorLength : 1;
    if (static_cast<size_t>(text.end - text.at) >= length && std::memcmp(text.at, separator, length) == 0)
        text.at += length;
}

int32_t scanElement(ScanText &text, const Conversion &conversion, char *at) noexcept
{
    const FormatItem &item = *conversion.item;
    if (item.kind == FMT_ITEM_REAL) {
        double value = 0;
        const int32_t result = scanReal(text, conversion, &value, item.size == 4);
        if (result == 0 && at) storeReal(at, item.size, value);
        return result;
    }
    uint64_t bits = 0;
    const int32_t result = scanInteger(text, conversion, &bits);
    if (result == 0 && at) storeInteger(at, item.size, bits);
    return result;
}

int32_t scanElements(ScanText &text, const Conversion &conversion, void *target) noexcept
{
    for (uint32_t k = 0; k < conversion.count; ++k) {
        if (k != 0) passSeparator(text, conversion);
        char *at = target ? const_cast<char *>(elementAt(target, conversion, k)) : nullptr;
        if (const int32_t result = scanElement(text, conversion, at)) return result;
    }
    return 0;
}

// A string target starts after the text already in it (a) and its offset,
// which take their part of its width.
int32_t scanIntoString(ScanText &text, const Conversion &conversion, void *target) noexcept
{
    if (!target) return scanString(text, conversion, nullptr);
    char *string = static_cast<char *>(target);
    char *start = string;
    if (conversion.item->as.string.aFlag) start += std::strlen(start);
    start += conversion.offset;
    if (conversion.width == kUnlimited) return scanString(text, conversion, start);
    const int64_t before = start - string;
    if (before > conversion.width) return FMT_ERR_WRITE_PAST_STRING;
    Conversion rest = conversion;
    rest.width -= before;
    return scanString(text, rest, start);
}

}  // namespace

int32_t scanParameter(ScanText &text, const Conversion &conversion, void *target) noexcept
{
    const int32_t result = conversion.item->kind == FMT_ITEM_STRING ? scanIntoString(text, conversion, target)
                                                                    : scanElements(text, conversion, target);
    if (result == 0 && conversion.item->xFlag && text.at < text.end) ++text.at;
    return result;
}

}  // namespace tollan::fmtio
