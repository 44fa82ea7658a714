// The type nodes built at start-up.
#include <gtest/gtest.h>

#include <tollan/rtcheck.h>

#include "rtcheck/library.h"
#include "rtcheck/strings.h"

namespace {

struct BasicRow {
    Tynode *const *node;
    const char *name;
    uint64_t size;
    int32_t op;
    uint8_t align;
    bool marked;
};

const BasicRow kBasicRows[] = {
    {&chartype, "char", 1, 3, 1, false},
    {&doubletype, "double", 8, 2, 8, true},
    {&floattype, "float", 4, 1, 4, true},
    {&inttype, "int", 4, 5, 4, false},
    {&int64type, "__int64", 8, 112, 8, false},
    {&longdouble, "long double", 8, 2, 8, true},
    {&longtype, "long", 4, 5, 4, false},
    {&shorttype, "short", 2, 4, 2, false},
    {&signedchar, "signed char", 1, 3, 1, false},
    {&unsignedchar, "unsigned char", 1, 3, 1, false},
    {&unsignedlong, "unsigned long", 4, 6, 4, false},
    {&unsignedint64, "unsigned __int64", 8, 113, 8, false},
    {&unsignedshort, "unsigned short", 2, 4, 2, false},
    {&unsignedtype, "unsigned int", 4, 6, 4, false},
    {&voidtype, "void", 0, 8, 0, false},
};

TEST(BasicTypes, EveryRowHasItsShapeAndAnInternedName)
{
    for (const BasicRow &row : kBasicRows) {
        SCOPED_TRACE(row.name);
        const Tynode *node = *row.node;
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->op, row.op);
        EXPECT_EQ(node->size, row.size);
        EXPECT_EQ(node->align, row.align);
        EXPECT_EQ(node->type, nullptr);
        ASSERT_NE(node->sym, nullptr);
        EXPECT_EQ(node->sym->name, tollan::rtcheck::string(row.name));
        EXPECT_EQ(node->sym->type, node);
        EXPECT_EQ(node->sym->flags & TY_SYMBOL_KIND_MASK, TY_SYMBOL_KIND_TYPE);
        EXPECT_EQ((node->sym->flags & TY_SYMBOL_MARK) != 0, row.marked);
    }
}

TEST(BasicTypes, PointersShareTheMetrics)
{
    EXPECT_EQ(ptrmetric.size, 8u);
    EXPECT_EQ(ptrmetric.align, 8u);
    EXPECT_EQ(ptrmetric.mark, 0u);
    ASSERT_NE(ptrmetric.sym, nullptr);
    EXPECT_STREQ(ptrmetric.sym->name, "T*");
    ASSERT_NE(chararraysym, nullptr);
    EXPECT_STREQ(chararraysym->name, "char[]");
    EXPECT_NE(chararraysym->flags & TY_SYMBOL_MARK, 0u);

    const std::pair<Tynode *, Tynode *> pointers[] = {
        {voidptype, voidtype},
        {charptype, chartype},
        {doubleptype, doubletype},
        {floatptype, floattype},
        {intptype, inttype},
        {int64ptype, int64type},
        {shortptype, shorttype},
        {unsignedcharptype, unsignedchar},
        {unsignedshortptype, unsignedshort},
        {unsignedptype, unsignedtype},
        {unsignedint64ptype, unsignedint64},
        {voidpptype, voidptype},
        {charptrarray2ptype, charptrarray2type},
        {charpptype, charptype},
    };
    for (const auto &[pointer, pointee] : pointers) {
        ASSERT_NE(pointer, nullptr);
        EXPECT_EQ(pointer->op, LCC_POINTER);
        EXPECT_EQ(pointer->type, pointee);
        EXPECT_EQ(pointer->size, 8u);
        EXPECT_EQ(pointer->align, 8u);
        EXPECT_EQ(pointer->sym, ptrmetric.sym);
    }
}

TEST(BasicTypes, ArraysAndAliases)
{
    EXPECT_EQ(charptrarray2type->op, LCC_ARRAY);
    EXPECT_EQ(charptrarray2type->type, charptype);
    EXPECT_EQ(charptrarray2type->size, 16u);
    EXPECT_EQ(voidptrarray3type->type, voidptype);
    EXPECT_EQ(voidptrarray3type->size, 24u);
    EXPECT_EQ(voidptrarray3type->align, 8u);
    EXPECT_EQ(voidptrarray3type->sym, voidptype->sym);
    EXPECT_EQ(sizetype, unsignedint64);
    EXPECT_EQ(uintptrtype, unsignedint64);
    EXPECT_EQ(ptrdifftype, int64type);
    EXPECT_EQ(intptrtype, int64type);
}

TEST(BasicTypes, ASecondStartFindsThemBuilt)
{
    Tynode *before = inttype;
    EXPECT_TRUE(tollan::rtcheck::InitRTEBasicTypes());
    EXPECT_EQ(inttype, before);
}

}  // namespace
