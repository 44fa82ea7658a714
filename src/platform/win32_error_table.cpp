#include "platform/win32_error_table.h"

#include <iterator>

namespace tollan::platform {
namespace {

// Grouped by class; 161 (bad path name) stands twice, as it always has.
constexpr Win32ErrorMapping kTable[] = {
    // errno ENOENT, "File not found"
    {67, 2, 1},
    {53, 2, 1},
    {161, 2, 1},
    {2, 2, 1},
    {15, 2, 1},
    {3, 2, 1},
    {1200, 2, 1},
    {161, 2, 1},
    {20, 2, 1},
    {55, 2, 1},
    {267, 2, 1},
    {123, 2, 1},
    // errno EACCES, "Access denied"
    {5, 13, 6},
    {86, 13, 6},
    {65, 13, 6},
    {32, 13, 6},
    {19, 13, 6},
    {170, 13, 6},
    {12, 13, 6},
    {167, 13, 6},
    {33, 13, 6},
    {212, 13, 6},
    {64, 13, 6},
    {54, 13, 6},
    {1203, 13, 6},
    {1222, 13, 6},
    {2250, 13, 6},
    {148, 13, 6},
    {51, 13, 6},
    {70, 13, 6},
    // errno ENOSPC, "Disk is full"
    {82, 28, 9},
    {112, 28, 9},
    {39, 28, 9},
    // errno ENAMETOOLONG (as the Microsoft C library numbers it), "File name too long"
    {206, 35, 10},
    // errno EIO, "General I/O failure"
    {31, 5, 2},
    {21, 5, 2},
    {1393, 5, 2},
    {1126, 5, 2},
    {1128, 5, 2},
    {108, 5, 2},
    {1392, 5, 2},
    {1006, 5, 2},
    {1125, 5, 2},
    {1122, 5, 2},
    {1123, 5, 2},
    {1124, 5, 2},
    {38, 5, 2},
    {1117, 5, 2},
    {88, 5, 2},
    {125, 5, 2},
    {26, 5, 2},
    {17, 5, 2},
    {50, 5, 2},
    {110, 5, 2},
    {995, 5, 2},
    {30, 5, 2},
    {71, 5, 2},
    {27, 5, 2},
    {25, 5, 2},
    {132, 5, 2},
    {68, 5, 2},
    {59, 5, 2},
    {1785, 5, 2},
    {1005, 5, 2},
    {29, 5, 2},
    // errno EBADF, "Bad file handle"
    {6, 9, 3},
    // errno EEXIST, "File exists"
    {183, 17, 5},
    {80, 17, 5},
    // errno EINVAL, "Invalid argument"
    {87, 22, 7},
    {131, 22, 7},
    // errno ENOMEM, "Insufficient memory"
    {8, 12, 4},
    {1130, 12, 4},
    {14, 12, 4},
    {36, 12, 4},
    // errno EMFILE, "Too many open files"
    {4, 24, 8},
};

}  // namespace

Win32ErrorMapping mapWin32Error(uint32_t code) noexcept
{
    for (const Win32ErrorMapping &row : kTable) {
        if (row.win32Error == code) return row;
    }
    return {code, 5, 2};
}

const Win32ErrorMapping *win32ErrorTable(size_t *rowCount) noexcept
{
    *rowCount = std::size(kTable);
    return kTable;
}

}  // namespace tollan::platform
