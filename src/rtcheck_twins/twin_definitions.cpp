// The bodies of the checked twins, one per row of the twin table. A twin
// checks its pointer arguments when its caller handed their information
// over, hands the information of a returned argument on, forgets the
// hand-over, calls the plain function and offers a break when it failed.
#include <cctype>
#include <cerrno>
#include <cinttypes>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <type_traits>

#include <tollan/ansi_c.h>
#include <tollan/fmtio.h>
#include <tollan/rs232.h>
#include <tollan/rtcheck.h>
#include <tollan/utility.h>

#include "rtcheck/libchk_checks.h"
#include "rtcheck_twins/twin_status.h"
#include "rtcheck_twins/twin_support.h"

using namespace tollan::rtcheck;

// The table's vocabulary, over `handOver`: the thread's hand-over as the
// twin sees it.
#define ARG(checks) static_cast<void>(checks);
#define STR(position, text) checkString(handOver, text, false, position)
#define STR_OR_NULL(position, text) checkString(handOver, text, true, position)
#define WSTR(position, text) checkWideString(handOver, text, false, position)
#define BYTES(position, buffer, count) checkSize(handOver, buffer, 1, count, false, position)
#define BYTES_OR_NULL(position, buffer, count) checkSize(handOver, buffer, 1, count, true, position)
#define ELEMS(position, buffer, size, count) checkSize(handOver, buffer, size, count, false, position)
#define ELEMS_OR_NULL(position, buffer, size, count) checkSize(handOver, buffer, size, count, true, position)
#define OBJ(position, object) checkSize(handOver, object, sizeof *(object), 1, false, position)
#define OBJ_OR_NULL(position, object) checkSize(handOver, object, sizeof *(object), 1, true, position)
#define PTR(position, pointer) checkSize(handOver, addressOf(pointer), 1, 0, false, position)
#define PTR_OR_NULL(position, pointer) checkSize(handOver, addressOf(pointer), 1, 0, true, position)
#define RETURNS(position, argument) returnArgument(handOver, position, argument);
// A pointer result that is no argument comes back without information, so
// that the caller does not take that of an earlier call for it.
#define NO_RETURNED_ARG \
    if constexpr (std::is_pointer_v<decltype(call())>) returnArgument(handOver, 0, nullptr);
#define NO_STATUS return call();
#define FAILS_IF(test, elaboration)                                                                         \
    const auto result = call();                                                                             \
    if ((test) && libraryBreaksWanted()) breakOnResult(statusValue(result), elaboration, addressOf(plain)); \
    return result;
#define ERRNO_IF(test)                                                   \
    const ErrnoWatch watch;                                              \
    const auto result = call();                                          \
    if ((test) && libraryBreaksWanted()) breakOnErrno(addressOf(plain)); \
    return result;

#define TOLLAN_TWIN(Result, name, parameters, arguments, plainFunction, checks, returned, status) \
    Result _UP_##name parameters noexcept                                                         \
    {                                                                                             \
        Result(*const plain) parameters = plainFunction;                                          \
        const auto call = [&]() -> Result { return plain arguments; };                            \
        [[maybe_unused]] const HandOverView handOver = handOverFor(addressOf(&_UP_##name));       \
        if (handOver.toFrame && argumentChecksReport()) {                                         \
            checks                                                                                \
        }                                                                                         \
        returned clearArguments(handOver.area);                                                   \
        status                                                                                    \
    }

#include <tollan/rtcheck_twins.def>
