#include "engine/host_module.h"

#include "platform/system.h"

namespace tollan::engine {
namespace {

constinit HostModule host;

}  // namespace

bool HostModule::remember() noexcept
{
    handle = platform::mainProgramHandle();
    if (handle == nullptr) return false;
    const size_t length = platform::mainProgramFileName(fileName, sizeof fileName);
    if (length == 0) return false;
    fileNameBytes = length + 1;
    return true;
}

HostModule &hostModule() noexcept
{
    return host;
}

}  // namespace tollan::engine
