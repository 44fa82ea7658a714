// The fatal reports of the variadic and size-information checks, made by the
// probe in a process of its own: a fatal report to an error file ends it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fixtures/probes.h"
#include "fixtures/scratch_folder.h"

namespace {

int runProbe(const std::string &arguments)
{
    return probeExitStatus("vacheck_probe", arguments);
}

TEST(VacheckProbe, FatalReportsNameTheArgumentAndEndTheProcess)
{
    tollan::testing::ScratchFolder folder("tollan-vacheck-probe");
    const struct {
        const char *mode;
        const char *line;
    } rows[] = {
        {"printf-type",
         "probe.c[ 3, 7]-[20,12]: FATAL - Invalid argument type: found 'double', expected 'int'.\n"},
        {"scanf-type",
         "probe.c[ 3, 7]-[20,11]: FATAL - Invalid argument type: found 'int', expected 'pointer to int'.\n"},
        {"fmt-type",
         "probe.c[ 3, 7]-[20,11]: FATAL - Invalid argument type: found 'pointer to char', expected 'int'.\n"},
        {"missing", "probe.c[ 3, 7]-[20,11]: FATAL - Missing argument to variable argument function.\n"},
        {"no-memory", "probe.c[ 3, 7]-[ 3, 7]: FATAL - Out of memory for user protection information.\n"},
    };
    for (const auto &row : rows) {
        const std::string file = folder.path(row.mode);
        EXPECT_EQ(runProbe(std::string(row.mode) + " " + file), -1) << row.mode;
        EXPECT_EQ(folder.read(row.mode), row.line) << row.mode;
    }
}

}  // namespace
