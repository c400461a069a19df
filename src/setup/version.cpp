#include "setup/version.h"

#include "core/log.h"
#include "core/place.h"
#include "core/process.h"
#include "core/stream.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr const char *output_file = "ver.txt";
constexpr std::size_t line_size = 511; // 510 characters and a NUL

// A program of the current directory, and whose rights it gets.
struct program_to_start {
    std::string name;
    open_file file;
    bool can_be_started = false;
    bool is_of_another_user = false; // to be started with that user's rights
};

// Whether root may run it: nobody else can have written it.
bool is_safe_for_root(const struct stat &file) {
    const bool is_group_of_others = file.st_gid != 0 && (file.st_mode & S_IWGRP) != 0;
    return file.st_uid == 0 && !is_group_of_others && (file.st_mode & S_IWOTH) == 0;
}

// Root runs a program of its own, and any other as its owner.
program_to_start look_at_program(const std::string &name) {
    program_to_start program;
    program.name = name;
    if (name.find('/') != std::string::npos) {
        return program;
    }
    const place here(".");
    program.file = here.open_plain(name.c_str());
    const struct stat &file = program.file.status;
    program.can_be_started = program.file.is_open();
    if (::geteuid() != 0) {
        // Some programs may be run, but not read.
        program.can_be_started = program.can_be_started || (errno == EACCES && !here.is_shared());
    } else if (file.st_uid == 0) {
        program.can_be_started = program.can_be_started && is_safe_for_root(file);
    } else {
        program.is_of_another_user = program.can_be_started;
    }
    return program;
}

// What another user's program may not do: keep the terminal, fill the disk, have root's rights. It
// gets the group of its file, but never root's.
bool give_up_rights(const struct stat &file) {
    const gid_t group = file.st_gid != 0 ? file.st_gid : file.st_uid;
    const rlimit size = {settings_limit.bytes, settings_limit.bytes};
    return ::setsid() >= 0 && ::setrlimit(RLIMIT_FSIZE, &size) == 0 &&
           ::setgroups(1, &group) == 0 && ::setgid(group) == 0 && ::setuid(file.st_uid) == 0;
}

// Becomes another user's program, as start_program would start it.
[[noreturn]] void become(const program_to_start &program, int output, int errors) {
    constexpr int not_started = 127;
    std::string path = "./" + program.name;
    std::string option = "-version";
    const std::array<char *, 3> arguments = {path.data(), option.data(), nullptr};
    ::dup2(output, STDOUT_FILENO);
    if (errors >= 0) {
        ::dup2(errors, STDERR_FILENO);
    }
    ::close(STDIN_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    if (give_up_rights(program.file.status)) {
        ::execve(path.c_str(), arguments.data(), environ);
    }
    ::_exit(not_started);
}

started_program start_as_its_owner(const program_to_start &program, int output) {
    // Keeps its errors off the terminal, which would obey any control character in them.
    const file_descriptor nowhere =
        ::isatty(STDERR_FILENO) == 1 ? place("/dev").open_to_write("null") : file_descriptor();
    const ::pid_t child = ::fork();
    if (child == 0) {
        become(program, output, nowhere.number());
    }
    return {child, child < 0 ? errno : 0};
}

// Where others may write, the file that was looked at is started, whatever has its name by now.
started_program start_as_ours(const program_to_start &program, int output) {
    const int number = program.file.descriptor.number();
    std::string path = "./" + program.name;
    if (program.file.is_shared) {
        path = formatted("/proc/self/fd/%d", number);
        ::fcntl(number, F_SETFD, 0);
    }
    return start_program({path, "-version"}, output);
}

// Waits until the program has ended. Returns the error if fork failed, else 0: also if the program
// could not be executed.
int run(const program_to_start &program, int output) {
    const started_program started = program.is_of_another_user ? start_as_its_owner(program, output)
                                                               : start_as_ours(program, output);
    if (started.error == 0) {
        wait_for(started.child);
    }
    return started.error == EAGAIN || started.error == ENOMEM ? started.error : 0;
}

// Takes the version out of a line. Returns false if it holds none.
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

bool read_version_from(file_descriptor output, std::string &version) {
    if (!output.is_open()) {
        return false;
    }
    ::lseek(output.number(), 0, SEEK_SET);
    const stream_handle file = stream_of(output.release(), "r");
    return file && find_version(file.get(), version);
}

} // namespace

int get_version(pINI_SETTINGS ini, answer_position setting) {
    const std::string name = formatted("%s.cgi", ini_value_num(ini, setting));
    path_text command;
    command.format("./%s -version >ver.txt", name.c_str());
    dmsg("Getting version from [%s]", command.c_str());
    std::fflush(stdout); // what the program prints must come after
    const place here(".");
    // Another wizard here may remove or replace the file by its name: this one goes on with its
    // own.
    file_descriptor output = here.create_anew(output_file);
    if (!output.is_open() && !here.can_be_read(output_file)) {
        return 0;
    }
    const program_to_start program = look_at_program(name);
    const int error =
        output.is_open() && program.can_be_started ? run(program, output.number()) : 0;
    std::string version;
    const bool is_found = error == 0 && read_version_from(std::move(output), version);
    here.remove(output_file);
    if (error != 0) {
        emsg("Cannot obtain version information: %s", std::strerror(error));
    } else if (!is_found) {
        emsg("cannot find version");
    } else {
        set_answer(ini, D_VERSION, version.c_str());
    }
    return is_found ? 1 : 0;
}
