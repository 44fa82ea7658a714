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

TEST(SharedMemory, WritesAreVisibleThroughAnOpenedMapping)
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
}

TEST(SharedMemory, UnnamedMappingIsZeroFilledAndWritable)
{
    auto mapping = SharedMemory::create(nullptr, 100);
    ASSERT_TRUE(mapping);
    auto *bytes = static_cast<unsigned char *>(mapping->data());
    EXPECT_EQ(bytes[99], 0);
    bytes[99] = 7;
    EXPECT_EQ(bytes[99], 7);
}
