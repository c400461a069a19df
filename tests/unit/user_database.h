// A user and group database of the test's own: what getpwnam and getgrnam know while it lives.
#pragma once

#include <map>
#include <string>
#include <sys/types.h>

struct known_user {
    uid_t user;
    gid_t group;
};

class user_database {
  public:
    user_database(std::map<std::string, known_user> users, std::map<std::string, gid_t> groups);
    ~user_database();
    user_database(const user_database &) = delete;
    user_database &operator=(const user_database &) = delete;
};
