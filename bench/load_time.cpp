// Starts each of the given programs many times, in turn, and prints for each its path, a tab and the
// median of the microseconds from the start to its end.
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

double run(char *path) {
    using Clock = std::chrono::steady_clock;
    char *arguments[] = {path, nullptr}, *environment[] = {nullptr};
    pid_t child = 0;
    int status = 0;
    const Clock::time_point start = Clock::now();
    const bool good = posix_spawn(&child, path, nullptr, nullptr, arguments, environment) == 0 &&
                      waitpid(child, &status, 0) == child && status == 0;
    const Clock::time_point end = Clock::now();
    if (!good) {
        std::fprintf(stderr, "load_time: %s does not run\n", path);
        std::exit(1);
    }
    return std::chrono::duration<double, std::micro>(end - start).count();
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 3) return 2;
    const int rounds = std::atoi(argv[1]);
    std::vector<std::vector<double>> times(static_cast<size_t>(argc));
    for (int round = 0; round < rounds; ++round) {
        for (int i = 2; i < argc; ++i) times[static_cast<size_t>(i)].push_back(run(argv[i]));
    }
    for (int i = 2; i < argc; ++i) {
        std::vector<double> &mine = times[static_cast<size_t>(i)];
        std::sort(mine.begin(), mine.end());
        std::printf("%s\t%.1f\n", argv[i], mine[mine.size() / 2]);
    }
    return 0;
}
