// Files when the disk or the system misbehaves: a full disk, interrupted and
// short transfers, failing reads. The faults are injected into the backend's
// system calls.
#include <cerrno>
#include <string>

#include "fixtures/system_call_faults.h"
#include "temp_dir.h"

namespace {

using tollan::testing::SystemCall;
using tollan::testing::SystemCallFaults;
constexpr int kForever = SystemCallFaults::kForever;

// Bytes 0..255 over and over, with line feeds among them.
std::string pattern(size_t length)
{
    std::string bytes(length, '\0');
    for (size_t i = 0; i < length; ++i) bytes[i] = static_cast<char>(i * 7 % 256);
    return bytes;
}

TEST_F(FmtioFileTest, AFullDiskFailsTheWriteWithoutClaimingWhatDidNotFit)
{
    for (int32_t type : {0, 1}) {
        SystemCallFaults faults(path("full"));
        const int32_t handle = open("full", 2, 0, type);
        const std::string data = pattern(10000);
        // The disk takes 3000 bytes, then it is full.
        faults.limit(SystemCall::write, 3000);
        faults.fail(SystemCall::write, ENOSPC, {.times = kForever});
        EXPECT_TRUE(failedWith(ZOR_WriteFile(handle, data.data(), 10000), 9)) << "type " << type;
        EXPECT_TRUE(failedWith(WriteLine(handle, "line", -1), 9));
        EXPECT_TRUE(failedWith(WriteLine(handle, "", 0), 9));
        EXPECT_EQ(ZOR_CloseFile(handle), 0);
        EXPECT_EQ(readRaw("full").size(), 3000u);
    }
}

TEST_F(FmtioFileTest, InterruptedAndShortTransfersLoseNothing)
{
    const std::string data = pattern(1 << 20);
    for (int32_t type : {0, 1}) {
        SystemCallFaults faults(path("long"));
        // Every third call is interrupted; the others move 4099 bytes at most.
        for (SystemCall call : {SystemCall::write, SystemCall::read}) {
            faults.fail(call, EINTR, {.times = kForever, .every = 3});
            faults.limit(call, 4099, {.times = kForever});
        }

        int32_t handle = open("long", 2, 0, type);
        EXPECT_EQ(ZOR_WriteFile(handle, data.data(), static_cast<int64_t>(data.size())),
                  static_cast<int32_t>(data.size()));
        EXPECT_EQ(ZOR_CloseFile(handle), 0);
        EXPECT_GT(faults.calls(SystemCall::write), 256);

        handle = open("long", 1, 2, type);
        EXPECT_EQ(readAll(handle, 1 << 16), data) << "type " << type;
        EXPECT_EQ(ZOR_CloseFile(handle), 0);
        EXPECT_GT(faults.calls(SystemCall::read), 256);
    }
}

TEST_F(FmtioFileTest, AFailingReadGivesAnErrorAndTheFileStaysUsable)
{
    writeRaw("bad", "first\nsecond\n");
    SystemCallFaults faults(path("bad"));
    const int32_t handle = open("bad", 1, 2, 1);
    faults.fail(SystemCall::read, EIO, {.times = 2});
    char buffer[16];
    EXPECT_TRUE(failedWith(ZOR_ReadFile(handle, buffer, sizeof buffer), 2));
    EXPECT_TRUE(failedWith(ReadLine(handle, buffer, 15), 2));
    EXPECT_EQ(ReadLine(handle, buffer, 15), 5);
    EXPECT_STREQ(buffer, "first");
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

}  // namespace
