// Switches and texts of the library's configuration store.
#include <gtest/gtest.h>

#include <string>

#include "fixtures/log_capture.h"
#include "fixtures/settings_writer.h"
#include "services/configuration.h"
#include "services/messages.h"

namespace {

using tollan::services::configurationSwitch;
using tollan::services::configurationText;
using tollan::services::storeConfigurationText;
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

TEST(Configuration, TextsComeBackAsStoredAndOnlyWhenTheyFit)
{
    LogCapture log;
    char text[16] = "untouched";
    EXPECT_FALSE(configurationText("tollanTestNeverStored", text, sizeof text));
    EXPECT_TRUE(log.lines().empty()) << log.text();

    ASSERT_TRUE(storeConfigurationText("tollanTestPath", "/opt/ide/bin"));
    EXPECT_TRUE(configurationText("tollanTestPath", text, sizeof text));
    EXPECT_STREQ(text, "/opt/ide/bin");
    // Thirteen bytes with the terminator: one fewer is too small.
    char small[12];
    EXPECT_FALSE(configurationText("tollanTestPath", small, sizeof small));
    EXPECT_FALSE(configurationText("tollanTestPath", text, 0));
    EXPECT_FALSE(storeConfigurationText("tollanTestPath", nullptr));

    ASSERT_EQ(tollan::testing::storeDword(kRoot, "tollanTestNumber", 5), 0);
    log.clear();
    EXPECT_FALSE(configurationText("tollanTestNumber", text, sizeof text));
    EXPECT_EQ(log.lines(),
              std::vector<std::string>{std::string("WARNING|Mgsource/Config|configurationText|") +
                                       "tollanTestNumber: " + tollan::services::libraryMessage(77)});
}

}  // namespace
