// Loads and unloads the shared library again and again while threads that
// used its thread variables are still alive, then lets them end. Usage:
// unload_probe LIBRARY CYCLES. Exit status 0 when every cycle worked.
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

using InitializeFunction = int32_t (*)(int32_t *);
using GetFunction = void *(*)(int32_t);
using SetFunction = void (*)(int32_t, void *);

struct Library {
    void *handle = nullptr;
    InitializeFunction initialize = nullptr;
    GetFunction get = nullptr;
    SetFunction set = nullptr;
};

void *symbol(void *handle, const char *name)
{
#ifdef _WIN32
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(handle), name));
#else
    return dlsym(handle, name);
#endif
}

bool load(const char *path, Library *library)
{
#ifdef _WIN32
    library->handle = LoadLibraryA(path);
#else
    library->handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
#endif
    if (library->handle == nullptr) return false;
    library->initialize =
        reinterpret_cast<InitializeFunction>(symbol(library->handle, "InitializeZORThreadVar"));
    library->get = reinterpret_cast<GetFunction>(symbol(library->handle, "GetZORThreadVarValue"));
    library->set = reinterpret_cast<SetFunction>(symbol(library->handle, "SetZORThreadVarValue"));
    return library->initialize && library->get && library->set;
}

void unload(Library *library)
{
#ifdef _WIN32
    FreeLibrary(static_cast<HMODULE>(library->handle));
#else
    dlclose(library->handle);
#endif
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 3) return 2;
    const int cycles = std::atoi(argv[2]);
    for (int cycle = 0; cycle < cycles; ++cycle) {
        Library library;
        if (!load(argv[1], &library)) {
            std::printf("cycle %d: cannot load the library\n", cycle);
            return 1;
        }
        int32_t slot = 0;
        if (library.initialize(&slot) != 1) {
            std::printf("cycle %d: no thread-variable slot\n", cycle);
            return 1;
        }
        std::mutex lock;
        std::condition_variable changed;
        bool used = false;
        bool worked = false;
        bool release = false;
        // The thread stores and reads a value, then waits until the library
        // is gone before it ends.
        std::thread user([&] {
            int value = cycle;
            library.set(slot, &value);
            const bool same = library.get(slot) == &value;
            library.set(slot, nullptr);
            std::unique_lock hold(lock);
            worked = same;
            used = true;
            changed.notify_all();
            changed.wait(hold, [&] { return release; });
        });
        {
            std::unique_lock hold(lock);
            changed.wait(hold, [&] { return used; });
        }
        unload(&library);
        {
            std::lock_guard hold(lock);
            release = true;
            changed.notify_all();
        }
        user.join();
        if (!worked) {
            std::printf("cycle %d: the thread variable did not keep its value\n", cycle);
            return 1;
        }
    }
    std::printf("%d cycles\n", cycles);
    return 0;
}
