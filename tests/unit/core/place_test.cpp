#include "core/new_file.h"

#include "core/format.h"
#include "support/scratch_test.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <set>
#include <string>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <vector>

namespace {

constexpr uid_t other_user = 4711;

std::string refusal;

int keep_refusal(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    path_text text;
    text.vformat(format, arguments);
    va_end(arguments);
    refusal = text.c_str();
    return 1;
}

// An own directory `ours`, a directory `shared` that another user may write, and `kept` with a file
// that is none of that user's business.
class Place : public scratch_test {
  protected:
    Place() : umask_before(::umask(022)) {
        for (const char *directory : {"ours", "shared", "kept", "kept/below"}) {
            std::filesystem::create_directory(directory);
        }
        ::chmod("shared", 0777);
        write_file("kept/file", "kept");
        tell_refusals(keep_refusal);
        refusal.clear();
    }

    ~Place() override {
        tell_refusals(nullptr);
        ::umask(umask_before);
    }

    [[nodiscard]] place at(std::string_view name) const { return place(scratch.path(name)); }

    // A link that another user made.
    void plant_link(const std::string &target, const std::string &path) const {
        std::filesystem::create_symlink(target, path);
        ASSERT_EQ(::lchown(path.c_str(), other_user, other_user), 0);
    }

    static void write(new_file &file, std::string_view text) {
        ASSERT_TRUE(file.start());
        ASSERT_EQ(::write(file.number(), text.data(), text.size()),
                  static_cast<ssize_t>(text.size()));
    }

    static std::string text_of(const open_file &file) {
        std::string text(100, '\0');
        const ssize_t length = ::read(file.descriptor.number(), text.data(), text.size());
        text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
        return text;
    }

    static mode_t mode_of(const std::string &path) {
        struct stat entry {};
        return ::lstat(path.c_str(), &entry) == 0 ? entry.st_mode & 07777 : 0;
    }

    static uid_t owner_of(const std::string &path) {
        struct stat entry {};
        return ::lstat(path.c_str(), &entry) == 0 ? entry.st_uid : 0;
    }

    std::set<std::string> names_in(const std::string &directory) const {
        std::set<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(directory)) {
            names.insert(entry.path().filename());
        }
        return names;
    }

    mode_t umask_before;
};

// Plants as another user, which only root can.
class PlaceAmongOthers : public Place {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root can plant files as another user";
        }
    }
};

// Paths, and why there is no directory at their end.
struct walk_row {
    std::string path;
    int error;
};

const std::vector<walk_row> walks = {
    {"ours", 0},
    {"./ours", 0},
    {"ours/", 0},
    {"ours//.//", 0},
    {"ours/../ours", 0},
    {"kept/../ours/.", 0},
    {"/", 0},
    {"//", 0},
    {".", 0},
    {"", ENOENT},
    {"missing", ENOENT},
    {"missing/../ours", ENOENT},
    {"kept/file", ENOTDIR},
    {"kept/file/", ENOTDIR},
    {"kept/file/below", ENOTDIR},
    {"kept/file/..", ENOTDIR},
    {std::string(300, 'n'), ENAMETOOLONG},
    {"ours/" + std::string(300, 'n') + "/..", ENAMETOOLONG},
    {"ours/link", 0},
    {"ours/link/", 0},
    {"ours/link/below", 0},
    {"ours/link/../ours", 0},
    {"ours/dangling", ENOENT},
    {"ours/dangling/below", ENOENT},
    {"ours/file", ENOTDIR},
    {"ours/circle", ELOOP},
    {"ours/chain40", 0},
    {"ours/chain41", ELOOP},
    {"ours/two_names", 0},
    {"shared/two_names", ELOOP},
    {"shared/../kept", EACCES},
    {"shared/ours/../ours", 0},
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

// Root as another user, who owns the directory `ours`; anybody else as they are.
class as_another_user {
  public:
    as_another_user() : before_(::geteuid()) {
        if (before_ == 0) {
            EXPECT_EQ(::chown("ours", other_user, other_user), 0);
            EXPECT_EQ(::chmod(".", 0755), 0);
            EXPECT_EQ(::seteuid(other_user), 0);
        }
    }
    ~as_another_user() { EXPECT_EQ(::seteuid(before_), 0); }
    as_another_user(const as_another_user &) = delete;
    as_another_user &operator=(const as_another_user &) = delete;

  private:
    uid_t before_;
};

using NewFile = Place;
using NewFileAmongOthers = PlaceAmongOthers;
using string_set = std::set<std::string>;

} // namespace

