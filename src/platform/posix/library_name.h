// How a Windows library name maps to a shared object name.
#pragma once

#include <string>

namespace tollan::platform::posix {

// "qwuste.dll" or "QWUSTE" becomes "libqwuste.so" (a base that already starts
// with "lib" keeps it); a directory part is kept with '\' turned into '/'; a
// name with another extension is used as given.
std::string sharedObjectName(const char *windowsName);

}  // namespace tollan::platform::posix
