// The types of the parameters that a checked variadic call passed, as the
// formatting library compares them with what its format string asks for,
// and the names its messages give them.
#pragma once

#include <cstdint>

#include "rtcheck/checking_environment.h"

namespace tollan::fmtio {

// Parameter type codes (GetTypeString names them).
enum ParameterTypeCode : int32_t {
    kParmAggregate = 0,
    kParmInt = 1,
    kParmLong = 5,
    kParmFloat = 9,
    kParmShort = 10,
    kParmVoid = 11,
    kParmPointerToVoid = 12,
    kParmChar = 13,
    kParmDouble = 14,
    kParmLongLong = 15,
};

// Size classes of a parameter without an element count of its own.
inline constexpr int8_t kSizeClassUnknownCount = -4;
inline constexpr int8_t kSizeClassCount = -6;  // the count is the element count

struct ParmTypeInfo {
    int32_t code;       // ParameterTypeCode
    uint8_t isPointer;  // an indirection bit was set
    int8_t sizeClass;   // -5, -3 .. -1 as given, kSizeClassUnknownCount or kSizeClassCount
    uint64_t count;     // elements: 0 for a scalar, UINT64_MAX when unknown
};

// The compiler's description of a parameter as a type record. A void that is
// no pointer is reported as an assertion (and taken as pointer to void).
ParmTypeInfo ConvertTypeSizeInfoToParmTypeInfo(const rtcheck::TypeSizeInfo &tsi) noexcept;

// The record of variadic parameter parmNum (1-based) of the calling thread's
// current call; an empty record (code 0, no pointer) past the recorded
// count, without a thread-state record, and for parmNum 0 or below, which is
// reported as an assertion.
ParmTypeInfo GetParmType(int32_t parmNum) noexcept;

}  // namespace tollan::fmtio
