#include "process_memory.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace tollan::monitor {

bool ProcessMemory::read(uint64_t address, void *buffer, size_t size) const noexcept
{
    if (size == 0) return true;
    if (address == 0 || address + size < address) return false;
    size_t done = 0;
    while (done < size) {
        iovec local{static_cast<char *>(buffer) + done, size - done};
        iovec remote{reinterpret_cast<void *>(static_cast<uintptr_t>(address + done)), size - done};
        const ssize_t got = process_vm_readv(pid_, &local, 1, &remote, 1, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0 && errno == EPERM && refusal_ == Refusal::none) refusal_ = Refusal::unreported;
        // A short count means the range runs into an unmapped page.
        if (got <= 0) return false;
        done += static_cast<size_t>(got);
    }
    return true;
}

bool ProcessMemory::newlyRefused() noexcept
{
    if (refusal_ != Refusal::unreported) return false;
    refusal_ = Refusal::reported;
    return true;
}

std::optional<std::string> ProcessMemory::text(uint64_t address, size_t limit) const
{
    if (address == 0) return std::nullopt;
    static const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    std::string result;
    char chunk[512];
    while (result.size() < limit) {
        // Never read across a page boundary at once: the text may end just
        // before a page that is not mapped.
        const uint64_t at = address + result.size();
        size_t count = std::min({sizeof chunk, limit - result.size(), page - static_cast<size_t>(at % page)});
        if (!read(at, chunk, count)) {
            if (result.empty()) return std::nullopt;
            break;
        }
        const void *end = std::memchr(chunk, '\0', count);
        if (end != nullptr) count = static_cast<size_t>(static_cast<const char *>(end) - chunk);
        result.append(chunk, count);
        if (end != nullptr) break;
    }
    return result;
}

std::string ProcessMemory::describeText(uint64_t address) const
{
    if (address == 0) return "<none>";
    if (std::optional<std::string> found = text(address)) return *found;
    char unreadable[48];
    std::snprintf(unreadable, sizeof unreadable, "<unreadable 0x%" PRIx64 ">", address);
    return unreadable;
}

}  // namespace tollan::monitor
