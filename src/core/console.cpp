#include "core/console.h"

#include "core/format.h"
#include "core/stream.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <unistd.h>

void print(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = vformatted(format, arguments);
    va_end(arguments);
    std::fwrite(text.data(), 1, text.size(), stdout);
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
