// The string and path helpers and the answer clean-up. The input is a length, two texts, each
// ended by a NUL, and bytes to sort. Promised: no buffer is overrun (copies go into buffers of
// exactly the size asked for), and what the headers say of each result.
#include "support.h"

#include "core/paths.h"
#include "core/text.h"
#include "dialogue/answers.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

constexpr std::size_t limit = 511;

std::string joined_lower(std::string text) {
    return s_strlwr(text.data());
}

std::string or_empty(const char *text) {
    return text != nullptr ? text : "";
}

// A heap buffer of exactly `size` bytes that starts as a beginning of `text`.
std::unique_ptr<char[]> exact_buffer(std::size_t size, const std::string &text) {
    auto buffer = std::make_unique<char[]>(size);
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(buffer.get(), text.data(), length);
    return buffer;
}

void check_copies(std::size_t length, const std::string &one, const std::string &other) {
    auto buffer = exact_buffer(length + 1, one);
    const char *end = ncpy(buffer.get(), other.c_str(), length);
    require(buffer.get() == other.substr(0, length), "ncpy copies a beginning");
    require(end == buffer.get() + std::strlen(buffer.get()), "ncpy gives the end");

    buffer = exact_buffer(length + 1, one);
    const std::string start = buffer.get();
    ncat(buffer.get(), other.c_str(), length);
    require(buffer.get() == (start + other).substr(0, length), "ncat appends within the length");

    buffer = exact_buffer(length + 1, one);
    lcat(buffer.get(), other.c_str(), length + 1);
    require(buffer.get() == (start + other).substr(0, length), "lcat appends within the size");
    lcpy(buffer.get(), other.c_str(), length + 1);
    require(buffer.get() == other.substr(0, length), "lcpy copies within the size");

    const heap_text grown(s_stradd(::strdup(one.c_str()), other.c_str()));
    require(grown.get() == one + other, "s_stradd appends");
}

void check_comparisons(std::size_t length, const std::string &one, const std::string &other) {
    const std::string low = joined_lower(one);
    const std::string other_low = joined_lower(other);
    require((s_strcmp(one.c_str(), other.c_str()) == 0) == (one == other), "s_strcmp");
    require((s_stricmp(one.c_str(), other.c_str()) == 0) == (low == other_low), "s_stricmp");
    const bool both_long = one.size() >= length && other.size() >= length;
    require((s_strncmp(one.c_str(), other.c_str(), length) == 0) ==
                (both_long && one.substr(0, length) == other.substr(0, length)),
            "s_strncmp");
    require((s_strnicmp(one.c_str(), other.c_str(), length) == 0) ==
                (both_long && low.substr(0, length) == other_low.substr(0, length)),
            "s_strnicmp");
    const char *found = s_stristr(one.c_str(), other.c_str());
    const std::size_t place = low.find(other_low);
    require(found == (place == std::string::npos ? nullptr : one.c_str() + place), "s_stristr");
}

void check_tokens(const std::string &text, const std::string &separators) {
    const std::string kept = text.substr(0, 1023);
    std::size_t at = 0;
    for (const char *token = s_strtoken(text.c_str(), separators.c_str()); token != nullptr;
         token = s_strtoken(nullptr, separators.c_str())) {
        const std::size_t end = std::min(kept.find_first_of(separators, at), kept.size());
        require(token == kept.substr(at, end - at), "a token ends at the next separator");
        at = end + 1;
    }
    require(at == kept.size() + 1, "the tokens make up the text");
}

void check_paths(const std::string &one, const std::string &other) {
    const std::string path = attach_path(one.c_str(), other.c_str());
    require(path.size() <= limit, "a joined path is bounded");
    const std::string safe = valid_file(other.c_str());
    require(safe == valid_file(safe.c_str()), "a valid name stays");
    require(!one.empty() || path == safe, "a file without directory is its valid name");

    const std::string cut = one.substr(0, limit);
    require(cut.starts_with(strip_ext(one.c_str())), "strip_ext cuts an end");
    require(or_empty(strip_filename(one.c_str())) ==
                one.substr(0, one.rfind('/') + 1).substr(0, limit),
            "strip_filename gives the directory");
    const std::string name = strip_path(one.c_str(), 0);
    require(name == one.substr(one.rfind('/') + 1).substr(0, limit), "strip_path gives the name");
    require(or_empty(remove_path(one.c_str(), 1)) == name, "remove_path gives the name");
    require(name.starts_with(strip_path(one.c_str(), 1)), "strip_path cuts the extension");
    require(std::strlen(attach_ext(one.c_str(), other.c_str())) <= limit, "attach_ext is bounded");
    require(std::strlen(remove_quote(one.c_str())) <= limit, "remove_quote is bounded");

    const std::string ended = add_end_sep(one.c_str());
    require(ended.size() <= limit, "add_end_sep is bounded");
    require(ended.ends_with('/') || ended.size() == limit, "add_end_sep ends in a separator");
    require(cut.starts_with(rmv_end_sep(one.c_str())), "rmv_end_sep cuts an end");
    require(one.ends_with(strip_directory(one.c_str())), "strip_directory gives an end");
}

void check_answers(const std::string &text) {
    std::string work = text;
    require(text.substr(0, text.find_first_of("\r\n")) == clean_up_answer(work.data()),
            "an answer ends at its first line end");
    work = text;
    require(text.substr(0, text.find('.')) == clean_up_name(work.data()), "a name ends at a dot");
    work = text;
    const std::size_t end = text.find(' ');
    clean_up_set(work.data());
    require(std::strlen(work.data()) <= text.size() - std::min(end, text.size()),
            "it only shrinks");
    require(work.find('\n') >= std::strlen(work.data()), "a set has no line end");
    const heap_text label(get_label(text.c_str()));
    require(end == std::string::npos || label.get() == text.substr(0, std::min(end, limit)),
            "a label ends at a blank");
    work = text;
    const bool is_blank = text.find_first_not_of(' ') == std::string::npos;
    require(valid_dir_name(work.data()) == (is_blank ? 1 : 0), "only blanks are no name");
    num_perc(text.c_str());
    require(*strip_leading_spaces(text.c_str()) != ' ', "no blank leads");
    work = text;
    char_replace(work.data(), '/', '.');
    require(work.find('/') == std::string::npos, "every character is replaced");
}

int compare_bytes(const void *one, const void *other) {
    return *static_cast<const unsigned char *>(one) - *static_cast<const unsigned char *>(other);
}

void check_sorting(std::string bytes) {
    std::string expected = bytes;
    std::sort(expected.begin(), expected.end(), [](char one, char other) {
        return static_cast<unsigned char>(one) < static_cast<unsigned char>(other);
    });
    myqsort(bytes.data(), bytes.size(), 1, compare_bytes);
    require(bytes == expected, "myqsort sorts");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz_input input(data, size);
    const std::size_t length = input.byte();
    const std::string one = input.text();
    const std::string other = input.text();
    check_copies(length, one, other);
    check_comparisons(length, one, other);
    check_tokens(one, other);
    check_paths(one, other);
    check_answers(one);
    check_sorting(input.rest());
    return 0;
}
