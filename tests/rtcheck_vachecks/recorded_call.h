// A checked call as compiled code records it in the thread's checking
// environment: the callee, the variadic arguments' type numbers and their
// source coordinates. Shared by the tests and the probe.
#pragma once

#include <climits>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

#include <tollan/debugger.h>

#include "rtcheck/checking_environment.h"

namespace tollan::testing {

// Type numbers as compiled code writes them.
inline constexpr int32_t kInt = 6, kUnsigned = 7, kLong = 8, kFloat = 10, kDouble = 11, kLongDouble = 12,
                         kVoid = 13, kStruct = 14, kInt64 = 15, kUnsignedInt64 = 16, kChar = 1, kShort = 4;
inline constexpr int32_t pointerTo(int32_t type)
{
    return type | rtcheck::kTypeIndirect1;
}

inline constexpr int32_t kCountOfTypes = INT32_MIN;

// Records a call to `callee` with `count` variable arguments (the length of
// `types` by default) of the given types; variable argument k stands at
// line 20, column 10 + k, and is argument `argpos` + k - 1 of the call.
// The environment is cleared again afterwards.
class RecordedCall {
public:
    RecordedCall(const void *callee, std::initializer_list<int32_t> types, int32_t argpos = 2,
                 int32_t count = kCountOfTypes)
        : RecordedCall(callee, std::vector<int32_t>(types), argpos, count)
    {
    }
    RecordedCall(const void *callee, const std::vector<int32_t> &types, int32_t argpos = 2,
                 int32_t count = kCountOfTypes)
    {
        unsigned char *environment = __DBG_GetCurrentThreadEnv()->checkingEnvironment;
        std::memset(environment, 0, ZOR_CHECKING_ENVIRONMENT_SIZE);
        auto *area = reinterpret_cast<rtcheck::ParameterArea *>(environment + rtcheck::kParameterAreaOffset);
        area->callee = callee;
        rtcheck::VariadicParameterTypes recorded{};
        recorded.count = count != kCountOfTypes ? count : static_cast<int32_t>(types.size());
        int32_t k = 0;
        for (int32_t type : types) {
            if (k < rtcheck::kRecordedVariadicParameters) recorded.types[k] = {type, 0, 0};
            if (argpos - 1 + k < rtcheck::kParameterSlots) area->coordinates[argpos - 1 + k] = {20, 11 + k};
            ++k;
        }
        area->coordinateCount = argpos - 1 + k;
        std::memcpy(environment + rtcheck::kVariadicParameterTypesOffset, &recorded, sizeof recorded);
    }
    ~RecordedCall()
    {
        std::memset(__DBG_GetCurrentThreadEnv()->checkingEnvironment, 0, ZOR_CHECKING_ENVIRONMENT_SIZE);
    }
    RecordedCall(const RecordedCall &) = delete;
    RecordedCall &operator=(const RecordedCall &) = delete;
};

}  // namespace tollan::testing
