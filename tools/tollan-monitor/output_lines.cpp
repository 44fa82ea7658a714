#include "output_lines.h"

#include <cstdio>

namespace tollan::monitor {
namespace {

std::string shown(std::string_view label, std::string_view text)
{
    std::string line(label);
    line += ": ";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte >= 0x20 && byte != 0x7F) || c == '\t') {
            line += c;
            continue;
        }
        char escaped[5];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
        line += escaped;
    }
    return line;
}

}  // namespace

std::vector<std::string> outputLines(std::string_view label, std::string_view bytes)
{
    if (!bytes.empty() && bytes.back() == '\n') bytes.remove_suffix(1);
    std::vector<std::string> lines;
    for (;;) {
        const size_t end = bytes.find('\n');
        lines.push_back(shown(label, bytes.substr(0, end)));
        if (end == std::string_view::npos) return lines;
        bytes.remove_prefix(end + 1);
    }
}

}  // namespace tollan::monitor
