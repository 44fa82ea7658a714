// Reading and writing settings through the registry module.
#include <gtest/gtest.h>

#include <string>

#include "services/messages.h"
#include "services/registry.h"
#include "fixtures/log_capture.h"
#include "fixtures/settings_writer.h"
#include "logger/log.h"

using namespace tollan::services;
using tollan::testing::LogCapture;
using tollan::testing::storeDword;
using tollan::testing::storeString;

namespace {

constexpr const char *kTestKey = "Software\\Vantrel\\ZOR\\TollanTests\\Registry";
constexpr const char *kRangeCheck = "Assertion failed: (keyEnum > 0) && (keyEnum < kRegNumRootKeys)";

std::string warningLine(const char *function)
{
    return std::string("WARNING|Mgsource/Registry|") + function + "|" + libraryMessage(kRegUnavailable);
}

}  // namespace

TEST(Registry, ValuesOfTheirOwnTypeAreRead)
{
    ASSERT_EQ(storeString(kTestKey, "Empty", ""), 0);
    ASSERT_EQ(storeDword(kTestKey, "Number", 0xDEADBEEF), 0);
    ASSERT_EQ(RegSetStringValue(2, kTestKey, "Text", "C:\\Program Files\\x"), 0);

    char buffer[kRegStringBufferSize] = "stale";
    EXPECT_EQ(RegGetStringValue(2, kTestKey, "Text", buffer), 0);
    EXPECT_STREQ(buffer, "C:\\Program Files\\x");
    EXPECT_EQ(Reg64GetStringValue(2, kTestKey, "Empty", buffer), 0);
    EXPECT_STREQ(buffer, "");
    uint32_t number = 0;
    EXPECT_EQ(RegGetDwordValue(2, kTestKey, "Number", &number), 0);
    EXPECT_EQ(number, 0xDEADBEEFu);
}

TEST(Registry, WrongTypeMissingValueAndMissingKeyGive77AndAWarning)
{
    ASSERT_EQ(storeString(kTestKey, "Text", "hello"), 0);
    ASSERT_EQ(storeDword(kTestKey, "Number", 5), 0);
    LogCapture capture;
    char buffer[kRegStringBufferSize];
    uint32_t number = 0;
    EXPECT_EQ(RegGetStringValue(2, kTestKey, "Number", buffer), kRegUnavailable);
    EXPECT_EQ(RegGetDwordValue(2, kTestKey, "Text", &number), kRegUnavailable);
    EXPECT_EQ(RegGetDwordValue(2, kTestKey, "Never written", &number), kRegUnavailable);
    EXPECT_EQ(RegGetStringValue(2, "Software\\Vantrel\\ZOR\\TollanTests\\No such key", "Text", buffer),
              kRegUnavailable);
    EXPECT_EQ(capture.count(warningLine("RegGetStringValue")), 2u);
    EXPECT_EQ(capture.count(warningLine("RegGetDwordValue")), 2u);
    EXPECT_EQ(capture.lines().size(), 4u);

    // Quiet while the logger configures itself, and with WARNING off.
    capture.clear();
    tollan::logger::beginConfiguring();
    EXPECT_EQ(RegGetStringValue(2, kTestKey, "Never written", buffer), kRegUnavailable);
    tollan::logger::endConfiguring();
    SetZORLogReportingLevels(~static_cast<uint32_t>(ZOR_LOG_WARNING));
    EXPECT_EQ(RegGetStringValue(2, kTestKey, "Never written", buffer), kRegUnavailable);
    EXPECT_EQ(capture.text(), "");
}

