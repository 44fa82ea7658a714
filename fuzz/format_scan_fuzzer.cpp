// libFuzzer fuzzer for the Scan engine: random sources, and random formats
// whose arguments the fuzzer can supply.
//
// The input is a format, a NUL and a source. Without a NUL the first byte
// picks one of a few formats that use every kind of item, and the rest is
// the source. A call can only be made when its arguments match its format:
// the fuzzer walks the format with ParseFormatItem first and passes 30
// target buffers, so it takes formats whose targets are all addresses (no
// '*'), whose offsets and arrays fit the buffers, and whose source item
// stays within the source buffer. Everything the parser refuses is passed on
// as it stands: the engine must return the parser's message.
//
// What is checked: no crash and no out-of-bounds access (the sanitizers;
// the buffers are heap blocks of their exact size), a result that is a count
// of targets or a message number, and NumScanItems and NumScanBytes that
// agree with it and with the source.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <tollan/fmtio.h>

namespace {

constexpr size_t kTargetBytes = 16 * 1024;
constexpr size_t kSourceBytes = 64 * 1024;
constexpr int64_t kLargestOffset = 1024;
// The most bytes a source may hand to the targets: a string target then
// never needs more than its offset and this.
constexpr int64_t kSourceText = 4 * 1024;

const char *const kFormats[] = {
    "%s>%d%f%s",
    "%s>%d[w4p0]%x[b2u]%o[b1]%c%f[b4]",
    "%l[c]>%s%s[t58x]%3d[j1];%2f",
    "%s>%s[w8y]%s[j2]--%d[b8]%f[e]",
    "%s[w16t-]>%4d[b4o3210]%8c",
    "%s>V=%d[x], I=%f[x]%s[q]%d[d]%i",
    "%s[i3]>%s[a]%l",
    "%5d[b2]>%s",
};

int64_t extentOf(const FormatItem &item)
{
    const int64_t count = item.repetitionMarker ? item.repetitionCount : 1;
    const int64_t size = item.kind == FMT_ITEM_STRING ? 1 : item.size;
    const int64_t offset = item.zFlag ? item.iValue : int64_t{item.iValue} * size;
    return offset + count * size;
}

// Whether the fuzzer can supply the format's arguments safely.
bool suppliable(const std::string &format)
{
    const char *cursor = format.c_str();
    const char *end = cursor + format.size();
    ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS];
    int32_t entries = 0;
    for (bool first = true;; first = false) {
        FormatItem item{};
        int32_t error = 0;
        const int32_t result = ParseFormatItem(&cursor, end, table, &entries, 1, first, &item, &error);
        if (result == FMT_PARSE_ERROR || result == FMT_PARSE_END) break;
        if (item.kind == FMT_ITEM_LITERAL) continue;
        if (item.iValue > kLargestOffset) return false;
        const bool isSource = first && result == FMT_PARSED_FIRST_ITEM;
        if (extentOf(item) > static_cast<int64_t>(isSource ? kSourceBytes / 2 : kTargetBytes / 2))
            return false;
        if (!isSource) continue;
        // What the targets read must fit a string target after its offset:
        // a string source with a width (which may read past its NUL) or a
        // number source (formatted first) gives at most 4 KiB.
        if (item.kind == FMT_ITEM_STRING && item.width != INT64_MAX && item.width > kSourceText) return false;
        if (item.kind != FMT_ITEM_STRING && item.repetitionMarker && item.repetitionCount > 8) return false;
    }
    for (int32_t k = 0; k < entries && k < TOLLAN_FMT_MAX_ARGS; ++k)
        if (table[k].fromAsterisk) return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > static_cast<size_t>(kSourceText)) return 0;
    const auto *text = reinterpret_cast<const char *>(data);
    const auto *nul = static_cast<const char *>(std::memchr(text, '\0', size));
    std::string format;
    std::string source;
    if (nul) {
        format.assign(text, nul);
        source.assign(nul + 1, text + size);
    } else if (size > 0) {
        format = kFormats[data[0] % (sizeof kFormats / sizeof *kFormats)];
        source.assign(text + 1, size - 1);
    }
    if (!suppliable(format)) return 0;

    // The source lies at the start of a zeroed block, so that a first item
    // with a width or an array reads zeros beyond it, not past the block.
    std::vector<char> sourceBlock(kSourceBytes, '\0');
    std::memcpy(sourceBlock.data(), source.data(), source.size());
    std::vector<std::vector<char>> targets(TOLLAN_FMT_MAX_ARGS, std::vector<char>(kTargetBytes, '\0'));
    void *t[TOLLAN_FMT_MAX_ARGS];
    for (int k = 0; k < TOLLAN_FMT_MAX_ARGS; ++k) t[k] = targets[static_cast<size_t>(k)].data();

    const int32_t result =
        Scan(sourceBlock.data(), format.c_str(), t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8], t[9],
             t[10], t[11], t[12], t[13], t[14], t[15], t[16], t[17], t[18], t[19], t[20], t[21], t[22], t[23],
             t[24], t[25], t[26], t[27], t[28], t[29]);
    const bool isMessage = result <= -206 && result >= -259;
    if (result < 0 && !isMessage) std::abort();
    if (result >= 0 && NumScanItems() != result) std::abort();
    if (NumScanItems() > TOLLAN_FMT_MAX_ARGS || NumScanBytes() < 0) std::abort();
    return 0;
}
