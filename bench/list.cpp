// The list's hot paths against the C library and the standard library:
// sorting a million items of 4 and 16 bytes, binary search, appending up to
// 40 million items.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <tollan/list.h>

#include "support/list_allocator.h"

namespace {

constexpr int32_t kItems = 1000000;

// An item whose order is its first 32-bit word; the rest is payload.
template <size_t Size>
struct Item {
    uint32_t key;
    unsigned char payload[Size - sizeof(uint32_t)];
};
template <>
struct Item<4> {
    uint32_t key;
};

template <size_t Size>
int32_t compareKeys(const void *a, const void *b)
{
    const uint32_t x = static_cast<const Item<Size> *>(a)->key;
    const uint32_t y = static_cast<const Item<Size> *>(b)->key;
    return (x > y) - (x < y);
}

template <size_t Size>
const std::vector<Item<Size>> &shuffledItems()
{
    static const std::vector<Item<Size>> items = [] {
        std::vector<Item<Size>> made(kItems);
        std::mt19937 random(12345);
        for (auto &item : made) item.key = static_cast<uint32_t>(random());
        return made;
    }();
    return items;
}

ListType newList(uint32_t itemSize, int32_t capacity)
{
    tollan::support::installDefaultListAllocator();
    return LCreateWithOptions(itemSize, 0, static_cast<uint32_t>(capacity),
                              GetDefaultCollectionMemAllocFunctions());
}

template <size_t Size>
void BM_LQuickSort(benchmark::State &state)
{
    const auto &input = shuffledItems<Size>();
    ListType list = newList(Size, kItems);
    for (auto _ : state) {
        state.PauseTiming();
        std::memcpy(LGetListDataPtr(list), input.data(), input.size() * Size);
        LSetNumItems(list, kItems);
        state.ResumeTiming();
        LQuickSort(list, compareKeys<Size>);
    }
    LDiscard(list);
}

// Times `sort` on a fresh copy of the shuffled items in every iteration.
template <size_t Size, class Sort>
void timeSortOfCopies(benchmark::State &state, Sort sort)
{
    const auto &input = shuffledItems<Size>();
    std::vector<Item<Size>> items(input.size());
    for (auto _ : state) {
        state.PauseTiming();
        items = input;
        state.ResumeTiming();
        sort(items);
    }
}

template <size_t Size>
void BM_qsort(benchmark::State &state)
{
    timeSortOfCopies<Size>(state, [](std::vector<Item<Size>> &items) {
        std::qsort(items.data(), items.size(), Size, compareKeys<Size>);
    });
}

template <size_t Size>
void BM_std_sort(benchmark::State &state)
{
    timeSortOfCopies<Size>(state, [](std::vector<Item<Size>> &items) {
        std::sort(items.begin(), items.end(),
                  [](const Item<Size> &a, const Item<Size> &b) { return a.key < b.key; });
    });
}

void BM_LBinSearch(benchmark::State &state)
{
    ListType list = newList(sizeof(Item<4>), kItems);
    std::vector<Item<4>> sorted = shuffledItems<4>();
    std::sort(sorted.begin(), sorted.end(), [](const Item<4> &a, const Item<4> &b) { return a.key < b.key; });
    std::memcpy(LGetListDataPtr(list), sorted.data(), sorted.size() * sizeof(Item<4>));
    LSetNumItems(list, kItems);
    size_t next = 0;
    for (auto _ : state) {
        const Item<4> &key = shuffledItems<4>()[next];
        next = (next + 7919) % kItems;
        benchmark::DoNotOptimize(LBinSearch(list, &key, compareKeys<4>));
    }
    LDiscard(list);
}

// Appends one item at a time to a list that starts empty: growth included.
void BM_LInsertItemAtEnd(benchmark::State &state)
{
    const int32_t count = static_cast<int32_t>(state.range(0));
    for (auto _ : state) {
        ListType list = newList(sizeof(uint32_t), 0);
        for (int32_t value = 0; value < count; ++value) LInsertItem(list, &value, kEndOfList);
        benchmark::DoNotOptimize(LGetListDataPtr(list));
        LDiscard(list);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

// The same with the standard library's growable array.
void BM_vector_push_back(benchmark::State &state)
{
    const int32_t count = static_cast<int32_t>(state.range(0));
    for (auto _ : state) {
        std::vector<int32_t> items;
        for (int32_t value = 0; value < count; ++value) items.push_back(value);
        benchmark::DoNotOptimize(items.data());
    }
    state.SetItemsProcessed(state.iterations() * count);
}

// 40 million items: far past the capacity (about 19.5 million) whose growth
// once wrapped in 32 bits.
constexpr int64_t kHugeAppend = 40000000;

}  // namespace

BENCHMARK(BM_LQuickSort<4>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_qsort<4>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_sort<4>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LQuickSort<16>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_qsort<16>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_sort<16>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LBinSearch);
BENCHMARK(BM_LInsertItemAtEnd)->Arg(100000)->Arg(kHugeAppend)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_vector_push_back)->Arg(100000)->Arg(kHugeAppend)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
