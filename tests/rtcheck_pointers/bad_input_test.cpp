// Input that compiled code should never pass, and checks below debugging
// level 2: nothing crashes, nothing is read through a refused value, and
// nothing is reported when reports are off.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <tollan/rtcheck.h>

#include "rtcheck_pointers/pointer_fixture.h"

namespace {

using pointertest::kCol;
using pointertest::kLine;
using pointertest::nonFatal;

class BadInput : public pointertest::PointerTest {
protected:
    PtrInfo *table_ = _UPLookupBasicPtrInfo(nullptr, 0) - 48;
    alignas(8) unsigned char data_[16] = {};
    BlkInfo block_{reinterpret_cast<uintptr_t>(data_), 16};
};

// Values 74 to 4095 stand for "no information": they are never read or
// written, and the checks treat them as unchecked (48).
TEST_F(BadInput, ImplausibleRecordsAreNeverTouched)
{
    Tynode *intp = types_.pointer(inttype);
    for (uintptr_t value : {uintptr_t{74}, uintptr_t{1000}, uintptr_t{4095}}) {
        // The values compiled code should never pass, as it might pass them.
        auto *bad = reinterpret_cast<PtrInfo *>(value);       // NOLINT(performance-no-int-to-ptr)
        auto *badBlock = reinterpret_cast<BlkInfo *>(value);  // NOLINT(performance-no-int-to-ptr)
        const std::string where = std::to_string(value);
        EXPECT_EQ(reportsOf([&] {
                      EXPECT_EQ(_PtrChkDeref(inttype, data_, bad, badBlock, kLine, kCol), &table_[48]);
                      EXPECT_EQ(_PtrChkArith(intptype, data_, 400, bad, badBlock, kLine, kCol), &table_[48]);
                      _PtrChkCompare(bad, badBlock, bad, badBlock, kLine, kCol);
                      _PtrChkSubtract(bad, badBlock, bad, badBlock, kLine, kCol);
                      _PtrChkAssign(data_, bad, bad, badBlock, kLine, kCol);
                      _PtrAssignPtr(bad, bad);
                      _InitPtrInfo(nullptr, intp, bad, badBlock);
                      _InitBlkInfo(nullptr, inttype, data_, badBlock);
                      _CopyPtrInfo(nullptr, intp, bad, bad);
                      _PtrIgnoreStruct(nullptr, intp, bad);
                      EXPECT_EQ(_PtrRValue(bad, data_), &table_[48]);
                      EXPECT_EQ(_PtrBlkRValue(bad, data_), nullptr);
                      _PtrCast(intptype, data_, bad, badBlock, kLine, kCol);
                      _ReceivePtrInfo(nullptr, bad, data_, kLine, kCol);
                      _PtrSetRetValLoc(nullptr, bad);
                  }),
                  "")
            << where;
    }
}

TEST_F(BadInput, NullArgumentsEverywhere)
{
    EXPECT_EQ(reportsOf([&] {
                  _PtrChkArith(nullptr, data_, 3, nullptr, nullptr, kLine, kCol);
                  _PtrChkDeref(nullptr, data_, nullptr, nullptr, kLine, kCol);
                  _PtrChkAssign(nullptr, nullptr, nullptr, nullptr, kLine, kCol);
                  _PtrAssignPtr(nullptr, nullptr);
                  _PtrAssignStruct(nullptr, nullptr, nullptr, nullptr);
                  _StructIncompleteAssign(nullptr, nullptr, nullptr, nullptr, 0);
                  _InitPtrInfo(nullptr, nullptr, nullptr, nullptr);
                  _InitBlkInfo(nullptr, nullptr, nullptr, nullptr);
                  _CopyPtrInfo(nullptr, nullptr, nullptr, nullptr);
                  _ComparePtrInfo(nullptr, nullptr, nullptr, nullptr);
                  _PtrIgnoreStruct(nullptr, nullptr, nullptr);
                  _PtrInvalidStruct(nullptr, nullptr, nullptr);
                  _PtrStructMemInfoPtr(nullptr, nullptr, nullptr);
                  _PtrStructMemSizePtr(nullptr, nullptr, nullptr, nullptr, nullptr, kLine, kCol);
                  _PtrCast(nullptr, nullptr, nullptr, nullptr, kLine, kCol);
                  _PtrCastStructBlk(nullptr, nullptr, nullptr, nullptr, kLine, kCol);
                  _PtrCastToScalar(nullptr, nullptr, nullptr, nullptr, kLine, kCol);
                  _PtrRValue(nullptr, nullptr);
                  _PtrBlkRValue(nullptr, nullptr);
                  _PassParamInfo(nullptr, 0, nullptr, nullptr, nullptr);
                  _PassArgCoord(nullptr, 0, 0, 0);
                  _GetParamInfo(nullptr, 0, nullptr, nullptr, kLine, kCol);
                  _ReceiveBlkInfo(nullptr, 0, nullptr, nullptr);
                  _PtrPreCall(nullptr, nullptr);
                  _ReturnPtrInfo(nullptr, nullptr, nullptr, nullptr);
                  _PtrSetRetValLoc(nullptr, nullptr);
                  _PtrGetRetValLoc(nullptr, nullptr, kLine, kCol);
                  _ReceivePtrInfo(nullptr, nullptr, nullptr, kLine, kCol);
                  _PtrPostCall(nullptr);
                  _UPLookupBasicPtrInfo(nullptr, 0);
                  _LocalsRuntimeInit(nullptr, 4);
                  _LocalsRuntimeSet(nullptr, 0);
                  _LocalsRuntimeCheck(nullptr, 0, nullptr, kLine, kCol);
              }),
              "");
}

TEST_F(BadInput, ExtremeSizesAndDeltas)
{
    Tynode *huge = types_.node(LCC_ARRAY, inttype, ZOR_BLK_UNCHECKED | 16, 4);
    BlkInfo unchecked{block_.base, UINT64_MAX};
    const struct {
        const char *what;
        const Tynode *type;
        int64_t delta;
        const BlkInfo *blk;
        std::string text;
    } rows[] = {
        {"largest delta", intptype, INT64_MAX, &block_,
         "Out-of-bounds pointer arithmetic: " + std::to_string(uint64_t{INT64_MAX} - 15) + " bytes (" +
             std::to_string((uint64_t{INT64_MAX} - 16) / 4 + 1) + " elements) past end of array."},
        // Addresses wrap: the smallest delta lands 2^63 bytes on, far past the end.
        {"smallest delta", intptype, INT64_MIN, &block_,
         "Out-of-bounds pointer arithmetic: 9223372036854775793 bytes (2305843009213693949 elements) past "
         "end of "
         "array."},
        {"void steps by bytes", voidptype, 17, &block_,
         "Out-of-bounds pointer arithmetic: 2 bytes (2 elements) past end of array."},
        {"a size with bit 63 is unchecked", intptype, INT64_MAX, &unchecked, ""},
        {"an array size with bit 63", huge, INT64_MIN, nullptr,
         "Negative array index (-2305843009213693952)."},
        {"a scalar moved by the most", intptype, INT64_MIN, nullptr,
         "Out-of-bounds pointer arithmetic: 9223372036854775808 bytes (2305843009213693952 elements) before "
         "start of "
         "array."},
    };
    for (const auto &row : rows) {
        PtrInfo *info =
            row.blk == nullptr && row.type == intptype ? pointertest::entry(10) : &table_[0] + 100;
        EXPECT_EQ(reportsOf([&] { _PtrChkArith(row.type, data_, row.delta, info, row.blk, kLine, kCol); }),
                  nonFatal(row.text))
            << row.what;
    }
}

TEST_F(BadInput, NothingIsReportedBelowLevelTwo)
{
    tollan::testing::DebuggingLevel low(1);
    BlkInfo freed{block_.base, 0};
    Tynode *pair = types_.array(inttype, 2);
    unsigned char marks[1];
    _LocalsRuntimeInit(marks, 1);
    EXPECT_EQ(reportsOf([&] {
                  _PtrChkArith(intptype, nullptr, 4, pointertest::entry(45), nullptr, kLine, kCol);
                  _PtrChkArith(intptype, data_, 40, &table_[0] + 100, &block_, kLine, kCol);
                  _PtrChkArith(pair, data_, 40, &table_[0] + 100, nullptr, kLine, kCol);
                  _PtrChkCompare(&table_[45], nullptr, nullptr, nullptr, kLine, kCol);
                  _PtrChkSubtract(&table_[0] + 100, &block_, &table_[0] + 100, &freed, kLine, kCol);
                  PtrInfo dest{};
                  _PtrChkAssign(data_, &dest, &table_[46], &block_, kLine, kCol);
                  _PtrCast(intptype, data_ + 15, &table_[0] + 100, &block_, kLine, kCol);
                  _LocalsRuntimeCheck(marks, 0, "count", kLine, kCol);
              }),
              "");
}

TEST_F(BadInput, LocalsAreReportedOnceEach)
{
    unsigned char marks[3];
    _LocalsRuntimeInit(marks, 3);
    _LocalsRuntimeSet(marks, 1);
    EXPECT_EQ(reportsOf([&] {
                  _LocalsRuntimeCheck(marks, 0, "count", kLine, kCol);
                  _LocalsRuntimeCheck(marks, 0, "count", kLine, kCol);
                  _LocalsRuntimeCheck(marks, 1, "set", kLine, kCol);
                  _LocalsRuntimeCheck(marks, 2, nullptr, kLine, kCol);
              }),
              nonFatal("Local 'count' was referenced before being initialized.") +
                  nonFatal("A local variable was referenced before being initialized."));
}

}  // namespace
