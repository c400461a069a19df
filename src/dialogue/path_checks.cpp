#include "dialogue/path_checks.h"

#include "core/console.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/stream.h"
#include "files/search.h"

#include <cstdlib>

namespace {

// A name that no file is likely to have: the product of three random numbers, wrapping.
path_text probe_name() {
    unsigned product = 1;
    for (int factor = 0; factor < 3; factor++) {
        product *= static_cast<unsigned>(std::rand());
    }
    path_text name;
    return name.format("%d.tmp", static_cast<int>(product));
}

} // namespace

int check_valid_dir(const char *path) {
    if (path == nullptr || *path == '\0') {
        print("No path given! ");
        return 1;
    }
    if (check_for_root(path) == 0) {
        print("No root given! ");
        return 1;
    }
    return dir_exists(path) == 1 ? 0 : 3;
}

int match_root_dir(const char *dir) {
    const path_text probe = probe_name();
    const bool is_created = file_descriptor(create_anew(probe.c_str())).is_open();
    const std::string path = formatted("%s%c%s", dir, '/', probe.c_str());
    const bool is_here = is_created && file_exists(path.c_str()) == 1;
    std::remove(probe.c_str());
    return is_here ? 1 : 0;
}
