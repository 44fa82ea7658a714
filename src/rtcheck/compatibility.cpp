// AreCompatibleTypes: whether a value of one type may be assigned to or cast
// into an object of another without a checking error.
#include <cstring>

#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/log_module.h"
#include "rtcheck/type_shapes.h"

namespace tollan::rtcheck {
namespace {

constexpr const char *kFunction = "AreCompatibleTypes";
constexpr int kMaxOpenRecords = 32;

// One comparison: the `loose` flag, and the pairs of struct/union types whose
// members are being compared further up. Records that refer to themselves
// through pointers meet the same pair again; it is taken as compatible
// there, and decided by the walk that opened it.
struct Comparison {
    bool loose;
    int openCount = 0;
    const Tynode *open[kMaxOpenRecords][2] = {};
};

bool compatible(Comparison &c, const Tynode *ty1, const Tynode *ty2, int depth) noexcept;

// Whether `ty` is the basic type `basic`: the node itself, its symbol, a
// symbol naming that node, or a symbol of the same name.
bool isBasicType(const Tynode *ty, const Tynode *basic) noexcept
{
    if (ty == basic) return true;
    if (basic == nullptr || ty->sym == nullptr || basic->sym == nullptr) return false;
    if (ty->sym == basic->sym || ty->sym->type == basic) return true;
    return ty->sym->name != nullptr && basic->sym->name != nullptr &&
           std::strcmp(ty->sym->name, basic->sym->name) == 0;
}

bool inFamily(const Tynode *ty, const Tynode *first, const Tynode *second) noexcept
{
    return isBasicType(ty, first) || isBasicType(ty, second);
}

bool sameFamily(const Tynode *a, const Tynode *b, const Tynode *first, const Tynode *second) noexcept
{
    return inFamily(a, first, second) && inFamily(b, first, second);
}

bool isOpen(const Comparison &c, const Tynode *a, const Tynode *b) noexcept
{
    for (int i = 0; i < c.openCount; ++i) {
        if ((c.open[i][0] == a && c.open[i][1] == b) || (c.open[i][0] == b && c.open[i][1] == a)) return true;
    }
    return false;
}

bool membersCompatible(Comparison &c, const TyField *f1, const TyField *f2, int depth) noexcept
{
    for (; f1 != nullptr && f2 != nullptr; f1 = f1->link, f2 = f2->link) {
        if (f1->name != f2->name || f1->offset != f2->offset || f1->bitSize != f2->bitSize ||
            f1->bitOffset != f2->bitOffset || !compatible(c, f1->type, f2->type, depth + 1))
            return false;
    }
    return f1 == nullptr && f2 == nullptr;
}

bool recordsCompatible(Comparison &c, const Tynode *a, const Tynode *b, int depth) noexcept
{
    if (a->sym == b->sym) return true;
    if (a->sym == nullptr || b->sym == nullptr || a->size == 0 || b->size == 0) return true;
    if (isOpen(c, a, b)) return true;
    if (c.openCount == kMaxOpenRecords) return withinDepth(TY_MAX_DEPTH + 1, kTypesModule, kFunction);
    c.open[c.openCount][0] = a;
    c.open[c.openCount][1] = b;
    ++c.openCount;
    const bool result = membersCompatible(c, a->sym->fields, b->sym->fields, depth);
    --c.openCount;
    return result;
}

bool compatible(Comparison &c, const Tynode *ty1, const Tynode *ty2, int depth) noexcept
{
    if (ty1 == ty2 || ty1 == nullptr || ty2 == nullptr) return true;
    if (ty1->op == LCC_ANYTYPE || ty2->op == LCC_ANYTYPE) return true;
    if (!withinDepth(depth, kTypesModule, kFunction)) return false;
    const bool qualified1 = isQualifierLayer(ty1->op);
    const bool qualified2 = isQualifierLayer(ty2->op);
    if (qualified1 && !qualified2) ty1 = ty1->type;
    if (qualified2 && !qualified1) ty2 = ty2->type;
    if (ty1 == ty2 || ty1 == nullptr || ty2 == nullptr) return true;
    if (ty1->op != ty2->op) return false;
    if (ty1->type == ty2->type && ty1->size == ty2->size && ty1->align == ty2->align) return true;
    if (ty1->op < LCC_FLOAT || ty1->op > LCC_FASTCALL) {
        logger::reportAssertion("0", kTypesModule, kFunction, __LINE__, "unknown type constructor");
        return false;
    }
    auto partsCompatible = [&c, depth](const Tynode *p1, const Tynode *p2) {
        return compatible(c, p1, p2, depth + 1);
    };
    switch (ty1->op) {
        case LCC_DOUBLE:
            return c.loose && sameFamily(ty1, ty2, doubletype, longdouble);
        case LCC_INT:
        case LCC_LONGLONG:
            return c.loose && sameFamily(ty1, ty2, inttype, longtype);
        case LCC_UNSIGNED:
        case LCC_ULONGLONG:
            return c.loose && sameFamily(ty1, ty2, unsignedtype, unsignedlong);
        case LCC_POINTER:
        case LCC_CONST:
        case LCC_VOLATILE:
        case LCC_RESTRICT:
        case LCC_PASCAL:
        case LCC_STDCALL:
        case LCC_CDECL:
        case LCC_FASTCALL:
            return partsCompatible(ty1->type, ty2->type);
        case LCC_STRUCT:
        case LCC_UNION:
            return recordsCompatible(c, ty1, ty2, depth);
        case LCC_ARRAY:
            return partsCompatible(ty1->type, ty2->type) && arraySizesMatch(ty1, ty2) != ShapeMatch::differ;
        case LCC_FUNCTION:
            return partsCompatible(ty1->type, ty2->type) &&
                   parameterListsMatch(parametersOf(ty1), parametersOf(ty2), partsCompatible, kTypesModule,
                                       kFunction) != ShapeMatch::differ;
        default:
            // float, char, short, void and enum types that differ in shape.
            return false;
    }
}

}  // namespace
}  // namespace tollan::rtcheck

extern "C" int AreCompatibleTypes(const Tynode *ty1, const Tynode *ty2, int loose) noexcept
{
    tollan::rtcheck::Comparison comparison{loose != 0};
    return tollan::rtcheck::compatible(comparison, ty1, ty2, 0) ? 1 : 0;
}
