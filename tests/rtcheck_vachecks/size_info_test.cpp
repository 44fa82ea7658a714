// Block information of memory that library functions hand out: what the
// return value and the output arguments carry, and what resizing and
// freeing leave for the caller's pointers.
#include <gtest/gtest.h>

#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck_report/report_fixture.h"
#include "rtcheck_vachecks/recorded_call.h"

namespace {

using namespace tollan::testing;
using tollan::rtcheck::ParameterArea;
using tollan::rtcheck::parameterArea;

int twin()
{
    return 3;
}
const void *const kTwin = reinterpret_cast<const void *>(&twin);

uint64_t address(const void *pointer)
{
    return reinterpret_cast<uintptr_t>(pointer);
}

const BlkInfo &blockOf(const PtrInfo &info)
{
    return *reinterpret_cast<const BlkInfo *>(static_cast<uintptr_t>(info.blk));
}

PtrInfo returned()
{
    return parameterArea()->returnValue;
}

class SizeInfo : public ::testing::Test {
protected:
    DebuggingLevel level_{2};
    ErrorFileCapture errors_{"main.c", 30, 1};
};

TEST_F(SizeInfo, ReturnedBlocksAreResizedInPlaceMovedAndFreed)
{
    alignas(16) static char first[64];
    alignas(16) static char second[128];
    _UPReturnPointerSizeInfo(first, 40);
    const PtrInfo handed = returned();
    EXPECT_EQ(handed.value, address(first));
    EXPECT_EQ(blockOf(handed).base, address(first));
    EXPECT_EQ(blockOf(handed).size, 40u);

    _UPResizePointerSizeInfo(first, first, 64);  // the caller's old pointers see the new size
    EXPECT_EQ(returned().blk, handed.blk);
    EXPECT_EQ(blockOf(handed).size, 64u);

    _UPResizePointerSizeInfo(first, second, 128);  // moved: the old place is freed
    const PtrInfo moved = returned();
    EXPECT_EQ(blockOf(handed).size, 0u);
    EXPECT_EQ(blockOf(moved).base, address(second));
    EXPECT_EQ(blockOf(moved).size, 128u);

    _UPResizePointerSizeInfo(second, nullptr, 512);  // a failed resize keeps the block
    EXPECT_EQ(returned().value, 0u);
    EXPECT_EQ(tollan::rtcheck::predefinedIndex(reinterpret_cast<const void *>(returned().info)),
              tollan::rtcheck::kNullEntry);
    EXPECT_EQ(blockOf(moved).size, 128u);

    _UPLibFreeDynPtrInfo(second);
    EXPECT_EQ(blockOf(moved).size, 0u);
    _UPReturnPointerSizeInfo(second, 16);  // the same address handed out again
    EXPECT_EQ(returned().blk, moved.blk);
    EXPECT_EQ(blockOf(moved).size, 16u);
    EXPECT_EQ(errors_.written(), "");
}

TEST_F(SizeInfo, StringArraysDescribeEachString)
{
    static char one[] = "one", three[] = "three";
    alignas(16) static char *strings[] = {one, nullptr, three, nullptr};
    RecordedCall call(kTwin, {});
    PtrInfo stored{};  // where the caller keeps the pointer's information
    PtrInfo argument{address(&stored), 0, address(&stored)};  // the information of &pointer
    ParameterArea *area = parameterArea();
    area->slots[0] = {&argument, nullptr, nullptr};
    area->slotCount = 1;
    // As after _UPLibClearArgs: the slots stay, the callee becomes the previous one.
    area->previousCallee = area->callee;
    area->callee = nullptr;
    area->slotCount = 0;

    ASSERT_EQ(_UPSetOutputStringArrayInfo(1, kTwin, strings, 3), 1);
    EXPECT_EQ(stored.value, address(strings));
    EXPECT_EQ(blockOf(stored).size, 3 * sizeof(char *));
    const auto *shadow = reinterpret_cast<const PtrInfo *>(static_cast<uintptr_t>(stored.info));
    EXPECT_EQ(blockOf(shadow[0]).size, 4u);
    EXPECT_EQ(blockOf(shadow[2]).size, 6u);
    EXPECT_EQ(shadow[2].value, address(three));
    EXPECT_EQ(shadow[1].blk, 0u);
    EXPECT_EQ(tollan::rtcheck::predefinedIndex(reinterpret_cast<const void *>(shadow[1].info)),
              tollan::rtcheck::kNullEntry);

    _UPResizeStringArrayInfo(strings, strings, -1);  // in place, up to the first null element
    EXPECT_EQ(blockOf(returned()).size, 2 * sizeof(char *));
    EXPECT_EQ(blockOf(shadow[0]).size, 4u);

    const PtrInfo three_ = shadow[2];
    _UPLibFreeStringArrayInfo(strings);
    EXPECT_EQ(blockOf(stored).size, 0u);
    EXPECT_EQ(blockOf(shadow[0]).size, 0u);
    EXPECT_EQ(blockOf(three_).size, 6u);  // no longer in the array when it was freed

    EXPECT_EQ(_UPSetOutputPointerSizeInfo(2, kTwin, one, 4), 0);  // nothing handed over for argument 2
    EXPECT_EQ(_UPSetOutputPointerSizeInfo(1, reinterpret_cast<const void *>(&address), one, 4), 0);
    for (uint64_t refused : {uint64_t{48}, uint64_t{100}, uint64_t{0}}) {  // an entry, implausible, none
        argument.info = refused;
        EXPECT_EQ(_UPSetOutputPointerSizeInfo(1, kTwin, one, 4), 0) << refused;
    }
    area->slots[0].info = reinterpret_cast<PtrInfo *>(uintptr_t{4000});
    EXPECT_EQ(_UPSetOutputPointerSizeInfo(1, kTwin, one, 4), 0);
    area->slots[0].info = &argument;
    argument.info = address(&stored);
    EXPECT_EQ(_UPSetOutputPointerSizeInfo(1, kTwin, one, 4), 1);
    EXPECT_EQ(blockOf(stored).size, 4u);
    EXPECT_EQ(errors_.written(), "");
}

TEST_F(SizeInfo, NothingIsRecordedBelowLevelTwoOrForUnknownAddresses)
{
    alignas(16) static char block[32];
    parameterArea()->returnValue = PtrInfo{};
    {
        DebuggingLevel levelOne(1);
        _UPReturnPointerSizeInfo(block, 32);
        EXPECT_EQ(_UPSetOutputStringArrayInfo(1, kTwin, nullptr, 3), 0);
    }
    EXPECT_EQ(returned().blk, 0u);
    _UPLibFreeDynPtrInfo(block);  // never handed out
    _UPLibFreeStringArrayInfo(nullptr);
    _UPResizeStringArrayInfo(nullptr, nullptr, 5);
    EXPECT_EQ(returned().value, 0u);
    EXPECT_EQ(_UPSetOutputPointerSizeInfo(-1, kTwin, block, 1), 0);
    EXPECT_EQ(errors_.written(), "");
}

}  // namespace
