#include "break_report.h"

#include <tollan/debugger.h>

#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <set>

namespace tollan::monitor {
namespace {

uint64_t address(const void *pointer)
{
    return reinterpret_cast<uintptr_t>(pointer);
}

std::string position(const ProcessMemory &memory, const char *fileName, int32_t line, int32_t column)
{
    return memory.describeText(address(fileName)) + ":" + std::to_string(line) + "." + std::to_string(column);
}

std::string reasonText(int32_t reason)
{
    if (reason == ZOR_BREAK_REASON_DISCONNECTED) return " (break reason 35: the program disconnects)";
    return " (break reason " + std::to_string(reason) + ")";
}

}  // namespace

BreakReport describeBreak(const ProcessMemory &memory, uint64_t threadId, uint64_t threadRecord)
{
    BreakReport report;
    const std::string thread = "thread " + std::to_string(threadId);
    if (threadRecord == 0) {
        report.lines.push_back(thread + " stopped (it has no thread-state record)");
        return report;
    }
    // The record is large; only its location block and break reason matter here.
    ZORLocationBlock location{};
    if (!memory.read(threadRecord + offsetof(ZORThreadEnv, location), &location) ||
        !memory.read(threadRecord + offsetof(ZORThreadEnv, breakReason), &report.reason)) {
        char line[128];
        std::snprintf(line, sizeof line, "%s stopped (its record at 0x%" PRIx64 " cannot be read)",
                      thread.c_str(), threadRecord);
        report.lines.push_back(line);
        return report;
    }
    std::string first =
        thread + (location.fileName == nullptr
                      ? " stopped outside compiled code"
                      : " stopped at " + position(memory, location.fileName, location.line, location.column));
    if (report.reason != 0) first += reasonText(report.reason);
    report.lines.push_back(first);

    // Frame i runs at the position the record (i = 0) or frame i-1 saved.
    const char *fileName = location.fileName;
    int32_t line = location.line;
    int32_t column = location.column;
    std::set<uint64_t> seen;
    for (uint64_t at = address(location.frame); at != 0;) {
        const std::string prefix = "  #" + std::to_string(seen.size()) + " ";
        if (seen.size() == kMaxFramesShown || !seen.insert(at).second) {
            report.lines.push_back(prefix + "... (the chain goes on or loops)");
            break;
        }
        ZORFunctionFrame frame{};
        if (!memory.read(at, &frame)) {
            char text[96];
            std::snprintf(text, sizeof text, "<frame at 0x%" PRIx64 " cannot be read>", at);
            report.lines.push_back(prefix + text);
            break;
        }
        report.lines.push_back(prefix + memory.describeText(address(frame.functionName)) + " at " +
                               position(memory, fileName, line, column));
        fileName = frame.savedFileName;
        line = frame.savedLine;
        column = frame.savedColumn;
        at = address(frame.savedFrame);
    }
    return report;
}

}  // namespace tollan::monitor
