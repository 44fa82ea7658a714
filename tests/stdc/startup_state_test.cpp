// What the C library's start-up steps leave behind: the code page, the time
// and date options, the time zone, the shared locks, the exit status and the
// exit resumption context.
#include <gtest/gtest.h>

#include "stdc/code_page.h"
#include "stdc/exit_context.h"
#include "stdc/exit_status.h"
#include "stdc/locks.h"
#include "stdc/time_options.h"
#include "stdc/time_zone.h"

namespace {

using namespace tollan::stdc;

TEST(StdcStartup, ReadTheCodePageTimeAndDateFormatsAndTheTimeZone)
{
    EXPECT_NE(codePageNumber(), 0u);
    if (!multibyteCodePage()) {
        for (int byte = 0; byte < 256; ++byte) EXPECT_FALSE(isLeadByte(static_cast<unsigned char>(byte)));
    }
    const tollan::platform::TimeFormat time = timeOptions();
    EXPECT_NE(time.separator, '\0');
    const tollan::platform::DateFormat date = dateOptions();
    EXPECT_NE(date.separator, '\0');
    const tollan::platform::TimeZone zone = timeZoneData();
    EXPECT_GE(zone.biasMinutes, -14 * 60);
    EXPECT_LE(zone.biasMinutes, 12 * 60);
}

TEST(StdcStartup, SharedLocksLiveFromStartUpUntilReleasedAndComeBackInOrder)
{
    for (SharedLock which : {SharedLock::locale, SharedLock::time, SharedLock::environment, SharedLock::exit})
        EXPECT_NE(sharedLock(which), nullptr);
    releaseSharedLocks();
    EXPECT_EQ(sharedLock(SharedLock::locale), nullptr);
    EXPECT_EQ(sharedLock(SharedLock::exit), nullptr);
    ASSERT_TRUE(createSharedLocks());
    EXPECT_NE(sharedLock(SharedLock::exit), nullptr);
}

TEST(StdcStartup, TheExitStatusRemembersAUserBreakForGood)
{
    EXPECT_FALSE(exitedByUserBreak());
    recordExitStatus(kExitNormal);
    EXPECT_FALSE(exitedByUserBreak());
    recordExitStatus(kExitByUserBreak);
    recordExitStatus(kExitNormal);
    EXPECT_TRUE(exitedByUserBreak());
}

TEST(StdcStartup, TheExitContextReturnsOnlyWhileItsFrameRuns)
{
    // Start-up is over: an exit now ends the process as usual.
    EXPECT_FALSE(resumeAtExitContext(3));

    volatile int passes = 0;
    const int result = setjmp(exitResumptionContext());
    passes = passes + 1;
    if (result == 0) {
        armExitResumption();
        resumeAtExitContext(7);
        ADD_FAILURE() << "the armed context did not take the exit";
    }
    EXPECT_EQ(result, 7);
    EXPECT_EQ(passes, 2);
    EXPECT_FALSE(resumeAtExitContext(3));  // one exit disarms it
}

}  // namespace
