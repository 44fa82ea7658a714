#include "fmtio/scan_string.h"

#include <cstring>

namespace tollan::fmtio {
namespace {

bool separatorAt(const ScanText &text, const Conversion &conversion, const char *at) noexcept
{
    return conversion.separatorLength != 0 &&
           static_cast<size_t>(text.end - at) >= conversion.separatorLength &&
           std::memcmp(at, conversion.separator, conversion.separatorLength) == 0;
}

}  // namespace

int32_t scanString(ScanText &text, const Conversion &conversion, char *target) noexcept
{
    const FormatItem &item = *conversion.item;
    const bool keepSpace = item.as.string.lineFlag != 0 || item.as.string.yFlag != 0;
    const char *at = text.at;
    if (!keepSpace)
        while (at < text.end && isScanSpace(*at)) ++at;
    if (at == text.end) return kSourceEnded;

    const char *first = at;
    while (at < text.end && at - first < conversion.width &&
           inCharacterSet(conversion, static_cast<unsigned char>(*at)) && !separatorAt(text, conversion, at))
        ++at;
    const auto length = static_cast<size_t>(at - first);
    if (target) {
        std::memcpy(target, first, length);
        if (item.as.string.qByte != 0) target[length] = '\0';
    }
    if (separatorAt(text, conversion, at)) at += conversion.separatorLength;
    text.at = at;
    return 0;
}

}  // namespace tollan::fmtio
