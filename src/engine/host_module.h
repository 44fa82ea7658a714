// The host program's module: its handle and file name, remembered at start-up
// for the debugger and the error reports.
#pragma once

#include <cstddef>

namespace tollan::engine {

struct HostModule {
    static constexpr size_t kPathBytes = 260;

    void *handle = nullptr;
    char fileName[kPathBytes] = {};
    size_t fileNameBytes = 0;  // the name's length plus its terminator

    // Reads the handle and the name; false when either cannot be had.
    bool remember() noexcept;
};

HostModule &hostModule() noexcept;

}  // namespace tollan::engine
