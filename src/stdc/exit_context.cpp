#include "stdc/exit_context.h"

#include <atomic>

namespace tollan::stdc {
namespace {

std::jmp_buf context;
std::atomic<bool> armed{false};

}  // namespace

std::jmp_buf &exitResumptionContext() noexcept
{
    return context;
}

void armExitResumption() noexcept
{
    armed.store(true);
}

void disarmExitResumption() noexcept
{
    armed.store(false);
}

bool resumeAtExitContext(int exitCode) noexcept
{
    if (!armed.exchange(false)) return false;
    std::longjmp(context, exitCode != 0 ? exitCode : 1);
}

}  // namespace tollan::stdc
