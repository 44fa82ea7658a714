#include "platform/posix/event_state.h"

#include <cerrno>

#include "platform/posix/deadline.h"

namespace tollan::platform::posix {

bool initEventState(EventState *state, bool manualReset, bool initiallySet, bool processShared) noexcept
{
    state->manualReset = manualReset ? 1 : 0;
    state->signalled = initiallySet ? 1 : 0;
    state->waiters = 0;
    state->releases = 0;
    state->generation = 0;

    pthread_mutexattr_t mutexAttributes;
    pthread_mutexattr_init(&mutexAttributes);
    if (processShared) {
        pthread_mutexattr_setpshared(&mutexAttributes, PTHREAD_PROCESS_SHARED);
        pthread_mutexattr_setrobust(&mutexAttributes, PTHREAD_MUTEX_ROBUST);
    }
    const int mutexError = pthread_mutex_init(&state->mutex, &mutexAttributes);
    pthread_mutexattr_destroy(&mutexAttributes);
    if (mutexError != 0) return false;

    pthread_condattr_t condAttributes;
    pthread_condattr_init(&condAttributes);
    pthread_condattr_setclock(&condAttributes, CLOCK_MONOTONIC);
    if (processShared) pthread_condattr_setpshared(&condAttributes, PTHREAD_PROCESS_SHARED);
    const int condError = pthread_cond_init(&state->changed, &condAttributes);
    pthread_condattr_destroy(&condAttributes);
    if (condError != 0) {
        pthread_mutex_destroy(&state->mutex);
        return false;
    }
    return true;
}

void destroyEventState(EventState *state) noexcept
{
    pthread_cond_destroy(&state->changed);
    pthread_mutex_destroy(&state->mutex);
}

int lockRecovering(pthread_mutex_t *mutex) noexcept
{
    const int error = pthread_mutex_lock(mutex);
    if (error == EOWNERDEAD) {
        pthread_mutex_consistent(mutex);
        return 0;
    }
    return error;
}

void setEvent(EventState *state) noexcept
{
    if (lockRecovering(&state->mutex) != 0) return;
    if (state->manualReset) {
        state->signalled = 1;
        ++state->generation;
        pthread_cond_broadcast(&state->changed);
    } else if (state->waiters > state->releases) {
        ++state->releases;
        pthread_cond_signal(&state->changed);
    } else {
        state->signalled = 1;
    }
    pthread_mutex_unlock(&state->mutex);
}

void resetEvent(EventState *state) noexcept
{
    if (lockRecovering(&state->mutex) != 0) return;
    state->signalled = 0;
    pthread_mutex_unlock(&state->mutex);
}

namespace {

// Waits once for a change; false when the deadline passed. A dead owner of
// the robust mutex is taken over, as when locking.
bool waitForChange(EventState *state, const timespec *deadline) noexcept
{
    const int error = deadline ? pthread_cond_timedwait(&state->changed, &state->mutex, deadline)
                               : pthread_cond_wait(&state->changed, &state->mutex);
    if (error == EOWNERDEAD) pthread_mutex_consistent(&state->mutex);
    return error != ETIMEDOUT;
}

WaitResult waitManual(EventState *state, const timespec *deadline) noexcept
{
    const uint64_t startGeneration = state->generation;
    while (!state->signalled && state->generation == startGeneration) {
        if (!waitForChange(state, deadline)) {
            return (state->signalled || state->generation != startGeneration) ? WaitResult::signalled
                                                                              : WaitResult::timedOut;
        }
    }
    return WaitResult::signalled;
}

WaitResult waitAuto(EventState *state, const timespec *deadline) noexcept
{
    if (state->signalled) {
        state->signalled = 0;
        return WaitResult::signalled;
    }
    ++state->waiters;
    bool inTime = true;
    while (state->releases == 0 && inTime) inTime = waitForChange(state, deadline);
    --state->waiters;
    if (state->releases == 0) return WaitResult::timedOut;
    --state->releases;
    return WaitResult::signalled;
}

}  // namespace

WaitResult waitEvent(EventState *state, uint32_t timeoutMs) noexcept
{
    timespec deadline{};
    const timespec *limit = nullptr;
    if (timeoutMs != kWaitForever) {
        deadline = monotonicDeadline(timeoutMs);
        limit = &deadline;
    }
    if (lockRecovering(&state->mutex) != 0) return WaitResult::failed;
    const WaitResult result = state->manualReset ? waitManual(state, limit) : waitAuto(state, limit);
    pthread_mutex_unlock(&state->mutex);
    return result;
}

}  // namespace tollan::platform::posix
