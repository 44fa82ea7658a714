// generate_arg_types on a format of 20 items, the most a checked Fmt or Scan
// call commonly has: the parser runs once per call, before the conversion.
#include <benchmark/benchmark.h>

#include <cstring>

#include <tollan/fmtio.h>

namespace {

// A Scan format whose items use most modifiers of each kind, '*' included.
constexpr const char *kTwentyItems =
    "%s[w*t#]>%d%x[b2]%f%s[t10w20]%d[b8o01230123]%f[e3p*]%c %i[r*]%s[q]%l%3d[z]"
    "%f[b4]%s[dw5], %o[u]%x[p0w8]%d[j2]..%f[r]%s[a]%c[d]";

void BM_GenerateArgTypesTwentyItems(benchmark::State &state)
{
    const size_t length = std::strlen(kTwentyItems);
    ArgTypeEntry table[TOLLAN_FMT_MAX_ARGS];
    int32_t error = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(generate_arg_types(kTwentyItems, length, table, 1, &error));
        benchmark::ClobberMemory();
    }
    if (error != 0) state.SkipWithError("the format does not parse");
}
BENCHMARK(BM_GenerateArgTypesTwentyItems);

}  // namespace

BENCHMARK_MAIN();
