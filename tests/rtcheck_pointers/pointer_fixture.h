// What the pointer-check tests share: reports caught in an error file at
// main.c[12, 5], checks made at [20, 7], and the predefined entries as
// compiled code passes them (the small integer n for entry n - 1).
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck/type_builder.h"
#include "rtcheck_report/report_fixture.h"

namespace pointertest {

constexpr int32_t kLine = 20;
constexpr int32_t kCol = 7;

inline PtrInfo *entry(int index)
{
    return reinterpret_cast<PtrInfo *>(static_cast<uintptr_t>(index + 1));
}

// A table entry where a block is expected.
inline const BlkInfo *blockEntry(int index)
{
    return reinterpret_cast<const BlkInfo *>(static_cast<uintptr_t>(index + 1));
}

// An address `offset` bytes from base, which may lie outside base's object.
inline const unsigned char *offsetFrom(const void *base, int64_t offset)
{
    return reinterpret_cast<const unsigned char *>(reinterpret_cast<uintptr_t>(base) +
                                                   static_cast<uint64_t>(offset));
}

// The line a non-fatal report of `text` writes.
inline std::string nonFatal(const std::string &text)
{
    return text.empty() ? "" : "main.c[12, 5]-[20, 7]: NON-FATAL - " + text + "\n";
}

class PointerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(capture_.opened());
        tollan::rtcheck::startThreadBreakSettings();
    }
    // What `work` writes to the error file.
    template <typename Work>
    std::string reportsOf(Work work)
    {
        const size_t before = capture_.written().size();
        work();
        return capture_.written().substr(before);
    }

    tollan::testing::ErrorFileCapture capture_{"main.c", 12, 5};
    tollan::testing::DebuggingLevel level_{2};
    rtchecktest::TypeBuilder types_;
};

}  // namespace pointertest
