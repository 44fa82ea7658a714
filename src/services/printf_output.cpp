#include "services/printf_output.h"

#include <cerrno>

namespace tollan::services::formatting {
namespace {

// Padding reaches the sink in pieces of this many bytes.
constexpr size_t kBlockSize = 128;

struct Block {
    char text[kBlockSize];
};

constexpr Block blockOf(char c)
{
    Block out{};
    for (char &each : out.text) each = c;
    return out;
}

constexpr Block kZeros = blockOf('0');
constexpr Block kSpaces = blockOf(' ');

size_t paddingOf(const Conversion &conversion, size_t length) noexcept
{
    return conversion.width > length ? conversion.width - length : 0;
}

}  // namespace

bool Output::overflows() noexcept
{
    errno = EOVERFLOW;
    return false;
}

bool Output::fill(const char *block, size_t count) noexcept
{
    if (!fits(count)) return false;
    for (; count > kBlockSize; count -= kBlockSize)
        if (!put(block, kBlockSize)) return false;
    return put(block, count);
}

bool Output::fillZeros(size_t count) noexcept
{
    return fill(kZeros.text, count);
}

bool Output::fillSpaces(size_t count) noexcept
{
    return fill(kSpaces.text, count);
}

bool Output::putField(const Field &field, const Conversion &conversion) noexcept
{
    const size_t length = field.length();
    const size_t padding = paddingOf(conversion, length);
    if (!fits(length + padding)) return false;
    const bool zeroPadding = field.zeroFills && !conversion.leftAlign;
    if (!conversion.leftAlign && !zeroPadding && !putSpaces(padding)) return false;
    if (!put(field.prefix, field.prefixLength)) return false;
    if (!putZeros(field.leadingZeros + (zeroPadding ? padding : 0))) return false;
    if (!put(field.body, field.bodyLength)) return false;
    if (!putZeros(field.trailingZeros)) return false;
    if (!put(field.suffix, field.suffixLength)) return false;
    return !conversion.leftAlign || putSpaces(padding);
}

bool Output::padBefore(const Conversion &conversion, size_t length) noexcept
{
    return conversion.leftAlign || putSpaces(paddingOf(conversion, length));
}

bool Output::padAfter(const Conversion &conversion, size_t length) noexcept
{
    return !conversion.leftAlign || putSpaces(paddingOf(conversion, length));
}

}  // namespace tollan::services::formatting
