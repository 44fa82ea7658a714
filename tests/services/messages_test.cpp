// The library message table.
#include <gtest/gtest.h>

#include "services/messages.h"

namespace {

using namespace tollan::services;

TEST(LibraryMessages, KnownUnknownAndNonOverlappingRanges)
{
    EXPECT_STREQ(libraryMessage(0), "No error has occurred");
    EXPECT_STREQ(libraryMessage(-5), "Unknown message number");
    auto ranges = messageRanges();
    for (size_t i = 0; i < ranges.size(); ++i) {
        for (size_t j = i + 1; j < ranges.size(); ++j) {
            int64_t endI = ranges[i]->first + static_cast<int64_t>(ranges[i]->texts.size());
            int64_t endJ = ranges[j]->first + static_cast<int64_t>(ranges[j]->texts.size());
            EXPECT_TRUE(endI <= ranges[j]->first || endJ <= ranges[i]->first) << i << " overlaps " << j;
        }
    }
}

}  // namespace
