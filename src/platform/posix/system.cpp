// Process and system facts, and the stand-ins for the debugger-facing calls.
#include "platform/system.h"

#include <dlfcn.h>
#include <pthread.h>
#include <fcntl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <string>

namespace tollan::platform {

bool osVersion(uint32_t *major, uint32_t *minor) noexcept
{
    utsname names{};
    unsigned kernelMajor = 0, kernelMinor = 0;
    if (!major || !minor || uname(&names) != 0 ||
        std::sscanf(names.release, "%u.%u", &kernelMajor, &kernelMinor) != 2)
        return false;
    *major = kernelMajor;
    *minor = kernelMinor;
    return true;
}

void *mainProgramHandle() noexcept
{
    static void *const handle = dlopen(nullptr, RTLD_LAZY);
    return handle;
}

size_t mainProgramFileName(char *buffer, size_t size) noexcept
{
    if (!buffer || size == 0) return 0;
    const ssize_t length = readlink("/proc/self/exe", buffer, size - 1);
    if (length < 0) {
        buffer[0] = '\0';
        return 0;
    }
    buffer[length] = '\0';  // a name too long for the buffer is cut short
    return static_cast<size_t>(length);
}

bool putEnvironmentSetting(const char *setting) noexcept
{
    const char *equals = std::strchr(setting, '=');
    if (equals == nullptr || equals == setting) {
        errno = EINVAL;
        return false;
    }
    std::string name;
    try {
        name.assign(setting, equals);
    } catch (...) {
        errno = ENOMEM;
        return false;
    }
    // As on Windows, an empty value removes the variable.
    const int result = equals[1] == '\0' ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), equals + 1, 1);
    return result == 0;
}

int startupShowWindowCode() noexcept
{
    return 10;
}

uint32_t registerWindowMessage(const char *name) noexcept
{
    if (!name || !*name) return 0;
    static std::mutex mutex;
    // Never destroyed: messages may still be registered while the process ends.
    static auto *ids = new (std::nothrow) std::map<std::string, uint32_t>;
    if (!ids) return 0;
    try {
        std::string key(name);
        for (char &c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        std::lock_guard guard(mutex);
        const auto found = ids->find(key);
        if (found != ids->end()) return found->second;
        const uint32_t id = 0xC000 + static_cast<uint32_t>(ids->size());
        if (id > 0xFFFF) return 0;
        ids->emplace(std::move(key), id);
        return id;
    } catch (...) {
        return 0;
    }
}

namespace {

bool writeAll(int fd, const char *text, size_t length) noexcept
{
    while (length > 0) {
        const ssize_t written = write(fd, text, length);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        text += written;
        length -= static_cast<size_t>(written);
    }
    return true;
}

// strerror_r comes in two flavours; either way the text ends up in `buffer`.
[[maybe_unused]] const char *errorText(int result, const char *buffer) noexcept
{
    return result == 0 ? buffer : nullptr;
}
[[maybe_unused]] const char *errorText(const char *result, const char *) noexcept
{
    return result;
}

}  // namespace

void systemErrorText(int code, char *buffer, size_t size) noexcept
{
    if (!buffer || size == 0) return;
    char scratch[256] = "";
    const char *text = errorText(strerror_r(code, scratch, sizeof scratch), scratch);
    if (!text) {
        std::snprintf(buffer, size, "Unknown error %d", code);
        return;
    }
    std::snprintf(buffer, size, "%s", text);
}

int beep() noexcept
{
    if (isatty(STDERR_FILENO)) writeAll(STDERR_FILENO, "\a", 1);
    return 1;
}

void exitProcess(int code) noexcept
{
    std::exit(code);
}

void setForkChildHandler(void (*handler)()) noexcept
{
    // glibc forgets the handlers of a library when it is unloaded.
    pthread_atfork(nullptr, nullptr, handler);
}

}  // namespace tollan::platform
