// Loads two copies of the shared library (under two file names) into one
// process: the first makes the run-time record, the second must adopt it, so
// that both give every thread the same thread-state record. Usage:
// two_copies_probe LIBRARY COPY. Exit status 0 when they agree.
#include <cstdio>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

struct Copy {
    void *handle = nullptr;
    void *(*runtimeRecord)(uint32_t *) = nullptr;
    void *(*threadEnv)() = nullptr;
};

bool load(const char *path, Copy *copy)
{
#ifdef _WIN32
    copy->handle = LoadLibraryA(path);
    auto find = [&](const char *name) {
        return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(copy->handle), name));
    };
#else
    copy->handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    auto find = [&](const char *name) { return dlsym(copy->handle, name); };
#endif
    if (copy->handle == nullptr) return false;
    copy->runtimeRecord = reinterpret_cast<void *(*)(uint32_t *)>(find("__GetLocalThreadEnvSlot"));
    copy->threadEnv = reinterpret_cast<void *(*)()>(find("__DBG_GetCurrentThreadEnv"));
    return copy->runtimeRecord != nullptr && copy->threadEnv != nullptr;
}

void unload(Copy *copy)
{
#ifdef _WIN32
    FreeLibrary(static_cast<HMODULE>(copy->handle));
#else
    dlclose(copy->handle);
#endif
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 3) return 2;
    Copy first;
    Copy second;
    if (!load(argv[1], &first) || !load(argv[2], &second)) {
        std::printf("cannot load both copies\n");
        return 1;
    }
    uint32_t firstIndex = 0;
    uint32_t secondIndex = 1;
    void *firstRecord = first.runtimeRecord(&firstIndex);
    void *secondRecord = second.runtimeRecord(&secondIndex);
    bool agree = firstRecord != nullptr && firstRecord == secondRecord && firstIndex == secondIndex &&
                 first.threadEnv() == second.threadEnv();
    std::thread([&] { agree = agree && first.threadEnv() == second.threadEnv(); }).join();
    // The adopting copy goes first; the copy that made the record stays
    // loaded as long as the other needs it.
    unload(&second);
    unload(&first);
    std::printf(agree ? "one record\n" : "records differ: %p %p\n", firstRecord, secondRecord);
    return agree ? 0 : 1;
}
