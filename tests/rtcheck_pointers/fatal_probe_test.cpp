// Failed dereferences are fatal: each ends the probe with -1 after writing
// its line to the error file; the near misses let it go on.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fixtures/log_capture.h"
#include "fixtures/probes.h"
#include "fixtures/scratch_folder.h"

namespace {

constexpr int kWentOn = 7;

int runProbe(const std::string &arguments)
{
    return probeExitStatus("pointer_probe", arguments);
}

TEST(PointerProbe, AFailedDereferenceEndsTheProgramWithItsLine)
{
    tollan::testing::ScratchFolder folder("tollan-pointer-probe");
    const struct {
        const char *name;
        const char *text;  // null: the program goes on
    } rows[] = {
        {"uninitialized", "Dereference of uninitialized pointer."},
        {"invalid", "Dereference of invalid pointer expression."},
        {"null-entry", "Dereference of null pointer."},
        {"null-unchecked", "Dereference of null pointer."},
        {"freed", "Dereference of pointer to freed memory."},
        {"past-end", "Dereference of out-of-bounds pointer: 1 bytes (1 elements) past end of array."},
        {"before-start", "Dereference of out-of-bounds pointer: 4 bytes (1 elements) before start of array."},
        {"short-object", "Dereference of a 4 byte object where only 2 bytes exist."},
        {"scalar-past-end", "Dereference of out-of-bounds pointer: 1 bytes (1 elements) past end of array."},
        {"scalar-short", "Dereference of a 4 byte object where only 2 bytes exist."},
        {"data-as-function", "Dereference of data pointer used as a function."},
        {"function-as-data", "Dereference of function pointer used as data."},
        {"in-bounds", nullptr},
    };
    for (const auto &row : rows) {
        const std::string file = folder.path(row.name);
        const int status = runProbe(std::string(row.name) + " " + file);
        if (row.text == nullptr) {
            EXPECT_EQ(status, kWentOn) << row.name;
            EXPECT_EQ(tollan::testing::readTextFile(file), "") << row.name;
            continue;
        }
        EXPECT_EQ(status, -1) << row.name;
        EXPECT_EQ(tollan::testing::readTextFile(file),
                  std::string("probe.c[ 3, 7]-[ 4, 8]: FATAL - ") + row.text + "\n")
            << row.name;
    }
}

}  // namespace
