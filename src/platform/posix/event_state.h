// The state of an event and the algorithm that waits on it, shared by the
// process-local events and the named ones that live in shared memory.
#pragma once

#include <pthread.h>

#include <cstdint>

#include "platform/event.h"

namespace tollan::platform::posix {

// A plain record (no constructor) so that it can live in a shared mapping.
struct EventState {
    pthread_mutex_t mutex;
    pthread_cond_t changed;
    uint32_t manualReset;
    uint32_t signalled;
    // Auto-reset: threads waiting, and how many of them a set() has released
    // but that have not yet woken. Every set() with a waiter not yet released
    // lets exactly one waiter go, and the event stays reset.
    uint32_t waiters;
    uint32_t releases;
    // Manual-reset: bumped by every set(), so that the threads that were
    // waiting at that moment go even when a reset() follows at once.
    uint64_t generation;
};

// Sets up `state` in place; processShared for a state in shared memory
// (its mutex is then robust, so that a process dying inside does not block
// the others). False when the system refuses the mutex or condition.
bool initEventState(EventState *state, bool manualReset, bool initiallySet, bool processShared) noexcept;
void destroyEventState(EventState *state) noexcept;

void setEvent(EventState *state) noexcept;
void resetEvent(EventState *state) noexcept;
WaitResult waitEvent(EventState *state, uint32_t timeoutMs) noexcept;

// Locks a mutex that may be robust: an owner that died is taken over.
// Returns 0, or the error of pthread_mutex_lock.
int lockRecovering(pthread_mutex_t *mutex) noexcept;

}  // namespace tollan::platform::posix
