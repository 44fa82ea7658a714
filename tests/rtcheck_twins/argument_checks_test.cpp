// The argument checks the twins are built from: one case per code, the
// size ceiling, what an argument reaches, the return value's information
// and the forgetting of the hand-over.
#include <cstring>

#include "rtcheck_twins/twin_fixture.h"

namespace {

using tollan::testing::ArgumentInfo;
using tollan::testing::caughtReports;
using tollan::testing::entryOf;
using tollan::testing::HandOver;
using tollan::testing::messageText;
using tollan::testing::TwinTest;
namespace rt = tollan::rtcheck;

// The checks are asked on behalf of this function.
void checkingFunction() {}
const void *const kFrame = entryOf(&checkingFunction);

PtrInfo *entry(int index)
{
    return rt::predefinedEntry(index);
}

using ArgumentChecks = TwinTest;

struct ArgumentCase {
    const char *what;
    uint64_t eltsize, count;
    int32_t message;  // 0: nothing reported
    bool asString;
};

TEST_F(ArgumentChecks, EachCodeIsReportedWithItsMessage)
{
    char bytes[8] = "abc";
    char unterminated[4] = {'a', 'b', 'c', 'd'};
    ArgumentInfo block;
    const ArgumentCase cases[] = {
        {"room enough", 1, 8, 0, false},
        {"string inside", 0, 0, 0, true},
        {"null", 1, 1, 165, false},
        {"null entry", 1, 1, 165, false},
        {"invalid entry", 0, 0, 166, true},
        {"unreadable record", 1, 1, 166, false},
        {"uninitialised", 0, 0, 167, true},
        {"freed", 1, 1, 168, false},
        {"before the start", 1, 1, 169, false},
        {"past the end", 1, 1, 170, false},
        {"one past the end, nothing needed", 1, 0, 0, false},
        {"scalar too small", 4, 2, 171, false},
        {"scalar, validity only", 4, 0, 0, false},
        {"no terminator", 0, 0, 173, true},
        {"one byte short", 1, 9, 189, false},
        {"unchecked block", 1, 1000, 0, false},
    };
    for (const ArgumentCase &c : cases) {
        SCOPED_TRACE(c.what);
        caughtReports().clear();
        const std::string what = c.what;
        const void *ptr = bytes;
        HandOver handOver(kFrame);
        block.describe(bytes, sizeof bytes, bytes);
        handOver.slot(1, block);
        if (what == "null") ptr = nullptr;
        if (what == "null entry") handOver.slot(1, entry(rt::kNullEntry));
        if (what == "invalid entry") handOver.slot(1, entry(rt::kInvalidEntry));
        if (what == "unreadable record") handOver.slot(1, reinterpret_cast<PtrInfo *>(100));
        if (what == "uninitialised") handOver.slot(1, entry(rt::kUninitializedEntry));
        if (what == "freed") block.block.size = 0;
        if (what == "before the start") ptr = bytes - 1;
        if (what == "past the end") ptr = bytes + sizeof bytes + 1;
        if (what == "one past the end, nothing needed") ptr = bytes + sizeof bytes;
        if (what.rfind("scalar", 0) == 0) handOver.slot(1, entry(10));  // offset 0 into 4 bytes
        if (what == "no terminator") {
            ptr = unterminated;
            block.describe(unterminated, sizeof unterminated, unterminated);
        }
        if (what == "unchecked block") block.block.size |= ZOR_BLK_UNCHECKED;
        const int32_t passed = c.asString ? _UPLibChkString(static_cast<const char *>(ptr), 0, 1, kFrame)
                                          : _UPLibChkSize(ptr, c.eltsize, c.count, 0, 1, kFrame);
        EXPECT_EQ(passed, 1);
        if (c.message == 0) {
            EXPECT_TRUE(caughtReports().empty());
            continue;
        }
        ASSERT_EQ(caughtReports().size(), 1u);
        EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_FATAL);
        const std::string expected =
            c.message == 189
                ? "Array argument too small (8 bytes).  Argument must contain at least 9 bytes (9 elements)."
                : messageText(c.message);
        EXPECT_EQ(caughtReports()[0].text, expected);
    }
}

