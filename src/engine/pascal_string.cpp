#include "engine/pascal_string.h"

#include <cstring>

namespace tollan::engine {

int CToPStr(unsigned char *destination, const char *source, LeadBytePredicate isLeadByte) noexcept
{
    int length = 0;
    while (source[length] != '\0') {
        const int width = characterWidth(source + length, isLeadByte);
        if (length + width > kPascalStringMax) break;
        length += width;
    }
    destination[0] = static_cast<unsigned char>(length);
    std::memcpy(destination + 1, source, static_cast<size_t>(length));
    return length;
}

}  // namespace tollan::engine
