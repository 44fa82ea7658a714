// Fmt and Scan beside the C library's snprintf and sscanf on the same line:
// Fmt of "%s<%d %f[p6]" against snprintf of "%d %.6f", and Scan of that
// line with "%s>%d %f" against sscanf with "%d %lf", over readings of
// ordinary size.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <tollan/fmtio.h>

namespace {

struct Reading {
    int count;
    double value;
};

const std::vector<Reading> &readings()
{
    static const std::vector<Reading> values = [] {
        std::mt19937_64 random(5678);
        std::vector<Reading> made;
        for (int i = 0; i < 1024; ++i)
            made.push_back({static_cast<int>(random() % 200000) - 100000,
                            (static_cast<double>(random() >> 11) / 9007199254740992.0 - 0.5) * 2000.0});
        return made;
    }();
    return values;
}

const std::vector<std::string> &lines()
{
    static const std::vector<std::string> made = [] {
        std::vector<std::string> text;
        char line[64];
        for (const Reading &reading : readings()) {
            std::snprintf(line, sizeof line, "%d %.6f", reading.count, reading.value);
            text.emplace_back(line);
        }
        return text;
    }();
    return made;
}

void BM_FmtLine(benchmark::State &state)
{
    char line[64];
    size_t k = 0;
    for (auto _ : state) {
        const Reading &reading = readings()[k++ & 1023];
        benchmark::DoNotOptimize(Fmt(line, "%s<%d %f[p6]", reading.count, reading.value));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_FmtLine);

void BM_SnprintfLine(benchmark::State &state)
{
    char line[64];
    size_t k = 0;
    for (auto _ : state) {
        const Reading &reading = readings()[k++ & 1023];
        benchmark::DoNotOptimize(std::snprintf(line, sizeof line, "%d %.6f", reading.count, reading.value));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_SnprintfLine);

void BM_ScanLine(benchmark::State &state)
{
    int count = 0;
    double value = 0;
    size_t k = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Scan(lines()[k++ & 1023].c_str(), "%s>%d %f", &count, &value));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_ScanLine);

void BM_SscanfLine(benchmark::State &state)
{
    int count = 0;
    double value = 0;
    size_t k = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::sscanf(lines()[k++ & 1023].c_str(), "%d %lf", &count, &value));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_SscanfLine);

}  // namespace
BENCHMARK_MAIN();
