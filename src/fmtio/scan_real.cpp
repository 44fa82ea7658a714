#include "fmtio/scan_real.h"

#include <charconv>

namespace tollan::fmtio {
namespace {

// Whether a number that from_chars found out of range is too big rather than
// too small: its decimal magnitude (digits before the point, less leading
// zeros after it, plus the exponent) is positive.
bool magnitudeIsLarge(const char *first, const char *last) noexcept
{
    int64_t magnitude = 0;
    bool seenDigit = false;
    bool afterPoint = false;
    const char *at = first;
    for (; at < last && *at != 'e' && *at != 'E'; ++at) {
        if (*at == '.') {
            afterPoint = true;
        } else if (!seenDigit && *at == '0') {
            if (afterPoint) --magnitude;
        } else {
            seenDigit = true;
            if (!afterPoint) ++magnitude;
        }
    }
    if (at < last) {
        int64_t exponent = 0;
        std::from_chars(at + 1 + (at[1] == '+'), last, exponent);
        magnitude += exponent;
    }
    return magnitude > 0;
}

template <typename Real>
int32_t convert(const char *first, const char *last, const char **stop, Real *value) noexcept
{
    const auto result = std::from_chars(first, last, *value, std::chars_format::general);
    *stop = result.ptr;
    if (result.ec == std::errc::invalid_argument) return FMT_ERR_NO_REAL;
    if (result.ec == std::errc::result_out_of_range) {
        if (magnitudeIsLarge(first, result.ptr)) return FMT_ERR_FLOAT_OVERFLOW;
        *value = 0;
    }
    return 0;
}

}  // namespace

int32_t scanReal(ScanText &text, const Conversion &conversion, double *value, bool single) noexcept
{
    const char *at = text.at;
    const char *end = fieldEnd(text, conversion.width);
    while (at < end && isScanSpace(*at)) ++at;
    if (at == text.end) return kSourceEnded;
    const bool negative = at < end && *at == '-';
    if (at < end && (*at == '-' || *at == '+')) ++at;
    // from_chars would take a second sign.
    if (at == end || *at == '-' || *at == '+')
        return conversion.width != kUnlimited && at == end ? FMT_ERR_WIDTH_TOO_SMALL : FMT_ERR_NO_REAL;

    const char *stop = at;
    int32_t error;
    if (single) {
        float narrow = 0;
        error = convert(at, end, &stop, &narrow);
        *value = narrow;
    } else {
        error = convert(at, end, &stop, value);
    }
    if (error) return error;
    if (negative) *value = -*value;
    text.at = stop;
    return 0;
}

}  // namespace tollan::fmtio
