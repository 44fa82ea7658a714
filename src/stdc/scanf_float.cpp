#include "stdc/scanf_float.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "stdc/scanf_arguments.h"
#include "stdc/scanf_exact_float.h"

namespace tollan::stdc {
namespace {

// The value of a finite `text` as a float or double through std::from_chars,
// sign aside; *outOfRange as exactFloat (scanf_exact_float.h) has it.
template <typename T>
T fromCharsValue(const FloatText &text, bool *outOfRange) noexcept
{
    // The digits as one integer and its exponent: "<digits>e<exponent>",
    // or "<digits>p<exponent>" for a hexadecimal form.
    char buffer[kKeptDigits + 1 + 2 + std::numeric_limits<int64_t>::digits10 + 2];
    std::memcpy(buffer, text.digits, text.count);
    char *end = buffer + text.count;
    *end++ = text.hexadecimal ? 'p' : 'e';
    end = std::to_chars(end, buffer + sizeof buffer, text.exponent).ptr;
    T value = T(0);
    const auto format = text.hexadecimal ? std::chars_format::hex : std::chars_format::scientific;
    if (std::from_chars(buffer, end, value, format).ec != std::errc::result_out_of_range) return value;
    // from_chars leaves the value alone then: too large when the leading
    // digit stands above the point, rounded to zero otherwise.
    *outOfRange = true;
    const auto count = static_cast<int64_t>(text.count);
    const bool tooLarge = (text.hexadecimal ? 4 * count : count) + text.exponent > 0;
    return tooLarge ? std::numeric_limits<T>::infinity() : T(0);
}

template <typename T>
void store(const FloatText &text, ScanArguments &arguments) noexcept
{
    using Limits = std::numeric_limits<T>;
    bool outOfRange = false;
    T value = T(0);
    if (text.kind == FloatText::Kind::infinity)
        value = Limits::infinity();
    else if (text.kind == FloatText::Kind::nan)
        value = Limits::quiet_NaN();
    else if (text.count == 0)
        value = T(0);
    // long double's from_chars is not exact in both builds: the library's
    // own reader takes it.
    else if constexpr (std::is_same_v<T, long double>)
        value = exactFloat<T>(text, &outOfRange);
    else
        value = fromCharsValue<T>(text, &outOfRange);
    if (text.negative) value = std::copysign(value, T(-1));
    if (outOfRange) errno = ERANGE;
    *arguments.next<T>() = value;
}

}  // namespace

ScanOutcome scanFloating(ScanInput &input, const ScanConversion &conversion,
                         ScanArguments &arguments) noexcept
{
    if (!input.skipWhiteSpace()) return ScanOutcome::inputFailure;
    ScanField field(input, conversion.width);
    FloatText text;
    const ScanOutcome outcome = readFloatText(field, &text);
    if (outcome != ScanOutcome::done || conversion.suppress) return outcome;
    if (conversion.size == ScanSize::L)
        store<long double>(text, arguments);
    else if (conversion.size == ScanSize::l)
        store<double>(text, arguments);
    else
        store<float>(text, arguments);
    return ScanOutcome::done;
}

}  // namespace tollan::stdc
