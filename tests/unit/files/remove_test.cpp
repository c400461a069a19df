#include "unit/files/file_world.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// A tree below `there` and a store of answers that names two of its directories.
class Removal : public FileWorld {
  protected:
    Removal() {
        ini_init(&ini, emsg, dmsg);
        for (const char *directory : {"img", "img/deep", "u_ann", "work", "tpl"}) {
            std::filesystem::create_directory(there(directory));
        }
        for (const char *file : {"a.gif", "b.TPL", "img/c.gif", "img/deep/d.gif", "u_ann/e.gif",
                                 "work/f.gif", "tpl/g.gif"}) {
            write_file(there(file), "");
        }
        set_loglvl(LOG_ERROR);
        ini_add(&ini, "workarea", there("work").c_str());
        ini_add(&ini, "templates", there("tpl").c_str());
    }

    ~Removal() override { ini_clear(&ini); }

    std::string there(const std::string &name = "") const {
        return scratch.path(name.empty() ? "there" : "there/" + name);
    }

    int remove_there(const char *wild, int not_u_, int dirs_only) {
        return do_xrmv(&ini, wild, there().c_str(), not_u_, dirs_only);
    }

    ini_settings ini{};
};

using DoXrmv = Removal;
using DoTmprmv = Removal;

} // namespace

TEST_F(DoXrmv, TakesFilesThatMatchTheListIgnoringCaseAndEveryDirectoryItEmpties) {
    EXPECT_EQ(shown(1, [&] { return remove_there("*.gif,*.tpl", 0, 0); }).find("Error"),
              std::string::npos);
    EXPECT_EQ(names_below(there()), string_set{});
}

TEST_F(DoXrmv, PrintsADotForEachFileAndDirectory) {
    EXPECT_EQ(shown(1, [&] { return do_xrmv(&ini, "*", there("img").c_str(), 0, 0); }), "...");
    EXPECT_EQ(names_below(there("img")), string_set{});
    EXPECT_TRUE(is_there(there("img")));
}

TEST_F(DoXrmv, WithNotUUsersTheWorkAreaAndTheTemplatesStay) {
    EXPECT_EQ(shown(1, [&] { return remove_there("*", 1, 0); }), "......");
    EXPECT_EQ(names_below(there()),
              (string_set{"u_ann", "u_ann/e.gif", "work", "work/f.gif", "tpl", "tpl/g.gif"}));
}

TEST_F(DoXrmv, BelowTheFirstLevelUsersTheWorkAreaAndTheTemplatesAlwaysStay) {
    for (const char *directory : {"img/u_bob", "img/work", "img/tpl"}) {
        std::filesystem::create_directory(there(directory));
    }
    ini_add(&ini, "workarea", there("img/work").c_str());
    ini_add(&ini, "templates", there("img/tpl").c_str());
    EXPECT_EQ(shown(0, [&] { return remove_there("img,*.gif", 0, 1); }),
              "...Error: \nCannot remove " + there("img") + ": Directory not empty\n");
    EXPECT_EQ(names_below(there("img")), (string_set{"u_bob", "work", "tpl"}));
}

TEST_F(DoXrmv, DirsOnlyLeavesTheFilesOfTheFirstLevel) {
    EXPECT_EQ(shown(1, [&] { return remove_there("*", 1, 1); }), "....");
    EXPECT_TRUE(is_there(there("a.gif")));
    EXPECT_FALSE(is_there(there("img")));
}

TEST_F(DoXrmv, DirsOnlyWithoutNotUTakesOnlyDirectoriesThatMatch) {
    std::filesystem::remove(there("u_ann/e.gif"));
    EXPECT_EQ(shown(1, [&] { return remove_there("u_*", 0, 1); }), ".");
    EXPECT_FALSE(is_there(there("u_ann")));
    EXPECT_TRUE(is_there(there("img")));
    EXPECT_TRUE(is_there(there("a.gif")));
}

TEST_F(DoXrmv, InsideADirectoryThatMatchesTheFilesGoByTheSameList) {
    EXPECT_EQ(shown(0, [&] { return remove_there("u_*", 0, 1); }),
              "Error: \nCannot remove " + there("u_ann") + ": Directory not empty\n");
    EXPECT_TRUE(is_there(there("u_ann/e.gif")));
}

TEST_F(DoXrmv, WhatDoesNotMatchKeepsItsDirectoryWhichIsReported) {
    write_file(there("img/keep.txt"), "");
    EXPECT_EQ(shown(0,
                    [&] {
                        return do_xrmv(&ini, "*.gif", there().c_str(), 1, 0);
                    }).find("Error: \nCannot remove " + there("img") + ": Directory not empty\n") !=
                  std::string::npos,
              true);
    EXPECT_TRUE(is_there(there("img/keep.txt")));
    EXPECT_FALSE(is_there(there("img/c.gif")));
}

