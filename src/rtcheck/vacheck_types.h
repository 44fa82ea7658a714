// The types of the variable-argument checks: what the compiler recorded for
// an argument, what a format or a wrapper expects, whether the two agree as
// C's argument passing lets them, and the type nodes that name them in a
// report.
#pragma once

#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/checking_environment.h"

namespace tollan::rtcheck {

// A type as `pointerLayers` levels of pointer over `node`. node is null only
// before the library has built its basic types; such a view matches
// everything and is never printed.
struct TypeView {
    const Tynode *node;
    int32_t pointerLayers;
};

// The recorded argument's type: the indirection bits count its pointer
// levels (TYPE_INDIRECT1 one, TYPE_INDIRECT2 two, both three).
TypeView recordedType(const TypeSizeInfo &recorded) noexcept;

// The node of "aggregate or userdefined", the recorded type of a struct or
// union argument.
const Tynode *aggregateNode() noexcept;

// Whether an argument of type `found` may be fetched as `expected`:
// - values: after the default promotions (char and short to int, float to
//   double), integers of one size agree whatever their signedness, reals of
//   one size agree (the type model gives double and long double, int and
//   long one size each), aggregates agree with aggregates;
// - pointers: the same number of levels, with integers of one size,
//   reals of one size, or the same kind of anything else at the bottom;
//   a pointer to void on either side agrees with every pointer;
// - an expected LCC_ANYTYPE or unknown node agrees with everything; a
//   value never agrees with a pointer.
bool argumentFits(const TypeView &found, const TypeView &expected) noexcept;

// A view as one node that outtype can print: the pointer layers are built
// here, after the library's pointer to void. Keep the object alive while
// the node is used.
class PrintableType {
public:
    explicit PrintableType(const TypeView &view) noexcept;
    PrintableType(const PrintableType &) = delete;
    PrintableType &operator=(const PrintableType &) = delete;
    const Tynode *node() const noexcept { return top_; }

private:
    static constexpr int32_t kMostLayers = 3;
    Tynode layers_[kMostLayers]{};
    const Tynode *top_;
};

}  // namespace tollan::rtcheck
