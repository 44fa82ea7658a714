// Opening, writing, reading, moving and closing real files.
#include <cstring>
#include <string>
#include <thread>

#include "fmtio/file_table.h"
#include "temp_dir.h"

namespace {

constexpr int64_t kTooLarge = int64_t{INT32_MAX} + 1;

}  // namespace

TEST_F(FmtioFileTest, HandlesStartAtThreeAndClosedOnesAreGivenOutAgain)
{
    const int32_t first = open("a", 2, 0, 0);
    const int32_t second = open("b", 2, 0, 0);
    EXPECT_EQ(first, 3);
    EXPECT_EQ(second, 4);
    EXPECT_EQ(GetFmtIOError(), 0);

    EXPECT_EQ(ZOR_CloseFile(first), 0);
    EXPECT_TRUE(failedWith(ZOR_CloseFile(first), 3));
    EXPECT_EQ(open("c", 2, 2, 0), 3);
    EXPECT_EQ(open("d", 2, 0, 1), 5);

    for (int32_t handle : {3, 4, 5}) EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

TEST_F(FmtioFileTest, WriteModesTruncateKeepOrAppend)
{
    writeRaw("f", "hello world");
    int32_t handle = open("f", 2, 2, 0);  // keep: starts at 0 over the old bytes
    EXPECT_EQ(ZOR_WriteFile(handle, "HE", 2), 2);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("f"), "HEllo world");

    handle = open("f", 0, 1, 0);  // append: every write goes to the end
    EXPECT_EQ(readAll(handle), "HEllo world");
    EXPECT_EQ(SetFilePtr(handle, 0, 0), 0);
    EXPECT_EQ(ZOR_WriteFile(handle, "!", 1), 1);
    EXPECT_EQ(SetFilePtr(handle, 0, 1), 12);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("f"), "HEllo world!");

    handle = open("f", 1, 0, 0);  // a read-only open never truncates
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("f"), "HEllo world!");

    handle = open("f", 2, 0, 0);  // truncate
    EXPECT_EQ(ZOR_WriteFile(handle, "x", 1), 1);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("f"), "x");
}

TEST_F(FmtioFileTest, ReadWriteHandleMovesAndReads)
{
    const int32_t handle = open("rw", 0, 0, 0);
    EXPECT_EQ(ZOR_WriteFile(handle, "0123456789", 10), 10);
    EXPECT_EQ(SetFilePtr(handle, -4, 2), 6);
    char buffer[8] = {};
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, sizeof buffer), 4);
    EXPECT_STREQ(buffer, "6789");
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, sizeof buffer), 0);
    EXPECT_EQ(GetFmtIOError(), 0);
    EXPECT_EQ(SetFilePtr(handle, 2, 0), 2);
    EXPECT_EQ(SetFilePtr(handle, 3, 1), 5);
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, 0), 0);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

