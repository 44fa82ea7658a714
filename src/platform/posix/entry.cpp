// The shared library's entry on POSIX systems: the loader runs the
// constructor when the library is loaded and the destructor when it is
// unloaded (or the process exits); threads report their exit through the
// thread-exit handler.
//
// The loader cannot be told to refuse a library from a constructor. When the
// attach fails, the library stays loaded but never becomes initialised: the
// chain has undone what it set up (or never set it up), the failure is in the
// log at DLLMAIN level ("Returning 0"), InitZORRTDll returns 0, and the
// thread-variable functions give null and store nothing.
#include "engine/dll_entry.h"
#include "platform/tls.h"

// The compiler's handle of this shared object; it serves as the module instance.
extern "C" void *__dso_handle;

namespace {

void threadExiting()
{
    tollan::engine::threadDetach();
}

__attribute__((constructor)) void libraryLoaded()
{
    tollan::platform::setThreadExitHandler(threadExiting);
    tollan::engine::processAttach(&__dso_handle);
}

__attribute__((destructor)) void libraryUnloaded()
{
    // Whether the process exits or the library is unloaded, other threads
    // may still be running.
    tollan::engine::processDetach(false);
}

}  // namespace
