// Throughput of ZOR_WriteFile and ZOR_ReadFile, binary and text, against the
// system's own read and write with the same chunk size, on a 64 MiB file.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include <tollan/fmtio.h>

#include "fmtio/library.h"
#include "platform/file.h"

namespace {

constexpr size_t kFileSize = size_t{64} << 20;
constexpr size_t kChunk = size_t{64} << 10;
constexpr size_t kLineLength = 64;

enum Way : int64_t { kPlain = 0, kBinary = 1, kText = 2 };

// In memory where the system offers it, so that the disk's own speed (and
// whatever else the machine is writing) does not swamp the library's share.
std::string scratchPath(const char *name)
{
    const std::filesystem::path memory = "/dev/shm";
    const std::filesystem::path dir =
        std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    return (dir / (std::string("tollan-bench-fmtio-") + name)).string();
}

// Lines of kLineLength bytes, LF included.
std::vector<char> textChunk()
{
    std::vector<char> chunk(kChunk);
    for (size_t i = 0; i < chunk.size(); ++i)
        chunk[i] = i % kLineLength == kLineLength - 1 ? '\n' : static_cast<char>('a' + i % 26);
    return chunk;
}

tollan::platform::NativeFile openPlain(const std::string &path, bool write)
{
    tollan::platform::FileOpenRequest request;
    request.read = !write;
    request.write = write;
    request.create = write;
    request.truncate = write;
    tollan::platform::NativeFile file = tollan::platform::kNoFile;
    tollan::platform::openFile(path.c_str(), request, &file);
    return file;
}

void BM_Write(benchmark::State &state)
{
    tollan::fmtio::FmtIOLibInitOnce();
    const Way way = static_cast<Way>(state.range(0));
    const std::string path = scratchPath("write");
    const std::vector<char> chunk = textChunk();
    for (auto _ : state) {
        if (way == kPlain) {
            const tollan::platform::NativeFile file = openPlain(path, true);
            for (size_t done = 0; done < kFileSize; done += kChunk)
                tollan::platform::writeFile(file, chunk.data(), kChunk);
            tollan::platform::closeFile(file);
        } else {
            const int32_t handle = ZOR_OpenFile(path.c_str(), 2, 0, way == kText ? 1 : 0);
            for (size_t done = 0; done < kFileSize; done += kChunk)
                ZOR_WriteFile(handle, chunk.data(), kChunk);
            ZOR_CloseFile(handle);
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
    std::filesystem::remove(path);
}

void BM_Read(benchmark::State &state)
{
    tollan::fmtio::FmtIOLibInitOnce();
    const Way way = static_cast<Way>(state.range(0));
    const std::string path = scratchPath("read");
    {
        // The file of a text write: CR LF line ends, read by every way alike.
        const int32_t handle = ZOR_OpenFile(path.c_str(), 2, 0, 1);
        const std::vector<char> chunk = textChunk();
        for (size_t done = 0; done < kFileSize; done += kChunk) ZOR_WriteFile(handle, chunk.data(), kChunk);
        ZOR_CloseFile(handle);
    }
    std::vector<char> buffer(kChunk);
    for (auto _ : state) {
        if (way == kPlain) {
            const tollan::platform::NativeFile file = openPlain(path, false);
            uint32_t got = 0;
            while (tollan::platform::readFile(file, buffer.data(), kChunk, &got) == tollan::platform::FileError::none && got > 0)
                benchmark::DoNotOptimize(buffer.data());
            tollan::platform::closeFile(file);
        } else {
            const int32_t handle = ZOR_OpenFile(path.c_str(), 1, 2, way == kText ? 1 : 0);
            while (ZOR_ReadFile(handle, buffer.data(), kChunk) > 0) benchmark::DoNotOptimize(buffer.data());
            ZOR_CloseFile(handle);
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
    std::filesystem::remove(path);
}

void ways(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgName("way")->Arg(kPlain)->Arg(kBinary)->Arg(kText)->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK(BM_Write)->Apply(ways);
BENCHMARK(BM_Read)->Apply(ways);

BENCHMARK_MAIN();
