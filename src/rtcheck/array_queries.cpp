// Building a node in the caller's storage, and the size queries of arrays
// and pointers.
#include <cstring>

#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/log_module.h"
#include "rtcheck/type_walk.h"

using tollan::rtcheck::kTypesModule;
using tollan::rtcheck::unqualify;

extern "C" {

void _InitTynode(Tynode *node, const Tynode *templ, uint64_t size, Tynode *type) noexcept
{
    if (node == nullptr || templ == nullptr) {
        TOLLAN_ASSERT_FAILED("node && templ", kTypesModule, "_InitTynode");
        return;
    }
    std::memmove(node, templ, sizeof(Tynode));
    node->size = size;
    if (type != nullptr) node->type = type;
}

uint64_t ArraySizeEx(const Tynode *ty) noexcept
{
    const Tynode *array = unqualify(ty, kTypesModule, "ArraySizeEx");
    if (array == nullptr || array->op != LCC_ARRAY) {
        TOLLAN_ASSERT_FAILED("isarray(ty)", kTypesModule, "ArraySizeEx");
        return 0;
    }
    return array->size;
}

uint64_t ArrayEltSizeEx(const Tynode *ty) noexcept
{
    const Tynode *outer = unqualify(ty, kTypesModule, "ArrayEltSizeEx");
    if (outer == nullptr || (outer->op != LCC_POINTER && outer->op != LCC_ARRAY)) {
        TOLLAN_ASSERT_FAILED("isptr(ty) || isarray(ty)", kTypesModule, "ArrayEltSizeEx");
        return 0;
    }
    if (outer->type == nullptr) {
        TOLLAN_ASSERT_FAILED("ty->type", kTypesModule, "ArrayEltSizeEx");
        return 0;
    }
    if (outer->type->size != 0) return outer->type->size;
    // A qualified element array may carry its size only below the layers.
    const Tynode *element = unqualify(outer->type, kTypesModule, "ArrayEltSizeEx");
    return element != nullptr && element->op == LCC_ARRAY ? element->size : 0;
}

uint64_t NumArrayEltsEx(const Tynode *ty) noexcept
{
    const Tynode *array = unqualify(ty, kTypesModule, "NumArrayEltsEx");
    if (array == nullptr || array->type == nullptr) {
        TOLLAN_ASSERT_FAILED("ty->type", kTypesModule, "NumArrayEltsEx");
        return 0;
    }
    const uint64_t elementSize = ArrayEltSizeEx(array);
    return elementSize == 0 ? 0 : array->size / elementSize;
}

}  // extern "C"
