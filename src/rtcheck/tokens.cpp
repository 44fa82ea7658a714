// The texts of the grammar's token codes, as the type printer and error
// texts show them.
#include <array>
#include <utility>

#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/log_module.h"

namespace {

using TokenRow = std::pair<int, const char *>;

// The codes that have a text; every other row of the table stays empty.
constexpr TokenRow kTokenRows[] = {
    {LCC_FLOAT, "float"},
    {LCC_DOUBLE, "double"},
    {LCC_CHAR, "char"},
    {LCC_SHORT, "short"},
    {LCC_INT, "int"},
    {LCC_UNSIGNED, "unsigned"},
    {LCC_VOID, "void"},
    {LCC_STRUCT, "struct"},
    {LCC_UNION, "union"},
    {LCC_ENUM, "enum"},
    {14, "long"},
    {LCC_CONST, "const"},
    {LCC_VOLATILE, "volatile"},
    {LCC_RESTRICT, "restrict"},
    {20, "white space"},
    {21, "newline"},
    // The misspelling is the grammar's own token name.
    {22, "eat preceedng comma"},
    {23, "preprocessing number"},
    {24, "##"},
    {25, "splice"},
    {26, "raw characters"},
    {27, "floating constant"},
    {28, "integer constant"},
    {29, "character constant"},
    {30, "string constant"},
    {31, "macro identifier"},
    {32, "identifier"},
    // Operators and punctuation at their own character codes.
    {33, "!"},
    {35, "#"},
    {37, "%"},
    {38, "&"},
    {40, "("},
    {41, ")"},
    {42, "*"},
    {43, "+"},
    {44, ","},
    {45, "-"},
    {46, "."},
    {47, "/"},
    {58, ":"},
    {59, ";"},
    {60, "<"},
    {61, "="},
    {62, ">"},
    {63, "?"},
    {91, "["},
    {93, "]"},
    {94, "^"},
    {123, "{"},
    {124, "|"},
    {125, "}"},
    {126, "~"},
    // Two-character operators at codes no character uses.
    {39, "++"},
    {48, "--"},
    {49, "->"},
    {50, "&&"},
    {51, "||"},
    {52, "<="},
    {53, "=="},
    {54, "!="},
    {55, ">="},
    {56, ">>"},
    {57, "<<"},
    {65, "sizeof"},
    {66, "asm"},
    {67, "auto"},
    {68, "break"},
    {69, "case"},
    {70, "continue"},
    {71, "default"},
    {72, "do"},
    {73, "else"},
    {74, "extern"},
    {75, "for"},
    {76, "goto"},
    {77, "if"},
    {78, "register"},
    {79, "return"},
    {80, "signed"},
    {81, "static"},
    {82, "switch"},
    {83, "typedef"},
    {84, "while"},
    {86, "..."},
    {LCC_PASCAL, "__pascal"},
    {LCC_STDCALL, "__stdcall"},
    {LCC_CDECL, "__cdecl"},
    {103, "_export"},
    {104, "_import"},
    {105, "dllexport"},
    {106, "dllimport"},
    {107, "__declspec"},
    {108, "__thread"},
    {109, "thread"},
    {110, "__naked"},
    {LCC_LONGLONG, "long long"},
    {LCC_ULONGLONG, "unsigned long long"},
    {114, "inline"},
    {LCC_FASTCALL, "__fastcall"},
    {116, "_Pragma"},
    {127, "end of input"},
};

constexpr std::array<const char *, 128> makeTokenTable() noexcept
{
    std::array<const char *, 128> tokens{};
    for (const auto &[code, text] : kTokenRows) tokens[static_cast<size_t>(code)] = text;
    return tokens;
}
constexpr std::array<const char *, 128> kTokens = makeTokenTable();

}  // namespace

extern "C" const char *tokenrep(int32_t token) noexcept
{
    const char *text = kTokens[static_cast<size_t>(token & 0177)];
    if (text != nullptr) return text;
    TOLLAN_ASSERT_FAILED("tokens[t&0177]", tollan::rtcheck::kOutputModule, "tokenrep");
    return "";
}
