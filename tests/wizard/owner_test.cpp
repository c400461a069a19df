// Whom the installed files belong to, on hosts whose users and groups differ.

#include "support/expected.h"
#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// A host where `path` reads as `content`; nobody outside the program sees it.
class Owner : public testing::Test {
  protected:
    void SetUp() override {
        if (!can_mount() || !is_there("/etc/nsswitch.conf")) {
            GTEST_SKIP() << "only root may mount files over the user and group database";
        }
    }

    [[nodiscard]] run_place where(const std::string &path, std::string_view content) const {
        add_file(host.path("database"), content);
        add_file(host.path("switch"), "passwd: files\ngroup: files\n");
        return {.prepare = [path, database = host.path("database"), sources = host.path("switch")] {
            mount_over_file(path, database);
            // Some hosts know users that stand in no file.
            mount_over_file("/etc/nsswitch.conf", sources);
        }};
    }

    world host{"kestrel"};
};

TEST_F(Owner, IsAskedForUntilTheSystemKnowsTheName) {
    const wizard_run run = run_wizard(host, {},
                                      in_order({{"What username", ""},
                                                {"What username", "missing"},
                                                {"What username", "web"},
                                                {"original templates", "no"},
                                                {"temporary files", "no"}}),
                                      where("/etc/passwd", "root:x:0:0::/:/bin/sh\n"
                                                           "web:x:4141:4142::/:/bin/sh\n"));
    expect_kept("question", part_between(run.transcript, "installs kestrel\n", "Copying template"));
    for (const char *path : {"spool/kestrel", "spool/kestrel/index.tpl", "html/vlimg",
                             "html/vlimg/logo.gif", "cgi-bin/kestrel.cgi", "cgi-bin/kestrel.ini"}) {
        EXPECT_EQ(owner_of(path), "4141:4142") << path;
    }
}

TEST_F(Owner, QuestionCanBeQuitAndNothingIsCreated) {
    const wizard_run run =
        run_wizard(host, {}, {{"What username", "q"}}, where("/etc/passwd", "root:x:0:0::/:\n"));
    EXPECT_THAT(run.transcript, EndsWith("[nobody]? " + quit_at_a_question));
    EXPECT_FALSE(is_there("spool/kestrel"));
}

TEST_F(Owner, GroupNobodyIsTakenWhereverItExists) {
    run_wizard(host, {}, no_to_both, where("/etc/group", "root:x:0:\nnobody:x:4343:\n"));
    EXPECT_THAT(owner_of("spool/kestrel/index.tpl"), EndsWith(":4343"));
    EXPECT_THAT(owner_of("html/vlimg"), EndsWith(":4343"));
}

} // namespace
