#include "dialogue/path_checks.h"

#include "core/console.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/place.h"
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
        return directory_lacks_root;
    }
    if (check_for_root(path) == 0) {
        print("No root given! ");
        return directory_lacks_root;
    }
    return dir_exists(path) == 1 ? directory_is_there : directory_is_missing;
}

// Compares the directories themselves too: another user may have put a file of the probe's name
// there.
int match_root_dir(const char *dir) {
    const place here(".");
    const place there(dir);
    const path_text probe = probe_name();
    const bool is_created = here.create_anew(probe.c_str()).is_open();
    const bool is_found = is_created && there.can_be_read(probe.c_str());
    here.remove(probe.c_str());
    return is_found && is_same_file(here.status(), there.status()) ? 1 : 0;
}
