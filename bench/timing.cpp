// The timing library against the system's own ways of waiting:
// - how late a 1 kHz timer-engine timer calls back, beside a thread that
//   sleeps to the same absolute deadlines with clock_nanosleep(TIMER_ABSTIME);
// - how much longer Delay waits than asked (its resolution is added on
//   purpose, so about 1 ms is expected);
// - how much processor time Delay(1.0) uses (it polls the last tenth of a
//   second).
#include <benchmark/benchmark.h>

#include <tollan/timerengine.h>
#include <tollan/utility.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kPeriod = std::chrono::milliseconds(1);
constexpr auto kRun = std::chrono::seconds(5);
constexpr size_t kMaxCalls = 2 * 5000;

// Lateness of the i-th call (from 0) behind start + (i + 1) periods.
std::vector<double> latenessMicroseconds(Clock::time_point start, const std::vector<Clock::time_point> &calls)
{
    std::vector<double> lateness;
    lateness.reserve(calls.size());
    for (size_t i = 0; i < calls.size(); ++i) {
        const Clock::time_point due = start + kPeriod * static_cast<int64_t>(i + 1);
        lateness.push_back(std::chrono::duration<double, std::micro>(calls[i] - due).count());
    }
    return lateness;
}

void reportPercentiles(benchmark::State &state, std::vector<double> lateness)
{
    if (lateness.empty()) {
        state.SkipWithError("no calls");
        return;
    }
    std::sort(lateness.begin(), lateness.end());
    const auto at = [&](double fraction) {
        return lateness[static_cast<size_t>(fraction * (lateness.size() - 1))];
    };
    state.counters["calls"] = static_cast<double>(lateness.size());
    state.counters["p50_us"] = at(0.50);
    state.counters["p99_us"] = at(0.99);
    state.counters["max_us"] = lateness.back();
}

struct CallLog {
    std::vector<Clock::time_point> times = std::vector<Clock::time_point>(kMaxCalls);
    std::atomic<size_t> count{0};
    static void note(void *self)
    {
        auto *log = static_cast<CallLog *>(self);
        const size_t i = log->count.fetch_add(1);
        if (i < kMaxCalls) log->times[i] = Clock::now();
    }
    std::vector<Clock::time_point> taken() const
    {
        return {times.begin(), times.begin() + static_cast<int64_t>(std::min(count.load(), kMaxCalls))};
    }
};

void BM_LatenessZoruste1kHz(benchmark::State &state)
{
    if (!ZORUSTEinitialize()) {
        state.SkipWithError("no timer engine");
        return;
    }
    for (auto _ : state) {
        CallLog log;
        void *timer = ZORUSTEnewtimer(&CallLog::note, &log);
        const ZORUSTETimeValue period{0, 1000000};
        const Clock::time_point start = Clock::now();
        ZORUSTEsettimer(timer, &period);
        std::this_thread::sleep_for(kRun);
        ZORUSTEdiscardtimer(timer);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));  // the last delivery ends
        reportPercentiles(state, latenessMicroseconds(start, log.taken()));
    }
}
BENCHMARK(BM_LatenessZoruste1kHz)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_LatenessNanosleep1kHz(benchmark::State &state)
{
    for (auto _ : state) {
        CallLog log;
        const Clock::time_point start = Clock::now();
        std::thread sleeper([&] {
            timespec due{};
            clock_gettime(CLOCK_MONOTONIC, &due);
            const auto periods = static_cast<int>(kRun / kPeriod);
            for (int i = 0; i < periods; ++i) {
                due.tv_nsec += 1000000;
                if (due.tv_nsec >= 1000000000) {
                    due.tv_nsec -= 1000000000;
                    ++due.tv_sec;
                }
                while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, nullptr) != 0) {
                }
                CallLog::note(&log);
            }
        });
        sleeper.join();
        reportPercentiles(state, latenessMicroseconds(start, log.taken()));
    }
}
BENCHMARK(BM_LatenessNanosleep1kHz)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_DelayError(benchmark::State &state)
{
    const double seconds = static_cast<double>(state.range(0)) / 1000.0;
    double errorUs = 0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        Delay(seconds);
        errorUs += std::chrono::duration<double, std::micro>(Clock::now() - start).count() - seconds * 1e6;
    }
    state.counters["error_us"] = benchmark::Counter(errorUs, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_DelayError)->Arg(1)->Iterations(50)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DelayError)->Arg(10)->Iterations(20)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DelayError)->Arg(100)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_DelayOneSecondCpu(benchmark::State &state)
{
    for (auto _ : state) Delay(1.0);
}
BENCHMARK(BM_DelayOneSecondCpu)
    ->Iterations(1)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
