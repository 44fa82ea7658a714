// PtrSizeOf: how many bytes of pointer information an object of a type
// needs. A pointer has one pointer-information record; a struct or an array
// has a block header and then the information of its parts, in order.
#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/log_module.h"
#include "rtcheck/type_walk.h"

namespace tollan::rtcheck {
namespace {

constexpr const char *kFunction = "PtrSizeOf";

// The sizes of the two start-up arrays that stand for the layouts: char *[2]
// is a block header, void *[3] one pointer-information record.
uint64_t headerSize() noexcept
{
    return charptrarray2type->size;
}

uint64_t recordSize() noexcept
{
    return voidptrarray3type->size;
}

bool isFlexibleMember(const TyField *field) noexcept
{
    if (field->link != nullptr) return false;
    const Tynode *type = unqualify(field->type, kShadowModule, kFunction);
    return type != nullptr && type->op == LCC_ARRAY && type->size == 0;
}

// One query: a chain found cyclic makes the whole answer 0, not a sum of
// the layers walked before the loop was noticed.
struct Walk {
    bool broken = false;
};

uint64_t shadowSize(Walk &walk, const Tynode *type, int depth) noexcept;

uint64_t structShadowSize(Walk &walk, const Tynode *record, int depth) noexcept
{
    uint64_t size = headerSize();
    if (record->sym == nullptr) return size;
    for (const TyField *field = record->sym->fields; field != nullptr; field = field->link) {
        size += isFlexibleMember(field) ? headerSize() : shadowSize(walk, field->type, depth + 1);
    }
    return size;
}

uint64_t arrayShadowSize(Walk &walk, const Tynode *array, int depth) noexcept
{
    const uint64_t elementSize = ArrayEltSizeEx(array);  // reports an array without element type
    const Tynode *element = unqualify(array->type, kShadowModule, kFunction);
    if (element == nullptr) return 0;
    if (elementSize == 0) {
        // Only an array of void has elements without size and the array a size.
        if (element->op != LCC_VOID)
            TOLLAN_ASSERT_FAILED("type->type->op == LCC_VOID", kShadowModule, kFunction);
        return 0;
    }
    uint64_t perElement = shadowSize(walk, element, depth + 1);
    // Nested arrays share the outermost header.
    if (element->op == LCC_ARRAY && perElement >= headerSize()) perElement -= headerSize();
    return headerSize() + NumArrayEltsEx(array) * perElement;
}

uint64_t shadowSize(Walk &walk, const Tynode *type, int depth) noexcept
{
    if (walk.broken) return 0;
    if (!withinDepth(depth, kShadowModule, kFunction)) {
        walk.broken = true;
        return 0;
    }
    if (type == nullptr) {
        TOLLAN_ASSERT_FAILED("type", kShadowModule, kFunction);
        walk.broken = true;
        return 0;
    }
    if (type->size == 0) return 0;
    type = unqualify(type, kShadowModule, kFunction);
    if (type == nullptr) {
        walk.broken = true;
        return 0;
    }
    switch (type->op) {
        case LCC_POINTER:
            return recordSize();
        case LCC_STRUCT:
            return structShadowSize(walk, type, depth);
        case LCC_ARRAY:
            return arrayShadowSize(walk, type, depth);
        default:
            return 0;
    }
}

}  // namespace
}  // namespace tollan::rtcheck

extern "C" uint64_t PtrSizeOf(const Tynode *ty) noexcept
{
    tollan::rtcheck::Walk walk;
    const uint64_t size = tollan::rtcheck::shadowSize(walk, ty, 0);
    return walk.broken ? 0 : size;
}
