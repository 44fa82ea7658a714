// Waits without end sleep: a child process that waits forever uses next to
// no processor time.
#include <gtest/gtest.h>

#include <tollan/utility.h>

#include <cmath>
#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Runs `wait` in a child for 400 ms, then ends it; the child's processor time in ms.
template <typename Wait>
long processorMsOfChildThatWaits(Wait wait)
{
    const pid_t child = fork();
    if (child == 0) {
        wait();
        _exit(0);
    }
    usleep(400 * 1000);
    kill(child, SIGKILL);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
}

TEST(EndlessWaits, SleepInsteadOfSpinning)
{
    EXPECT_LT(processorMsOfChildThatWaits([] { Delay(INFINITY); }), 100);
    EXPECT_LT(processorMsOfChildThatWaits([] { Delay(1e12); }), 100);
    EXPECT_LT(processorMsOfChildThatWaits([] { SyncWait(Timer(), INFINITY); }), 100);
}

}  // namespace
