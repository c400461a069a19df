// Suites whose tests each work in a world of the same kind.
#pragma once

#include "support/tree.h"
#include "wizard/releases.h"

#include <gtest/gtest.h>
#include <unistd.h>

// The product is unpacked.
template <const char *product>
class unpacked_test : public testing::Test {
  protected:
    const world host{product};
};

inline constexpr char no[] = "no";
inline constexpr char yes[] = "yes";

// Release 3.1 is installed, with the WML part or without it, and 3.2 unpacked over it.
template <const char *product, const char *wml = no>
class upgraded_test : public testing::Test {
  protected:
    const upgrade_world host{product, wml};
};

// Checks that all that was installed belongs to the owner of installed files.
inline void expect_owned_site(const world &host) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    EXPECT_EQ(not_owned("spool/" + host.product()) + not_owned("html/vlimg"), "");
    EXPECT_EQ(not_owned("cgi-bin"), "cgi-bin\n");
}

inline constexpr char kestrel[] = "kestrel";
inline constexpr char plover[] = "plover";
inline constexpr char tanager[] = "tanager";
inline constexpr char osprey[] = "osprey";
