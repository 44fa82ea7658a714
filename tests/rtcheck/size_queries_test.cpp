// Building nodes in the caller's storage, array sizes and shadow sizes.
#include <gtest/gtest.h>

#include <tollan/rtcheck.h>

#include "fixtures/log_capture.h"
#include "type_builder.h"

namespace {

using rtchecktest::TypeBuilder;

TEST(InitTynode, CopiesTheTemplateThenSizeAndAGivenType)
{
    Tynode templ = *intptype;
    templ.extra[1] = 77;
    Tynode node{};
    _InitTynode(&node, &templ, 12, nullptr);
    EXPECT_EQ(node.op, LCC_POINTER);
    EXPECT_EQ(node.type, inttype);  // kept: no type given
    EXPECT_EQ(node.sym, templ.sym);
    EXPECT_EQ(node.extra[1], 77u);
    EXPECT_EQ(node.size, 12u);
    _InitTynode(&node, &templ, 8, doubletype);
    EXPECT_EQ(node.type, doubletype);

    tollan::testing::LogCapture log;
    _InitTynode(nullptr, &templ, 8, nullptr);
    _InitTynode(&node, nullptr, 99, nullptr);
    EXPECT_EQ(node.size, 8u);
    EXPECT_EQ(log.count("|c/types|_InitTynode|Assertion failed: node && templ"), 2u);
}

TEST(ArrayQueries, SizesElementsAndCounts)
{
    TypeBuilder b;
    Tynode *ints10 = b.array(inttype, 10);
    Tynode *constInts10 = b.qualified(LCC_CONST, ints10);
    EXPECT_EQ(ArraySizeEx(ints10), 40u);
    EXPECT_EQ(ArraySizeEx(constInts10), 40u);
    EXPECT_EQ(ArrayEltSizeEx(ints10), 4u);
    EXPECT_EQ(NumArrayEltsEx(constInts10), 10u);
    EXPECT_EQ(ArrayEltSizeEx(doubleptype), 8u);

    // int[3][5]: the element is int[5].
    Tynode *matrix = b.array(b.array(inttype, 5), 3);
    EXPECT_EQ(ArrayEltSizeEx(matrix), 20u);
    EXPECT_EQ(NumArrayEltsEx(matrix), 3u);

    // A qualified element array whose layer carries no size.
    Tynode *inner = b.array(chartype, 6);
    Tynode *layer = b.node(LCC_CONST, inner, 0, 1);
    EXPECT_EQ(ArrayEltSizeEx(b.node(LCC_ARRAY, layer, 12, 1)), 6u);
}

TEST(ArrayQueries, ArraysOfIncompleteArraysHaveNoElementsNotADivisionFault)
{
    TypeBuilder b;
    Tynode *ofIncomplete = b.node(LCC_ARRAY, b.incompleteArray(inttype), 0, 4);
    EXPECT_EQ(ArrayEltSizeEx(ofIncomplete), 0u);
    EXPECT_EQ(NumArrayEltsEx(ofIncomplete), 0u);
    EXPECT_EQ(NumArrayEltsEx(b.node(LCC_ARRAY, b.incompleteArray(inttype), 16, 4)), 0u);
}

TEST(ArrayQueries, WrongKindsAreReported)
{
    tollan::testing::LogCapture log;
    TypeBuilder b;
    EXPECT_EQ(ArraySizeEx(inttype), 0u);
    EXPECT_EQ(ArraySizeEx(nullptr), 0u);
    EXPECT_EQ(ArrayEltSizeEx(inttype), 0u);
    EXPECT_EQ(ArrayEltSizeEx(b.node(LCC_POINTER, nullptr, 8, 8)), 0u);
    EXPECT_EQ(NumArrayEltsEx(b.node(LCC_ARRAY, nullptr, 8, 8)), 0u);
    EXPECT_EQ(log.count("|c/types|ArraySizeEx|Assertion failed: isarray(ty)"), 2u);
    EXPECT_EQ(log.count("|c/types|ArrayEltSizeEx|Assertion failed: isptr(ty) || isarray(ty)"), 1u);
    EXPECT_EQ(log.count("|c/types|ArrayEltSizeEx|Assertion failed: ty->type"), 1u);
    EXPECT_EQ(log.count("|c/types|NumArrayEltsEx|Assertion failed: ty->type"), 1u);
}

TEST(PtrSizeOf, ShadowSizesOfNestedTypes)
{
    TypeBuilder b;
    // struct inner { int n; char *name; };  struct outer { struct inner in[2]; void *p; double d[4]; }
    Tynode *inner = b.tag(LCC_STRUCT, "inner", 16);
    b.field(inner, "n", inttype, 0);
    b.field(inner, "name", charptype, 8);
    Tynode *outer = b.tag(LCC_STRUCT, "outer", 72);
    b.field(outer, "in", b.array(inner, 2), 0);
    b.field(outer, "p", voidptype, 32);
    b.field(outer, "d", b.array(doubletype, 4), 40);
    // struct flex { int count; char *items[]; }
    Tynode *flex = b.tag(LCC_STRUCT, "flex", 8);
    b.field(flex, "count", inttype, 0);
    b.field(flex, "items", b.array(charptype, 0), 8);

    const struct {
        const char *what;
        const Tynode *type;
        uint64_t size;
    } rows[] = {
        {"int", inttype, 0},
        {"void", voidtype, 0},
        {"char *", charptype, 24},
        {"const char *", b.qualified(LCC_CONST, charptype), 24},
        {"int[10]", b.array(inttype, 10), 16},
        {"char *[10]", b.array(charptype, 10), 16 + 10 * 24},
        {"char *[2][3] shares one header", b.array(b.array(charptype, 3), 2), 16 + 2 * 3 * 24},
        {"int[2][3]", b.array(b.array(inttype, 3), 2), 16},
        {"struct inner", inner, 16 + 0 + 24},
        {"struct inner[2]", b.array(inner, 2), 16 + 2 * 40},
        {"struct outer", outer, 16 + (16 + 2 * 40) + 24 + 16},
        {"struct flex", flex, 16 + 0 + 16},
        {"struct without members", b.tag(LCC_STRUCT, "opaque_layout", 8), 16},
        {"incomplete struct", b.tag(LCC_STRUCT, "undefined", 0), 0},
        {"union", b.tag(LCC_UNION, "u", 8), 0},
        {"char *[] of size 0", b.incompleteArray(charptype), 0},
        {"function", b.function(inttype, {}), 0},
    };
    for (const auto &row : rows) EXPECT_EQ(PtrSizeOf(row.type), row.size) << row.what;
}

TEST(PtrSizeOf, AnArrayOfElementsWithoutSizeMustBeOfVoid)
{
    tollan::testing::LogCapture log;
    TypeBuilder b;
    EXPECT_EQ(PtrSizeOf(b.node(LCC_ARRAY, voidtype, 8, 1)), 0u);
    EXPECT_EQ(log.count("Assertion failed"), 0u);
    EXPECT_EQ(PtrSizeOf(b.node(LCC_ARRAY, b.tag(LCC_STRUCT, "undefined2", 0), 8, 1)), 0u);
    EXPECT_EQ(log.count("|c/up_comp|PtrSizeOf|Assertion failed: type->type->op == LCC_VOID"), 1u);
}

}  // namespace
