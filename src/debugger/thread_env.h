// Thread-state records: making, resetting and freeing them, and the hook
// through which run-time checking fills a fresh checking environment.
#pragma once

#include <tollan/debugger.h>

#include "debugger/library.h"

namespace tollan::debugger {

// Fills a fresh checking environment (ZOR_CHECKING_ENVIRONMENT_SIZE bytes).
// Run-time checking installs its own; until then a fresh one is all zeros.
using CheckingEnvironmentInitializer = void (*)(void *environment) noexcept;
void setCheckingEnvironmentInitializer(CheckingEnvironmentInitializer initializer) noexcept;
void initializeCheckingEnvironment(void *environment) noexcept;

// Clears the record and gives it fresh checking environments.
void resetThreadEnv(ZORThreadEnv *record) noexcept;

// The owner's operations of the run-time record, and its spare.
ZORThreadEnv *newThreadEnv() noexcept;
void releaseThreadEnv(void *record) noexcept;
ZORThreadEnv *ownSpareThreadEnv() noexcept;

// Frees the calling thread's record (thread detach); harmless when it has none.
void releaseCurrentThreadEnv() noexcept;

// The calling thread's record without making one; null when it has none.
ZORThreadEnv *existingThreadEnv() noexcept;

// Frees the calling thread's per-thread debugger data.
void freeExecutionThreadData() noexcept;

}  // namespace tollan::debugger
