// Stand-ins shared by the list tests: an allocation-callback record that
// counts calls and fails on request, a capture of the log, small helpers.
#pragma once

#include <string>
#include <vector>

#include <tollan/list.h>
#include <tollan/logger.h>

#include "fixtures/log_capture.h"

namespace listtest {

// Whether the library's start-up chain had installed the default record.
extern bool defaultRecordInstalledAtStartup;

// A record over the default callbacks. Counters and failure switches are
// global because callbacks carry no context; reset() before each use.
struct ProbeAllocator {
    static int newHand, disposeHand, setHSz, newPtr, disposePtr, hLock, hUnlock;
    static int newPtrsBeforeFailure;  // -1: NewPtr never fails
    static bool setHSzFails;
    static bool newHandFails;
    static const CollectionMemAllocFunctions *reset();
    static int32_t liveBlocks() { return newPtr - disposePtr; }
};

// The log while alive: FATAL, WARNING and TEMP lines as "LEVEL|FUNC|FILE|MSG".
struct LogCapture : tollan::testing::LogCapture {
    LogCapture()
        : tollan::testing::LogCapture(ZOR_LOG_FATAL | ZOR_LOG_WARNING | ZOR_LOG_TEMP,
                                      "[LEVEL]|[FUNC]|[FILE]|[MSG]")
    {
    }
    bool contains(const std::string &piece) const { return text().find(piece) != std::string::npos; }
};

int32_t compareInts(const void *a, const void *b);
// Inserts one integer; the list's answer.
int32_t insert(ListType list, int32_t value, int32_t position);
// A list of 32-bit integers over `record` (the default record when null).
ListType intList(const std::vector<int32_t> &values, const CollectionMemAllocFunctions *record = nullptr);
std::vector<int32_t> itemsOf(ListType list);

}  // namespace listtest
