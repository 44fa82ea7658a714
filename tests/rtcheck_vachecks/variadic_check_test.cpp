// The variable-argument checks in the test's own process: calls that agree
// with their formats, the non-fatal report of arguments left over, and the
// calls that must check nothing. The fatal reports are the probe's.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <tollan/rtcheck.h>

#include "rtcheck_report/report_fixture.h"
#include "rtcheck_vachecks/recorded_call.h"

namespace {

using namespace tollan::testing;

int twin()
{
    return 1;
}
int otherFunction()
{
    return 2;
}
const void *const kTwin = reinterpret_cast<const void *>(&twin);

class VariadicCheck : public ::testing::Test {
protected:
    DebuggingLevel level_{2};
    ErrorFileCapture errors_{"main.c", 12, 5};
};

TEST_F(VariadicCheck, CallsThatAgreeWithTheirFormatsReportNothing)
{
    ASSERT_TRUE(errors_.opened());
    const int32_t charp = pointerTo(kChar);
    const struct {
        int32_t family;
        const char *format;
        std::vector<int32_t> types;
        int32_t argpos;
    } rows[] = {
        {ZOR_VA_PRINTF,
         "%d %c %hd %u %s %5.2f %p %%",
         {kInt, kChar, kShort, kInt, charp, kFloat, pointerTo(kStruct)},
         2},
        {ZOR_VA_PRINTF,
         "%*.*Lf %lld %zu %n %ls",
         {kInt, kInt, kLongDouble, kInt64, kUnsignedInt64, pointerTo(kInt), pointerTo(kVoid)},
         3},
        {ZOR_VA_PRINTF, "no conversions", {}, 2},
        {ZOR_VA_SCANF,
         "%d %s %lf %*d %[a-z] %hhu %p",
         {pointerTo(kInt), charp, pointerTo(kDouble), charp, pointerTo(kChar),
          kVoid | tollan::rtcheck::kTypeIndirect2},
         2},
        {ZOR_VA_SCANF, "%d %hf %d", {pointerTo(kInt), kDouble, kStruct}, 2},  // the engine stops at %hf
        {ZOR_VA_FMT,
         "%s<%d %c %f[b4] %s %d[b8] %i[w*]",
         {kInt, kChar, kFloat, charp, kInt64, kInt, kShort},
         3},
        {ZOR_VA_FMT, "%*d[w*]<%d", {kInt, kInt, kInt}, 3},
        {ZOR_VA_FMT, "%s<%5d", {pointerTo(kInt)}, 3},
        {ZOR_VA_SCAN,
         "%s>%d %f %s %2f[b4]",
         {pointerTo(kInt), pointerTo(kDouble), charp, pointerTo(kFloat)},
         3},
        {ZOR_VA_SCAN, "%s>%d[b9]", {kDouble}, 3},  // does not parse: left to the engine
    };
    for (const auto &row : rows) {
        RecordedCall call(kTwin, row.types, row.argpos);
        EXPECT_EQ(_UPLibChkVaArgs(row.format, row.family, row.argpos, kTwin), 1) << row.format;
    }
    EXPECT_EQ(errors_.written(), "");
}

TEST_F(VariadicCheck, ArgumentsLeftOverAreReportedAtTheFirstOfThem)
{
    {
        RecordedCall call(kTwin, {kInt, kDouble, kInt});
        EXPECT_EQ(_UPLibChkVaArgs("%d", ZOR_VA_PRINTF, 2, kTwin), 0);
    }
    {
        // Past the 32 recorded types: counted, not typed.
        RecordedCall call(kTwin, std::vector<int32_t>(tollan::rtcheck::kRecordedVariadicParameters, kInt), 2,
                          40);
        EXPECT_EQ(_UPLibBeginChkVaArgs(2, kTwin), 1);
        EXPECT_EQ(_UPLibChkVaArgEx(inttype, 39), 1);
        EXPECT_EQ(_UPLibEndChkVaArgs(), 0);
    }
    EXPECT_EQ(errors_.written(),
              "main.c[12, 5]-[20,12]: NON-FATAL - Too many arguments to variable argument function.\n"
              "main.c[12, 5]-[12, 5]: NON-FATAL - Too many arguments to variable argument function.\n");
}

TEST_F(VariadicCheck, ChecksOpenInsideEachOtherAndCloseInOrder)
{
    RecordedCall call(kTwin, {pointerTo(kChar), pointerTo(kChar), kInt});
    EXPECT_EQ(_UPLibBeginChkVaArgs(2, kTwin), 1);
    EXPECT_EQ(_UPLibChkVaArgEx(charptype, 2), 1);
    {
        RecordedCall inner(kTwin, {kDouble});
        EXPECT_EQ(_UPLibChkVaArgs("%f", ZOR_VA_PRINTF, 2, kTwin), 1);
    }
    // The outer check kept its own copy of the call.
    EXPECT_EQ(_UPLibChkVaArg(unsignedtype), 1);
    EXPECT_EQ(_UPLibEndChkVaArgs(), 1);
    EXPECT_EQ(_UPLibEndChkVaArgs(), 1);  // no open check: nothing
    EXPECT_EQ(errors_.written(), "");
}

TEST_F(VariadicCheck, NothingIsCheckedThatIsNotThisCallsOrWithoutChecking)
{
    {
        RecordedCall call(kTwin, {kDouble});
        const void *other = reinterpret_cast<const void *>(&otherFunction);
        EXPECT_EQ(_UPLibChkVaArgs("%d", ZOR_VA_PRINTF, 2, other), 1);
        EXPECT_EQ(_UPLibChkVaArgs("%d", ZOR_VA_PRINTF, 2, nullptr), 1);
        EXPECT_EQ(_UPLibChkVaArgs(nullptr, ZOR_VA_PRINTF, 2, kTwin), 1);
        EXPECT_EQ(_UPLibChkVaArgs("%d", 0, 2, kTwin), 1);
        EXPECT_EQ(_UPLibChkVaArgs("%d", 99, 2, kTwin), 1);
        EXPECT_EQ(_UPLibChkVaArg(inttype), 1);  // no check open
        EXPECT_EQ(_UPLibChkVaArgEx(inttype, -1), 1);
        const int32_t previous = SetBreakOnProtectionErrors(0);
        EXPECT_EQ(_UPLibChkVaArgs("%d", ZOR_VA_PRINTF, 2, kTwin), 1);
        SetBreakOnProtectionErrors(previous);
        DebuggingLevel levelOne(1);
        EXPECT_EQ(_UPLibChkVaArgs("%d %d", ZOR_VA_PRINTF, 2, kTwin), 1);
        EXPECT_EQ(_UPLibBeginChkVaArgs(2, kTwin), 0);
        EXPECT_EQ(_UPLibChkVaArgEx(inttype, INT32_MAX), 1);  // ends at once: nothing is checked
        EXPECT_EQ(_UPLibEndChkVaArgs(), 1);
    }
    {
        RecordedCall negative(kTwin, {kDouble}, 2, -5);
        EXPECT_EQ(_UPLibBeginChkVaArgs(2, kTwin), 0);
        EXPECT_EQ(_UPLibChkVaArg(inttype), 1);
        EXPECT_EQ(_UPLibEndChkVaArgs(), 1);
    }
    {
        RecordedCall farArguments(kTwin, {kInt, kInt}, 1000000);  // coordinates past the slots
        EXPECT_EQ(_UPLibChkVaArgs("%d %d", ZOR_VA_PRINTF, -3, kTwin), 1);
    }
    EXPECT_EQ(errors_.written(), "");
}

}  // namespace
