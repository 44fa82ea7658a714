// The exported module registration on the running library's table.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include <tollan/engine.h>

#include "services/lifecycle.h"

namespace {

// (callback number, event) in the order the callbacks heard them.
using Heard = std::vector<std::pair<int, int32_t>>;
Heard heard;

template <int N>
void callback(int32_t event)
{
    heard.emplace_back(N, event);
}

struct ModuleRegistration : ::testing::Test {
    ModuleRegistration() { heard.clear(); }
};

// Through the exported functions, on the running library's table.
TEST_F(ModuleRegistration, StartsTheModuleAndCloseAfterShutdownDoesNothing)
{
    static int module;
    const ZORRunStateCallback callbacks[] = {callback<7>, callback<8>, nullptr};
    ASSERT_EQ(InitZORRTDll(&module, callbacks), 1);
    EXPECT_EQ(heard, (Heard{{7, 0}, {8, 0}, {7, 5}, {8, 5}}));

    heard.clear();
    tollan::services::lifecycle().closed.store(true);
    EXPECT_EQ(CloseZORRTDll(&module), 1);
    tollan::services::lifecycle().closed.store(false);
    EXPECT_TRUE(heard.empty());

    EXPECT_EQ(CloseZORRTDll(&module), 1);
    EXPECT_EQ(heard, (Heard{{8, 6}, {7, 6}, {8, 4}, {7, 4}}));
}

#if defined(__x86_64__) || defined(__i386__)
uint16_t x87ControlWord()
{
    uint16_t word = 0;
    __asm__ __volatile__("fnstcw %0" : "=m"(word));
    return word;
}

TEST_F(ModuleRegistration, MasksEveryX87Exception)
{
    uint16_t unmasked = static_cast<uint16_t>(x87ControlWord() & ~0x3F);
    __asm__ __volatile__("fldcw %0" : : "m"(unmasked));
    ASSERT_EQ(x87ControlWord() & 0x3F, 0);
    ASSERT_EQ(InitZORRTDll(nullptr, nullptr), 1);
    EXPECT_EQ(x87ControlWord() & 0x3F, 0x3F);

    // Also when the library did not start.
    __asm__ __volatile__("fldcw %0" : : "m"(unmasked));
    tollan::services::lifecycle().initialised.store(false);
    EXPECT_EQ(InitZORRTDll(nullptr, nullptr), 0);
    tollan::services::lifecycle().initialised.store(true);
    EXPECT_EQ(x87ControlWord() & 0x3F, 0x3F);
}
#endif

}  // namespace
