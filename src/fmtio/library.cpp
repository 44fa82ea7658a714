#include "fmtio/library.h"

#include "fmtio/file_table.h"
#include "fmtio/thread_state.h"

namespace tollan::fmtio {

bool FmtIOLibInitOnce() noexcept
{
    return createFileTable() && reserveThreadSlot();
}

void FmtIOLibCleanup() noexcept
{
    destroyFileTable();
    releaseThreadSlot();
}

void FmtIOLibThreadCleanup() noexcept
{
    freeThreadBlock();
}

}  // namespace tollan::fmtio
