// Every row of the twin table, called twice with sample arguments: once
// with every pointer argument's information saying "uninitialised" (a
// checked twin reports it fatal, then still calls the plain function), once
// with each pointer argument described as the buffer it is (nothing
// reported, and the plain function's result). The sample buffers are real
// and zero-filled, so the plain function always gets arguments it can use.
#include <cinttypes>
#include <cmath>
#include <csignal>
#include <cstring>
#include <ctime>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <tollan/fmtio.h>
#include <tollan/rs232.h>
#include <tollan/utility.h>

#include "rtcheck/twin_support.h"
#include "rtcheck_twins/twin_fixture.h"

namespace {

using tollan::testing::ArgumentInfo;
using tollan::testing::caughtReports;
using tollan::testing::entryOf;
using tollan::testing::HandOver;
using tollan::testing::messageText;
using tollan::testing::TwinTest;
using namespace tollan::rtcheck;

constexpr size_t kSampleSize = 4096;
constexpr size_t kMostParameters = 8;

// One buffer per parameter position: an empty string, an empty wide
// string, a time of 0 and a valid calendar time all at once.
struct SampleBuffers {
    alignas(16) char bytes[kMostParameters][kSampleSize];
    ArgumentInfo info[kMostParameters];

    void reset()
    {
        std::memset(bytes, 0, sizeof bytes);
        for (auto &buffer : bytes) {
            std::tm calendar{};
            calendar.tm_mday = 1;
            calendar.tm_year = 100;
            std::memcpy(buffer, &calendar, sizeof calendar);
        }
    }
};

SampleBuffers samples;

int compareBytes(const void *left, const void *right)
{
    return std::memcmp(left, right, 1);
}

// Pointers point into their position's buffer, callbacks are real, counts
// and sizes (unsigned) are 1, every other number is 0.
template <typename T, size_t position>
T sampleArgument()
{
    if constexpr (std::is_same_v<T, int (*)(const void *, const void *)>) {
        return &compareBytes;
    } else if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(samples.bytes[position]);
    } else if constexpr (std::is_unsigned_v<T>) {
        return 1;
    } else {
        return T{};
    }
}

template <typename T>
constexpr bool isDataPointer = std::is_pointer_v<T> && !std::is_function_v<std::remove_pointer_t<T>>;

enum class Information { uninitialised, describingTheBuffers };

template <typename Signature>
struct TwinCall;

template <typename Result, typename... Parameters>
struct TwinCall<Result(Parameters...)> {
    template <size_t... positions>
    static void handOver(const void *twin, Information information, std::index_sequence<positions...>)
    {
        HandOver handOver(twin);
        [[maybe_unused]] const auto fill = [&](size_t position, bool pointer) {
            if (!pointer) return;
            const auto argpos = static_cast<int32_t>(position + 1);
            if (information == Information::uninitialised) {
                handOver.slot(argpos, predefinedEntry(kUninitializedEntry));
            } else {
                samples.info[position].describe(samples.bytes[position], kSampleSize,
                                                samples.bytes[position]);
                handOver.slot(argpos, samples.info[position]);
            }
        };
        (fill(positions, isDataPointer<Parameters>), ...);
    }

    template <size_t... positions>
    static Result call(Result (*function)(Parameters...), std::index_sequence<positions...>)
    {
        samples.reset();
        return function(sampleArgument<Parameters, positions>()...);
    }

    static void run(Result (*twin)(Parameters...), Result (*plain)(Parameters...), Information information,
                    bool comparable)
    {
        const auto positions = std::index_sequence_for<Parameters...>{};
        static_assert(sizeof...(Parameters) <= kMostParameters);
        handOver(entryOf(twin), information, positions);
        if constexpr (std::is_void_v<Result>) {
            call(twin, positions);
        } else {
            const Result checked = call(twin, positions);
            const Result expected = call(plain, positions);
            if (!comparable) return;
            if constexpr (std::is_floating_point_v<Result>) {
                EXPECT_TRUE(checked == expected || (std::isnan(checked) && std::isnan(expected)));
            } else if constexpr (std::is_scalar_v<Result>) {
                EXPECT_EQ(checked, expected);
            }
        }
    }
};

struct TwinRow {
    const char *name;
    bool checksArguments;
    void (*run)(Information information, bool comparable);
};

#define TOLLAN_TWIN(Result, name, parameters, arguments, plainFunction, checks, returned, status) \
    {#name, sizeof #checks > 1, [](Information information, bool comparable) {                    \
         TwinCall<Result parameters>::run(&_UP_##name, plainFunction, information, comparable);   \
     }},
const TwinRow kRows[] = {
#include <tollan/rtcheck_twins.def>
};
#undef TOLLAN_TWIN

// Twins not called here, and why.
const std::set<std::string> kNotCalled = {
    "gets",    "getchar",                             // they read the real standard input
    "_assert", "_assert_func",                        // they end the process
    "system",                                         // it starts a shell
    "div",     "ldiv",         "lldiv", "ZOR_lldiv",  // the sample divisor is 0
    "signal",  "raise",                               // signal 0 is refused by aborting on Windows
    "tmpfile",                                        // it makes a file at each call
};
// Results that differ from call to call.
const std::set<std::string> kNotComparable = {"time"};

using TableCalls = TwinTest;

TEST_F(TableCalls, TheTableHasEveryTwinOnce)
{
    std::set<std::string> names;
    for (const TwinRow &row : kRows) EXPECT_TRUE(names.insert(row.name).second) << row.name;
    EXPECT_EQ(names.size(), 173u);
}

TEST_F(TableCalls, UninitialisedPointerArgumentsAreReportedAndThePlainFunctionStillRuns)
{
    SetBreakOnLibraryErrors(0);
    for (const TwinRow &row : kRows) {
        if (kNotCalled.count(row.name) != 0) continue;
        SCOPED_TRACE(row.name);
        caughtReports().clear();
        row.run(Information::uninitialised, true);
        if (!row.checksArguments) {
            EXPECT_TRUE(caughtReports().empty());
            continue;
        }
        ASSERT_FALSE(caughtReports().empty());
        EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_FATAL);
        EXPECT_EQ(caughtReports()[0].text, messageText(167));
    }
}

TEST_F(TableCalls, DescribedArgumentsPassAndTheResultIsThePlainFunctions)
{
    SetBreakOnLibraryErrors(0);
    for (const TwinRow &row : kRows) {
        if (kNotCalled.count(row.name) != 0) continue;
        SCOPED_TRACE(row.name);
        caughtReports().clear();
        row.run(Information::describingTheBuffers, kNotComparable.count(row.name) == 0);
        for (const auto &report : caughtReports()) ADD_FAILURE() << report.text;
    }
}

}  // namespace
