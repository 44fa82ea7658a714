// The twins whose behaviour is fixed in every detail: strcpy's order of checks,
// fopen's elaboration and sqrt's domain error.
#include <cerrno>
#include <cmath>
#include <cstring>

#include "rtcheck_twins/twin_support.h"
#include "rtcheck_twins/twin_fixture.h"

namespace {

using tollan::testing::ArgumentInfo;
using tollan::testing::caughtReports;
using tollan::testing::entryOf;
using tollan::testing::HandOver;
using tollan::testing::messageText;
using tollan::testing::TwinTest;
namespace rt = tollan::rtcheck;

using DetailedTwins = TwinTest;

TEST_F(DetailedTwins, StrcpyReportsANullTargetAndStillCopiesWhenTheReportIsIgnored)
{
    char target[8] = "zzzzzzz";
    HandOver(entryOf(&_UP_strcpy)).slot(1, rt::predefinedEntry(rt::kNullEntry));
    EXPECT_EQ(_UP_strcpy(target, "abc"), target);
    ASSERT_EQ(caughtReports().size(), 1u);
    EXPECT_EQ(caughtReports()[0].text, "Null pointer argument to library function.");
    EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_FATAL);
    EXPECT_STREQ(target, "abc");
}

TEST_F(DetailedTwins, StrcpyChecksTheSourceFirstThenOneTargetByteThenTheWholeCopy)
{
    // The copy goes to a big enough target and from a terminated source
    // whatever the information says, as it would after an ignored report.
    const char source[8] = "abcdef";
    ArgumentInfo targetInfo;
    ArgumentInfo sourceInfo;
    struct Case {
        const char *what;
        uint64_t targetSize, sourceSize;
        const char *expected;  // null: nothing reported
    };
    const Case cases[] = {
        {"fits", 7, 8, nullptr},
        {"source unterminated: the target is not looked at", 0, 2,
         "Missing terminating null in string argument."},
        {"target at the end of its block", 0, 8, "Out-of-bounds pointer argument (past end of array)."},
        {"target too small", 2, 8,
         "Array argument too small (2 bytes).  Argument must contain at least 7 bytes (7 elements)."},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        caughtReports().clear();
        char target[16] = "";
        targetInfo.describe(target, c.targetSize, target);
        if (c.targetSize == 0) targetInfo.block = {reinterpret_cast<uint64_t>(target) - 4, 4};
        sourceInfo.describe(source, c.sourceSize, source);
        HandOver(entryOf(&_UP_strcpy)).slot(1, targetInfo).slot(2, sourceInfo);
        EXPECT_EQ(_UP_strcpy(target, source), target);
        EXPECT_STREQ(target, "abcdef");
        // The hand-over is forgotten before strcpy runs, and the result
        // carries the target's information.
        EXPECT_EQ(rt::parameterArea()->callee, nullptr);
        EXPECT_EQ(rt::parameterArea()->returnValue.value, reinterpret_cast<uint64_t>(target));
        EXPECT_EQ(rt::parameterArea()->returnValue.blk, reinterpret_cast<uint64_t>(&targetInfo.block));
        if (c.expected == nullptr) {
            EXPECT_TRUE(caughtReports().empty());
        } else {
            ASSERT_EQ(caughtReports().size(), 1u);
            EXPECT_EQ(caughtReports()[0].text, c.expected);
        }
    }
}

TEST_F(DetailedTwins, FopenOffersTheErrnoTextOfAFailedOpen)
{
    EXPECT_EQ(_UP_fopen("no-such-folder/no-such-file", "rb"), nullptr);
    ASSERT_EQ(caughtReports().size(), 1u);
    EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_NON_FATAL);
    const std::string status = "Library function error (return value == 0 [0x0]).\n";
    const std::string errnoText = std::strerror(*tollan_errno());
#ifdef _WIN32
    // Windows has a text of its own for the failure, which goes first.
    const std::string &text = caughtReports()[0].text;
    EXPECT_EQ(text.rfind(status + "(", 0), 0u) << text;
    EXPECT_NE(text.find(") " + errnoText), std::string::npos) << text;
    EXPECT_GT(text.size(), status.size() + errnoText.size() + 4) << text;
#else
    EXPECT_EQ(caughtReports()[0].text, status + errnoText);
#endif
    EXPECT_STREQ(
        rt::openFailureText("The system cannot find the path specified.", "No such file or directory"),
        "(The system cannot find the path specified.) No such file or directory");
    EXPECT_STREQ(rt::openFailureText("", "No such file or directory"), "No such file or directory");
}

TEST_F(DetailedTwins, FopenChecksTheModeOnlyWhenThePathPassed)
{
    HandOver(entryOf(&_UP_fopen))
        .slot(1, rt::predefinedEntry(rt::kUninitializedEntry))
        .slot(2, rt::predefinedEntry(rt::kUninitializedEntry));
    SetBreakOnLibraryErrors(0);
    EXPECT_EQ(_UP_fopen("no-such-folder/no-such-file", "rb"), nullptr);
    ASSERT_EQ(caughtReports().size(), 1u);
    EXPECT_EQ(caughtReports()[0].text, messageText(167));
}

TEST_F(DetailedTwins, SqrtReportsADomainErrorAsErrno)
{
    EXPECT_EQ(EDOM, 33);
    EXPECT_EQ(_UP_sqrt(4.0), 2.0);
    EXPECT_TRUE(caughtReports().empty());
    errno = 0;
    EXPECT_TRUE(std::isnan(_UP_sqrt(-1.0)));
    ASSERT_EQ(caughtReports().size(), 1u);
    EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_NON_FATAL);
    const std::string expected =
        "Library function error (errno == 33 [0x21]).\n" + std::string(std::strerror(EDOM));
    EXPECT_EQ(caughtReports()[0].text, expected);
    // The caller sees the errno the function set.
    EXPECT_EQ(errno, EDOM);
}

}  // namespace
