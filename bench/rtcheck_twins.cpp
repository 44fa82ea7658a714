// A checked twin against its plain function: memcpy of 64 bytes, at the
// checking level, with no pointer information handed over and with both
// buffers described as compiled code describes them before the call.
#include <cstring>

#include <benchmark/benchmark.h>
#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

#include "rtcheck/checking_environment.h"
#include "rtcheck/pointer_info.h"

namespace {

constexpr size_t kBytes = 64;

struct Buffers {
    alignas(64) char target[kBytes];
    alignas(64) char source[kBytes];
};

void BM_PlainMemcpy(benchmark::State &state)
{
    Buffers buffers{};
    for (auto _ : state) {
        // Through a pointer, as a call from another module is made.
        void *(*volatile copy)(void *, const void *, size_t) = &std::memcpy;
        benchmark::DoNotOptimize(copy(buffers.target, buffers.source, kBytes));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_PlainMemcpy);

void BM_TwinMemcpyWithoutInformation(benchmark::State &state)
{
    const int32_t previous = __SetDebuggingLevel(2);
    Buffers buffers{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(_UP_memcpy(buffers.target, buffers.source, kBytes));
        benchmark::ClobberMemory();
    }
    __SetDebuggingLevel(previous);
}
BENCHMARK(BM_TwinMemcpyWithoutInformation);

void BM_TwinMemcpyChecked(benchmark::State &state)
{
    const int32_t previous = __SetDebuggingLevel(2);
    Buffers buffers{};
    BlkInfo targetBlock{reinterpret_cast<uint64_t>(buffers.target), kBytes};
    BlkInfo sourceBlock{reinterpret_cast<uint64_t>(buffers.source), kBytes};
    PtrInfo target{targetBlock.base, reinterpret_cast<uint64_t>(&targetBlock), targetBlock.base};
    PtrInfo source{sourceBlock.base, reinterpret_cast<uint64_t>(&sourceBlock), sourceBlock.base};
    tollan::rtcheck::ParameterArea *area = tollan::rtcheck::parameterArea();
    for (auto _ : state) {
        // What the caller writes before each checked call.
        area->callee = reinterpret_cast<const void *>(&_UP_memcpy);
        area->slotCount = 2;
        area->slots[0] = {&target, &targetBlock, nullptr};
        area->slots[1] = {&source, &sourceBlock, nullptr};
        benchmark::DoNotOptimize(_UP_memcpy(buffers.target, buffers.source, kBytes));
        benchmark::ClobberMemory();
    }
    __SetDebuggingLevel(previous);
}
BENCHMARK(BM_TwinMemcpyChecked);

}  // namespace

BENCHMARK_MAIN();