TEST_F(FmtioFileTest, FailedOpensReportTheCauseAndLeaveNoSlot)
{
    EXPECT_TRUE(failedWith(ZOR_OpenFile(path("missing").c_str(), 1, 2, 0), 1));
    EXPECT_TRUE(failedWith(ZOR_OpenFile(path("no-dir/file").c_str(), 2, 0, 0), 1));
    std::filesystem::create_directory(path("directory"));
    EXPECT_TRUE(failedWith(ZOR_OpenFile(path("directory").c_str(), 1, 2, 0), 6));

    // A plain file standing where a directory should is a path that leads nowhere.
    writeRaw("file.txt", "x");
    const std::string throughFile = path("file.txt/x");
    for (int32_t action : {0, 1, 2})
        EXPECT_TRUE(failedWith(ZOR_OpenFile(throughFile.c_str(), action, 0, 0), 1)) << "action " << action;
    int64_t size = 99;
    EXPECT_EQ(GetFileInfo(throughFile.c_str(), &size), 0);
    EXPECT_EQ(GetFmtIOError(), 0);
    EXPECT_EQ(size, 0);

    const int32_t handle = open("present", 2, 0, 0);
    EXPECT_EQ(handle, 3);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

TEST_F(FmtioFileTest, ReadingAWriteOnlyFileOrWritingAReadOnlyOneIsAccessDenied)
{
    writeRaw("f", "line\n");
    const int32_t writeOnly = open("f", 2, 2, 1);
    char buffer[8];
    EXPECT_TRUE(failedWith(ZOR_ReadFile(writeOnly, buffer, sizeof buffer), 6));
    EXPECT_TRUE(failedWith(ReadLine(writeOnly, buffer, 7), 6));
    EXPECT_EQ(ZOR_CloseFile(writeOnly), 0);

    const int32_t readOnly = open("f", 1, 2, 0);
    EXPECT_TRUE(failedWith(ZOR_WriteFile(readOnly, "x", 1), 6));
    EXPECT_TRUE(failedWith(WriteLine(readOnly, "x", 1), 6));
    EXPECT_EQ(ReadLine(readOnly, buffer, 7), 4);  // the file is intact and still readable
    EXPECT_EQ(ZOR_CloseFile(readOnly), 0);
    EXPECT_EQ(readRaw("f"), "line\n");
}

TEST_F(FmtioFileTest, BadOpenArgumentsChangeNothing)
{
    const std::string target = path("never");
    const std::string blanks = " \t\r\n ";
    const std::string tooLong(260, 'n');
    struct Case {
        const char *path;
        int32_t action, mode, type, error;
    } cases[] = {
        {nullptr, 2, 0, 0, 7},        {"", 2, 0, 0, 7},
        {blanks.c_str(), 2, 0, 0, 7}, {tooLong.c_str(), 2, 0, 0, 10},
        {target.c_str(), 3, 0, 0, 7}, {target.c_str(), -1, 0, 0, 7},
        {target.c_str(), 2, 3, 0, 7}, {target.c_str(), 2, 0, 2, 7},
        {target.c_str(), 1, 9, 1, 7},
    };
    for (const Case &c : cases) {
        EXPECT_TRUE(failedWith(ZOR_OpenFile(c.path, c.action, c.mode, c.type), c.error))
            << (c.path ? c.path : "(null)") << " " << c.action << c.mode << c.type;
    }
    EXPECT_EQ(GetFileInfo(target.c_str(), nullptr), 0);
}

TEST_F(FmtioFileTest, UnknownHandlesAreRefused)
{
    const int32_t closed = open("closed", 2, 0, 0);
    ASSERT_EQ(ZOR_CloseFile(closed), 0);
    char buffer[4];
    for (int32_t handle : {0, 1, 2, closed, 77, -5}) {
        SCOPED_TRACE(handle);
        EXPECT_TRUE(failedWith(ZOR_ReadFile(handle, buffer, 4), 3));
        EXPECT_TRUE(failedWith(ZOR_WriteFile(handle, "x", 1), 3));
        EXPECT_TRUE(failedWith(ZOR_CloseFile(handle), 3));
        EXPECT_TRUE(failedWith(ReadLine(handle, buffer, 3), 3));
        EXPECT_TRUE(failedWith(WriteLine(handle, "x", -1), 3));
        // The standard streams' numbers are accepted by SetFilePtr and stay put.
        EXPECT_EQ(SetFilePtr(handle, 5, 0), handle < 3 ? 0 : -1);
        EXPECT_EQ(GetFmtIOError(), handle < 3 ? 0 : 3);
    }
    EXPECT_EQ(readRaw("closed"), "");
}

TEST_F(FmtioFileTest, BadCountsAndOriginsChangeNothing)
{
    writeRaw("f", "abcdef");
    const int32_t handle = open("f", 0, 2, 0);
    ASSERT_EQ(SetFilePtr(handle, 2, 0), 2);
    char buffer[8];

    EXPECT_TRUE(failedWith(ZOR_ReadFile(handle, buffer, kTooLarge), 7));
    EXPECT_TRUE(failedWith(ZOR_ReadFile(handle, buffer, -1), 7));
    EXPECT_TRUE(failedWith(ZOR_ReadFile(handle, nullptr, 1), 7));
    EXPECT_TRUE(failedWith(ZOR_WriteFile(handle, "zz", kTooLarge), 7));
    EXPECT_TRUE(failedWith(ZOR_WriteFile(handle, nullptr, 2), 7));
    EXPECT_TRUE(failedWith(SetFilePtr(handle, 0, 3), 7));
    EXPECT_TRUE(failedWith(SetFilePtr(handle, -1, -1), 7));
    EXPECT_TRUE(failedWith(SetFilePtr(handle, -10, 0), 7));  // before the start

    EXPECT_EQ(SetFilePtr(handle, 0, 1), 2);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("f"), "abcdef");
}

