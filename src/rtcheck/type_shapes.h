// The rules that strict equality and assignment compatibility share for
// arrays and functions: both walk the same parts and differ only in how two
// part types are compared.
#pragma once

#include <tollan/rtcheck.h>

#include "rtcheck/type_walk.h"

namespace tollan::rtcheck {

// How two arrays or two functions whose parts agree relate.
enum class ShapeMatch {
    same,
    differ,
    onlyOneComplete,  // an unknown array size, or a missing parameter list, on one side
};

// Arrays with matching elements: equal sizes match; an array declared
// without a size, or of size 0, matches any size.
inline ShapeMatch arraySizesMatch(const Tynode *a, const Tynode *b) noexcept
{
    if (a->size == b->size) return ShapeMatch::same;
    if (isMarkedIncomplete(a) || isMarkedIncomplete(b) || a->size == 0 || b->size == 0)
        return ShapeMatch::onlyOneComplete;
    return ShapeMatch::differ;
}

// A parameter that a call without prototype passes unchanged: not float,
// char or short (those are promoted).
inline bool survivesPromotion(const Tynode *param, const char *module, const char *function) noexcept
{
    const Tynode *type = unqualify(param, module, function);
    return type != nullptr && type->op != LCC_FLOAT && type->op != LCC_CHAR && type->op != LCC_SHORT;
}

// The parameter lists of two functions (null: no prototype); `partsMatch`
// compares two parameter types. A variadic list never matches a call
// without prototype.
template <typename PartsMatch>
ShapeMatch parameterListsMatch(const TyParams *p1, const TyParams *p2, PartsMatch partsMatch,
                               const char *module, const char *function) noexcept
{
    if (p1 == p2) return ShapeMatch::same;
    if (p1 != nullptr && p2 != nullptr) {
        if (p1->count != p2->count || (p1->variadic != 0) != (p2->variadic != 0)) return ShapeMatch::differ;
        for (uint32_t i = 0; i < p1->count; ++i) {
            if (!partsMatch(p1->types[i], p2->types[i])) return ShapeMatch::differ;
        }
        return ShapeMatch::same;
    }
    const TyParams *only = p1 != nullptr ? p1 : p2;
    if (only->variadic != 0) return ShapeMatch::differ;
    for (uint32_t i = 0; i < only->count; ++i) {
        if (!survivesPromotion(only->types[i], module, function)) return ShapeMatch::differ;
    }
    return ShapeMatch::onlyOneComplete;
}

// The parameter list of a function type (carried by its symbol).
inline const TyParams *parametersOf(const Tynode *function) noexcept
{
    return function->sym != nullptr ? function->sym->params : nullptr;
}

}  // namespace tollan::rtcheck
