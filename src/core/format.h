// The program's printf: console, log, paths and files are all formatted here. It knows %s, %d, %i,
// %u, %x, %c and %% with a width and the flag "-", and %s with a precision. A null argument for %s
// prints <NULL>; any other conversion is printed as it is written. Formatting never fails.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

// A printf-style procedure that receives the messages of a list or a store.
using message_function = int (*)(const char *format, ...);

// Changes a text argument before it is formatted.
using text_filter = std::string (*)(std::string_view text);

// Return the formatted text, whatever its length. A filter changes each %s, after its precision
// has cut it.
[[gnu::format(printf, 1, 2)]] std::string formatted(const char *format, ...);
std::string vformatted(const char *format, std::va_list arguments, text_filter filter = nullptr);

// Formats into a stream. Returns false if a write fails.
[[gnu::format(printf, 2, 3)]] bool format_file(std::FILE *file, const char *format, ...);

// Formats an already formatted text once more, with no arguments left: %% becomes %, %s becomes
// <NULL>, %d, %i, %u and %x become 0, %c becomes nothing (their flags, width and precision are
// ignored); anything else is printed as it is written.
std::string format_without_arguments(std::string_view text);

// Returns `text` with each % doubled, for a receiver that will use it as a format.
std::string double_percents(std::string_view text);

// A text in a buffer of `size` bytes: at most size - 1 characters and a NUL. What does not fit is
// cut, and `is_cut` says so afterwards.
template <std::size_t size>
class bounded_text {
  public:
    static constexpr std::size_t capacity = size - 1;

    bounded_text() = default;
    explicit bounded_text(const char *text) { assign(text); }
    explicit bounded_text(std::string_view text) { assign(text); }

    // A null text counts as "".
    bounded_text &assign(const char *text) {
        return assign(text != nullptr ? std::string_view(text) : std::string_view());
    }

    bounded_text &assign(std::string_view text) {
        cut_ = text.size() > capacity;
        const std::size_t length = cut_ ? capacity : text.size();
        std::char_traits<char>::move(buffer_, text.data(), length);
        buffer_[length] = '\0';
        return *this;
    }

    bounded_text &append(std::string_view text) {
        const std::size_t used = std::strlen(buffer_);
        const bool too_long = text.size() > capacity - used;
        const std::size_t length = too_long ? capacity - used : text.size();
        std::char_traits<char>::move(buffer_ + used, text.data(), length);
        buffer_[used + length] = '\0';
        cut_ = cut_ || too_long;
        return *this;
    }

    [[gnu::format(printf, 2, 3)]] bounded_text &format(const char *format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        vformat(format, arguments);
        va_end(arguments);
        return *this;
    }

    bounded_text &vformat(const char *format, std::va_list arguments) {
        return assign(vformatted(format, arguments));
    }

    [[nodiscard]] const char *c_str() const { return buffer_; }
    [[nodiscard]] char *data() { return buffer_; }
    [[nodiscard]] std::span<char> buffer() { return buffer_; }
    [[nodiscard]] std::string_view view() const { return buffer_; }
    [[nodiscard]] bool empty() const { return buffer_[0] == '\0'; }
    [[nodiscard]] bool is_cut() const { return cut_; }

  private:
    char buffer_[size] = {};
    bool cut_ = false;
};

// The buffer of a path or an answer: 511 characters.
using path_text = bounded_text<512>;
