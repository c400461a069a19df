// Finding files: the wildcard matcher, comma-separated pattern lists, the directory search that
// collects matching names, and the two existence tests. Copying, removal, template sets and
// flows build on them.
#pragma once

#include "core/paths.h"
#include "core/place.h"
#include "core/text.h"

#include <array>
#include <bitset>
#include <string>
#include <string_view>

// The most names that one search gives.
inline constexpr int MAXWILD = 1000;

// The names a search found, each a heap copy freed with the array or by resetting its slot.
using found_names = std::array<heap_text, MAXWILD>;

// Which of the names a search found are plain files, as far as the directory itself tells.
using plain_files = std::bitset<MAXWILD>;

// Call `use` with each of the first `count` names, in their order, and with whether it is known to
// be a plain file. Free the name afterwards. Skip names whose copy could not be allocated.
template <class Use>
void for_each_name(found_names &names, int count, const plain_files &plain, Use use) {
    for (std::size_t number = 0; number < static_cast<std::size_t>(count); number++) {
        if (names[number] != nullptr) {
            use(names[number].get(), plain[number]);
            names[number].reset();
        }
    }
}

template <class Use>
void for_each_name(found_names &names, int count, Use use) {
    for_each_name(names, count, {}, [&use](const char *name, bool /*is_plain*/) { use(name); });
}

// Returns 1 if the whole of `name` matches `pattern`, else 0. "*" matches any run, "?" one
// character,
// "[...]" one of a set ("[^...]" one not in it, "a-z" a range, "]" or "-" first is a member),
// "\" takes the next character literally; case counts. An unclosed set or a final "\" matches
// nothing. Takes at most as many steps as the product of the two lengths.
int domatch(const char *name, const char *pattern);

// domatch, but "*" alone matches every name, an empty one included.
int match_wild(const char *pattern, const char *name);

// Returns 1 if a list such as "*.gif,*.jpg,!logo*.gif" takes `name`, ignoring case, else 0: the
// last element that matches decides, and one with "!" cuts the name out. Returns 0 if either is
// null. At most 100 characters of an element and 511 of the name count.
int match_list(const char *list, const char *name);

// Collect the names matching `pattern` in the current or the given directory, in the order the
// directory lists them, never "." or "..". Return their number. Print and log an error beyond
// MAXWILD names and keep the first ones. If the directory cannot be read, or not to its end, return
// the names until there and report that: wild_find in the log, wild_find2 on standard error. A
// directory that is open already is shown as `path`. `plain` gets which names are plain files.
int wild_find(const char *pattern, found_names &names);
int wild_find(const place &here, const char *pattern, found_names &names, plain_files &plain);
int wild_find2(const char *directory, const char *pattern, found_names &names);
int wild_find2(const place &directory, const char *path, const char *pattern, found_names &names,
               plain_files &plain);

// Returns 1 if `path`, less one trailing "/", can be opened as a directory, else 0: 0 for "/"
// alone.
int dir_exists(const char *path);

// Returns 1 if `path` can be opened for reading, else 0.
int file_exists(const char *path);
