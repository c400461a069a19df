// The users and groups that the system knows, found without loading a module of the C library: a
// program that needs no library (the `portable` build) must not load one here. Local names are in
// the files; all others (LDAP, NIS, systemd) are asked of the system's own program getent. The
// choice of the owner uses this.
#pragma once

#include <array>
#include <grp.h>
#include <pwd.h>

// Where accounts are looked for.
struct account_sources {
    const char *users;                   // a file in the form of passwd(5)
    const char *groups;                  // a file in the form of group(5)
    std::array<const char *, 2> getents; // the first of these that is there is asked
};

inline constexpr account_sources system_accounts = {
    "/etc/passwd", "/etc/group", {"/usr/bin/getent", "/bin/getent"}};

// Return the entry of the user or group `name`, or null if there is none. It is overwritten by the
// next call of the same function, as with getpwnam and getgrnam (POSIX). That getent could not be
// started is logged as an error.
const passwd *find_user(const char *name, const account_sources &sources);
const group *find_group(const char *name, const account_sources &sources);
