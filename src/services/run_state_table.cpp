#include "services/run_state_table.h"

#include "logger/log.h"
#include "services/run_state.h"

namespace tollan::services {
namespace {

constexpr const char *kModule = "mgsource/window";

constinit RunStateTable libraryTable;

}  // namespace

RunStateTable &runStateTable() noexcept
{
    return libraryTable;
}

bool RunStateTable::add(ZORRunStateCallback callback, void *module) noexcept
{
    for (int32_t i = 0; i < count_; ++i)
        if (entries_[i].callback == callback && entries_[i].module == module) return true;
    if (count_ == kCapacity) return false;
    entries_[count_++] = {callback, 0, module};
    return true;
}

bool RunStateTable::call(int32_t index, int32_t event) noexcept
{
    const RunStateEntry entry = entries_[index];
    for (int32_t i = 0; i < runningCount_; ++i) {
        if (running_[i].callback == entry.callback && running_[i].module == entry.module) {
            TOLLAN_ASSERT_FAILED("a run-state callback does not start its own module again", kModule,
                                 "InitZORRTDll");
            return false;
        }
    }
    running_[runningCount_++] = entry;
    entry.callback(event);
    --runningCount_;
    return true;
}

// Every walk re-reads count_ after each call: a callback may register more.
bool RunStateTable::start(void *module) noexcept
{
    for (int32_t i = 0; i < count_; ++i) {
        if (module != nullptr && entries_[i].module != module) continue;
        if (!call(i, kRunStateStart)) return false;
        entries_[i].started = 1;
    }
    for (int32_t i = 0; i < count_; ++i) {
        if (module != nullptr && entries_[i].module != module) continue;
        if (!call(i, kRunStateStarted)) return false;
    }
    return true;
}

void RunStateTable::stop(void *module) noexcept
{
    for (int32_t i = count_ - 1; i >= 0; --i)
        if (entries_[i].module == module) entries_[i].callback(kRunStateAboutToStop);
    for (int32_t i = count_ - 1; i >= 0; --i) {
        if (entries_[i].module != module) continue;
        entries_[i].callback(kRunStateStop);
        entries_[i].started = 0;
    }
    for (int32_t i = 0; i < count_;) {
        if (entries_[i].module == module)
            entries_[i] = entries_[--count_];
        else
            ++i;
    }
}

int32_t RegisterRunStateChangeCallback(void (*callback)(int32_t event)) noexcept
{
    return runStateTable().add(callback, nullptr) ? 1 : 0;
}

}  // namespace tollan::services
