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

// Makes every missing directory of a path from the root.
place make_all(std::string_view path, mode_t permission) {
    place here("/");
    while (here.is_open() && !path.empty()) {
        const std::string name(path.substr(0, path.find('/')));
        path.remove_prefix(std::min(name.size() + 1, path.size()));
        if (!name.empty()) {
            here = enter_or_make(here, name, permission);
        }
    }
    return here;
}

made_directory make_directory(const char *dir, mode_t permission) {
    if (s_strlen(dir) > path_limit) {
        print_emsg("Can't create \"%s\": %s", shown_path(dir, ENAMETOOLONG).c_str(),
                   std::strerror(ENAMETOOLONG));
        return {0, place(ENAMETOOLONG)};
    }
    if (place there(rmv_end_sep(dir)); there.list() != nullptr) {
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
