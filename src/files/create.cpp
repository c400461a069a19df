#include "files/operations.h"

#include "core/log.h"
#include "core/paths.h"
#include "files/search.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

namespace {

// Enters the directory, or makes it for the owner if it is missing.
place enter_or_make(const place &above, const std::string &name, mode_t permission) {
    place directory = above.enter(name);
    if (directory.error() != ENOENT) {
        return directory;
    }
    directory = above.make(name.c_str(), permission);
    if (directory.is_open()) {
        give_to_owner(directory);
    }
    return directory;
}

// Makes the directory of a path from the root, with every missing one above it.
place make_all(std::string_view path, mode_t permission) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.remove_suffix(1);
    }
    place there(path);
    if (there.error() != ENOENT || path == "/") {
        return there;
    }
    const std::size_t name = path.rfind('/') + 1;
    place above = make_all(path.substr(0, name), permission);
    return above.is_open() ? enter_or_make(above, std::string(path.substr(name)), permission)
                           : std::move(above);
}

made_directory make_directory(const char *dir, mode_t permission) {
    if (s_strlen(dir) > path_limit) {
        print_emsg("Can't create \"%s\": %s", shown_path(dir, ENAMETOOLONG).c_str(),
                   std::strerror(ENAMETOOLONG));
        return {0, place(ENAMETOOLONG)};
    }
    if (place there(rmv_end_sep(dir)); there.can_be_listed()) {
        imsg("Can't create \"%s\": directory already exists.", dir);
        return {1, std::move(there)};
    }
    if (check_for_root(dir) == 0) {
        emsg("Can't create \"%s\": no root supplied", dir);
        return {0, place(EINVAL)};
    }
    place made = make_all(dir, permission);
    if (made.is_refused()) {
        return {0, std::move(made)};
    }
    std::string_view path(dir);
    path.remove_suffix(path.ends_with('/') ? 1 : 0);
    imsg("created directory \"%s\"", std::string(path).c_str());
    return {1, std::move(made)};
}

} // namespace

int make_dir(const char *dir, mode_t permission) {
    return make_directory(dir, permission).result;
}

int make_owned_dir(const char *dir, mode_t permission) {
    return make_owned_directory(dir, permission).result;
}

made_directory make_owned_directory(const char *dir, mode_t permission) {
    made_directory made = make_directory(dir, permission);
    if (made.result != 0 && made.directory.is_open()) {
        give_to_owner(made.directory);
    }
    return made;
}
