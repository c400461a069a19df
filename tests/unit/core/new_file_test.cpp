#include "core/new_file.h"

#include "support/tree.h"
#include "unit/core/place_world.h"
#include "unit/rights.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>

namespace {

using enum new_file::when_missing;

// Where the test runs as root, `ours` becomes another user's, who can reach it.
void give_ours() {
    if (::geteuid() == 0) {
        EXPECT_EQ(::chown("ours", other_user, other_user), 0);
        EXPECT_EQ(::chmod(".", 0755), 0);
    }
}

void write(new_file &file, std::string_view text) {
    ASSERT_TRUE(file.start());
    ASSERT_EQ(::write(file.number(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

// Writes "new" and puts it in place.
void replace_with(new_file &file) {
    write(file, "new");
    EXPECT_TRUE(file.put_in_place());
}

void replace(const place &directory, const char *name, new_file::when_missing how = in_place) {
    new_file file(directory, name, how);
    replace_with(file);
}

using NewFile = Place;
using NewFileAmongOthers = PlaceAmongOthers;

} // namespace

TEST_F(NewFile, AMissingFileIsMadeInPlaceOrBeside) {
    const place ours = at("ours");
    new_file at_once(ours, "one", in_place, 0666);
    write(at_once, "o");
    EXPECT_EQ(at_once.old(), nullptr);
    EXPECT_EQ(read_file("ours/one"), "o");
    new_file later(ours, "two", beside);
    write(later, "new");
    EXPECT_FALSE(is_there("ours/two"));
    EXPECT_TRUE(later.put_in_place());
    EXPECT_EQ(tree_of("ours"), "0644 ours/one \"o\"\n0644 ours/two \"new\"\n");
}

TEST_F(NewFile, AFileThatIsThereStaysUntilItIsReplacedWithItsMode) {
    const place ours = at("ours");
    write_file("ours/file", "old");
    ::chmod("ours/file", 0604);
    {
        new_file dropped(ours, "file", in_place);
        write(dropped, "dropped");
    }
    new_file file(ours, "file", in_place);
    write(file, "new");
    EXPECT_EQ(read_file("ours/file"), "old");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(tree_of("ours"), "0604 ours/file \"new\"\n");
}

TEST_F(NewFile, AnotherNameOfTheOldFileKeepsTheOldContent) {
    write_file("ours/file", "old");
    std::filesystem::create_hard_link("ours/file", "kept/backup");
    replace(at("ours"), "file");
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
    new_file file(ours, "program", in_place);
    EXPECT_NE(file.old(), nullptr);
    replace_with(file);
    EXPECT_EQ(read_file("ours/program"), "new");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(NewFile, ALinkOfOursStaysAndItsFileIsReplaced) {
    link_to("kept/file", "shared/link");
    replace(at("shared"), "link");
    EXPECT_EQ(read_file("kept/file"), "new");
    EXPECT_EQ(tree_of("shared"), "0777 shared/link (special)\n");
}

TEST_F(NewFile, ADirectoryCannotBeReplacedAndAMissingOneNotWritten) {
    EXPECT_EQ(new_file(at("kept"), "below", in_place).error(), EISDIR);
    EXPECT_EQ(new_file(at("missing"), "file", in_place).error(), ENOENT);
}

TEST_F(NewFile, ADeviceIsWrittenDirectly) {
    const place devices("/dev");
    new_file file(devices, "null", beside);
    replace_with(file);
    EXPECT_TRUE(file.is_special());
}

TEST_F(NewFile, WhereNothingCanBeMadeAFileThatMayBeWrittenIsWrittenDirectly) {
    write_file("ours/file", "a longer old text");
    ::chmod("ours/file", 0666);
    ::chmod("ours", 0555);
    give_ours();
    {
        const user_for_a_while user(other_user);
        const place ours = at("ours");
        replace(ours, "file");
        EXPECT_EQ(new_file(ours, "missing", in_place).error(), EACCES);
        EXPECT_FALSE(new_file(ours, "missing", beside).start());
        EXPECT_EQ(errno, EACCES);
        new_file narrowed(ours, "file", in_place);
        narrowed.limit_mode(private_mode);
        EXPECT_FALSE(narrowed.start()) << "private";
    }
    EXPECT_EQ(read_file("ours/file"), "new");
    ::chmod("ours", 0755);
}

TEST_F(NewFileAmongOthers, AFileWhoseOwnerCannotBeGivenIsWrittenDirectly) {
    write_file("ours/file", "a longer old text");
    ::chmod("ours/file", 0666);
    give_ours();
    {
        const user_for_a_while user(other_user);
        replace(at("ours"), "file");
    }
    EXPECT_EQ(state_of("ours/file").user, 0U);
    EXPECT_EQ(tree_of("ours"), "0666 ours/file \"new\"\n");
}

TEST_F(NewFile, AFileThatMayNotBeWrittenIsNotReplaced) {
    write_file("ours/file", "old");
    ::chmod("ours/file", 0444);
    give_ours();
    const user_for_a_while user(other_user);
    EXPECT_EQ(new_file(at("ours"), "file", in_place).error(), EACCES);
}

TEST_F(NewFile, AGivenScratchNameIsTakenInTheDirectoryItself) {
    const place ours = at("ours");
    write_file("ours/scratch", "a left-over");
    link_to("kept/file", "ours/link");
    new_file file(ours, "link", beside);
    ASSERT_TRUE(file.start("scratch"));
    EXPECT_EQ(read_file("ours/scratch"), "");
    EXPECT_TRUE(file.put_in_place());
    EXPECT_EQ(tree_of("ours"), "0777 ours/link (special)\n");
    const place kept = at("kept");
    EXPECT_FALSE(new_file(kept, "file", beside).start("below"));
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(NewFile, WhatCannotBeMadeOrPutInPlaceFailsWithTheReason) {
    const place ours = at("ours");
    const std::string long_name(300, 'n');
    EXPECT_EQ(new_file(ours, long_name.c_str(), in_place).error(), ENAMETOOLONG);
    EXPECT_EQ(new_file(ours, long_name.c_str(), beside).error(), ENAMETOOLONG);
    new_file file(ours, "file", beside);
    write(file, "new");
    std::filesystem::create_directory("ours/file");
    EXPECT_FALSE(file.put_in_place());
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(NewFileAmongOthers, TheOwnerOfTheOldFileIsKept) {
    write_file("ours/file", "old");
    change("ours/file", other_user, other_user, 0644);
    replace(at("ours"), "file", beside);
    EXPECT_EQ(state_of("ours/file").user, other_user);
}

TEST_F(NewFileAmongOthers, AFileBehindALinkOfOursThatOthersCouldMoveIsNotGivenAway) {
    const place shared = at("shared");
    link_to("kept/file", "shared/link");
    EXPECT_FALSE(new_file(shared, "link", in_place).may_be_given(other_user));
    EXPECT_EQ(refusal(), "Not given away: \"@/kept/file\" is behind a link that another user could "
                         "have put there");
    change("kept/file", other_user, other_user, 0644);
    EXPECT_TRUE(new_file(shared, "link", in_place).may_be_given(other_user));
    EXPECT_TRUE(new_file(shared, "file", in_place).may_be_given(other_user));
}

TEST_F(NewFileAmongOthers, APrivateFileBecomesOursWhoeverOwnedTheOldOne) {
    const place shared = at("shared");
    write_file("shared/file", "old");
    change("shared/file", other_user, other_user, 0644);
    new_file file(shared, "file", in_place, private_mode);
    file.limit_mode(private_mode);
    replace_with(file);
    EXPECT_FALSE(file.may_be_given(other_user));
    EXPECT_EQ(state_of("shared/file").user, 0U);
    EXPECT_EQ(state_of("shared/file").permissions(), 0600U);
}

// Writing by anyone but root clears the bit anyway.
TEST_F(NewFileAmongOthers, WhereOthersMayWriteNoUserIdBitIsKept) {
    for (const std::string directory : {"ours", "shared"}) {
        write_file(directory + "/file", "old");
        ::chmod((directory + "/file").c_str(), 04755);
        replace(at(directory), "file");
    }
    EXPECT_EQ(state_of("ours/file").permissions(), 04755U);
    EXPECT_EQ(state_of("shared/file").permissions(), 0755U);
}

TEST_F(NewFileAmongOthers, WhatIsForeignIsReplacedItselfWithoutAWord) {
    const place shared = at("shared");
    plant_link("kept/file", "shared/link");
    plant_link("kept/new", "shared/dangling");
    std::filesystem::create_hard_link("kept/file", "shared/name");
    plant_pipe("shared/pipe");
    for (const char *name : {"link", "dangling", "name", "pipe"}) {
        new_file file(shared, name, in_place, 0660);
        EXPECT_EQ(file.old(), nullptr) << name;
        replace_with(file);
    }
    EXPECT_EQ(tree_of("shared"), "0640 shared/dangling \"new\"\n"
                                 "0640 shared/link \"new\"\n"
                                 "0640 shared/name \"new\"\n"
                                 "0640 shared/pipe \"new\"\n");
    EXPECT_EQ(tree_of("kept"), "0755 kept/below/\n0644 kept/file \"kept\"\n");
    EXPECT_EQ(refusal(), "");
}
