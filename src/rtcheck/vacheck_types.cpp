// Matching a recorded variable argument against the type expected of it.
#include "rtcheck/vacheck_types.h"

#include <algorithm>
#include <iterator>

#include "rtcheck/type_walk.h"

namespace tollan::rtcheck {
namespace {

// Functions count as aggregates: the compiler records every type without a
// number of its own as one, so it cannot tell them apart either.
enum class Kind : uint8_t { integer, real, voidType, aggregate, any };

// What the matching looks at: the kind and size at the bottom of the
// pointer levels.
struct Shape {
    Kind kind;
    uint64_t size;
    int32_t pointerLayers;
};

// The basic node of each type number, read when a view is made (the
// globals are set at start-up).
Tynode *const *const kNodeOfTypeNumber[] = {
    nullptr,     &chartype,     &signedchar, &unsignedchar, &shorttype,     &unsignedshort,
    &inttype,    &unsignedtype, &longtype,   &unsignedlong, &floattype,     &doubletype,
    &longdouble, &voidtype,     nullptr,     &int64type,    &unsignedint64,
};
static_assert(std::size(kNodeOfTypeNumber) == kTypeUnsignedInt64 + 1, "one node per type number");

// The name the formatting library's messages give a parameter of no basic
// type; only printed, never classified by its op.
TySymbol aggregateSymbol{
    TY_SYMBOL_KIND_TYPE, 0, 0, "aggregate or userdefined", nullptr, {}, nullptr, nullptr, nullptr};
const Tynode aggregateType{LCC_INT, nullptr, &aggregateSymbol, 1, {0, 0}, 1};

Kind kindOfOp(int32_t op) noexcept
{
    switch (op) {
        case LCC_CHAR:
        case LCC_SHORT:
        case LCC_INT:
        case LCC_UNSIGNED:
        case LCC_ENUM:
        case LCC_LONGLONG:
        case LCC_ULONGLONG:
            return Kind::integer;
        case LCC_FLOAT:
        case LCC_DOUBLE:
            return Kind::real;
        case LCC_VOID:
            return Kind::voidType;
        case LCC_STRUCT:
        case LCC_UNION:
        case LCC_FUNCTION:
            return Kind::aggregate;
        default:
            return Kind::any;
    }
}

// Arrays count as pointers: an array argument arrives as its address.
Shape shapeOf(const TypeView &view) noexcept
{
    Shape shape{Kind::any, 0, view.pointerLayers};
    if (view.node == aggregateNode()) return {Kind::aggregate, 0, view.pointerLayers};
    const Tynode *node = view.node;
    for (int depth = 0; node != nullptr && depth < TY_MAX_DEPTH; ++depth) {
        if (node->op == LCC_POINTER || node->op == LCC_ARRAY) {
            ++shape.pointerLayers;
        } else if (!isQualifierLayer(node->op)) {
            shape.kind = kindOfOp(node->op);
            shape.size = node->size;
            return shape;
        }
        node = node->type;
    }
    return {Kind::any, 0, 0};
}

// The default argument promotions of a value.
Shape promoted(Shape shape) noexcept
{
    if (shape.pointerLayers != 0) return shape;
    if (shape.kind == Kind::integer && inttype != nullptr) shape.size = std::max(shape.size, inttype->size);
    if (shape.kind == Kind::real && doubletype != nullptr)
        shape.size = std::max(shape.size, doubletype->size);
    return shape;
}

bool isPointerToVoid(const Shape &shape) noexcept
{
    return shape.pointerLayers == 1 && shape.kind == Kind::voidType;
}

bool bottomsAgree(const Shape &found, const Shape &expected) noexcept
{
    if (found.kind != expected.kind) return false;
    return (found.kind != Kind::integer && found.kind != Kind::real) || found.size == expected.size;
}

}  // namespace

const Tynode *aggregateNode() noexcept
{
    return &aggregateType;
}

TypeView recordedType(const TypeSizeInfo &recorded) noexcept
{
    const int32_t number = typeNumberOf(recorded.type);
    const int32_t layers =
        ((recorded.type & kTypeIndirect1) != 0 ? 1 : 0) + ((recorded.type & kTypeIndirect2) != 0 ? 2 : 0);
    const bool known = number > 0 && number < static_cast<int32_t>(std::size(kNodeOfTypeNumber)) &&
                       kNodeOfTypeNumber[number] != nullptr;
    return {known ? *kNodeOfTypeNumber[number] : aggregateNode(), layers};
}

bool argumentFits(const TypeView &found, const TypeView &expected) noexcept
{
    const Shape have = promoted(shapeOf(found));
    const Shape want = promoted(shapeOf(expected));
    if (have.kind == Kind::any || want.kind == Kind::any) return true;
    if ((have.pointerLayers == 0) != (want.pointerLayers == 0)) return false;
    if (isPointerToVoid(have) || isPointerToVoid(want)) return true;
    return have.pointerLayers == want.pointerLayers && bottomsAgree(have, want);
}

PrintableType::PrintableType(const TypeView &view) noexcept : top_(view.node)
{
    const int32_t layers = std::clamp(view.pointerLayers, 0, kMostLayers);
    if (voidptype == nullptr || view.node == nullptr) return;
    Tynode *below = const_cast<Tynode *>(view.node);  // _InitTynode's `type` is not const; nothing writes it
    for (int32_t i = 0; i < layers; ++i) {
        _InitTynode(&layers_[i], voidptype, ptrmetric.size, below);
        below = &layers_[i];
    }
    top_ = below;
}

}  // namespace tollan::rtcheck