TEST(Registry, RootKeyZeroIsReportedAndStillOpened)
{
    const char *key = "Software\\Vantrel\\ZOR\\TollanTests\\Classes";
    LogCapture capture;
    RegKeyRecord record;
    ASSERT_EQ(WinKeyHandle(0, &record, key, kRegModeWrite), 0);
    EXPECT_EQ(record.access, 0x20006u);
    ASSERT_NE(usableKey(record), nullptr);
    EXPECT_EQ(tollan::platform::settingsSetString(usableKey(record), "Where", "classes root"), 0);
    closeKeyRecord(&record);

    char buffer[kRegStringBufferSize];
    EXPECT_EQ(RegGetStringValue(0, key, "Where", buffer), 0);
    EXPECT_STREQ(buffer, "classes root");
    EXPECT_EQ(capture.count(std::string("FATAL|Mgsource/Registry|WinKeyHandle|") + kRangeCheck), 2u);

    // Past the table there is no root key to open.
    EXPECT_EQ(WinKeyHandle64(4, &record, kTestKey, kRegModeRead), kRegUnavailable);
    EXPECT_EQ(record.access, 0x20119u);
    EXPECT_EQ(capture.count(std::string("WinKeyHandle64|") + kRangeCheck), 1u);
}

TEST(Registry, SettingsRootRecordIsFreedOnFailure)
{
    RegKeyRecord *record = nullptr;
    ASSERT_EQ(openSettingsRoot(2, &record, kRegModeWrite), 0);
    EXPECT_NE(usableKey(*record), nullptr);
    freeSettingsRoot(record);
    LogCapture quiet(0);
    EXPECT_EQ(openSettingsRoot(9, &record, kRegModeRead), kRegUnavailable);
    EXPECT_EQ(record, nullptr);
}

TEST(Registry, SettingsPathFitsItsBufferExactlyAndNeverWritesPastIt)
{
    constexpr char kCanary = '\x5A';
    for (const char *section : {static_cast<const char *>(nullptr), "Logger"}) {
        const std::string expected =
            std::string("Software\\Vantrel\\ZOR\\17.0") + (section ? std::string("\\") + section : "");
        const size_t exact = expected.size() + 1;
        // One byte past every size from the exact fit down to nothing stays untouched.
        for (size_t size = exact; size > 0; --size) {
            SCOPED_TRACE(std::string(section ? section : "(root)") + ", size " + std::to_string(size));
            std::string buffer(exact + 1, kCanary);
            const bool fits = settingsPath(section, buffer.data(), size);
            EXPECT_EQ(fits, size == exact);
            EXPECT_EQ(buffer[size], kCanary);
            if (fits) {
                EXPECT_STREQ(buffer.c_str(), expected.c_str());
            }
        }
    }
}

TEST(RegistryRemoteDebugger, AnUnreadablePortClearsTheAddress)
{
    const char *complete = "Software\\Vantrel\\ZOR\\TollanTests\\Remote";
    const char *missingPort = "Software\\Vantrel\\ZOR\\TollanTests\\RemoteWithoutPort";
    const char *numericPort = "Software\\Vantrel\\ZOR\\TollanTests\\RemoteNumericPort";
    for (const char *key : {complete, missingPort, numericPort})
        ASSERT_EQ(storeString(key, "RemoteDebuggerAddress", "10.0.0.5"), 0);
    ASSERT_EQ(storeString(complete, "RemoteDebuggerPort", "4711"), 0);
    ASSERT_EQ(storeDword(numericPort, "RemoteDebuggerPort", 4711), 0);

    char address[kRegStringBufferSize];
    uint16_t port = 0;
    EXPECT_EQ(readRemoteDebuggerLocation(complete, address, &port), 0);
    EXPECT_STREQ(address, "10.0.0.5");
    EXPECT_EQ(port, 4711);
    LogCapture quiet(0);
    for (const char *key : {missingPort, numericPort}) {
        EXPECT_EQ(readRemoteDebuggerLocation(key, address, &port), kRegUnavailable) << key;
        EXPECT_STREQ(address, "") << key;
        EXPECT_EQ(port, 0) << key;
    }
}

TEST(RegistryRemoteDebugger, LaterCallsServeTheCacheWithStatusZero)
{
    char first[kRegStringBufferSize];
    uint16_t firstPort = 0;
    GetRemoteDebuggerLocation(first, &firstPort);
    ASSERT_EQ(storeString("Software\\Vantrel\\ZOR\\17.0", "RemoteDebuggerAddress", "changed"), 0);
    char later[kRegStringBufferSize] = "stale";
    uint16_t laterPort = 1;
    EXPECT_EQ(GetRemoteDebuggerLocation(later, &laterPort), 0);
    EXPECT_STREQ(later, first);
    EXPECT_EQ(laterPort, firstPort);
}
