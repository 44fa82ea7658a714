// A dump onto a full disk: the failed write makes the dump fail with the
// code for a file that cannot be written, logged once, like an unwritable
// path.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>

#include <tollan/debugger.h>
#include <tollan/logger.h>

#include "fixtures/log_capture.h"
#include "fixtures/system_call_faults.h"

namespace {

using tollan::testing::SystemCall;
using tollan::testing::SystemCallFaults;

TEST(DumpOntoAFullDisk, FailsWithCannotWrite)
{
    const int32_t level = __SetDebuggingLevel(2);
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    ZORFunctionFrame frame{};
    frame.functionName = "fill";
    __DBG_EnterFunctionInCurrentThreadEnv(record, &frame, "fill.c");
    void *const handle = reinterpret_cast<void *>(uintptr_t{0x5150});
    __ZOR_Resource_Acquire(handle, "Files", "on a full disk");

    const std::string path = (std::filesystem::temp_directory_path() / "tollan-dump-full.txt").string();
    {
        SystemCallFaults faults(path);
        faults.fail(SystemCall::write, ENOSPC, {.times = SystemCallFaults::kForever});
        tollan::testing::LogCapture log(ZOR_LOG_WARNING);
        EXPECT_EQ(__ZOR_Resource_DumpToFile(path.c_str()), -102);
        EXPECT_EQ(log.count("Err = -102"), 1u);
        EXPECT_GE(faults.calls(SystemCall::write), 1);
    }
    EXPECT_EQ(__ZOR_Resource_DumpToFile(path.c_str()), 0);  // the disk has room again
    std::filesystem::remove(path);

    __ZOR_Resource_Release(handle);
    __DBG_LeaveFunctionInCurrentThreadEnv(record, &frame);
    __SetDebuggingLevel(level);
}

}  // namespace
