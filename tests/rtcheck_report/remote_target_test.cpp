// Reports and breaks of a program on a remote target, through a stand-in for
// the remote target link.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

#include "fixtures/scratch_folder.h"
#include "rtcheck/break_settings.h"
#include "rtcheck/remote_target.h"
#include "rtcheck_report/report_fixture.h"

namespace {

using tollan::rtcheck::RemoteTargetLink;
using tollan::testing::DebuggingLevel;

struct Exchanged {
    int32_t severity;
    std::string text;
    uint32_t size;
};

std::vector<Exchanged> exchanged;
const char *functionName = nullptr;  // what the host answers; null: no answer

bool lookUp(void *, char *buffer, size_t size) noexcept
{
    if (functionName == nullptr) return false;
    std::strncpy(buffer, functionName, size);
    return true;
}

void exchange(int32_t severity, const char *text, uint32_t size) noexcept
{
    exchanged.push_back({severity, text, size});
}

constexpr RemoteTargetLink kLink{lookUp, exchange};

class RemoteTarget : public ::testing::Test {
protected:
    void SetUp() override
    {
        exchanged.clear();
        functionName = nullptr;
        tollan::rtcheck::startThreadBreakSettings();
        tollan::rtcheck::setRemoteTargetLink(&kLink);
    }
    void TearDown() override { tollan::rtcheck::setRemoteTargetLink(nullptr); }

    DebuggingLevel level_{2};
};

TEST_F(RemoteTarget, ReportsGoToTheHostWithWarningsRaisedToNonFatal)
{
    ReportUPError(1, 105, 3, 4);
    ReportUPError(3, 158, 3, 4);
    ASSERT_EQ(exchanged.size(), 2u);
    EXPECT_EQ(exchanged[0].severity, 2);
    EXPECT_EQ(exchanged[0].text, "Missing return value.");
    EXPECT_EQ(exchanged[0].size, std::strlen("Missing return value.") + 1);
    EXPECT_EQ(exchanged[1].severity, 3);
}

TEST_F(RemoteTarget, TheHostNamesTheFunctionOfALibraryStatus)
{
    const struct {
        const char *function;
        const char *elaboration;
        const char *text;
    } rows[] = {
        {"ComRd", nullptr, "Function ComRd: (status == -3 [0xfffffffffffffffd])."},
        {"ComRd", "Port not open", "Function ComRd: (status == -3 [0xfffffffffffffffd]).\nPort not open"},
        {nullptr, nullptr, "Library function error (status == -3 [0xfffffffffffffffd])."},
        {"", "Port not open", "Library function error (status == -3 [0xfffffffffffffffd]).\nPort not open"},
    };
    for (const auto &row : rows) {
        exchanged.clear();
        functionName = row.function;
        if (row.elaboration != nullptr)
            _UPLibBreakpointWithElab("status", -3, row.elaboration, nullptr);
        else
            _UPLibBreakpoint("status", -3, nullptr);
        ASSERT_EQ(exchanged.size(), 1u);
        EXPECT_EQ(exchanged[0].text, row.text);
        EXPECT_EQ(exchanged[0].severity, 2);
    }
}

TEST_F(RemoteTarget, TheErrorFileGetsTheRefusalInsteadOfTheReport)
{
    tollan::testing::ScratchFolder folder("tollan-rtcheck-remote");
    TollanFILE *file = tollan_fopen(folder.path("errors.txt").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    __SetUPErrorFile(file);
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    __DBG_SetCurrentThreadEnvLocation(record, nullptr, "target.c", 8, 1);
    ReportUPError(2, 125, 8, 3);
    __SetUPErrorFile(nullptr);
    __DBG_SetCurrentThreadEnvLocation(record, nullptr, nullptr, 0, 0);
    tollan_fclose(file);
    EXPECT_EQ(folder.read("errors.txt"), "Sorry, you cannot run this program in the debugger!\n");
    EXPECT_TRUE(exchanged.empty());
}

// No debugger is connected here: the break reason is what remains to see.
TEST_F(RemoteTarget, BreakpointMarksTheStopAsTheProgramsOwn)
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    record->breakReason = 0;
    tollan::rtcheck::setEvaluatingBreakpointCondition(true);
    Breakpoint();
    EXPECT_EQ(record->breakReason, 0);
    tollan::rtcheck::setEvaluatingBreakpointCondition(false);
    Breakpoint();
    EXPECT_EQ(record->breakReason, 20);
    record->breakReason = 0;
}

}  // namespace
