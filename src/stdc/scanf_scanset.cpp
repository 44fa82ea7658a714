#include "stdc/scanf_scanset.h"

#include "stdc/scanf_utf8.h"

namespace tollan::stdc {

ScanSet::ScanSet(const ScanConversion &conversion) noexcept
    : begin_(conversion.setBegin),
      end_(conversion.setEnd),
      negated_(conversion.setNegated),
      utf8_(conversion.size == ScanSize::l)
{
}

template <typename Visit>
bool ScanSet::anyRange(Visit visit) const noexcept
{
    const auto member = [this](const char **at) noexcept {
        char32_t character = static_cast<unsigned char>(**at);
        if (utf8_)
            decodeUtf8(at, end_, &character);
        else
            ++*at;
        return character;
    };
    const char *at = begin_;
    while (at != end_) {
        const char32_t low = member(&at);
        // "x-y" with x <= y is a range; any other '-' is a member itself.
        if (end_ - at >= 2 && *at == '-') {
            const char *afterHigh = at + 1;
            const char32_t high = member(&afterHigh);
            if (low <= high) {
                if (visit(low, high)) return true;
                at = afterHigh;
                continue;
            }
        }
        if (visit(low, low)) return true;
    }
    return false;
}

bool ScanSet::contains(char32_t character) const noexcept
{
    const bool listed =
        anyRange([character](char32_t low, char32_t high) { return low <= character && character <= high; });
    return listed != negated_;
}

ScanSet::Share ScanSet::share(char32_t first, char32_t last) const noexcept
{
    const bool covered = anyRange([=](char32_t low, char32_t high) { return low <= first && last <= high; });
    const bool touched = anyRange([=](char32_t low, char32_t high) { return low <= last && first <= high; });
    if (covered) return negated_ ? Share::none : Share::all;
    if (!touched) return negated_ ? Share::all : Share::none;
    return Share::some;
}

}  // namespace tollan::stdc
