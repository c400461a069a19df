#include "unit/files/file_world.h"

#include "support/rows.h"
#include "unit/rights.h"

#include <gmock/gmock-matchers.h>

namespace {

using testing::HasSubstr;

// A removal after commands of the shell. "@" is the directory `there`.
struct directory_removal {
    const char *name;
    const char *preparation;
    const char *wild;
    const char *path;
    int not_u;
    int dirs_only;
    int result;
    const char *shown;
    string_set left; // below `there`
};

// A tree below `there` and a store of answers that names two of its directories.
class Removal : public FileWorld {
  protected:
    Removal() {
        ini_init(&ini, emsg, dmsg);
        shell("cd ../there; mkdir -p img/deep u_ann work tpl\n"
              "touch a.gif b.TPL img/c.gif img/deep/d.gif u_ann/e.gif work/f.gif tpl/g.gif");
        set_loglvl(LOG_ERROR);
        ini_add(&ini, "workarea", there("work").c_str());
        ini_add(&ini, "templates", there("tpl").c_str());
    }

    ~Removal() override { ini_clear(&ini); }

    // What do_xrmv shows; its result must be `result`.
    std::string removed(int result, const char *wild, const std::string &path, int not_u = 0,
                        int dirs_only = 0) {
        return with_at(
            shown(result, [&] { return do_xrmv(&ini, wild, path.c_str(), not_u, dirs_only); }));
    }

    void check(const directory_removal &row) {
        shell(meant(row.preparation));
        EXPECT_EQ(removed(row.result, row.wild, meant(row.path), row.not_u, row.dirs_only),
                  row.shown);
        EXPECT_EQ(names_below(there()), row.left);
    }

    ini_settings ini{};
};

using DoXrmv = Removal;
using DoTmprmv = Removal;

// clang-format off
const std::vector<directory_removal> removals = {
    {"DoXrmv.TakesFilesThatMatchTheListIgnoringCaseAndEveryDirectoryItEmpties", "",
     "*.gif,*.tpl", "@", 0, 0, 1, "............", {}},
    {"DoXrmv.PrintsADotForEachFileAndDirectory", "", "*", "@/img", 0, 0, 1, "...",
     {"a.gif", "b.TPL", "img", "tpl", "tpl/g.gif", "u_ann", "u_ann/e.gif", "work", "work/f.gif"}},
    {"DoXrmv.WithNotUUsersTheWorkAreaAndTheTemplatesStay", "",
     "*", "@", 1, 0, 1, "......",
     {"tpl", "tpl/g.gif", "u_ann", "u_ann/e.gif", "work", "work/f.gif"}},
    {"DoXrmv.DirsOnlyLeavesTheFilesOfTheFirstLevel", "",
     "*", "@", 1, 1, 1, "....",
     {"a.gif", "b.TPL", "tpl", "tpl/g.gif", "u_ann", "u_ann/e.gif", "work", "work/f.gif"}},
    {"DoXrmv.DirsOnlyWithoutNotUTakesOnlyDirectoriesThatMatch", "rm -r @/u_ann/* @/work @/tpl",
     "u_*", "@", 0, 1, 1, ".",
     {"a.gif", "b.TPL", "img", "img/c.gif", "img/deep", "img/deep/d.gif"}},
    {"DoXrmv.InsideADirectoryThatMatchesTheFilesGoByTheSameList", "rm -r @/img @/work @/tpl",
     "u_*", "@", 0, 1, 0, "Error: \nCannot remove @/u_ann: Directory not empty\n",
     {"a.gif", "b.TPL", "u_ann", "u_ann/e.gif"}},
    {"DoXrmv.WhatDoesNotMatchKeepsItsDirectoryWhichIsReported",
     "rm -r @/work @/tpl @/*.*; touch @/img/keep.txt",
     "*.gif", "@", 1, 0, 0, "...Error: \nCannot remove @/img: Directory not empty\n",
     {"img", "img/keep.txt", "u_ann", "u_ann/e.gif"}},
    {"DoXrmv.ADanglingLinkIsPassedOverAndALinkToAFileIsRemoved",
     "cd @; rm -r img/* u_ann work tpl; mkdir img/set\n"
     "ln -s nowhere img/dangling; ln -s ../a.gif img/link",
     "*", "@/img", 0, 0, 1, "..", {"a.gif", "b.TPL", "img", "img/dangling"}},
};
// clang-format on

const int registered = register_rows<Removal>(removals);

} // namespace

