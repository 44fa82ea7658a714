// FmtFile and ScanFile on the library's file handles (position, i offset,
// lines), and FmtOut and ScanIn on its standard streams.
#include <gtest/gtest.h>

#include <string>

#include <tollan/ansi_c.h>
#include <tollan/fmtio.h>

#include "fmtio/temp_dir.h"

namespace {

using FormatFiles = FmtioFileTest;

TEST_F(FormatFiles, FmtFileWritesAtThePositionAndMovesIt)
{
    const int32_t handle = open("out.txt", 0, 0, 0);
    EXPECT_EQ(FmtFile(handle, "%s<V=%d;", 5), 1);
    EXPECT_EQ(NumFmtdBytes(), 4);
    EXPECT_EQ(FmtFile(handle, "%f[p1]", 2.5), 1);       // implied file target
    EXPECT_EQ(FmtFile(handle, "%s[i2]<%s", "end"), 1);  // two bytes further on
    EXPECT_EQ(FmtFile(handle, "%s[w2]<%s", "cut"), 1);
    EXPECT_EQ(SetFilePtr(handle, 0, 1), 14);
    EXPECT_EQ(FmtFile(handle, "%d<%s", "1"), -FMT_ERR_INCOMPATIBLE_PARAMETER);
    ASSERT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("out.txt"), std::string("V=5;2.5\0\0endcu", 14));
    EXPECT_TRUE(failedWith(FmtFile(handle, "%s<x"), 3));
}

TEST_F(FormatFiles, ScanFileReadsLinesTheRestOrAWidthAndLeavesThePositionAfterThem)
{
    writeRaw("in.txt", "12 13\nskip 7\nlast 8.5");
    const int32_t handle = open("in.txt", 1, 0, 0);
    int32_t a = 0, b = 0;
    double x = 0;
    EXPECT_EQ(ScanFile(handle, "%l>%d%d", &a, &b), 2);
    EXPECT_EQ(b, 13);
    EXPECT_EQ(SetFilePtr(handle, 0, 1), 6);
    EXPECT_EQ(ScanFile(handle, "%l[i5]>%d", &a), 1);
    EXPECT_EQ(a, 7);
    EXPECT_EQ(ScanFile(handle, "%s>last %f", &x), 1);
    EXPECT_EQ(x, 8.5);
    EXPECT_EQ(ScanFile(handle, "%l>%d", &a), 0);  // at the end
    EXPECT_EQ(ScanFile(handle, "%d>%d", &a), -FMT_ERR_INCOMPATIBLE_PARAMETER);
    ASSERT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_TRUE(failedWith(ScanFile(handle, "%s>%d", &a), 3));

    // With a width, exactly that many bytes, whatever they are.
    writeRaw("block.bin", std::string("\x00\x2A\x01\x00rest", 8));
    const int32_t block = open("block.bin", 1, 0, 0);
    int16_t words[2] = {};
    EXPECT_EQ(ScanFile(block, "%s[w4t-]>%2d[b2o10]", words), 1);
    EXPECT_EQ(words[0] * 1000 + words[1], 42256);
    EXPECT_EQ(SetFilePtr(block, 0, 1), 4);
    ASSERT_EQ(ZOR_CloseFile(block), 0);
}

TEST_F(FormatFiles, FmtOutAndScanInUseTheStandardStreams)
{
    ASSERT_EQ(tollan_freopen(path("stdout.txt").c_str(), "wb", tollan_stdout), tollan_stdout);
    EXPECT_EQ(FmtOut("%s<%d items\n", 3), 1);
    EXPECT_EQ(NumFmtdBytes(), 8);
    EXPECT_EQ(FmtOut("%d[w*]", -1, 5), -FMT_ERR_NEGATIVE_WIDTH);
    ASSERT_EQ(tollan_fflush(tollan_stdout), 0);
    EXPECT_EQ(readRaw("stdout.txt"), "3 items\n");

    writeRaw("stdin.txt", "4 5\n6\n");
    ASSERT_EQ(tollan_freopen(path("stdin.txt").c_str(), "rb", tollan_stdin), tollan_stdin);
    int32_t a = 0, b = 0;
    EXPECT_EQ(ScanIn("%s>%d%d%d", &a, &b, &b), 2);  // one line only
    EXPECT_EQ(b, 5);
    EXPECT_EQ(ScanIn("%d", &a), 1);
    EXPECT_EQ(a, 6);
    EXPECT_EQ(ScanIn("%d", &a), 0);
}

}  // namespace
