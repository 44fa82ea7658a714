// The per-thread break settings at every debugging level.
#include <gtest/gtest.h>

#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/break_settings.h"
#include "rtcheck_report/report_fixture.h"

namespace {

using tollan::rtcheck::threadReportState;
using tollan::testing::DebuggingLevel;
using tollan::testing::onFreshThread;

struct LevelRow {
    int32_t level;
    int32_t effective;  // what a switched-on setting reads as at this level
};

constexpr LevelRow kLevels[] = {{0, 0}, {1, 0}, {2, 1}, {3, 1}};

TEST(BreakSettings, AThreadStartsFromTheDebuggingLevel)
{
    for (const LevelRow &row : kLevels) {
        DebuggingLevel level(row.level);
        onFreshThread([&] {
            EXPECT_EQ(GetBreakOnLibraryErrors(), row.effective) << "level " << row.level;
            EXPECT_EQ(GetBreakOnProtectionErrors(), row.effective) << "level " << row.level;
            EXPECT_EQ(GetBreakOnFirstChanceExceptions(), 0) << "level " << row.level;
        });
    }
}

TEST(BreakSettings, LibraryAndProtectionSettersWorkFromLevelTwoAndReduceToOneOrZero)
{
    using Setter = int32_t (*)(int32_t);
    using Getter = int32_t (*)();
    const struct {
        const char *name;
        Setter set;
        Getter get;
    } settings[] = {{"library errors", SetBreakOnLibraryErrors, GetBreakOnLibraryErrors},
                    {"protection errors", SetBreakOnProtectionErrors, GetBreakOnProtectionErrors}};
    for (const LevelRow &row : kLevels) {
        DebuggingLevel level(row.level);
        for (const auto &setting : settings) {
            onFreshThread([&] {
                const int32_t on = row.effective;
                EXPECT_EQ(setting.set(0), on) << setting.name << " at level " << row.level;
                EXPECT_EQ(setting.get(), 0) << setting.name << " at level " << row.level;
                EXPECT_EQ(setting.set(-7), 0) << setting.name << " at level " << row.level;
                EXPECT_EQ(setting.get(), on) << setting.name << " at level " << row.level;
                EXPECT_EQ(setting.set(42), on) << setting.name << " at level " << row.level;
            });
        }
    }
}

TEST(BreakSettings, FirstChanceSettingIsKeptAtEveryLevelButReadsZeroBelowTwo)
{
    for (const LevelRow &row : kLevels) {
        DebuggingLevel level(row.level);
        onFreshThread([&] {
            EXPECT_EQ(SetBreakOnFirstChanceExceptions(9), 0) << "level " << row.level;
            EXPECT_EQ(GetBreakOnFirstChanceExceptions(), row.effective) << "level " << row.level;
            EXPECT_EQ(SetBreakOnFirstChanceExceptions(0), 1) << "level " << row.level;
        });
    }
}

TEST(BreakSettings, SwitchingLibraryBreaksOffIsRecordedAtEveryLevel)
{
    for (const LevelRow &row : kLevels) {
        DebuggingLevel level(row.level);
        onFreshThread([&] {
            EXPECT_EQ(threadReportState().libraryBreaksSwitchedOff, 0);
            DisableBreakOnLibraryErrors();
            EXPECT_EQ(threadReportState().libraryBreaksSwitchedOff, 1) << "level " << row.level;
            EXPECT_EQ(GetBreakOnLibraryErrors(), 0);
            EnableBreakOnLibraryErrors();
            EXPECT_EQ(threadReportState().libraryBreaksSwitchedOff, 0) << "level " << row.level;
            EXPECT_EQ(GetBreakOnLibraryErrors(), row.effective);
        });
    }
}

TEST(BreakSettings, EachThreadHasItsOwn)
{
    DebuggingLevel level(2);
    onFreshThread([] {
        SetBreakOnProtectionErrors(0);
        onFreshThread([] { EXPECT_EQ(GetBreakOnProtectionErrors(), 1); });
        EXPECT_EQ(GetBreakOnProtectionErrors(), 0);
    });
}

// Settings taken at a low level stay off when the level rises later; start-up
// (or the thread's first use) is where they are taken.
TEST(BreakSettings, ARisingLevelLeavesAStartedThreadsSettings)
{
    DebuggingLevel low(0);
    onFreshThread([] {
        EXPECT_EQ(GetBreakOnLibraryErrors(), 0);
        DebuggingLevel high(2);
        EXPECT_EQ(GetBreakOnLibraryErrors(), 0);
        tollan::rtcheck::startThreadBreakSettings();
        EXPECT_EQ(GetBreakOnLibraryErrors(), 1);
    });
}

}  // namespace