TEST_F(FmtioFileTest, CommitModeTakesOnlyZeroOrOne)
{
    EXPECT_EQ(ZOR_CloseFile(0), -1);
    EXPECT_EQ(ZOR_SetCommitMode(2), -1);
    EXPECT_EQ(ZOR_SetCommitMode(-1), -1);
    EXPECT_EQ(GetFmtIOError(), 3);  // untouched

    ASSERT_EQ(ZOR_SetCommitMode(1), 0);
    const int32_t handle = open("committed", 2, 0, 1);
    EXPECT_EQ(ZOR_WriteFile(handle, "data\n", 5), 5);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    const int32_t reader = open("committed", 1, 2, 0);
    EXPECT_EQ(ZOR_CloseFile(reader), 0);  // read-only: nothing to commit
    EXPECT_EQ(ZOR_SetCommitMode(0), 0);
    EXPECT_EQ(readRaw("committed"), "data\r\n");
}

TEST_F(FmtioFileTest, CleanUpClosesOpenFilesAfterCommittingThem)
{
    ASSERT_EQ(ZOR_SetCommitMode(1), 0);
    const int32_t handle = open("left-open", 2, 0, 0);
    EXPECT_EQ(ZOR_WriteFile(handle, "kept", 4), 4);
    tollan::fmtio::destroyFileTable();
    ASSERT_TRUE(tollan::fmtio::createFileTable());
    ASSERT_EQ(ZOR_SetCommitMode(0), 0);

    EXPECT_EQ(ZOR_CloseFile(handle), -1);
    EXPECT_EQ(readRaw("left-open"), "kept");
    EXPECT_EQ(open("again", 2, 0, 0), 3);
    EXPECT_EQ(ZOR_CloseFile(3), 0);
}

TEST_F(FmtioFileTest, GetFileInfoTellsWhetherAFileExistsAndItsSize)
{
    writeRaw("sized", std::string(1234, 's'));
    int64_t size = -1;
    EXPECT_EQ(GetFileInfo(path("sized").c_str(), &size), 1);
    EXPECT_EQ(size, 1234);
    EXPECT_EQ(GetFileInfo(path("sized").c_str(), nullptr), 1);

    EXPECT_EQ(ZOR_CloseFile(1), -1);
    EXPECT_EQ(GetFileInfo(path("absent").c_str(), &size), 0);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(GetFmtIOError(), 0);

    EXPECT_TRUE(failedWith(GetFileInfo("  ", &size), 7));
    EXPECT_TRUE(failedWith(GetFileInfo(std::string(300, 'p').c_str(), &size), 10));
}

TEST(FmtioErrors, EachThreadHasItsOwnErrorAndText)
{
    ASSERT_TRUE(tollan::fmtio::FmtIOLibInitOnce());
    const char *expected[] = {
        "No error",        "File not found",      "General I/O failure",
        "Bad file handle", "Insufficient memory", "File exists",
        "Access denied",   "Invalid argument",    "Too many open files",
        "Disk is full",    "File name too long",  "String too long for representation",
    };
    for (int32_t code = 0; code < 12; ++code) EXPECT_STREQ(GetFmtIOErrorString(code), expected[code]);
    EXPECT_STREQ(GetFmtIOErrorString(12), "Unknown error number");
    EXPECT_STREQ(GetFmtIOErrorString(-1), "Unknown error number");

    EXPECT_EQ(ZOR_CloseFile(0), -1);
    char *mine = GetFmtIOErrorString(3);
    int32_t otherError = -1;
    char *theirs = nullptr;
    std::thread other([&] {
        otherError = GetFmtIOError();
        theirs = GetFmtIOErrorString(9);
        EXPECT_STREQ(theirs, "Disk is full");
    });
    other.join();
    EXPECT_EQ(otherError, 0);
    EXPECT_EQ(GetFmtIOError(), 3);
    EXPECT_NE(mine, theirs);
    EXPECT_STREQ(mine, "Bad file handle");
}
