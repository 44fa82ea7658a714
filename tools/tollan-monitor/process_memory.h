// Reading the program's memory while it waits for the monitor. A monitor
// that started the program is its parent, so process_vm_readv is allowed
// even where Yama's ptrace_scope 1 restricts tracing to a process's
// ancestors; a program that started the monitor grants it the same with
// PR_SET_PTRACER. Otherwise the system may refuse every read.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace tollan::monitor {

class ProcessMemory {
public:
    explicit ProcessMemory(pid_t pid) noexcept : pid_(pid) {}

    // Copies `size` bytes at `address` of the program into `buffer`. False
    // when any of them cannot be read (a bad address, the program gone, the
    // monitor not allowed to); the buffer's contents are then unspecified.
    bool read(uint64_t address, void *buffer, size_t size) const noexcept;
    template <typename Value>
    bool read(uint64_t address, Value *value) const noexcept
    {
        return read(address, value, sizeof *value);
    }

    // The NUL-terminated text at `address`, cut at `limit` bytes; nothing
    // when its first byte cannot be read or the address is 0.
    std::optional<std::string> text(uint64_t address, size_t limit = 4096) const;
    // The same for a report: "<none>" for address 0 and "<unreadable
    // 0x...>" when it cannot be read.
    std::string describeText(uint64_t address) const;

    // True once, after the first read that the system refused because the
    // monitor may not read this process at all (not for a bad address).
    bool newlyRefused() noexcept;

private:
    pid_t pid_;
    enum class Refusal { none, unreported, reported };
    mutable Refusal refusal_ = Refusal::none;
};

}  // namespace tollan::monitor