TEST_F(DoXrmv, NothingFoundIsLoggedByTheDirectory) {
    set_loglvl(LOG_INFO);
    EXPECT_EQ(shown(1, [&] { return do_xrmv(&ini, "*", scratch.path("here").c_str(), 0, 0); }), "");
    EXPECT_EQ(log(), "Info:  No files found in " + scratch.path("here") + "\n");
}

TEST_F(DoXrmv, ADanglingLinkIsPassedOverAndALinkToAFileIsRemoved) {
    write_file(scratch.path("kept"), "kept");
    std::filesystem::create_symlink("nowhere", there("img/dangling"));
    std::filesystem::create_symlink(scratch.path("kept"), there("img/link"));
    EXPECT_EQ(shown(1, [&] { return do_xrmv(&ini, "*", there("img").c_str(), 0, 0); }), "....");
    EXPECT_EQ(names_below(there("img")), string_set{"dangling"});
    EXPECT_EQ(read_file(scratch.path("kept")), "kept");
}

TEST_F(DoXrmv, AFileThatMayNotBeLookedAtIsPassedOver) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may look at everything";
    }
    std::filesystem::permissions(there("img/deep"), std::filesystem::perms::owner_read);
    EXPECT_EQ(shown(1, [&] { return do_xrmv(&ini, "*", there("img/deep").c_str(), 0, 0); }), "");
    std::filesystem::permissions(there("img/deep"), std::filesystem::perms::owner_all);
    EXPECT_TRUE(is_there(there("img/deep/d.gif")));
}

TEST_F(DoXrmv, WhatHasAPathThatIsTooLongIsReportedAndStays) {
    const std::string deep = make_deep_directory(there("img/deep"), 505);
    write_file(deep + "/a.gif", "");
    std::filesystem::create_directory(deep + "/abcde");
    EXPECT_EQ(shown(1, [&] { return do_xrmv(&ini, "*", deep.c_str(), 0, 0); }), "..");
    write_file(deep + "/ab.gif", "");
    std::filesystem::create_directory(deep + "/abcdef");
    const std::string report =
        "Error: \nCannot remove " + deep.substr(0, 400) + "...: File name too long\n";
    EXPECT_EQ(shown(0, [&] { return do_xrmv(&ini, "*", deep.c_str(), 0, 0); }), report + report);
    EXPECT_EQ(names_below(deep), (string_set{"ab.gif", "abcdef"}));
}

TEST_F(DoXrmv, ASocketIsTakenForADirectoryByItsModeBit) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::filesystem::current_path(there("img"));
    std::string("socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    ::close(socket);
    stream_capture errors(stderr);
    const std::string text =
        shown(0, [&] { return do_xrmv(&ini, "*", there("img").c_str(), 1, 0); });
    EXPECT_NE(text.find("Error: \nCannot remove " + there("img/socket") + ": Not a directory\n"),
              std::string::npos);
    EXPECT_EQ(errors.finish(), "Could not read directory file: Not a directory\n");
    EXPECT_TRUE(is_there(there("img/socket")));
}

TEST_F(DoTmprmv, TakesWhatMatchesInTheCurrentDirectoryWithAllItHolds) {
    std::filesystem::create_directories("tpl/set");
    write_file("tpl/set/a.tpl", "");
    write_file("a.gif", "");
    write_file("b.txt", "");
    const std::string text = shown(1, [&] { return do_tmprmv(&ini, "*"); });
    // One dot for a.gif, b.txt, a.tpl and set, none for tpl itself.
    EXPECT_EQ(text, "....");
    EXPECT_EQ(names_below("."), string_set{});
}

TEST_F(DoTmprmv, KeepsWhatBeginsWithGxsetupAndUsersDirectories) {
    for (const char *name : {"gxsetup", "gxsetup.dat", "gxsetup.log", "gxsetups.txt", "a.gif"}) {
        write_file(name, "");
    }
    std::filesystem::create_directory("u_ann");
    std::filesystem::create_directory("gxsetup.dir");
    write_file("u_file", "");
    EXPECT_EQ(shown(1, [&] { return do_tmprmv(&ini, "*"); }), "..");
    EXPECT_EQ(names_below("."), (string_set{"gxsetup", "gxsetup.dat", "gxsetup.log", "gxsetups.txt",
                                            "gxsetup.dir", "u_ann"}));
}

TEST_F(DoTmprmv, NothingFoundIsShownAndLogged) {
    set_loglvl(LOG_INFO);
    EXPECT_EQ(shown(1, [&] { return do_tmprmv(&ini, "*.gif"); }),
              "No files found in working directory\n");
    EXPECT_EQ(log(), "Info:  No files found in working directory\n");
}

TEST_F(DoTmprmv, ADirectoryThatIsNotEmptiedIsReported) {
    std::filesystem::create_directories("tpl/u_ann");
    EXPECT_EQ(shown(0, [&] { return do_tmprmv(&ini, "tpl"); }),
              "Error: \nCannot remove tpl: Directory not empty\n");
}
