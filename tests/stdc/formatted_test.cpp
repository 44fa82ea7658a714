// The printf and scanf families over streams and strings, and the round
// trip of every double through "%.17g".
#include <gtest/gtest.h>

#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

#include <tollan/ansi_c.h>

#include "fixtures/scratch_folder.h"

namespace {

using tollan::testing::ScratchFolder;

TEST(FormattedTest, PrintfFamilyWritesStreamsAndBuffers)
{
    ScratchFolder folder("tollan-formatted");
    TollanFILE *file = tollan_fopen(folder.path("out.txt").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    // -Wformat knows no %I sizes; a call through a pointer is not checked.
    auto *print = &tollan_fprintf;
    EXPECT_EQ(print(file, "%s<%5d|%-4x|%I64d|%Iu>\n", "n", 42, 255u, INT64_C(-9000000000), size_t{7}), 28);
    const std::string wide(3000, 'z');
    EXPECT_EQ(tollan_fprintf(file, "%s%c", wide.c_str(), '!'), 3001);
    EXPECT_EQ(tollan_fclose(file), 0);
    EXPECT_EQ(folder.read("out.txt"), "n<   42|ff  |-9000000000|7>\n" + wide + "!");

    char buffer[16];
    EXPECT_EQ(tollan_sprintf(buffer, "%.3f", 2.0 / 3.0), 5);
    EXPECT_STREQ(buffer, "0.667");
    EXPECT_EQ(tollan_snprintf(buffer, 4, "%d", 123456), 6);
    EXPECT_STREQ(buffer, "123");
    EXPECT_EQ(tollan_snprintf(nullptr, 0, "%p", static_cast<void *>(nullptr)), 16);
    EXPECT_LT(tollan_snprintf(buffer, sizeof buffer, nullptr), 0);
}

TEST(FormattedTest, ScanfFamilyReadsStreamsAndStrings)
{
    ScratchFolder folder("tollan-scanned");
    const std::string path = folder.write("in.txt", "volts 12.5 -3\r\nnext 0x1F\r\n");
    TollanFILE *file = tollan_fopen(path.c_str(), "r");
    ASSERT_NE(file, nullptr);
    char word[16];
    double volts = 0;
    int count = 0;
    EXPECT_EQ(tollan_fscanf(file, "%15s %lf %d", word, &volts, &count), 3);
    EXPECT_STREQ(word, "volts");
    EXPECT_EQ(volts, 12.5);
    EXPECT_EQ(count, -3);
    unsigned value = 0;
    EXPECT_EQ(tollan_fscanf(file, " next %x", &value), 1);
    EXPECT_EQ(value, 0x1Fu);
    // Text mode: the CR LF arrives as one newline, which the scan left unread.
    EXPECT_EQ(tollan_fgetc(file), '\n');
    EXPECT_EQ(tollan_fscanf(file, "%d", &count), TOLLAN_EOF);
    EXPECT_EQ(tollan_fclose(file), 0);

    int64_t big = 0;
    EXPECT_EQ(tollan_sscanf("-9000000000 rest", "%I64d %5s", &big, word), 2);
    EXPECT_EQ(big, INT64_C(-9000000000));
    EXPECT_STREQ(word, "rest");
    EXPECT_EQ(tollan_sscanf("", "%d", &count), TOLLAN_EOF);
    EXPECT_EQ(tollan_sscanf("abc", "%d", &count), 0);
    EXPECT_EQ(tollan_sscanf(nullptr, "%d", &count), TOLLAN_EOF);
}

TEST(FormattedTest, EveryDoubleSurvivesPrintingAndScanningBack)
{
    std::mt19937_64 random(2026);
    const double edges[] = {0.0,           -0.0, DBL_MIN,   DBL_MAX, DBL_TRUE_MIN,
                            -DBL_TRUE_MIN, 0.1,  1.0 / 3.0, 1e23,    5e-324};
    char text[64];
    auto roundTrip = [&](double value) {
        ASSERT_GT(tollan_snprintf(text, sizeof text, "%.17g", value), 0);
        double back = 0;
        ASSERT_EQ(tollan_sscanf(text, "%lf", &back), 1) << text;
        uint64_t sent = 0, got = 0;
        std::memcpy(&sent, &value, sizeof sent);
        std::memcpy(&got, &back, sizeof got);
        EXPECT_EQ(sent, got) << text;
    };
    for (double value : edges) roundTrip(value);
    for (int i = 0; i < 20000; ++i) {
        uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isfinite(value)) roundTrip(value);
    }
}

}  // namespace
