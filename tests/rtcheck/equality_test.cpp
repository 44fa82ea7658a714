// Strict type equality and assignment compatibility.
#include <gtest/gtest.h>

#include <tollan/rtcheck.h>

#include "fixtures/log_capture.h"
#include "type_builder.h"

namespace {

using rtchecktest::TypeBuilder;

TEST(Eqtype, ArraysOfUnknownSizeMatchAnySize)
{
    TypeBuilder b;
    Tynode *unknown = b.incompleteArray(inttype);
    Tynode *ten = b.array(inttype, 10);
    Tynode *five = b.array(inttype, 5);
    EXPECT_EQ(eqtype(unknown, ten, 1), 1);
    EXPECT_EQ(eqtype(ten, unknown, 1), 1);
    EXPECT_EQ(eqtype(unknown, ten, 0), 0);  // `ret` decides the one-sided case
    EXPECT_EQ(eqtype(five, ten, 1), 0);
    EXPECT_EQ(eqtype(ten, b.array(inttype, 10), 0), 1);
    EXPECT_EQ(eqtype(ten, b.array(unsignedtype, 10), 1), 0);
    // A size-0 array without the mark counts as unknown too.
    EXPECT_EQ(eqtype(b.array(inttype, 0), five, 1), 1);
}

TEST(Eqtype, ShapesAndLayers)
{
    TypeBuilder b;
    Tynode *s1 = b.tag(LCC_STRUCT, "s", 8);
    Tynode *s2 = b.tag(LCC_STRUCT, "s", 8);
    // Functions whose results are equal but distinct nodes, so that their
    // parameters decide (on one shared result node the shapes alone match).
    auto fn = [&b](std::initializer_list<Tynode *> params, bool prototype = true, bool variadic = false) {
        return b.function(b.pointer(chartype), params, prototype, variadic);
    };
    const struct {
        const char *what;
        const Tynode *a;
        const Tynode *b;
        int equal;
    } rows[] = {
        {"same node", inttype, inttype, 1},
        {"int and long share a shape", inttype, longtype, 1},
        {"int and unsigned", inttype, unsignedtype, 0},
        {"float and double", floattype, doubletype, 0},
        {"qualifiers are stripped", b.qualified(LCC_CONST, inttype), inttype, 1},
        {"calling conventions too", b.qualified(LCC_STDCALL, b.function(inttype, {})),
         b.function(inttype, {}), 1},
        {"two pointer nodes to int", b.pointer(inttype), intptype, 1},
        {"pointer to const int", b.pointer(b.qualified(LCC_CONST, inttype)), intptype, 1},
        {"pointers to int and char", intptype, charptype, 0},
        {"pointers to pointers", b.pointer(b.pointer(chartype)), charpptype, 1},
        {"two tags of one shape", s1, s2, 1},
        {"tags of different sizes", s1, b.tag(LCC_STRUCT, "s", 16), 0},
        {"one tag", s1, s1, 1},
        {"pointer and array", intptype, b.array(inttype, 2), 0},
        {"functions differing in result", b.function(inttype, {}), b.function(chartype, {}), 0},
        {"one result node: shapes match", b.function(inttype, {inttype}), b.function(inttype, {floattype}),
         1},
        {"same parameters", fn({inttype, charptype}), fn({longtype, charptype}), 1},
        {"different parameters", fn({inttype}), fn({doubletype}), 0},
        {"different counts", fn({inttype}), fn({inttype, inttype}), 0},
        {"variadic and not", fn({inttype}, true, true), fn({inttype}), 0},
        {"no prototype and promoted ones", fn({}, false), fn({inttype, doubletype}), 1},
        {"no prototype and a float", fn({}, false), fn({floattype}), 0},
        {"no prototype and a char", fn({chartype}), fn({}, false), 0},
        {"no prototype and a short", fn({}, false), fn({shorttype}), 0},
        {"no prototype and variadic", fn({}, false), fn({inttype}, true, true), 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(eqtype(row.a, row.b, 1), row.equal) << row.what;
        EXPECT_EQ(eqtype(row.b, row.a, 1), row.equal) << row.what << " (swapped)";
    }
}

const Tynode *const *const kBasics[] = {&chartype,      &doubletype,   &floattype,    &inttype,
                                        &int64type,     &longdouble,   &longtype,     &shorttype,
                                        &signedchar,    &unsignedchar, &unsignedlong, &unsignedint64,
                                        &unsignedshort, &unsignedtype, &voidtype};

TEST(Compatibility, EveryBasicPairWithAndWithoutLoose)
{
    // The fixed table gives every type of one code the same size and
    // alignment, so the code alone decides, with `loose` or without.
    for (const Tynode *const *a : kBasics) {
        for (const Tynode *const *b : kBasics) {
            const int expected = (*a)->op == (*b)->op ? 1 : 0;
            EXPECT_EQ(AreCompatibleTypes(*a, *b, 0), expected) << (*a)->sym->name << " / " << (*b)->sym->name;
            EXPECT_EQ(AreCompatibleTypes(*a, *b, 1), expected) << (*a)->sym->name << " / " << (*b)->sym->name;
        }
    }
}

TEST(Compatibility, LooseJoinsFamiliesOfDifferentSizes)
{
    TypeBuilder b;
    // Nodes as another compiler model would give them: long of 8 bytes,
    // long double of 16, unsigned long of 8, named by the basic symbols.
    Tynode *wideLong = b.node(LCC_INT, nullptr, 8, 8, longtype->sym);
    Tynode *wideLongDouble = b.node(LCC_DOUBLE, nullptr, 16, 16, b.symbol("long double"));
    Tynode *wideUnsignedLong = b.node(LCC_UNSIGNED, nullptr, 8, 8, b.symbol("unsigned long"));
    Tynode *oddShort = b.node(LCC_SHORT, nullptr, 4, 4, shorttype->sym);
    Tynode *wideOther = b.node(LCC_INT, nullptr, 8, 8, b.symbol("ssize_t"));
    const struct {
        const Tynode *a;
        const Tynode *b;
        int strict;
        int loose;
    } rows[] = {
        {wideLong, inttype, 0, 1},          {wideLong, longtype, 0, 1},
        {wideLongDouble, doubletype, 0, 1}, {wideUnsignedLong, unsignedtype, 0, 1},
        {wideUnsignedLong, inttype, 0, 0},  {oddShort, shorttype, 0, 0},
        {wideOther, inttype, 0, 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(AreCompatibleTypes(row.a, row.b, 0), row.strict) << row.a->sym->name;
        EXPECT_EQ(AreCompatibleTypes(row.a, row.b, 1), row.loose) << row.a->sym->name;
        EXPECT_EQ(AreCompatibleTypes(row.b, row.a, 1), row.loose) << row.a->sym->name;
    }
}

TEST(Compatibility, WildcardsNullsLayersAndDerivedTypes)
{
    TypeBuilder b;
    Tynode *any = b.node(LCC_ANYTYPE, nullptr, 0, 0);
    Tynode *constInt = b.qualified(LCC_CONST, inttype);
    const struct {
        const char *what;
        const Tynode *a;
        const Tynode *b;
        int compatible;
    } rows[] = {
        {"null", nullptr, intptype, 1},
        {"both null", nullptr, nullptr, 1},
        {"any type", any, b.function(inttype, {}), 1},
        {"one layer stripped", constInt, inttype, 1},
        {"only one layer stripped", b.qualified(LCC_VOLATILE, constInt), inttype, 0},
        {"layers on both sides", b.qualified(LCC_CONST, longtype), constInt, 1},
        {"different layers", b.qualified(LCC_VOLATILE, inttype), constInt, 0},
        {"pointer to const int and to int", b.pointer(constInt), intptype, 1},
        {"pointers to int and double", intptype, doubleptype, 0},
        {"pointer to any", b.pointer(any), doubleptype, 1},
        {"arrays of unknown and known size", b.incompleteArray(chartype), b.array(chartype, 4), 1},
        {"arrays of different sizes", b.array(chartype, 3), b.array(chartype, 4), 0},
        {"functions", b.function(b.pointer(chartype), {intptype}),
         b.function(charptype, {b.pointer(constInt)}), 1},
        {"functions with one prototype", b.function(b.pointer(chartype), {}, false),
         b.function(charptype, {floattype}), 0},
        {"functions with different parameters", b.function(b.pointer(chartype), {intptype}),
         b.function(charptype, {doubleptype}), 0},
        {"enum tags", b.tag(LCC_ENUM, "e1", 4), b.tag(LCC_ENUM, "e2", 4), 1},
        {"enum tags of different size", b.tag(LCC_ENUM, "e1", 4), b.tag(LCC_ENUM, "e2", 8), 0},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(AreCompatibleTypes(row.a, row.b, 0), row.compatible) << row.what;
        EXPECT_EQ(AreCompatibleTypes(row.b, row.a, 0), row.compatible) << row.what << " (swapped)";
    }
}

TEST(Compatibility, RecordsCompareTheirMembers)
{
    // Records of one size and alignment match by shape alone; the members
    // decide between records that differ there (packing, another model).
    TypeBuilder b;
    auto point = [&b](const char *tag, Tynode *yType, uint64_t yOffset) {
        Tynode *t = b.tag(LCC_STRUCT, tag, 8);
        t->align = yType == inttype ? 8 : 4;
        b.field(t, "x", inttype, 0);
        b.field(t, "y", yType, yOffset);
        return t;
    };
    Tynode *p1 = point("point", inttype, 4);
    Tynode *p2 = point("point", longtype, 4);
    Tynode *movedY = point("point", inttype, 0);
    movedY->align = 4;
    Tynode *floatY = point("point", floattype, 4);
    Tynode *shorter = b.tag(LCC_STRUCT, "point", 8);
    shorter->align = 4;
    b.field(shorter, "x", inttype, 0);
    Tynode *bits1 = b.tag(LCC_STRUCT, "flags", 4);
    b.field(bits1, "a", unsignedtype, 0, 3, 0);
    Tynode *bits2 = b.tag(LCC_STRUCT, "flags", 4);
    bits2->align = 4;
    b.field(bits2, "a", unsignedtype, 0, 3, 1);
    Tynode *renamed = b.tag(LCC_STRUCT, "point", 8);
    renamed->align = 4;
    b.field(renamed, "x", inttype, 0);
    b.field(renamed, "z", inttype, 4);

    EXPECT_EQ(AreCompatibleTypes(p1, p2, 0), 1);
    EXPECT_EQ(AreCompatibleTypes(p1, movedY, 0), 0);
    EXPECT_EQ(AreCompatibleTypes(p1, floatY, 0), 0);
    EXPECT_EQ(AreCompatibleTypes(p1, shorter, 0), 0);
    EXPECT_EQ(AreCompatibleTypes(p1, renamed, 0), 0);
    EXPECT_EQ(AreCompatibleTypes(bits1, bits2, 0), 0);
    EXPECT_EQ(AreCompatibleTypes(p1, b.tag(LCC_STRUCT, "point", 0), 0), 1);  // not defined on one side
    EXPECT_EQ(AreCompatibleTypes(b.pointer(p1), b.pointer(p2), 0), 1);

    // Two modules' copies of a list node that points to itself.
    auto listNode = [&b](Tynode *value) {
        Tynode *t = b.tag(LCC_STRUCT, "node", 16);
        t->align = value == inttype ? 8 : 4;
        b.field(t, "next", b.pointer(t), 0);
        b.field(t, "value", value, 8);
        return t;
    };
    EXPECT_EQ(AreCompatibleTypes(listNode(inttype), listNode(longtype), 0), 1);
    EXPECT_EQ(AreCompatibleTypes(listNode(inttype), listNode(floattype), 0), 0);
}

}  // namespace
