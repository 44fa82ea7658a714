// libFuzzer fuzzer for the format language's parser (generate_arg_types and
// ParseFormatItem).
//
// Input: one byte of settings (bit 0: the Scan family), then the format
// string, which the parser sees as exactly that many bytes in a buffer of its
// own, so that AddressSanitizer catches any read past its end. What is
// checked, besides no crash and no undefined behaviour:
//   - generate_arg_types returns a count of at most 30, or an error number
//     of the parser (206 to 223) with an offset inside the string, and
//     counting alone (no table) gives the same result;
//   - walking the string item by item, every call either ends the walk or
//     moves the cursor on; the cursor stays inside the string; the table
//     never grows past 30 entries;
//   - every index an item records (its own parameter, each '*') names an
//     entry of the right sort: '*' entries are 4-byte integers taken by a
//     '*', the item's own entry matches its kind, size and repetition.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <tollan/fmtio.h>

namespace {

void require(bool condition)
{
    if (!condition) std::abort();
}

void checkAsteriskIndex(const ArgTypeEntry *table, int32_t count, int8_t marker)
{
    require(marker >= FMT_MARKER_LITERAL);
    if (marker <= 0) return;
    require(marker <= count);
    const ArgTypeEntry &entry = table[marker - 1];
    require(entry.kind == FMT_ITEM_INTEGER && entry.fromAsterisk == 1 && entry.elementSize == 4 &&
            entry.isArray == 0);
}

void checkItem(const FormatItem &item, const ArgTypeEntry *table, int32_t count)
{
    if (item.kind == FMT_ITEM_LITERAL) {
        require(item.parameterIndex == 0);
        return;
    }
    require(item.kind >= FMT_ITEM_INTEGER && item.kind <= FMT_ITEM_STRING);
    checkAsteriskIndex(table, count, item.repetitionMarker);
    checkAsteriskIndex(table, count, item.iMarker);
    checkAsteriskIndex(table, count, item.widthMarker);
    require(item.sizeMarker == FMT_MARKER_DEFAULT || item.sizeMarker == FMT_MARKER_LITERAL);
    require(item.jMarker == FMT_MARKER_DEFAULT || item.jMarker == FMT_MARKER_LITERAL);
    require(item.jValue <= 256);
    if (item.kind == FMT_ITEM_INTEGER) {
        checkAsteriskIndex(table, count, item.as.integer.radixMarker);
        require(item.size >= 1 && item.size <= 8);
    }
    if (item.kind == FMT_ITEM_REAL) {
        checkAsteriskIndex(table, count, item.as.real.precisionMarker);
        checkAsteriskIndex(table, count, item.as.real.exponentDigitsMarker);
        require(item.size == 4 || item.size == 8);
    }
    if (item.parameterIndex == 0) return;
    require(item.parameterIndex <= count);
    const ArgTypeEntry &own = table[item.parameterIndex - 1];
    require(own.fromAsterisk == 0);
    require(own.isArray == (item.repetitionMarker != FMT_MARKER_DEFAULT ? 1 : 0));
    if (item.kind == FMT_ITEM_STRING) {
        require(own.kind == FMT_ITEM_STRING && own.elementSize == 1);
    } else {
        require(own.kind == (item.zFlag != 0 ? FMT_ITEM_STRING : item.kind));
        require(own.elementSize == static_cast<uint64_t>(item.size));
    }
}

void walkItems(const char *format, size_t length, int32_t isScan)
{
    ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS];
    int32_t count = 0;
    const char *cursor = format;
    const char *end = format + length;
    for (bool first = true;; first = false) {
        const char *before = cursor;
        FormatItem item;
        int32_t error = 0;
        const int32_t result = ParseFormatItem(&cursor, end, table, &count, isScan, first, &item, &error);
        require(cursor >= format && cursor <= end);
        require(count >= 0 && count <= TOLLAN_FMT_MAX_ARGS);
        if (result == FMT_PARSE_ERROR) {
            require(error >= FMT_ERR_ILLEGAL_SEPARATOR && error <= FMT_ERR_UNKNOWN_SPECIFIER);
            return;
        }
        if (result == FMT_PARSE_END) return;
        require(cursor > before || result == FMT_PARSED_SEPARATOR);
        require(first || result == FMT_PARSED_ITEM);
        checkItem(item, table, count);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0) return 0;
    const int32_t isScan = data[0] & 1;
    // A buffer of exactly the format's size; a null pointer for none.
    std::vector<char> format(data + 1, data + size);
    const char *bytes = format.empty() ? nullptr : format.data();

    ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS];
    int32_t error = -1;
    const int32_t result = generate_arg_types(bytes, format.size(), table, isScan, &error);
    require(result <= TOLLAN_FMT_MAX_ARGS);
    if (result < 0 || (result == 0 && error != 0)) {
        require(-static_cast<int64_t>(result) <= static_cast<int64_t>(format.size()));
        require(error >= FMT_ERR_ILLEGAL_SEPARATOR && error <= FMT_ERR_UNKNOWN_SPECIFIER);
    } else {
        require(error == 0);
    }
    int32_t countedError = -1;
    require(generate_arg_types(bytes, format.size(), nullptr, isScan, &countedError) == result);
    require(countedError == error);

    if (bytes != nullptr) walkItems(bytes, format.size(), isScan);
    return 0;
}
