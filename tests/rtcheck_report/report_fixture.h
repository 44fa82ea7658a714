// What the report tests share: a debugging level for the length of a test,
// an error file that catches the reports made at a statement, and work run on
// a thread of its own, whose break settings start afresh.
#pragma once

#include <cstdint>
#include <string>
#include <thread>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

#include "fixtures/scratch_folder.h"

namespace tollan::testing {

class DebuggingLevel {
public:
    explicit DebuggingLevel(int32_t level) : previous_(__SetDebuggingLevel(level)) {}
    ~DebuggingLevel() { __SetDebuggingLevel(previous_); }
    DebuggingLevel(const DebuggingLevel &) = delete;
    DebuggingLevel &operator=(const DebuggingLevel &) = delete;

private:
    int32_t previous_;
};

// Sets the calling thread's statement position (file may be null).
inline void setStatement(const char *file, int32_t line, int32_t column)
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    __DBG_SetCurrentThreadEnvLocation(record, nullptr, file, line, column);
    __DBG_SetCurrentThreadEnvFileName(record, file);
}

// Reports go to an error file of the test's own while the calling thread
// stands at file:line.column; afterwards neither is set.
class ErrorFileCapture {
public:
    ErrorFileCapture(const char *file, int32_t line, int32_t column)
        : file_(tollan_fopen(folder_.path("errors.txt").c_str(), "wb"))
    {
        __SetUPErrorFile(file_);
        setStatement(file, line, column);
    }
    ~ErrorFileCapture()
    {
        __SetUPErrorFile(nullptr);
        if (file_ != nullptr) tollan_fclose(file_);
        setStatement(nullptr, 0, 0);
    }
    ErrorFileCapture(const ErrorFileCapture &) = delete;
    ErrorFileCapture &operator=(const ErrorFileCapture &) = delete;

    bool opened() const { return file_ != nullptr; }
    std::string written()
    {
        tollan_fflush(file_);
        return folder_.read("errors.txt");
    }

private:
    ScratchFolder folder_{"tollan-error-file"};
    TollanFILE *file_;
};

template <typename Work>
void onFreshThread(Work work)
{
    std::thread(work).join();
}

}  // namespace tollan::testing
