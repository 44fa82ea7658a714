#include "services/run_state_table.h"

#include "services/run_state.h"

namespace tollan::services {
namespace {

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

// Every walk re-reads count_ after each call: a callback may register more.
void RunStateTable::start(void *module) noexcept
{
    for (int32_t i = 0; i < count_; ++i) {
        if (module != nullptr && entries_[i].module != module) continue;
        entries_[i].callback(kRunStateStart);
        entries_[i].started = 1;
    }
    for (int32_t i = 0; i < count_; ++i)
        if (module == nullptr || entries_[i].module == module) entries_[i].callback(kRunStateStarted);
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
