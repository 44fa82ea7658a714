// Shadows of structs and arrays: set-up, copy, assignment, comparison,
// marking, the member walkers, casts, and the scalar entries by type.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <tollan/rtcheck.h>

#include "fixtures/log_capture.h"
#include "rtcheck_pointers/pointer_fixture.h"

namespace {

using pointertest::entry;
using pointertest::kCol;
using pointertest::kLine;
using pointertest::nonFatal;

uintptr_t word(const void *address)
{
    return reinterpret_cast<uintptr_t>(address);
}

// struct S { int *p; int a[2]; char *q[2]; struct { int *r; } in; int flex[]; }
// Data offsets 0, 8, 16, 32, 40; shadow offsets 16, 40, 56, 120, 160; 176 bytes.
class Shadow : public pointertest::PointerTest {
protected:
    Shadow()
    {
        Tynode *intp = types_.pointer(inttype);
        inner_ = types_.tag(LCC_STRUCT, "in", 8);
        types_.field(inner_, "r", intp, 0);
        record_ = types_.tag(LCC_STRUCT, "S", 40);
        types_.field(record_, "p", intp, 0);
        types_.field(record_, "a", types_.array(inttype, 2), 8);
        types_.field(record_, "q", types_.array(charptype, 2), 16);
        types_.field(record_, "in", inner_, 32);
        types_.field(record_, "flex", types_.array(inttype, 0), 40);
    }
    const TyField *member(const char *name) const
    {
        for (const TyField *field = record_->sym->fields; field != nullptr; field = field->link)
            if (std::strcmp(field->name, name) == 0) return field;
        return nullptr;
    }
    PtrInfo *recordAt(PtrInfo *shadow, size_t offset)
    {
        return reinterpret_cast<PtrInfo *>(reinterpret_cast<unsigned char *>(shadow) + offset);
    }
    BlkInfo *headerAt(PtrInfo *shadow, size_t offset)
    {
        return reinterpret_cast<BlkInfo *>(recordAt(shadow, offset));
    }

