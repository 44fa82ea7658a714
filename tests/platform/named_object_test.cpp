// Named events, mutexes and mappings: two objects of one name are one object.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "platform/event.h"
#include "platform/shared_memory.h"
#include "platform/thread.h"

using namespace tollan::platform;

namespace {

// Names private to this process, so that parallel test runs do not meet.
std::string uniqueName(const char *base)
{
    char name[96];
    std::snprintf(name, sizeof name, "Tollan Test %s %u", base, currentProcessId());
    return name;
}

struct MutexProbe {
    NamedMutex *mutex;
    WaitResult result;
};

void tryAcquire(void *argument)
{
    auto *probe = static_cast<MutexProbe *>(argument);
    probe->result = probe->mutex->acquire(50);
    if (probe->result == WaitResult::signalled) probe->mutex->release();
}

// Acquires the mutex from another thread with a short time-out.
WaitResult acquireElsewhere(NamedMutex *mutex)
{
    MutexProbe probe{mutex, WaitResult::failed};
    Thread::start(tryAcquire, &probe)->join();
    return probe.result;
}

}  // namespace

TEST(NamedEvent, TwoObjectsOfOneNameShareTheirState)
{
    const std::string name = uniqueName("event");
    auto first = Event::create(false, false, name.c_str());
    ASSERT_TRUE(first);
    auto second = Event::create(true, true, name.c_str());  // opens: its own modes are ignored
    ASSERT_TRUE(second);
    auto opened = Event::open(name.c_str());
    ASSERT_TRUE(opened);

    EXPECT_EQ(second->wait(0), WaitResult::timedOut);
    first->set();
    EXPECT_EQ(opened->wait(0), WaitResult::signalled);
    EXPECT_EQ(second->wait(0), WaitResult::timedOut) << "auto-reset, as created";
    second->set();
    EXPECT_EQ(first->wait(1000), WaitResult::signalled);
}

TEST(NamedEvent, OpenFindsOnlyExistingEvents)
{
    const std::string name = uniqueName("absent event");
    EXPECT_FALSE(Event::open(name.c_str()));
    {
        auto created = Event::create(true, true, name.c_str());
        ASSERT_TRUE(created);
        auto opened = Event::open(name.c_str());
        ASSERT_TRUE(opened);
        EXPECT_EQ(opened->wait(0), WaitResult::signalled);
    }
    EXPECT_FALSE(Event::open(name.c_str())) << "the name goes with its last object";
}

TEST(NamedMutex, HeldThroughOneObjectBlocksAnotherThreadThroughTheOther)
{
    const std::string name = uniqueName("mutex");
    auto first = NamedMutex::create(name.c_str());
    auto second = NamedMutex::create(name.c_str());
    ASSERT_TRUE(first && second);

    ASSERT_EQ(first->acquire(0), WaitResult::signalled);
    EXPECT_EQ(first->acquire(0), WaitResult::signalled) << "the owner may acquire again";
    EXPECT_EQ(acquireElsewhere(second.get()), WaitResult::timedOut);
    first->release();
    EXPECT_EQ(acquireElsewhere(second.get()), WaitResult::timedOut) << "still held once";
    first->release();
    EXPECT_EQ(acquireElsewhere(second.get()), WaitResult::signalled);
}

TEST(SharedMemory, WritesAreVisibleThroughAnOpenedMappingAndMappingsStartZeroed)
{
    const std::string name = uniqueName("mapping");
    EXPECT_FALSE(SharedMemory::open(name.c_str(), 64));
    auto created = SharedMemory::create(name.c_str(), 4096);
    ASSERT_TRUE(created);
    ASSERT_EQ(created->size(), 4096u);
    const auto *bytes = static_cast<const unsigned char *>(created->data());
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[4095], 0);

    auto opened = SharedMemory::open(name.c_str(), 64);
    ASSERT_TRUE(opened);
    std::strcpy(static_cast<char *>(created->data()), "written by the creator");
    EXPECT_STREQ(static_cast<const char *>(opened->data()), "written by the creator");
    std::strcpy(static_cast<char *>(opened->data()), "and back");
    EXPECT_STREQ(static_cast<const char *>(created->data()), "and back");

    auto unnamed = SharedMemory::create(nullptr, 100);  // zero-filled and writable too
    ASSERT_TRUE(unnamed);
    auto *unnamedBytes = static_cast<unsigned char *>(unnamed->data());
    EXPECT_EQ(unnamedBytes[99], 0);
    unnamedBytes[99] = 7;
    EXPECT_EQ(unnamedBytes[99], 7);
}

#ifndef _WIN32
// Other processes: a child sees the parent's objects, and the objects of a
// process that died without closing them do not outlive it.
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `body` in a child process; its result is the child's exit status.
template <typename Body>
int inChild(Body body)
{
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

TEST(NamedEvent, AnotherProcessWaitsAndSignals)
{
    const std::string request = uniqueName("request"), reply = uniqueName("reply");
    auto requested = Event::create(false, false, request.c_str());
    auto replied = Event::create(false, false, reply.c_str());
    ASSERT_TRUE(requested && replied);
    const pid_t child = fork();
    if (child == 0) {
        auto childRequest = Event::open(request.c_str());
        auto childReply = Event::open(reply.c_str());
        if (!childRequest || !childReply || childRequest->wait(5000) != WaitResult::signalled) _exit(1);
        childReply->set();
        _exit(0);
    }
    sleepMs(50);
    requested->set();
    EXPECT_EQ(replied->wait(5000), WaitResult::signalled);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST(NamedMutex, OwnerThatDiesHandsTheMutexOn)
{
    const std::string name = uniqueName("abandoned");
    auto mutex = NamedMutex::create(name.c_str());
    ASSERT_TRUE(mutex);
    EXPECT_EQ(inChild([&] {
                  auto childMutex = NamedMutex::create(name.c_str());
                  return childMutex && childMutex->acquire(0) == WaitResult::signalled ? 0 : 1;
              }),
              0);
    EXPECT_EQ(mutex->acquire(1000), WaitResult::signalled);
    mutex->release();
}

TEST(SharedMemory, LeftoverOfADeadProcessIsReplaced)
{
    const std::string name = uniqueName("leftover");
    // The child creates the mapping, fills it and dies without closing it.
    EXPECT_EQ(inChild([&] {
                  auto mapping = SharedMemory::create(name.c_str(), 16);
                  if (!mapping) return 1;
                  std::strcpy(static_cast<char *>(mapping->data()), "stale");
                  _exit(0);
              }),
              0);
    EXPECT_FALSE(SharedMemory::open(name.c_str(), 16)) << "its creator is gone";
    auto fresh = SharedMemory::create(name.c_str(), 16);
    ASSERT_TRUE(fresh);
    EXPECT_EQ(static_cast<const char *>(fresh->data())[0], '\0');
}
#endif
