// Users and groups of a test's own, in files of the directory that is worked in, with a program in
// the place of getent that knows further ones.
#pragma once

#include "files/accounts.h"
#include "support/scratch_directory.h"

#include <filesystem>
#include <string>
#include <string_view>

inline constexpr account_sources test_accounts = {
    "passwd", "group", {"./missing/getent", "./getent"}};

inline void write_accounts(std::string_view users, std::string_view groups) {
    write_file("passwd", users);
    write_file("group", groups);
}

// Makes a getent of a shell's program, which gets the words behind its name. What it is asked is
// kept in the file "asked".
inline void write_getent(const std::string &program) {
    write_file("getent", "#!/bin/sh\nprintf '[%s]' \"$@\" >>asked\n" + program);
    std::filesystem::permissions("getent", std::filesystem::perms::owner_all);
}

inline std::string asked_of_getent() {
    return std::filesystem::exists("asked") ? read_file("asked") : "";
}
