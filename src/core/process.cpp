#include "core/process.h"

#include "core/stream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

// What differs in the new program from this one (POSIX posix_spawn).
class spawn_plan {
  public:
    explicit spawn_plan(int output) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_addclose(&actions_, STDIN_FILENO);
        ::posix_spawnattr_init(&attributes_);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::sigaddset(&signals, SIGPIPE);
        ::sigaddset(&signals, SIGXFSZ);
        ::posix_spawnattr_setsigdefault(&attributes_, &signals);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
    }
    ~spawn_plan() {
        ::posix_spawnattr_destroy(&attributes_);
        ::posix_spawn_file_actions_destroy(&actions_);
    }
    spawn_plan(const spawn_plan &) = delete;
    spawn_plan &operator=(const spawn_plan &) = delete;

    started_program start(const std::vector<char *> &arguments) {
        started_program started{};
        started.error = ::posix_spawn(&started.child, arguments.front(), &actions_, &attributes_,
                                      arguments.data(), environ);
        return started;
    }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

// Reads until the end or until there are more than `limit` bytes.
std::string read_up_to(int descriptor, std::size_t limit) {
    std::string text;
    std::array<char, 4096> block{};
    while (text.size() <= limit) {
        const ssize_t count = ::read(descriptor, block.data(), block.size());
        if (count > 0) {
            text.append(block.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    return text;
}

} // namespace

started_program start_program(std::vector<std::string> words, int output) {
    std::vector<char *> arguments(words.size() + 1, nullptr); // a null ends them
    std::transform(words.begin(), words.end(), arguments.begin(),
                   [](std::string &word) { return word.data(); });
    return spawn_plan(output).start(arguments);
}

int wait_for(pid_t child) {
    int status = -1;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return status;
}

std::optional<std::string> output_of(std::vector<std::string> words, std::size_t limit) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    file_descriptor from_program(ends[0]);
    file_descriptor to_pipe(ends[1]);
    const started_program program = start_program(std::move(words), to_pipe.number());
    to_pipe.close(); // or reading would never end: the pipe would keep a writer
    if (program.error != 0) {
        errno = program.error;
        return std::nullopt;
    }
    std::string text = read_up_to(from_program.number(), limit);
    from_program.close(); // a program that prints on must not be waited for
    // Where signals of children are ignored, a child leaves no status.
    const int status = wait_for(program.child);
    if (status > 0 || text.size() > limit) {
        text.clear();
    }
    return text;
}
