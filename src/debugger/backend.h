// A transport of the debug channel: its operation table. Slot numbers are
// part of the design (the remote target link fills the same table over
// TCP/IP); empty slots are operations the transport does not have.
#pragma once

#include <cstddef>
#include <cstdint>

#include <tollan/debugger.h>

namespace tollan::debugger {

struct BackendTable {
    void *reserved0;  // 0
    void *reserved1;  // 1
    int32_t (*connect)(void *module, const char *moduleFileName, intptr_t argument,
                       int32_t port) noexcept;        // 2
    void (*connected)(BackendTable *table) noexcept;  // 3
    int32_t (*disconnect)(int32_t flag) noexcept;     // 4
    void *reserved5;                                  // 5
    int32_t connectedWord;                            // 6
    int32_t reserved6;
    int32_t (*lock)() noexcept;                                                                // 7
    int32_t (*unlock)() noexcept;                                                              // 8
    int32_t (*breakThread)() noexcept;                                                         // 9
    int32_t (*openSharedMemory)(const char *, uint32_t *, ZORSharedMemoryHandles *) noexcept;  // 10
    int32_t (*newSharedMemory)(const char *, uint32_t, ZORSharedMemoryHandles *) noexcept;     // 11
    int32_t (*discardSharedMemory)(ZORSharedMemoryHandles *) noexcept;                         // 12
    int32_t (*synchronizeMemory)(ZORSharedMemoryHandles *, void *, uint32_t) noexcept;         // 13
    int32_t (*waitForSignal)(const char *name) noexcept;                                       // 14
    void *reserved15;                                                                          // 15
    int32_t (*standardOutput)(const void *buffer, uint32_t count) noexcept;                    // 16
    void *reserved17;                                                                          // 17
    int32_t (*registerThread)() noexcept;                                                      // 18
    void (*threadEnds)() noexcept;                                                             // 19
    void *reserved20;                                                                          // 20
    void *reserved21;                                                                          // 21
    int32_t (*breakIsEnabled)(int32_t kind) noexcept;                                          // 22
};

static_assert(offsetof(BackendTable, connect) == 2 * sizeof(void *));
static_assert(offsetof(BackendTable, connectedWord) == 6 * sizeof(void *));
static_assert(offsetof(BackendTable, openSharedMemory) == 10 * sizeof(void *));
static_assert(offsetof(BackendTable, standardOutput) == 16 * sizeof(void *));
static_assert(offsetof(BackendTable, breakIsEnabled) == 22 * sizeof(void *));

// The two transports.
BackendTable &localBackend() noexcept;
BackendTable &remoteBackend() noexcept;

}  // namespace tollan::debugger
