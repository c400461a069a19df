#include "unit/user_database.h"

#include <grp.h>
#include <optional>
#include <pwd.h>

namespace {

struct known_names {
    std::map<std::string, known_user> users;
    std::map<std::string, gid_t> groups;
};

std::optional<known_names> known;

} // namespace

user_database::user_database(std::map<std::string, known_user> users,
                             std::map<std::string, gid_t> groups) {
    known = known_names{std::move(users), std::move(groups)};
}

user_database::~user_database() {
    known.reset();
}

// The linker sends the program's calls here (--wrap) and gives the originals the names __real_...
extern "C" {
passwd *__real_getpwnam(const char *name);
group *__real_getgrnam(const char *name);

passwd *__wrap_getpwnam(const char *name) {
    static passwd entry;
    if (!known) {
        return __real_getpwnam(name);
    }
    const auto user = known->users.find(name);
    if (user == known->users.end()) {
        return nullptr;
    }
    entry.pw_uid = user->second.user;
    entry.pw_gid = user->second.group;
    return &entry;
}

group *__wrap_getgrnam(const char *name) {
    static group entry;
    if (!known) {
        return __real_getgrnam(name);
    }
    const auto found = known->groups.find(name);
    if (found == known->groups.end()) {
        return nullptr;
    }
    entry.gr_gid = found->second;
    return &entry;
}
}
