// The pointer checks on their passing path: a loop over a 1 MiB array of
// int that checks every dereference, or every step, against the array's
// block, beside the same loop without checks. Both loops go element by
// element (the sum is kept in a register the compiler may not widen), as
// checked code goes.
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>
#include <tollan/rtcheck.h>

namespace {

constexpr size_t kElements = (1u << 20) / sizeof(int);

struct Array {
    std::vector<int> data = std::vector<int>(kElements, 1);
    BlkInfo blk{reinterpret_cast<uintptr_t>(data.data()), kElements * sizeof(int)};
    PtrInfo shadow{};  // the array holds no pointers: one header would do
};

void finish(benchmark::State &state)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kElements));
}

void BM_Unchecked(benchmark::State &state)
{
    Array array;
    for (auto _ : state) {
        int sum = 0;
        for (const int *p = array.data.data(), *end = p + kElements; p != end; ++p) {
            sum += *p;
            benchmark::DoNotOptimize(sum);
        }
    }
    finish(state);
}
BENCHMARK(BM_Unchecked);

void BM_CheckedDeref(benchmark::State &state)
{
    Array array;
    for (auto _ : state) {
        int sum = 0;
        for (const int *p = array.data.data(), *end = p + kElements; p != end; ++p) {
            _PtrChkDeref(inttype, p, &array.shadow, &array.blk, 10, 5);
            sum += *p;
            benchmark::DoNotOptimize(sum);
        }
    }
    finish(state);
}
BENCHMARK(BM_CheckedDeref);

void BM_CheckedArith(benchmark::State &state)
{
    Array array;
    for (auto _ : state) {
        int sum = 0;
        PtrInfo *info = &array.shadow;
        for (const int *p = array.data.data(), *end = p + kElements; p != end; ++p) {
            sum += *p;
            benchmark::DoNotOptimize(sum);
            info = _PtrChkArith(intptype, p, sizeof(int), info, &array.blk, 10, 5);
        }
        benchmark::DoNotOptimize(info);
    }
    finish(state);
}
BENCHMARK(BM_CheckedArith);

}  // namespace

BENCHMARK_MAIN();
