#include "files/operations.h"

#include "core/log.h"
#include "core/paths.h"
#include "files/search.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <sys/stat.h>

namespace {

// The mode is set apart: mkdir takes the bits of the umask away (POSIX mkdir).
void make_one(const std::string &dir, mode_t permission) {
    if (::mkdir(dir.c_str(), permission) == 0) {
        ::chmod(dir.c_str(), permission);
        give_to_owner(dir.c_str());
    }
}

} // namespace

int make_dir(const char *dir, mode_t permission) {
    if (s_strlen(dir) > path_limit) {
        print_emsg("Can't create \"%s\": %s", shown_path(dir, ENAMETOOLONG).c_str(),
                   std::strerror(ENAMETOOLONG));
        return 0;
    }
    if (dir_exists(dir) == 1) {
        imsg("Can't create \"%s\": directory already exists.", dir);
        return 1;
    }
    if (check_for_root(dir) == 0) {
        emsg("Can't create \"%s\": no root supplied", dir);
        return 0;
    }
    std::string path = dir;
    if (!path.ends_with('/')) {
        path.push_back('/');
    }
    std::string made;
    for (std::size_t separator = path.find('/', 1); separator != std::string::npos;
         separator = path.find('/', separator + 1)) {
        made = path.substr(0, separator);
        make_one(made, permission);
    }
    imsg("created directory \"%s\"", made.c_str());
    return 1;
}

int make_owned_dir(const char *dir, mode_t permission) {
    if (make_dir(dir, permission) == 0) {
        return 0;
    }
    give_to_owner(dir);
    return 1;
}
