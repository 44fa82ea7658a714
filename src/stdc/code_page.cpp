#include "stdc/code_page.h"

#include <array>
#include <atomic>

#include "platform/locale.h"

namespace tollan::stdc {
namespace {

// Written once at start-up, before other threads run; read freely after.
constinit std::array<bool, 256> leadBytes{};
constinit std::atomic<uint32_t> number{0};
constinit std::atomic<bool> multibyte{false};

}  // namespace

void InitializeCodePage() noexcept
{
    platform::CodePage codePage{};
    if (!platform::processCodePage(&codePage)) return;
    leadBytes.fill(false);
    bool anyLead = false;
    for (size_t i = 0; i + 1 < sizeof codePage.leadByteRanges; i += 2) {
        const unsigned first = codePage.leadByteRanges[i];
        const unsigned last = codePage.leadByteRanges[i + 1];
        if (first == 0) break;
        for (unsigned byte = first; byte <= last && byte < leadBytes.size(); ++byte) leadBytes[byte] = true;
        anyLead = true;
    }
    multibyte.store(anyLead);
    number.store(codePage.number);
}

uint32_t codePageNumber() noexcept
{
    return number.load(std::memory_order_relaxed);
}

bool multibyteCodePage() noexcept
{
    return multibyte.load(std::memory_order_relaxed);
}

bool isLeadByte(unsigned char byte) noexcept
{
    return multibyte.load(std::memory_order_relaxed) && leadBytes[byte];
}

}  // namespace tollan::stdc
