#include "files/operations.h"

#include "core/console.h"
#include "dialogue/question.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

uid_t gx_user = 0;
gid_t gx_group = 0;

int get_uid() {
    path_text name("nobody");
    const passwd *user = ::getpwnam(name.c_str());
    while (user == nullptr) {
        print("\nUser %s is not in the passwd file. \n", name.c_str());
        name.assign(question(I_USERNAME_Q, name.c_str()));
        user = ::getpwnam(name.c_str());
    }
    gx_user = user->pw_uid;
    gx_group = user->pw_gid;
    if (const group *nobody = ::getgrnam("nobody")) {
        gx_group = nobody->gr_gid;
    }
    return 1;
}

void give_to_owner(const char *path) {
    // Only root may give files away; for anyone else they stay their own.
    [[maybe_unused]] const int result = ::chown(path, gx_user, gx_group);
}
