#include "core/place_walk.h"

#include "support/tree.h"
#include "unit/core/place_world.h"

#include <array>
#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace {

// Paths, by the reason why there is no directory at their end.
const std::map<int, std::vector<std::string>> walks = {
    {0,
     {"ours", "./ours", "ours/", "ours//.//", "ours/../ours", "kept/../ours/.", "/", "//", ".",
      "ours/link", "ours/link/", "ours/link/below", "ours/link/../ours", "ours/chain40",
      "ours/two_names", "shared/ours/../ours"}},
    {ENOENT, {"", "missing", "missing/../ours", "ours/dangling", "ours/dangling/below"}},
    {ENOTDIR, {"kept/file", "kept/file/", "kept/file/below", "kept/file/..", "ours/file"}},
    {ENAMETOOLONG, {std::string(300, 'n'), "ours/" + std::string(300, 'n') + "/.."}},
    {ELOOP, {"ours/circle", "ours/chain41", "shared/two_names"}},
    {EACCES, {"shared/../kept"}},
};

// The system refuses its own walk, as before Linux 5.6.
void forbid_openat2() {
    constexpr std::uint32_t number_of_openat2 = 437;
    std::array<sock_filter, 4> filter = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number_of_openat2, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog program = {filter.size(), filter.data()};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

} // namespace

// --- Walking to a directory ---

