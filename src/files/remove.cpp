#include "files/operations.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/stream.h"
#include "files/search.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::string_view user_prefix = "u_";
constexpr std::string_view kept_prefix = "gxsetup";

// A file or directory to remove. The system is asked for it by a name in an open directory: a path
// deep down would be followed from the root for each one.
struct removable {
    int directory; // AT_FDCWD for a name from the current directory
    const char *name;
    const char *path; // as it is shown
    bool is_plain;    // known to be a plain file, so that nobody need look at it
};

// Also what cannot be looked at may be a link.
bool may_be_link(const char *path) {
    struct stat entry {};
    return ::lstat(path, &entry) != 0 || S_ISLNK(entry.st_mode);
}

bool is_answer(pINI_SETTINGS ini, const char *name, const char *path) {
    return s_strcmp(ini_value(ini, name, 1), path) == 0;
}

int removal_failed(const char *path, int error) {
    print_emsg("\nCannot remove %s: %s", shown_path(path, error).c_str(), std::strerror(error));
    return 0;
}

// Follows links (POSIX fstatat).
bool look_at(const removable &entry, struct stat &status) {
    return ::fstatat(entry.directory, entry.name, &status, 0) == 0;
}

// A failure counts only for what can be looked at.
int remove_file(const removable &entry) {
    int error = ENAMETOOLONG;
    if (s_strlen(entry.path) <= path_limit) {
        error = ::unlinkat(entry.directory, entry.name, 0) == 0 ? 0 : errno;
    }
    if (error == 0) {
        print_dot();
        return 1;
    }
    struct stat status {};
    return look_at(entry, status) ? removal_failed(entry.path, error) : 1;
}

// Empties a directory of what matches `wild`. What a link leads to lies elsewhere and stays.
int empty_directory(pINI_SETTINGS ini, const char *wild, const char *path) {
    return may_be_link(path) ? 1 : do_xrmv(ini, wild, path, 1, 0);
}

// Removes one entry found in a directory under `name`, or passes over it.
int remove_entry(pINI_SETTINGS ini, const char *wild, const char *name, const removable &entry,
                 bool not_u_, bool dirs_only) {
    if (not_u_ && is_answer(ini, "workarea", entry.path)) {
        return 1;
    }
    struct stat status {};
    if (!entry.is_plain && !look_at(entry, status)) {
        return 1;
    }
    if (entry.is_plain || !has_directory_bit(status)) {
        return !dirs_only && match_list(wild, name) == 1 ? remove_file(entry) : 1;
    }
    if (not_u_) {
        if (std::string_view(name).starts_with(user_prefix) ||
            is_answer(ini, "templates", entry.path)) {
            return 1;
        }
    } else if (dirs_only && match_list(wild, name) == 0) {
        return 1;
    }
    return remove_tree(ini, wild, entry.path);
}

int remove_temporary(pINI_SETTINGS ini, const char *name) {
    const removable entry = {AT_FDCWD, name, name, false};
    struct stat status {};
    if (std::string_view(name).starts_with(kept_prefix) || !look_at(entry, status)) {
        return 1;
    }
    if (!has_directory_bit(status)) {
        return remove_file(entry);
    }
    if (std::string_view(name).starts_with(user_prefix)) {
        return 1;
    }
    const int result = empty_directory(ini, "*", name);
    return ::rmdir(name) == 0 ? result : removal_failed(name, errno);
}

} // namespace

bool has_directory_bit(const struct stat &entry) {
    constexpr mode_t directory_bit = 0x4000;
    return (entry.st_mode & directory_bit) != 0;
}

int do_xrmv(pINI_SETTINGS ini, const char *wild, const char *path, int not_u_, int dirs_only) {
    found_names names;
    plain_files plain{};
    const int count = wild_find2(path, "*", names, plain);
    if (count == 0) {
        imsg("No files found in %s", path);
    }
    const file_descriptor directory(::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
    int result = 1;
    for (std::size_t number = 0; number < static_cast<std::size_t>(count); number++) {
        const heap_text name = std::move(names[number]);
        if (name == nullptr) {
            continue;
        }
        const std::string entry_path = path_in(path, name.get());
        removable entry = {AT_FDCWD, entry_path.c_str(), entry_path.c_str(), plain[number]};
        if (directory.is_open()) {
            entry.directory = directory.number();
            entry.name = name.get();
        }
        if (remove_entry(ini, wild, name.get(), entry, not_u_ != 0, dirs_only != 0) == 0) {
            result = 0;
        }
    }
    return result;
}

int remove_tree(pINI_SETTINGS ini, const char *wild, const char *path) {
    if (s_strlen(path) > path_limit) {
        return removal_failed(path, ENAMETOOLONG);
    }
    const int result = empty_directory(ini, wild, path);
    if (::rmdir(path) != 0) {
        return removal_failed(path, errno);
    }
    print_dot();
    return result;
}

int do_tmprmv(pINI_SETTINGS ini, const char *wild) {
    found_names names;
    const int count = wild_find(wild, names);
    if (count == 0) {
        print_imsg("No files found in working directory");
    }
    int result = 1;
    for_each_name(names, count, [&](const char *name) {
        if (remove_temporary(ini, name) == 0) {
            result = 0;
        }
    });
    return result;
}
