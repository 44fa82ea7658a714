// Parameter type records: from the compiler's descriptions in the thread's
// checking environment to the codes that the checking messages name.
#include "fmtio/parameter_types.h"

#include <cstddef>
#include <cstring>
#include <iterator>

#include <tollan/debugger.h>
#include <tollan/fmtio.h>

#include "fmtio/log_module.h"
#include "logger/log.h"

namespace tollan::fmtio {
namespace {

// The code of each compiler type number.
constexpr int32_t kCodeOfTypeNumber[] = {
    kParmAggregate,      // 0: not a type number
    kParmChar,           // 1
    kParmChar,           // 2
    kParmChar,           // 3
    kParmShort,          // 4
    kParmShort,          // 5
    kParmInt,            // 6
    kParmInt,            // 7
    kParmLong,           // 8
    kParmLong,           // 9
    kParmFloat,          // 10
    kParmDouble,         // 11
    kParmDouble,         // 12
    kParmPointerToVoid,  // 13: void, settled below
    kParmAggregate,      // 14
    kParmLongLong,       // 15
    kParmLongLong,       // 16
};
constexpr int32_t kTypeNumberCount = static_cast<int32_t>(std::size(kCodeOfTypeNumber));
static_assert(kTypeNumberCount == rtcheck::kTypeUnsignedInt64 + 1, "one code per type number");

bool isSizeClass(int64_t sizeInfo) noexcept
{
    return sizeInfo == -5 || (sizeInfo >= -3 && sizeInfo <= -1);
}

}  // namespace

ParmTypeInfo ConvertTypeSizeInfoToParmTypeInfo(const rtcheck::TypeSizeInfo &tsi) noexcept
{
    ParmTypeInfo info{};
    const int32_t typeNumber = rtcheck::typeNumberOf(tsi.type);
    info.isPointer = (tsi.type & rtcheck::kTypeIndirection) != 0 ? 1 : 0;
    info.code =
        typeNumber >= 0 && typeNumber < kTypeNumberCount ? kCodeOfTypeNumber[typeNumber] : kParmAggregate;
    if (typeNumber == rtcheck::kTypeVoid) {
        if ((tsi.type & rtcheck::kTypeIndirection) == 0)
            TOLLAN_ASSERT_FAILED("tsi.type & (TYPE_INDIRECT1 | TYPE_INDIRECT2)", kLogModule,
                                 "ConvertTypeSizeInfoToParmTypeInfo");
        if ((tsi.type & rtcheck::kTypeIndirect1) != 0) info.code = kParmVoid;
    }
    if (isSizeClass(tsi.sizeInfo)) {
        info.count = 0;
        info.sizeClass = static_cast<int8_t>(tsi.sizeInfo);
    } else if (tsi.sizeInfo == kSizeClassUnknownCount) {
        info.count = UINT64_MAX;
        info.sizeClass = kSizeClassUnknownCount;
    } else {
        info.count = static_cast<uint64_t>(tsi.sizeInfo);
        info.sizeClass = kSizeClassCount;
    }
    return info;
}

ParmTypeInfo GetParmType(int32_t parmNum) noexcept
{
    if (parmNum <= 0) {
        TOLLAN_ASSERT_FAILED("parmNum > 0", kLogModule, "GetParmType");
        return ParmTypeInfo{};
    }
    const ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    if (record == nullptr) return ParmTypeInfo{};
    // Compiled code wrote the block into the record's bytes; copying it out
    // reads it without assuming any object lives there.
    const unsigned char *block = record->checkingEnvironment + rtcheck::kVariadicParameterTypesOffset;
    int32_t count = 0;
    std::memcpy(&count, block + offsetof(rtcheck::VariadicParameterTypes, count), sizeof count);
    if (parmNum > count || parmNum > rtcheck::kRecordedVariadicParameters) return ParmTypeInfo{};
    rtcheck::TypeSizeInfo tsi{};
    std::memcpy(&tsi, block + offsetof(rtcheck::VariadicParameterTypes, types) + sizeof tsi * (parmNum - 1),
                sizeof tsi);
    return ConvertTypeSizeInfoToParmTypeInfo(tsi);
}

}  // namespace tollan::fmtio

const char *GetTypeString(int32_t code) noexcept
{
    using namespace tollan::fmtio;
    switch (code) {
        case kParmAggregate:
            return "aggregate or userdefined";
        case kParmInt:
            return "int";
        case kParmLong:
            return "long";
        case kParmFloat:
            return "float";
        case kParmShort:
            return "short";
        case kParmVoid:
            return "void";
        case kParmPointerToVoid:
            return "pointer to void";
        case kParmChar:
            return "char";
        case kParmDouble:
            return "double";
        case kParmLongLong:
            return "long long";
        default:
            TOLLAN_ASSERT_FAILED("Invalid parameter type code", kLogModule, "GetTypeString");
            return "";
    }
}
