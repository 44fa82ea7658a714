// The logger's process-wide state. The lock guards everything here; the
// level mask (log.h) lives apart, as an atomic read without the lock.
#pragma once

#include "logger/kept_texts.h"
#include "logger/line_template.h"
#include "logger/output.h"
#include "logger/time_stamp.h"
#include "logger/timing.h"
#include "platform/lock.h"

namespace tollan::logger {

struct LoggerState {
    LoggerState() noexcept;

    platform::RecursiveLock lock;
    LineTemplate lineTemplate;
    KeptTexts handedOutTemplates;
    TimeStamp timeStamp;
    Output output;
    TimingHandles timing;
    bool configured = false;
};

// Built on first use and never destroyed: the logger serves the library's
// start-up and shutdown, before and after any static object's lifetime.
LoggerState &state() noexcept;

}  // namespace tollan::logger
