// The layout of a thread's checking environment: the first
// ZOR_CHECKING_ENVIRONMENT_SIZE bytes of its thread-state record, which
// compiled debug code fills before the calls it checks, and which the
// execution contexts save and restore as a whole.
//
//   offset 0     the parameter slots of the pointer checks (not laid out yet:
//                kParameterSlotsSize bytes reserved for them)
//   offset 1592  the types of the variadic parameters of the current call
//
// Compiled code writes these bytes directly, so every offset and size here is
// part of the contract with the compiler; the checks below keep them fixed.
#pragma once

#include <cstddef>
#include <cstdint>

#include <tollan/debugger.h>

namespace tollan::rtcheck {

// The compiler's description of one parameter: its type number, with the
// indirection bits below when it is a pointer, and its size information: an
// element count, or one of the negative size classes.
struct TypeSizeInfo {
    int32_t type;
    int32_t reserved;
    int64_t sizeInfo;
};
inline constexpr int32_t kTypeIndirect1 = 0x100;
inline constexpr int32_t kTypeIndirect2 = 0x200;

// The most variadic parameters whose types a call records; the later ones
// of a longer call are not checked.
inline constexpr int32_t kRecordedVariadicParameters = 32;

// The variadic parameters of the current call: count of them recorded, and
// their descriptions in order (parameter 1 first).
struct VariadicParameterTypes {
    int32_t count;
    int32_t reserved;
    TypeSizeInfo types[kRecordedVariadicParameters];
};

inline constexpr size_t kParameterSlotsSize = 1592;
inline constexpr size_t kVariadicParameterTypesOffset = kParameterSlotsSize;

static_assert(sizeof(TypeSizeInfo) == 16);
static_assert(sizeof(VariadicParameterTypes) == 8 + 16 * kRecordedVariadicParameters);
static_assert(kVariadicParameterTypesOffset % alignof(VariadicParameterTypes) == 0);
static_assert(kVariadicParameterTypesOffset + sizeof(VariadicParameterTypes) == ZOR_CHECKING_ENVIRONMENT_SIZE,
              "the variadic parameter types end the checking environment");

}  // namespace tollan::rtcheck
