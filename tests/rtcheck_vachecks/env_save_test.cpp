// Saving and restoring the thread's checking environment around callbacks.
#include <gtest/gtest.h>

#include <cstring>

#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

namespace {

TEST(EnvSave, SavesNestAndEachSavedCopyRestoresOnce)
{
    unsigned char *environment = __DBG_GetCurrentThreadEnv()->checkingEnvironment;
    unsigned char &last = environment[ZOR_CHECKING_ENVIRONMENT_SIZE - 1];
    ZORSavedCheckingEnv outer, inner, never, moved;
    std::memset(&never, 0xA5, sizeof never);
    environment[0] = 1;
    last = 2;
    ASSERT_EQ(_UPSaveCurrentEnv(&outer), 1);
    environment[0] = 3;
    ASSERT_EQ(_UPSaveCurrentEnv(&inner), 1);
    std::memcpy(&moved, &inner, sizeof moved);
    environment[0] = 5;
    last = 6;
    EXPECT_EQ(_UPRestoreCurrentEnv(&never), 0);
    EXPECT_EQ(_UPRestoreCurrentEnv(&moved), 0);
    EXPECT_EQ(_UPRestoreCurrentEnv(nullptr), 0);
    EXPECT_EQ(_UPSaveCurrentEnv(nullptr), 0);
    EXPECT_EQ(environment[0], 5);
    EXPECT_EQ(_UPRestoreCurrentEnv(&inner), 1);
    EXPECT_EQ(environment[0], 3);
    EXPECT_EQ(last, 2);
    EXPECT_EQ(_UPRestoreCurrentEnv(&outer), 1);
    EXPECT_EQ(environment[0], 1);
    environment[0] = 7;
    EXPECT_EQ(_UPRestoreCurrentEnv(&outer), 0);  // restored already
    EXPECT_EQ(environment[0], 7);
    std::memset(environment, 0, ZOR_CHECKING_ENVIRONMENT_SIZE);
}

}  // namespace
