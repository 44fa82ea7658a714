// Resource tracking: when it records, what it records, the table's growth
// and the dump.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/fmtio.h>
#include <tollan/logger.h>

#include "debugger/lookup3.h"
#include "debugger/runtime_record.h"
#include "fixtures/log_capture.h"
#include "services/text_format.h"

namespace {

using tollan::debugger::hashlittle;
using tollan::debugger::runtimeRecord;

void *handle(uintptr_t value)
{
    return reinterpret_cast<void *>(value);
}

TEST(Lookup3, PublishedTestVectors)
{
    EXPECT_EQ(hashlittle("", 0, 0), 0xDEADBEEFu);
    EXPECT_EQ(hashlittle("", 0, 0xDEADBEEFu), 0xBD5B7DDEu);
    EXPECT_EQ(hashlittle("Four score and seven years ago", 30, 0), 0x17770551u);
    EXPECT_EQ(hashlittle("Four score and seven years ago", 30, 1), 0xCD628161u);
}

// What a dump writes now.
std::string dumped()
{
    const std::string path = (std::filesystem::temp_directory_path() / "tollan-resources.txt").string();
    EXPECT_EQ(__ZOR_Resource_DumpToFile(path.c_str()), 0);
    std::string dump;
    {
        std::ifstream in(path);
        dump.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    std::filesystem::remove(path);
    return dump;
}

// Debugging level 2 and two entered functions, as compiled debug code has them.
class Tracking : public ::testing::Test {
protected:
    void SetUp() override
    {
        previousLevel_ = __SetDebuggingLevel(2);
        record_ = __DBG_GetCurrentThreadEnv();
        outer_.functionName = "main";
        outer_.startPosition = 10 << 10 | 1;
        outer_.endPosition = 40 << 10 | 1;
        inner_.functionName = "open_logs";
        inner_.startPosition = 3 << 10 | 1;
        inner_.endPosition = 9 << 10 | 1;
        __DBG_EnterFunctionInCurrentThreadEnv(record_, &outer_, "main.c");
        __DBG_SetCurrentThreadEnvPosition(record_, nullptr, 12, 5);
        __DBG_EnterFunctionInCurrentThreadEnv(record_, &inner_, "logs.c");
        __DBG_SetCurrentThreadEnvPosition(record_, nullptr, 6, 11);
    }
    void TearDown() override
    {
        __DBG_LeaveFunctionInCurrentThreadEnv(record_, &inner_);
        __DBG_LeaveFunctionInCurrentThreadEnv(record_, &outer_);
        __SetDebuggingLevel(previousLevel_);
    }
    static uint64_t entries() { return runtimeRecord()->resources.entryCount; }

    int32_t previousLevel_ = 0;
    ZORThreadEnv *record_ = nullptr;
    ZORFunctionFrame outer_{};
    ZORFunctionFrame inner_{};
};

TEST_F(Tracking, RecordsOnlyAtLevelTwoWithTheSwitchOnAndAFunctionEntered)
{
    const uint64_t before = entries();
    EXPECT_EQ(__ZOR_Resource_IsEnabled(), 1);
    __SetDebuggingLevel(1);
    EXPECT_EQ(__ZOR_Resource_IsEnabled(), 0);
    EXPECT_EQ(__ZOR_Resource_Acquire(handle(0x10), "Files", "off"), handle(0x10));
    __SetDebuggingLevel(2);
    EXPECT_EQ(SetEnableResourceTracking(0), 1);
    EXPECT_EQ(GetEnableResourceTracking(), 0);
    EXPECT_EQ(__ZOR_Resource_Acquire(handle(0x11), "Files", "off"), handle(0x11));
    EXPECT_EQ(SetEnableResourceTracking(5), 0);
    EXPECT_EQ(entries(), before);  // nothing was recorded, nothing allocated

    EXPECT_EQ(__SetDebuggingLevel(7), -1);
    EXPECT_EQ(__GetDebuggingLevel(), 2);
    EXPECT_EQ(__ZOR_Resource_Acquire(handle(0x12), "Files", "on"), handle(0x12));
    EXPECT_EQ(entries(), before + 1);
    EXPECT_EQ(__ZOR_Resource_Release(handle(0x9999)), handle(0x9999));  // never acquired
    EXPECT_EQ(entries(), before + 1);
    EXPECT_EQ(__ZOR_Resource_Release(handle(0x12)), handle(0x12));
    EXPECT_EQ(entries(), before);
}

TEST_F(Tracking, TheDumpListsWhatIsHeldOldestFirstWithItsStack)
{
    __ZOR_Resource_Acquire(handle(0x21), "Files", "file %d \"%s\"", 3, "a.log");
    __DBG_SetCurrentThreadEnvPosition(record_, nullptr, 7, 2);
    __ZOR_Resource_Acquire(handle(0x22), "Serial port connections", "Port %u with device %s", 4u, "COM4");
    __ZOR_Resource_Acquire(handle(0x23), "Files", "gone");
    __ZOR_Resource_Release(handle(0x23));

    const std::string dump = dumped();
    const std::string stack =
        "    0: logs.c:3.1-9.1 (open_logs)\n"
        "    1: main.c:10.1-40.1 (main)\n";
    const size_t first = dump.find("logs.c:6.11 ");
    ASSERT_NE(first, std::string::npos) << dump;
    EXPECT_NE(dump.find(" (Files) file 3 \"a.log\"\n" + stack, first), std::string::npos) << dump;
    EXPECT_NE(dump.find("logs.c:7.2 ", first), std::string::npos) << dump;
    EXPECT_NE(dump.find(" (Serial port connections) Port 4 with device COM4\n" + stack), std::string::npos)
        << dump;
    EXPECT_EQ(dump.find("gone"), std::string::npos);
    EXPECT_LT(dump.find("a.log"), dump.find("COM4"));
    __ZOR_Resource_Release(handle(0x21));
    __ZOR_Resource_Release(handle(0x22));

    tollan::testing::LogCapture log(ZOR_LOG_WARNING);
    EXPECT_EQ(__ZOR_Resource_DumpToFile(
                  (std::filesystem::temp_directory_path() / "no-such-dir" / "x").string().c_str()),
              -102);
    EXPECT_EQ(__ZOR_Resource_DumpToFile(nullptr), -102);
    EXPECT_EQ(log.count("Err = -102"), 2u);
}

TEST_F(Tracking, FilesOfTheFormattingLibraryAreTrackedUntilClosed)
{
    const std::string path = (std::filesystem::temp_directory_path() / "tollan-tracked.txt").string();
    const int32_t file = ZOR_OpenFile(path.c_str(), 2, 0, 0);
    ASSERT_GE(file, 3);
    const std::string line = "(Files) File handle " + std::to_string(file) + " \"" + path + "\"";
    EXPECT_NE(dumped().find(line), std::string::npos);
    EXPECT_EQ(ZOR_CloseFile(file), 0);
    EXPECT_EQ(dumped().find(line), std::string::npos);
    std::filesystem::remove(path);
}

TEST_F(Tracking, StreamsAndDescriptorsOfTheCLibraryAreTrackedUntilClosed)
{
    const std::string path = (std::filesystem::temp_directory_path() / "tollan-tracked-stream.txt").string();
    TollanFILE *stream = tollan_fopen(path.c_str(), "w");
    ASSERT_NE(stream, nullptr);
    const std::string streamLine =
        "(Files) FILE* 0x" + std::string(tollan::services::pointerText(stream).text) + " \"" + path + "\"";
    EXPECT_NE(dumped().find(streamLine), std::string::npos) << dumped();
    EXPECT_EQ(tollan_fclose(stream), 0);
    EXPECT_EQ(dumped().find(streamLine), std::string::npos);

    // A descriptor is tracked on its own until a stream takes it over.
    const int descriptor = tollan_open(path.c_str(), TOLLAN_O_READ, 0);
    ASSERT_GE(descriptor, 3);
    const std::string descriptorLine =
        "(Files) POSIX file handle " + std::to_string(descriptor) + " \"" + path + "\"";
    EXPECT_NE(dumped().find(descriptorLine), std::string::npos);
    stream = tollan_fdopen(descriptor, "r");
    ASSERT_NE(stream, nullptr);
    const std::string takenOver = "(Files) FILE* 0x" +
                                  std::string(tollan::services::pointerText(stream).text) +
                                  " from POSIX file handle " + std::to_string(descriptor);
    EXPECT_EQ(dumped().find(descriptorLine), std::string::npos);
    EXPECT_NE(dumped().find(takenOver), std::string::npos);
    EXPECT_EQ(tollan_fclose(stream), 0);
    EXPECT_EQ(dumped().find("(Files)"), std::string::npos);
    std::filesystem::remove(path);
}

TEST_F(Tracking, TheTableDoublesItsBucketsAtTheEntryThatFillsItToEightyPercent)
{
    tollan::testing::LogCapture log(ZOR_LOG_TEMP);
    const uint64_t before = entries();
    ASSERT_EQ(before, 0u);
    for (uintptr_t i = 1; i <= 104857; ++i) __ZOR_Resource_Acquire(handle(i * 16), "Block", nullptr);
    EXPECT_EQ(runtimeRecord()->resources.bucketCount, 131072u);
    __ZOR_Resource_Acquire(handle(104858 * 16), "Block", nullptr);
    EXPECT_EQ(runtimeRecord()->resources.bucketCount, 262144u);
    EXPECT_EQ(
        log.count("Resizing hashtable for resource tracking from 131072 to 262144 buckets (104858 entries)."),
        1u);
    // Every entry is still found after the move.
    for (uintptr_t i = 1; i <= 104858; ++i) __ZOR_Resource_Release(handle(i * 16));
    EXPECT_EQ(entries(), 0u);
}

}  // namespace
