// _UPLibChkVaArgs: the variable arguments of a call checked against what its
// format asks for, in the format language of the function's family.
#include <cstring>

#include <tollan/fmtio.h>
#include <tollan/rtcheck.h>

#include "rtcheck/vacheck_calls.h"
#include "stdc/format_argument_types.h"

namespace tollan::rtcheck {
namespace {

using stdc::ArgumentType;

// The C library's sizes as the type model names them: wchar_t is the
// integer of its size, and the size_t family is __int64's.
const Tynode *nodeOf(ArgumentType type) noexcept
{
    switch (type) {
        case ArgumentType::Int:
            return inttype;
        case ArgumentType::UnsignedInt:
            return unsignedtype;
        case ArgumentType::Long:
            return longtype;
        case ArgumentType::UnsignedLong:
            return unsignedlong;
        case ArgumentType::LongLong:
        case ArgumentType::Intmax:
            return int64type;
        case ArgumentType::UnsignedLongLong:
        case ArgumentType::Uintmax:
            return unsignedint64;
        case ArgumentType::SignedChar:
            return signedchar;
        case ArgumentType::UnsignedChar:
            return unsignedchar;
        case ArgumentType::Short:
            return shorttype;
        case ArgumentType::UnsignedShort:
            return unsignedshort;
        case ArgumentType::Char:
            return chartype;
        case ArgumentType::WideChar:
            return sizeof(wchar_t) == 2 ? unsignedshort : inttype;
        case ArgumentType::Float:
            return floattype;
        case ArgumentType::Double:
            return doubletype;
        case ArgumentType::LongDouble:
            return longdouble;
        case ArgumentType::Void:
            return voidtype;
        case ArgumentType::Size:
            return sizetype;
        case ArgumentType::Ptrdiff:
            return ptrdifftype;
    }
    return nullptr;
}

// Each walk returns false when it reported an argument.
bool walkCFormat(const char *format, stdc::FormatFamily family) noexcept
{
    const char *cursor = format;
    stdc::FormatArgument arguments[stdc::kMostArgumentsPerConversion];
    int count = 0;
    for (;;) {
        const stdc::FormatStep step = stdc::nextFormatArguments(&cursor, family, arguments, &count);
        if (step == stdc::FormatStep::end) return true;
        if (step == stdc::FormatStep::malformed) {
            // The engine stops here; the arguments after this point go unread, which is no fault.
            abandonVariadicCheck();
            return true;
        }
        for (int i = 0; i < count; ++i)
            if (!checkNextArgument(TypeView{nodeOf(arguments[i].type), arguments[i].indirection}))
                return false;
    }
}

const Tynode *integerOfSize(uint64_t size) noexcept
{
    if (size <= 1) return chartype;
    if (size == 2) return shorttype;
    return size <= 4 ? inttype : int64type;
}

// What the call passes for a table entry after the first, which stands for
// the fixed target or source parameter (or the file) and is no variable
// argument. Fmt's sources come by value (char and float promoted, which the
// table already says) unless they are strings or arrays; Scan's targets
// always by address. A '*' takes an int.
TypeView expectedOfEntry(const ArgTypeEntry &entry, bool isScan) noexcept
{
    if (entry.fromAsterisk != 0) return {inttype, 0};
    if (entry.kind == FMT_ITEM_STRING) return {chartype, 1};
    const Tynode *element = entry.kind == FMT_ITEM_REAL ? (entry.elementSize == 4 ? floattype : doubletype)
                                                        : integerOfSize(entry.elementSize);
    if (isScan || entry.isArray != 0) return {element, 1};
    if (entry.kind == FMT_ITEM_REAL) return {doubletype, 0};
    return {entry.elementSize <= 4 ? inttype : int64type, 0};
}

bool walkFormatLanguage(const char *format, bool isScan) noexcept
{
    ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS];
    const int32_t entries = generate_arg_types(format, std::strlen(format), table, isScan ? 1 : 0, nullptr);
    if (entries <= 0) {
        // The engine reports the format itself; what it asks for is unknown.
        abandonVariadicCheck();
        return true;
    }
    for (int32_t i = 1; i < entries; ++i)
        if (!checkNextArgument(expectedOfEntry(table[i], isScan))) return false;
    return true;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

int32_t _UPLibChkVaArgs(const char *format, int32_t family, int32_t argpos, const void *frame) noexcept
{
    if (format == nullptr || family < ZOR_VA_PRINTF || family > ZOR_VA_SCAN) return 1;
    bool quiet = true;
    if (openVariadicCheck(argpos, frame)) {
        switch (family) {
            case ZOR_VA_PRINTF:
                quiet = walkCFormat(format, tollan::stdc::FormatFamily::printf);
                break;
            case ZOR_VA_SCANF:
                quiet = walkCFormat(format, tollan::stdc::FormatFamily::scanf);
                break;
            default:
                quiet = walkFormatLanguage(format, family == ZOR_VA_SCAN);
                break;
        }
    }
    return closeVariadicCheck() && quiet ? 1 : 0;
}
