#include "fmtio/fmt_target.h"

#include <cstring>

#include <tollan/ansi_c.h>

#include "fmtio/scan_target.h"

namespace tollan::fmtio {
namespace {

size_t roomFor(const Conversion &target, size_t size) noexcept
{
    return static_cast<uint64_t>(target.width) < size ? static_cast<size_t>(target.width) : size;
}

int32_t deliverToString(char *string, const Conversion &target, const ByteBuffer &bytes,
                        int32_t *written) noexcept
{
    char *start = string;
    if (target.item->as.string.aFlag) start += std::strlen(start);
    start += target.offset;
    // The text already there and the offset take their part of the width.
    size_t count = bytes.size();
    if (target.width != kUnlimited) {
        const auto before = static_cast<uint64_t>(start - string);
        if (before > static_cast<uint64_t>(target.width)) return FMT_ERR_WRITE_PAST_STRING;
        const auto room = static_cast<uint64_t>(target.width) - before;
        if (room < count) count = static_cast<size_t>(room);
    }
    std::memcpy(start, bytes.data(), count);
    if (target.item->as.string.qByte != 0) start[count] = '\0';
    *written = static_cast<int32_t>(count);
    return count < bytes.size() ? FMT_ERR_WRITE_PAST_STRING : 0;
}

int32_t deliverToNumber(void *number, const Conversion &target, const ByteBuffer &bytes) noexcept
{
    ScanText text{bytes.data(), bytes.data() + bytes.size()};
    const int32_t result = scanParameter(text, target, number);
    if (result != kSourceEnded) return result;
    return target.item->kind == FMT_ITEM_REAL ? FMT_ERR_NO_REAL : FMT_ERR_NO_INTEGER;
}

int32_t deliverToFile(int32_t handle, const Conversion &target, const ByteBuffer &bytes,
                      int32_t *written) noexcept
{
    if (target.offset != 0 && SetFilePtr(handle, target.offset, 1) < 0) return -1;
    const size_t count = roomFor(target, bytes.size());
    if (ZOR_WriteFile(handle, bytes.data(), static_cast<int64_t>(count)) < 0) return -1;
    *written = static_cast<int32_t>(count);
    return 0;
}

int32_t deliverToOutput(const Conversion &target, const ByteBuffer &bytes, int32_t *written) noexcept
{
    const size_t count = roomFor(target, bytes.size());
    if (tollan_fwrite(bytes.data(), 1, count, tollan_stdout) != count) return -1;
    *written = static_cast<int32_t>(count);
    return 0;
}

}  // namespace

FormatItem impliedString() noexcept
{
    FormatItem item{};
    item.kind = FMT_ITEM_STRING;
    item.parameterIndex = 1;
    item.size = kUnlimited;
    item.width = kUnlimited;
    item.repetitionCount = 1;
    item.reservedLimit = kUnlimited;
    item.as.string.qByte = ' ';
    std::memset(item.as.string.characterSet, 0xFF, sizeof item.as.string.characterSet);
    return item;
}

int32_t deliverFmt(const FmtDestination &destination, const Conversion &target, const ByteBuffer &bytes,
                   int32_t *written) noexcept
{
    *written = 0;
    const bool isString = target.item->kind == FMT_ITEM_STRING;
    switch (destination.kind) {
        case FmtDestination::Kind::memory:
            if (!isString) return deliverToNumber(destination.memory, target, bytes);
            return deliverToString(static_cast<char *>(destination.memory), target, bytes, written);
        case FmtDestination::Kind::file:
            return isString ? deliverToFile(destination.handle, target, bytes, written)
                            : FMT_ERR_INCOMPATIBLE_PARAMETER;
        case FmtDestination::Kind::standardOutput:
            return isString ? deliverToOutput(target, bytes, written) : FMT_ERR_INCOMPATIBLE_PARAMETER;
    }
    return 0;
}

}  // namespace tollan::fmtio
