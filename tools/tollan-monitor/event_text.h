// The debug event texts a program sends its debugger:
//   "@{" NAME ("|" ARGUMENT)* ":" HEAD ("|" FIELD)* "}@"
// HEAD is the length of "@{" NAME (some texts leave it empty). Pointers are
// 16 upper-case hexadecimal digits.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tollan::monitor {

struct EventText {
    std::string name;
    std::vector<std::string> arguments;
    std::vector<std::string> fields;
};

// Splits a text; nothing when it does not have the shape above.
std::optional<EventText> parseEventText(std::string_view text);

// The readable line for a text; an unknown or malformed one is shown as it came.
std::string describeEventText(std::string_view text);

// A pointer argument ("00007FFD12345678"); nothing when it is not one.
std::optional<uint64_t> parsePointer(std::string_view text);

}  // namespace tollan::monitor
