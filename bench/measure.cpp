// Runs a command and prints what that took, for bench/pairs.py:   measure TIMES INPUT OUTPUT
// COMMAND...
//
// Prints the seconds on the clock, the seconds of the processors and the peak memory in KiB, of the
// command and what it started. The clock runs while the command runs and no longer. Memory is why
// this is no work for the script itself: a process begins with the peak of the one it came from.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double seconds_of(const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

// The usage of one run. Ends the program when the command fails. A status of 1 is no failure: diff
// gives it for a difference.
rusage run(const char *input, const char *output, char **command) {
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, input, O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output,
                                       O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ::pid_t child = 0;
    const int error = ::posix_spawnp(&child, command[0], &actions, nullptr, command, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    if (error != 0 || ::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) > 1) {
        std::fprintf(stderr, "measure: %s failed\n", command[0]);
        std::exit(1);
    }
    return usage;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 5) {
        return 2;
    }
    double busy = 0;
    long peak = 0;
    const auto start = std::chrono::steady_clock::now();
    for (int times = std::atoi(argv[1]); times > 0; times--) {
        const rusage usage = run(argv[2], argv[3], argv + 4);
        busy += seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime);
        peak = usage.ru_maxrss > peak ? usage.ru_maxrss : peak;
    }
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    std::printf("%.6f %.6f %ld\n", spent.count(), busy, peak);
    return 0;
}
