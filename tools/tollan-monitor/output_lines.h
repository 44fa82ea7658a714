// Report lines for what a program writes: its debug output, and its standard
// output and error as they come through the standard I/O pipe.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tollan::monitor {

// One line per line of `bytes`, each "LABEL: TEXT". One newline at the end
// ends the last line (it does not make an empty one after it), and bytes
// without a newline at the end still make a line of their own, so a line the
// program writes in two pieces shows as two. Control characters other than
// the tab show as \xNN, so that no byte of the program's disturbs the report.
std::vector<std::string> outputLines(std::string_view label, std::string_view bytes);

}  // namespace tollan::monitor
