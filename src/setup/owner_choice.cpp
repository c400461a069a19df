#include "setup/owner_choice.h"

#include "core/console.h"
#include "core/format.h"
#include "dialogue/question.h"
#include "files/operations.h"

void choose_owner(const account_sources &sources) {
    path_text name("nobody");
    const passwd *user = find_user(name.c_str(), sources);
    while (user == nullptr) {
        print("\nUser %s is not in the passwd file. \n", name.c_str());
        name.assign(question(I_USERNAME_Q, name.c_str()));
        user = find_user(name.c_str(), sources);
    }
    gx_user = user->pw_uid;
    gx_group = user->pw_gid;
    // Required: whatever the user.
    if (const group *nobody = find_group("nobody", sources)) {
        gx_group = nobody->gr_gid;
    }
}

int get_uid() {
    choose_owner(system_accounts);
    return 1;
}
