// The checks every list operation starts with, and how their failures are
// reported.
#include "support/list_internal.h"

#include "logger/log.h"

namespace tollan::support::list {
namespace {

bool sanityHolds(ListType list, bool acceptSwapped, const char *function, const char *sanityText,
                 Where where) noexcept
{
    if (list == nullptr) {
        assertFailed("theList", function, where);
        return false;
    }
    const uint32_t found = blockOf(list)->sanity;
    if (found == LIST_SANITY_WORD || (acceptSwapped && found == LIST_SANITY_WORD_SWAPPED)) return true;
    TOLLAN_LOG(ZOR_LOG_TEMP, kSource, function,
               "Error, front of list overwritten, expect 0x%lx, but found 0x%lx",
               static_cast<unsigned long>(LIST_SANITY_WORD), static_cast<unsigned long>(found));
    assertFailed(sanityText, function, where);
    return false;
}

}  // namespace

void assertFailed(const char *expressionText, const char *function, Where where) noexcept
{
    ZORAssert(expressionText, kSource, function, static_cast<int32_t>(where.line()), nullptr);
}

bool checkSanity(ListType list, const char *function, const char *sanityText, Where where) noexcept
{
    return sanityHolds(list, false, function, sanityText, where);
}

bool checkEitherByteOrderSanity(ListType list, const char *function, const char *sanityText,
                                Where where) noexcept
{
    return sanityHolds(list, true, function, sanityText, where);
}

bool checkItemPosition(ListBlock *block, int32_t position, const char *function, Where where) noexcept
{
    if (position > kEndOfList && position <= block->numItems) return true;
    assertFailed("itemPosition >= kEndOfList && itemPosition <= (*theList)->numItems", function, where);
    return false;
}

bool checkNotEmpty(ListBlock *block, const char *function, Where where) noexcept
{
    if (block->numItems > 0) return true;
    assertFailed("(*theList)->numItems > 0", function, where);
    return false;
}

void logMgErr(int32_t error, const char *function, Where where) noexcept
{
    if (logger::configuring() || !logger::enabled(ZOR_LOG_WARNING)) return;
    WriteZORLogMessage(ZOR_LOG_WARNING, 0, 0, kSource, function, static_cast<int32_t>(where.line()),
                       "MgErr = %d", error);
}

}  // namespace tollan::support::list
