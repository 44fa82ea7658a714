// Runs a program linked against the shared library with the logger set to
// TRACE|TEMP|INFO|DLLMAIN into a file, and checks the attach, thread-detach
// and detach chains' lines in order. Later subsystems add lines between
// these; the test only asks that these appear, in this order.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "fixtures/log_capture.h"
#include "platform/settings_store.h"
#include "platform/system.h"

namespace {

using tollan::testing::readTextFile;
using tollan::testing::uniqueTestFileName;

constexpr const char *kLoggerKey = "Software\\Vantrel\\ZOR\\17.0\\Logger";
constexpr const char *kLineTemplate = "[LEVEL]|[FUNC]|[MSG]";
constexpr uint32_t kTraceTempInfoDllMain = 0x10d;

std::vector<std::string> splitLines(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

// The probe sits beside this test program.
std::string probePath()
{
    char self[1024];
    const size_t length = tollan::platform::mainProgramFileName(self, sizeof self);
    std::string path(self, length);
    return path.substr(0, path.find_last_of("/\\") + 1) + TOLLAN_STARTUP_PROBE_NAME;
}

#ifdef _WIN32
// The Windows library reads the real (Wine) registry. The values are set for
// the probe's run only and put back afterwards.
class LoggerSettings {
public:
    explicit LoggerSettings(const std::string &logFile)
    {
        using namespace tollan::platform;
        if (settingsOpenKey(RootKey::currentUser, kLoggerKey, true, false, &key_) != 0) return;
        save("Log Level");
        save("Log Output Location");
        save("Log File Name");
        save("Log File Format");
        save("Log Format");
        settingsSetDword(key_, "Log Level", kTraceTempInfoDllMain);
        settingsSetDword(key_, "Log Output Location", 5);
        settingsSetString(key_, "Log File Name", logFile.c_str());
        settingsSetDword(key_, "Log File Format", 1);
        settingsSetString(key_, "Log Format", kLineTemplate);
    }
    ~LoggerSettings()
    {
        using namespace tollan::platform;
        if (key_ == nullptr) return;
        // Values that were not there before are set to the logger's defaults.
        restore("Log Level", 64);
        restore("Log Output Location", 3);
        restore("Log File Format", 0);
        restoreString("Log File Name", "");
        restoreString("Log Format", "[[TIME]] [[LEVEL]] [[FUNC]] [[FILE]:[LINE]] [MSG]");
        settingsCloseKey(key_);
    }
    bool ready() const { return key_ != nullptr; }
    std::string environment() const { return ""; }

private:
    struct Saved {
        std::string name;
        uint32_t type = 0;
        std::string data;
        bool present = false;
    };
    void save(const char *name)
    {
        Saved saved{name};
        char data[2048];
        uint32_t size = sizeof data;
        saved.present = tollan::platform::settingsQueryValue(key_, name, &saved.type, data, &size) == 0;
        if (saved.present) saved.data.assign(data, size);
        saved_.push_back(saved);
    }
    const Saved *find(const char *name) const
    {
        for (const Saved &saved : saved_)
            if (saved.name == name && saved.present) return &saved;
        return nullptr;
    }
    void restore(const char *name, uint32_t fallback)
    {
        uint32_t value = fallback;
        if (const Saved *saved = find(name); saved && saved->data.size() == sizeof value)
            std::memcpy(&value, saved->data.data(), sizeof value);
        tollan::platform::settingsSetDword(key_, name, value);
    }
    void restoreString(const char *name, const char *fallback)
    {
        const Saved *saved = find(name);
        tollan::platform::settingsSetString(key_, name, saved ? saved->data.c_str() : fallback);
    }

    tollan::platform::SettingsKey *key_ = nullptr;
    std::vector<Saved> saved_;
};
#else
// The POSIX library reads the settings file named by TOLLAN_REGISTRY.
class LoggerSettings {
public:
    explicit LoggerSettings(const std::string &logFile) : path_(uniqueTestFileName("engine-settings"))
    {
        std::ofstream out(path_);
        out << "REGEDIT4\n\n[HKEY_CURRENT_USER\\" << kLoggerKey << "]\n"
            << "\"Log Level\"=dword:0000010d\n"
            << "\"Log Output Location\"=dword:00000005\n"
            << "\"Log File Name\"=\"" << logFile << "\"\n"
            << "\"Log File Format\"=dword:00000001\n"
            << "\"Log Format\"=\"" << kLineTemplate << "\"\n";
        ready_ = out.good();
    }
    ~LoggerSettings() { std::remove(path_.c_str()); }
    bool ready() const { return ready_; }
    std::string environment() const { return "TOLLAN_REGISTRY='" + path_ + "' "; }

private:
    std::string path_;
    bool ready_ = false;
};
#endif

struct Expected {
    const char *levelAndFunction;
    const char *messageStart;  // the message begins with this text
};

bool matches(const std::string &line, const Expected &expected)
{
    const std::string prefix = std::string(expected.levelAndFunction) + "|" + expected.messageStart;
    return line.compare(0, prefix.size(), prefix) == 0;
}

// The first expected line that cannot be found after its predecessor, or
// null when every one was found in order.
const Expected *firstMissing(const std::vector<std::string> &lines, const std::vector<Expected> &expected)
{
    size_t at = 0;
    for (const Expected &next : expected) {
        while (at < lines.size() && !matches(lines[at], next)) ++at;
        if (at == lines.size()) return &next;
        ++at;
    }
    return nullptr;
}

TEST(StartupTrace, AttachThreadDetachAndDetachLinesComeInOrder)
{
    const std::string logFile = uniqueTestFileName("engine-startup-log");
    const std::string outputFile = uniqueTestFileName("engine-probe-output");
    std::remove(logFile.c_str());
    int status = -1;
    {
        LoggerSettings settings(logFile);
        ASSERT_TRUE(settings.ready());
        const std::string command = settings.environment() + probePath() + " > " + outputFile;
        status = std::system(command.c_str());
    }
    EXPECT_EQ(status, 0);
    const std::vector<std::string> lines = splitLines(readTextFile(logFile));
    const std::string output = readTextFile(outputFile);
    std::remove(logFile.c_str());
    std::remove(outputFile.c_str());

    const std::vector<Expected> expected = {
        {"DLLMAIN|DllMain", "DLL_PROCESS_ATTACH"},
        {"DLLMAIN|DllMain", "AllocCrossLibraryThreadVarSlots returned"},
        {"TRACE|WInitRTDll", "GetModuleHandle returned "},
        {"TRACE|WInitRTDll", "GetStartupInfo returned"},
        {"TRACE|WInitRTDll", "Calling WinMain"},
        {"TRACE|WinMain", "SetCurrentPlatform returned"},
        {"TRACE|WinMain", "CToPStr returned"},
        {"INFO|WinMain", "WinMain hInstance=0x"},
        {"TRACE|WinMain", "ParseCommandLine returned"},
        {"TRACE|WInitApp", "QXInitMainThreadId returned"},
        {"TRACE|WInitApp", "InitSupport returned"},
        {"TRACE|WInitApp", "SetupPCTimer returned. Changed timer resolution."},
        {"TRACE|WInitApp", "InitAsyncAndMTProtection returned"},
        {"TRACE|WInitApp", "Returning 0."},
        {"TRACE|WinMain", "WInitApp returned"},
        {"TRACE|WMain", "ConfigureZORLoggerOnce returned"},
        {"TRACE|WMain", "ENTER"},
        {"TRACE|WMain", "FmtIOLibInitOnce returned"},
        {"TRACE|WMain", "UtilityLibraryInitOnce returned"},
        {"TRACE|WMain", "RegisterUtilityLibraryRunStateChangeCallback returned"},
        {"TRACE|WMain", "Cleanup code: error = 0"},
        {"TRACE|WMain", "Returning 0"},
        {"TRACE|WinMain", "WMain returned"},
        {"TRACE|WinMain", "Returning 1 (exitCode = 0)"},
        {"TRACE|WInitRTDll", "WinMain returned"},
        {"TRACE|WInitRTDll", "Cleanup code: returning success"},
        {"TEMP|InitRTDll", "WInitRTDll returned."},
        {"DLLMAIN|DllMain", "InitRTDll returned"},
        {"DLLMAIN|DllMain", "SetupZORRTEHasBeenDetachedShmem returned"},
        {"DLLMAIN|DllMain", "Returning 1"},
        {"DLLMAIN|DllMain", "DLL_THREAD_DETACH: thread "},
        {"DLLMAIN|DllMain", "Returning 1"},
        {"DLLMAIN|DllMain", "DLL_PROCESS_DETACH"},
        {"INFO|WExitApp", "exiting app "},
        {"DLLMAIN|DllMain", "CloseRTDll returned"},
        {"DLLMAIN|DllMain", "CleanupZORRTEHasBeenDetachedShmem returned"},
        {"DLLMAIN|DllMain", "Returning 1"},
    };
    const Expected *missing = firstMissing(lines, expected);
    EXPECT_EQ(missing, nullptr) << "missing or out of order: " << missing->levelAndFunction << "|"
                                << missing->messageStart;

    // The probe's module got its events through the shared library.
    EXPECT_NE(output.find("run state 0\nrun state 5\nrun state 6\nrun state 4\n"), std::string::npos)
        << output;
}

}  // namespace