    Tynode *inner_;
    Tynode *record_;
    PtrInfo *table_ = _UPLookupBasicPtrInfo(nullptr, 0) - 48;
    PtrInfo a_[8] = {};
    PtrInfo b_[8] = {};
};

TEST_F(Shadow, SetUpMakesEveryPointerUninitializedAndEveryHeaderABlock)
{
    ASSERT_EQ(PtrSizeOf(record_), sizeof a_ - 16);
    alignas(8) unsigned char object[48] = {};
    BlkInfo blk{};
    _InitBlkInfo(nullptr, record_, object, &blk);
    EXPECT_EQ(blk.base, word(object));
    EXPECT_EQ(blk.size, 40u);
    _InitPtrInfo(nullptr, record_, a_, &blk);
    for (size_t offset : {16, 56 + 16, 56 + 40, 120 + 16})
        EXPECT_EQ(recordAt(a_, offset)->info, word(&table_[45])) << offset;
    const struct {
        size_t shadow;
        uint64_t base;
        uint64_t size;
    } headers[] = {{0, 0, 40}, {40, 8, 8}, {56, 16, 16}, {120, 32, 8}, {160, 40, ZOR_BLK_UNCHECKED}};
    for (const auto &header : headers) {
        EXPECT_EQ(headerAt(a_, header.shadow)->base, word(object) + header.base) << header.shadow;
        EXPECT_EQ(headerAt(a_, header.shadow)->size, header.size) << header.shadow;
    }
    // Without a usable size the block is not checked.
    Tynode *huge = types_.node(LCC_INT, nullptr, ZOR_BLK_UNCHECKED | 4, 4);
    for (const Tynode *type : {static_cast<const Tynode *>(voidtype), static_cast<const Tynode *>(huge),
                               static_cast<const Tynode *>(nullptr)}) {
        _InitBlkInfo(nullptr, type, object, &blk);
        EXPECT_EQ(blk.size, ZOR_BLK_UNCHECKED);
    }
}

TEST_F(Shadow, ATableEntryIsNeverWritten)
{
    tollan::testing::LogCapture log;
    _InitPtrInfo(nullptr, intptype, entry(47), nullptr);
    _InitPtrInfo(nullptr, intptype, &table_[30], nullptr);
    EXPECT_EQ(table_[47].info, 0u);
    EXPECT_EQ(table_[30].info, 0u);
    const std::string text = log.text();
    EXPECT_NE(text.find("Predefined PtrInfo should never change"), std::string::npos) << text;
    EXPECT_NE(text.find("c/up_run"), std::string::npos) << text;
}

TEST_F(Shadow, CopyAssignCompareAndMark)
{
    _InitPtrInfo(nullptr, record_, a_, nullptr);
    _InitPtrInfo(nullptr, record_, b_, nullptr);
    const BlkInfo headerOfB = *headerAt(b_, 56);
    *recordAt(a_, 16) = {word(entry(49)), 0, 1};
    *recordAt(a_, 72) = {word(a_), 2, 3};
    EXPECT_EQ(_ComparePtrInfo(nullptr, record_, a_, b_), 0);

    _CopyPtrInfo(nullptr, record_, b_, a_);
    EXPECT_EQ(_ComparePtrInfo(nullptr, record_, a_, b_), 1);
    EXPECT_EQ(recordAt(b_, 16)->info, word(entry(49)));  // a copy keeps the special entries
    EXPECT_EQ(std::memcmp(headerAt(b_, 56), &headerOfB, sizeof headerOfB), 0);  // and never the headers

    _PtrAssignStruct(nullptr, record_, b_, a_);
    EXPECT_EQ(recordAt(b_, 16)->info, word(&table_[48]));  // an assignment does not
    EXPECT_EQ(recordAt(b_, 72)->blk, 2u);
    EXPECT_EQ(_ComparePtrInfo(nullptr, record_, a_, b_), 0);

    // Only the first 16 bytes: p and a; the rest keeps its records.
    _InitPtrInfo(nullptr, record_, b_, nullptr);
    _StructIncompleteAssign(nullptr, record_, b_, a_, 16);
    EXPECT_EQ(recordAt(b_, 16)->info, word(&table_[48]));
    EXPECT_EQ(recordAt(b_, 72)->info, word(&table_[45]));
    _StructIncompleteAssign(nullptr, record_, b_, a_, 20);  // q[0] cut in two
    EXPECT_EQ(recordAt(b_, 72)->info, word(&table_[46]));

    _PtrInvalidStruct(nullptr, record_, a_);
    EXPECT_EQ(recordAt(a_, 72)->info, word(&table_[46]));
    EXPECT_EQ(recordAt(a_, 72)->value, 3u);
    _PtrIgnoreStruct(nullptr, record_, a_);
    EXPECT_EQ(recordAt(a_, 136)->info, word(&table_[48]));
    _CopyPtrInfo(nullptr, record_, a_, entry(45));  // an entry stands for every pointer
    EXPECT_EQ(recordAt(a_, 96)->info, word(&table_[45]));
    EXPECT_EQ(_ComparePtrInfo(nullptr, record_, entry(45), entry(45)), 1);
    EXPECT_EQ(_ComparePtrInfo(nullptr, record_, entry(45), a_), 0);
}

TEST_F(Shadow, MemberWalkers)
{
    const struct {
        const char *name;
        size_t shadow;
        bool header;
    } rows[] = {{"p", 16, false}, {"a", 40, true}, {"q", 56, true}, {"in", 120, true}, {"flex", 160, true}};
    for (const auto &row : rows) {
        EXPECT_EQ(_PtrStructMemInfoPtr(record_, a_, member(row.name)), recordAt(a_, row.shadow)) << row.name;
        EXPECT_EQ(_PtrStructMemSizePtr(record_, nullptr, a_, nullptr, member(row.name), kLine, kCol),
                  row.header ? headerAt(a_, row.shadow) : nullptr)
            << row.name;
    }
    EXPECT_EQ(_PtrStructMemInfoPtr(record_, a_, inner_->sym->fields), &table_[46]);  // not a member of S
    EXPECT_EQ(_PtrStructMemInfoPtr(record_, entry(47), member("q")), &table_[47]);
    EXPECT_EQ(_PtrStructMemInfoPtr(record_, entry(12), member("q")), &table_[48]);

    // A struct laid over a 36-byte block: `in` ends at 40.
    alignas(8) unsigned char data[48] = {};
    const BlkInfo block{word(data), 36};
    EXPECT_EQ(reportsOf([&] { _PtrStructMemSizePtr(record_, data, a_, &block, member("q"), kLine, kCol); }),
              "");
    EXPECT_EQ(reportsOf([&] {
                  EXPECT_EQ(_PtrStructMemSizePtr(record_, data, a_, &block, member("in"), kLine, kCol),
                            nullptr);
              }),
              nonFatal("No room in structure for member 'in'."));
}

TEST_F(Shadow, CastsNeedRoomForOneObject)
{
    alignas(8) unsigned char data[8] = {};
    const BlkInfo six{word(data), 6};
    PtrInfo *own = &a_[0];
    // struct F { int n; char c; char tail[]; }: 8 bytes, of which 5 are fixed.
    Tynode *withFlex = types_.tag(LCC_STRUCT, "F", 8);
    types_.field(withFlex, "n", inttype, 0);
    types_.field(withFlex, "c", chartype, 4);
    types_.field(withFlex, "tail", types_.array(chartype, 0), 5);
    Tynode *toFlex = types_.pointer(withFlex);
    Tynode *toIntPointer = types_.pointer(intptype);
    const std::string noRoomForInt = "Not enough space for casting expression to 'pointer to int'.";
    const struct {
        const char *what;
        PtrInfo *(*cast)(const Tynode *, const void *, PtrInfo *, const BlkInfo *, int32_t, int32_t);
        const Tynode *type;
        const void *value;
        PtrInfo *info;
        const BlkInfo *blk;
        std::string text;
        PtrInfo *result;
    } rows[] = {
        {"room for an int", _PtrCast, intptype, data + 2, own, &six, "", own},
        {"no room for an int", _PtrCast, intptype, data + 4, own, &six, noRoomForInt, &table_[46]},
        {"one past the end points at nothing", _PtrCast, intptype, data + 6, own, &six, "", own},
        {"scalar: char to int", _PtrCastToScalar, intptype, data, entry(0), nullptr, noRoomForInt,
         &table_[46]},
        {"scalar: int to char", _PtrCastToScalar, charptype, data, entry(10), nullptr, "", &table_[10]},
        {"scalar one past the end", _PtrCastToScalar, intptype, data, entry(1), nullptr, "", &table_[1]},
        {"a scalar has no pointer records", _PtrCast, toIntPointer, data, entry(25), nullptr, "",
         &table_[48]},
        {"struct: fixed part only", _PtrCastStructBlk, toFlex, data, own, &six, "", own},
        {"struct: all of it", _PtrCast, toFlex, data, own, &six,
         "Not enough space for casting expression to 'pointer to struct F'.", &table_[46]},
        {"unchecked", _PtrCast, intptype, data + 5, entry(48), &six, "", &table_[48]},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(reportsOf([&] {
                      EXPECT_EQ(row.cast(row.type, row.value, row.info, row.blk, kLine, kCol), row.result)
                          << row.what;
                  }),
                  nonFatal(row.text))
            << row.what;
    }
}

TEST_F(Shadow, ScalarEntriesByType)
{
    const struct {
        const Tynode *type;
        int first;
    } rows[] = {{chartype, 0},       {unsignedchar, 2},  {shorttype, 4},  {unsignedshort, 7},
                {inttype, 10},       {unsignedtype, 15}, {floattype, 20}, {int64type, 25},
                {unsignedint64, 34}, {doubletype, 55}};
    for (const auto &row : rows) {
        for (uint64_t offset = 0; offset <= row.type->size; ++offset)
            EXPECT_EQ(_UPLookupBasicPtrInfo(row.type, offset), &table_[row.first + offset]) << row.first;
        EXPECT_EQ(_UPLookupBasicPtrInfo(row.type, row.type->size + 1), &table_[48]) << row.first;
    }
    EXPECT_EQ(_UPLookupBasicPtrInfo(intptype, 0), &table_[48]);
}

}  // namespace
