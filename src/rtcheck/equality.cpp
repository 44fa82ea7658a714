// eqtype: strict equality of two types, qualifiers aside.
#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/log_module.h"
#include "rtcheck/type_shapes.h"

namespace tollan::rtcheck {
namespace {

constexpr const char *kFunction = "eqtype";

int resultOf(ShapeMatch match, int ret) noexcept
{
    switch (match) {
        case ShapeMatch::same:
            return 1;
        case ShapeMatch::onlyOneComplete:
            return ret;
        case ShapeMatch::differ:
            break;
    }
    return 0;
}

int equalTypes(const Tynode *ty1, const Tynode *ty2, int ret, int depth) noexcept
{
    if (ty1 == ty2) return 1;
    if (!withinDepth(depth, kTypesModule, kFunction)) return 0;
    const Tynode *a = unqualify(ty1, kTypesModule, kFunction);
    const Tynode *b = unqualify(ty2, kTypesModule, kFunction);
    if (a == nullptr || b == nullptr) {
        if (ty1 == nullptr || ty2 == nullptr) TOLLAN_ASSERT_FAILED("ty1 && ty2", kTypesModule, kFunction);
        return 0;
    }
    if (a == b) return 1;
    if (a->op != b->op) return 0;
    if (a->type == b->type && a->size == b->size && a->align == b->align) return 1;
    auto partsEqual = [depth](const Tynode *p1, const Tynode *p2) {
        return equalTypes(p1, p2, 1, depth + 1) != 0;
    };
    switch (a->op) {
        case LCC_FLOAT:
        case LCC_DOUBLE:
        case LCC_CHAR:
        case LCC_SHORT:
        case LCC_INT:
        case LCC_UNSIGNED:
        case LCC_VOID:
        case LCC_STRUCT:
        case LCC_UNION:
        case LCC_ENUM:
        case LCC_LONGLONG:
        case LCC_ULONGLONG:
            // Equal only as the same shape on the same base, which step above tested.
            return 0;
        case LCC_POINTER:
            return partsEqual(a->type, b->type) ? 1 : 0;
        case LCC_ARRAY:
            if (!partsEqual(a->type, b->type)) return 0;
            return resultOf(arraySizesMatch(a, b), ret);
        case LCC_FUNCTION:
            if (!partsEqual(a->type, b->type)) return 0;
            return resultOf(
                parameterListsMatch(parametersOf(a), parametersOf(b), partsEqual, kTypesModule, kFunction),
                ret);
        default:
            logger::reportAssertion("0", kTypesModule, kFunction, __LINE__, "unknown type constructor");
            return 0;
    }
}

}  // namespace
}  // namespace tollan::rtcheck

extern "C" int eqtype(const Tynode *ty1, const Tynode *ty2, int ret) noexcept
{
    return tollan::rtcheck::equalTypes(ty1, ty2, ret, 0);
}
