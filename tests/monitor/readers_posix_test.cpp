// The monitor's readers on their own: event texts, the record stream, the
// report lines of a program's output, and the walks through a program's
// memory (here the test's own memory, which process_vm_readv reads as well
// as another process's), fed with records that are broken in the ways a
// dying or corrupted program leaves them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include <tollan/debugger.h>

#include "break_report.h"
#include "debugger/resource_entry.h"
#include "debugger/runtime_record.h"
#include "event_text.h"
#include "output_lines.h"
#include "record_stream.h"
#include "resource_tally.h"

namespace {

using namespace tollan::monitor;
using tollan::debugger::packPosition;
using tollan::debugger::ResourceEntry;
using tollan::debugger::ResourceFrame;

TEST(MonitorEventTexts, AreDecodedOrShownAsTheyCame)
{
    // A file name may hold ':' and '|'; the fields after the head marker are no part of it.
    const char attach[] =
        "@{module_attach|00007F0000001000| 17|  0|  0|295|00007F0000002000|  "
        "1|C:\\odd:15|name|x.dll:15|32|36}@";
    const std::optional<EventText> parsed = parseEventText(attach);
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->fields, (std::vector<std::string>{"32", "36"}));
    EXPECT_EQ(describeEventText(attach),
              "module attached: C:\\odd:15|name|x.dll (handle 00007F0000001000, "
              "1 debug-table entry, version 17.0.0.295)");
    const std::optional<EventText> withColonField = parseEventText("@{call|reset:6|note:|9}@");
    ASSERT_TRUE(withColonField.has_value());
    EXPECT_EQ(withColonField->arguments, std::vector<std::string>{"reset"});
    EXPECT_EQ(withColonField->fields, (std::vector<std::string>{"note:", "9"}));
    EXPECT_EQ(describeEventText("@{update_watchpoints:}@"),
              "the program asks for its watchpoints to be updated");
    EXPECT_EQ(describeEventText("@{call|reset:6}@"), "the program calls the reset hook");
    EXPECT_EQ(describeEventText("@{set_exe_state|into:15}@"), "execution state: stepping into");
    EXPECT_EQ(describeEventText("@{module_detach|00007F0000001000:15}@"),
              "module detached: handle 00007F0000001000");
    EXPECT_EQ(describeEventText("@{resource_release|0000000000001001:18}@"),
              "resource released: handle 0000000000001001");
    EXPECT_EQ(describeEventText("@{debugger_event|34|0000000000001001:17}@"),
              "event: @{debugger_event|34|0000000000001001:17}@");
    EXPECT_EQ(describeEventText("@{module_attach|short:15}@"), "event: @{module_attach|short:15}@");
    EXPECT_EQ(describeEventText("plain words"), "event: plain words");
    EXPECT_EQ(parsePointer("00007FFD12345678"), 0x00007FFD12345678u);
    EXPECT_FALSE(parsePointer("00007FFD1234567Z").has_value());
    EXPECT_FALSE(parsePointer("00007FFD123456780").has_value());
}

TEST(MonitorRecordStream, ReassemblesRecordsAndRefusesAHugeOne)
{
    const std::string bytes =
        std::string("O\x03\0\0\0abc", 8) + std::string("P\0\x01\0\0", 5) + std::string(256, 'x');
    RecordStream stream;
    Record record;
    for (char byte : bytes) stream.append(&byte, 1);  // as slowly as a connection may deliver
    ASSERT_TRUE(stream.next(&record));
    EXPECT_EQ(record.kind, 'O');
    EXPECT_EQ(record.payload, "abc");
    ASSERT_TRUE(stream.next(&record));
    EXPECT_EQ(record.kind, 'P');
    EXPECT_EQ(record.payload, std::string(256, 'x'));
    EXPECT_FALSE(stream.next(&record));
    EXPECT_FALSE(stream.pending());

    stream.append("B\xff\xff\xff\x7f", 5);
    EXPECT_FALSE(stream.next(&record));
    EXPECT_TRUE(stream.broken());
}

TEST(MonitorOutputLines, MakeOneLinePerLineAndShowControlCharactersEscaped)
{
    const struct {
        std::string bytes;
        std::vector<std::string> lines;
    } kCases[] = {
        {"out1\n", {"stdout: out1"}},
        {"no newline", {"stdout: no newline"}},
        {"two\nlines\n", {"stdout: two", "stdout: lines"}},
        {"\n", {"stdout: "}},
        {"empty line after\n\n", {"stdout: empty line after", "stdout: "}},
        {std::string("nul\0del\x7f\ttab cr\r\n", 17), {"stdout: nul\\x00del\\x7F\ttab cr\\x0D"}},
        {"caf\xc3\xa9 \xff", {"stdout: caf\xc3\xa9 \xff"}},
    };
    for (const auto &test : kCases) EXPECT_EQ(outputLines("stdout", test.bytes), test.lines) << test.bytes;
}

// An entry with room for two frames, as the library lays one out.
struct TestEntry {
    ResourceEntry header;
    ResourceFrame frames[2];
};

