#include "core/place.h"

#include "support/tree.h"
#include "unit/core/place_world.h"

#include <fcntl.h>
#include <set>
#include <sys/file.h>

namespace {

std::string text_of(const open_file &file) {
    std::string text(100, '\0');
    const ssize_t length = ::read(file.descriptor.number(), text.data(), text.size());
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

} // namespace

// --- A directory ---

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
    EXPECT_FALSE(place("/").is_shared());
    for (const mode_t mode : {0777U, 0775U, 0757U, 01777U}) {
        ASSERT_EQ(::chmod("ours", mode), 0);
        EXPECT_TRUE(at("ours").is_shared()) << mode;
    }
}

TEST_F(PlaceAmongOthers, OfAnotherUserIsShared) {
    change("ours", other_user, 0, 0755);
    EXPECT_TRUE(at("ours").is_shared());
    EXPECT_EQ(at("ours").status().st_uid, other_user);
}

TEST_F(Place, MakesADirectoryWithExactlyTheMode) {
    ::umask(0777);
    const place made = at("ours").make("made", 02775);
    EXPECT_TRUE(made.is_open());
    EXPECT_EQ(state_of("ours/made").permissions(), 02775U);
    EXPECT_EQ(made.path(), scratch.path("ours/made"));
    EXPECT_EQ(at("ours").make("made", 0700).error(), EEXIST);
    EXPECT_EQ(at("missing").make("made", 0700).error(), ENOENT);
}

TEST_F(PlaceAmongOthers, GivesADirectoryAwayAndTakesItForSharedThen) {
    place given = at("ours");
    EXPECT_TRUE(given.give(other_user, other_user));
    EXPECT_EQ(state_of("ours").user, other_user);
    EXPECT_TRUE(given.is_shared());
    plant_link("kept/file", "ours/link");
    EXPECT_FALSE(given.open_to_read("link").is_open());
}

TEST_F(PlaceAmongOthers, GivesAwayWhatHasTheRightOwnerOrGroupAlone) {
    for (const auto &[owner, group] : {std::pair(other_user, 0U), std::pair(0U, other_user)}) {
        ASSERT_EQ(::chown("ours", owner, group), 0);
        place given = at("ours");
        EXPECT_TRUE(given.give(other_user, other_user));
        for (const struct stat &status : {given.status(), at("ours").status()}) {
            EXPECT_EQ(status.st_uid, other_user);
            EXPECT_EQ(status.st_gid, other_user);
        }
    }
}

