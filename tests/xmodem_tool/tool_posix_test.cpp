// tollan-xmodem as a user runs it: one copy sends on a pseudo-terminal, a
// second receives on another, and a relay joins the two lines. Each run is
// a program of its own, checked by its exit status, its standard error and
// the file that arrived.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <tollan/rs232.h>

#include "fixtures/pty_pair.h"
#include "fixtures/pty_relay.h"
#include "fixtures/scratch_folder.h"

using tollan::testing::PtyPair;
using tollan::testing::PtyRelay;
using tollan::testing::randomBytes;
using tollan::testing::ScratchFolder;

namespace {

using Clock = std::chrono::steady_clock;

// A running tollan-xmodem, its standard error on a pipe.
struct Started {
    pid_t pid = -1;
    int error = -1;
};

struct Ended {
    int status = -1;  // the exit status; 128 + the signal; -1 when it had to be killed
    std::string error;
};

Started start(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), TOLLAN_XMODEM_TOOL);
    std::vector<char *> argv;
    for (std::string &argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int error[2];
    if (pipe(error) != 0) return {};
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(error[1], STDERR_FILENO);
        close(error[0]);
        close(error[1]);
        execv(argv[0], argv.data());
        _exit(126);
    }
    close(error[1]);
    return {pid, error[0]};
}

// Waits for the run to end; one that takes longer than `seconds` is killed.
Ended finish(const Started &run, int seconds = 10)
{
    Ended ended;
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(seconds);
    bool killed = false;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd wait{run.error, POLLIN, 0};
        if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) == 0) {
            kill(run.pid, SIGKILL);
            killed = true;
            break;
        }
        char buffer[512];
        const ssize_t got = read(run.error, buffer, sizeof buffer);
        if (got <= 0) break;
        ended.error.append(buffer, static_cast<size_t>(got));
    }
    close(run.error);
    int status = 0;
    waitpid(run.pid, &status, 0);
    if (!killed) ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return ended;
}

// Two lines whose far ends a relay joins: the sender's and the receiver's.
class Relayed : public ::testing::Test {
protected:
    PtyPair sender_, receiver_;
    PtyRelay relay_{sender_, receiver_};
    ScratchFolder files_{"tollan-xmodem-tool"};
};

TEST_F(Relayed, AFileArrivesWholeInEachPacketSize)
{
    for (const size_t packet : {128, 1024}) {
        SCOPED_TRACE(packet);
        const std::string size = std::to_string(packet);
        const std::string bytes = randomBytes(5000, 7);
        // Whichever starts first, the receiver's next request comes within half a second.
        const Started receiver = start(
            {"receive", receiver_.device(), files_.path("in"), "--packet", size, "--start-delay", "0.5"});
        const Started sender = start(
            {"send", sender_.device(), files_.write("out", bytes), "--packet", size, "--start-delay", "0.5"});
        const Ended sent = finish(sender);
        const Ended received = finish(receiver);
        EXPECT_EQ(sent.status, 0) << sent.error;
        EXPECT_EQ(received.status, 0) << received.error;
        // No terminal, so no progress line: nothing at all on standard error.
        EXPECT_EQ(sent.error + received.error, "");
        std::string padded = bytes;
        padded.resize((bytes.size() + packet - 1) / packet * packet, '\0');
        EXPECT_TRUE(files_.read("in") == padded);
    }
}

TEST_F(Relayed, CtrlCCancelsAtAPacketBoundaryAndTheOtherEndHearsIt)
{
    const std::string bytes = randomBytes(2 << 20, 3);
    const Started receiver = start({"receive", receiver_.device(), files_.path("in"), "--packet", "1024",
                                    "--start-delay", "0.5", "--wait", "5"});
    const Started sender = start(
        {"send", sender_.device(), files_.write("out", bytes), "--packet", "1024", "--start-delay", "0.5"});
    // Interrupted once packets flow.
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(5);
    const auto arrived = [&] {
        std::error_code missing;
        const auto size = std::filesystem::file_size(files_.path("in"), missing);
        return missing ? 0 : size;
    };
    while (arrived() < 4096 && Clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(sender.pid, SIGINT);
    const Ended sent = finish(sender);
    const Clock::time_point cancelled = Clock::now();
    const Ended received = finish(receiver);
    EXPECT_EQ(sent.status, 130) << sent.error;
    EXPECT_EQ(sent.error, "tollan-xmodem: cancelled\n");
    // The receiver heard the cancel at once rather than waiting out its tries.
    EXPECT_EQ(received.status, 1);
    EXPECT_EQ(received.error,
              "tollan-xmodem: " + std::string(GetRS232ErrorString(ZOR_XMODEM_CANCELLED)) + " (-402)\n");
    EXPECT_LT(Clock::now() - cancelled, std::chrono::seconds(2));
    const std::string got = files_.read("in");
    EXPECT_GE(got.size(), 4096u);
    EXPECT_LT(got.size(), bytes.size());
    EXPECT_TRUE(got.compare(0, got.size(), bytes, 0, got.size()) == 0);
}

TEST(XModemTool, UsageErrorsGiveTwoAndFailuresOne)
{
    const std::vector<std::vector<std::string>> mistakes = {
        {},
        {"copy", "/dev/null", "file"},
        {"send", "/dev/null"},
        {"send", "0", "file"},
        {"receive", "1001", "file"},
        {"send", "/dev/null", "file", "--packet", "0"},
        {"send", "/dev/null", "file", "--wait", "soon"},
        {"send", "/dev/null", "file", "--tries"},
        {"send", "/dev/null", "file", "--speed", "9600"},
    };
    for (const auto &arguments : mistakes) {
        const Ended ended = finish(start(arguments));
        EXPECT_EQ(ended.status, 2) << ended.error;
        EXPECT_EQ(ended.error.rfind("tollan-xmodem: ", 0), 0u) << ended.error;
        EXPECT_NE(ended.error.find("\nusage: tollan-xmodem send|receive"), std::string::npos) << ended.error;
    }
    // A failure the library reports: its text and code, status 1.
    PtyPair line;
    ScratchFolder files("tollan-xmodem-tool");
    const Ended ended = finish(start({"send", line.device(), files.path("missing")}));
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.error,
              "tollan-xmodem: " + std::string(GetRS232ErrorString(ZOR_XMODEM_FILE_OPEN)) + " (-300)\n");
}

}  // namespace
