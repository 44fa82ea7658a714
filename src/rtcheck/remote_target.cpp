#include "rtcheck/remote_target.h"

#include <atomic>

namespace tollan::rtcheck {
namespace {

std::atomic<const RemoteTargetLink *> installed{nullptr};

}  // namespace

void setRemoteTargetLink(const RemoteTargetLink *link) noexcept
{
    installed.store(link, std::memory_order_release);
}

const RemoteTargetLink *remoteTargetLink() noexcept
{
    return installed.load(std::memory_order_acquire);
}

}  // namespace tollan::rtcheck