class MonitorResourceTally : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (TestEntry *entry : {&first, &second, &third}) {
            entry->header.guard = tollan::debugger::kResourceGuard;
            entry->header.self = &entry->header;
            entry->header.size = sizeof(TestEntry);
            entry->header.typeName = "Files";
            entry->header.fileName = "probe.c";
        }
        third.header.id = 3;
        third.header.description = "third";
        third.header.position = packPosition(7, 3);
        third.header.frameCount = 2;
        third.frames[0] = {"inner.c", packPosition(5, 1), packPosition(9, 2), "open_file"};
        third.frames[1] = {"outer.c", packPosition(1, 1), packPosition(30, 1), "main"};
        first.header.id = 1;
        first.header.description = "first";
        second.header.id = 2;
        second.header.description = "second";
        first.header.next = &second.header;  // one chain of two, one of one
        buckets[0] = &third.header;
        buckets[2] = &first.header;
        table.buckets = buckets;
        table.bucketCount = 4;
        table.entryCount = 3;
    }
    ResourceTally tally() const
    {
        return readResourceTally(ProcessMemory(getpid()), reinterpret_cast<uintptr_t>(&table));
    }

    TestEntry first{}, second{}, third{};
    ResourceEntry *buckets[4] = {};
    tollan::debugger::ResourceTable table{};
};

TEST_F(MonitorResourceTally, ListsEveryEntryOldestFirstWithItsStack)
{
    const std::vector<std::string> lines = describeResourceTally(tally());
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[0], "3 resources still held:");
    EXPECT_EQ(lines[1], "  #1 Files \"first\" acquired at probe.c:0.0 by thread 0");
    EXPECT_EQ(lines[2], "  #2 Files \"second\" acquired at probe.c:0.0 by thread 0");
    EXPECT_EQ(lines[3], "  #3 Files \"third\" acquired at probe.c:7.3 by thread 0");
    EXPECT_EQ(lines[4], "      inner.c 5.1-9.2 open_file");
    EXPECT_EQ(lines[5], "      outer.c 1.1-30.1 main");
}

TEST_F(MonitorResourceTally, StopsSafelyOnWhatIsBroken)
{
    // A loop: the walk ends at the table's count.
    second.header.next = &first.header;
    ResourceTally found = tally();
    EXPECT_EQ(found.resources.size(), 3u);
    ASSERT_EQ(found.problems.size(), 1u);
    EXPECT_NE(found.problems[0].find("more entries"), std::string::npos);
    second.header.next = nullptr;

    // A broken guard word ends its chain; the other chain is still read.
    first.header.guard = 0;
    found = tally();
    ASSERT_EQ(found.resources.size(), 1u);
    EXPECT_EQ(found.resources[0].id, 3u);
    EXPECT_NE(found.problems.at(0).find("broken guard word"), std::string::npos);
    first.header.guard = tollan::debugger::kResourceGuard;

    // More frames than the entry has room for.
    third.header.frameCount = 3;
    EXPECT_NE(tally().problems.at(0).find("claims 3 frames"), std::string::npos);
    third.header.frameCount = 2;

    // Pointers into nowhere, and texts that cannot be read.
    third.header.description = reinterpret_cast<const char *>(16);
    buckets[1] = reinterpret_cast<ResourceEntry *>(32);
    table.entryCount = 4;
    found = tally();
    EXPECT_EQ(found.resources.size(), 3u);
    EXPECT_EQ(found.resources[2].description, "<unreadable 0x10>");
    EXPECT_NE(found.problems.at(0).find("the entry at 0x20 cannot be read"), std::string::npos);
    table.buckets = reinterpret_cast<ResourceEntry **>(8);
    EXPECT_NE(tally().problems.at(0).find("the bucket array at 0x8 cannot be read"), std::string::npos);
    table.bucketCount = kMaxBuckets + 1;
    EXPECT_NE(tally().problems.at(0).find("claims 4 entries"), std::string::npos);
    EXPECT_NE(readResourceTally(ProcessMemory(getpid()), 0).problems.at(0).find("cannot be read"),
              std::string::npos);
}

TEST(MonitorBreakReport, ShowsTheFrameChainAndCutsALoop)
{
    auto record = std::make_unique<ZORThreadEnv>();
    ZORFunctionFrame inner{};
    ZORFunctionFrame outer{};
    inner.functionName = "inner";
    inner.savedFileName = "outer.c";
    inner.savedLine = 30;
    inner.savedColumn = 4;
    inner.savedFrame = &outer;
    outer.functionName = "outer";
    outer.savedFrame = &inner;  // a chain that loops
    record->location.fileName = "inner.c";
    record->location.line = 5;
    record->location.column = 2;
    record->location.frame = &inner;
    const ProcessMemory memory(getpid());
    BreakReport report = describeBreak(memory, 7, reinterpret_cast<uintptr_t>(record.get()));
    EXPECT_EQ(report.lines, (std::vector<std::string>{
                                "thread 7 stopped at inner.c:5.2", "  #0 inner at inner.c:5.2",
                                "  #1 outer at outer.c:30.4", "  #2 ... (the chain goes on or loops)"}));

    record->breakReason = 9;
    record->location.frame = reinterpret_cast<ZORFunctionFrame *>(64);
    report = describeBreak(memory, 7, reinterpret_cast<uintptr_t>(record.get()));
    EXPECT_EQ(report.reason, 9);
    EXPECT_EQ(report.lines, (std::vector<std::string>{"thread 7 stopped at inner.c:5.2 (break reason 9)",
                                                      "  #0 <frame at 0x40 cannot be read>"}));
    EXPECT_EQ(describeBreak(memory, 7, 24).lines.at(0),
              "thread 7 stopped (its record at 0x18 cannot be read)");
}

}  // namespace
