// Walking the shadow of an object: the pointer information laid out as
// PtrSizeOf counts it. A pointer has one 24-byte record; a struct or an
// array has a 16-byte header (the block information of that part of the
// object) followed by its parts' shadows in order; nested arrays share the
// outermost array's header, and a flexible array member has a header only.
#pragma once

#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/ptr_checks.h"
#include "rtcheck/type_walk.h"

namespace tollan::rtcheck {

// Where one part of an object lies: bytes into the shadow and into the data.
struct ShadowPlace {
    uint64_t shadow;
    uint64_t data;
};

// What a walk calls for each part: `record(place, pointerSize)` for each
// pointer, returning false to stop the walk; `header(place, bytes)` for the
// header of each struct and array (bytes: its size, with the unchecked mark
// for a flexible array member, whose size is not known).
template <typename Visitor>
class ShadowWalk {
public:
    explicit ShadowWalk(Visitor &visitor) noexcept : visitor_(visitor) {}

    // Walks an object of `type` whose shadow and data start at `at`; false
    // when the visitor stopped it.
    bool walk(const Tynode *type, ShadowPlace at, bool ownHeader = true, int depth = 0) noexcept
    {
        if (!withinDepth(depth, kPointerModule, "ShadowWalk")) return false;
        const Tynode *plain = plainType(type);
        if (plain == nullptr || plain->size == 0) return true;
        switch (plain->op) {
            case LCC_POINTER:
                return visitor_.record(at, plain->size);
            case LCC_STRUCT:
                return walkStruct(plain, at, depth);
            case LCC_ARRAY:
                return walkArray(plain, at, ownHeader, depth);
            default:
                return true;
        }
    }

private:
    bool walkStruct(const Tynode *record, ShadowPlace at, int depth) noexcept
    {
        visitor_.header(at, record->size);
        uint64_t cursor = at.shadow + kShadowHeaderSize;
        if (record->sym == nullptr) return true;
        for (const TyField *field = record->sym->fields; field != nullptr; field = field->link) {
            const ShadowPlace place{cursor, at.data + field->offset};
            if (isFlexibleMember(field)) {
                visitor_.header(place, ZOR_BLK_UNCHECKED);
                return true;
            }
            if (!walk(field->type, place, true, depth + 1)) return false;
            cursor += PtrSizeOf(field->type);
        }
        return true;
    }

    bool walkArray(const Tynode *array, ShadowPlace at, bool ownHeader, int depth) noexcept
    {
        uint64_t cursor = at.shadow;
        if (ownHeader) {
            visitor_.header(at, array->size);
            cursor += kShadowHeaderSize;
        }
        const Tynode *element = array->type;
        const uint64_t perElement = elementShadowSize(element);
        if (perElement == 0) return true;
        const uint64_t elementBytes = stepSize(element);
        const uint64_t count = array->size / elementBytes;
        for (uint64_t i = 0; i < count; ++i) {
            if (!walk(element, {cursor + i * perElement, at.data + i * elementBytes}, false, depth + 1))
                return false;
        }
        return true;
    }

    Visitor &visitor_;
};

template <typename Visitor>
bool walkShadow(const Tynode *type, Visitor &visitor) noexcept
{
    return ShadowWalk<Visitor>(visitor).walk(type, {0, 0});
}

// A shadow record the program owns at `base` + offset.
inline PtrInfo *recordAt(void *base, uint64_t offset) noexcept
{
    return reinterpret_cast<PtrInfo *>(static_cast<unsigned char *>(base) + offset);
}

}  // namespace tollan::rtcheck
