// The cost of a log call: a disabled level, and an enabled line written to a
// file and flushed, next to spdlog's synchronous file sink writing a line of
// the same shape ("[time] [level] [function] [file:line] message").
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <tollan/logger.h>

#include "logger/log.h"

namespace {

std::string benchFile(const char *name)
{
    return (std::filesystem::temp_directory_path() / name).string();
}

void BM_DisabledLog(benchmark::State &state)
{
    uint32_t previous = SetZORLogReportingLevels(ZOR_LOG_FATAL);
    int reading = 0;
    for (auto _ : state) {
        TOLLAN_LOG(ZOR_LOG_TRACE, "bench.c", "Measure", "reading %d of %s", ++reading, "ten");
        benchmark::ClobberMemory();
    }
    SetZORLogReportingLevels(previous);
}
BENCHMARK(BM_DisabledLog);

void BM_TollanFileLine(benchmark::State &state)
{
    std::string path = benchFile("tollan-bench-logger.log");
    if (!SetZORLogReportingLocation(ZOR_LOG_LOCATION_FILE, 0, path.c_str())) {
        state.SkipWithError("cannot open the log file");
        return;
    }
    SetZORLogOutputFormat("[[TIME]] [[LEVEL]] [[FUNC]] [[FILE]:[LINE]] [MSG]");
    int reading = 0;
    for (auto _ : state)
        WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, "bench.c", "Measure", 42, "reading %d of %s", ++reading,
                           "ten");
    SetZORLogReportingLocation(ZOR_LOG_LOCATION_STDERR, 0, nullptr);
    std::remove(path.c_str());
}
BENCHMARK(BM_TollanFileLine);

void BM_SpdlogFileLine(benchmark::State &state)
{
    std::string path = benchFile("spdlog-bench-logger.log");
    auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true);
    spdlog::logger logger("bench", sink);
    logger.set_pattern("[%H:%M:%S.%e] [%l] [%!] [%s:%#] %v");
    logger.set_level(spdlog::level::trace);
    logger.flush_on(spdlog::level::trace);
    int reading = 0;
    for (auto _ : state)
        logger.log(spdlog::source_loc{"bench.c", 42, "Measure"}, spdlog::level::info, "reading {} of {}",
                   ++reading, "ten");
    std::remove(path.c_str());
}
BENCHMARK(BM_SpdlogFileLine);

}  // namespace

BENCHMARK_MAIN();
