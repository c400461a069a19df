#include "setup/owner_choice.h"

#include "core/console.h"
#include "core/format.h"
#include "dialogue/question.h"
#include "files/operations.h"

#include <grp.h>
#include <pwd.h>

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
