#include "services/text_format.h"

#include <cstdint>

#include "services/printf_engine.h"

namespace tollan::services {

PointerText pointerText(const void *pointer) noexcept
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    PointerText out;
    auto value = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(pointer));
    for (int i = 15; i >= 0; --i) {
        out.text[i] = kDigits[value & 0xF];
        value >>= 4;
    }
    out.text[16] = '\0';
    return out;
}

int formatTextInto(char *buffer, size_t size, const char *format, ...) noexcept
{
    va_list args;
    va_start(args, format);
    const int length = printToBuffer(buffer, size, format, args);
    va_end(args);
    return length;
}

int formatText(char *buffer, size_t size, const char *format, va_list args) noexcept
{
    return printToBuffer(buffer, size, format, args);
}

}  // namespace tollan::services
