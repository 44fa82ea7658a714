// Every row of the twin table, called twice with sample arguments: once
// with bad pointer information (a null pointer where a check refuses one,
// else every pointer uninitialised: reported fatal, and the plain function
// still runs), once with each pointer argument described as the buffer it
// is (nothing reported, and the plain function's result). The sample buffers are real
// and zero-filled, so the plain function always gets arguments it can use.
#include <cinttypes>
#include <cmath>
#include <csignal>
#include <cstring>
#include <ctime>
#include <regex>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <tollan/fmtio.h>
#include <tollan/rs232.h>
#include <tollan/utility.h>

#include "rtcheck_twins/twin_support.h"
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

// What the hand-over says of the pointer arguments: `entry` for argument
// `position` (0: for every one), or, without an entry, each described as
// the buffer it is.
struct Information {
    PtrInfo *entry;
    int32_t position;
};
constexpr Information kDescribingTheBuffers{nullptr, 0};

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
            if (information.entry != nullptr) {
                if (information.position == 0 || information.position == argpos)
                    handOver.slot(argpos, information.entry);
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
    const char *checks;  // the row's checks as written
    void (*run)(Information information, bool comparable);
};

#define TOLLAN_TWIN(Result, name, parameters, arguments, plainFunction, checks, returned, status) \
    {#name, #checks, [](Information information, bool comparable) {                               \
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

// The position of the first check that refuses a null pointer; 0 when every
// check allows one.
int32_t firstNullRefusingCheck(const std::string &checks)
{
    static const std::regex check(R"((W?STR|BYTES|ELEMS|OBJ|PTR)(_OR_NULL)?\((\d+),)");
    for (std::sregex_iterator it(checks.begin(), checks.end(), check), end; it != end; ++it)
        if (!(*it)[2].matched) return std::stoi((*it)[3].str());
    return 0;
}

using TableCalls = TwinTest;

TEST_F(TableCalls, TheTableHasEveryTwinOnce)
{
    std::set<std::string> names;
    for (const TwinRow &row : kRows) EXPECT_TRUE(names.insert(row.name).second) << row.name;
    EXPECT_EQ(names.size(), 173u);
}

TEST_F(TableCalls, ChecksAreReadFromTheRows)
{
    EXPECT_EQ(firstNullRefusingCheck("ARG(STR_OR_NULL(1, path)) ARG(OBJ(2, size))"), 2);
    EXPECT_EQ(firstNullRefusingCheck("ARG(n < 0 ? PTR(3, b) : BYTES(3, b, n))"), 3);
    EXPECT_EQ(firstNullRefusingCheck("ARG(BYTES_OR_NULL(1, text, 1))"), 0);
}

// A null pointer where a check refuses one ("Null pointer argument"), else
// every pointer uninitialised; the plain function still runs on the real
// buffers.
TEST_F(TableCalls, ABadPointerArgumentIsReportedAndThePlainFunctionStillRuns)
{
    SetBreakOnLibraryErrors(0);
    for (const TwinRow &row : kRows) {
        if (kNotCalled.count(row.name) != 0) continue;
        SCOPED_TRACE(row.name);
        caughtReports().clear();
        const int32_t refusing = firstNullRefusingCheck(row.checks);
        const Information bad = refusing != 0 ? Information{predefinedEntry(kNullEntry), refusing}
                                              : Information{predefinedEntry(kUninitializedEntry), 0};
        row.run(bad, true);
        if (row.checks[0] == '\0') {
            EXPECT_TRUE(caughtReports().empty());
            continue;
        }
        // One report per argument that carries bad information.
        ASSERT_FALSE(caughtReports().empty());
        if (refusing != 0) {
            EXPECT_EQ(caughtReports().size(), 1u);
        }
        EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_FATAL);
        EXPECT_EQ(caughtReports()[0].text, messageText(refusing != 0 ? 165 : 167));
    }
}

TEST_F(TableCalls, DescribedArgumentsPassAndTheResultIsThePlainFunctions)
{
    SetBreakOnLibraryErrors(0);
    for (const TwinRow &row : kRows) {
        if (kNotCalled.count(row.name) != 0) continue;
        SCOPED_TRACE(row.name);
        caughtReports().clear();
        row.run(kDescribingTheBuffers, kNotComparable.count(row.name) == 0);
        for (const auto &report : caughtReports()) ADD_FAILURE() << report.text;
    }
}

}  // namespace
