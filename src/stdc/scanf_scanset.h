// The member set of a %[ conversion, read from the format where it stands.
#pragma once

#include "stdc/scanf_conversion.h"

namespace tollan::stdc {

class ScanSet {
public:
    // The set of `conversion` (a '[' one). Its members are bytes, or UTF-8
    // characters for %l[ (the format parser has checked that they are).
    explicit ScanSet(const ScanConversion &conversion) noexcept;

    // Whether `character` (a byte, or a code point for %l[) is a member.
    bool contains(char32_t character) const noexcept;

    // How many of the characters first..last are members.
    enum class Share { all, none, some };
    Share share(char32_t first, char32_t last) const noexcept;

private:
    // Calls visit(low, high) for each single member (low == high) and each
    // range of the set as written, before '^' is applied, until visit
    // returns true. True when one did.
    template <typename Visit>
    bool anyRange(Visit visit) const noexcept;

    const char *begin_;
    const char *end_;
    bool negated_;
    bool utf8_;
};

}  // namespace tollan::stdc
