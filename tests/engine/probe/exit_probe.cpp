// Ends the process with exit() while eight threads are busy opening, writing
// and closing files through the library. Usage: exit_probe DIRECTORY. The
// exit must end the process with status 0, whatever the threads were doing.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <tollan/fmtio.h>

int main(int argc, char **argv)
{
    if (argc != 2) return 2;
    std::atomic<int> started{0};
    for (int t = 0; t < 8; ++t) {
        std::thread([&started, t, directory = std::string(argv[1])] {
            const std::string path = directory + "/busy-" + std::to_string(t);
            started.fetch_add(1);
            for (;;) {
                const int32_t handle = ZOR_OpenFile(path.c_str(), 2, 0, 0);
                ZOR_WriteFile(handle, "some bytes\n", 11);
                WriteLine(handle, "a line", -1);
                ZOR_CloseFile(handle);
            }
        }).detach();
    }
    while (started.load() < 8) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    std::exit(0);
}
