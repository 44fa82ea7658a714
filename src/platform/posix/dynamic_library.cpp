// Run-time loading on dlopen. A Windows library name becomes the name of the
// shared object that plays its part: "Dir\QWUSTE.dll" is "Dir/libqwuste.so".
#include "platform/dynamic_library.h"

#include <dlfcn.h>

#include <cctype>
#include <cstring>
#include <string>

#include "platform/posix/library_name.h"

namespace tollan::platform {

namespace posix {

std::string sharedObjectName(const char *windowsName)
{
    std::string name(windowsName);
    for (char &c : name)
        if (c == '\\') c = '/';
    const size_t baseStart = name.rfind('/') == std::string::npos ? 0 : name.rfind('/') + 1;
    std::string base = name.substr(baseStart);
    for (char &c : base) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));

    const size_t dot = base.rfind('.');
    if (dot != std::string::npos && base.substr(dot) != ".dll") return name;  // not a DLL name: as given
    if (dot != std::string::npos) base.erase(dot);
    if (base.rfind("lib", 0) != 0) base.insert(0, "lib");
    return name.substr(0, baseStart) + base + ".so";
}

}  // namespace posix

void *loadLibrary(const char *windowsName) noexcept
{
    if (!windowsName || !*windowsName) return nullptr;
    try {
        return dlopen(posix::sharedObjectName(windowsName).c_str(), RTLD_NOW | RTLD_LOCAL);
    } catch (...) {
        return nullptr;
    }
}

void *librarySymbol(void *library, const char *name) noexcept
{
    if (!library || !name) return nullptr;
    return dlsym(library, name);
}

void unloadLibrary(void *library) noexcept
{
    if (library) dlclose(library);
}

void *loadModuleContaining(const void *address) noexcept
{
    Dl_info info{};
    if (address == nullptr || dladdr(address, &info) == 0 || info.dli_fname == nullptr) return nullptr;
    // RTLD_NOLOAD finds the loaded object and counts one more user of it.
    return dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
}

size_t moduleFileName(const void *address, char *buffer, size_t size) noexcept
{
    Dl_info info{};
    if (buffer == nullptr || size == 0) return 0;
    buffer[0] = '\0';
    if (address == nullptr || dladdr(address, &info) == 0 || info.dli_fname == nullptr) return 0;
    const size_t length = std::strlen(info.dli_fname);
    if (length >= size) return 0;
    std::memcpy(buffer, info.dli_fname, length + 1);
    return length;
}

}  // namespace tollan::platform
