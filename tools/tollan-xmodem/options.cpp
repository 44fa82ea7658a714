#include "options.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace tollan::xmodem_tool {

const char kUsage[] =
    "usage: tollan-xmodem send|receive PORT-OR-DEVICE FILE [options]\n"
    "  PORT-OR-DEVICE   a port number 1 to 1000 (its own defaults) or a device\n"
    "                   path or name such as /dev/ttyUSB0 or COM3\n"
    "  --baud N         the line's rate (default 115200; a numbered port keeps\n"
    "                   its own unless this is given)\n"
    "  --packet N       packet size, 1 to 65536: 128 (default), 1024 (1K\n"
    "                   packets) or another size both ends agree on\n"
    "  --tries N        tries for each packet and for the start (default 10)\n"
    "  --start-delay S  seconds to wait for the other end at the start (default 10)\n"
    "  --wait S         seconds to wait for each answer (default 10)\n"
    "  --quiet          no progress line\n"
    "Exit status: 0 done, 1 the transfer failed, 2 usage, 130 cancelled by Ctrl-C.\n";

namespace {

bool wholeNumber(std::string_view text, int32_t least, int32_t most, int32_t *value)
{
    int32_t parsed = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (error != std::errc{} || end != text.data() + text.size() || parsed < least || parsed > most)
        return false;
    *value = parsed;
    return true;
}

bool seconds(std::string_view text, double *value)
{
    double parsed = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(parsed) || parsed <= 0.0)
        return false;
    *value = parsed;
    return true;
}

// The line argument: digits alone name a port, anything else a device.
bool line(std::string_view text, Options &options)
{
    if (text.empty()) return false;
    if (text.find_first_not_of("0123456789") != std::string_view::npos) {
        options.device = text;
        return true;
    }
    return wholeNumber(text, 1, 1000, &options.port);
}

Options refuse(std::string error)
{
    Options refused;
    refused.error = std::move(error);
    return refused;
}

}  // namespace

Options parseOptions(int argc, char **argv)
{
    Options options;
    std::string_view positional[3];
    int positionals = 0;
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (optionsEnded || (argument.substr(0, 2) != "--" && argument != "-h")) {
            if (positionals == 3) return refuse("too many arguments");
            positional[positionals++] = argument;
            continue;
        }
        if (argument == "--") {
            optionsEnded = true;
            continue;
        }
        if (argument == "--help" || argument == "-h") {
            options.command = Options::Command::help;
            return options;
        }
        if (argument == "--quiet") {
            options.quiet = true;
            continue;
        }
        // The others take a value, as the next argument or after '='.
        const size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        if (name != "--baud" && name != "--packet" && name != "--tries" && name != "--start-delay" &&
            name != "--wait")
            return refuse("unknown option " + std::string(argument));
        std::string_view value;
        if (equals != std::string_view::npos) {
            value = argument.substr(equals + 1);
        } else if (i + 1 < argc) {
            value = argv[++i];
        } else {
            return refuse(std::string(name) + " needs a value");
        }
        bool good = false;
        if (name == "--baud") {
            good = wholeNumber(value, 1, INT32_MAX, &options.baud);
            options.baudGiven = true;
        } else if (name == "--packet") {
            good = wholeNumber(value, 1, kLargestPacket, &options.packetSize);
        } else if (name == "--tries") {
            good = wholeNumber(value, 1, INT32_MAX, &options.tries);
        } else if (name == "--start-delay") {
            good = seconds(value, &options.startDelay);
        } else if (name == "--wait") {
            good = seconds(value, &options.waitPeriod);
        }
        if (!good) return refuse("bad value for " + std::string(name) + ": \"" + std::string(value) + "\"");
    }
    if (positionals < 3) return refuse("a command, a port or device, and a file are needed");
    if (positional[0] == "send")
        options.command = Options::Command::send;
    else if (positional[0] == "receive")
        options.command = Options::Command::receive;
    else
        return refuse("unknown command \"" + std::string(positional[0]) + "\"");
    if (!line(positional[1], options))
        return refuse("\"" + std::string(positional[1]) + "\" is neither a port 1 to 1000 nor a device");
    if (positional[2].empty()) return refuse("the file name is empty");
    options.file = positional[2];
    return options;
}

}  // namespace tollan::xmodem_tool
