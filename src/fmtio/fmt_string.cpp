#include "fmtio/fmt_string.h"

namespace tollan::fmtio {
namespace {

bool endsString(const Conversion &conversion, const char *at, int64_t taken) noexcept
{
    if (conversion.width == kUnlimited)
        return *at == '\0' || !inCharacterSet(conversion, static_cast<unsigned char>(*at));
    return taken >= conversion.width || !inCharacterSet(conversion, static_cast<unsigned char>(*at));
}

}  // namespace

int32_t formatString(ByteBuffer &out, const Conversion &conversion, const char *text) noexcept
{
    const char *start = text + offsetWithin(conversion, text);
    int64_t length = 0;
    while (!endsString(conversion, start + length, length)) ++length;

    const FormatItem &item = *conversion.item;
    const int64_t padding = conversion.width == kUnlimited ? 0 : conversion.width - length;
    const char pad = static_cast<char>(item.as.string.qByte);
    if (item.as.string.yFlag) out.fill(pad, static_cast<size_t>(padding));
    out.append(start, static_cast<size_t>(length));
    if (!item.as.string.yFlag) out.fill(pad, static_cast<size_t>(padding));
    return 0;
}

}  // namespace tollan::fmtio
