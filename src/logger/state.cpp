#include "logger/state.h"

#include <cstdio>
#include <new>

#include "logger/log.h"

namespace tollan::logger {

// Constant-initialised, so it holds FATAL-only before any code runs.
std::atomic<uint32_t> levelMask{ZOR_LOG_FATAL};

LoggerState::LoggerState() noexcept : output(stdout, stderr) {}

LoggerState &state() noexcept
{
    alignas(LoggerState) static unsigned char storage[sizeof(LoggerState)];
    static LoggerState *const instance = new (storage) LoggerState();
    return *instance;
}

}  // namespace tollan::logger
