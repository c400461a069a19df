#include "files/search.h"

#include "core/format.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t element_limit = 100;

unsigned char byte_at(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

// How one pattern element took one character of the name.
struct element_result {
    bool matches;
    std::size_t length; // of the element in the pattern
};

constexpr element_result no_match = {false, 0};

// `set` begins behind the "[".
element_result match_set(std::string_view set, unsigned char character) {
    const bool is_negated = set.starts_with('^');
    const std::size_t first = is_negated ? 1 : 0;
    bool is_member = false;
    unsigned char previous = 0;
    std::size_t at = first;
    for (; at < set.size() && (set[at] != ']' || at == first); at++) {
        const bool joins =
            set[at] == '-' && at > first && at + 1 < set.size() && set[at + 1] != ']';
        at += joins ? 1 : 0;
        const unsigned char highest = byte_at(set, at);
        const unsigned char lowest = joins ? previous : highest;
        is_member = is_member || (lowest <= character && character <= highest);
        previous = highest;
    }
    if (at >= set.size()) {
        return no_match;
    }
    return {is_member != is_negated, at + 2};
}

// Matches the first element of a non-empty pattern, no "*", against a character.
element_result match_element(std::string_view pattern, unsigned char character) {
    switch (pattern.front()) {
    case '?':
        return {true, 1};
    case '[':
        return match_set(pattern.substr(1), character);
    case '\\':
        return pattern.size() > 1 ? element_result{byte_at(pattern, 1) == character, 2} : no_match;
    default:
        return {byte_at(pattern, 0) == character, 1};
    }
}

// Takes the next element off the list. Returns false at the end; a comma at the end adds none.
bool next_element(std::string_view &list, std::string &element) {
    if (list.empty()) {
        return false;
    }
    const std::size_t comma = std::min(list.find(','), list.size());
    std::string_view piece = list.substr(0, comma);
    list.remove_prefix(std::min(comma + 1, list.size()));
    piece.remove_prefix(std::min(piece.find_first_not_of(" \t"), piece.size()));
    piece = piece.substr(0, element_limit);
    piece = piece.substr(0, piece.find_last_not_of("\r\n") + 1);
    element = lower_case(piece);
    return true;
}

// What a search gave: the number of names, which of them are known to be plain files, and why the
// directory was not read to its end, or 0.
struct search_result {
    int count = 0;
    plain_files plain{};
    int error = 0;
};

search_result collect(DIR *directory, const char *pattern, found_names &names) {
    search_result result;
    for (;;) {
        errno = 0; // stays so at the end of the directory (POSIX readdir)
        const dirent *entry = ::readdir(directory);
        if (entry == nullptr) {
            result.error = errno;
            return result;
        }
        if (result.count == MAXWILD) {
            print_emsg("MAXWILD exceeded");
            return result;
        }
        const char *name = &entry->d_name[0];
        if (!is_dot_entry(name) && match_wild(pattern, name) == 1) {
            const auto number = static_cast<std::size_t>(result.count++);
            names[number].reset(maistrdup(name));
            result.plain[number] = entry->d_type == DT_REG;
        }
    }
}

search_result search(const place &where, const char *pattern, found_names &names) {
    const directory_handle directory = where.list();
    return directory ? collect(directory.get(), pattern, names) : search_result{.error = errno};
}

} // namespace

int domatch(const char *name, const char *pattern) {
    const std::string_view text(name);
    const std::string_view elements(pattern);
    std::size_t at = 0;
    std::size_t element = 0;
    // Where the latest "*" lets the match start again, one character further. An earlier "*" need
    // never be tried again: whatever it could take, the latest one can.
    std::size_t star = std::string_view::npos;
    std::size_t retry = 0;

    while (at < text.size()) {
        if (element < elements.size() && elements[element] == '*') {
            star = ++element;
            retry = at;
            if (star == elements.size()) {
                return 1;
            }
            continue;
        }
        const element_result result =
            element < elements.size() ? match_element(elements.substr(element), byte_at(text, at))
                                      : no_match;
        if (result.matches) {
            at++;
            element += result.length;
        } else if (star != std::string_view::npos) {
            at = ++retry;
            element = star;
        } else {
            return 0;
        }
    }
    return elements.find_first_not_of('*', element) == std::string_view::npos ? 1 : 0;
}

int match_wild(const char *pattern, const char *name) {
    return std::string_view(pattern) == "*" ? 1 : domatch(name, pattern);
}

int match_list(const char *list, const char *name) {
    if (list == nullptr || name == nullptr) {
        return 0;
    }
    const std::string lower_name = lower_case(std::string_view(name).substr(0, path_limit));
    std::string_view rest(list);
    std::string element;
    int result = 0;
    while (next_element(rest, element)) {
        const bool is_exclusion = element.starts_with('!');
        if (match_wild(element.c_str() + (is_exclusion ? 1 : 0), lower_name.c_str()) == 1) {
            result = is_exclusion ? 0 : 1;
        }
    }
    return result;
}

int wild_find(const char *pattern, found_names &names) {
    plain_files plain{};
    return wild_find(place("."), pattern, names, plain);
}

int wild_find(const place &here, const char *pattern, found_names &names, plain_files &plain) {
    dmsg("Wild finding [%s]", pattern);
    const search_result found = search(here, pattern, names);
    if (found.error != 0) {
        emsg("Could not read directory file: %s", std::strerror(found.error));
    }
    plain = found.plain;
    return found.count;
}

int wild_find2(const char *directory, const char *pattern, found_names &names) {
    plain_files plain{};
    return wild_find2(place(directory), directory, pattern, names, plain);
}

int wild_find2(const place &directory, const char *path, const char *pattern, found_names &names,
               plain_files &plain) {
    dmsg("Wild finding [%s][%s]", path, pattern);
    const search_result found = search(directory, pattern, names);
    if (found.error != 0) {
        errno = found.error;
        std::perror("Could not read directory file");
    }
    plain = found.plain;
    return found.count;
}

int dir_exists(const char *path) {
    if (s_strlen(path) > path_limit) {
        return 0;
    }
    return place(rmv_end_sep(path)).can_be_listed() ? 1 : 0;
}

int file_exists(const char *path) {
    if (path == nullptr) {
        return 0;
    }
    const named_place file = locate(path);
    return file.directory.can_be_read(file.name.c_str()) ? 1 : 0;
}
