// The layout of a thread's checking environment: the first
// ZOR_CHECKING_ENVIRONMENT_SIZE bytes of its thread-state record, which
// compiled debug code fills before the calls it checks, and which the
// execution contexts save and restore as a whole.
//
//   offset 0     the hand-over of pointer information across the current call:
//                the callee, the return value's information, and one slot and
//                one source coordinate per argument (ParameterArea)
//   offset 1592  the types of the variadic parameters of the current call
//
// Compiled code writes these bytes directly, so every offset and size here is
// part of the contract with the compiler; the checks below keep them fixed.
#pragma once

#include <cstddef>
#include <cstdint>

#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

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
inline constexpr int32_t kTypeIndirection = kTypeIndirect1 | kTypeIndirect2;

// The compiler's type numbers (TypeSizeInfo::type without the indirection
// bits). Numbers outside 1..16 are described as aggregates.
enum CompilerTypeNumber : int32_t {
    kTypeChar = 1,
    kTypeSignedChar = 2,
    kTypeUnsignedChar = 3,
    kTypeShort = 4,
    kTypeUnsignedShort = 5,
    kTypeInt = 6,
    kTypeUnsignedInt = 7,
    kTypeLong = 8,
    kTypeUnsignedLong = 9,
    kTypeFloat = 10,
    kTypeDouble = 11,
    kTypeLongDouble = 12,
    kTypeVoid = 13,
    kTypeAggregate = 14,  // a struct, union or any type without a number of its own
    kTypeInt64 = 15,
    kTypeUnsignedInt64 = 16,
};

constexpr int32_t typeNumberOf(int32_t type) noexcept
{
    return type & ~kTypeIndirection;
}

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

// What the caller hands over for one argument: its resolved pointer
// information, the block of a pointer argument (null otherwise), its type.
struct ParameterSlot {
    PtrInfo *info;
    BlkInfo *blk;
    const Tynode *type;
};

struct ArgumentCoordinate {
    int32_t line;
    int32_t column;
};

// The most arguments of one call whose information is handed over; the
// later ones of a longer call are treated as carrying none.
inline constexpr int32_t kParameterSlots = 48;

struct ParameterArea {
    const void *callee;          // the function the current call goes to; null: none
    const void *previousCallee;  // the callee before the library forgot the slots
    int32_t slotCount;           // slots 0 .. slotCount - 1 are filled
    int32_t coordinateCount;
    PtrInfo returnValue;  // the pointer information handed back with the result
    ParameterSlot slots[kParameterSlots];
    ArgumentCoordinate coordinates[kParameterSlots];
    uint64_t reserved;
};

inline constexpr size_t kParameterAreaOffset = 0;
inline constexpr size_t kVariadicParameterTypesOffset = kParameterAreaOffset + sizeof(ParameterArea);

static_assert(sizeof(ParameterSlot) == 24 && sizeof(ArgumentCoordinate) == 8);
static_assert(offsetof(ParameterArea, returnValue) == 24 && offsetof(ParameterArea, slots) == 48 &&
              offsetof(ParameterArea, coordinates) == 1200 && sizeof(ParameterArea) == 1592);
static_assert(sizeof(TypeSizeInfo) == 16);
static_assert(sizeof(VariadicParameterTypes) == 8 + 16 * kRecordedVariadicParameters);
static_assert(kVariadicParameterTypesOffset % alignof(VariadicParameterTypes) == 0);
static_assert(kVariadicParameterTypesOffset + sizeof(VariadicParameterTypes) == ZOR_CHECKING_ENVIRONMENT_SIZE,
              "the variadic parameter types end the checking environment");

}  // namespace tollan::rtcheck
