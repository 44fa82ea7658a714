#include "served_program.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace tollan::monitor {

int openExitFd(pid_t pid) noexcept
{
#ifdef SYS_pidfd_open
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
#else
    (void)pid;
    return -1;
#endif
}

}  // namespace tollan::monitor
