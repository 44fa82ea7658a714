// tmpnam, and the two file-system calls beside it: remove and rename.
#include "stdc/temporary_names.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <mutex>

#include <tollan/ansi_c.h>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/lock.h"
#include "platform/thread.h"
#include "services/path_check.h"
#include "services/process_object.h"
#include "stdc/descriptors.h"
#include "stdc/stream.h"

namespace tollan::stdc {
namespace {

constexpr int kFailingCall = 999;
constexpr unsigned kNumbers = 1000;

struct TemporaryNames {
    platform::RecursiveLock lock;
    int calls = 0;
    unsigned nextNumber = 0;
    // The folder and the per-process stem, found once.
    char prefix[TOLLAN_L_tmpnam] = {};
};

TemporaryNames &names() noexcept
{
    return services::processObject<TemporaryNames>();
}

bool findPrefix(TemporaryNames &state) noexcept
{
    if (state.prefix[0] != '\0') return true;
    const size_t length = platform::temporaryDirectory(state.prefix, sizeof state.prefix);
    if (length == 0) return false;
    // The process id with a value fixed for the process, so that two
    // processes of the same id (one after the other) pick different names.
    int64_t counter = 0;
    platform::performanceCounter(&counter);
    const int written = std::snprintf(state.prefix + length, sizeof state.prefix - length, "%u_%x",
                                      platform::currentProcessId(), static_cast<unsigned>(counter));
    if (written < 0 || length + static_cast<size_t>(written) + 3 >= sizeof state.prefix) {
        state.prefix[0] = '\0';
        return false;
    }
    return true;
}

bool nameExists(const char *name) noexcept
{
    bool exists = false;
    int64_t size = 0;
    return platform::queryFileSize(name, &exists, &size) != platform::FileError::none || exists;
}

}  // namespace

void resetTemporaryNames() noexcept
{
    TemporaryNames &state = names();
    std::lock_guard hold(state.lock);
    state.calls = 0;
    state.nextNumber = 0;
}

}  // namespace tollan::stdc

using namespace tollan::stdc;

char *tollan_tmpnam(char *buffer) noexcept
{
    thread_local char threadBuffer[TOLLAN_L_tmpnam];
    TemporaryNames &state = names();
    std::lock_guard hold(state.lock);
    if (++state.calls == kFailingCall) {
        setErrno(EINVAL);
        return nullptr;
    }
    char *target = buffer != nullptr ? buffer : threadBuffer;
    if (!findPrefix(state)) {
        setErrno(EINVAL);
        return nullptr;
    }
    // findPrefix left room for the three digits and the terminator.
    const size_t length = std::strlen(state.prefix);
    std::memcpy(target, state.prefix, length);
    while (state.nextNumber < kNumbers) {
        const unsigned number = state.nextNumber++;
        target[length] = static_cast<char>('0' + number / 100);
        target[length + 1] = static_cast<char>('0' + number / 10 % 10);
        target[length + 2] = static_cast<char>('0' + number % 10);
        target[length + 3] = '\0';
        if (!nameExists(target)) return target;
    }
    setErrno(EEXIST);
    return nullptr;
}

int tollan_remove(const char *path) noexcept
{
    if (tollan::services::checkPath(path) != tollan::platform::FileError::none) {
        setErrno(EINVAL);
        return -1;
    }
    const tollan::platform::FileError error = tollan::platform::removeFile(path);
    if (error == tollan::platform::FileError::none) return 0;
    setErrno(errnoOf(error));
    return -1;
}

int tollan_rename(const char *from, const char *to) noexcept
{
    if (tollan::services::checkPath(from) != tollan::platform::FileError::none ||
        tollan::services::checkPath(to) != tollan::platform::FileError::none) {
        setErrno(EINVAL);
        return -1;
    }
    const tollan::platform::FileError error = tollan::platform::renameFile(from, to);
    if (error == tollan::platform::FileError::none) return 0;
    setErrno(errnoOf(error));
    return -1;
}
