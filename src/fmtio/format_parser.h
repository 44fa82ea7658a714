// The format language's item parser, inside: the state of one item's parse
// and the pieces that ParseFormatItem puts together (literal and specifier
// items, the bracketed modifiers of each kind, numbers, the argument table).
// Nothing here allocates; a parse is a walk over the caller's bytes.
#pragma once

#include <cstdint>

#include <tollan/fmtio.h>

namespace tollan::fmtio {

// One item's parse. The pieces advance `cursor`; a piece that fails records
// the message number and the offending position through fail() and returns
// false, and the parse stops there.
struct ItemParse {
    const char *cursor;
    const char *end;
    ArgTypeEntry *table;  // may be null: entries are then only counted
    int32_t entryCount;
    bool isScan;
    bool isFirst;  // the item may be followed by the separator
    FormatItem *item;
    char letter;          // the specifier's letter
    bool discard;         // the d modifier: no parameter of its own
    bool byteOrderGiven;  // an o modifier was seen
    int32_t errorCode;
    const char *errorAt;

    bool fail(int32_t code, const char *at) noexcept
    {
        errorCode = code;
        errorAt = at;
        return false;
    }
    char separator() const noexcept { return isScan ? '>' : '<'; }
};

inline bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

// The largest number the format language accepts as digits; more is 209,
// like digits that run to the end, rather than a value cut to its field.
inline constexpr int64_t kLargestFormatNumber = INT32_MAX;

// ---- the argument table (format_parser_arguments.cpp)

// Appends an entry; its 1-based index, or 0 after failing with 208 at `at`
// when the table is full.
int32_t appendEntry(ItemParse &parse, uint16_t kind, bool isArray, uint64_t elementSize, bool fromAsterisk,
                    const char *at) noexcept;
// Appends the integer that a '*' at `at` consumes; its index, 0 on failure.
int32_t appendAsteriskEntry(ItemParse &parse, const char *at) noexcept;
// Makes the first item's own entry the table's first and raises the '*'
// indices that the item recorded before it by one.
void moveFirstItemEntryToFront(ItemParse &parse) noexcept;

// ---- numbers (format_parser_numbers.cpp)

// What a number of a modifier may be besides decimal digits.
enum class Asterisk : uint8_t {
    allowed,  // '*': the value comes from the next argument
    refused,  // '*' fails with 208 (a count no argument may give)
};

// Reads the number at the cursor: '*' (an
// argument entry; *marker its index) or decimal digits (*marker
// FMT_MARKER_LITERAL, *value the number). Fails with 207 for no digits or
// white space, 209 for digits that run to the end or exceed
// kLargestFormatNumber, 208 for a refused '*', and as failEndInBrackets at
// the end of the string; *marker is then FMT_MARKER_ERROR.
bool readNumber(ItemParse &parse, Asterisk asterisk, int64_t *value, int8_t *marker) noexcept;

// readNumber with '*' allowed, for a modifier whose field takes the number
// only when it is written out in digits (a '*' value comes at conversion).
template <typename Field>
bool readNumberInto(ItemParse &parse, int8_t *marker, Field *field) noexcept
{
    int64_t value = 0;
    if (!readNumber(parse, Asterisk::allowed, &value, marker)) return false;
    if (*marker == FMT_MARKER_LITERAL) *field = static_cast<Field>(value);
    return true;
}

// ---- items (format_parser_items.cpp)

// A literal item starting at `start`: the cursor, or the character after a
// '%' escape (escaped), which belongs to the text whatever it is.
bool parseLiteral(ItemParse &parse, const char *start, bool escaped) noexcept;
// A specifier: the cursor is on the character after '%'.
bool parseSpecifier(ItemParse &parse) noexcept;
// The string parameter that a format without a first item implies (or an
// empty one): a string item at `position` and its entry, kind 3, scalar,
// size 1.
bool parseImpliedString(ItemParse &parse, const char *position) noexcept;

// ---- modifiers (format_parser_modifiers.cpp and one file per kind)

// A modifier letter's handler: the cursor is past the letter, the item's
// position on it.
using ModifierHandler = bool (*)(ItemParse &parse);
// One handler per letter 'a' to 'z'; null: the letter is no modifier (218).
struct ModifierTable {
    ModifierHandler byLetter[26];
};
extern const ModifierTable kIntegerModifiers;
extern const ModifierTable kRealModifiers;
extern const ModifierTable kStringModifiers;

// The bracketed modifiers after the letter, when the cursor is on '['.
bool parseModifiers(ItemParse &parse) noexcept;
// The end of the string inside the brackets: 212, or 219 for string items.
bool failEndInBrackets(ItemParse &parse) noexcept;

// Modifiers that mean the same for every kind, shared by the tables.
bool modifierDiscard(ItemParse &parse) noexcept;
bool modifierI(ItemParse &parse) noexcept;
bool modifierJ(ItemParse &parse) noexcept;
bool modifierWidth(ItemParse &parse) noexcept;
bool modifierX(ItemParse &parse) noexcept;
bool modifierZ(ItemParse &parse) noexcept;

}  // namespace tollan::fmtio
