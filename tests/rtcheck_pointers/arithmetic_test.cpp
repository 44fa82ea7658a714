// Pointer arithmetic and array indexing: each message with a near miss, the
// scalar entries of every group, and the shadow moving with the data.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <tollan/rtcheck.h>

#include "rtcheck_pointers/pointer_fixture.h"

namespace {

using pointertest::entry;
using pointertest::kCol;
using pointertest::kLine;
using pointertest::nonFatal;

class Arithmetic : public pointertest::PointerTest {
protected:
    alignas(8) unsigned char data_[16] = {};
    BlkInfo block_{reinterpret_cast<uintptr_t>(data_), sizeof data_};
    PtrInfo shadow_[8] = {};
};

TEST_F(Arithmetic, EachMessageAndItsNearMiss)
{
    BlkInfo freed{block_.base, 0};
    BlkInfo unchecked{block_.base, sizeof data_ | ZOR_BLK_UNCHECKED};
    BlkInfo staticFree{block_.base, sizeof data_};
    _PtrSetStaticFreeBlkInfo(&staticFree);
    Tynode *int4 = types_.array(inttype, 4);
    Tynode *int1 = types_.array(inttype, 1);
    Tynode *int0 = types_.array(inttype, 0);
    PtrInfo *own = &shadow_[0];
    const void *at = data_;
    constexpr int kSame = -1;  // the result is the information passed
    const struct {
        const char *what;
        Tynode *type;
        const void *value;
        int64_t delta;
        PtrInfo *info;
        const BlkInfo *blk;
        std::string text;
        int result;  // an entry, or kSame
    } rows[] = {
        {"uninitialized", intptype, at, 4, entry(45), &block_,
         "Pointer arithmetic involving uninitialized pointer.", 45},
        {"invalid", intptype, at, 4, entry(46), &block_, "Pointer arithmetic involving invalid pointer.", 46},
        {"unchecked, even null", intptype, nullptr, 4000, entry(48), nullptr, "", 48},
        {"null entry", intptype, at, 4, entry(47), nullptr, "Pointer arithmetic involving null pointer.", 46},
        {"null value", intptype, nullptr, 4, own, &block_, "Pointer arithmetic involving null pointer.", 46},
        {"freed, never out of bounds", intptype, at, 400, own, &freed,
         "Pointer arithmetic involving pointer to freed memory.", kSame},
        {"one past the end", intptype, at, 16, own, &block_, "", kSame},
        {"two past the end", intptype, at, 17, own, &block_,
         "Out-of-bounds pointer arithmetic: 2 bytes (1 elements) past end of array.", kSame},
        {"back to the start", intptype, data_ + 8, -8, own, &block_, "", kSame},
        {"before the start", intptype, at, -8, own, &block_,
         "Out-of-bounds pointer arithmetic: 8 bytes (2 elements) before start of array.", kSame},
        {"unchecked block", intptype, at, 400, own, &unchecked, "", kSame},
        {"unchecked block, bounds enforced", intptype, at, 20, entry(44), &unchecked,
         "Out-of-bounds pointer arithmetic: 5 bytes (2 elements) past end of array.", 44},
        {"freed static storage", intptype, at, 400, own, &staticFree, "", kSame},
        {"function, no move", intptype, at, 0, entry(43), nullptr, "", 43},
        {"function", intptype, at, 4, entry(43), nullptr,
         "Pointer arithmetic involving pointer to a function.", 46},
        {"index one past the end", int4, at, 16, own, nullptr, "", kSame},
        {"index too large", int4, at, 20, own, nullptr, "Array index (5) too large (maximum: 3).", kSame},
        {"negative index", int4, at, -4, own, nullptr, "Negative array index (-1).", kSame},
        {"one-element array within its block", int1, at, 12, own, &block_, "", kSame},
        {"one-element array past its block", int1, at, 16, own, &block_,
         "Array index (4) too large (maximum: 3).", kSame},
        {"one-element array without a block", int1, at, 8, own, nullptr,
         "Array index (2) too large (maximum: 0).", kSame},
        {"array without a size or a block", int0, at, 8, own, nullptr,
         "Dereference of a 12 byte object where only 0 bytes exist.", kSame},
    };
    for (const auto &row : rows) {
        PtrInfo *result = nullptr;
        EXPECT_EQ(reportsOf([&] {
                      result = _PtrChkArith(row.type, row.value, row.delta, row.info, row.blk, kLine, kCol);
                  }),
                  nonFatal(row.text))
            << row.what;
        PtrInfo *expected =
            row.result == kSame ? row.info : _UPLookupBasicPtrInfo(nullptr, 0) + (row.result - 48);
        EXPECT_EQ(result, expected) << row.what;
    }
    _PtrSetStaticFreeBlkInfo(nullptr);
}

// Every scalar group: a pointer at each offset may move to any offset of its
// object, one past the end included, and one byte further is reported.
TEST_F(Arithmetic, ScalarEntriesOfEveryGroup)
{
    const struct {
        int first;
        int size;
    } groups[] = {{0, 1},  {2, 1},  {4, 2},  {7, 2},  {10, 4}, {15, 4},
                  {20, 4}, {25, 8}, {34, 8}, {55, 8}, {64, 8}};
    PtrInfo *table = _UPLookupBasicPtrInfo(nullptr, 0) - 48;
    for (const auto &group : groups) {
        for (int offset = 0; offset <= group.size; ++offset) {
            const int index = group.first + offset;
            const std::string where = "entry " + std::to_string(index);
            EXPECT_EQ(_PtrChkArith(charptype, data_, group.size - offset, entry(index), nullptr, kLine, kCol),
                      &table[group.first + group.size])
                << where;
            EXPECT_EQ(_PtrChkArith(charptype, data_, -offset, &table[index], nullptr, kLine, kCol),
                      &table[group.first])
                << where;
            EXPECT_EQ(reportsOf([&] {
                          _PtrChkArith(charptype, data_, group.size - offset + 1, entry(index), nullptr,
                                       kLine, kCol);
                      }),
                      nonFatal("Out-of-bounds pointer arithmetic: 2 bytes (2 elements) past end of array."))
                << where;
            EXPECT_EQ(
                reportsOf(
                    [&] { _PtrChkArith(intptype, data_, -offset - 1, entry(index), nullptr, kLine, kCol); }),
                nonFatal("Out-of-bounds pointer arithmetic: 1 bytes (1 elements) before start of array."))
                << where;
        }
    }
}

TEST_F(Arithmetic, TheShadowMovesWithTheData)
{
    Tynode *intp = types_.pointer(inttype);
    Tynode *pairOfPointers = types_.array(intp, 2);
    const struct {
        const char *what;
        Tynode *type;
        int64_t delta;
        ptrdiff_t records;  // how far the result lies from the start, in 8-byte words
    } rows[] = {
        {"pointers", types_.pointer(intp), 16, 2 * 3},
        {"pointers, backwards", types_.pointer(intp), -8, -3},
        {"arrays of pointers share one header", types_.pointer(pairOfPointers), 16, 6},
        {"elements without pointers", intptype, 8, 0},
        {"part of an element", types_.pointer(intp), 12, 3},
    };
    for (const auto &row : rows) {
        PtrInfo *from = &shadow_[2];
        PtrInfo *result = _PtrChkArith(row.type, data_ + 8, row.delta, from, nullptr, kLine, kCol);
        EXPECT_EQ((reinterpret_cast<intptr_t>(result) - reinterpret_cast<intptr_t>(from)) / 8, row.records)
            << row.what;
    }
}

}  // namespace
