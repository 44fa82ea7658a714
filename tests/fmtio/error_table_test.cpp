// The Win32 error table: which class each code maps to, and what an unlisted code gives.
#include <gtest/gtest.h>

#include "platform/win32_error_table.h"

using tollan::platform::mapWin32Error;

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
