// In-place quicksort of a list's items: median of three, an explicit stack of
// pending ranges instead of recursion, nothing allocated. The compare
// function is the only indirect call; swaps are inlined per item size.
#include "support/list_internal.h"

namespace tollan::support::list {
namespace {

// Room for 49 pending ranges (two addresses each). The larger part of every
// partition is the one pushed, so the stack holds at most log2(n) ranges.
constexpr int kStackEntries = 98;

// Swaps two items in units of Unit; `units` is fixed at compile time when
// FixedUnits is not 0, so that the common sizes swap without a loop.
template <typename Unit, size_t FixedUnits>
struct ItemSwap {
    size_t units;

    void operator()(char *a, char *b) const noexcept
    {
        const size_t count = FixedUnits != 0 ? FixedUnits : units;
        for (size_t k = 0; k < count; ++k, a += sizeof(Unit), b += sizeof(Unit)) {
            Unit x;
            Unit y;
            std::memcpy(&x, a, sizeof x);
            std::memcpy(&y, b, sizeof y);
            std::memcpy(a, &y, sizeof y);
            std::memcpy(b, &x, sizeof x);
        }
    }
};

template <typename Swap>
void quickSort(char *first, char *last, size_t itemSize, ListCompareFunction compare, Swap swap) noexcept
{
    char *pending[kStackEntries];
    int top = 0;
    char *lo = first;
    char *hi = last;
    for (;;) {
        if (hi <= lo) {
            if (top == 0) return;
            hi = pending[--top];
            lo = pending[--top];
            continue;
        }
        const size_t span = static_cast<size_t>(hi - lo) / itemSize;  // items in the range - 1
        if (span == 1) {
            if (compare(lo, hi) > 0) swap(lo, hi);
            hi = lo;
            continue;
        }
        char *middle = lo + span / 2 * itemSize;
        if (compare(lo, middle) > 0) swap(lo, middle);
        if (compare(lo, hi) > 0) swap(lo, hi);
        if (compare(middle, hi) > 0) swap(middle, hi);
        if (span == 2) {
            hi = lo;
            continue;
        }
        // The median waits next to the last item, which is no smaller than it.
        char *pivot = hi - itemSize;
        swap(middle, pivot);
        char *i = lo;
        char *j = pivot;
        for (;;) {
            do i += itemSize;
            while (i < pivot && compare(i, pivot) < 0);
            do j -= itemSize;
            while (j > lo && compare(j, pivot) > 0);
            if (i >= j) break;
            swap(i, j);
        }
        if (i != pivot) swap(i, pivot);
        const size_t leftItems = static_cast<size_t>(i - lo) / itemSize;
        const size_t rightItems = static_cast<size_t>(hi - i) / itemSize;
        // Push the longer part, go on with the shorter one. A part that does
        // not fit on a full stack stays as it is.
        if (leftItems > rightItems) {
            if (leftItems > 1 && top < kStackEntries) {
                pending[top++] = lo;
                pending[top++] = i - itemSize;
            }
            lo = i;
        } else {
            if (rightItems > 1 && top < kStackEntries) {
                pending[top++] = i + itemSize;
                pending[top++] = hi;
            }
            hi = i;
        }
    }
}

// Picks the swap width: bytes for odd sizes, 16-bit units for sizes of the
// form 4k + 2, 32-bit units for multiples of 4.
void sortItems(char *items, int32_t count, size_t itemSize, ListCompareFunction compare) noexcept
{
    char *last = items + (static_cast<size_t>(count) - 1) * itemSize;
    switch (itemSize) {
        case 4:
            return quickSort(items, last, itemSize, compare, ItemSwap<uint32_t, 1>{});
        case 8:
            return quickSort(items, last, itemSize, compare, ItemSwap<uint32_t, 2>{});
        case 16:
            return quickSort(items, last, itemSize, compare, ItemSwap<uint32_t, 4>{});
        default:
            break;
    }
    if (itemSize % 2 != 0) return quickSort(items, last, itemSize, compare, ItemSwap<uint8_t, 0>{itemSize});
    if (itemSize % 4 == 2)
        return quickSort(items, last, itemSize, compare, ItemSwap<uint16_t, 0>{itemSize / 2});
    quickSort(items, last, itemSize, compare, ItemSwap<uint32_t, 0>{itemSize / 4});
}

}  // namespace
}  // namespace tollan::support::list

using namespace tollan::support::list;

void LQuickSort(ListType list, ListCompareFunction compare) noexcept
{
    if (!checkSanity(list, "LQuickSort")) return;
    if (compare == nullptr) {
        assertFailed("compareFunction", "LQuickSort");
        return;
    }
    ListBlock *block = blockOf(list);
    if (block->numItems < 2 || block->itemSize == 0 || LIsSorted(list, compare) != 0) return;
    sortItems(itemsOf(block), block->numItems, block->itemSize, compare);
}
