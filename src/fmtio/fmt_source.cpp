#include "fmtio/fmt_source.h"

#include "fmtio/fmt_elements.h"
#include "fmtio/fmt_integer.h"
#include "fmtio/fmt_real.h"
#include "fmtio/fmt_string.h"

namespace tollan::fmtio {
namespace {

int32_t formatScalar(ByteBuffer &out, const Conversion &conversion, const ArgumentValue &value) noexcept
{
    if (conversion.item->kind == FMT_ITEM_REAL) return formatReal(out, conversion, value.real, false);
    return formatInteger(out, conversion, static_cast<uint64_t>(value.integer));
}

void putSeparator(ByteBuffer &out, const Conversion &conversion) noexcept
{
    if (conversion.separator)
        out.append(conversion.separator, conversion.separatorLength);
    else if (!conversion.binary)
        out.append(',');
}

}  // namespace

int32_t formatParameter(ByteBuffer &out, const Conversion &conversion, const ArgumentValue &value,
                        bool byValue) noexcept
{
    const FormatItem &item = *conversion.item;
    if (item.kind == FMT_ITEM_INTEGER || item.kind == FMT_ITEM_REAL)
        if (byValue) return formatScalar(out, conversion, value);
    if (!value.pointer) return FMT_ERR_NULL_POINTER;
    if (item.kind == FMT_ITEM_STRING)
        return formatString(out, conversion, static_cast<const char *>(value.pointer));

    for (uint32_t k = 0; k < conversion.count; ++k) {
        if (k != 0) putSeparator(out, conversion);
        const char *at = elementAt(value.pointer, conversion, k);
        const int32_t error = item.kind == FMT_ITEM_REAL
                                  ? formatReal(out, conversion, loadReal(at, item.size), item.size == 4)
                                  : formatInteger(out, conversion, loadInteger(at, item.size));
        if (error) return error;
    }
    return 0;
}

}  // namespace tollan::fmtio
