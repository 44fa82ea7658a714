// tollan-xmodem: sends or receives one file with XModem over a serial port.
// A program of the library's public API like any user's (see
// docs/xmodem-tool.md).
#include <tollan/rs232.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#ifdef _WIN32
#include <io.h>
#define isatty _isatty
#else
#include <unistd.h>
#endif

#include "interrupt.h"
#include "options.h"
#include "progress.h"

namespace {

using namespace tollan::xmodem_tool;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsageError = 2;
constexpr int kCancelled = 130;  // as a shell reports a program ended by Ctrl-C

// The port of a line given by its device name.
constexpr int32_t kDevicePort = 1;
// The queue sizes of a line given by its device name, and the least input
// queue of any line: a packet has to fit in it.
constexpr int32_t kQueueSize = 4096;
// Time for the last byte of a transfer to leave before the port closes.
constexpr std::chrono::milliseconds kLastByteTime{100};

int32_t inputQueueFor(const Options &options)
{
    return std::max(kQueueSize, options.packetSize);
}

// Opens a numbered port with its own defaults; a rate given on the command
// line, or packets larger than its input queue, open it again with those.
int32_t openNumberedPort(const Options &options)
{
    if (const int32_t opened = OpenCom(options.port, nullptr)) return opened;
    int32_t baud = 0, parity = 0, dataBits = 0, stopBits = 0, inputQueue = 0, outputQueue = 0;
    if (const int32_t read =
            __GetComConfig(options.port, &baud, &parity, &dataBits, &stopBits, &inputQueue, &outputQueue))
        return read;
    if (!options.baudGiven && options.packetSize <= inputQueue) return 0;
    return OpenComConfig(options.port, nullptr, options.baudGiven ? options.baud : baud, parity, dataBits,
                         stopBits, std::max(inputQueue, inputQueueFor(options)), outputQueue);
}

// Opens the line; 0 or the library's error.
int32_t openLine(const Options &options, int32_t *port)
{
    if (options.port != 0) {
        *port = options.port;
        return openNumberedPort(options);
    }
    *port = kDevicePort;
    return OpenComConfig(kDevicePort, options.device.c_str(), options.baud, 0, 8, 1, inputQueueFor(options),
                         kQueueSize);
}

int32_t onProgress(int32_t, int32_t packets, int64_t bytes, int32_t retries, void *line)
{
    static_cast<ProgressLine *>(line)->update(packets, bytes, retries);
    return interruptRequested() ? 1 : 0;
}

// "tollan-xmodem: [context: ]text (code)" on standard error.
void reportError(const std::string &context, int32_t error)
{
    std::fprintf(stderr, "tollan-xmodem: %s%s%s (%d)\n", context.c_str(), context.empty() ? "" : ": ",
                 GetRS232ErrorString(error), static_cast<int>(error));
}

int transfer(const Options &options)
{
    const bool onTerminal = !options.quiet && isatty(2) != 0;
    catchInterrupt(onTerminal);

    int32_t port = 0;
    if (const int32_t opened = openLine(options, &port)) {
        CloseCom(port);
        reportError(options.port != 0 ? "port " + std::to_string(options.port) : options.device, opened);
        return kFailed;
    }
    ProgressLine line(stderr, onTerminal);
    int32_t result =
        XModemConfig(port, options.startDelay, options.tries, options.waitPeriod, options.packetSize);
    if (result == 0) result = XModemSetProgressCallback(port, onProgress, &line);
    const bool started = result == 0 && !interruptRequested();
    if (started) {
        line.waiting(options.command == Options::Command::send ? "waiting for the receiver"
                                                               : "waiting for the sender");
        result = options.command == Options::Command::send ? XModemSend(port, options.file.c_str())
                                                           : XModemReceive(port, options.file.c_str());
    }
    line.finish();
    // The transfer's last byte (the final ACK, or the CAN of a cancel) may
    // still be in the driver when the transfer returns, and a close drops
    // what the driver holds.
    if (started) std::this_thread::sleep_for(kLastByteTime);
    CloseCom(port);

    // An interrupt that came too late to stop the transfer cancels nothing.
    if (started && result == 0) return kDone;
    if (interruptRequested()) {
        std::fputs("tollan-xmodem: cancelled\n", stderr);
        return kCancelled;
    }
    reportError("", result);
    return kFailed;
}

}  // namespace

int main(int argc, char **argv)
{
    const Options options = parseOptions(argc, argv);
    switch (options.command) {
        case Options::Command::help:
            std::fputs(kUsage, stdout);
            return kDone;
        case Options::Command::invalid:
            std::fprintf(stderr, "tollan-xmodem: %s\n%s", options.error.c_str(), kUsage);
            return kUsageError;
        case Options::Command::send:
        case Options::Command::receive:
            break;
    }
    return transfer(options);
}
