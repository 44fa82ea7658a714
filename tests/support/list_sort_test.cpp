// LQuickSort against std::sort for the three swap widths and the usual
// input shapes.
#include <algorithm>
#include <array>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "list_fixtures.h"

namespace {

template <size_t Size>
using Item = std::array<unsigned char, Size>;

template <size_t Size>
int32_t compareItems(const void *a, const void *b)
{
    const int order = std::memcmp(a, b, Size);
    return (order > 0) - (order < 0);
}

enum class Shape { random, fewValues, sorted, reversed, allEqual };

template <size_t Size>
std::vector<Item<Size>> makeInput(Shape shape, size_t count)
{
    std::mt19937 random(static_cast<uint32_t>(count * 31 + Size));
    std::vector<Item<Size>> items(count);
    for (auto &item : items)
        for (auto &byte : item)
            byte = static_cast<unsigned char>(shape == Shape::fewValues ? random() % 3 : random());
    if (shape == Shape::sorted) std::sort(items.begin(), items.end());
    if (shape == Shape::reversed) std::sort(items.rbegin(), items.rend());
    if (shape == Shape::allEqual) std::fill(items.begin(), items.end(), items.front());
    return items;
}

template <size_t Size>
void expectSortsLikeStdSort(size_t count)
{
    for (Shape shape : {Shape::random, Shape::fewValues, Shape::sorted, Shape::reversed, Shape::allEqual}) {
        std::vector<Item<Size>> expected = makeInput<Size>(shape, count);
        ListType list = LCreateWithOptions(Size, 0, static_cast<uint32_t>(count),
                                           GetDefaultCollectionMemAllocFunctions());
        std::memcpy(LGetListDataPtr(list), expected.data(), count * Size);
        LSetNumItems(list, static_cast<int32_t>(count));

        LQuickSort(list, compareItems<Size>);
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(std::memcmp(LGetListDataPtr(list), expected.data(), count * Size), 0)
            << "item size " << Size << ", " << count << " items, shape " << static_cast<int>(shape);
        LDiscard(list);
    }
}

template <size_t Size>
void expectSortsEveryCount()
{
    for (size_t count : {1, 2, 3, 4, 5, 7, 16, 100, 5000}) expectSortsLikeStdSort<Size>(count);
}

}  // namespace

// Odd sizes swap bytes, sizes of 2 mod 4 half-words, multiples of 4 words.
TEST(ListQuickSort, EverySwapWidthSortsLikeStdSort)
{
    expectSortsEveryCount<3>();
    expectSortsEveryCount<6>();
    expectSortsEveryCount<4>();
    expectSortsEveryCount<8>();
    expectSortsEveryCount<12>();
    expectSortsEveryCount<16>();
    expectSortsLikeStdSort<4>(200000);  // a large list with many duplicates
}
