// The registered-module table: up to 32 run-state callbacks, each with the
// module that registered it, and the start and stop walks over them.
#pragma once

#include <cstdint>

#include <tollan/engine.h>

namespace tollan::services {

struct RunStateEntry {
    ZORRunStateCallback callback = nullptr;
    int32_t started = 0;  // 1 between the start and the stop event
    void *module = nullptr;
};

class RunStateTable {
public:
    static constexpr int32_t kCapacity = ZOR_MAX_RUN_STATE_CALLBACKS;

    // Appends (callback, module) unless the pair is already there. False only
    // when the table is full.
    bool add(ZORRunStateCallback callback, void *module) noexcept;
    // Sends the start event, then the started event, to the callbacks of
    // `module` (of every module when it is null), in table order. Callbacks
    // that register more callbacks extend the same walk. A walk started from
    // inside a callback that would call that same callback again (a module
    // registering itself from its own callback) would never end: it is
    // reported through ZORAssert and abandoned; false then.
    bool start(void *module) noexcept;
    // Sends about-to-stop, then stop, to the callbacks of `module`, last
    // first, then removes them; each hole takes the then last entry.
    void stop(void *module) noexcept;

    int32_t count() const noexcept { return count_; }
    const RunStateEntry &entry(int32_t index) const noexcept { return entries_[index]; }

private:
    // Calls entry `index` with `event` unless that callback is already running
    // further up the stack; false when it is.
    bool call(int32_t index, int32_t event) noexcept;

    RunStateEntry entries_[kCapacity] = {};
    int32_t count_ = 0;
    // The callbacks running at the moment, outermost first. Every callback on
    // the stack is distinct, so there are never more than kCapacity.
    RunStateEntry running_[kCapacity] = {};
    int32_t runningCount_ = 0;
};

// The library's table.
RunStateTable &runStateTable() noexcept;

}  // namespace tollan::services
