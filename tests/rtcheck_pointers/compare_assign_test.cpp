// Comparison, subtraction and assignment of pointers: every rule in the
// order the checks apply them, with the asymmetry of the two pairs on an
// unchecked block.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <tollan/rtcheck.h>

#include "rtcheck_pointers/pointer_fixture.h"

namespace {

using pointertest::blockEntry;
using pointertest::entry;
using pointertest::kCol;
using pointertest::kLine;
using pointertest::nonFatal;
using pointertest::offsetFrom;

class Pairs : public pointertest::PointerTest {
protected:
    alignas(8) unsigned char data_[16] = {};
    PtrInfo own_[2] = {};
    BlkInfo live_{reinterpret_cast<uintptr_t>(data_), 16};
    BlkInfo other_{reinterpret_cast<uintptr_t>(data_), 16};
    BlkInfo freed_{reinterpret_cast<uintptr_t>(data_), 0};
    BlkInfo unchecked_{reinterpret_cast<uintptr_t>(data_), 16 | ZOR_BLK_UNCHECKED};
    BlkInfo uncheckedFreed_{reinterpret_cast<uintptr_t>(data_), ZOR_BLK_UNCHECKED};
};

TEST_F(Pairs, ComparisonAndSubtractionInTheOrderOfTheirRules)
{
    PtrInfo *own = &own_[0];
    const struct {
        const char *what;
        PtrInfo *info1;
        const BlkInfo *blk1;
        PtrInfo *info2;
        const BlkInfo *blk2;
        std::string compared;
        std::string subtracted;
    } rows[] = {
        {"unchecked wins over uninitialized", entry(45), nullptr, entry(48), nullptr, "", ""},
        {"uninitialized over invalid", entry(46), &live_, entry(45), &live_,
         "Comparison involving uninitialized pointer.", "Subtraction involving uninitialized pointer."},
        {"invalid over null", entry(47), &live_, entry(46), &live_, "Comparison involving invalid pointer.",
         "Subtraction involving invalid pointer."},
        {"null over the blocks", own, &live_, entry(47), &other_, "Comparison involving null pointer.",
         "Subtraction involving null pointer."},
        {"a block missing", own, &live_, own, nullptr,
         "Pointer comparison involving address of nonarray object.",
         "Pointer subtraction involving address of nonarray object."},
        {"a table entry is no block", own, blockEntry(3), own, &live_,
         "Pointer comparison involving address of nonarray object.",
         "Pointer subtraction involving address of nonarray object."},
        {"different blocks", own, &live_, own, &other_, "Comparison of pointers to different objects.",
         "Subtraction of pointers to different objects."},
        {"one freed block", own, &freed_, own, &freed_, "Comparison of pointers to freed memory.",
         "Subtraction of pointers to freed memory."},
        {"one live block", own, &live_, &own_[1], &live_, "", ""},
        {"one unchecked block", own, &unchecked_, own, &unchecked_, "",
         "Subtraction of pointers to different objects."},
        {"one unchecked freed block", own, &uncheckedFreed_, own, &uncheckedFreed_,
         "Comparison of pointers to freed memory.", "Subtraction of pointers to different objects."},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(reportsOf([&] { _PtrChkCompare(row.info1, row.blk1, row.info2, row.blk2, kLine, kCol); }),
                  nonFatal(row.compared))
            << row.what;
        EXPECT_EQ(reportsOf([&] { _PtrChkSubtract(row.info1, row.blk1, row.info2, row.blk2, kLine, kCol); }),
                  nonFatal(row.subtracted))
            << row.what;
    }
}

// A warning's line (severity 1 is written as NON-FATAL).
TEST_F(Pairs, AssignmentStoresFirstAndChecksAfter)
{
    BlkInfo staticFree{live_.base, 16};
    _PtrSetStaticFreeBlkInfo(&staticFree);
    PtrInfo *own = &own_[1];
    PtrInfo *table = _UPLookupBasicPtrInfo(nullptr, 0) - 48;
    const unsigned char *at = data_;
    const struct {
        const char *what;
        const void *value;
        PtrInfo *info;
        const BlkInfo *blk;
        std::string text;
        PtrInfo *stored;
    } rows[] = {
        {"uninitialized", at, entry(45), &live_, "Assignment of uninitialized pointer value.", &table[45]},
        {"invalid", at, &table[46], &live_, "Assignment of invalid pointer value.", &table[46]},
        {"null", nullptr, entry(47), nullptr, "", &table[47]},
        {"unchecked", offsetFrom(at, 100), entry(48), &live_, "", &table[48]},
        {"special entries become unchecked", offsetFrom(at, 100), entry(49), &live_, "", &table[48]},
        {"and the other one", offsetFrom(at, 100), entry(50), &live_, "", &table[48]},
        {"null value", nullptr, own, &freed_, "", own},
        {"no block", offsetFrom(at, 100), own, nullptr, "", own},
        {"a table entry as block", offsetFrom(at, 100), own, blockEntry(2), "", own},
        {"unchecked block", offsetFrom(at, 100), own, &unchecked_, "", own},
        {"unchecked block, bounds enforced", offsetFrom(at, 18), entry(44), &unchecked_,
         "Assignment of out-of-bounds pointer: 3 bytes past end of array.", &table[44]},
        {"freed static storage", offsetFrom(at, 100), own, &staticFree, "", own},
        {"freed", at, own, &freed_, "Assignment of pointer to freed memory.", own},
        {"one past the end", at + 16, own, &live_, "", own},
        {"two past the end", offsetFrom(at, 17), own, &live_,
         "Assignment of out-of-bounds pointer: 2 bytes past end of array.", own},
        {"before the start", offsetFrom(at, -3), own, &live_,
         "Assignment of out-of-bounds pointer: 3 bytes before start of array.", own},
    };
    for (const auto &row : rows) {
        PtrInfo dest{1, 2, 3};
        EXPECT_EQ(reportsOf([&] {
                      EXPECT_EQ(_PtrChkAssign(row.value, &dest, row.info, row.blk, kLine, kCol), row.stored);
                  }),
                  nonFatal(row.text))
            << row.what;
        EXPECT_EQ(dest.info, reinterpret_cast<uintptr_t>(row.stored)) << row.what;
        EXPECT_EQ(dest.blk, reinterpret_cast<uintptr_t>(row.blk)) << row.what;
        EXPECT_EQ(dest.value, reinterpret_cast<uintptr_t>(row.value)) << row.what;
    }
    _PtrSetStaticFreeBlkInfo(nullptr);
}

TEST_F(Pairs, StoredPointersReadBack)
{
    PtrInfo *table = _UPLookupBasicPtrInfo(nullptr, 0) - 48;
    PtrInfo stored{};
    _PtrChkAssign(data_, &stored, own_, &live_, kLine, kCol);
    EXPECT_EQ(_PtrRValue(&stored, data_), own_);
    EXPECT_EQ(_PtrBlkRValue(&stored, data_), &live_);
    // Changed behind the record's back: nothing is known.
    EXPECT_EQ(_PtrRValue(&stored, data_ + 1), &table[48]);
    EXPECT_EQ(_PtrBlkRValue(&stored, data_ + 1), nullptr);
    // An uninitialised pointer holds whatever it holds.
    PtrInfo never{reinterpret_cast<uintptr_t>(&table[45]), 0, 0};
    EXPECT_EQ(_PtrRValue(&never, data_), &table[45]);

    PtrInfo copy{};
    _PtrAssignPtr(&copy, &stored);
    EXPECT_EQ(copy.info, stored.info);
    EXPECT_EQ(copy.blk, stored.blk);
    EXPECT_EQ(copy.value, stored.value);
    _PtrAssignPtr(&copy, entry(49));
    EXPECT_EQ(copy.info, reinterpret_cast<uintptr_t>(&table[48]));
    _PtrAssignPtr(entry(47), &stored);  // a table entry is never written
    EXPECT_EQ(reportsOf([&] { _PtrChkAssign(data_, entry(10), own_, &live_, kLine, kCol); }), "");
}

}  // namespace
