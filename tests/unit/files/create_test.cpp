#include "support/tree.h"
#include "unit/files/file_world.h"

namespace {

using MakeDir = FileWorld;

} // namespace

TEST_F(MakeDir, MakesEveryMissingDirectoryWithExactlyTheMode) {
    const std::string path = scratch.path("a/b/c");
    EXPECT_EQ(shown(1, [&] { return make_dir(path.c_str(), 0770); }), "");
    EXPECT_EQ(mode_of(scratch.path("a")), "0770");
    EXPECT_EQ(mode_of(scratch.path("a/b")), "0770");
    EXPECT_EQ(mode_of(path), "0770");
    EXPECT_EQ(log(), "Info:  created directory \"" + path + "\"\n");
}

TEST_F(MakeDir, TakesTheModeOfItsCaller) {
    EXPECT_EQ(make_dir(scratch.path("images/").c_str(), 0755), 1);
    EXPECT_EQ(mode_of(scratch.path("images")), "0755");
    EXPECT_EQ(log(), "Info:  created directory \"" + scratch.path("images") + "\"\n");
}

TEST_F(MakeDir, AnExistingDirectoryIsSuccessAndOnlyLogged) {
    const std::string path = there();
    const std::string mode = mode_of(path);
    EXPECT_EQ(shown(1, [&] { return make_dir(path.c_str(), 0777); }), "");
    EXPECT_EQ(mode_of(path), mode);
    EXPECT_EQ(log(), "Info:  Can't create \"" + path + "\": directory already exists.\n");
}

TEST_F(MakeDir, ExistingParentsKeepTheirModes) {
    const std::string mode = mode_of(there());
    EXPECT_EQ(make_dir(there("new").c_str(), 0770), 1);
    EXPECT_EQ(mode_of(there()), mode);
    EXPECT_EQ(mode_of(there("new")), "0770");
}

TEST_F(MakeDir, ARelativePathIsRefused) {
    EXPECT_EQ(shown(0, [] { return make_dir("new/dir", 0770); }), "");
    EXPECT_FALSE(is_there("new"));
    EXPECT_EQ(log(), "Error: Can't create \"new/dir\": no root supplied\n");
}

TEST_F(MakeDir, WhetherTheDirectoryIsThereAfterwardsIsNotAsked) {
    write_file(scratch.path("file"), "");
    const std::string path = scratch.path("file/below");
    EXPECT_EQ(shown(1, [&] { return make_dir(path.c_str(), 0770); }), "");
    EXPECT_EQ(log(), "Info:  created directory \"" + path + "\"\n");
}

TEST_F(MakeDir, APathOf511CharactersIsMadeToItsLastDirectory) {
    const std::string path = make_deep_directory(scratch.path(), 400) + "/" + std::string(110, 'e');
    EXPECT_EQ(make_dir(path.c_str(), 0770), 1);
    EXPECT_EQ(mode_of(path), "0770");
}

TEST_F(MakeDir, APathThatIsTooLongIsReportedAndNothingIsMade) {
    const std::string path = scratch.path("a/") + std::string(512, 'd');
    EXPECT_EQ(shown(0, [&] { return make_dir(path.c_str(), 0770); }),
              "Error: Can't create \"" + path.substr(0, 400) + "...\": File name too long\n");
    EXPECT_FALSE(is_there(scratch.path("a")));
}

TEST_F(MakeDir, EveryDirectoryMadeIsGivenToTheOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    gx_user = 1234;
    gx_group = 4321;
    const std::string before = owner_of(there());
    EXPECT_EQ(make_dir(there("a/b").c_str(), 0770), 1);
    EXPECT_EQ(owner_of(there()), before);
    EXPECT_EQ(owner_of(there("a")), "1234:4321");
    EXPECT_EQ(owner_of(there("a/b")), "1234:4321");
}

TEST_F(MakeDir, OwnedIsGivenToTheOwnerEvenIfItWasThere) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    gx_user = 1234;
    gx_group = 4321;
    EXPECT_EQ(make_owned_dir(there().c_str(), 0770), 1);
    EXPECT_EQ(owner_of(there()), "1234:4321");
    EXPECT_EQ(make_owned_dir("relative", 0770), 0);
}