// --- Walking to a directory ---

TEST_F(Place, IsReachedByEveryKindOfPathWithAndWithoutTheSystemsOwnWalk) {
    using std::filesystem::create_symlink;
    std::filesystem::create_directory("shared/ours");
    create_symlink("../kept", "ours/link");
    create_symlink(scratch.path("missing"), "ours/dangling");
    create_symlink("../kept/file", "ours/file");
    create_symlink("circle", "ours/circle");
    create_symlink(scratch.path("kept"), "ours/chain1");
    for (int number = 2; number <= 41; number++) {
        create_symlink("chain" + std::to_string(number - 1), "ours/chain" + std::to_string(number));
    }
    create_symlink(scratch.path("kept"), "ours/two_names");
    ASSERT_EQ(::linkat(AT_FDCWD, "ours/two_names", AT_FDCWD, "shared/two_names", 0), 0);
    const auto check = [&] {
        for (const walk_row &row : walks) {
            const place reached(row.path);
            EXPECT_EQ(reached.is_open(), row.error == 0) << row.path;
            EXPECT_EQ(reached.error(), row.error) << row.path;
            EXPECT_EQ(reached.is_refused(), row.path.starts_with("shared") && row.error != 0)
                << row.path;
            EXPECT_EQ(place(".").enter(row.path).error(), row.error) << row.path;
            if (!row.path.empty() && row.path.front() != '/') {
                EXPECT_EQ(at(row.path).error(), row.error) << row.path;
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

TEST_F(Place, IsWithinADirectoryAtAnyDepth) {
    EXPECT_TRUE(at("kept/below").is_within(at("kept").status()));
    EXPECT_TRUE(at("kept").is_within(at("kept").status()));
    EXPECT_TRUE(at("kept").is_within(place("/").status()));
    EXPECT_FALSE(at("kept").is_within(at("kept/below").status()));
    EXPECT_FALSE(place("missing").is_within(at("kept").status()));
}

TEST_F(Place, IsLockedByOneAtATime) {
    for (const char *directory : {"ours", "shared"}) {
        const file_descriptor lock = at(directory).lock();
        EXPECT_TRUE(lock.is_open());
        const file_descriptor other(::open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        EXPECT_EQ(::flock(other.number(), LOCK_EX | LOCK_NB), -1) << directory;
    }
    EXPECT_FALSE(at("missing").lock().is_open());
}

TEST_F(Place, IsOursIfNobodyElseMayWriteIt) {
    EXPECT_FALSE(at("ours").is_shared());
    EXPECT_TRUE(at("shared").is_shared());
    EXPECT_FALSE(place("/").is_shared());
    for (const mode_t mode : {0775U, 0757U, 01777U}) {
        ASSERT_EQ(::chmod("ours", mode), 0);
        EXPECT_TRUE(at("ours").is_shared()) << mode;
    }
}

TEST_F(PlaceAmongOthers, OfAnotherUserIsShared) {
    ASSERT_EQ(::chown("ours", other_user, 0), 0);
    EXPECT_TRUE(at("ours").is_shared());
    EXPECT_EQ(at("ours").status().st_uid, other_user);
}

TEST_F(Place, LinksOfOursAreFollowedWhereverTheyStand) {
    std::filesystem::create_symlink("../kept", "ours/relative");
    std::filesystem::create_symlink(scratch.path("ours/relative/below"), "ours/absolute");
    std::filesystem::create_symlink(scratch.path("kept"), "shared/link");
    EXPECT_TRUE(at("ours/relative").is_open());
    EXPECT_TRUE(is_same_file(at("ours/absolute").status(), at("kept/below").status()));
    EXPECT_TRUE(is_same_file(at("shared/link/below").status(), at("kept/below").status()));
    EXPECT_EQ(at("shared/link").path(), scratch.path("shared/link"));
}

TEST_F(PlaceAmongOthers, ALinkThatAnotherUserMadeIsFollowedOnlyWhereThatUserMayNotWrite) {
    plant_link(scratch.path("kept"), "ours/link");
    plant_link(scratch.path("kept"), "shared/link");
    EXPECT_TRUE(at("ours/link").is_open());
    const place refused = at("shared/link/below");
    EXPECT_FALSE(refused.is_open());
    EXPECT_EQ(refused.error(), ELOOP);
    EXPECT_TRUE(refused.is_refused());
    EXPECT_EQ(refusal, "Not followed: \"" + scratch.path("shared/link") +
                           "\" is a link that another user made");
}

TEST_F(PlaceAmongOthers, ALinkOfOursThatLeadsThroughAForeignOneIsRefused) {
    plant_link(scratch.path("kept"), "shared/link");
    std::filesystem::create_symlink(scratch.path("shared/link"), "ours/link");
    EXPECT_TRUE(at("ours/link").is_refused());
}

TEST_F(Place, DotDotDoesNotLeadOutOfASharedDirectory) {
    std::filesystem::create_directory("shared/ours");
    EXPECT_TRUE(at("ours/../kept").is_open());
    EXPECT_TRUE(at("shared/ours/../ours").is_open());
    EXPECT_TRUE(at("shared/../kept").is_refused());
    EXPECT_EQ(refusal, "Not followed: \"" + scratch.path("shared") +
                           "/..\" leads out of a directory that others may write");
    EXPECT_TRUE(at("shared").enter("..").is_refused());
    EXPECT_TRUE(at("ours").enter("..").is_open());
}

TEST_F(Place, ADirectoryIsEnteredByItsNameAndThroughLinksOnlyIfTheyMayBeFollowed) {
    std::filesystem::create_symlink(scratch.path("kept"), "ours/link");
    EXPECT_TRUE(at("kept").enter("below").is_open());
    EXPECT_TRUE(at("ours").enter("link/below").is_open());
    EXPECT_EQ(at("ours").enter("link").path(), scratch.path("ours/link"));
    EXPECT_TRUE(at("kept").enter_itself("below").is_open());
    EXPECT_EQ(at("ours").enter_itself("link").error(), ENOTDIR);
    EXPECT_EQ(at("missing").enter("below").error(), ENOENT);
}

// --- Making directories ---

TEST_F(Place, MakesADirectoryWithExactlyTheMode) {
    ::umask(0777);
    const place made = at("ours").make("made", 02775);
    EXPECT_TRUE(made.is_open());
    EXPECT_EQ(mode_of("ours/made"), 02775U);
    EXPECT_EQ(made.path(), scratch.path("ours/made"));
    EXPECT_EQ(at("ours").make("made", 0700).error(), EEXIST);
    EXPECT_EQ(at("missing").make("made", 0700).error(), ENOENT);
}

TEST_F(PlaceAmongOthers, GivesADirectoryAwayAndTakesItForSharedThen) {
    place given = at("ours");
    EXPECT_TRUE(given.give(other_user, other_user));
    EXPECT_EQ(owner_of("ours"), other_user);
    EXPECT_TRUE(given.is_shared());
    plant_link(scratch.path("kept/file"), "ours/link");
    EXPECT_FALSE(given.open_to_read("link").is_open());
}

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
        ASSERT_EQ(::chown("above/directory", row.owner, 0), 0);
        ASSERT_EQ(::chown("above", row.above, 0), 0);
        ASSERT_EQ(::chmod("above", row.mode), 0);
        refusal.clear();
        EXPECT_EQ(at("above/directory").give(other_user, other_user), row.is_given) << row.what;
        EXPECT_EQ(owner_of("above/directory"), row.is_given ? other_user : row.owner) << row.what;
        EXPECT_EQ(refusal, row.is_given ? ""
                                        : "Not given away: \"" + scratch.path("above/directory") +
                                              "\" could have been put there by another user");
        std::filesystem::remove_all("above");
    }
}

TEST_F(PlaceAmongOthers, WhatStoodInADirectoryBeforeItWasGivenAwayMayBeGivenAsWell) {
    for (const char *directory : {"ours/tree/below", "ours/other"}) {
        std::filesystem::create_directories(directory);
        write_file(std::string(directory) + "/file", "");
    }
    EXPECT_TRUE(at("ours").give(other_user, other_user));
    EXPECT_TRUE(at("ours/tree").give(other_user, other_user));
    EXPECT_TRUE(at("ours/tree/below").give(other_user, other_user));
    std::filesystem::rename("ours/other", "ours/name");
    EXPECT_FALSE(at("ours/name").give(other_user, other_user));
}

TEST_F(PlaceAmongOthers, ADirectoryBehindALinkOfOursThatOthersCouldMoveIsNotGivenAway) {
    std::filesystem::create_symlink(scratch.path("kept"), "ours/link");
    std::filesystem::create_symlink(scratch.path("kept"), "shared/link");
    EXPECT_FALSE(at("shared/link").give(other_user, other_user));
    EXPECT_TRUE(at("ours/link").give(other_user, other_user));
}

TEST_F(Place, ListsItsNames) {
    const directory_handle list = at("kept").list();
    ASSERT_NE(list, nullptr);
    string_set names;
    while (const dirent *entry = ::readdir(list.get())) {
        names.insert(entry->d_name);
    }
    EXPECT_EQ(names, (string_set{".", "..", "file", "below"}));
    EXPECT_EQ(at("missing").list(), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

// --- Reading ---

TEST_F(Place, ReadsFilesAndWhatLinksOfOursLeadTo) {
    std::filesystem::create_symlink(scratch.path("kept/file"), "shared/link");
    std::filesystem::create_symlink("../shared/link", "ours/link");
    EXPECT_EQ(text_of(at("kept").open_to_read("file")), "kept");
    EXPECT_EQ(text_of(at("ours").open_to_read("link")), "kept");
    EXPECT_TRUE(at("ours").can_be_read("link"));
    EXPECT_TRUE(at("shared").open_to_read("link").is_open());
    EXPECT_FALSE(at("kept").open_to_read("missing").is_open());
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(PlaceAmongOthers, DoesNotReadWhatAnotherUsersLinkLeadsTo) {
    plant_link(scratch.path("kept/file"), "shared/link");
    const open_file file = at("shared").open_to_read("link");
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(refusal, "Not followed: \"" + scratch.path("shared/link") +
                           "\" is a link that another user made");
    EXPECT_FALSE(at("shared").can_be_read("link"));
}

TEST_F(Place, ReadsAFileWithTwoNamesOnlyWhereNobodyElseMayWrite) {
    std::filesystem::create_hard_link("kept/file", "shared/file");
    EXPECT_TRUE(at("kept").open_to_read("file").is_open());
    EXPECT_FALSE(at("shared").open_to_read("file").is_open());
    EXPECT_EQ(errno, EMLINK);
    EXPECT_EQ(refusal, "Not read: \"" + scratch.path("shared/file") +
                           "\" has more names in a directory that others may write");
    EXPECT_TRUE(at("shared").can_be_read("file"));
}

TEST_F(PlaceAmongOthers, AFileIsPrivateIfWhoeverCouldHavePutItThereMayNotReadIt) {
    const struct {
        const char *what;
        uid_t above;
        mode_t mode;
        mode_t inner; // of a directory in between
        uid_t owner;
        gid_t group;
        mode_t file;
        bool is_private;
    } rows[] = {
        {"in ours", 0, 0755, 0700, 0, 0, 0600, false},
        {"root's in another user's", other_user, 0755, 0755, 0, 0, 0600, true},
        {"for its group alone", other_user, 0770, 0755, 0, 0, 0640, true},
        {"for everybody", other_user, 0755, 0755, 0, 0, 0604, false},
        {"hidden by a directory", other_user, 0755, 0700, 0, 0, 0644, true},
        {"their own", other_user, 0755, 0755, other_user, 0, 0600, false},
        {"where everybody may write", 0, 0777, 0755, other_user, 0, 0600, true},
    };
    for (const auto &row : rows) {
        std::filesystem::create_directories("above/inner");
        write_file("above/inner/file", "");
        ASSERT_EQ(::chmod("above/inner/file", row.file), 0);
        ASSERT_EQ(::chown("above/inner/file", row.owner, row.group), 0);
        ASSERT_EQ(::chmod("above/inner", row.inner), 0);
        ASSERT_EQ(::chmod("above", row.mode), 0);
        ASSERT_EQ(::chown("above", row.above, other_user), 0);
        EXPECT_EQ(at("above/inner").open_plain("file").is_private, row.is_private) << row.what;
    }
    write_file("above/file", "");
    ASSERT_EQ(::chmod("above/file", 0640), 0);
    ASSERT_EQ(::chown("above/file", 0, other_user), 0);
    ASSERT_EQ(::chmod("above", 0770), 0);
    ASSERT_EQ(::chown("above", other_user, other_user), 0);
    EXPECT_FALSE(at("above").open_plain("file").is_private) << "for the group of the directory";
    std::filesystem::create_symlink(scratch.path("kept/file"), "above/link");
    EXPECT_TRUE(at("above").open_plain("link").is_private);
    EXPECT_FALSE(at("ours").enter("../kept").open_plain("file").is_private);
}

TEST_F(Place, OnlyAPlainFileIsOpenedAsOne) {
    ASSERT_EQ(::mkfifo("ours/pipe", 0600), 0);
    EXPECT_TRUE(at("ours").open_to_read("pipe").is_open());
    EXPECT_FALSE(at("ours").open_plain("pipe").is_open());
    EXPECT_EQ(errno, EINVAL);
    EXPECT_FALSE(at("kept").open_plain("below").is_open());
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(Place, AFileOfMoreThanTheLimitIsNotOpened) {
    write_file("shared/file", "kept");
    const read_limit everywhere = {3, false};
    const read_limit if_shared = {3, true};
    EXPECT_TRUE(at("kept").open_plain("file", {4, false}).is_open());
    EXPECT_FALSE(at("kept").open_plain("file", everywhere).is_open());
    EXPECT_EQ(errno, EFBIG);
    EXPECT_TRUE(at("kept").open_plain("file", if_shared).is_open());
    EXPECT_FALSE(at("shared").open_plain("file", if_shared).is_open());
}

TEST_F(Place, APlainFileIsOpenedByItsPath) {
    std::filesystem::create_symlink(scratch.path("kept/file"), "ours/link");
    std::filesystem::create_symlink("circle", "ours/circle");
    std::filesystem::create_symlink("missing/file", "ours/dangling");
    std::filesystem::create_hard_link("kept/file", "shared/name");
    const struct {
        std::string path;
        read_limit limit;
        int error;
    } rows[] = {
        {"kept/file", no_limit, 0},
        {"kept/file", {4, false}, 0},
        {"kept/file", {3, false}, EFBIG},
        {"kept/file", {3, true}, 0},
        {"ours/link", no_limit, 0},
        {"ours/circle", no_limit, ELOOP},
        {"ours/dangling", no_limit, ENOENT},
        {"shared/name", no_limit, EMLINK},
        {"kept/below", no_limit, EISDIR},
        {"missing/file", no_limit, ENOENT},
        {"kept/" + std::string(300, 'n'), no_limit, ENAMETOOLONG},
    };
    for (const auto &row : rows) {
        errno = 0;
        EXPECT_EQ(open_plain_at(row.path, row.limit).is_open(), row.error == 0) << row.path;
        EXPECT_TRUE(row.error == 0 || errno == row.error) << row.path << ": " << errno;
    }
}

// --- Writing without replacing ---

TEST_F(Place, WritesAnewAndAppends) {
    ::umask(0);
    ASSERT_TRUE(at("ours").open_to_append("file").is_open());
    EXPECT_EQ(mode_of("ours/file"), 0664U);
    write_file("ours/file", "old");
    file_descriptor file = at("ours").open_to_append("file");
    ASSERT_EQ(::write(file.number(), "+new", 4), 4);
    EXPECT_EQ(read_file("ours/file"), "old+new");
    EXPECT_TRUE(at("ours").open_to_write("file").is_open());
    EXPECT_EQ(read_file("ours/file"), "");
    EXPECT_FALSE(at("kept").open_to_write("below").is_open());
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(at("missing").open_to_write("file").is_open());
    EXPECT_FALSE(at("missing").create_anew("file").is_open());
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Place, WritesThroughALinkOfOursAlsoToAFileThatIsNotThereYet) {
    std::filesystem::create_symlink(scratch.path("kept/new"), "shared/link");
    EXPECT_TRUE(at("shared").open_to_append("link").is_open());
    EXPECT_TRUE(is_there("kept/new"));
    EXPECT_TRUE(std::filesystem::is_symlink("shared/link"));
}

TEST_F(PlaceAmongOthers, AForeignFileIsRemovedAndMadeAnew) {
    plant_link(scratch.path("kept/file"), "shared/link");
    std::filesystem::create_hard_link("kept/file", "shared/name");
    ASSERT_EQ(::mkfifo("shared/pipe", 0666), 0);
    ASSERT_EQ(::chown("shared/pipe", other_user, other_user), 0);
    for (const char *name : {"link", "name", "pipe"}) {
        EXPECT_TRUE(at("shared").open_to_write(name).is_open()) << name;
        EXPECT_TRUE(std::filesystem::is_regular_file(
            std::filesystem::symlink_status(scratch.path("shared") + "/" + name)));
    }
    EXPECT_EQ(read_file("kept/file"), "kept");
    EXPECT_EQ(refusal, "");
}

TEST_F(Place, CreatesAFileAnewInThePlaceOfAnyOther) {
    std::filesystem::create_symlink(scratch.path("kept/file"), "ours/link");
    EXPECT_TRUE(at("ours").create_anew("link").is_open());
    EXPECT_FALSE(std::filesystem::is_symlink("ours/link"));
    EXPECT_EQ(mode_of("ours/link"), 0600U);
    EXPECT_EQ(read_file("kept/file"), "kept");
    EXPECT_FALSE(at("kept").create_anew("below").is_open());
    EXPECT_TRUE(is_there("kept/below"));
}

TEST_F(Place, RemovesAndRenames) {
    write_file("ours/file", "text");
    EXPECT_TRUE(at("ours").rename("file", "other"));
    EXPECT_EQ(read_file("ours/other"), "text");
    EXPECT_TRUE(at("ours").remove("other"));
    EXPECT_FALSE(at("kept").remove("below"));
    EXPECT_TRUE(at("kept").remove_directory("below"));
    EXPECT_FALSE(at("kept").remove_directory("file"));
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

// --- Replacing files ---

TEST_F(NewFile, AMissingFileIsMadeInPlaceOrBeside) {
    const place ours = at("ours");
    new_file at_once(ours, "one", new_file::when_missing::in_place, 0666);
    write(at_once, "o");
    EXPECT_EQ(at_once.old(), nullptr);
    EXPECT_EQ(read_file("ours/one"), "o");
    new_file beside(ours, "two", new_file::when_missing::beside);
    write(beside, "new");
    EXPECT_FALSE(is_there("ours/two"));
    EXPECT_TRUE(beside.put_in_place());
    EXPECT_EQ(read_file("ours/two"), "new");
    EXPECT_EQ(mode_of("ours/two"), 0644U);
    EXPECT_EQ(names_in("ours"), (string_set{"one", "two"}));
}

TEST_F(NewFile, AFileThatIsThereStaysUntilItIsReplacedWithItsMode) {
    const place ours = at("ours");
    write_file("ours/file", "old");
    ::chmod("ours/file", 0604);
    {
        new_file dropped(ours, "file", new_file::when_missing::in_place);
        write(dropped, "dropped");
    }
    EXPECT_EQ(read_file("ours/file"), "old");
    new_file file(ours, "file", new_file::when_missing::in_place);
    write(file, "new");
    EXPECT_EQ(read_file("ours/file"), "old");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(read_file("ours/file"), "new");
    EXPECT_EQ(mode_of("ours/file"), 0604U);
    EXPECT_EQ(names_in("ours"), string_set{"file"});
}

TEST_F(NewFile, AnotherNameOfTheOldFileKeepsTheOldContent) {
    const place ours = at("ours");
    write_file("ours/file", "old");
    std::filesystem::create_hard_link("ours/file", "kept/backup");
    new_file file(ours, "file", new_file::when_missing::in_place);
    write(file, "new");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(read_file("kept/backup"), "old");
}

TEST_F(NewFile, AProgramThatIsRunIsReplaced) {
    const place ours = at("ours");
    std::filesystem::copy_file("/bin/sleep", "ours/program");
    const ::pid_t child = ::fork();
    if (child == 0) {
        ::execl("ours/program", "program", "30", nullptr);
        ::_exit(1);
    }
    while (file_descriptor(::open("ours/program", O_WRONLY | O_CLOEXEC)).is_open() &&
           ::waitpid(child, nullptr, WNOHANG) == 0) {
        ::usleep(1000);
    }
    new_file file(ours, "program", new_file::when_missing::in_place);
    EXPECT_NE(file.old(), nullptr);
    write(file, "new");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(read_file("ours/program"), "new");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(NewFile, ALinkOfOursStaysAndItsFileIsReplaced) {
    const place shared = at("shared");
    std::filesystem::create_symlink(scratch.path("kept/file"), "shared/link");
    new_file file(shared, "link", new_file::when_missing::in_place);
    write(file, "new");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(read_file("kept/file"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink("shared/link"));
    EXPECT_EQ(names_in("shared"), string_set{"link"});
}

TEST_F(NewFile, ADirectoryCannotBeReplacedAndAMissingOneNotWritten) {
    const place kept = at("kept");
    EXPECT_EQ(new_file(kept, "below", new_file::when_missing::in_place).error(), EISDIR);
    const place missing = at("missing");
    EXPECT_EQ(new_file(missing, "file", new_file::when_missing::in_place).error(), ENOENT);
}

TEST_F(NewFile, ADeviceIsWrittenDirectly) {
    const place devices("/dev");
    new_file file(devices, "null", new_file::when_missing::beside);
    write(file, "text");
    EXPECT_TRUE(file.is_special());
    EXPECT_TRUE(file.put_in_place());
}

TEST_F(NewFile, WhereNothingCanBeMadeAFileThatMayBeWrittenIsWrittenDirectly) {
    write_file("ours/file", "a longer old text");
    ::chmod("ours/file", 0666);
    ::chmod("ours", 0555);
    {
        const as_another_user user;
        const place ours = at("ours");
        new_file file(ours, "file", new_file::when_missing::in_place);
        write(file, "new");
        EXPECT_TRUE(file.put_in_place());
        EXPECT_EQ(new_file(ours, "missing", new_file::when_missing::in_place).error(), EACCES);
        new_file missing(ours, "missing", new_file::when_missing::beside);
        EXPECT_FALSE(missing.start());
        EXPECT_EQ(errno, EACCES);
        new_file narrowed(ours, "file", new_file::when_missing::in_place);
        narrowed.limit_mode(private_mode);
        EXPECT_FALSE(narrowed.start()) << "private";
    }
    EXPECT_EQ(read_file("ours/file"), "new");
    ::chmod("ours", 0755);
}

TEST_F(NewFileAmongOthers, AFileWhoseOwnerCannotBeGivenIsWrittenDirectly) {
    write_file("ours/file", "a longer old text");
    ::chmod("ours/file", 0666);
    {
        const as_another_user user;
        const place ours = at("ours");
        new_file file(ours, "file", new_file::when_missing::in_place);
        write(file, "new");
        EXPECT_TRUE(file.put_in_place());
    }
    EXPECT_EQ(read_file("ours/file"), "new");
    EXPECT_EQ(owner_of("ours/file"), 0U);
    EXPECT_EQ(names_in("ours"), string_set{"file"});
}

TEST_F(NewFile, AFileThatMayNotBeWrittenIsNotReplaced) {
    write_file("ours/file", "old");
    ::chmod("ours/file", 0444);
    const as_another_user user;
    const place ours = at("ours");
    EXPECT_EQ(new_file(ours, "file", new_file::when_missing::in_place).error(), EACCES);
}

TEST_F(NewFile, AGivenScratchNameIsTakenInTheDirectoryItself) {
    const place ours = at("ours");
    const place kept = at("kept");
    write_file("ours/scratch", "a left-over");
    std::filesystem::create_symlink(scratch.path("kept/file"), "ours/link");
    new_file file(ours, "link", new_file::when_missing::beside);
    ASSERT_TRUE(file.start("scratch"));
    EXPECT_EQ(read_file("ours/scratch"), "");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(names_in("ours"), string_set{"link"});
    EXPECT_FALSE(new_file(kept, "file", new_file::when_missing::beside).start("below"));
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(NewFile, WhatCannotBeMadeOrPutInPlaceFailsWithTheReason) {
    const place ours = at("ours");
    const std::string long_name(300, 'n');
    for (const auto how : {new_file::when_missing::in_place, new_file::when_missing::beside}) {
        EXPECT_EQ(new_file(ours, long_name.c_str(), how).error(), ENAMETOOLONG);
    }
    new_file file(ours, "file", new_file::when_missing::beside);
    write(file, "new");
    std::filesystem::create_directory("ours/file");
    EXPECT_FALSE(file.put_in_place());
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(NewFileAmongOthers, TheOwnerOfTheOldFileIsKept) {
    const place ours = at("ours");
    write_file("ours/file", "old");
    ASSERT_EQ(::chown("ours/file", other_user, other_user), 0);
    new_file file(ours, "file", new_file::when_missing::beside);
    write(file, "new");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(owner_of("ours/file"), other_user);
}

TEST_F(NewFileAmongOthers, AFileBehindALinkOfOursThatOthersCouldMoveIsNotGivenAway) {
    const place shared = at("shared");
    std::filesystem::create_symlink(scratch.path("kept/file"), "shared/link");
    EXPECT_FALSE(
        new_file(shared, "link", new_file::when_missing::in_place).may_be_given(other_user));
    EXPECT_EQ(refusal, "Not given away: \"" + scratch.path("kept/file") +
                           "\" is behind a link that another user could have put there");
    ASSERT_EQ(::chown("kept/file", other_user, other_user), 0);
    EXPECT_TRUE(
        new_file(shared, "link", new_file::when_missing::in_place).may_be_given(other_user));
    EXPECT_TRUE(
        new_file(shared, "file", new_file::when_missing::in_place).may_be_given(other_user));
}

TEST_F(NewFileAmongOthers, APrivateFileBecomesOursWhoeverOwnedTheOldOne) {
    const place shared = at("shared");
    write_file("shared/file", "old");
    ASSERT_EQ(::chown("shared/file", other_user, other_user), 0);
    new_file file(shared, "file", new_file::when_missing::in_place, private_mode);
    file.limit_mode(private_mode);
    write(file, "new");
    EXPECT_FALSE(file.may_be_given(other_user));
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(owner_of("shared/file"), 0U);
    EXPECT_EQ(mode_of("shared/file"), 0600U);
}

// Writing by anyone but root clears the bit anyway.
TEST_F(NewFileAmongOthers, WhereOthersMayWriteNoUserIdBitIsKept) {
    for (const char *directory : {"ours", "shared"}) {
        const place where = at(directory);
        const std::string path = std::string(directory) + "/file";
        write_file(path, "old");
        ASSERT_EQ(::chmod(path.c_str(), 04755), 0);
        new_file file(where, "file", new_file::when_missing::in_place);
        write(file, "new");
        EXPECT_TRUE(file.put_in_place());
        EXPECT_EQ(mode_of(path), where.is_shared() ? 0755U : 04755U);
    }
}

TEST_F(NewFileAmongOthers, WhatIsForeignIsReplacedItselfWithoutAWord) {
    const place shared = at("shared");
    plant_link(scratch.path("kept/file"), "shared/link");
    plant_link(scratch.path("kept/new"), "shared/dangling");
    std::filesystem::create_hard_link("kept/file", "shared/name");
    ASSERT_EQ(::mkfifo("shared/pipe", 0666), 0);
    ASSERT_EQ(::chown("shared/pipe", other_user, other_user), 0);
    for (const char *name : {"link", "dangling", "name", "pipe"}) {
        new_file file(shared, name, new_file::when_missing::in_place, 0660);
        EXPECT_EQ(file.old(), nullptr) << name;
        write(file, "new");
        EXPECT_TRUE(file.put_in_place()) << name;
        EXPECT_EQ(read_file(std::string("shared/") + name), "new");
        EXPECT_EQ(mode_of(std::string("shared/") + name), 0640U);
    }
    EXPECT_EQ(read_file("kept/file"), "kept");
    EXPECT_EQ(names_in("kept"), (string_set{"file", "below"}));
    EXPECT_EQ(refusal, "");
}
