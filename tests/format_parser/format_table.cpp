#include "format_parser/format_table.h"

namespace tollan::testing {

std::string describeTable(const ArgTypeEntry *table, int32_t count)
{
    std::string text;
    for (int32_t index = 0; index < count; ++index) {
        const ArgTypeEntry &entry = table[index];
        if (!text.empty()) text += ' ';
        text += entry.kind == FMT_ITEM_INTEGER  ? 'i'
                : entry.kind == FMT_ITEM_REAL   ? 'f'
                : entry.kind == FMT_ITEM_STRING ? 's'
                                                : '?';
        if (entry.isArray) text += 'a';
        text += std::to_string(entry.elementSize);
        if (entry.fromAsterisk) text += '*';
    }
    return text;
}

}  // namespace tollan::testing
