// The answer of a report that nobody is asked about, and the report as it is
// shown.
#include <gtest/gtest.h>

#include "rtcheck/report_choice.h"

namespace {

using tollan::rtcheck::buildReportBody;
using tollan::rtcheck::ReportChoice;
using tollan::rtcheck::SourcePosition;
using tollan::rtcheck::unattendedChoice;

TEST(UnattendedChoice, TheSettingDecidesElseTheSeverity)
{
    const struct {
        const char *setting;
        int32_t severity;
        ReportChoice choice;
    } rows[] = {
        {"break", 3, ReportChoice::breakIntoDebugger},
        {"ignore", 3, ReportChoice::ignore},
        {"terminate", 1, ReportChoice::terminate},
        {nullptr, 3, ReportChoice::terminate},
        {nullptr, 4, ReportChoice::terminate},
        {nullptr, 2, ReportChoice::ignore},
        {nullptr, 1, ReportChoice::ignore},
        {"", 3, ReportChoice::terminate},
        {"Ignore", 3, ReportChoice::terminate},
        {"ignore ", 2, ReportChoice::ignore},
        {"break", 1, ReportChoice::breakIntoDebugger},
    };
    for (const auto &row : rows)
        EXPECT_EQ(unattendedChoice(row.severity, row.setting), row.choice)
            << (row.setting != nullptr ? row.setting : "(none)") << " at " << row.severity;
}

TEST(ReportBody, TitleBySeverityAndThePositionWhenKnown)
{
    const SourcePosition positioned{true, "main.c", 12, 5, 14, 9};
    const SourcePosition noFile{true, nullptr, 12, 5, 14, 9};
    const SourcePosition nowhere{};
    const struct {
        int32_t severity;
        const SourcePosition *position;
        const char *body;
    } rows[] = {
        {1, &positioned, "Run-time Warning\nFile \"main.c\", line 12, column 5:\n\nText."},
        {2, &noFile, "Non-Fatal Run-time Error\nText."},
        {3, &nowhere, "Fatal Run-time Error\nText."},
        {7, &nowhere, "Fatal Run-time Error\nText."},
    };
    for (const auto &row : rows) {
        char body[256];
        buildReportBody(body, sizeof body, row.severity, "Text.", *row.position);
        EXPECT_STREQ(body, row.body) << row.severity;
    }
    char cut[10];
    buildReportBody(cut, sizeof cut, 3, "Text.", nowhere);
    EXPECT_STREQ(cut, "Fatal Run");
}

}  // namespace
