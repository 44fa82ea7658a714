// A device's default settings: the string in the settings store (key
// "HKEY_CURRENT_USER\Software\Vantrel\ZOR\17.0\Ports", value "COM3:"), read
// the way Windows reads its "ports" profile section, and parsed in the two
// forms of a device-control string that Windows accepts:
//   the mode form      "9600,n,8,1" with an optional ",x" (XON/XOFF) or
//                      ",p" (hardware handshaking); the baud rate may be
//                      abbreviated to its first two digits ("96", "19");
//   the keyword form   "baud=9600 parity=N data=8 stop=1 xon=on octs=on ..."
#include "platform/serial.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/settings_store.h"

namespace tollan::platform {
namespace {

constexpr const char *kPortsKey = "Software\\Vantrel\\ZOR\\17.0\\Ports";
constexpr const char *kDefaultEntry = "9600,n,7,1";

bool parseNumber(std::string_view text, long *value) noexcept
{
    if (text.empty() || text.size() > 10) return false;
    long result = 0;
    for (const char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
        result = result * 10 + (c - '0');
    }
    *value = result;
    return true;
}

// The mode form's abbreviated rates.
long modeBaud(long given) noexcept
{
    switch (given) {
        case 11:
            return 110;
        case 15:
            return 150;
        case 30:
            return 300;
        case 60:
            return 600;
        case 12:
            return 1200;
        case 24:
            return 2400;
        case 48:
            return 4800;
        case 96:
            return 9600;
        case 19:
            return 19200;
        default:
            return given;
    }
}

bool parseParity(std::string_view text, SerialSettings *settings) noexcept
{
    if (text.size() != 1) return false;
    static constexpr char kLetters[] = "noems";
    const char *at = std::strchr(kLetters, std::tolower(static_cast<unsigned char>(text[0])));
    if (at == nullptr || *at == '\0') return false;
    settings->parity = static_cast<uint8_t>(at - kLetters);
    settings->parityCheck = settings->parity == 1 || settings->parity == 2;
    return true;
}

bool parseDataBits(std::string_view text, SerialSettings *settings) noexcept
{
    long bits = 0;
    if (!parseNumber(text, &bits) || bits < 5 || bits > 8) return false;
    settings->dataBits = static_cast<uint8_t>(bits);
    return true;
}

// "1", "1.5" (taken as one) or "2".
bool parseStopBits(std::string_view text, SerialSettings *settings) noexcept
{
    if (text == "1" || text == "1.5") {
        settings->stopBits = 1;
        return true;
    }
    if (text == "2") {
        settings->stopBits = 2;
        return true;
    }
    return false;
}

bool parseBaud(std::string_view text, bool abbreviated, SerialSettings *settings) noexcept
{
    long baud = 0;
    if (!parseNumber(text, &baud) || baud < 1 || baud > 0x7FFFFFFF) return false;
    settings->baudRate = static_cast<int32_t>(abbreviated ? modeBaud(baud) : baud);
    return true;
}

bool parseSwitch(std::string_view text, bool *on) noexcept
{
    if (strncasecmp(text.data(), "on", text.size()) == 0 && text.size() == 2) {
        *on = true;
        return true;
    }
    if (strncasecmp(text.data(), "off", text.size()) == 0 && text.size() == 3) {
        *on = false;
        return true;
    }
    return false;
}

std::string_view trimmed(std::string_view text) noexcept
{
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    return text;
}

// "9600,n,8,1[,x|p]": baud first, the rest optional and in this order.
bool parseModeForm(std::string_view text, SerialSettings *settings) noexcept
{
    for (int field = 0; !text.empty() || field == 0; ++field) {
        const size_t comma = text.find(',');
        const std::string_view item = trimmed(text.substr(0, comma));
        text = comma == std::string_view::npos ? std::string_view{} : text.substr(comma + 1);
        if (item.empty() && field > 0) continue;
        switch (field) {
            case 0:
                if (!parseBaud(item, true, settings)) return false;
                break;
            case 1:
                if (!parseParity(item, settings)) return false;
                break;
            case 2:
                if (!parseDataBits(item, settings)) return false;
                break;
            case 3:
                if (!parseStopBits(item, settings)) return false;
                break;
            case 4:
                if (item == "x" || item == "X") {
                    settings->xonXoffOutput = settings->xonXoffInput = true;
                } else if (item == "p" || item == "P") {
                    settings->ctsOutputFlow = true;
                    settings->dtrControl = 2;
                    settings->rtsControl = 2;
                } else {
                    return false;
                }
                break;
            default:
                return false;
        }
    }
    return true;
}

bool parseKeyword(std::string_view key, std::string_view value, SerialSettings *settings) noexcept
{
    const auto is = [&](const char *name) {
        return key.size() == std::strlen(name) && strncasecmp(key.data(), name, key.size()) == 0;
    };
    bool on = false;
    if (is("baud")) return parseBaud(value, false, settings);
    if (is("parity")) return parseParity(value, settings);
    if (is("data")) return parseDataBits(value, settings);
    if (is("stop")) return parseStopBits(value, settings);
    if (is("xon")) {
        if (!parseSwitch(value, &on)) return false;
        settings->xonXoffOutput = settings->xonXoffInput = on;
        return true;
    }
    if (is("octs")) {
        if (!parseSwitch(value, &on)) return false;
        settings->ctsOutputFlow = on;
        return true;
    }
    if (is("dtr") || is("rts")) {
        uint8_t control = 0;
        if (value.size() == 2 && strncasecmp(value.data(), "hs", 2) == 0)
            control = 2;
        else if (parseSwitch(value, &on))
            control = on ? 1 : 0;
        else
            return false;
        (is("dtr") ? settings->dtrControl : settings->rtsControl) = control;
        return true;
    }
    // Switches the tty driver has no counterpart for are checked and ignored.
    if (is("to") || is("odsr") || is("idsr")) return parseSwitch(value, &on);
    return false;
}

// "baud=9600 parity=N ...": keywords in any order, separated by blanks.
bool parseKeywordForm(std::string_view text, SerialSettings *settings) noexcept
{
    while (!(text = trimmed(text)).empty()) {
        size_t end = 0;
        while (end < text.size() && !std::isspace(static_cast<unsigned char>(text[end]))) ++end;
        const std::string_view item = text.substr(0, end);
        text.remove_prefix(end);
        const size_t equals = item.find('=');
        if (equals == std::string_view::npos) return false;
        if (!parseKeyword(item.substr(0, equals), item.substr(equals + 1), settings)) return false;
    }
    return true;
}

// The entry for `valueName`: the stored string, or the default when there is none.
std::string portsEntry(const char *valueName)
{
    SettingsKey *key = nullptr;
    if (settingsOpenKey(RootKey::currentUser, kPortsKey, false, false, &key) != 0) return kDefaultEntry;
    // Profile strings are read into 256 bytes.
    char value[256] = "";
    uint32_t type = 0;
    uint32_t size = sizeof value - 1;
    const int32_t status = settingsQueryValue(key, valueName, &type, value, &size);
    settingsCloseKey(key);
    if (status != 0 || type != kSettingString) return kDefaultEntry;
    value[std::min<size_t>(size, sizeof value - 1)] = '\0';
    return value;
}

bool parseDeviceControlString(const char *text, SerialSettings *settings) noexcept
{
    *settings = SerialSettings{};
    const std::string_view entry = trimmed(text);
    if (entry.empty()) return false;
    return entry.find('=') != std::string_view::npos ? parseKeywordForm(entry, settings)
                                                     : parseModeForm(entry, settings);
}

}  // namespace

bool serialPortDefaults(const char *deviceName, SerialSettings *settings, bool *empty) noexcept
{
    *settings = SerialSettings{};
    *empty = false;
    try {
        std::string name(deviceName);
        if (name.rfind("\\\\.\\", 0) == 0) name.erase(0, 4);
        const std::string entry = portsEntry((name + ":").c_str());
        if (trimmed(entry).empty()) {
            *empty = true;
            return true;
        }
        return parseDeviceControlString(entry.c_str(), settings);
    } catch (...) {
        return false;
    }
}

}  // namespace tollan::platform
