// The Win32 error table: its ten classes, and what an unlisted code gives.
#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "platform/win32_error_table.h"

using tollan::platform::mapWin32Error;

TEST(FmtioWin32Errors, TableHoldsTheTenClasses)
{
    size_t rows = 0;
    const tollan::platform::Win32ErrorMapping *table = tollan::platform::win32ErrorTable(&rows);
    EXPECT_EQ(rows, 75u);
    std::map<std::pair<int32_t, int32_t>, int> perClass;
    int badPathRows = 0;
    for (size_t i = 0; i < rows; ++i) {
        ++perClass[{table[i].errnoValue, table[i].ioError}];
        badPathRows += table[i].win32Error == 161;
    }
    const std::map<std::pair<int32_t, int32_t>, int> expected = {
        {{2, 1}, 12}, {{13, 6}, 18}, {{28, 9}, 3}, {{35, 10}, 1}, {{5, 2}, 31},
        {{9, 3}, 1},  {{17, 5}, 2},  {{22, 7}, 2}, {{12, 4}, 4},  {{24, 8}, 1},
    };
    EXPECT_EQ(perClass, expected);
    EXPECT_EQ(badPathRows, 2);
}

TEST(FmtioWin32Errors, LookupsTakeTheirRowOrTheDefault)
{
    struct Case {
        uint32_t code;
        int32_t errnoValue, ioError;
    } cases[] = {{2, 2, 1},  {3, 2, 1},   {5, 13, 6},   {32, 13, 6},  {112, 28, 9}, {206, 35, 10},
                 {6, 9, 3},  {80, 17, 5}, {183, 17, 5}, {87, 22, 7},  {8, 12, 4},   {4, 24, 8},
                 {29, 5, 2}, {109, 5, 2}, {0, 5, 2},    {99999, 5, 2}};
    for (const Case &c : cases) {
        const auto row = mapWin32Error(c.code);
        EXPECT_EQ(row.errnoValue, c.errnoValue) << c.code;
        EXPECT_EQ(row.ioError, c.ioError) << c.code;
    }
}
