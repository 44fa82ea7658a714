#include "fmtio/fmt_walk.h"

#include <cstring>

#include "fmtio/format_parser_report.h"

namespace tollan::fmtio {
namespace {

// How the item's own parameter arrives: Fmt's scalar numbers by value
// (promoted to int, long long or double), everything else by address.
ArgumentValue fetchOwn(const FormatItem &item, bool isScan, FormatArguments &args) noexcept
{
    ArgumentValue value{};
    const bool byValue = !isScan && (item.kind == FMT_ITEM_INTEGER || item.kind == FMT_ITEM_REAL) &&
                         item.repetitionMarker == FMT_MARKER_DEFAULT && !item.zFlag;
    if (!byValue) {
        value.pointer = args.nextAddress();
    } else if (item.kind == FMT_ITEM_REAL) {
        value.real = args.nextDouble();
    } else {
        value.integer = item.size > 4 ? args.nextLongLong() : args.nextInt();
    }
    return value;
}

}  // namespace

FormatWalk::FormatWalk(const char *format, bool isScan, const void *target) noexcept
    : start_(format), cursor_(format), end_(format + std::strlen(format)), isScan_(isScan), target_(target)
{
}

int32_t FormatWalk::step(bool isFirst, FormatItem *item, int32_t *result, FormatArguments &args) noexcept
{
    const int32_t from = entryCount_;
    int32_t errorCode = 0;
    *result = ParseFormatItem(&cursor_, end_, table_, &entryCount_, isScan_, isFirst, item, &errorCode);
    if (*result == FMT_PARSE_ERROR) {
        reportFormatError(static_cast<int32_t>(cursor_ - start_), errorCode);
        return errorCode;
    }
    // The characters named by a literal j belong to the item (its separator),
    // not to the text that follows.
    separator_ = nullptr;
    separatorLength_ = 0;
    if (*result != FMT_PARSE_END && item->jMarker == FMT_MARKER_LITERAL) {
        const auto left = static_cast<size_t>(end_ - cursor_);
        separator_ = cursor_;
        separatorLength_ = item->jValue < left ? item->jValue : left;
        cursor_ += separatorLength_;
    }
    // The first step's entries are fetched once it is known what it found.
    if (!isFirst) fetch(from, *item, 0, args);
    return 0;
}

void FormatWalk::fetch(int32_t from, const FormatItem &item, int32_t boundIndex,
                       FormatArguments &args) noexcept
{
    for (int32_t index = from + 1; index <= entryCount_ && index <= TOLLAN_FMT_MAX_ARGS; ++index) {
        if (index == boundIndex) {
            values_[index].pointer = target_;
        } else if (table_[index - 1].fromAsterisk) {
            values_[index].integer = args.nextInt();
        } else {
            values_[index] = fetchOwn(item, isScan_, args);
        }
    }
}

int32_t FormatWalk::first(FormatItem *item, First *found, FormatArguments &args) noexcept
{
    int32_t result = 0;
    if (const int32_t error = step(true, item, &result, args)) return error;
    if (result == FMT_PARSED_FIRST_ITEM) {
        *found = First::item;
        fetch(0, *item, item->parameterIndex, args);
        return 0;
    }
    // No first item: the first parameter is an implied string, the table's
    // first entry. Unless the string began with the separator, the whole
    // string is the second half; the parser has already parsed its first
    // item as such, but the walk takes it again from the start so that the
    // second half is walked in one way only.
    *found = First::implied;
    if (result != FMT_PARSED_SEPARATOR) cursor_ = start_;
    entryCount_ = 1;
    values_[1].pointer = target_;
    return 0;
}

int32_t FormatWalk::next(FormatItem *item, bool *more, FormatArguments &args) noexcept
{
    int32_t result = 0;
    if (const int32_t error = step(false, item, &result, args)) return error;
    *more = result != FMT_PARSE_END;
    return 0;
}

int32_t FormatWalk::resolve(const FormatItem &item, Role role, bool sourceSplitsAtComma,
                            Conversion *conversion) const noexcept
{
    const int32_t error = resolveConversion(item, values_, role, sourceSplitsAtComma, conversion);
    conversion->separator = separator_;
    conversion->separatorLength = separatorLength_;
    return error;
}

}  // namespace tollan::fmtio
