// Saving the thread's checking environment around a callback from library
// code into user code: the user code's checked calls overwrite the hand-over
// area and the variadic types of the call that the library is still in.
#include <cstring>

#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

namespace {

static_assert(sizeof(ZORSavedCheckingEnv::environment) == ZOR_CHECKING_ENVIRONMENT_SIZE);

// A saved copy carries its own address mixed with this word, so that a
// restore can tell a copy that was saved (and not yet restored) from stack
// bytes that never were, and from a copy moved elsewhere.
constexpr uint64_t kSealMix = 0x5A4F52454E56ULL;

uint64_t sealOf(const ZORSavedCheckingEnv *saved) noexcept
{
    return reinterpret_cast<uintptr_t>(saved) ^ kSealMix;
}

}  // namespace

int32_t _UPSaveCurrentEnv(ZORSavedCheckingEnv *saved) noexcept
{
    if (saved == nullptr) return 0;
    saved->seal = 0;
    const ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    if (record == nullptr) return 0;
    std::memcpy(saved->environment, record->checkingEnvironment, sizeof saved->environment);
    saved->seal = sealOf(saved);
    return 1;
}

int32_t _UPRestoreCurrentEnv(ZORSavedCheckingEnv *saved) noexcept
{
    if (saved == nullptr || saved->seal != sealOf(saved)) return 0;
    saved->seal = 0;
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    if (record == nullptr) return 0;
    std::memcpy(record->checkingEnvironment, saved->environment, sizeof saved->environment);
    return 1;
}
