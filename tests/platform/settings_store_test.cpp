// The settings store: values written through one key are read through
// another, failures carry the registry's codes, and on POSIX the text file
// survives damage and concurrent writers.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#ifndef _WIN32
#include <stdlib.h>

#include <fstream>
#include <memory>
#include <sstream>
#endif

#include "fixtures/settings_writer.h"
#include "platform/settings_store.h"
#include "platform/thread.h"

using namespace tollan::platform;
using tollan::testing::storeDword;
using tollan::testing::storeString;

namespace {

constexpr int32_t kFileNotFound = 2;
constexpr int32_t kAccessDenied = 5;
constexpr int32_t kMoreData = 234;

// A key of this test process, under HKCU\Software\TollanTests.
std::string testKey(const char *leaf)
{
    char path[128];
    std::snprintf(path, sizeof path, "Software\\TollanTests\\Run%u\\%s", currentProcessId(), leaf);
    return path;
}

// Reads a value as RegQueryValueExA would into a buffer of `size` bytes.
struct Read {
    int32_t error;
    uint32_t type;
    uint32_t size;
    std::string text;
};

Read readValue(RootKey root, const std::string &path, const char *name, uint32_t size = 256)
{
    Read result{0, 0, size, {}};
    SettingsKey *key = nullptr;
    result.error = settingsOpenKey(root, path.c_str(), false, false, &key);
    if (result.error != 0) return result;
    char buffer[256] = "";
    result.error = settingsQueryValue(key, name, &result.type, buffer, &result.size);
    settingsCloseKey(key);
    if (result.error == 0) result.text.assign(buffer, result.size);
    return result;
}

Read readValue(const std::string &path, const char *name, uint32_t size = 256)
{
    return readValue(RootKey::currentUser, path, name, size);
}

}  // namespace

TEST(SettingsStore, StringsAndNumbersRoundTrip)
{
    const std::string path = testKey("RoundTrip");
    ASSERT_EQ(storeString(path.c_str(), "Log File Name", "C:\\logs\\\"quoted\".txt"), 0);
    ASSERT_EQ(storeDword(path.c_str(), "Log Level", 0x1f), 0);
    ASSERT_EQ(storeString(path.c_str(), nullptr, ""), 0);

    const Read text = readValue(path, "Log File Name");
    ASSERT_EQ(text.error, 0);
    EXPECT_EQ(text.type, kSettingString);
    EXPECT_EQ(text.text, std::string("C:\\logs\\\"quoted\".txt", 21));

    const Read number = readValue(path, "Log Level");
    ASSERT_EQ(number.error, 0);
    EXPECT_EQ(number.type, kSettingDword);
    ASSERT_EQ(number.size, 4u);
    uint32_t value = 0;
    std::memcpy(&value, number.text.data(), 4);
    EXPECT_EQ(value, 0x1fu);

    const Read empty = readValue(path, "");
    ASSERT_EQ(empty.error, 0);
    EXPECT_EQ(empty.type, kSettingString);
    EXPECT_EQ(empty.size, 1u);

    // Writing again replaces the value, whatever its type was.
    ASSERT_EQ(storeString(path.c_str(), "Log Level", "high"), 0);
    EXPECT_EQ(readValue(path, "Log Level").type, kSettingString);
}

TEST(SettingsStore, NamesMatchWithoutRegardToCase)
{
    const std::string path = testKey("CaseBlind");
    ASSERT_EQ(storeString(path.c_str(), "RemoteDebuggerPort", "8000"), 0);
    std::string shouted = path;
    for (char &c : shouted) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const Read read = readValue(shouted, "remotedebuggerport");
    EXPECT_EQ(read.error, 0);
    EXPECT_EQ(read.text, std::string("8000", 5));
}

