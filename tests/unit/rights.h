// Takes rights from the process of the tests for a while. Where it is not root, nothing changes.
#pragma once

#include <array>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

// Root acts as another user.
class user_for_a_while {
  public:
    explicit user_for_a_while(uid_t user) {
        EXPECT_EQ(::seteuid(before_ == 0 ? user : before_), 0);
    }
    ~user_for_a_while() { EXPECT_EQ(::seteuid(before_), 0); }
    user_for_a_while(const user_for_a_while &) = delete;
    user_for_a_while &operator=(const user_for_a_while &) = delete;

  private:
    uid_t before_ = ::geteuid();
};

// Root without its capabilities: the modes of files count for it as for anybody else.
class without_root_rights {
  public:
    without_root_rights() {
        EXPECT_EQ(::syscall(SYS_capget, &header_, before_.data()), 0);
        auto none = before_;
        none[0].effective = none[1].effective = 0;
        EXPECT_EQ(::syscall(SYS_capset, &header_, none.data()), 0);
    }
    ~without_root_rights() { EXPECT_EQ(::syscall(SYS_capset, &header_, before_.data()), 0); }
    without_root_rights(const without_root_rights &) = delete;
    without_root_rights &operator=(const without_root_rights &) = delete;

  private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> before_{};
};
