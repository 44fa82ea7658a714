#include "rtcheck/error_file.h"

#include <atomic>

#include <tollan/rtcheck.h>

namespace tollan::rtcheck {
namespace {

std::atomic<TollanFILE *> stream{nullptr};

}  // namespace

TollanFILE *errorFile() noexcept
{
    return stream.load(std::memory_order_acquire);
}

}  // namespace tollan::rtcheck

void __SetUPErrorFile(void *file) noexcept
{
    tollan::rtcheck::stream.store(static_cast<TollanFILE *>(file), std::memory_order_release);
}
