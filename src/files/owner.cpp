#include "files/operations.h"

#include <unistd.h>

uid_t gx_user = 0;
gid_t gx_group = 0;

void give_to_owner(const char *path) {
    // Fails silently unless root: only root may give files away.
    [[maybe_unused]] const int result = ::chown(path, gx_user, gx_group);
}
