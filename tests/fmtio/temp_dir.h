// A fresh directory per test, with helpers that read and write whole files
// without going through the library.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <tollan/fmtio.h>

#include "fmtio/library.h"

// A call that failed with -1 and left `error` as the thread's I/O error.
inline testing::AssertionResult failedWith(int64_t result, int32_t error)
{
    const int32_t actual = GetFmtIOError();
    if (result == -1 && actual == error) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "gave " << result << " with I/O error " << actual << ", not -1 with " << error;
}

class FmtioFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(tollan::fmtio::FmtIOLibInitOnce());
        const auto *info = testing::UnitTest::GetInstance()->current_test_info();
        dir_ = std::filesystem::temp_directory_path() /
               (std::string("tollan-fmtio-") + info->test_suite_name() + "-" + info->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
    }

    void TearDown() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }

    std::string path(const char *name) const { return (dir_ / name).string(); }

    void writeRaw(const char *name, const std::string &bytes) const
    {
        std::ofstream out(dir_ / name, std::ios::binary | std::ios::trunc);
        out << bytes;
    }

    std::string readRaw(const char *name) const
    {
        std::ifstream in(dir_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    // Opens, failing the test when the open fails.
    int32_t open(const char *name, int32_t action, int32_t mode, int32_t type) const
    {
        const int32_t handle = ZOR_OpenFile(path(name).c_str(), action, mode, type);
        EXPECT_GE(handle, 3) << "I/O error " << GetFmtIOError();
        return handle;
    }

    // Everything the handle yields from its position to the end of the file.
    static std::string readAll(int32_t handle, int64_t chunk = 4096)
    {
        std::string result;
        std::string buffer(static_cast<size_t>(chunk), '\0');
        for (;;) {
            const int32_t got = ZOR_ReadFile(handle, buffer.data(), chunk);
            EXPECT_GE(got, 0);
            if (got <= 0) return result;
            result.append(buffer.data(), static_cast<size_t>(got));
        }
    }

private:
    std::filesystem::path dir_;
};
