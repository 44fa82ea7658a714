#include "fmtio/fmt_results.h"

namespace tollan::fmtio {
namespace {

// Three numbers need no slot in the thread-variable scheme and no clean-up
// at thread detach: a plain thread variable holds them.
constinit thread_local FormatResults results{};

}  // namespace

FormatResults &formatResults() noexcept
{
    return results;
}

}  // namespace tollan::fmtio