TEST_F(DoXrmv, BelowTheFirstLevelUsersTheWorkAreaAndTheTemplatesAlwaysStay) {
    shell(meant("cd @/img; mkdir u_bob work tpl"));
    ini_add(&ini, "workarea", there("img/work").c_str());
    ini_add(&ini, "templates", there("img/tpl").c_str());
    EXPECT_EQ(removed(0, "img,*.gif", there(), 0, 1),
              "...Error: \nCannot remove @/img: Directory not empty\n");
    EXPECT_EQ(names_below(there("img")), (string_set{"u_bob", "work", "tpl"}));
}

TEST_F(DoXrmv, NothingFoundIsLoggedByTheDirectory) {
    set_loglvl(LOG_INFO);
    EXPECT_EQ(removed(1, "*", scratch.path("here")), "");
    EXPECT_EQ(log(), "Info:  No files found in " + scratch.path("here") + "\n");
}

TEST_F(DoXrmv, AFileThatMayNotBeLookedAtIsPassedOver) {
    const without_root_rights limited;
    std::filesystem::permissions(there("img/deep"), std::filesystem::perms::owner_read);
    EXPECT_EQ(removed(1, "*", there("img/deep")), "");
    std::filesystem::permissions(there("img/deep"), std::filesystem::perms::owner_all);
    EXPECT_TRUE(is_there(there("img/deep/d.gif")));
}

TEST_F(DoXrmv, WhatHasAPathThatIsTooLongIsReportedAndStays) {
    const std::string deep = make_deep_directory(there("img/deep"), 505);
    write_file(deep + "/a.gif", "");
    std::filesystem::create_directory(deep + "/abcde");
    EXPECT_EQ(removed(1, "*", deep), "..");
    write_file(deep + "/ab.gif", "");
    std::filesystem::create_directory(deep + "/abcdef");
    const std::string report =
        "Error: \nCannot remove " + deep.substr(0, 400) + "...: File name too long\n";
    EXPECT_EQ(removed(0, "*", deep), with_at(report + report));
    EXPECT_EQ(names_below(deep), (string_set{"ab.gif", "abcdef"}));
}

TEST_F(DoXrmv, ASocketIsTakenForADirectoryByItsModeBit) {
    make_socket("../there/img/socket");
    stream_capture errors(stderr);
    EXPECT_THAT(removed(0, "*", there("img"), 1),
                HasSubstr("Error: \nCannot remove @/img/socket: Not a directory\n"));
    EXPECT_EQ(errors.finish(), "Could not read directory file: Not a directory\n");
    EXPECT_TRUE(is_there(there("img/socket")));
}

TEST_F(DoTmprmv, TakesWhatMatchesInTheCurrentDirectoryWithAllItHolds) {
    shell("mkdir -p tpl/set; touch tpl/set/a.tpl a.gif b.txt");
    // One dot for a.gif, b.txt, a.tpl and set, none for tpl itself.
    EXPECT_EQ(shown(1, [&] { return do_tmprmv(&ini, "*"); }), "....");
    EXPECT_EQ(names_below("."), string_set{});
}

TEST_F(DoTmprmv, KeepsWhatBeginsWithGxsetupAndUsersDirectories) {
    shell("mkdir u_ann gxsetup.dir; "
          "touch gxsetup gxsetup.dat gxsetup.log gxsetups.txt a.gif u_file");
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
