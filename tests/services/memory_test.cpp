// The library's heap and the per-thread stack of file-system redirection states.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "services/file_system_redirection.h"
#include "services/memory.h"

namespace {

using namespace tollan::services;

TEST(LibraryHeap, BlocksOfEverySizeKeepTheirContentsWhenResized)
{
    void *empty = allocateBlock(0);
    ASSERT_NE(empty, nullptr);
    freeBlock(empty);
    freeBlock(nullptr);

    auto *zeroed = static_cast<unsigned char *>(allocateZeroedBlock(64));
    ASSERT_NE(zeroed, nullptr);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(zeroed[i], 0);
    std::memcpy(zeroed, "kept", 5);
    auto *grown = static_cast<char *>(resizeBlock(zeroed, 1 << 20));
    ASSERT_NE(grown, nullptr);
    EXPECT_STREQ(grown, "kept");
    freeBlock(grown);
}

std::vector<bool> applied;

bool record(bool enable) noexcept
{
    applied.push_back(enable);
    return true;
}

TEST(FileSystemRedirection, EachPopGoesBackToTheStateBeforeAndTheStackDoubles)
{
    applied.clear();
    RedirectionStack stack(record);
    for (bool state : {false, true, false, false, true}) EXPECT_TRUE(stack.push(state));
    EXPECT_EQ(stack.size(), 5u);
    EXPECT_EQ(stack.capacity(), 8u);  // 4, doubled once
    for (int i = 0; i < 6; ++i) stack.pop();
    // Pushes apply their own state; pops the one pushed before, or "on" at the bottom.
    EXPECT_EQ(applied,
              (std::vector<bool>{false, true, false, false, true, false, false, true, false, true, true}));
    EXPECT_EQ(stack.size(), 0u);
    // Without WOW64 (every POSIX system, a 64-bit Windows process) nothing switches.
    EXPECT_FALSE(pushFileSystemRedirection(false));
    EXPECT_FALSE(popFileSystemRedirection());
}

}  // namespace
