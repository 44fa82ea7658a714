// Runs a program linked against the shared library with the logger set to
// TRACE|TEMP|INFO|DLLMAIN into a file, and checks the attach, thread-detach
// and detach chains' lines in order. Later subsystems add lines between
// these; the test only asks that these appear, in this order.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "fixtures/log_capture.h"
#include "fixtures/settings_writer.h"
#include "platform/system.h"
#include "fixtures/probes.h"

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

#ifdef _WIN32
// The Windows library reads the real (Wine) registry. The values are set for
// the probe's run only; afterwards they are set back to the logger's defaults.
class LoggerSettings {
public:
    explicit LoggerSettings(const std::string &logFile)
        : ready_(apply(kTraceTempInfoDllMain, 5, logFile.c_str(), 1, kLineTemplate))
    {
    }
    ~LoggerSettings() { apply(64, 3, "", 0, "[[TIME]] [[LEVEL]] [[FUNC]] [[FILE]:[LINE]] [MSG]"); }
    bool ready() const { return ready_; }
    std::string environment() const { return ""; }

private:
    static bool apply(uint32_t level, uint32_t location, const char *fileName, uint32_t fileFormat,
                      const char *format)
    {
        using tollan::testing::storeDword;
        using tollan::testing::storeString;
        return storeDword(kLoggerKey, "Log Level", level) == 0 &&
               storeDword(kLoggerKey, "Log Output Location", location) == 0 &&
               storeString(kLoggerKey, "Log File Name", fileName) == 0 &&
               storeDword(kLoggerKey, "Log File Format", fileFormat) == 0 &&
               storeString(kLoggerKey, "Log Format", format) == 0;
    }

    bool ready_;
};
#else
// The POSIX library reads the settings file named by TOLLAN_REGISTRY.
class LoggerSettings {
public:
    explicit LoggerSettings(const std::string &logFile) : path_(uniqueTestFileName("engine-settings"))
    {
        std::ofstream out(path_);
        out << "REGEDIT4\n\n[HKEY_CURRENT_USER\\" << kLoggerKey << "]\n"
            << "\"Log Level\"=dword:0000011d\n"  // with WARNING
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
        const std::string command = settings.environment() + probePath("startup_probe") + " > " + outputFile;
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
        {"TRACE|WInitApp", "SetUpMemory returned"},
        {"TRACE|WInitApp", "InitializeCodePage returned"},
        {"TRACE|WInitApp", "InitSupport returned"},
        {"TRACE|WInitApp", "ZORDebugInitialize returned"},
        {"TRACE|WInitApp", "CdbInitialize returned"},
        {"TRACE|WInitApp", "SetupPCTimer returned. Changed timer resolution."},
        {"TRACE|WInitApp", "InitAsyncAndMTProtection returned"},
        {"TRACE|WInitApp", "GetTimeOptions/GetDateOptions returned."},
        {"TRACE|WInitApp", "Returning 0."},
        {"TRACE|WinMain", "WInitApp returned"},
        {"TRACE|WMain", "ConfigureZORLoggerOnce returned"},
        {"TRACE|WMain", "ENTER"},
        {"TRACE|WMain", "InitTimeLib returned"},
        {"TRACE|WMain", "StdCLibInitOnce returned"},
        {"TRACE|WMain", "InitExecutionThreadVars returned"},
        {"TRACE|WMain", "FmtIOLibInitOnce returned"},
        {"TRACE|WMain", "UtilityLibraryInitOnce returned"},
        {"TRACE|WMain", "RegisterUtilityLibraryRunStateChangeCallback returned"},
        {"TRACE|WMain", "QXRS232Initialize returned"},
        {"TRACE|WMain", "Cleanup code: error = 0"},
        {"TRACE|WMain", "Returning 0"},
        {"TRACE|WinMain", "WMain returned"},
        {"TRACE|WinMain", "Returning 1 (exitCode = 0)"},
        {"TRACE|WInitRTDll", "WinMain returned"},
        {"TRACE|WInitRTDll", "Cleanup code: returning success"},
        {"TEMP|InitRTDll", "WInitRTDll returned."},
        {"DLLMAIN|DllMain", "InitRTDll returned"},
        {"DLLMAIN|DllMain", "SetupZORRTEHasBeenDetachedShmem returned"},
        {"DLLMAIN|DllMain", "InitRTEBasicTypes returned"},
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

    // A start-up with nothing stored warns about nothing (the Windows run
    // shares its registry with the other test programs and leaves WARNING out).
    for (const std::string &line : lines) EXPECT_NE(line.rfind("WARNING|", 0), 0u) << line;

    // Pointers print as Windows prints them, on every platform. (Under Wine
    // another test program may start meanwhile and log here as well.)
    const std::regex pointers(
        "INFO\\|WinMain\\|WinMain hInstance=0x[0-9A-F]{16} hPrevInstance=0x0{16} nCmdShow=0x[0-9a-f]+|"
        "TRACE\\|WInitRTDll\\|GetModuleHandle returned [0-9A-F]{16}");
    for (const std::string &line : lines) {
        if (line.find("|WinMain hInstance=") != std::string::npos ||
            line.find("|GetModuleHandle returned") != std::string::npos) {
            EXPECT_TRUE(std::regex_match(line, pointers)) << line;
        }
    }

    // The probe's module got its events through the shared library.
    EXPECT_NE(output.find("run state 0\nrun state 5\nrun state 6\nrun state 4\n"), std::string::npos)
        << output;
}

}  // namespace
