// The dump's bytes: a few hundred entries with stacks of every depth, texts
// that are missing or empty or longer than the dump's write buffer, and
// positions at the ends of their ranges, compared byte for byte with the
// format that the debugger's readers expect.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include <tollan/debugger.h>

#include "debugger/decimal_text.h"
#include "debugger/runtime_record.h"

namespace {

using tollan::debugger::runtimeRecord;

constexpr int kEntries = 300;
constexpr int kDeepest = 6;

std::string dumpPath()
{
    return (std::filesystem::temp_directory_path() / "tollan-dump-format.txt").string();
}

std::string dumped()
{
    EXPECT_EQ(__ZOR_Resource_DumpToFile(dumpPath().c_str()), 0);
    std::string dump;
    {
        std::ifstream in(dumpPath(), std::ios::binary);
        dump.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    std::filesystem::remove(dumpPath());
    return dump;
}

std::string orNull(const char *text)
{
    return text != nullptr ? text : "(null)";
}

// A packed position as the dump prints it: line bits 10-29, column bits 0-9.
std::string position(uint64_t packed)
{
    return std::to_string(packed >> 10 & 0xFFFFF) + "." + std::to_string(packed & 0x3FF);
}

struct Function {
    const char *fileName;
    const char *functionName;
    uint32_t start;
    uint32_t end;
};

// The functions a stack of depth n is made of: the first n, outermost first.
// Among them a missing file and function name, and positions whose line and
// column lie beyond the packed fields (the dump masks them).
const Function kFunctions[kDeepest] = {
    {"main.c", "main", 10 << 10 | 1, 40 << 10 | 1},
    {nullptr, "open_all", 3 << 10 | 7, 9 << 10 | 2},
    {"a/very/long/path/to/some/source/file/deep/in/a/tree.c", nullptr, 0, 0xFFFFFFFFu},
    {"ports.c", "open_port", 1048575u << 10 | 1023, 1u << 10},
    {"", "", 77 << 10 | 300, 78 << 10 | 5},
    {"logs.c", "write_log_line_with_a_longer_name", 123456 << 10 | 12, 123500 << 10 | 1},
};

const char *const kTypeNames[] = {"Files", nullptr, "Serial port connections", ""};

// What acquisition k records: where it stands and what it describes.
struct Acquisition {
    int depth;
    int32_t line;
    int32_t column;
    const char *typeName;
    std::string description;  // as formatted; "%s" of it unless formatted is false
    bool formatted;           // false: a null format, an empty description
};

Acquisition acquisition(int k)
{
    Acquisition a{
        1 + k % kDeepest, k * 37 % 5000, k % 90, kTypeNames[k % 4], "handle " + std::to_string(k), true};
    if (k % 50 == 3) a.line = -1, a.column = -1;  // masked to 1048575.1023
    if (k % 11 == 5) a.description.clear();
    if (k % 13 == 6) a.description.assign(300 + k, 'd');  // past the stack buffer of acquisition
    if (k % 17 == 8) a.formatted = false, a.description.clear();
    if (k == 100) a.description.assign(1100000, 'x');  // past the dump's write buffer (1 MiB)
    return a;
}

std::string expectedEntry(uint64_t id, const Acquisition &a)
{
    const Function &innermost = kFunctions[a.depth - 1];
    std::string text = orNull(innermost.fileName) + ":" +
                       position((static_cast<uint64_t>(a.line) & 0xFFFFF) << 10 |
                                (static_cast<uint64_t>(a.column) & 0x3FF)) +
                       " " + std::to_string(id) + " (" + orNull(a.typeName) + ") " + a.description + "\n";
    for (int i = 0; i < a.depth; ++i) {
        const Function &f = kFunctions[a.depth - 1 - i];
        text += "    " + std::to_string(i) + ": " + orNull(f.fileName) + ":" + position(f.start) + "-" +
                position(f.end) + " (" + orNull(f.functionName) + ")\n";
    }
    return text;
}

void *handle(int k)
{
    return reinterpret_cast<void *>(static_cast<uintptr_t>(0x7000 + k * 16));
}

class DumpFormat : public ::testing::Test {
protected:
    void SetUp() override
    {
        previousLevel_ = __SetDebuggingLevel(2);
        record_ = __DBG_GetCurrentThreadEnv();
        before_ = dumped();
        firstId_ = runtimeRecord()->resources.idCounter + 1;
        ZORFunctionFrame frames[kDeepest]{};
        for (int k = 0; k < kEntries; ++k) {
            const Acquisition a = acquisition(k);
            for (int i = 0; i < a.depth; ++i) {
                frames[i].functionName = kFunctions[i].functionName;
                frames[i].startPosition = kFunctions[i].start;
                frames[i].endPosition = kFunctions[i].end;
                __DBG_EnterFunctionInCurrentThreadEnv(record_, &frames[i], kFunctions[i].fileName);
            }
            __DBG_SetCurrentThreadEnvPosition(record_, nullptr, a.line, a.column);
            if (a.formatted)
                __ZOR_Resource_Acquire(handle(k), a.typeName, "%s", a.description.c_str());
            else
                __ZOR_Resource_Acquire(handle(k), a.typeName, nullptr);
            for (int i = a.depth - 1; i >= 0; --i) __DBG_LeaveFunctionInCurrentThreadEnv(record_, &frames[i]);
        }
        // Holes in the chain: every seventh entry is released again.
        for (int k = 0; k < kEntries; k += 7) __ZOR_Resource_Release(handle(k));
    }
    void TearDown() override
    {
        for (int k = 0; k < kEntries; ++k) __ZOR_Resource_Release(handle(k));
        __SetDebuggingLevel(previousLevel_);
    }
    // What the dump holds after the entries that were there before.
    static std::string expectedEntries(uint64_t firstId, int count = kEntries)
    {
        std::string text;
        for (int k = 0; k < count; ++k)
            if (k % 7 != 0) text += expectedEntry(firstId + static_cast<uint64_t>(k), acquisition(k));
        return text;
    }

    int32_t previousLevel_ = 0;
    ZORThreadEnv *record_ = nullptr;
    std::string before_;
    uint64_t firstId_ = 0;
};

TEST_F(DumpFormat, EveryEntryAndFrameIsWrittenByteForByte)
{
    const std::string dump = dumped();
    ASSERT_EQ(dump.compare(0, before_.size(), before_), 0);
    EXPECT_TRUE(dump.substr(before_.size()) == expectedEntries(firstId_));  // no megabyte diff on failure
    EXPECT_EQ(dump.size() - before_.size(), expectedEntries(firstId_).size());
}

// A table whose count disagrees with its chain of entries: a count above
// the chain's length puts an error line first; a count below it lists only
// as many entries as the table counts.
TEST_F(DumpFormat, ACountThatDisagreesWithTheChainShowsInTheDump)
{
    ASSERT_TRUE(before_.empty()) << "another test left entries behind";
    tollan::debugger::ResourceTable &table = runtimeRecord()->resources;
    const uint64_t count = table.entryCount;
    {
        std::lock_guard hold(*table.lock);
        ++table.entryCount;
    }
    const std::string over = dumped();
    {
        std::lock_guard hold(*table.lock);
        table.entryCount = count - 1;
    }
    const std::string under = dumped();
    {
        std::lock_guard hold(*table.lock);
        table.entryCount = count;
    }
    EXPECT_TRUE(over ==
                "debugger/cdbstack:193:error: gCdbSynchronize->resources.numEntries != LNumItems (list)\n" +
                    expectedEntries(firstId_));
    EXPECT_TRUE(under == expectedEntries(firstId_, kEntries - 1));  // without the newest, 299
}

// The dump's numbers at the edges where their digit count changes.
TEST(DecimalText, EveryDigitCountAndItsEdges)
{
    std::vector<uint64_t> values = {0, UINT64_MAX, UINT64_MAX - 1, 1234567890123456789u};
    for (uint64_t power = 1; power <= 1000000000000000000u; power *= 10)
        values.insert(values.end(), {power - 1, power, power + 1, power * 9 + power - 1});
    values.push_back(10000000000000000000u);
    for (const uint64_t value : values) {
        char text[tollan::debugger::kLongestDecimal + 1] = {};
        char *const end = tollan::debugger::putDecimal(text, value);
        EXPECT_EQ(std::string(text, end), std::to_string(value));
    }
}

}  // namespace
