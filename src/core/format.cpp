#include "core/format.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

constexpr std::string_view missing_text = "<NULL>";

struct conversion {
    bool left = false;
    bool zeros = false;
    std::size_t width = 0;
    std::size_t precision = std::string_view::npos;
    char kind = '\0';
    std::size_t length = 0; // characters after the '%', the kind included
};

std::size_t read_number(std::string_view text, std::size_t &at) {
    constexpr std::size_t limit = 4096;
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
    std::size_t at = 0;
    for (; at < text.size() && std::string_view("-+ #0").find(text[at]) != std::string_view::npos;
         at++) {
        found.left = found.left || text[at] == '-';
        found.zeros = found.zeros || text[at] == '0';
    }
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

// A copy of the caller's list in a record, so that helpers can take arguments off it by reference
// whatever type va_list is.
struct argument_list {
    std::va_list list;

    explicit argument_list(std::va_list arguments) { va_copy(list, arguments); }
    ~argument_list() { va_end(list); }
    argument_list(const argument_list &) = delete;
    argument_list &operator=(const argument_list &) = delete;
};

template <class Sink>
void pad(Sink &sink, char fill, std::size_t count) {
    for (; count > 0; count--) {
        sink.put(std::string_view(&fill, 1));
    }
}

template <class Sink>
void put_field(Sink &sink, const conversion &how, std::string_view field) {
    const std::size_t padding = how.width > field.size() ? how.width - field.size() : 0;
    if (!how.left) {
        pad(sink, ' ', padding);
    }
    sink.put(field);
    if (how.left) {
        pad(sink, ' ', padding);
    }
}

template <class Sink>
void put_text(Sink &sink, const conversion &how, const char *text) {
    const std::string_view whole = text != nullptr ? std::string_view(text) : missing_text;
    put_field(sink, how, whole.substr(0, how.precision));
}

template <class Sink, class Number>
void put_number(Sink &sink, const conversion &how, Number number, int base) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, base).ptr;
    std::string_view field(digits.data(), static_cast<std::size_t>(end - digits.data()));
    if (how.zeros && !how.left && field.size() < how.width) {
        if (field.front() == '-') {
            sink.put("-");
            field.remove_prefix(1);
            pad(sink, '0', how.width - field.size() - 1);
        } else {
            pad(sink, '0', how.width - field.size());
        }
        sink.put(field);
        return;
    }
    put_field(sink, how, field);
}

// Puts the next argument. False for a kind that takes none.
template <class Sink>
bool put_argument(Sink &sink, const conversion &how, argument_list &arguments) {
    switch (how.kind) {
    case 's':
        put_text(sink, how, va_arg(arguments.list, const char *));
        return true;
    // NOLINTNEXTLINE(bugprone-branch-clone): the types taken differ
    case 'd':
    case 'i':
        put_number(sink, how, va_arg(arguments.list, int), 10);
        return true;
    case 'u':
        put_number(sink, how, va_arg(arguments.list, unsigned), 10);
        return true;
    case 'x':
        put_number(sink, how, va_arg(arguments.list, unsigned), 16);
        return true;
    case 'c': {
        const char character = static_cast<char>(va_arg(arguments.list, int));
        put_field(sink, how, std::string_view(&character, 1));
        return true;
    }
    case '%':
        sink.put("%");
        return true;
    default:
        return false;
    }
}

template <class Sink>
void put_all(Sink &sink, std::string_view format, argument_list &arguments) {
    while (!format.empty()) {
        const std::size_t percent = std::min(format.find('%'), format.size());
        sink.put(format.substr(0, percent));
        format.remove_prefix(percent);
        if (format.empty()) {
            return;
        }
        const conversion how = read_conversion(format.substr(1));
        if (put_argument(sink, how, arguments)) {
            format.remove_prefix(1 + how.length);
        } else {
            sink.put("%");
            format.remove_prefix(1);
        }
    }
}

class bounded_sink {
  public:
    explicit bounded_sink(std::span<char> out) : out_(out) {}

    void put(std::string_view piece) {
        if (length_ < out_.size()) {
            std::memcpy(out_.data() + length_, piece.data(),
                        std::min(piece.size(), out_.size() - length_));
        }
        length_ += piece.size();
    }

    std::size_t finish() {
        if (!out_.empty()) {
            out_[std::min(length_, out_.size() - 1)] = '\0';
        }
        return length_;
    }

  private:
    std::span<char> out_;
    std::size_t length_ = 0;
};

class string_sink {
  public:
    void put(std::string_view piece) { text.append(piece); }

    std::string text;
};

class file_sink {
  public:
    explicit file_sink(std::FILE *file) : file_(file) {}

    void put(std::string_view piece) {
        if (std::fwrite(piece.data(), 1, piece.size(), file_) != piece.size()) {
            complete = false;
        }
    }

    bool complete = true;

  private:
    std::FILE *file_;
};

// What a conversion reads as when no argument is left for it; null when it stands as it is.
const char *text_without_argument(char kind) {
    switch (kind) {
    case '%':
        return "%";
    case 's':
        return missing_text.data();
    case 'd':
    case 'i':
    case 'u':
    case 'x':
        return "0";
    case 'c':
        return "";
    default:
        return nullptr;
    }
}

} // namespace

std::size_t vformat_text(std::span<char> out, const char *format, std::va_list arguments) {
    argument_list list(arguments);
    bounded_sink sink(out);
    put_all(sink, format, list);
    return sink.finish();
}

std::size_t format_text(std::span<char> out, const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::size_t length = vformat_text(out, format, arguments);
    va_end(arguments);
    return length;
}

std::string formatted(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    string_sink sink;
    {
        argument_list list(arguments);
        put_all(sink, format, list);
    }
    va_end(arguments);
    return std::move(sink.text);
}

bool vformat_file(std::FILE *file, const char *format, std::va_list arguments) {
    argument_list list(arguments);
    file_sink sink(file);
    put_all(sink, format, list);
    return sink.complete;
}

bool format_file(std::FILE *file, const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const bool complete = vformat_file(file, format, arguments);
    va_end(arguments);
    return complete;
}

std::string format_without_arguments(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t percent = std::min(text.find('%'), text.size());
        result.append(text.substr(0, percent));
        text.remove_prefix(percent);
        if (text.empty()) {
            break;
        }
        const conversion how = read_conversion(text.substr(1));
        if (const char *replacement = text_without_argument(how.kind)) {
            result.append(replacement);
            text.remove_prefix(1 + how.length);
        } else {
            result.push_back('%');
            text.remove_prefix(1);
        }
    }
    return result;
}

std::string double_percents(std::string_view text) {
    std::string result;
    for (std::size_t percent = text.find('%'); percent != std::string_view::npos;
         percent = text.find('%')) {
        result.append(text.substr(0, percent)).append("%%");
        text.remove_prefix(percent + 1);
    }
    return result.append(text);
}
