#include "core/console.h"

#include "core/format.h"
#include "core/stream.h"

#include <cstdarg>
#include <cstdio>
#include <unistd.h>

void print(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    vformat_file(stdout, format, arguments);
    va_end(arguments);
}

void print_dot() {
    static const bool is_terminal = ::isatty(STDOUT_FILENO) == 1;
    std::fputc('.', stdout);
    if (is_terminal) {
        std::fflush(stdout);
    }
}

bool read_line(std::span<char> line) {
    std::fflush(stdout);
    return !read_piece(stdin, line).empty();
}

void wait_for_enter() {
    path_text line;
    read_line(line.buffer());
}
