// The command line of tollan-xmodem:
//   tollan-xmodem send|receive PORT-OR-DEVICE FILE [options]
//   tollan-xmodem --help
#pragma once

#include <cstdint>
#include <string>

namespace tollan::xmodem_tool {

struct Options {
    enum class Command { send, receive, help, invalid };
    Command command = Command::invalid;
    // The line: a port number 1 to 1000, opened with that port's defaults,
    // or else (port 0) a device path or name, opened on port 1.
    int32_t port = 0;
    std::string device;
    std::string file;
    // The line's rate; for a numbered port only when given.
    int32_t baud = 115200;
    bool baudGiven = false;
    // The XModem values; 0 leaves the library's default.
    int32_t packetSize = 0;
    int32_t tries = 0;
    double startDelay = 0.0;
    double waitPeriod = 0.0;
    // No progress line and no note on Ctrl-C.
    bool quiet = false;
    // Why the command line was refused (Command::invalid).
    std::string error;
};

// The largest packet size the tool asks for.
constexpr int32_t kLargestPacket = 65536;

Options parseOptions(int argc, char **argv);

// The text --help prints.
extern const char kUsage[];

}  // namespace tollan::xmodem_tool
