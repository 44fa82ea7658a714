// Two copies of the library in one process share one run-time record.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "fixtures/probes.h"

namespace {

TEST(RuntimeRecord, ASecondCopyOfTheLibraryAdoptsTheFirstOnesRecord)
{
    // The copy lies beside the library, under another name. (On Windows the
    // library sits beside the programs and is named without a folder.)
    std::filesystem::path original(TOLLAN_LIBRARY_FOR_PROBES);
    if (!original.is_absolute()) original = std::filesystem::path(probeDirectory()) / original;
    const std::filesystem::path copy = original.parent_path() / ("copy-" + original.filename().string());
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
    const int status = std::system(
        (kUnloadEnvironment + probePath("two_copies_probe") + " " + original.string() + " " + copy.string())
            .c_str());
    std::filesystem::remove(copy);
    EXPECT_EQ(status, 0);
}

}  // namespace
