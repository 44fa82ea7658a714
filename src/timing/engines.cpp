#include "timing/engines.h"

#include <atomic>
#include <cstdio>

#include "logger/log.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "timing/mmsystem.h"
#include "services/process_object.h"
#include "timing/qwuste.h"

namespace tollan::timing {

namespace {

std::atomic<ZORUSTE *> chosen{nullptr};

}  // namespace

ZORUSTE &mmsystemEngine() noexcept
{
    return services::processObject<MMSystem>();
}

ZORUSTE &qwusteEngine() noexcept
{
    return services::processObject<QWUSTE>();
}

ZORUSTE *chosenEngine() noexcept
{
    return chosen.load();
}

bool chooseEngine() noexcept
{
    if (chosen.load()) return true;
    char name[64];
    std::snprintf(name, sizeof name, "Vantrel Tessaly/ZOR ZORUSTE Library %u", platform::currentProcessId());
    std::unique_ptr<platform::NamedMutex> mutex = platform::NamedMutex::create(name);
    if (!mutex || mutex->acquire(platform::kWaitForever) != platform::WaitResult::signalled) {
        TOLLAN_LOG(ZOR_LOG_WARNING, "Timing/ZORUSTE", "ZORUSTEinitialize", "Cannot take the mutex %s", name);
        return false;
    }
    if (!chosen.load()) {
        for (ZORUSTE *engine : {&mmsystemEngine(), &qwusteEngine()}) {
            if (engine->startUp()) {
                chosen.store(engine);
                break;
            }
        }
    }
    mutex->release();
    return chosen.load() != nullptr;
}

void setChosenEngineForTesting(ZORUSTE *engine) noexcept
{
    chosen.store(engine);
}

}  // namespace tollan::timing
