// The walk of Fmt and Scan over their format string: one item at a time
// through the parser, fetching the arguments each item's table entries name
// as they appear, so that '*' values are at hand when the item converts.
#pragma once

#include <cstdint>

#include <tollan/fmtio.h>

#include "fmtio/fmt_arguments.h"
#include "fmtio/fmt_conversion.h"

namespace tollan::fmtio {

class FormatWalk {
public:
    // target is the first parameter of the call (Fmt's target, Scan's
    // source), which the first item names. Each step takes the arguments of
    // its item from args, the call's arguments after the format.
    FormatWalk(const char *format, bool isScan, const void *target) noexcept;

    // What the first step found before the separator.
    enum class First : uint8_t {
        item,     // the first item, in *item
        implied,  // none: the first parameter is an implied string
    };
    // Parses the first item. Returns 0, or the message number of a parse
    // error (already reported).
    int32_t first(FormatItem *item, First *found, FormatArguments &args) noexcept;

    // Parses the next item of the second half. Returns 0 with *more false at
    // the end of the format string, or the message number of a parse error.
    int32_t next(FormatItem *item, bool *more, FormatArguments &args) noexcept;

    // Resolves item for its role; see resolveConversion.
    int32_t resolve(const FormatItem &item, Role role, bool sourceSplitsAtComma,
                    Conversion *conversion) const noexcept;

    // The argument of the item's own parameter.
    const ArgumentValue &parameterOf(const FormatItem &item) const noexcept
    {
        return values_[item.parameterIndex];
    }

private:
    int32_t step(bool isFirst, FormatItem *item, int32_t *result, FormatArguments &args) noexcept;
    void fetch(int32_t from, const FormatItem &item, int32_t boundIndex, FormatArguments &args) noexcept;

    const char *start_;
    const char *cursor_;
    const char *end_;
    bool isScan_;
    const void *target_;
    int32_t entryCount_ = 0;
    ArgTypeEntry table_[TOLLAN_FMT_MAX_ARGS + 1];
    // Written for each entry as it appears, before any marker can name it.
    ArgumentValue values_[TOLLAN_FMT_MAX_ARGS + 2];
    const char *separator_ = nullptr;  // the last item's j characters
    size_t separatorLength_ = 0;
};

}  // namespace tollan::fmtio
