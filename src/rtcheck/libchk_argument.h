// What a library function's checked twin learns about one pointer argument
// from the pointer information its caller handed over: whether it may be
// used as a string, as a buffer of so many bytes, or at all, and how many
// bytes it reaches. The codes are the numbers of the messages that report
// them.
#pragma once

#include <cstdint>

#include "rtcheck/checking_environment.h"

namespace tollan::rtcheck {

enum ArgumentCode : int32_t {
    kArgumentValid = 0,
    kNullArgument = 165,
    kInvalidArgument = 166,
    kUninitializedArgument = 167,
    kFreedArgument = 168,
    kBeforeStartArgument = 169,
    kPastEndArgument = 170,
    kScalarArgument = 171,
    kArrayArgument = 172,
    kUnterminatedArgument = 173,
    kArgumentTooSmall = 189,
};

// What the argument must be good for.
enum class ArgumentUse {
    pointer,     // a valid pointer only: scalars and blocks both pass
    bytes,       // room for a number of bytes from the pointer on
    string,      // a terminating null inside what the pointer reaches
    wideString,  // a terminating null wide character inside it
};

// The bytes reachable from ptr: kNoLimit when the slot carries no
// information, or its block's bounds are not enforced; 0 when the pointer
// reaches nothing (null, invalid, freed, outside its block).
inline constexpr uint64_t kNoLimit = UINT64_C(0x7FFFFFFFFFFFFFFF);
uint64_t reachableBytes(const ParameterSlot *slot, const void *ptr) noexcept;

// The code of ptr for `use`, with `bytes` needed for ArgumentUse::bytes. A
// null slot carries no information and passes. Records that cannot be read
// (values 74 to 4095) are invalid arguments, never read through.
int32_t classifyArgument(const ParameterSlot *slot, const void *ptr, ArgumentUse use,
                         uint64_t bytes) noexcept;

}  // namespace tollan::rtcheck
