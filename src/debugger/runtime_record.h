// The process-wide run-time record: one per process, shared by every module
// that carries the library (two copies of it, say). The first module to
// start makes it and publishes its address in the per-process mapping
// "Vantrel - ZOR Runtime Info Shared Memory<pid>"; later ones adopt it. Its
// operations point into the owning module, so that every module reaches the
// thread-state records through the owner's thread-local storage.
#pragma once

#include <cstddef>
#include <cstdint>

#include <tollan/debugger.h>

#include "debugger/library.h"
#include "platform/lock.h"

namespace tollan::debugger {

struct BackendTable;

// A thread and the value it registered (its thread-state record).
struct ThreadRegistration {
    uint32_t threadId;
    void *value;
    ThreadRegistration *next;
};

// A clean-up registered for the end of the run (__RegisterAtExitCleanup).
struct AtExitCleanup {
    intptr_t function;  // void (*)(intptr_t, intptr_t, intptr_t)
    intptr_t arguments[3];
    AtExitCleanup *next;
};

struct ResourceEntry;

// The tracked resources (resource tracking): the hash table and its lock.
// The address of this table is what "resources_final_tally" hands the debugger.
struct ResourceTable {
    ResourceEntry *
        *buckets;  // swapped out while it changes, so readers outside the lock never see it half done
    uint64_t bucketCount;
    uint64_t entryCount;
    uint64_t idCounter;
    platform::RecursiveLock *lock;
    // Every entry, oldest first, also chained in the order of acquisition:
    // a dump walks this chain instead of the buckets.
    ResourceEntry *oldest;
    ResourceEntry *newest;
};

struct RuntimeRecord {
    // The words the debugger reads through the shared information block.
    void *ownerInstance;           // 0: the module that made the record
    void *debugControl;            // 8: the debugger's control block (DebugControl)
    uint64_t threadEnvIndex;       // 16: the thread-local index of thread-state records
    ThreadRegistration **threads;  // 24: the head of the thread registrations

    // Operations of the owning module.
    ZORThreadEnv *(*newThreadEnv)() noexcept;  // allocates and resets a record; null without memory
    void (*releaseThreadEnv)(void *record) noexcept;
    void *(*threadValue)(uint64_t index) noexcept;
    bool (*setThreadValue)(uint64_t index, void *value) noexcept;
    void *(*allocate)(size_t bytes) noexcept;
    void (*free)(void *block) noexcept;
    intptr_t (*registerAtExitCleanup)(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t) noexcept;
    intptr_t (*unregisterAtExitCleanup)(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t) noexcept;

    // The record a thread gets when no memory is left for its own; taken
    // (1) by at most one thread at a time.
    ZORThreadEnv *spareThreadEnv;
    uint32_t spareTaken;

    platform::RecursiveLock *connectionLock;
    platform::RecursiveLock *threadLock;
    ThreadRegistration *threadList;
    AtExitCleanup *atExitCleanups;

    // The debug connection (shared by the modules).
    BackendTable *backend;
    int32_t connectionMode;  // 0 none, 1 local, 2 remote
    char moduleFileName[260];

    ResourceTable resources;
};

// The record, or null when the process has none (start-up did not get that far).
RuntimeRecord *runtimeRecord() noexcept;
// Whether this module made the record (and owns its clean-up).
bool ownsRuntimeRecord() noexcept;

// Start-up (ZORDebugInitialize): makes or adopts the record under the
// "Vantrel - ZOR Runtime Info Mutex<pid>" mutex. 0, -102 (no mutex) or -103
// (no thread-local index, no memory).
int32_t CdbSynchronizeInitialize() noexcept;

// Registers the calling thread with `value` (its record); a value it had
// before is released.
void registerCurrentThread(void *value) noexcept;
// Clears the calling thread's registration (its record is being freed).
void unregisterCurrentThread() noexcept;

}  // namespace tollan::debugger
