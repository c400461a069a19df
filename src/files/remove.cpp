#include "files/operations.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/place.h"
#include "files/search.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace {

constexpr std::string_view user_prefix = "u_";
constexpr std::string_view kept_prefix = "gxsetup";

// Set by rehearse_removals.
bool is_rehearsed = false;

// What stands under a name in an open directory.
struct removable {
    const place &directory;
    const char *name;
    const char *path; // as it is shown
    bool is_plain;    // known to be a plain file, so that nobody need look at it
};

// What goes of a directory (the table of do_xrmv).
struct removal_rules {
    pINI_SETTINGS ini;
    const char *wild;
    bool not_u;
    bool dirs_only;
};

bool is_answer(pINI_SETTINGS ini, const char *name, const char *path) {
    return s_strcmp(ini_value(ini, name, 1), path) == 0;
}

int removal_failed(const char *path, int error) {
    print_emsg("\nCannot remove %s: %s", shown_path(path, error).c_str(), std::strerror(error));
    return 0;
}

// Removes a file; removes an empty directory. In a rehearsal they show that they would, and
// succeed.
bool take_file(const removable &entry) {
    if (is_rehearsed) {
        print("\nWould remove %s", entry.path);
        return true;
    }
    return entry.directory.remove(entry.name);
}

bool take_directory(const removable &entry) {
    if (is_rehearsed) {
        print("\nWould remove %s/ if it is empty then", entry.path);
        return true;
    }
    return entry.directory.remove_directory(entry.name);
}

// An error counts only if the file is still there.
int remove_file(const removable &entry) {
    int error = ENAMETOOLONG;
    if (s_strlen(entry.path) <= path_limit) {
        error = take_file(entry) ? 0 : errno;
    }
    if (error == 0) {
        print_dot();
        return 1;
    }
    struct stat status {};
    return entry.directory.look(entry.name, status) ? removal_failed(entry.path, error) : 1;
}

int empty_directory(const removal_rules &rules, const place &directory, const char *path);

// Empties a directory by the rules that hold below the first one. What a link leads to lies
// elsewhere and stays; what cannot be looked at may be a link.
int empty_below(const removal_rules &rules, const removable &entry) {
    struct stat status {};
    if (!entry.directory.look_at_name(entry.name, status) || S_ISLNK(status.st_mode)) {
        return 1;
    }
    const removal_rules below = {rules.ini, rules.wild, true, false};
    return empty_directory(below, entry.directory.enter_itself(entry.name), entry.path);
}

int remove_directory(const removal_rules &rules, const removable &entry) {
    if (s_strlen(entry.path) > path_limit) {
        return removal_failed(entry.path, ENAMETOOLONG);
    }
    const int result = empty_below(rules, entry);
    if (!take_directory(entry)) {
        return removal_failed(entry.path, errno);
    }
    print_dot();
    return result;
}

// Whether the rules take a directory.
bool is_taken(const removal_rules &rules, const removable &entry) {
    if (rules.not_u) {
        return !std::string_view(entry.name).starts_with(user_prefix) &&
               !is_answer(rules.ini, "templates", entry.path);
    }
    return !rules.dirs_only || match_list(rules.wild, entry.name) != 0;
}

// Removes one entry, or passes over it.
int remove_entry(const removal_rules &rules, const removable &entry) {
    if (rules.not_u && is_answer(rules.ini, "workarea", entry.path)) {
        return 1;
    }
    struct stat status {};
    if (!entry.is_plain && !entry.directory.look(entry.name, status)) {
        return 1;
    }
    if (!entry.is_plain && has_directory_bit(status)) {
        return is_taken(rules, entry) ? remove_directory(rules, entry) : 1;
    }
    return !rules.dirs_only && match_list(rules.wild, entry.name) == 1 ? remove_file(entry) : 1;
}

int empty_directory(const removal_rules &rules, const place &directory, const char *path) {
    found_names names;
    plain_files plain{};
    const int count = wild_find2(directory, path, "*", names, plain);
    if (count == 0) {
        imsg("No files found in %s", path);
    }
    int result = 1;
    for_each_name(names, count, plain, [&](const char *name, bool is_plain) {
        const std::string entry = path_in(path, name);
        if (remove_entry(rules, {directory, name, entry.c_str(), is_plain}) == 0) {
            result = 0;
        }
    });
    return result;
}

int remove_temporary(pINI_SETTINGS ini, const removable &entry) {
    struct stat status {};
    const std::string_view name(entry.name);
    if (name.starts_with(kept_prefix) || !entry.directory.look(entry.name, status)) {
        return 1;
    }
    if (!has_directory_bit(status)) {
        return remove_file(entry);
    }
    if (name.starts_with(user_prefix)) {
        return 1;
    }
    const int result = empty_below({ini, "*", true, false}, entry);
    return take_directory(entry) ? result : removal_failed(entry.path, errno);
}

} // namespace

bool has_directory_bit(const struct stat &entry) {
    constexpr mode_t directory_bit = 0x4000;
    return (entry.st_mode & directory_bit) != 0;
}

int do_xrmv(pINI_SETTINGS ini, const char *wild, const char *path, int not_u_, int dirs_only) {
    return empty_directory({ini, wild, not_u_ != 0, dirs_only != 0}, place(path), path);
}

int remove_tree(pINI_SETTINGS ini, const char *wild, const place &directory, const char *name,
                const char *path) {
    return remove_directory({ini, wild, true, false}, {directory, name, path, false});
}

bool remove_empty_directory(const char *path) {
    const named_place entry = locate_directory(path);
    return take_directory({entry.directory, entry.name.c_str(), path, false});
}

bool remove_here(const char *name) {
    const place here(".");
    return take_file({here, name, name, false});
}

void rehearse_removals() {
    is_rehearsed = true;
}

int do_tmprmv(pINI_SETTINGS ini, const char *wild) {
    const place here(".");
    found_names names;
    plain_files plain{};
    const int count = wild_find(here, wild, names, plain);
    if (count == 0) {
        print_imsg("No files found in working directory");
    }
    int result = 1;
    for_each_name(names, count, plain, [&](const char *name, bool is_plain) {
        if (remove_temporary(ini, {here, name, name, is_plain}) == 0) {
            result = 0;
        }
    });
    return result;
}
