// The C streams against glibc's stdio, in the same run: fwrite of 64 MiB in
// 100-byte pieces, fgetc over 64 MiB, one million fprintf lines, and
// snprintf of doubles with %.17g. Each pair runs the same work on the same
// kind of file; "way" 0 is glibc, 1 the library. The fwrite and fgetc pairs
// also run glibc with the library's 512-byte buffer (way 2), to tell the
// cost of the buffer size from the cost of the code.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <tollan/ansi_c.h>

namespace {

constexpr size_t kFileSize = size_t{64} << 20;
constexpr size_t kPiece = 100;
constexpr int kLines = 1000000;

enum Way : int64_t { kGlibc = 0, kOurs = 1, kGlibcSmallBuffer = 2 };

std::string scratchPath(const char *name)
{
    const std::filesystem::path memory = "/dev/shm";
    const std::filesystem::path dir =
        std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    return (dir / (std::string("tollan-bench-stdio-") + name)).string();
}

// glibc's stream or ours, behind the few calls the benchmarks make.
struct AnyStream {
    std::FILE *glibc = nullptr;
    TollanFILE *ours = nullptr;
    char smallBuffer[TOLLAN_BUFSIZ];

    AnyStream(Way way, const std::string &path, const char *mode)
    {
        if (way == kOurs) {
            ours = tollan_fopen(path.c_str(), mode);
        } else {
            glibc = std::fopen(path.c_str(), mode);
            // glibc ignores the size when it is to allocate the buffer itself.
            if (way == kGlibcSmallBuffer) std::setvbuf(glibc, smallBuffer, _IOFBF, sizeof smallBuffer);
        }
    }
    ~AnyStream()
    {
        if (ours != nullptr) tollan_fclose(ours);
        if (glibc != nullptr) std::fclose(glibc);
    }
    bool open() const { return ours != nullptr || glibc != nullptr; }
};

void BM_Fwrite(benchmark::State &state)
{
    const auto way = static_cast<Way>(state.range(0));
    const std::string path = scratchPath("fwrite");
    const std::string piece(kPiece, 'w');
    for (auto _ : state) {
        AnyStream stream(way, path, "wb");
        if (!stream.open()) return state.SkipWithError("cannot open");
        for (size_t done = 0; done < kFileSize; done += kPiece) {
            if (stream.ours != nullptr)
                tollan_fwrite(piece.data(), 1, kPiece, stream.ours);
            else
                std::fwrite(piece.data(), 1, kPiece, stream.glibc);
        }
    }
    std::filesystem::remove(path);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
}
BENCHMARK(BM_Fwrite)->Arg(kGlibc)->Arg(kOurs)->Arg(kGlibcSmallBuffer)->Unit(benchmark::kMillisecond);

void BM_Fgetc(benchmark::State &state)
{
    const auto way = static_cast<Way>(state.range(0));
    const std::string path = scratchPath("fgetc");
    {
        std::FILE *file = std::fopen(path.c_str(), "wb");
        const std::vector<char> block(size_t{1} << 20, 'r');
        for (size_t done = 0; done < kFileSize; done += block.size())
            std::fwrite(block.data(), 1, block.size(), file);
        std::fclose(file);
    }
    for (auto _ : state) {
        AnyStream stream(way, path, "rb");
        if (!stream.open()) return state.SkipWithError("cannot open");
        size_t count = 0;
        if (stream.ours != nullptr) {
            while (tollan_fgetc(stream.ours) != TOLLAN_EOF) ++count;
        } else {
            while (std::fgetc(stream.glibc) != EOF) ++count;
        }
        if (count != kFileSize) return state.SkipWithError("short read");
    }
    std::filesystem::remove(path);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
}
BENCHMARK(BM_Fgetc)->Arg(kGlibc)->Arg(kOurs)->Arg(kGlibcSmallBuffer)->Unit(benchmark::kMillisecond);

void BM_FprintfLines(benchmark::State &state)
{
    const auto way = static_cast<Way>(state.range(0));
    const std::string path = scratchPath("fprintf");
    for (auto _ : state) {
        AnyStream stream(way, path, "wb");
        if (!stream.open()) return state.SkipWithError("cannot open");
        for (int i = 0; i < kLines; ++i) {
            const double value = i * 0.001953125 + 0.1;
            if (stream.ours != nullptr)
                tollan_fprintf(stream.ours, "%d %s %.6f\n", i, "volts", value);
            else
                std::fprintf(stream.glibc, "%d %s %.6f\n", i, "volts", value);
        }
    }
    std::filesystem::remove(path);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kLines);
}
BENCHMARK(BM_FprintfLines)->Arg(kGlibc)->Arg(kOurs)->Unit(benchmark::kMillisecond);

void BM_SnprintfShortest(benchmark::State &state)
{
    const auto way = static_cast<Way>(state.range(0));
    std::mt19937_64 random(42);
    std::vector<double> values(4096);
    for (double &value : values) {
        const int exponent = static_cast<int>(random() % 80) - 40;
        value = static_cast<double>(random() >> 11) / 9007199254740992.0 * std::pow(10.0, exponent);
    }
    char text[64];
    for (auto _ : state) {
        for (double value : values) {
            if (way == kOurs)
                tollan_snprintf(text, sizeof text, "%.17g", value);
            else
                std::snprintf(text, sizeof text, "%.17g", value);
            benchmark::DoNotOptimize(text);
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * values.size()));
}
BENCHMARK(BM_SnprintfShortest)->Arg(kGlibc)->Arg(kOurs);

}  // namespace

BENCHMARK_MAIN();
