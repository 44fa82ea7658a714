// What every type query shares: stepping over qualifier layers and guarding
// against chains of `type` pointers that loop.
#pragma once

#include <tollan/rtcheck.h>

namespace tollan::rtcheck {

// const, volatile, restrict and the calling-convention layers.
constexpr bool isQualifierLayer(int32_t op) noexcept
{
    return op == LCC_CONST || op == LCC_VOLATILE || op == LCC_RESTRICT || op == LCC_PASCAL ||
           op == LCC_STDCALL || op == LCC_CDECL || op == LCC_FASTCALL;
}

// The node under all qualifier layers of `ty` (null stays null). Layers that
// loop are reported in the name of `function`, and give null.
const Tynode *unqualify(const Tynode *ty, const char *module, const char *function) noexcept;

// True while a recursive query is at most TY_MAX_DEPTH layers deep; beyond
// that the chain is taken as cyclic, reported in the name of `function`.
bool withinDepth(int depth, const char *module, const char *function) noexcept;

// Whether an array node carries the mark of an array declared without a size.
constexpr bool isMarkedIncomplete(const Tynode *array) noexcept
{
    return array->extra[0] != 0;
}

}  // namespace tollan::rtcheck
