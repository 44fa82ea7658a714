// The debugger link's hot paths: resource tracking with a million live
// handles, the function-frame pair that compiled debug code runs around every
// call, and a dump of 100,000 resources, each beside its plain counterpart.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <unordered_map>

#include <benchmark/benchmark.h>
#include <tollan/debugger.h>

namespace {

constexpr uintptr_t kLive = 1000000;

// Handles as a program hands them out: heap addresses, scattered over a
// large range (a fixed pseudo-random sequence, the same for both tables).
uintptr_t scattered(uintptr_t index)
{
    uint64_t x = index + 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return static_cast<uintptr_t>((x ^ (x >> 31)) & 0x00007FFFFFFFFFF0ull);
}

void *handle(uintptr_t index)
{
    return reinterpret_cast<void *>(scattered(index));
}

// Level 2 and an entered function: what tracking needs to record anything.
struct TrackingOn {
    TrackingOn()
    {
        __SetDebuggingLevel(2);
        record = __DBG_GetCurrentThreadEnv();
        frame.functionName = "bench";
        __DBG_EnterFunctionInCurrentThreadEnv(record, &frame, "bench.c");
        __DBG_SetCurrentThreadEnvPosition(record, nullptr, 10, 3);
    }
    ~TrackingOn() { __DBG_LeaveFunctionInCurrentThreadEnv(record, &frame); }
    ZORThreadEnv *record;
    ZORFunctionFrame frame{};
};

void BM_ResourceAcquireRelease(benchmark::State &state)
{
    TrackingOn tracking;
    for (uintptr_t i = 0; i < kLive; ++i) __ZOR_Resource_Acquire(handle(i), "Files", "file %u", 7u);
    uintptr_t next = kLive;
    for (auto _ : state) {
        __ZOR_Resource_Acquire(handle(next), "Files", "file %u", 7u);
        __ZOR_Resource_Release(handle(next));
        ++next;
    }
    for (uintptr_t i = 0; i < kLive; ++i) __ZOR_Resource_Release(handle(i));
}

void BM_UnorderedMapInsertErase(benchmark::State &state)
{
    std::unordered_map<uintptr_t, void *> map;
    for (uintptr_t i = 0; i < kLive; ++i) map.emplace(scattered(i), handle(i));
    uintptr_t next = kLive;
    for (auto _ : state) {
        map.emplace(scattered(next), handle(next));
        map.erase(scattered(next));
        ++next;
    }
}

void BM_EnterLeaveFunction(benchmark::State &state)
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    ZORFunctionFrame frame{};
    for (auto _ : state) {
        __DBG_EnterFunctionInCurrentThreadEnv(record, &frame, "bench.c");
        __DBG_LeaveFunctionInCurrentThreadEnv(record, &frame);
        benchmark::ClobberMemory();
    }
}

// Two calls that do as little: the pair a frame costs at the least.
[[gnu::noinline]] int plainEnter(void *record, void *frame)
{
    benchmark::DoNotOptimize(record);
    benchmark::DoNotOptimize(frame);
    return 0;
}

[[gnu::noinline]] void plainLeave(void *record, void *frame)
{
    benchmark::DoNotOptimize(record);
    benchmark::DoNotOptimize(frame);
}

void BM_PlainCallPair(benchmark::State &state)
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    ZORFunctionFrame frame{};
    for (auto _ : state) {
        plainEnter(record, &frame);
        plainLeave(record, &frame);
        benchmark::ClobberMemory();
    }
}

std::string dumpPath()
{
    return (std::filesystem::temp_directory_path() / "tollan-bench-dump.txt").string();
}

std::string fileBytes(const std::string &path)
{
    std::string bytes;
    std::FILE *in = std::fopen(path.c_str(), "rb");
    if (in == nullptr) return bytes;
    char chunk[65536];
    for (size_t got; (got = std::fread(chunk, 1, sizeof chunk, in)) > 0;) bytes.append(chunk, got);
    std::fclose(in);
    return bytes;
}

// 100,000 live resources, acquired at the first use and held to the end:
// the dump and its fwrite baseline see the same table (the same ids among
// it), so the baseline writes exactly the bytes of a dump. Their handles lie
// apart from those of the acquire-release benchmark.
void holdDumpedResources()
{
    static const bool held = [] {
        TrackingOn tracking;
        for (uintptr_t i = 0; i < 100000; ++i)
            __ZOR_Resource_Acquire(handle((uintptr_t{1} << 40) + i), "Files", "file %u", 7u);
        return true;
    }();
    benchmark::DoNotOptimize(held);
}

void BM_ResourceDump(benchmark::State &state)
{
    holdDumpedResources();
    const std::string path = dumpPath();
    for (auto _ : state) __ZOR_Resource_DumpToFile(path.c_str());
    std::filesystem::remove(path);
}

// The same bytes written with fwrite.
void BM_FwriteDumpBytes(benchmark::State &state)
{
    holdDumpedResources();
    const std::string path = dumpPath();
    __ZOR_Resource_DumpToFile(path.c_str());
    const std::string bytes = fileBytes(path);
    for (auto _ : state) {
        std::FILE *out = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), out);
        std::fclose(out);
    }
    const std::string written = fileBytes(path);
    __ZOR_Resource_DumpToFile(path.c_str());
    if (bytes.empty() || written != fileBytes(path))
        state.SkipWithError("fwrite did not write the bytes of a dump");
    std::filesystem::remove(path);
}

}  // namespace

BENCHMARK(BM_ResourceAcquireRelease);
BENCHMARK(BM_UnorderedMapInsertErase);
BENCHMARK(BM_EnterLeaveFunction);
BENCHMARK(BM_PlainCallPair);
BENCHMARK(BM_ResourceDump)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FwriteDumpBytes)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
