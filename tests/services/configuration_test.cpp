// Switches of the library's configuration store.
#include <gtest/gtest.h>

#include <string>

#include "fixtures/log_capture.h"
#include "fixtures/settings_writer.h"
#include "services/configuration.h"
#include "services/messages.h"

namespace {

using tollan::services::configurationSwitch;
using tollan::testing::LogCapture;

constexpr const char *kRoot = "Software\\Vantrel\\ZOR\\17.0";

TEST(Configuration, AnAbsentSwitchIsOffWithoutAWordAndAMisstoredOneIsLogged)
{
    LogCapture log;
    EXPECT_FALSE(configurationSwitch("tollanTestNeverStored"));
    EXPECT_FALSE(configurationSwitch(nullptr));
    EXPECT_TRUE(log.lines().empty()) << log.text();

    ASSERT_EQ(tollan::testing::storeDword(kRoot, "tollanTestSwitch", 1), 0);
    EXPECT_TRUE(configurationSwitch("tollanTestSwitch"));
    ASSERT_EQ(tollan::testing::storeDword(kRoot, "tollanTestSwitch", 0), 0);
    EXPECT_FALSE(configurationSwitch("tollanTestSwitch"));
    EXPECT_TRUE(log.lines().empty()) << log.text();

    ASSERT_EQ(tollan::testing::storeString(kRoot, "tollanTestText", "1"), 0);
    EXPECT_FALSE(configurationSwitch("tollanTestText"));
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{std::string("WARNING|Mgsource/Config|configurationSwitch|") +
                                       "tollanTestText: " + tollan::services::libraryMessage(77)});
}

}  // namespace