TEST_F(ArgumentChecks, AWideStringNeedsANullWideCharacterNotJustANullByte)
{
    // Every wide character here has zero bytes in it; only the last one is 0.
    const wchar_t text[3] = {L'a', L'b', 0};
    ArgumentInfo block;
    for (const uint64_t characters : {3, 2}) {
        caughtReports().clear();
        block.describe(text, characters * sizeof(wchar_t), text);
        HandOver(entryOf(&_UP_wcslen)).slot(1, block);
        EXPECT_EQ(_UP_wcslen(text), 2u);
    }
    ASSERT_EQ(caughtReports().size(), 1u);
    EXPECT_EQ(caughtReports()[0].text, messageText(173));
}

TEST_F(ArgumentChecks, NullPassesWhereAllowedAndWithoutInformationNothingIsChecked)
{
    ArgumentInfo block;
    block.describe(nullptr, 0, nullptr);
    HandOver(kFrame).slot(1, block);
    _UPLibChkString(nullptr, 1, 1, kFrame);
    _UPLibChkSize(nullptr, 1, 4, 1, 1, kFrame);
    // Slot 2 is not filled, and a call recorded for another function hands
    // nothing to this one.
    _UPLibChkSize(nullptr, 1, 4, 0, 2, kFrame);
    HandOver(entryOf(&_UP_strlen)).slot(1, entry(rt::kUninitializedEntry));
    _UPLibChkString("x", 0, 1, kFrame);
    EXPECT_TRUE(caughtReports().empty());
}

TEST_F(ArgumentChecks, UnreadableRecordsAndNullsAreRefusedWithoutCrashing)
{
    HandOver(kFrame)
        .slot(1, reinterpret_cast<PtrInfo *>(100), reinterpret_cast<BlkInfo *>(200))
        .slot(2, entry(rt::kUncheckedEntry), reinterpret_cast<BlkInfo *>(4095));
    char byte = 0;
    _UPLibChkSize(&byte, 1, 1, 0, 1, kFrame);
    _UPLibChkRefArg(&byte, nullptr, 0, 1, kFrame);
    _UPLibChkRefArg(&byte, reinterpret_cast<const Tynode *>(300), 0, 1, kFrame);
    EXPECT_EQ(_UPLibGetNumBytes(&byte, 1, kFrame), 0u);
    _UPLibReturnArg(1, kFrame);
    _UPLibReturnArg(2, kFrame);
    EXPECT_EQ(rt::parameterArea()->returnValue.info, 0u);
    ASSERT_EQ(caughtReports().size(), 2u);
    EXPECT_EQ(caughtReports()[0].text, messageText(166));
    // Everything null: nothing to look at, nothing reported.
    caughtReports().clear();
    _UPLibChkString(nullptr, 0, 0, nullptr);
    _UPLibChkSize(nullptr, 0, 0, 0, 0, nullptr);
    EXPECT_EQ(_UPLibGetPtrArgType(0, nullptr), nullptr);
    EXPECT_TRUE(caughtReports().empty());
}

TEST_F(ArgumentChecks, AnOverflowingSizeIsCheckedAgainstTheThirtyTwoBitCeiling)
{
    const uint64_t huge = UINT64_C(1) << 40;
    EXPECT_EQ(rt::neededBytes(huge, huge), UINT64_C(4294967295));
    EXPECT_EQ(rt::neededBytes(huge, 2), huge * 2);  // large but exact
    char byte = 0;
    ArgumentInfo block;
    for (const uint64_t size : {UINT64_C(4294967295), UINT64_C(4294967294)}) {
        caughtReports().clear();
        block.describe(&byte, size, &byte);  // bounds only: nothing is read
        HandOver(kFrame).slot(1, block);
        _UPLibChkSize(&byte, huge, huge, 0, 1, kFrame);
        EXPECT_EQ(caughtReports().size(), size == UINT64_C(4294967295) ? 0u : 1u);
    }
    ASSERT_EQ(caughtReports().size(), 1u);
    EXPECT_EQ(caughtReports()[0].text,
              "Array argument too small (4294967294 bytes).  Argument must contain at least "
              "4294967295 bytes (1099511627776 elements).");
}

