// Loading libraries at run time. Names are given in their Windows form
// ("qwuste.dll"); elsewhere they become "libqwuste.so".
#pragma once

namespace tollan::platform {

void *loadLibrary(const char *windowsName) noexcept;
void *librarySymbol(void *library, const char *name) noexcept;
void unloadLibrary(void *library) noexcept;

}  // namespace tollan::platform