TEST_F(Place, ListsItsNames) {
    const directory_handle list = at("kept").list();
    ASSERT_NE(list, nullptr);
    std::set<std::string> names;
    while (const dirent *entry = ::readdir(list.get())) {
        names.insert(entry->d_name);
    }
    EXPECT_EQ(names, (std::set<std::string>{".", "..", "file", "below"}));
    EXPECT_EQ(at("missing").list(), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

// --- Reading ---

TEST_F(Place, ReadsFilesAndWhatLinksOfOursLeadTo) {
    link_to("kept/file", "shared/link");
    std::filesystem::create_symlink("../shared/link", "ours/link");
    EXPECT_EQ(text_of(at("kept").open_to_read("file")), "kept");
    EXPECT_EQ(text_of(at("ours").open_to_read("link")), "kept");
    EXPECT_TRUE(at("ours").can_be_read("link"));
    EXPECT_EQ(error_of(at("kept").open_to_read("missing")), ENOENT);
}

TEST_F(PlaceAmongOthers, DoesNotReadWhatAnotherUsersLinkLeadsTo) {
    plant_link("kept/file", "shared/link");
    EXPECT_EQ(error_of(at("shared").open_to_read("link")), ELOOP);
    EXPECT_EQ(refusal(), "Not followed: \"@/shared/link\" is a link that another user made");
    EXPECT_FALSE(at("shared").can_be_read("link"));
}

TEST_F(Place, ReadsAFileWithTwoNamesOnlyWhereNobodyElseMayWrite) {
    std::filesystem::create_hard_link("kept/file", "shared/file");
    EXPECT_TRUE(at("kept").open_to_read("file").is_open());
    EXPECT_EQ(error_of(at("shared").open_to_read("file")), EMLINK);
    EXPECT_EQ(refusal(),
              "Not read: \"@/shared/file\" has more names in a directory that others may write");
    EXPECT_TRUE(at("shared").can_be_read("file"));
}

TEST_F(Place, OnlyAPlainFileIsOpenedAsOne) {
    ASSERT_EQ(::mkfifo("ours/pipe", 0600), 0);
    EXPECT_TRUE(at("ours").open_to_read("pipe").is_open());
    EXPECT_EQ(error_of(at("ours").open_plain("pipe")), EINVAL);
    EXPECT_EQ(error_of(at("kept").open_plain("below")), EISDIR);
}

TEST_F(Place, AFileOfMoreThanTheLimitIsNotOpened) {
    write_file("shared/file", "kept");
    const read_limit if_shared = {3, true};
    EXPECT_TRUE(at("kept").open_plain("file", {4, false}).is_open());
    EXPECT_EQ(error_of(at("kept").open_plain("file", {3, false})), EFBIG);
    EXPECT_TRUE(at("kept").open_plain("file", if_shared).is_open());
    EXPECT_FALSE(at("shared").open_plain("file", if_shared).is_open());
}

TEST_F(Place, APlainFileIsOpenedByItsPath) {
    ASSERT_EQ(::mkfifo("ours/pipe", 0600), 0);
    link_to("kept/file", "ours/link");
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
        {"ours/pipe", no_limit, EINVAL},
        {"/dev/null", no_limit, EINVAL},
        {"missing/file", no_limit, ENOENT},
        {"kept/" + std::string(300, 'n'), no_limit, ENAMETOOLONG},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(error_of(open_plain_at(row.path, row.limit)), row.error) << row.path;
    }
}

// --- Writing without replacing ---

TEST_F(Place, WritesAnewAndAppends) {
    ::umask(0);
    ASSERT_TRUE(at("ours").open_to_append("file").is_open());
    EXPECT_EQ(state_of("ours/file").permissions(), 0664U);
    write_file("ours/file", "old");
    file_descriptor file = at("ours").open_to_append("file");
    ASSERT_EQ(::write(file.number(), "+new", 4), 4);
    EXPECT_EQ(read_file("ours/file"), "old+new");
    EXPECT_TRUE(at("ours").open_to_write("file").is_open());
    EXPECT_EQ(read_file("ours/file"), "");
    EXPECT_EQ(error_of(at("kept").open_to_write("below")), EISDIR);
    EXPECT_FALSE(at("missing").open_to_write("file").is_open());
    EXPECT_EQ(error_of(at("missing").create_anew("file")), ENOENT);
}

TEST_F(Place, WritesThroughALinkOfOursAlsoToAFileThatIsNotThereYet) {
    link_to("kept/new", "shared/link");
    EXPECT_TRUE(at("shared").open_to_append("link").is_open());
    EXPECT_TRUE(is_there("kept/new"));
    EXPECT_TRUE(std::filesystem::is_symlink("shared/link"));
}

TEST_F(PlaceAmongOthers, AForeignFileIsRemovedAndMadeAnew) {
    plant_link("kept/file", "shared/link");
    std::filesystem::create_hard_link("kept/file", "shared/name");
    plant_pipe("shared/pipe");
    for (const std::string name : {"link", "name", "pipe"}) {
        EXPECT_TRUE(at("shared").open_to_write(name.c_str()).is_open()) << name;
        EXPECT_TRUE(
            std::filesystem::is_regular_file(std::filesystem::symlink_status("shared/" + name)))
            << name;
    }
    EXPECT_EQ(read_file("kept/file"), "kept");
    EXPECT_EQ(refusal(), "");
}

TEST_F(Place, CreatesAFileAnewInThePlaceOfAnyOther) {
    link_to("kept/file", "ours/link");
    EXPECT_TRUE(at("ours").create_anew("link").is_open());
    EXPECT_FALSE(std::filesystem::is_symlink("ours/link"));
    EXPECT_EQ(state_of("ours/link").permissions(), 0600U);
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
