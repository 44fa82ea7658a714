// Interning names against std::unordered_set<std::string> (a million distinct
// identifiers, and a million that are already there), and the type queries
// on a six-layer pointer/array type.
#include <cstdio>
#include <string>
#include <unordered_set>
#include <vector>

#include <benchmark/benchmark.h>
#include <tollan/rtcheck.h>

#include "rtcheck/strings.h"

namespace {

constexpr size_t kNames = 1000000;

// Identifiers as a compiler meets them: short, with a common prefix.
std::vector<std::string> identifiers(const char *prefix, int round)
{
    std::vector<std::string> names;
    names.reserve(kNames);
    char name[48];
    for (size_t i = 0; i < kNames; ++i) {
        std::snprintf(name, sizeof name, "%s%d_%zu", prefix, round, i);
        names.emplace_back(name);
    }
    return names;
}

// A million look-ups of names that are all there already, the common case
// once a program's names are known: over a vocabulary of 10,000 names, and
// over a million (where every one of the 32,768 chains holds about 30
// names). Both sides get C strings, as callers have them. These run before
// the distinct rounds, which leave millions of names in the table.
std::vector<std::string> vocabulary(size_t size)
{
    std::vector<std::string> names = identifiers("r", static_cast<int>(size));
    names.resize(size);
    return names;
}

void BM_InternRepeats(benchmark::State &state)
{
    const std::vector<std::string> names = vocabulary(static_cast<size_t>(state.range(0)));
    for (const std::string &name : names) tollan::rtcheck::string(name.c_str());
    for (auto _ : state) {
        for (size_t i = 0; i < kNames; ++i)
            benchmark::DoNotOptimize(tollan::rtcheck::string(names[i % names.size()].c_str()));
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kNames));
}
BENCHMARK(BM_InternRepeats)->Arg(10000)->Arg(kNames)->Unit(benchmark::kMillisecond);

void BM_UnorderedSetRepeats(benchmark::State &state)
{
    const std::vector<std::string> names = vocabulary(static_cast<size_t>(state.range(0)));
    std::unordered_set<std::string> set(names.begin(), names.end());
    for (auto _ : state) {
        for (size_t i = 0; i < kNames; ++i)
            benchmark::DoNotOptimize(set.insert(names[i % names.size()].c_str()));
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kNames));
}
BENCHMARK(BM_UnorderedSetRepeats)->Arg(10000)->Arg(kNames)->Unit(benchmark::kMillisecond);

// Every iteration interns names never seen before: the table keeps all of
// them, so each round has a prefix of its own.
void BM_InternDistinct(benchmark::State &state)
{
    static int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::vector<std::string> names = identifiers("d", round++);
        state.ResumeTiming();
        for (const std::string &name : names) benchmark::DoNotOptimize(tollan::rtcheck::string(name.c_str()));
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kNames));
}
BENCHMARK(BM_InternDistinct)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_UnorderedSetDistinct(benchmark::State &state)
{
    static int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::vector<std::string> names = identifiers("d", round++);
        auto *set = new std::unordered_set<std::string>;
        state.ResumeTiming();
        for (const std::string &name : names) benchmark::DoNotOptimize(set->insert(name.c_str()));
        state.PauseTiming();
        delete set;
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kNames));
}
BENCHMARK(BM_UnorderedSetDistinct)->Unit(benchmark::kMillisecond)->Iterations(3);

// pointer to array 4 of const pointer to pointer to array 3 of pointer to
// int, built twice from distinct nodes so that every layer is compared.
struct DeepType {
    Tynode nodes[6];
    const Tynode *top() const { return &nodes[5]; }
    DeepType()
    {
        nodes[0] = Tynode{LCC_POINTER, inttype, nullptr, 8, {}, 8};
        nodes[1] = Tynode{LCC_ARRAY, &nodes[0], nullptr, 24, {}, 8};
        nodes[2] = Tynode{LCC_POINTER, &nodes[1], nullptr, 8, {}, 8};
        nodes[3] = Tynode{LCC_CONST, &nodes[2], nullptr, 8, {}, 8};
        nodes[4] = Tynode{LCC_ARRAY, &nodes[3], nullptr, 32, {}, 8};
        nodes[5] = Tynode{LCC_POINTER, &nodes[4], nullptr, 8, {}, 8};
    }
};

void BM_EqtypeSixLayers(benchmark::State &state)
{
    const DeepType a;
    const DeepType b;
    for (auto _ : state) benchmark::DoNotOptimize(eqtype(a.top(), b.top(), 1));
}
BENCHMARK(BM_EqtypeSixLayers);

void BM_AreCompatibleTypesSixLayers(benchmark::State &state)
{
    const DeepType a;
    const DeepType b;
    for (auto _ : state) benchmark::DoNotOptimize(AreCompatibleTypes(a.top(), b.top(), 0));
}
BENCHMARK(BM_AreCompatibleTypesSixLayers);

}  // namespace
BENCHMARK_MAIN();
