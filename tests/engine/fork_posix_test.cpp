// fork(): a child's objects are its own, and it never removes its parent's.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/detached_marker.h"
#include "platform/event.h"
#include "platform/posix/named_region.h"
#include "platform/shared_memory.h"
#include "fixtures/probes.h"

namespace {

std::string markerName(pid_t pid)
{
    // The marker's name carries the process id; the library builds it for
    // the calling process, so the pid in it is swapped for the one asked.
    char name[128];
    tollan::engine::detachedMarkerName(name, sizeof name);
    std::string text(name);
    const std::string own = std::to_string(getpid());
    text.replace(text.rfind(own), own.size(), std::to_string(pid));
    return text;
}

bool exists(const std::string &mapping)
{
    return tollan::platform::SharedMemory::open(mapping.c_str(), sizeof(uint32_t)) != nullptr;
}

// Whether the named object is in the system at all; opening it would
// remove it when its creator has ended.
bool present(const std::string &mapping)
{
    return std::filesystem::exists("/dev/shm" + tollan::platform::posix::regionObjectName(mapping.c_str()));
}

struct Child {
    pid_t pid;
    int status;  // the exit status, or 100 + the signal that ended it
};

// Runs `body` in a forked child that then exits through exit(), as a
// program does.
template <typename Body>
Child inChild(Body body)
{
    const pid_t pid = fork();
    if (pid == 0) std::exit(body() ? 0 : 1);
    int status = -1;
    waitpid(pid, &status, 0);
    return {pid, WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status)};
}

TEST(Fork, AChildThatExitsLeavesItsParentsObjectsAlone)
{
    ASSERT_TRUE(exists(markerName(getpid())));
    auto event = tollan::platform::Event::create(true, false, "TollanTests fork event");
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(inChild([] { return true; }).status, 0);
    EXPECT_TRUE(exists(markerName(getpid())));
    EXPECT_NE(tollan::platform::Event::open("TollanTests fork event"), nullptr);
}

TEST(Fork, AChildThatUsesTheLibraryHasItsOwnMarkerUntilItEnds)
{
    const Child child = inChild([] { return present(markerName(getpid())); });
    EXPECT_EQ(child.status, 0) << "the child had no marker of its own";
    EXPECT_FALSE(present(markerName(child.pid))) << "the child left its marker behind";
    EXPECT_TRUE(present(markerName(getpid())));
}

TEST(StaleObjects, ANewProgramRemovesTheObjectsOfKilledProcesses)
{
    // Killed children leave their objects behind.
    std::vector<std::string> names;
    for (int i = 0; i < 3; ++i) {
        const std::string name = "TollanTests stale " + std::to_string(i);
        const Child child = inChild([&] {
            auto mapping = tollan::platform::SharedMemory::create(name.c_str(), 64);
            if (mapping != nullptr) kill(getpid(), SIGKILL);
            return false;
        });
        EXPECT_EQ(child.status, 100 + SIGKILL);
        ASSERT_TRUE(present(name));
        names.push_back(name);
    }
    // Any program that starts the library sweeps them away.
    EXPECT_EQ(std::system(probePath("startup_probe").append(" > /dev/null 2>&1").c_str()), 0);
    for (const std::string &name : names) EXPECT_FALSE(present(name)) << name;
}

}  // namespace
