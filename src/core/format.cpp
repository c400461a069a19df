#include "core/format.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

constexpr std::string_view missing_text = "<NULL>";

// A conversion: what is between the "%" and its letter, and that letter.
struct conversion {
    bool left = false;
    std::size_t width = 0;
    std::size_t precision = std::string_view::npos;
    char kind = '\0';       // NUL if the text ends before a letter
    std::size_t length = 0; // characters after the "%", the letter included
};

// Reads a width or precision and moves `at` past it. A "*" stands for no argument here.
std::size_t read_number(std::string_view text, std::size_t &at) {
    constexpr std::size_t limit = 4096; // keeps an absurd width from filling the memory
    std::size_t number = 0;
    for (; at < text.size() && ((text[at] >= '0' && text[at] <= '9') || text[at] == '*'); at++) {
        if (text[at] != '*') {
            number = std::min(limit, number * 10 + static_cast<std::size_t>(text[at] - '0'));
        }
    }
    return number;
}

conversion read_conversion(std::string_view text) {
    conversion found;
    std::size_t at = std::min(text.find_first_not_of("-+ #0"), text.size());
    found.left = text.substr(0, at).find('-') != std::string_view::npos;
    found.width = read_number(text, at);
    if (at < text.size() && text[at] == '.') {
        at++;
        found.precision = read_number(text, at);
    }
    if (at < text.size()) {
        found.kind = text[at];
        found.length = at + 1;
    }
    return found;
}

// A copy of the caller's list in a record, which can be passed by reference whatever type va_list
// is (an array on some machines, ISO C 7.16).
struct argument_list {
    std::va_list list;

    explicit argument_list(std::va_list arguments) { va_copy(list, arguments); }
    ~argument_list() { va_end(list); }
    argument_list(const argument_list &) = delete;
    argument_list &operator=(const argument_list &) = delete;
};

// Returns the next argument; null or 0 where there are none (a null list).
template <class Argument>
Argument next(argument_list *arguments) {
    if (arguments == nullptr) {
        return Argument();
    }
    return va_arg(arguments->list, Argument);
}

void put_field(std::string &out, const conversion &how, std::string_view field) {
    const std::size_t padding = how.width > field.size() ? how.width - field.size() : 0;
    out.append(how.left ? 0 : padding, ' ').append(field).append(how.left ? padding : 0, ' ');
}

void put_text(std::string &out, const conversion &how, const char *text, text_filter filter) {
    const std::string_view whole = text != nullptr ? std::string_view(text) : missing_text;
    const std::string_view field = whole.substr(0, how.precision);
    put_field(out, how, filter != nullptr ? filter(field) : field);
}

void put_number(std::string &out, const conversion &how, long long number, int base) {
    std::array<char, 16> digits{}; // holds any 32-bit number in base 10 or 16
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, base).ptr;
    put_field(out, how, std::string_view(digits.data(), end));
}

// Without an argument there is no character either.
void put_character(std::string &out, const conversion &how, argument_list *arguments) {
    const std::size_t count = arguments != nullptr ? 1 : 0;
    put_field(out, how, std::string(count, static_cast<char>(next<int>(arguments))));
}

// Appends one conversion. Returns false for a kind that it does not know.
bool put_conversion(std::string &out, const conversion &how, argument_list *arguments,
                    text_filter filter) {
    switch (how.kind) {
    case 's':
        put_text(out, how, next<const char *>(arguments), filter);
        return true;
    case 'd':
    case 'i':
        put_number(out, how, next<int>(arguments), 10);
        return true;
    case 'u':
        put_number(out, how, next<unsigned>(arguments), 10);
        return true;
    case 'x':
        put_number(out, how, next<unsigned>(arguments), 16);
        return true;
    case 'c':
        put_character(out, how, arguments);
        return true;
    case '%':
        out.push_back('%');
        return true;
    default:
        return false;
    }
}

std::string format_all(std::string_view format, argument_list *arguments, text_filter filter) {
    std::string out;
    for (std::size_t percent = format.find('%'); percent != std::string_view::npos;
         percent = format.find('%')) {
        out.append(format.substr(0, percent));
        format.remove_prefix(percent + 1);
        conversion how = read_conversion(format);
        if (arguments == nullptr) {
            // A second formatting ignores flags, width and precision.
            how = {.kind = how.kind, .length = how.length};
        }
        if (put_conversion(out, how, arguments, filter)) {
            format.remove_prefix(how.length);
        } else {
            out.push_back('%');
        }
    }
    return out.append(format);
}

} // namespace

std::string vformatted(const char *format, std::va_list arguments, text_filter filter) {
    argument_list list(arguments);
    return format_all(format, &list, filter);
}

std::string formatted(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = vformatted(format, arguments);
    va_end(arguments);
    return text;
}

bool format_file(std::FILE *file, const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = vformatted(format, arguments);
    va_end(arguments);
    return std::fwrite(text.data(), 1, text.size(), file) == text.size();
}

std::string format_without_arguments(std::string_view text) {
    return format_all(text, nullptr, nullptr);
}

std::string double_percents(std::string_view text) {
    std::string result;
    for (const char character : text) {
        result.append(character == '%' ? 2 : 1, character);
    }
    return result;
}
