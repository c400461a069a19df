// The program's printf. The input makes conversions with fitting arguments: one byte chooses the
// kind, one the flags, one the width, one the precision, then four the number; what is left is the
// text. Promised: the answers of the C library's printf; and that a text formatted without
// arguments says what it says, whatever it holds.
#include "support.h"

#include "core/console.h"
#include "core/format.h"

#include <cstdio>
#include <string>

namespace {

struct conversion {
    std::string format;
    char kind;
};

conversion read_conversion(fuzz_input &input) {
    constexpr std::string_view kinds = "sdiuxc";
    constexpr unsigned largest = 70;
    const char kind = kinds[input.byte() % kinds.size()];
    const unsigned flags = input.byte();
    const unsigned width = input.byte();
    const unsigned precision = input.byte();
    std::string format = "%";
    format += (flags & 1) != 0 ? "-" : "";
    format += width < largest ? std::to_string(width % largest) : "";
    format += precision < largest && kind == 's' ? "." + std::to_string(precision) : "";
    return {format + kind, kind};
}

// Asks the program's printf and the C library's.
template <class Argument>
void compare(const std::string &format, Argument argument) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    const std::string ours = formatted(format.c_str(), argument);
    const int length = std::snprintf(nullptr, 0, format.c_str(), argument);
    require(length >= 0, "the C library can format it");
    std::string theirs(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(theirs.data(), theirs.size(), format.c_str(), argument);
#pragma GCC diagnostic pop
    theirs.pop_back();
    require(ours == theirs, "the texts agree");
}

void compare_one(fuzz_input &input) {
    const conversion what = read_conversion(input);
    unsigned number = 0;
    for (int byte = 0; byte < 4; byte++) {
        number = number << 8 | input.byte();
    }
    const std::string text = input.text();
    const std::string format = "<" + what.format + ">%%";
    switch (what.kind) {
    case 's':
        compare(format, text.c_str());
        break;
    case 'd':
    case 'i':
        compare(format, static_cast<int>(number));
        break;
    case 'c':
        compare(format, static_cast<int>(number % 255 + 1));
        break;
    default:
        compare(format, number);
    }
}

// What a text says when its conversions have no arguments left is known when it has none.
void check_text(const std::string &text) {
    require(format_without_arguments(double_percents(text)) == text, "doubled percents say %");
    require(formatted("%s", text.c_str()) == text.c_str(), "a text as an argument stands as it is");
    const std::string read = format_without_arguments(text);
    require(text.find('%') != std::string::npos || read == text, "a text without % stays");
    require(read.size() <= text.size() * 3, "a conversion says at most <NULL>");

    const std::string shown = without_controls(text);
    require(shown.find_first_of("\x1b\x7f\n\r") == std::string::npos, "no control stays");
    require(without_controls(shown) == shown, "what is shown once is shown again");

    const path_text cut(text.c_str());
    const std::string whole(text.c_str());
    require(cut.view() == whole.substr(0, path_text::capacity), "a bounded text is a beginning");
    require(cut.is_cut() == (whole.size() > path_text::capacity),
            "a bounded text says if it is cut");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz_input input(data, size);
    compare_one(input);
    check_text(input.rest());
    return 0;
}
