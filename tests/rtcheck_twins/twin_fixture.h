// What the twin tests share: the caller's side of the hand-over of pointer
// information, filled as compiled code fills it before a checked call, and
// the reports of the checks caught through a stand-in remote target link,
// which takes every report (fatal ones too) and lets the program go on.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck/checking_environment.h"
#include "rtcheck/libchk_checks.h"
#include "rtcheck/pointer_info.h"
#include "rtcheck/remote_target.h"
#include "rtcheck_report/report_fixture.h"
#include "services/messages.h"

namespace tollan::testing {

struct CaughtReport {
    int32_t severity;
    std::string text;
};

// Reports made while a test runs.
std::vector<CaughtReport> &caughtReports();

// The pointer information of one argument: a record describing a block.
struct ArgumentInfo {
    BlkInfo block{};
    PtrInfo record{};

    // A block of `size` bytes from `base`; the pointer points at `at`.
    void describe(const void *base, uint64_t size, const void *at)
    {
        block = {reinterpret_cast<uint64_t>(base), size};
        record = {reinterpret_cast<uint64_t>(at), reinterpret_cast<uint64_t>(&block),
                  reinterpret_cast<uint64_t>(at)};
    }
};

// Fills the calling thread's hand-over for a call of `callee`.
class HandOver {
public:
    explicit HandOver(const void *callee);
    // Argument argpos (from 1) carries record (a predefined entry or a record
    // whose block is blk).
    HandOver &slot(int32_t argpos, PtrInfo *record, BlkInfo *blk = nullptr);
    HandOver &slot(int32_t argpos, ArgumentInfo &info) { return slot(argpos, &info.record, &info.block); }

private:
    rtcheck::ParameterArea *area_;
};

template <typename Function>
const void *entryOf(Function *function)
{
    return reinterpret_cast<const void *>(function);
}

inline std::string messageText(int32_t number)
{
    return services::libraryMessage(number);
}

// Checking at level 2 on a thread whose break settings start afresh, with
// the reports caught; the hand-over is empty at the start and the end.
class TwinTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

private:
    DebuggingLevel level_{2};
};

}  // namespace tollan::testing
