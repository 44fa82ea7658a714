// Twins that reach outside the library's own state: the comparators of qsort
// and bsearch, which are user code with checked calls of their own, and
// _putenv, which changes the process environment.
#include <cstdlib>
#include <cstring>

#include "rtcheck_twins/twin_fixture.h"

namespace {

using tollan::testing::caughtReports;
using tollan::testing::entryOf;
using tollan::testing::TwinTest;
namespace rt = tollan::rtcheck;

using OutsideTwins = TwinTest;

// A comparator compiled with checking: each comparison makes a checked call
// of its own, which fills the thread's hand-over.
int compareWithACheckedCall(const void *a, const void *b)
{
    _PtrPreCall(nullptr, reinterpret_cast<const void *>(&compareWithACheckedCall));
    _PassParamInfo(nullptr, 0, intptype, reinterpret_cast<PtrInfo *>(uintptr_t{49}), nullptr);
    _PtrPostCall(nullptr);
    return *static_cast<const int *>(a) - *static_cast<const int *>(b);
}

TEST_F(OutsideTwins, TheComparatorsCheckedCallsLeaveTheSortsHandOverAsItWas)
{
    int numbers[] = {5, 3, 9, 1, 7};
    _PtrPreCall(nullptr, entryOf(&_UP_qsort));
    _UP_qsort(numbers, 5, sizeof numbers[0], compareWithACheckedCall);
    EXPECT_EQ(numbers[0], 1);
    EXPECT_EQ(numbers[4], 9);
    // What the twin left before the first comparison is what the caller finds.
    EXPECT_EQ(rt::parameterArea()->previousCallee, entryOf(&_UP_qsort));
    const int key = 7;
    _PtrPreCall(nullptr, entryOf(&_UP_bsearch));
    EXPECT_EQ(_UP_bsearch(&key, numbers, 5, sizeof numbers[0], compareWithACheckedCall), &numbers[3]);
    EXPECT_EQ(rt::parameterArea()->previousCallee, entryOf(&_UP_bsearch));
    EXPECT_TRUE(caughtReports().empty());
}

TEST_F(OutsideTwins, PutenvSetsAndRemovesAVariableAndRefusesASettingWithoutAName)
{
    char setting[] = "TOLLAN_TWIN_TEST=set";
    EXPECT_EQ(_UP__putenv(setting), 0);
    std::strcpy(setting, "TOLLAN_TWIN_TEST=xxx");  // the environment keeps its own copy
    ASSERT_NE(std::getenv("TOLLAN_TWIN_TEST"), nullptr);
    EXPECT_STREQ(std::getenv("TOLLAN_TWIN_TEST"), "set");
    EXPECT_EQ(_UP_ZOR__putenv("TOLLAN_TWIN_TEST="), 0);
    EXPECT_EQ(std::getenv("TOLLAN_TWIN_TEST"), nullptr);
    EXPECT_TRUE(caughtReports().empty());
    EXPECT_EQ(_UP__putenv("=no name"), -1);
    ASSERT_EQ(caughtReports().size(), 1u);
    EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_NON_FATAL);
}

}  // namespace
