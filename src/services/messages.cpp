#include "services/messages.h"

namespace tollan::services {

namespace {

constexpr const char *kGeneralTexts[] = {
    "No error has occurred",  // 0
};

constexpr const char *kRegistryTexts[] = {
    "The registry key could not be opened, or the value is missing or of the wrong type",  // 77
    "No registry key handle after opening the key",                                        // 78
};

// Run-time checking's texts; the stack check is the first of them to exist.
constexpr const char *kStackTexts[] = {
    "ZOR has detected an inconsistency of the run-time stack.\n"
    "This might have been caused by a calling convention\n"
    "mismatch in the last function call.",  // 200
};

constexpr MessageRange kGeneralMessages{0, kGeneralTexts};
constexpr MessageRange kRegistryMessages{77, kRegistryTexts};
constexpr MessageRange kStackMessages{200, kStackTexts};

// A subsystem adds its range here: its texts in a file of its own, exposed
// as an `extern const MessageRange`, and one row below.
constexpr const MessageRange *kRanges[] = {
    &kGeneralMessages,
    &kRegistryMessages,
    &kStackMessages,
};

}  // namespace

const char *libraryMessage(int32_t number) noexcept
{
    for (const MessageRange *range : kRanges) {
        int64_t index = static_cast<int64_t>(number) - range->first;
        if (index >= 0 && index < static_cast<int64_t>(range->texts.size()))
            return range->texts[static_cast<size_t>(index)];
    }
    return "Unknown message number";
}

std::span<const MessageRange *const> messageRanges() noexcept
{
    return kRanges;
}

}  // namespace tollan::services
