// Saving and restoring the thread's checking environment around callbacks.
#include <gtest/gtest.h>

#include <cstring>

#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

namespace {

unsigned char &firstByte()
{
    return __DBG_GetCurrentThreadEnv()->checkingEnvironment[0];
}
unsigned char &lastByte()
{
    return __DBG_GetCurrentThreadEnv()->checkingEnvironment[ZOR_CHECKING_ENVIRONMENT_SIZE - 1];
}

TEST(EnvSave, SavesNestAndEachRestoresOnce)
{
    ZORSavedCheckingEnv outer, inner;
    firstByte() = 1;
    lastByte() = 2;
    ASSERT_EQ(_UPSaveCurrentEnv(&outer), 1);
    firstByte() = 3;
    ASSERT_EQ(_UPSaveCurrentEnv(&inner), 1);
    firstByte() = 5;
    lastByte() = 6;
    EXPECT_EQ(_UPRestoreCurrentEnv(&inner), 1);
    EXPECT_EQ(firstByte(), 3);
    EXPECT_EQ(lastByte(), 2);
    EXPECT_EQ(_UPRestoreCurrentEnv(&outer), 1);
    EXPECT_EQ(firstByte(), 1);
    firstByte() = 7;
    EXPECT_EQ(_UPRestoreCurrentEnv(&outer), 0);  // restored already
    EXPECT_EQ(firstByte(), 7);
    firstByte() = 0;
    lastByte() = 0;
}

TEST(EnvSave, StorageNeverSavedOrMovedRestoresNothing)
{
    ZORSavedCheckingEnv never;
    std::memset(&never, 0xA5, sizeof never);
    ZORSavedCheckingEnv saved;
    ASSERT_EQ(_UPSaveCurrentEnv(&saved), 1);
    ZORSavedCheckingEnv copy;
    std::memcpy(&copy, &saved, sizeof copy);
    firstByte() = 9;
    EXPECT_EQ(_UPRestoreCurrentEnv(&never), 0);
    EXPECT_EQ(_UPRestoreCurrentEnv(&copy), 0);
    EXPECT_EQ(_UPRestoreCurrentEnv(nullptr), 0);
    EXPECT_EQ(_UPSaveCurrentEnv(nullptr), 0);
    EXPECT_EQ(firstByte(), 9);
    firstByte() = 0;
}

}  // namespace
