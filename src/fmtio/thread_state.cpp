#include "fmtio/thread_state.h"

#include "fmtio/log_module.h"
#include "services/resource_failure.h"
#include "services/thread_record.h"

namespace tollan::fmtio {
namespace {

constinit services::ThreadRecordSlot blockSlot;

// Used by a thread whose own block could not be made (no memory, or the
// library has shut down while the thread still calls it): one per thread,
// so that threads never share an error.
constinit thread_local ThreadBlock fallbackBlock{};

}  // namespace

ThreadBlock &threadBlock() noexcept
{
    if (void *block = blockSlot.record(sizeof(ThreadBlock))) return *static_cast<ThreadBlock *>(block);
    if (blockSlot.held())
        TOLLAN_RESOURCE_FAILURE(kLogModule, "threadBlock", "no memory for the thread's I/O error block");
    return fallbackBlock;
}

bool reserveThreadSlot() noexcept
{
    return blockSlot.reserve();
}

void freeThreadBlock() noexcept
{
    blockSlot.freeRecord();
}

void releaseThreadSlot() noexcept
{
    blockSlot.release();
}

}  // namespace tollan::fmtio
