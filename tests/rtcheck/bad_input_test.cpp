// Nodes a faulty caller builds: nulls, unknown codes and loops of `type`
// pointers are reported, and every query returns instead of looping.
#include <string>

#include <gtest/gtest.h>

#include <tollan/rtcheck.h>

#include "fixtures/log_capture.h"
#include "type_builder.h"

namespace {

using rtchecktest::TypeBuilder;

TEST(BadInput, NullTypes)
{
    tollan::testing::LogCapture log;
    EXPECT_EQ(eqtype(nullptr, nullptr, 1), 1);
    EXPECT_EQ(eqtype(nullptr, inttype, 1), 0);
    EXPECT_EQ(log.count("|c/types|eqtype|Assertion failed: ty1 && ty2"), 1u);
    EXPECT_EQ(PtrSizeOf(nullptr), 0u);
    EXPECT_EQ(log.count("|c/up_comp|PtrSizeOf|Assertion failed: type"), 1u);
    TypeBuilder b;
    EXPECT_EQ(eqtype(b.pointer(nullptr), intptype, 1), 0);
    EXPECT_EQ(log.count("|c/types|eqtype|Assertion failed: ty1 && ty2"), 2u);
}

TEST(BadInput, UnknownCodes)
{
    tollan::testing::LogCapture log;
    TypeBuilder b;
    Tynode *odd1 = b.node(14, nullptr, 4, 4);
    Tynode *odd2 = b.node(14, nullptr, 8, 8);
    EXPECT_EQ(eqtype(odd1, odd2, 1), 0);
    EXPECT_EQ(log.count("|c/types|eqtype|Assertion failed: 0 (unknown type constructor)"), 1u);
    Tynode *outOfRange1 = b.node(300, nullptr, 4, 4);
    Tynode *outOfRange2 = b.node(300, nullptr, 8, 8);
    EXPECT_EQ(AreCompatibleTypes(outOfRange1, outOfRange2, 1), 0);
    EXPECT_EQ(log.count("|c/types|AreCompatibleTypes|Assertion failed: 0 (unknown type constructor)"), 1u);
}

TEST(BadInput, LoopsOfTypePointersEnd)
{
    TypeBuilder b;
    // A pointer to itself, a const layer over itself, and a two-node loop.
    Tynode *selfPointer = b.node(LCC_POINTER, nullptr, 8, 8);
    selfPointer->type = selfPointer;
    Tynode *otherSelfPointer = b.node(LCC_POINTER, nullptr, 8, 8);
    otherSelfPointer->type = otherSelfPointer;
    Tynode *selfLayer = b.node(LCC_CONST, nullptr, 4, 4);
    selfLayer->type = selfLayer;
    Tynode *arrayA = b.node(LCC_ARRAY, nullptr, 8, 8);
    Tynode *arrayB = b.node(LCC_ARRAY, arrayA, 8, 8);
    arrayA->type = arrayB;
    Tynode *selfStruct = b.tag(LCC_STRUCT, "loop", 8);
    b.field(selfStruct, "self", selfStruct, 0);

    tollan::testing::LogCapture log;
    EXPECT_EQ(eqtype(selfPointer, otherSelfPointer, 1), 0);
    EXPECT_EQ(AreCompatibleTypes(b.pointer(selfPointer), b.pointer(otherSelfPointer), 0), 0);
    EXPECT_EQ(log.count("Assertion failed: depth <= TY_MAX_DEPTH (type chain is cyclic or too deep)"), 2u);

    log.clear();
    EXPECT_EQ(eqtype(selfLayer, inttype, 1), 0);
    EXPECT_EQ(ArraySizeEx(selfLayer), 0u);
    EXPECT_EQ(log.count("Assertion failed: layers < TY_MAX_DEPTH (qualifier layers form a cycle)"), 2u);

    log.clear();
    EXPECT_EQ(PtrSizeOf(selfStruct), 0u);
    EXPECT_EQ(log.count("|c/up_comp|PtrSizeOf|Assertion failed: depth <= TY_MAX_DEPTH"), 1u);
    char buffer[64];
    EXPECT_GT(outtype(selfPointer, buffer, sizeof buffer), sizeof buffer);
    EXPECT_EQ(std::string(buffer).size(), sizeof buffer - 1);
    EXPECT_EQ(std::string(buffer).rfind("pointer to pointer to ", 0), 0u);
    EXPECT_EQ(log.count("|c/output|outtype|Assertion failed: depth <= TY_MAX_DEPTH"), 1u);
    EXPECT_GT(outtype(arrayA, buffer, sizeof buffer), sizeof buffer);
    EXPECT_EQ(log.count("|c/output|outtype|Assertion failed: depth <= TY_MAX_DEPTH"), 2u);
    EXPECT_EQ(eqtype(arrayA, arrayB, 1), 0);
    EXPECT_EQ(log.count("|c/types|eqtype|Assertion failed: depth <= TY_MAX_DEPTH"), 1u);
}

TEST(BadInput, DeepButFiniteTypesAreAnswered)
{
    TypeBuilder b;
    Tynode *deep1 = inttype;
    Tynode *deep2 = inttype;
    for (int i = 0; i < 100; ++i) {
        deep1 = b.pointer(deep1);
        deep2 = b.pointer(deep2);
    }
    tollan::testing::LogCapture log;
    EXPECT_EQ(eqtype(deep1, deep2, 1), 1);
    EXPECT_EQ(AreCompatibleTypes(deep1, deep2, 0), 1);
    EXPECT_EQ(log.count("Assertion failed"), 0u);
}

}  // namespace
