#include "setup/version.h"

#include "core/log.h"
#include "core/process.h"
#include "core/stream.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

constexpr const char *output_file = "ver.txt";
constexpr std::size_t line_size = 511; // 510 characters and a NUL

// Returns the error of starting the program, or 0. Returns 0 too if its output cannot be kept. A
// program that does not exist costs no process.
int run_into_output_file(const std::string &program) {
    const stream_handle output = open_to_write(output_file);
    if (!output) {
        return 0;
    }
    if (::access(program.c_str(), F_OK) != 0) {
        return errno;
    }
    const started_program started = start_program({program, "-version"}, ::fileno(output.get()));
    if (started.error == 0) {
        wait_for(started.child);
    }
    return started.error;
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
