#include "session.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>

#include <tollan/debugger.h>

#include "break_report.h"
#include "event_text.h"
#include "output_lines.h"
#include "platform/event.h"
#include "platform/posix/monitor_channel.h"
#include "resource_tally.h"

namespace tollan::monitor {
namespace {

namespace channel = platform::posix;

// The poll period when the system gives no descriptor for the program's end.
constexpr int kExitCheckMs = 100;
// Reads of each standard I/O connection in one round of the loop: enough to
// empty what a program wrote between two event texts, few enough that a
// program writing without pause does not keep its other threads' event
// texts and breaks waiting.
constexpr int kStandardIOReadsPerRound = 16;
constexpr int kUntilEmpty = -1;

void answer(int fd, char kind) noexcept
{
    // A program that has gone cannot be answered; that is no error of ours.
    ssize_t put;
    do {
        put = send(fd, &kind, 1, MSG_NOSIGNAL);
    } while (put < 0 && errno == EINTR);
}

}  // namespace

Session::Session(ServedProgram &program, const LinkObjects &objects, Report &report, bool pause, int stopFd)
    : program_(program), objects_(objects), report_(report), memory_(program.pid()), stopFd_(stopFd)
{
    if (!pause) return;
    terminal_ = open("/dev/tty", O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (terminal_ < 0)
        report_.line("--pause: no terminal (%s); breaks are resumed at once", std::strerror(errno));
}

Session::~Session()
{
    for (Connection &connection : connections_) close(connection.fd);
    if (terminal_ >= 0) close(terminal_);
}

std::optional<ProgramEnd> Session::run()
{
    for (;;) {
        std::vector<pollfd> polled = {{objects_.debugOutput->fd(), POLLIN, 0},
                                      {objects_.standardIO->fd(), POLLIN, 0},
                                      {program_.exitFd(), POLLIN, 0},
                                      // The terminal is read only while a break waits for
                                      // Enter: the rest of the time its input is the program's.
                                      {held_.empty() ? -1 : terminal_, POLLIN, 0},
                                      {stopFd_, POLLIN, 0}};
        constexpr size_t kStop = 4;
        constexpr size_t kFirstConnection = 5;
        for (const Connection &connection : connections_) polled.push_back({connection.fd, POLLIN, 0});
        const int ready = poll(polled.data(), polled.size(), program_.exitFd() < 0 ? kExitCheckMs : -1);
        if (ready < 0 && errno != EINTR) {
            report_.line("poll failed (%s); waiting for the program to end", std::strerror(errno));
            return program_.ended(true).value_or(ProgramEnd{});
        }
        if (polled[kStop].revents != 0) {
            while (!held_.empty()) {
                resume(held_.front());
                held_.erase(held_.begin());
            }
            return std::nullopt;
        }
        if (ready > 0) {
            // Standard output and error first: what the program wrote before
            // it sent an event text is there by the time the text is, so the
            // report keeps the two in the order the program made them. They
            // are read whatever poll said of them, which it may have looked
            // at before the program wrote.
            acceptAll(polled[1].fd, true);
            serveStandardIO(kStandardIOReadsPerRound);
            if (polled[0].revents != 0) acceptAll(polled[0].fd, false);
            if (polled[3].revents != 0) readTerminal();
            // The connections polled are the first ones of the list; those
            // accepted just now come after them.
            for (size_t i = kFirstConnection; i < polled.size(); ++i) {
                Connection &connection = connections_[i - kFirstConnection];
                if (polled[i].revents != 0 && !connection.standardIO) serve(connection);
            }
            std::erase_if(connections_, [](const Connection &connection) { return connection.fd < 0; });
        }
        if (program_.exitFd() < 0 || polled[2].revents != 0) {
            if (const std::optional<ProgramEnd> end = program_.ended(false)) {
                drain();
                return end;
            }
        }
    }
}

void Session::serveStandardIO(int readsAtMost)
{
    for (Connection &connection : connections_) {
        if (!connection.standardIO) continue;
        for (int reads = 0; reads != readsAtMost && connection.fd >= 0; ++reads)
            if (serve(connection) != ReadOutcome::data) break;
    }
}

void Session::acceptAll(int listener, bool standardIO)
{
    for (;;) {
        const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) {
            if (errno == EINTR || errno == ECONNABORTED) continue;
            return;  // EAGAIN: none left
        }
        connections_.push_back({fd, standardIO, {}});
    }
}

Session::ReadOutcome Session::serve(Connection &connection)
{
    char bytes[65536];
    ssize_t got;
    do {
        got = recv(connection.fd, bytes, sizeof bytes, MSG_DONTWAIT);
    } while (got < 0 && errno == EINTR);
    if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return ReadOutcome::nothingYet;
    if (got <= 0) {
        if (connection.records.pending()) report_.line("a connection closed in the middle of a record");
        closeConnection(connection);
        return ReadOutcome::closed;
    }
    connection.records.append(bytes, static_cast<size_t>(got));
    Record record;
    while (connection.fd >= 0 && connection.records.next(&record)) handleRecord(connection, record);
    if (connection.fd >= 0 && connection.records.broken()) {
        report_.line("a record longer than %u bytes: the connection is dropped", RecordStream::kMaxPayload);
        closeConnection(connection);
        return ReadOutcome::closed;
    }
    return connection.fd >= 0 ? ReadOutcome::data : ReadOutcome::closed;
}

void Session::handleRecord(Connection &connection, const Record &record)
{
    // Each connection carries the records of its own pipe only.
    const bool standardIO =
        record.kind == channel::kRecordStandardOutput || record.kind == channel::kRecordStandardError;
    if (standardIO != connection.standardIO) {
        report_.line("a record of kind 0x%02x on the %s pipe: the connection is dropped",
                     static_cast<unsigned char>(record.kind),
                     connection.standardIO ? "standard I/O" : "debug-output");
        closeConnection(connection);
        return;
    }
    switch (record.kind) {
        case channel::kRecordText:
            handleText(record.payload);
            answer(connection.fd, channel::kAnswerTaken);
            break;
        case channel::kRecordOutput:
            for (const std::string &line : outputLines("debug output", record.payload)) report_.line(line);
            break;
        case channel::kRecordStandardOutput:
        case channel::kRecordStandardError:
            for (const std::string &line : outputLines(
                     record.kind == channel::kRecordStandardOutput ? "stdout" : "stderr", record.payload))
                report_.line(line);
            break;
        case channel::kRecordBreak:
            handleBreak(connection, record);
            break;
        default:
            report_.line("a record of unknown kind 0x%02x: the connection is dropped",
                         static_cast<unsigned char>(record.kind));
            closeConnection(connection);
    }
}

void Session::handleText(const std::string &text)
{
    report_.line(describeEventText(text));
    const std::optional<EventText> event = parseEventText(text);
    if (!event || event->name != "resources_final_tally" || event->arguments.size() != 1) return;
    const std::optional<uint64_t> table = parsePointer(event->arguments[0]);
    if (!table) return;
    // The program waits for our answer meanwhile, so the table holds still.
    for (const std::string &line : describeResourceTally(readResourceTally(memory_, *table)))
        report_.line(line);
    reportRefusedMemory();
}

void Session::handleBreak(Connection &connection, const Record &record)
{
    channel::BreakRecord stopped{};
    if (record.payload.size() != sizeof stopped) {
        report_.line("a break record of %zu bytes: the connection is dropped", record.payload.size());
        closeConnection(connection);
        return;
    }
    std::memcpy(&stopped, record.payload.data(), sizeof stopped);
    const BreakReport report = describeBreak(memory_, stopped.threadId, stopped.threadRecord);
    for (const std::string &line : report.lines) report_.line(line);
    reportRefusedMemory();
    const HeldBreak held{connection.fd, stopped.threadId, report.reason};
    if (terminal_ < 0) {
        resume(held);
        return;
    }
    held_.push_back(held);
    report_.line("press Enter to resume thread %llu", static_cast<unsigned long long>(held.threadId));
}

void Session::resume(const HeldBreak &held)
{
    answer(held.fd, channel::kAnswerResume);
    report_.line("thread %llu resumed", static_cast<unsigned long long>(held.threadId));
    if (held.reason != ZOR_BREAK_REASON_DISCONNECTED) return;
    // The program made this event before it stopped and waits on it now.
    const std::string name = "Vantrel - ZOR DBG Debugger Disconnected " + std::to_string(program_.pid());
    const std::unique_ptr<platform::Event> letGo = platform::Event::open(name.c_str());
    if (letGo == nullptr) {
        report_.line("the program disconnects, but its event '%s' cannot be opened", name.c_str());
        return;
    }
    letGo->set();
    report_.line("the program disconnected");
}

void Session::reportRefusedMemory()
{
    if (memory_.newlyRefused())
        report_.line(
            "the system refuses the monitor reading process %d's memory: where threads stop "
            "and the resources held cannot be shown",
            static_cast<int>(program_.pid()));
}

void Session::readTerminal()
{
    char bytes[256];
    const ssize_t got = read(terminal_, bytes, sizeof bytes);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
    size_t presses = got > 0 ? static_cast<size_t>(std::count(bytes, bytes + got, '\n')) : held_.size();
    if (got <= 0) {
        // The terminal is gone: nobody can press Enter any more.
        close(terminal_);
        terminal_ = -1;
    }
    for (; presses > 0 && !held_.empty(); --presses) {
        const HeldBreak held = held_.front();
        held_.erase(held_.begin());
        resume(held);
    }
}

void Session::closeConnection(Connection &connection)
{
    std::erase_if(held_, [&](const HeldBreak &held) { return held.fd == connection.fd; });
    close(connection.fd);
    connection.fd = -1;
}

void Session::drain()
{
    acceptAll(objects_.standardIO->fd(), true);
    serveStandardIO(kUntilEmpty);
    acceptAll(objects_.debugOutput->fd(), false);
    for (Connection &connection : connections_)
        while (connection.fd >= 0 && serve(connection) == ReadOutcome::data) {
        }
    std::erase_if(connections_, [](const Connection &connection) { return connection.fd < 0; });
    held_.clear();
}

}  // namespace tollan::monitor
