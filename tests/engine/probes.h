// Running the probe programs that sit beside the test program.
#pragma once

#include <string>

#include "platform/system.h"

// The path of the probe program `name`.
inline std::string probePath(const char *name)
{
    char self[1024];
    const size_t length = tollan::platform::mainProgramFileName(self, sizeof self);
    const std::string path(self, length);
#ifdef _WIN32
    const char *extension = ".exe";
#else
    const char *extension = "";
#endif
    return path.substr(0, path.find_last_of("/\\") + 1) + name + extension;
}
