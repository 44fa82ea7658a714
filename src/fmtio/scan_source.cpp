#include "fmtio/scan_source.h"

#include <cstring>

#include <tollan/ansi_c.h>

#include "fmtio/fmt_source.h"
#include "fmtio/io_error.h"
#include "fmtio/thread_state.h"

namespace tollan::fmtio {
namespace {

// A string ends at the first character outside its set or at its width; one
// without width always ends at its NUL.
bool endsSource(const Conversion &source, const char *at, int64_t taken) noexcept
{
    if (taken >= source.width) return true;
    return (source.width == kUnlimited && *at == '\0') ||
           !inCharacterSet(source, static_cast<unsigned char>(*at));
}

// Whether the set lets every character but NUL be part of the string, as it
// does for the usual source.
bool endsOnlyAtNul(const Conversion &source) noexcept
{
    if (source.characterSet[0] != 0xFE) return false;
    for (size_t k = 1; k < sizeof source.characterSet; ++k)
        if (source.characterSet[k] != 0xFF) return false;
    return true;
}

ScanText stringInMemory(const Conversion &source, const char *string) noexcept
{
    const char *start = string + offsetWithin(source, string);
    if (source.width == kUnlimited && endsOnlyAtNul(source))
        return ScanText{start, start + std::strlen(start)};
    int64_t length = 0;
    while (!endsSource(source, start + length, length)) ++length;
    return ScanText{start, start + length};
}

constexpr uint32_t kFileChunk = 4096;

int32_t readFile(int32_t handle, const Conversion &source, ByteBuffer &held) noexcept
{
    if (source.offset != 0 && SetFilePtr(handle, source.offset, 1) < 0) return -1;
    const bool line = source.item->as.string.lineFlag != 0;
    char chunk[kFileChunk];
    for (;;) {
        const auto left = static_cast<uint64_t>(source.width) - held.size();
        const int64_t want = line ? 1 : static_cast<int64_t>(left < kFileChunk ? left : kFileChunk);
        if (want == 0) return 0;
        const int32_t got = ZOR_ReadFile(handle, chunk, want);
        if (got < 0) return -1;
        if (got == 0) return 0;
        if (line && chunk[0] == '\n') return 0;
        held.append(chunk, static_cast<size_t>(got));
        if (held.failed()) return failWith(ioerror::kNoMemory);
    }
}

int32_t readInputLine(ByteBuffer &held) noexcept
{
    for (int c; (c = tollan_fgetc(tollan_stdin)) != '\n';) {
        if (c == TOLLAN_EOF) return tollan_ferror(tollan_stdin) ? failWith(ioerror::kGeneral) : 0;
        held.append(static_cast<char>(c));
    }
    return held.failed() ? failWith(ioerror::kNoMemory) : 0;
}

}  // namespace

int32_t takeSource(const ScanOrigin &origin, const Conversion &source, ByteBuffer &held,
                   ScanText *text) noexcept
{
    const bool isString = source.item->kind == FMT_ITEM_STRING;
    int32_t result = 0;
    switch (origin.kind) {
        case ScanOrigin::Kind::memory:
            if (!origin.memory) return FMT_ERR_NULL_POINTER;
            if (isString) {
                *text = stringInMemory(source, static_cast<const char *>(origin.memory));
                return 0;
            }
            result = formatParameter(held, source, ArgumentValue{0, 0, origin.memory}, false);
            if (held.failed()) result = failWith(ioerror::kNoMemory);
            break;
        case ScanOrigin::Kind::file:
            result = isString ? readFile(origin.handle, source, held) : FMT_ERR_INCOMPATIBLE_PARAMETER;
            break;
        case ScanOrigin::Kind::standardInput:
            result = isString ? readInputLine(held) : FMT_ERR_INCOMPATIBLE_PARAMETER;
            break;
    }
    *text = ScanText{held.data(), held.data() + held.size()};
    return result;
}

}  // namespace tollan::fmtio
