#include "timing/scratch.h"

#include "services/thread_record.h"

namespace tollan::timing {

namespace {

constinit services::ThreadRecordSlot scratchSlot;

}  // namespace

bool reserveScratchSlot() noexcept
{
    return scratchSlot.reserve();
}

void releaseScratchSlot() noexcept
{
    scratchSlot.release();
}

char *threadScratch() noexcept
{
    return static_cast<char *>(scratchSlot.record(kScratchBytes));
}

void freeThreadScratch() noexcept
{
    scratchSlot.freeRecord();
}

}  // namespace tollan::timing
