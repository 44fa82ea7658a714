#include "fmtio/scan_engine.h"

#include <cstring>

#include "fmtio/fmt_bytes.h"
#include "fmtio/fmt_results.h"
#include "fmtio/fmt_target.h"
#include "fmtio/fmt_walk.h"
#include "fmtio/scan_source.h"
#include "fmtio/scan_target.h"

namespace tollan::fmtio {
namespace {

struct ScanRun {
    FormatWalk &walk;
    ScanText text;
    bool splitsAtComma;  // the source is an l item with the c modifier
    int32_t filled = 0;
};

// A literal must match the source as it stands; false when it does not.
bool matchLiteral(ScanRun &run, const FormatItem &item) noexcept
{
    const auto length = static_cast<size_t>(item.size);
    if (static_cast<size_t>(run.text.end - run.text.at) < length ||
        std::memcmp(run.text.at, item.position, length) != 0)
        return false;
    run.text.at += length;
    return true;
}

// Reads the targets until the format, the source or a literal ends the Scan.
int32_t scanTargets(ScanRun &run, FormatArguments &args) noexcept
{
    for (;;) {
        FormatItem item;
        bool more = false;
        if (const int32_t error = run.walk.next(&item, &more, args)) return error;
        if (!more) return 0;
        if (item.kind == FMT_ITEM_LITERAL) {
            if (!matchLiteral(run, item)) return 0;
            continue;
        }
        Conversion conversion;
        if (const int32_t error = run.walk.resolve(item, Role::scanTarget, run.splitsAtComma, &conversion))
            return error;
        const bool discarded = item.parameterIndex == 0;
        void *target = discarded ? nullptr : const_cast<void *>(run.walk.parameterOf(item).pointer);
        if (!discarded && !target) return FMT_ERR_NULL_POINTER;
        const int32_t result = scanParameter(run.text, conversion, target);
        if (result == kSourceEnded) return 0;
        if (result != 0) return result;
        // Each field of a comma-separated line ends at its comma.
        if (run.splitsAtComma && run.text.at < run.text.end && *run.text.at == ',') ++run.text.at;
        if (!discarded) ++run.filled;
    }
}

}  // namespace

int32_t runScan(const ScanOrigin &origin, const char *format, FormatArguments &args) noexcept
{
    FormatResults &results = formatResults();
    results.scanItems = 0;
    results.scanBytes = 0;
    if (!format) return -FMT_ERR_NULL_POINTER;

    FormatWalk walk(format, true, origin.memory);
    FormatItem sourceItem;
    FormatWalk::First found;
    if (const int32_t error = walk.first(&sourceItem, &found, args)) return -error;
    if (found == FormatWalk::First::implied) sourceItem = impliedString();
    Conversion source;
    if (const int32_t error = walk.resolve(sourceItem, Role::scanSource, false, &source)) return -error;

    ByteBuffer held;
    ScanRun run{walk, {}, sourceItem.kind == FMT_ITEM_STRING && sourceItem.as.string.lineFlag == 2};
    if (const int32_t error = takeSource(origin, source, held, &run.text)) return error > 0 ? -error : error;
    const char *begin = run.text.at;
    const int32_t error = scanTargets(run, args);
    results.scanItems = run.filled;
    results.scanBytes = static_cast<int32_t>(run.text.at - begin);
    return error ? -error : run.filled;
}

}  // namespace tollan::fmtio
