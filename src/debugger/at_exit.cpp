#include "debugger/at_exit.h"

#include <mutex>

#include "debugger/runtime_record.h"

namespace tollan::debugger {
namespace {

using CleanupFunction = void (*)(intptr_t, intptr_t, intptr_t);

}  // namespace

intptr_t registerAtExitCleanup(intptr_t function, intptr_t a, intptr_t b, intptr_t c, intptr_t flags) noexcept
{
    RuntimeRecord *record = runtimeRecord();
    if (record == nullptr || function == 0 || flags != 0) return 0;
    auto *cleanup = static_cast<AtExitCleanup *>(record->allocate(sizeof(AtExitCleanup)));
    if (cleanup == nullptr) return 0;
    std::lock_guard hold(*record->threadLock);
    *cleanup = AtExitCleanup{function, {a, b, c}, record->atExitCleanups};
    record->atExitCleanups = cleanup;
    return 1;
}

intptr_t unregisterAtExitCleanup(intptr_t function, intptr_t a, intptr_t b, intptr_t c,
                                 intptr_t flags) noexcept
{
    RuntimeRecord *record = runtimeRecord();
    if (record == nullptr || flags != 0) return 0;
    std::lock_guard hold(*record->threadLock);
    for (AtExitCleanup **link = &record->atExitCleanups; *link != nullptr; link = &(*link)->next) {
        AtExitCleanup *cleanup = *link;
        if (cleanup->function == function && cleanup->arguments[0] == a && cleanup->arguments[1] == b &&
            cleanup->arguments[2] == c) {
            *link = cleanup->next;
            record->free(cleanup);
            return 1;
        }
    }
    return 0;
}

void runAtExitCleanups() noexcept
{
    RuntimeRecord *record = runtimeRecord();
    if (record == nullptr) return;
    for (;;) {
        AtExitCleanup *cleanup = nullptr;
        {
            std::lock_guard hold(*record->threadLock);
            cleanup = record->atExitCleanups;
            if (cleanup == nullptr) return;
            record->atExitCleanups = cleanup->next;
        }
        // Called without the lock: a clean-up may register or unregister others.
        reinterpret_cast<CleanupFunction>(cleanup->function)(cleanup->arguments[0], cleanup->arguments[1],
                                                             cleanup->arguments[2]);
        record->free(cleanup);
    }
}

}  // namespace tollan::debugger
