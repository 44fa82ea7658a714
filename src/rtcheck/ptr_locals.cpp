// Locals read before they are set: compiled code keeps one mark per checked
// local in its frame, sets it on each assignment and checks it on each read.
// A read reported once sets the mark, so one fault is reported once.
#include <cstdint>
#include <cstring>

#include <tollan/rtcheck.h>

#include "rtcheck/ptr_checks.h"

namespace {

constexpr int32_t kUnsetLocal = 198;
constexpr int32_t kUnsetNamedLocal = 199;

}  // namespace

extern "C" {

void _LocalsRuntimeInit(unsigned char *marks, uint32_t count) noexcept
{
    if (marks != nullptr) std::memset(marks, 0, count);
}

void _LocalsRuntimeSet(unsigned char *marks, uint32_t index) noexcept
{
    if (marks != nullptr) marks[index] = 1;
}

void _LocalsRuntimeCheck(unsigned char *marks, uint32_t index, const char *name, int32_t line,
                         int32_t col) noexcept
{
    if (marks == nullptr || marks[index] != 0) return;
    marks[index] = 1;
    if (name != nullptr)
        ReportUPError(tollan::rtcheck::kCheckSeverity, kUnsetNamedLocal, line, col, name);
    else
        ReportUPError(tollan::rtcheck::kCheckSeverity, kUnsetLocal, line, col);
}

}  // extern "C"
