#include "event_text.h"

#include <cstdlib>

namespace tollan::monitor {
namespace {

std::vector<std::string> split(std::string_view text)
{
    std::vector<std::string> parts;
    for (;;) {
        const size_t bar = text.find('|');
        parts.emplace_back(text.substr(0, bar));
        if (bar == std::string_view::npos) return parts;
        text.remove_prefix(bar + 1);
    }
}

bool allDigits(std::string_view text)
{
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

// Where the ":HEAD" marker starts in the body after the name, or npos.
// Arguments may hold ':' themselves (a file name can), so the last marker
// whose number is the head length wins; failing that, the last one whose
// number is some other number or empty.
size_t findHeadMarker(std::string_view body, size_t nameLength)
{
    const std::string head = std::to_string(nameLength + 2);
    size_t fallback = std::string_view::npos;
    for (size_t colon = body.rfind(':'); colon != std::string_view::npos && colon >= nameLength;
         colon = colon == 0 ? std::string_view::npos : body.rfind(':', colon - 1)) {
        const size_t end = body.find('|', colon);
        const std::string_view number =
            body.substr(colon + 1, end == std::string_view::npos ? end : end - colon - 1);
        if (!allDigits(number)) continue;
        if (number == head) return colon;
        if (fallback == std::string_view::npos) fallback = colon;
    }
    return fallback;
}

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first);
}

std::string describeModuleAttach(const EventText &event)
{
    // handle | four version words | debug table | entries | file name
    const auto &a = event.arguments;
    if (a.size() < 8) return {};
    std::string fileName = a[7];
    for (size_t i = 8; i < a.size(); ++i) fileName += "|" + a[i];  // a '|' in the file name
    const std::string entries = trimmed(a[6]);
    return "module attached: " + fileName + " (handle " + a[0] + ", " + entries + " debug-table " +
           (entries == "1" ? "entry" : "entries") + ", version " + trimmed(a[1]) + "." + trimmed(a[2]) + "." +
           trimmed(a[3]) + "." + trimmed(a[4]) + ")";
}

std::string describeParsed(const EventText &event)
{
    const auto &a = event.arguments;
    if (event.name == "module_attach") return describeModuleAttach(event);
    if (event.name == "module_detach" && a.size() == 1) return "module detached: handle " + a[0];
    if (event.name == "update_watchpoints") return "the program asks for its watchpoints to be updated";
    if (event.name == "call" && a.size() == 1 && a[0] == "reset") return "the program calls the reset hook";
    if (event.name == "set_exe_state" && a.size() == 1) return "execution state: stepping " + a[0];
    if (event.name == "resource_release" && a.size() == 1) return "resource released: handle " + a[0];
    if (event.name == "resources_final_tally" && a.size() == 1)
        return "final tally of resources, table at " + a[0];
    return {};
}

}  // namespace

std::optional<EventText> parseEventText(std::string_view text)
{
    if (text.size() < 4 || text.substr(0, 2) != "@{" || text.substr(text.size() - 2) != "}@")
        return std::nullopt;
    const std::string_view body = text.substr(2, text.size() - 4);
    const size_t nameEnd = body.find_first_of("|:");
    if (nameEnd == 0) return std::nullopt;
    EventText event;
    event.name = body.substr(0, nameEnd);
    if (nameEnd == std::string_view::npos) return event;
    const size_t marker = findHeadMarker(body, nameEnd);
    if (marker == std::string_view::npos) {
        if (body[nameEnd] == '|') event.arguments = split(body.substr(nameEnd + 1));
        return event;
    }
    if (marker > nameEnd) {
        if (body[nameEnd] != '|') return std::nullopt;
        event.arguments = split(body.substr(nameEnd + 1, marker - nameEnd - 1));
    }
    const size_t fieldsStart = body.find('|', marker);
    if (fieldsStart != std::string_view::npos) event.fields = split(body.substr(fieldsStart + 1));
    return event;
}

std::string describeEventText(std::string_view text)
{
    if (std::optional<EventText> event = parseEventText(text)) {
        std::string described = describeParsed(*event);
        if (!described.empty()) return described;
    }
    return "event: " + std::string(text);
}

std::optional<uint64_t> parsePointer(std::string_view text)
{
    if (text.empty() || text.size() > 16 ||
        text.find_first_not_of("0123456789ABCDEFabcdef") != std::string_view::npos)
        return std::nullopt;
    return std::strtoull(std::string(text).c_str(), nullptr, 16);
}

}  // namespace tollan::monitor