TEST(SettingsStore, MissingKeysValuesAndShortBuffersFailWithTheirCodes)
{
    const std::string path = testKey("Codes");
    EXPECT_EQ(readValue(path, "anything").error, kFileNotFound);
    ASSERT_EQ(storeString(path.c_str(), "present", "twelve chars"), 0);
    EXPECT_EQ(readValue(path, "absent").error, kFileNotFound);
    EXPECT_EQ(readValue(testKey("Codes\\Deeper"), "present").error, kFileNotFound);
    // A missing key whose name begins an existing one's is still missing.
    ASSERT_EQ(storeString(testKey("Codes\\Logger").c_str(), "present", "x"), 0);
    SettingsKey *prefix = nullptr;
    EXPECT_EQ(settingsOpenKey(RootKey::currentUser, testKey("Codes\\Log").c_str(), false, false, &prefix),
              kFileNotFound);
    EXPECT_EQ(prefix, nullptr);

    const Read cramped = readValue(path, "present", 5);
    EXPECT_EQ(cramped.error, kMoreData);
    EXPECT_EQ(cramped.size, 13u) << "the size it would need, with its terminating zero";

    SettingsKey *key = nullptr;
    ASSERT_EQ(settingsOpenKey(RootKey::currentUser, path.c_str(), false, false, &key), 0);
    uint32_t size = 0, type = 0;
    EXPECT_EQ(settingsQueryValue(key, "present", &type, nullptr, &size), 0);
    EXPECT_EQ(size, 13u);
    EXPECT_EQ(settingsSetString(key, "present", "x"), kAccessDenied) << "opened for reading only";
    settingsCloseKey(key);
}

TEST(SettingsStore, ParentsOfACreatedKeyExist)
{
    const std::string path = testKey("Parent\\Child\\Grandchild");
    SettingsKey *key = nullptr;
    ASSERT_EQ(settingsOpenKey(RootKey::currentUser, path.c_str(), true, false, &key), 0);
    settingsCloseKey(key);
    key = nullptr;
    EXPECT_EQ(settingsOpenKey(RootKey::currentUser, testKey("Parent").c_str(), false, false, &key), 0);
    settingsCloseKey(key);
}

#ifndef _WIN32
// The text file behind the store on POSIX.
namespace {

class SettingsFile : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/tollan-settings-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        directory_ = pattern;
        path_ = directory_ + "/nested/dir/registry.reg";
        const char *previous = getenv("TOLLAN_REGISTRY");
        previous_ = previous ? previous : "";
        setenv("TOLLAN_REGISTRY", path_.c_str(), 1);
    }
    void TearDown() override
    {
        if (previous_.empty())
            unsetenv("TOLLAN_REGISTRY");
        else
            setenv("TOLLAN_REGISTRY", previous_.c_str(), 1);
        std::system(("rm -rf '" + directory_ + "'").c_str());
    }
    void writeFile(const std::string &text)
    {
        std::system(("mkdir -p '" + directory_ + "/nested/dir'").c_str());
        std::ofstream(path_, std::ios::binary) << text;
    }
    std::string fileText() const
    {
        std::ostringstream text;
        text << std::ifstream(path_, std::ios::binary).rdbuf();
        return text.str();
    }

    std::string directory_, path_, previous_;
};

const char *const kLoggerKey = "Software\\Vantrel\\ZOR\\17.0\\Logger";

std::string writtenName(int writer, int value)
{
    return "w" + std::to_string(writer) + "-" + std::to_string(value);
}

void writeMany(void *writer)
{
    for (int i = 0; i < 20; ++i)
        storeDword("Software\\Concurrent", writtenName(*static_cast<int *>(writer), i).c_str(),
                   static_cast<uint32_t>(i));
}

}  // namespace

TEST_F(SettingsFile, ReadsBothHeadersEscapesAndValueKinds)
{
    writeFile(
        "REGEDIT4\r\n\r\n"
        "; written by hand\r\n"
        "[HKEY_CURRENT_USER\\Software\\Vantrel\\ZOR\\17.0\\Logger]\r\n"
        "\"Log File Name\"=\"C:\\\\tmp\\\\a \\\"b\\\".log\"\r\n"
        "\"Log Level\"=dword:0000001F\r\n"
        "@=\"default\"\r\n"
        "\"Blob\"=hex:01,02,\\\r\n"
        "  ff\r\n");
    EXPECT_EQ(readValue(kLoggerKey, "Log File Name").text, std::string("C:\\tmp\\a \"b\".log", 17));
    const Read level = readValue(kLoggerKey, "Log Level");
    EXPECT_EQ(level.type, kSettingDword);
    EXPECT_EQ(level.text, std::string("\x1f\0\0\0", 4));
    EXPECT_EQ(readValue(kLoggerKey, nullptr).text, std::string("default", 8));
    const Read blob = readValue(kLoggerKey, "Blob");
    EXPECT_EQ(blob.type, 3u);
    EXPECT_EQ(blob.text, "\x01\x02\xff");

    writeFile(
        "Windows Registry Editor Version "
        "5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Vantrel]\n\"VTSHAREDDIR64\"=\"/opt/v\"\n");
    EXPECT_EQ(readValue(RootKey::localMachine, "Software\\Vantrel", "VTSHAREDDIR64").text,
              std::string("/opt/v", 7));
    EXPECT_EQ(readValue(RootKey::currentUser, "Software\\Vantrel", "VTSHAREDDIR64").error, kFileNotFound);
}

