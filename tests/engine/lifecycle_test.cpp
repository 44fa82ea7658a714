// The library in real programs that unload it and exit while threads still
// use it. Each case runs a probe program many times over.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "fixtures/probes.h"

namespace {

#if defined(_WIN32)
// Every program start under Wine costs a good part of a second.
constexpr int kUnloadCycles = 100;
constexpr int kExits = 20;
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// A sanitized start and exit takes up to a second.
constexpr int kUnloadCycles = 200;
constexpr int kExits = 30;
#else
// Past the 1024 thread-specific keys a process has: a key left behind by
// every unload would run out before the end.
constexpr int kUnloadCycles = 1100;
constexpr int kExits = 1000;
#endif

int run(const std::string &command)
{
    return std::system(command.c_str());
}

TEST(Lifecycle, UnloadingWhileThreadsThatUsedItLiveIsSafeCycleAfterCycle)
{
    // Each cycle loads the library, lets a thread store a thread variable,
    // unloads the library and only then lets the thread end.
    EXPECT_EQ(run(kUnloadEnvironment + probePath("unload_probe") + " " + TOLLAN_LIBRARY_FOR_PROBES + " " +
                  std::to_string(kUnloadCycles)),
              0);
}

TEST(Lifecycle, ExitWhileEightThreadsUseFilesNeverCrashes)
{
    const std::filesystem::path directory = std::filesystem::temp_directory_path() / "tollan-exit-probe";
    std::filesystem::create_directories(directory);
    const std::string command = probePath("exit_probe") + " " + directory.string();
    int failures = 0;
    for (int i = 0; i < kExits; ++i) failures += run(command) != 0;
    EXPECT_EQ(failures, 0) << "of " << kExits << " exits";
    std::filesystem::remove_all(directory);
}

}  // namespace
