#include "files/operations.h"

#include "core/console.h"
#include "core/log.h"
#include "files/search.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::string_view user_prefix = "u_";
constexpr std::string_view kept_prefix = "gxsetup";

bool is_link(const char *path) {
    struct stat entry {};
    return ::lstat(path, &entry) == 0 && S_ISLNK(entry.st_mode);
}

bool is_answer(pINI_SETTINGS ini, const char *name, const std::string &path) {
    return s_strcmp(ini_value(ini, name, 1), path.c_str()) == 0;
}

int removal_failed(const char *path, int error) {
    print_emsg("\nCannot remove %s: %s", path, std::strerror(error));
    return 0;
}

int remove_file(const char *path) {
    if (s_strlen(path) > path_limit) {
        return removal_failed(path, ENAMETOOLONG);
    }
    if (std::remove(path) != 0) {
        return removal_failed(path, errno);
    }
    print_dot();
    return 1;
}

// Empties a directory of what matches `wild`. What a link leads to lies elsewhere and stays.
int empty_directory(pINI_SETTINGS ini, const char *wild, const char *path) {
    return is_link(path) ? 1 : do_xrmv(ini, wild, path, 1, 0);
}

// Removes one entry found in a directory, or passes over it.
int remove_entry(pINI_SETTINGS ini, const char *wild, const char *name, const std::string &path,
                 bool not_u_, bool dirs_only) {
    struct stat entry {};
    if ((not_u_ && is_answer(ini, "workarea", path)) || ::stat(path.c_str(), &entry) != 0) {
        return 1;
    }
    if (!has_directory_bit(entry)) {
        return !dirs_only && match_list(wild, name) == 1 ? remove_file(path.c_str()) : 1;
    }
    if (not_u_) {
        if (std::string_view(name).starts_with(user_prefix) || is_answer(ini, "templates", path)) {
            return 1;
        }
    } else if (dirs_only && match_list(wild, name) == 0) {
        return 1;
    }
    return remove_tree(ini, wild, path.c_str());
}

int remove_temporary(pINI_SETTINGS ini, const char *name) {
    struct stat entry {};
    if (std::string_view(name).starts_with(kept_prefix) || ::stat(name, &entry) != 0) {
        return 1;
    }
    if (!has_directory_bit(entry)) {
        return remove_file(name);
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
    const int count = wild_find2(path, "*", names);
    if (count == 0) {
        imsg("No files found in %s", path);
    }
    int result = 1;
    for_each_name(names, count, [&](const char *name) {
        const std::string entry = path_in(path, name);
        if (remove_entry(ini, wild, name, entry, not_u_ != 0, dirs_only != 0) == 0) {
            result = 0;
        }
    });
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