TEST_F(SettingsFile, DamagedLinesAreSkippedAndSurviveAWrite)
{
    const std::string damaged =
        "Windows Registry Editor Version 5.00\n"
        "[HKEY_CURRENT_USER\\Software\\Vantrel\\ZOR\\17.0\\Logger]\n"
        "\"Unterminated\"=\"abc\n"
        "\"Bad Number\"=dword:xyz\n"
        "garbage \x01\x02 line\n"
        "\"Log Level\"=dword:00000004\n"
        "[HKEY_NOWHERE\\Software]\n"
        "\"Lost\"=\"x\"\n"
        "[HKEY_CURRENT_USER\\Software\\Broken\n"
        "\"Trailing\"=\"ok";
    writeFile(damaged);
    EXPECT_EQ(readValue(kLoggerKey, "Unterminated").error, kFileNotFound);
    EXPECT_EQ(readValue(kLoggerKey, "Bad Number").error, kFileNotFound);
    EXPECT_EQ(readValue(kLoggerKey, "Log Level").error, 0);

    ASSERT_EQ(storeString(kLoggerKey, "Log Format", "plain"), 0);
    const std::string rewritten = fileText();
    EXPECT_NE(rewritten.find("\"Unterminated\"=\"abc\n"), std::string::npos);
    EXPECT_NE(rewritten.find("garbage \x01\x02 line\n"), std::string::npos);
    EXPECT_NE(rewritten.find("[HKEY_NOWHERE\\Software]\n\"Lost\"=\"x\"\n"), std::string::npos);
    EXPECT_EQ(readValue(kLoggerKey, "Log Format").text, std::string("plain", 6));
    EXPECT_EQ(readValue(kLoggerKey, "Log Level").error, 0);
}

TEST_F(SettingsFile, BinaryNoiseNeverCrashesTheReader)
{
    std::string noise;
    for (int i = 0; i < 4096; ++i) noise.push_back(static_cast<char>((i * 7919) % 251));
    writeFile("[HKEY_CURRENT_USER\\Software\\X]\n\"" + noise + "\n@=hex(" + noise);
    EXPECT_EQ(readValue("Software\\X", "nothing").error, kFileNotFound);
    EXPECT_EQ(storeDword("Software\\X", "n", 1), 0);
    EXPECT_EQ(readValue("Software\\X", "n").error, 0);
}

TEST_F(SettingsFile, WritesCreateTheDirectoryAndStayReadableText)
{
    ASSERT_EQ(storeString(kLoggerKey, "Log File Name", "a\"b\\c"), 0);
    ASSERT_EQ(storeDword(kLoggerKey, "Log Level", 0x30), 0);
    EXPECT_EQ(fileText(),
              "Windows Registry Editor Version 5.00\n\n"
              "[HKEY_CURRENT_USER\\Software\\Vantrel\\ZOR\\17.0\\Logger]\n"
              "\"Log File Name\"=\"a\\\"b\\\\c\"\n"
              "\"Log Level\"=dword:00000030\n");
}

TEST_F(SettingsFile, ConcurrentWritersLoseNothing)
{
    int writers[3] = {0, 1, 2};
    {
        std::unique_ptr<Thread> threads[3];
        for (int i = 0; i < 3; ++i) threads[i] = Thread::start(writeMany, &writers[i]);
    }
    for (int writer : writers)
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(readValue("Software\\Concurrent", writtenName(writer, i).c_str()).error, 0)
                << writtenName(writer, i);
}
#endif
