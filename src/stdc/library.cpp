#include "stdc/library.h"

#include "stdc/stream.h"
#include "stdc/temporary_names.h"

namespace tollan::stdc {

bool StdCLibInitOnce() noexcept
{
    resetStandardStreams();
    resetTemporaryNames();
    return true;
}

void StdCLibCleanup() noexcept
{
    closeAllStreams();
}

}  // namespace tollan::stdc
