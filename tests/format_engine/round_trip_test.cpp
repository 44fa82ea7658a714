// The round trip, as a property over random items and values: what Fmt
// writes with an item, Scan reads back with the same item.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include <tollan/fmtio.h>

namespace {

constexpr int kTrials = 3000;

// A random integer item: its modifiers in the order the parser takes them.
struct IntegerItem {
    char letter;
    int size;
    bool isSigned;
    int width;
    char pad;

    std::string text() const
    {
        std::string item = std::string("%") + letter + "[b" + std::to_string(size) + (isSigned ? "s" : "u");
        if (width) item += "w" + std::to_string(width);
        if (pad) item += std::string("p") + pad;
        return item + "]";
    }
};

IntegerItem randomIntegerItem(std::mt19937_64 &random)
{
    static const char letters[] = {'d', 'i', 'o', 'x'};
    // Pads Scan can tell from the number: not a sign and no digit but 0.
    static const char pads[] = {0, ' ', '0', '*', '_', '#'};
    IntegerItem item;
    item.letter = letters[random() % 4];
    item.size = static_cast<int>(random() % 8) + 1;
    item.isSigned = random() % 2 != 0;
    item.width = random() % 3 == 0 ? 0 : static_cast<int>(random() % 30) + 1;
    item.pad = pads[random() % 6];
    return item;
}

TEST(RoundTrip, IntegersOfEverySizeRadixSignWidthAndPad)
{
    std::mt19937_64 random(20261123);
    int checked = 0;
    for (int trial = 0; trial < kTrials; ++trial) {
        const IntegerItem item = randomIntegerItem(random);
        const uint64_t mask = item.size == 8 ? UINT64_MAX : (uint64_t{1} << (8 * item.size)) - 1;
        // Small numbers and the extremes are where the faults hide.
        uint64_t value = random();
        if (trial % 3 == 0) value %= 1000;
        if (trial % 7 == 0) value = trial % 2 ? mask : mask >> 1;
        value &= mask;
        char out[64];
        const std::string format = "%s<" + item.text();
        const int32_t written = item.size > 4 ? Fmt(out, format.c_str(), static_cast<long long>(value))
                                              : Fmt(out, format.c_str(), static_cast<int>(value));
        if (written == -FMT_ERR_WIDTH_EXCEEDED) continue;  // too narrow a field
        ASSERT_EQ(written, 1) << item.text();
        uint64_t back = 0;
        ASSERT_EQ(Scan(out, ("%s>" + item.text()).c_str(), &back), 1) << item.text() << " '" << out << "'";
        EXPECT_EQ(back & mask, value) << item.text() << " '" << out << "'";
        EXPECT_EQ(NumScanBytes(), NumFmtdBytes()) << item.text();
        ++checked;
    }
    EXPECT_GT(checked, kTrials / 2);
}

TEST(RoundTrip, BinaryIntegersInEveryByteOrder)
{
    std::mt19937_64 random(7);
    for (int trial = 0; trial < kTrials; ++trial) {
        const int size = random() % 2 ? 2 : 4;
        std::string order = size == 2 ? "01" : "0123";
        std::shuffle(order.begin(), order.end(), random);
        const std::string item = "%c[b" + std::to_string(size) + "o" + order + "]";
        const auto value = static_cast<uint32_t>(random()) & (size == 2 ? 0xFFFFu : 0xFFFFFFFFu);
        char out[8];
        ASSERT_EQ(Fmt(out, ("%s<" + item).c_str(), static_cast<int>(value)), 1);
        ASSERT_EQ(NumFmtdBytes(), size);
        for (int k = 0; k < size; ++k)
            EXPECT_EQ(static_cast<unsigned char>(out[k]), value >> (8 * (order[k] - '0')) & 0xFF) << item;
        uint32_t back = 0;
        ASSERT_EQ(Scan(out, ("%*c>" + item).c_str(), size, &back), 1) << item;
        EXPECT_EQ(back, value) << item;
    }
}

TEST(RoundTrip, RealsAtFullPrecisionInBothNotations)
{
    std::mt19937_64 random(42);
    static const char *const items[] = {"%f", "%f[e]", "%f[ex]", "%f[e1]", "%f[w40]", "%f[e10w40]"};
    for (int trial = 0; trial < kTrials; ++trial) {
        double value;
        do {
            const uint64_t bits = random();
            std::memcpy(&value, &bits, sizeof value);
        } while (value != value || value - value != 0);  // finite numbers only
        if (trial % 4 == 0) value = static_cast<double>(static_cast<int32_t>(random())) / 1024;
        const std::string item = items[trial % 6];
        char out[400];
        const int32_t written = Fmt(out, ("%s<" + item).c_str(), value);
        if (written == -FMT_ERR_WIDTH_EXCEEDED) continue;
        ASSERT_EQ(written, 1) << item;
        double back = 0;
        ASSERT_EQ(Scan(out, ("%s>" + item).c_str(), &back), 1) << item << " " << out;
        EXPECT_EQ(std::memcmp(&back, &value, sizeof value), 0) << item << " " << out;
    }
}

TEST(RoundTrip, FloatArrays)
{
    std::mt19937 random(3);
    float values[5], back[5] = {};
    for (int trial = 0; trial < kTrials / 10; ++trial) {
        for (float &value : values) {
            const uint32_t bits = random() & 0x7F7FFFFFu;  // finite
            std::memcpy(&value, &bits, sizeof value);
        }
        char out[256];
        ASSERT_EQ(Fmt(out, "%s<%5f[b4]", values), 1);
        ASSERT_EQ(Scan(out, "%s>%5f[b4]", back), 1) << out;
        EXPECT_EQ(std::memcmp(back, values, sizeof values), 0) << out;
    }
}

}  // namespace
