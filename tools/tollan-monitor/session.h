// One monitored run: the loop that serves the program from the moment it is
// let go (or attached) until it has ended. It waits (poll) on the two
// listening sockets, the connections the program made, the program's end,
// the monitor's own stop request and, with --pause, the terminal.
//
// Debug-output connections carry records (record_stream.h):
//   'O' an event text: shown, then answered 'k' (the program waits for it);
//       "resources_final_tally" makes the monitor list the resources still
//       held first, while the program still waits;
//   'P' debug output: shown;
//   'B' a break, on a connection of its own: where the thread stopped is
//       shown, then the thread is resumed ('r'), at once or, with --pause,
//       when Enter is pressed. After a break of reason 35 (the program
//       disconnects) the monitor sets the program's "Debugger Disconnected"
//       event, which the program waits on.
// Standard I/O connections carry records too, one per write of the program:
//   '1' standard output, '2' standard error: shown as they come, one report
//       line per line ("stdout: ...", "stderr: ..."), so the two streams stay
//       apart and in the order the program wrote them. They are read before
//       the debug-output connections in each round, so that they come
//       before the event texts the program sent after them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "link_objects.h"
#include "process_memory.h"
#include "record_stream.h"
#include "report.h"
#include "served_program.h"

namespace tollan::monitor {

class Session {
public:
    // pause: hold every break until Enter is pressed on the terminal (when
    // there is one; otherwise breaks are resumed at once, and the report says so).
    // stopFd: a descriptor that polls readable when the monitor is to leave
    // the program before it ends; -1 for none.
    Session(ServedProgram &program, const LinkObjects &objects, Report &report, bool pause, int stopFd);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Serves the program until it has ended and returns how it ended;
    // nothing when the monitor was told to stop first (the breaks it held
    // are resumed then).
    std::optional<ProgramEnd> run();

private:
    struct Connection {
        int fd;
        bool standardIO;
        RecordStream records;
    };
    struct HeldBreak {
        int fd;
        uint64_t threadId;
        int32_t reason;
    };
    enum class ReadOutcome { data, nothingYet, closed };

    // Reads each standard I/O connection until it has nothing more, or
    // readsAtMost times (-1: no limit).
    void serveStandardIO(int readsAtMost);
    void acceptAll(int listener, bool standardIO);
    ReadOutcome serve(Connection &connection);
    void handleRecord(Connection &connection, const Record &record);
    void handleText(const std::string &text);
    void handleBreak(Connection &connection, const Record &record);
    void resume(const HeldBreak &held);
    void readTerminal();
    void closeConnection(Connection &connection);
    // After the program has ended: whatever it still sent.
    void drain();
    // Says once that the program's memory cannot be read at all.
    void reportRefusedMemory();

    ServedProgram &program_;
    const LinkObjects &objects_;
    Report &report_;
    ProcessMemory memory_;
    int terminal_ = -1;
    int stopFd_;
    std::vector<Connection> connections_;
    std::vector<HeldBreak> held_;
};

}  // namespace tollan::monitor
