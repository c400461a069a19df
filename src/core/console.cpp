#include "core/console.h"

#include "core/format.h"
#include "core/stream.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace {

bool is_terminal() {
    static const bool answer = ::isatty(STDOUT_FILENO) == 1;
    return answer;
}

// Set by gather_output.
std::string *gathered = nullptr;

void put(std::string_view text) {
    if (gathered != nullptr) {
        gathered->append(text);
        return;
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
}

// The UTF-8 sequences of more than one byte (RFC 3629): the ranges of the first and the second
// byte. All further bytes are 80 to BF.
struct utf8_form {
    std::string_view first;
    std::string_view second;
    std::size_t length;
};

constexpr utf8_form utf8_forms[] = {
    {"\xC2\xDF", "\x80\xBF", 2}, {"\xE0\xE0", "\xA0\xBF", 3}, {"\xE1\xEC", "\x80\xBF", 3},
    {"\xED\xED", "\x80\x9F", 3}, {"\xEE\xEF", "\x80\xBF", 3}, {"\xF0\xF0", "\x90\xBF", 4},
    {"\xF1\xF3", "\x80\xBF", 4}, {"\xF4\xF4", "\x80\x8F", 4},
};

bool is_in(std::string_view range, char byte) {
    const auto number = static_cast<unsigned char>(byte);
    return number >= static_cast<unsigned char>(range.front()) &&
           number <= static_cast<unsigned char>(range.back());
}

// The first character of a text: a UTF-8 sequence, or a byte that begins none.
std::string_view first_character(std::string_view text) {
    for (const auto &[first, second, length] : utf8_forms) {
        if (text.size() < length || !is_in(first, text[0]) || !is_in(second, text[1])) {
            continue;
        }
        const std::string_view rest = text.substr(2, length - 2);
        if (std::all_of(rest.begin(), rest.end(), [](char c) { return is_in("\x80\xBF", c); })) {
            return text.substr(0, length);
        }
    }
    return text.substr(0, 1);
}

// The control characters of ASCII, and U+0080 to U+009F: in UTF-8, and as the single bytes that
// many terminals still obey.
bool is_control(std::string_view character) {
    return character <= "\x1F" || (character >= "\x7F" && character <= "\x9F") ||
           (character >= "\xC2\x80" && character <= "\xC2\x9F");
}

} // namespace

std::string without_controls(std::string_view text, std::string_view kept) {
    std::string shown;
    while (!text.empty()) {
        const std::string_view character = first_character(text);
        const bool is_kept =
            !is_control(character) || kept.find(character) != std::string_view::npos;
        shown.append(is_kept ? character : "?");
        text.remove_prefix(character.size());
    }
    return shown;
}

std::string as_shown(std::string_view text) {
    return is_terminal() ? without_controls(text) : std::string(text);
}

void print(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = vformatted(format, arguments, as_shown);
    va_end(arguments);
    put(text);
}

void print_lines(std::string_view text) {
    put(is_terminal() ? without_controls(text, "\n\t") : std::string(text));
}

void print_dot() {
    put(".");
    // Terminals are line-buffered (ISO C 7.21.3): the dots of one line would all show at its end.
    if (is_terminal()) {
        std::fflush(stdout);
    }
}

void gather_output(std::string *text) {
    gathered = text;
}

bool read_line(std::span<char> line) {
    std::fflush(stdout); // a prompt has no line end
    return !read_piece(stdin, line).empty();
}

void wait_for_enter() {
    path_text line;
    read_line(line.buffer());
}