TEST_F(Place, IsReachedByEveryKindOfPathWithAndWithoutTheSystemsOwnWalk) {
    using std::filesystem::create_symlink;
    std::filesystem::create_directory("shared/ours");
    create_symlink("../kept", "ours/link");
    link_to("missing", "ours/dangling");
    create_symlink("../kept/file", "ours/file");
    create_symlink("circle", "ours/circle");
    link_to("kept", "ours/chain1");
    for (int number = 2; number <= 41; number++) {
        create_symlink("chain" + std::to_string(number - 1), "ours/chain" + std::to_string(number));
    }
    link_to("kept", "ours/two_names");
    ASSERT_EQ(::linkat(AT_FDCWD, "ours/two_names", AT_FDCWD, "shared/two_names", 0), 0);
    const auto check_path = [&](const std::string &path, int error) {
        const place reached(path);
        EXPECT_EQ(reached.is_open(), error == 0) << path;
        EXPECT_EQ(reached.error(), error) << path;
        EXPECT_EQ(reached.is_refused(), path.starts_with("shared") && error != 0) << path;
        EXPECT_EQ(place(".").enter(path).error(), error) << path;
        if (!path.empty() && path.front() != '/') {
            EXPECT_EQ(at(path).error(), error) << path;
        }
    };
    const auto check = [&] {
        for (const auto &[error, paths] : walks) {
            for (const std::string &path : paths) {
                check_path(path, error);
            }
        }
    };
    check();
    const ::pid_t child = ::fork();
    if (child == 0) {
        forbid_openat2();
        check();
        ::_exit(HasFailure() ? 1 : 0);
    }
    int status = 1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(Place, LinksOfOursAreFollowedWhereverTheyStand) {
    std::filesystem::create_symlink("../kept", "ours/relative");
    link_to("ours/relative/below", "ours/absolute");
    link_to("kept", "shared/link");
    EXPECT_TRUE(is_same_file(at("ours/absolute").status(), at("kept/below").status()));
    EXPECT_TRUE(is_same_file(at("shared/link/below").status(), at("kept/below").status()));
    EXPECT_EQ(at("shared/link").path(), scratch.path("shared/link"));
}

TEST_F(PlaceAmongOthers, ALinkThatAnotherUserMadeIsFollowedOnlyWhereThatUserMayNotWrite) {
    plant_link("kept", "ours/link");
    plant_link("kept", "shared/link");
    EXPECT_TRUE(at("ours/link").is_open());
    const place refused = at("shared/link/below");
    EXPECT_EQ(refused.error(), ELOOP);
    EXPECT_TRUE(refused.is_refused());
    EXPECT_EQ(refusal(), "Not followed: \"@/shared/link\" is a link that another user made");
}

TEST_F(PlaceAmongOthers, ALinkOfOursThatLeadsThroughAForeignOneIsRefused) {
    plant_link("kept", "shared/link");
    link_to("shared/link", "ours/link");
    EXPECT_TRUE(at("ours/link").is_refused());
}

// By whole paths this is in the rows above.
TEST_F(Place, DotDotDoesNotLeadOutOfASharedDirectory) {
    EXPECT_TRUE(at("ours").enter("..").is_open());
    EXPECT_TRUE(at("shared").enter("..").is_refused());
    EXPECT_EQ(refusal(),
              "Not followed: \"@/shared/..\" leads out of a directory that others may write");
}

TEST_F(Place, ADirectoryIsEnteredByItsNameAndThroughLinksOnlyIfTheyMayBeFollowed) {
    link_to("kept", "ours/link");
    EXPECT_TRUE(at("kept").enter("below").is_open());
    EXPECT_TRUE(at("ours").enter("link/below").is_open());
    EXPECT_EQ(at("ours").enter("link").path(), scratch.path("ours/link"));
    EXPECT_TRUE(at("kept").enter_itself("below").is_open());
    EXPECT_EQ(at("ours").enter_itself("link").error(), ENOTDIR);
    EXPECT_EQ(at("missing").enter("below").error(), ENOENT);
}

TEST_F(Place, LocateTakesAPathApart) {
    EXPECT_EQ(locate("file").name, "file");
    EXPECT_EQ(locate("file").directory.path(), ".");
    EXPECT_EQ(locate("/file").directory.path(), "/");
    EXPECT_EQ(locate("ours/file").directory.path(), "ours/");
    for (const char *path : {"ours/", "ours/.", "kept/below/.."}) {
        EXPECT_EQ(locate(path).name, ".");
        EXPECT_TRUE(locate(path).directory.is_open());
    }
    EXPECT_EQ(locate("").name, "");
}

// --- Who could have put there what is found ---

TEST_F(PlaceAmongOthers, GivesAwayOnlyWhatItsOwnerOrRootPutThere) {
    constexpr uid_t third_user = 4712;
    const struct {
        const char *what;
        uid_t above;
        mode_t mode;
        uid_t owner;
        bool is_filled;
        bool is_given;
    } rows[] = {
        {"root's in root's", 0, 0755, 0, true, true},
        {"another user's in root's", 0, 0755, third_user, true, true},
        {"root's in another user's", third_user, 0755, 0, true, false},
        {"an empty one of root's in another user's", third_user, 0755, 0, false, true},
        {"the old owner's in the old owner's", third_user, 0770, third_user, true, true},
        {"the old owner's where everybody may write", third_user, 0777, third_user, true, false},
        {"the new owner's in another user's", third_user, 0777, other_user, true, true},
        {"root's where a group may write", 0, 0775, 0, true, false},
        {"root's in a sticky one", 0, 01777, 0, true, true},
        {"another user's in a sticky one of another user", third_user, 01777, 0, true, false},
    };
    for (const auto &row : rows) {
        std::filesystem::create_directories("above/directory");
        if (row.is_filled) {
            write_file("above/directory/file", "");
        }
        change("above/directory", row.owner, 0, 0755);
        change("above", row.above, 0, row.mode);
        refusals.clear();
        EXPECT_EQ(at("above/directory").give(other_user, other_user), row.is_given) << row.what;
        EXPECT_EQ(state_of("above/directory").user, row.is_given ? other_user : row.owner)
            << row.what;
        EXPECT_EQ(refusal(), row.is_given ? ""
                                          : "Not given away: \"@/above/directory\" could have been "
                                            "put there by another user");
        std::filesystem::remove_all("above");
    }
}

TEST_F(PlaceAmongOthers, WhatStoodInADirectoryBeforeItWasGivenAwayMayBeGivenAsWell) {
    for (const std::string directory : {"ours/tree/below", "ours/other"}) {
        std::filesystem::create_directories(directory);
        write_file(directory + "/file", "");
    }
    for (const char *directory : {"ours", "ours/tree", "ours/tree/below"}) {
        EXPECT_TRUE(at(directory).give(other_user, other_user)) << directory;
    }
    std::filesystem::rename("ours/other", "ours/name");
    EXPECT_FALSE(at("ours/name").give(other_user, other_user));
}

TEST_F(PlaceAmongOthers, ADirectoryBehindALinkOfOursThatOthersCouldMoveIsNotGivenAway) {
    link_to("kept", "ours/link");
    link_to("kept", "shared/link");
    EXPECT_FALSE(at("shared/link").give(other_user, other_user));
    EXPECT_TRUE(at("ours/link").give(other_user, other_user));
}

TEST_F(PlaceAmongOthers, AFileIsPrivateIfWhoeverCouldHavePutItThereMayNotReadIt) {
    const struct {
        const char *what;
        uid_t above;
        mode_t mode;
        mode_t inner; // of a directory in between
        uid_t owner;
        mode_t file;
        bool is_private;
    } rows[] = {
        {"in ours", 0, 0755, 0700, 0, 0600, false},
        {"root's in another user's", other_user, 0755, 0755, 0, 0600, true},
        {"for its group alone", other_user, 0770, 0755, 0, 0640, true},
        {"for everybody", other_user, 0755, 0755, 0, 0604, false},
        {"hidden by a directory", other_user, 0755, 0700, 0, 0644, true},
        {"their own", other_user, 0755, 0755, other_user, 0600, false},
        {"where everybody may write", 0, 0777, 0755, other_user, 0600, true},
    };
    for (const auto &row : rows) {
        std::filesystem::create_directories("above/inner");
        write_file("above/inner/file", "");
        change("above/inner/file", row.owner, 0, row.file);
        change("above/inner", 0, 0, row.inner);
        change("above", row.above, other_user, row.mode);
        EXPECT_EQ(at("above/inner").open_plain("file").is_private, row.is_private) << row.what;
    }
    write_file("above/file", "");
    change("above/file", 0, other_user, 0640);
    change("above", other_user, other_user, 0770);
    EXPECT_FALSE(at("above").open_plain("file").is_private) << "for the group of the directory";
    link_to("kept/file", "above/link");
    EXPECT_TRUE(at("above").open_plain("link").is_private);
    EXPECT_FALSE(at("ours").enter("../kept").open_plain("file").is_private);
}
