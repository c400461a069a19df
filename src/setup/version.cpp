#include "setup/version.h"

#include "core/log.h"
#include "core/stream.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char *output_file = "ver.txt";
constexpr std::size_t line_size = 511; // 510 characters and a NUL

// How a program is started: standard input closed, standard output in a file, and no signal
// ignored that this program ignores (POSIX posix_spawn).
class spawn_plan {
  public:
    explicit spawn_plan(int output) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addclose(&actions_, STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
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

    // The error of starting `program`, 0 for none. Waits until it has ended.
    int run(std::string program) {
        std::string option = "-version";
        const std::array<char *, 3> arguments = {program.data(), option.data(), nullptr};
        ::pid_t child = 0;
        const int error = ::posix_spawn(&child, program.c_str(), &actions_, &attributes_,
                                        arguments.data(), environ);
        if (error == 0) {
            int status = 0;
            while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
            }
        }
        return error;
    }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

// The error of starting the program, 0 for none or when its output has nowhere to go. One that is
// not there costs no process.
int run_into_output_file(const std::string &program) {
    const stream_handle output = open_to_write(output_file);
    if (!output) {
        return 0;
    }
    return ::access(program.c_str(), F_OK) == 0 ? spawn_plan(::fileno(output.get())).run(program)
                                                : errno;
}

// Whether no process could be had at all, as against a program that could not be started.
bool is_without_process(int error) {
    return error == EAGAIN || error == ENOMEM;
}

// The version in a line, or none.
bool read_version(std::string_view line, std::string &version) {
    constexpr std::string_view label = "Version:";
    if (!line.starts_with(label)) {
        return false;
    }
    const std::size_t mark = line.find('v', label.size());
    if (mark == std::string_view::npos) {
        return false;
    }
    const std::string_view rest = line.substr(mark + 1);
    version = rest.substr(0, rest.find_first_of("\r\n"));
    return true;
}

bool find_version(std::FILE *file, std::string &version) {
    std::array<char, line_size> line{};
    while (const char *text = read_text_piece(file, line)) {
        if (read_version(text, version)) {
            return std::ferror(file) == 0; // else the line may be cut
        }
    }
    return false;
}

} // namespace

int get_version(pINI_SETTINGS ini, answer_position setting) {
    const std::string program = formatted("./%s.%s", ini_value_num(ini, setting), "cgi");
    path_text command;
    command.format("%s -version >ver.txt", program.c_str());
    dmsg("Getting version from [%s]", command.c_str());
    std::fflush(stdout);
    if (const int error = run_into_output_file(program); is_without_process(error)) {
        emsg("Cannot obtain version information: %s", std::strerror(error));
        std::remove(output_file);
        return 0;
    }
    std::string version;
    {
        const stream_handle output = open_to_read(output_file);
        if (!output) {
            return 0;
        }
        if (!find_version(output.get(), version)) {
            emsg("cannot find version");
            std::remove(output_file);
            return 0;
        }
    }
    ini_add(ini, "version", version.c_str());
    std::remove(output_file);
    return 1;
}