TEST_F(ArgumentChecks, ReachableBytesAndElements)
{
    int numbers[4] = {};
    ArgumentInfo block;
    block.describe(numbers, sizeof numbers, numbers + 1);
    HandOver handOver(kFrame);
    handOver.slot(1, block).slot(2, entry(12)).slot(3, entry(rt::kInvalidEntry));
    EXPECT_EQ(_UPLibGetNumBytes(numbers + 1, 1, kFrame), 12u);
    EXPECT_EQ(_UPLibGetNumBytes(numbers, 2, kFrame), 2u);  // offset 2 into 4 bytes
    EXPECT_EQ(_UPLibGetNumBytes(numbers, 3, kFrame), 0u);
    EXPECT_EQ(_UPLibGetNumBytes(numbers, 4, kFrame), UINT64_C(0x7FFFFFFFFFFFFFFF));
    EXPECT_EQ(_UPLibGetNumElems(numbers + 1, 1, kFrame), 12u);  // no type: bytes
    if (intptype != nullptr) {
        rt::parameterArea()->slots[0].type = intptype;
        EXPECT_EQ(_UPLibGetPtrArgType(1, kFrame), intptype);
        EXPECT_EQ(_UPLibGetNumElems(numbers + 1, 1, kFrame), 12u / sizeof(int));
    }
    EXPECT_EQ(_UPLibGetPtrArgType(4, kFrame), nullptr);
}

TEST_F(ArgumentChecks, AReturnedArgumentHandsItsInformationOnAndClearingForgetsTheSlots)
{
    char text[8] = "";
    ArgumentInfo block;
    block.describe(text, sizeof text, text);
    HandOver(kFrame).slot(2, block);
    _UPLibReturnArg(2, kFrame);
    rt::ParameterArea &area = *rt::parameterArea();
    EXPECT_EQ(area.returnValue.info, reinterpret_cast<uint64_t>(&block.record));
    EXPECT_EQ(area.returnValue.blk, reinterpret_cast<uint64_t>(&block.block));
    EXPECT_EQ(area.returnValue.value, 0u);  // the result is not known yet
    _UPLibReturnArg(1, kFrame);             // no information: the result carries none
    EXPECT_EQ(area.returnValue.info, 0u);
    _UPLibClearArgs();
    EXPECT_EQ(area.slotCount, 0);
    EXPECT_EQ(area.coordinateCount, 0);
    EXPECT_EQ(area.callee, nullptr);
    EXPECT_EQ(area.previousCallee, kFrame);
    // A twin whose pointer result is no argument hands no information back.
    HandOver(kFrame).slot(2, block);
    _UPLibReturnArg(2, kFrame);
    EXPECT_NE(_UP_strchr("abc", 'b'), nullptr);
    EXPECT_EQ(area.returnValue.info, 0u);
}

TEST_F(ArgumentChecks, BelowLevelTwoNothingIsCheckedOrReported)
{
    tollan::testing::DebuggingLevel levelOne(1);
    EXPECT_EQ(_UPLibIsProtectionAvailable(), 0);
    HandOver(kFrame).slot(1, entry(rt::kUninitializedEntry));
    _UPLibChkString("x", 0, 1, kFrame);
    char target[4];
    HandOver(entryOf(&_UP_strcpy)).slot(1, entry(rt::kNullEntry));
    _UP_strcpy(target, "abc");
    EXPECT_TRUE(caughtReports().empty());
    EXPECT_STREQ(target, "abc");
}

TEST_F(ArgumentChecks, ProtectionIsAvailableFromLevelTwo)
{
    EXPECT_EQ(_UPLibIsProtectionAvailable(), 1);
}

}  // namespace

// The whole round trip as compiled code makes it: the caller hands strcpy's
// target over, and receives the target's information with the result.
TEST_F(ArgumentChecks, ACheckedCallersResultCarriesTheReturnedArgumentsInformation)
{
    char target[16];
    const char source[] = "abc";
    BlkInfo targetBlock{reinterpret_cast<uint64_t>(target), sizeof target};
    BlkInfo sourceBlock{reinterpret_cast<uint64_t>(source), sizeof source};
    PtrInfo targetShadow{};
    PtrInfo sourceShadow{};
    _PtrPreCall(nullptr, reinterpret_cast<const void *>(_UP_strcpy));
    _PassParamInfo(nullptr, 0, charptype, &targetShadow, &targetBlock);
    _PassParamInfo(nullptr, 1, charptype, &sourceShadow, &sourceBlock);
    char *result = _UP_strcpy(target, source);
    _PtrPostCall(nullptr);
    PtrInfo received{};
    EXPECT_EQ(_ReceivePtrInfo(nullptr, &received, result, 30, 4), &targetShadow);
    EXPECT_EQ(received.blk, reinterpret_cast<uint64_t>(&targetBlock));
    EXPECT_EQ(received.value, reinterpret_cast<uint64_t>(target));
    EXPECT_TRUE(caughtReports().empty());
}
