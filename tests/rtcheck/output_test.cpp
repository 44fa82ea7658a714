// The English text of types, and the names findtype finds for them.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <tollan/rtcheck.h>

#include "fixtures/log_capture.h"
#include "rtcheck/symbols.h"
#include "type_builder.h"

namespace {

using rtchecktest::TypeBuilder;

std::string text(const Tynode *ty)
{
    char buffer[256];
    const size_t length = outtype(ty, buffer, sizeof buffer);
    EXPECT_EQ(length, std::string(buffer).size());
    return buffer;
}

TEST(Outtype, EveryConstructorLayerAndTag)
{
    TypeBuilder b;
    Tynode *constInt = b.qualified(LCC_CONST, inttype);
    Tynode *named = b.tag(LCC_STRUCT, "point", 8);
    Tynode *undefined = b.tag(LCC_UNION, "value", 0, {"shapes.h", 12, 5});
    Tynode *anonymousEnum = b.tag(LCC_ENUM, "3", 4, {"colors.c", 7, 1});
    Tynode *anonymousNamed = b.tag(LCC_STRUCT, "17", 16);
    tollan::rtcheck::registerTypeName("pair_t", anonymousNamed, 0, {"pair.h", 2, 1});
    Tynode *anonymousIncomplete = b.tag(LCC_STRUCT, "9", 0, {"x.c", 40, 1});
    Tynode *callback = b.qualified(LCC_STDCALL, b.function(voidtype, {voidptype, inttype}));

    const struct {
        const Tynode *type;
        const char *text;
    } rows[] = {
        {chartype, "char"},
        {signedchar, "signed char"},
        {unsignedchar, "unsigned char"},
        {shorttype, "short"},
        {unsignedshort, "unsigned short"},
        {inttype, "int"},
        {unsignedtype, "unsigned int"},
        {longtype, "long"},
        {unsignedlong, "unsigned long"},
        {int64type, "__int64"},
        {unsignedint64, "unsigned __int64"},
        {floattype, "float"},
        {doubletype, "double"},
        {longdouble, "long double"},
        {voidtype, "void"},
        {b.node(LCC_INT, nullptr, 4, 4), "int"},
        {constInt, "const int"},
        {b.qualified(LCC_VOLATILE, constInt), "volatile const int"},
        {b.pointer(b.qualified(LCC_RESTRICT, chartype)), "pointer to restrict char"},
        {b.qualified(LCC_RESTRICT, charptype), "restrict pointer to char"},
        {charpptype, "pointer to pointer to char"},
        {b.pointer(b.array(inttype, 10)), "pointer to array 10 of int"},
        {b.array(b.array(doubletype, 4), 3), "array 3,4 of double"},
        {b.array(b.array(b.array(chartype, 2), 5), 7), "array 7,5,2 of char"},
        {b.array(b.incompleteArray(inttype), 0), "array *,* of int"},
        {b.incompleteArray(floattype), "incomplete array of float"},
        {b.array(floattype, 0), "array * of float"},
        {b.incompleteArray(b.array(inttype, 3)), "incomplete array,3 of int"},
        {charptrarray2type, "array 2 of pointer to char"},
        {b.function(inttype, {}, false), "int function"},
        {b.function(inttype, {}), "int function(void)"},
        {b.function(inttype, {charptype}, true, true), "int function(pointer to char,...)"},
        {b.function(doubletype, {inttype, floattype, constInt}), "double function(int,float,const int)"},
        {b.pointer(callback), "pointer to __stdcall void function(pointer to void,int)"},
        {b.qualified(LCC_PASCAL, b.function(voidtype, {})), "__pascal void function(void)"},
        {b.qualified(LCC_CDECL, b.function(voidtype, {}, false)), "__cdecl void function"},
        {b.qualified(LCC_FASTCALL, b.function(inttype, {inttype})), "__fastcall int function(int)"},
        {b.pointer(b.function(b.pointer(inttype), {})), "pointer to pointer to int function(void)"},
        {named, "struct point"},
        {b.pointer(named), "pointer to struct point"},
        {undefined, "incomplete union value defined at shapes.h:12"},
        {anonymousEnum, "enum defined at colors.c:7"},
        {anonymousNamed, "pair_t"},
        {anonymousIncomplete, "incomplete struct defined at x.c:40"},
        {b.array(named, 2), "array 2 of struct point"},
    };
    for (const auto &row : rows) EXPECT_EQ(text(row.type), row.text);
}

TEST(Outtype, ATooSmallBufferIsCutAndTerminated)
{
    TypeBuilder b;
    const Tynode *type = b.pointer(b.array(inttype, 10));
    const std::string whole = "pointer to array 10 of int";
    char buffer[11];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(outtype(type, buffer, sizeof buffer), whole.size());
    EXPECT_STREQ(buffer, "pointer to");
    char one = '#';
    EXPECT_EQ(outtype(type, &one, 1), whole.size());
    EXPECT_EQ(one, '\0');
    EXPECT_EQ(outtype(type, nullptr, 0), whole.size());
}

TEST(Outtype, BrokenNodesAreReported)
{
    tollan::testing::LogCapture log;
    TypeBuilder b;
    Tynode *noName = b.node(LCC_STRUCT, nullptr, 4, 4);
    EXPECT_EQ(text(b.pointer(noName)), "pointer to ");
    EXPECT_EQ(log.count("|c/output|outtype|Assertion failed: ty->sym"), 1u);
    Tynode *nullName = b.node(LCC_UNION, nullptr, 4, 4, b.symbol("x"));
    nullName->sym->name = nullptr;
    EXPECT_EQ(text(nullName), "");
    EXPECT_EQ(log.count("|c/output|outtype|Assertion failed: GetName(ty->sym)"), 1u);
    EXPECT_EQ(text(b.node(14, nullptr, 4, 4)), "");
    EXPECT_EQ(log.count("|c/output|outtype|Assertion failed: 0 (unknown type constructor)"), 1u);
    EXPECT_EQ(text(nullptr), "");
    ASSERT_FALSE(log.lines().empty());
    const std::string last = log.lines().back();
    EXPECT_NE(last.find("|c/output|outtype|Assertion failed: ty"), std::string::npos);
    EXPECT_EQ(last.substr(last.size() - 2), "ty");
}

TEST(Findtype, SearchesTheScopesInnermostFirstWhileTheCompilerRuns)
{
    using namespace tollan::rtcheck;
    TypeBuilder b;
    Tynode *anonymous = b.tag(LCC_STRUCT, "5", 8);
    TySymbol *outerName = b.symbol("outer_t");
    outerName->type = anonymous;
    TySymbol *innerName = b.symbol("inner_t");
    innerName->type = anonymous;
    TySymbol *variable = b.symbol("not_a_type");
    variable->type = anonymous;
    variable->sclass = 'A';

    ScopeTable file{};
    ScopeTable block{1, &file};
    addToScope(file, outerName);
    addToScope(block, variable);

    SymbolSpace &space = symbolSpace();
    const SymbolSpace saved = space;
    space.compilerTablesActive = true;
    space.innermost = &block;
    EXPECT_EQ(findtype(anonymous), outerName);
    addToScope(block, innerName);
    EXPECT_EQ(findtype(anonymous), innerName);
    EXPECT_EQ(text(anonymous), "inner_t");
    EXPECT_EQ(findtype(inttype), nullptr);

    tollan::testing::LogCapture log;
    space.innermost = nullptr;
    EXPECT_EQ(findtype(anonymous), nullptr);
    EXPECT_EQ(log.count("|c/sym|findtype|Assertion failed: tp"), 1u);
    space = saved;
}

TEST(Findtype, GlobalChainsAboveTheCurrentLevelAreOutOfScope)
{
    using namespace tollan::rtcheck;
    TypeBuilder b;
    Tynode *anonymous = b.tag(LCC_UNION, "6", 8);
    TySymbol *local = registerTypeName("local_t", anonymous, 2, {});
    ASSERT_NE(local, nullptr);
    EXPECT_EQ(findtype(anonymous), nullptr);
    SymbolSpace &space = symbolSpace();
    space.currentLevel = 2;
    EXPECT_EQ(findtype(anonymous), local);
    TySymbol *global = registerTypeName("global_t", anonymous, 0, {});
    EXPECT_EQ(findtype(anonymous), global);  // lower levels come first
    space.currentLevel = 0;
}

}  // namespace
