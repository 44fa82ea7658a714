#include "services/lifecycle.h"

namespace tollan::services {
namespace {

constinit Lifecycle record;

}  // namespace

Lifecycle &lifecycle() noexcept
{
    return record;
}

bool isDetaching() noexcept
{
    return record.detaching.load();
}

bool isClosed() noexcept
{
    return record.closed.load();
}

void setStartupFailure() noexcept
{
    record.startupFailure.store(true);
}

uint32_t mainThreadId() noexcept
{
    return record.mainThreadId;
}

bool osVersionKnown() noexcept
{
    return record.platformDetected;
}

}  // namespace tollan::services
