// The program's printf: console, log, paths and files are all formatted here. It knows %s, %d, %i,
// %u, %x, %c and %% with a width and the flag "-", and %s with a precision. A null argument for %s
// prints <NULL>; any other conversion stands as it is. Formatting never fails.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

// A printf-style receiver of messages, as lists and stores take them.
using message_function = int (*)(const char *format, ...);

// What is made of a text argument before it is put in.
using text_filter = std::string (*)(std::string_view text);

// Return the formatted text, whatever its length. With a filter, each %s goes through it after its
// precision has cut it.
[[gnu::format(printf, 1, 2)]] std::string formatted(const char *format, ...);
std::string vformatted(const char *format, std::va_list arguments, text_filter filter = nullptr);

// Formats into a stream. False if the stream did not take everything.
[[gnu::format(printf, 2, 3)]] bool format_file(std::FILE *file, const char *format, ...);

// Reads an already formatted text as a format once more, with no arguments left: %% becomes %, %s
// reads as <NULL>, %d, %i, %u and %x as 0, %c as nothing (flags, width and precision before them
// are passed over); anything else stands as it is.
std::string format_without_arguments(std::string_view text);

// A copy of `text` with each % doubled, for a receiver that will read it as a format.
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

    // A null text gives "".
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
