#include "rs232/library.h"

#include <atomic>

#include "rs232/errors.h"
#include "rs232/port_table.h"
#include "services/run_state.h"

namespace tollan::rs232 {
namespace {

std::atomic<bool> initialised{false};
std::atomic<int32_t> lastRunState{-1};

// The program's end closes its ports.
void RS232RunStateCallback(int32_t event) noexcept
{
    lastRunState.store(event);
    if (event == services::kRunStateStop) closeAndFreeAllPorts(true);
}

}  // namespace

bool QXRS232Initialize() noexcept
{
    libraryLock();
    if (!reserveErrorSlot()) return false;
    services::RegisterRunStateChangeCallback(RS232RunStateCallback);
    initialised.store(true);
    return true;
}

void QXRS232Shutdown() noexcept
{
    if (!initialised.exchange(false)) return;
    closeAndFreeAllPorts(false);
    freeThreadErrorRecord();
    releaseErrorSlot();
}

void QXRS232ThreadCleanup() noexcept
{
    freeThreadErrorRecord();
}

}  // namespace tollan::rs232
