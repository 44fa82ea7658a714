#include "rtcheck_twins/twin_status.h"

#include <cstring>

#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"

namespace tollan::rtcheck {

bool libraryBreaksWanted() noexcept
{
    if (!checkingLevel()) return false;
    const ThreadReportState &state = threadReportState();
    return state.breakOnLibraryErrors != 0 && state.evaluatingCondition == 0;
}

void breakOnResult(intptr_t value, const char *elaboration, const void *plain) noexcept
{
    void *address = const_cast<void *>(plain);
    if (elaboration != nullptr)
        _UPLibBreakpointWithElab(nullptr, value, elaboration, address);
    else
        _UPLibBreakpoint(nullptr, value, address);
}

void breakOnErrno(const void *plain) noexcept
{
    const int error = errno;
    _UPLibBreakpointWithElab("errno", error, std::strerror(error), const_cast<void *>(plain));
}

}  // namespace tollan::rtcheck
