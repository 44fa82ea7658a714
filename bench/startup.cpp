// What the library costs when a program starts: the time to start and end a
// program linked with it (which runs the whole attach and detach chains)
// against a C program that links nothing and a C++ program that loads only
// the C++ standard library. Loading the library in-process cannot be timed
// repeatedly: as a C++ library it is never really unloaded by dlclose.
#include <spawn.h>
#include <sys/wait.h>

#include <benchmark/benchmark.h>

extern char **environ;

namespace {

void runProgram(benchmark::State &state, const char *path)
{
    char *argv[] = {const_cast<char *>(path), nullptr};
    for (auto _ : state) {
        pid_t child = 0;
        int status = 0;
        if (posix_spawn(&child, path, nullptr, nullptr, argv, environ) != 0 ||
            waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            state.SkipWithError("the program did not run cleanly");
            return;
        }
    }
}

void BM_StartPlainProgram(benchmark::State &state)
{
    runProgram(state, PLAIN_PROGRAM);
}
BENCHMARK(BM_StartPlainProgram)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_StartCxxProgram(benchmark::State &state)
{
    runProgram(state, CXX_PROGRAM);
}
BENCHMARK(BM_StartCxxProgram)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_StartLinkedProgram(benchmark::State &state)
{
    runProgram(state, LINKED_PROGRAM);
}
BENCHMARK(BM_StartLinkedProgram)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
