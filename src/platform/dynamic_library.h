// Loading libraries at run time. Names are given in their Windows form
// ("qwuste.dll"); elsewhere they become "libqwuste.so".
#pragma once

#include <cstddef>

namespace tollan::platform {

void *loadLibrary(const char *windowsName) noexcept;
void *librarySymbol(void *library, const char *name) noexcept;
void unloadLibrary(void *library) noexcept;

// Loads the module that holds `address` once more by its file name, so that
// it stays loaded until the handle is given to unloadLibrary; null when no
// module holds the address.
void *loadModuleContaining(const void *address) noexcept;
// The file name of the module that holds `address` (on Windows, `address`
// may also be a module handle), into buffer; its length, 0 when unknown.
size_t moduleFileName(const void *address, char *buffer, size_t size) noexcept;

}  // namespace tollan::platform
