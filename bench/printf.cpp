// The printf engine into a buffer beside the C library's snprintf: "%.17g"
// over a fixed set of varied doubles (every digit a double has), and a
// typical line "%d %s %.6f\n" with readings of ordinary size.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <random>
#include <vector>

#include <tollan/export.h>

#include "services/printf_engine.h"

namespace {

// Doubles of every magnitude a program prints: small and large exponents,
// whole numbers, short and full-length fractions, negatives.
std::vector<double> variedDoubles()
{
    std::mt19937_64 random(1234);
    std::vector<double> values;
    for (int i = 0; i < 1024; ++i) {
        const double mantissa = static_cast<double>(random() >> 11) / 9007199254740992.0;
        switch (i % 4) {
            case 0:  // anything from 1e-300 to 1e300
                values.push_back(std::ldexp(mantissa, static_cast<int>(random() % 2000) - 1000));
                break;
            case 1:  // measurements
                values.push_back((mantissa - 0.5) * 2000.0);
                break;
            case 2:  // counts
                values.push_back(static_cast<double>(random() % 100000));
                break;
            default:  // short decimals
                values.push_back(static_cast<double>(random() % 10000) / 100.0);
                break;
        }
    }
    return values;
}

// Readings as a line of a log or a data file has them: within +-1000.
std::vector<double> readings()
{
    std::mt19937_64 random(5678);
    std::vector<double> values;
    for (int i = 0; i < 1024; ++i)
        values.push_back((static_cast<double>(random() >> 11) / 9007199254740992.0 - 0.5) * 2000.0);
    return values;
}

int engineInto(char *buffer, size_t size, const char *format, ...) TOLLAN_PRINTF(3, 4);
int engineInto(char *buffer, size_t size, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int length = tollan::services::printToBuffer(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

const char *const kNames[] = {"voltage", "current", "temperature", "x"};

// Calls print(buffer, size, value) over the doubles.
template <typename Print>
void printDoubles(benchmark::State &state, Print print)
{
    const std::vector<double> values = variedDoubles();
    char buffer[64];
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(print(buffer, sizeof buffer, values[next]));
        benchmark::ClobberMemory();
        next = (next + 1) % values.size();
    }
}

// Calls print(buffer, size, count, name, value) with a line's values.
template <typename Print>
void printLines(benchmark::State &state, Print print)
{
    const std::vector<double> values = readings();
    char buffer[128];
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(print(buffer, sizeof buffer, static_cast<int>(next * 7919), kNames[next % 4],
                                       values[next] * 1e-3));
        benchmark::ClobberMemory();
        next = (next + 1) % values.size();
    }
}

void BM_EngineDoubles(benchmark::State &state)
{
    printDoubles(state, [](char *buffer, size_t size, double value) {
        return engineInto(buffer, size, "%.17g", value);
    });
}
BENCHMARK(BM_EngineDoubles);

void BM_HostDoubles(benchmark::State &state)
{
    printDoubles(state, [](char *buffer, size_t size, double value) {
        return std::snprintf(buffer, size, "%.17g", value);
    });
}
BENCHMARK(BM_HostDoubles);

void BM_EngineLine(benchmark::State &state)
{
    printLines(state, [](char *buffer, size_t size, int count, const char *name, double value) {
        return engineInto(buffer, size, "%d %s %.6f\n", count, name, value);
    });
}
BENCHMARK(BM_EngineLine);

void BM_HostLine(benchmark::State &state)
{
    printLines(state, [](char *buffer, size_t size, int count, const char *name, double value) {
        return std::snprintf(buffer, size, "%d %s %.6f\n", count, name, value);
    });
}
BENCHMARK(BM_HostLine);

}  // namespace

BENCHMARK_MAIN();
