// What the report tests share: a debugging level for the length of a test,
// and work run on a thread of its own, whose break settings start afresh.
#pragma once

#include <cstdint>
#include <thread>

#include <tollan/debugger.h>

namespace tollan::testing {

class DebuggingLevel {
public:
    explicit DebuggingLevel(int32_t level) : previous_(__SetDebuggingLevel(level)) {}
    ~DebuggingLevel() { __SetDebuggingLevel(previous_); }
    DebuggingLevel(const DebuggingLevel &) = delete;
    DebuggingLevel &operator=(const DebuggingLevel &) = delete;

private:
    int32_t previous_;
};

template <typename Work>
void onFreshThread(Work work)
{
    std::thread(work).join();
}

}  // namespace tollan::testing
