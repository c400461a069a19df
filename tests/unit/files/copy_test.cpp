#include "unit/files/file_world.h"

#include "support/rows.h"
#include "support/tree.h"
#include "unit/rights.h"

#include <gmock/gmock-matchers.h>

namespace {

using testing::HasSubstr;

// Copies each source after commands of the shell. "@" is the directory `there`.
struct file_copy {
    const char *name;
    const char *preparation;
    int (*copy)(const char *source, const char *destination, int overwrite);
    std::vector<std::string> sources;
    std::string destination;
    int result;        // of each
    std::string shown; // by all
    const char *tree;  // what `there` holds then
    int overwrite = 1;
    const char *log = nullptr; // if it is looked at
};

// Two empty directories, `here` (the current one) and `there`.
class Copy : public FileWorld {
  protected:
    // Copies over what is there; gives what it shows.
    std::string copied(int result, const std::string &source, const std::string &to) const {
        return with_at(shown(result, [&] { return do_copy(source.c_str(), to.c_str(), 1); }));
    }

    void check(const file_copy &row) const {
        shell(meant(row.preparation));
        std::string text;
        for (const std::string &source : row.sources) {
            text += shown(row.result, [&] {
                return row.copy(meant(source).c_str(), meant(row.destination).c_str(),
                                row.overwrite);
            });
        }
        EXPECT_EQ(with_at(text), row.shown);
        EXPECT_EQ(with_at(tree_of(there())), row.tree);
        if (row.log != nullptr) {
            EXPECT_EQ(with_at(log()), row.log);
        }
    }
};

using DoCopy2 = Copy;
using DoCopy = Copy;
using DoCopyTree = Copy;
using DoExeCopy = Copy;
using DoXcopy = Copy;
using DoXcopy2 = Copy;

int xcopy2_of_img(const char *pattern, const char *destination, int overwrite) {
    return do_xcopy2("./img", pattern, destination, overwrite);
}

const std::string ruled = "\n" + std::string(79, '-') + "\n";
const std::string missing = ": No such file or directory\n";

// clang-format off
const std::vector<file_copy> copies = {
    // To a named file.
    {"DoCopy2.TheCopyHasMode0660WhateverTheUmaskAndTheSource", "touch a.tpl; chmod 744 a.tpl",
     do_copy2, {"a.tpl"}, "@/b.tpl", 1, ".", "0660 @/b.tpl \"\"\n"},
    {"DoCopy2.TheCopyHasMode0660WhateverTheOldFile", "touch a.tpl @/b.tpl; chmod 777 @/b.tpl",
     do_copy2, {"a.tpl"}, "@/b.tpl", 1, ".", "0660 @/b.tpl \"\"\n"},
    {"DoCopy2.ReplacesALongerFile", "echo new >a.tpl; echo 'a much longer old one' >@/a.tpl",
     do_copy2, {"a.tpl"}, "@/a.tpl", 1, ".", "0660 @/a.tpl \"new\"\n"},
    {"DoCopy2.AnEmptySourceLeavesNothingOfTheSmallestOldFile", "touch a.tpl; printf x >@/a.tpl",
     do_copy2, {"a.tpl"}, "@/a.tpl", 1, ".", "0660 @/a.tpl \"\"\n"},
    {"DoCopy2.WithoutOverwriteAnExistingFileStaysAndCountsAsSuccess",
     "echo new >a.tpl; echo old >@/a.tpl",
     do_copy2, {"a.tpl"}, "@/a.tpl", 1, "", "0600 @/a.tpl \"old\"\n", 0},
    {"DoCopy2.WithoutOverwriteAMissingFileIsCopied", "echo new >a.tpl",
     do_copy2, {"a.tpl"}, "@/b.tpl", 1, ".", "0660 @/b.tpl \"new\"\n", 0},
    {"DoCopy2.DotEntriesAndDirectoriesAreASuccessfulNothing", "mkdir set",
     do_copy2, {".", "..", "/tmp/.", "missing/..", "set"}, "@/x", 1, "", ""},
    {"DoCopy2.AMissingSourceIsReported", "",
     do_copy2, {"a.tpl"}, "@/a.tpl", 0, "Error: Can't copy a.tpl" + missing, "", 1,
     "Error: Can't copy a.tpl: No such file or directory\n"},
    {"DoCopy2.APipeIsNotOpened", "mkfifo pipe",
     do_copy2, {"pipe", "/dev/null"}, "@/x", 0,
     "Error: Can't copy pipe: Invalid argument\nError: Can't copy /dev/null: Invalid argument\n",
     ""},
    {"DoCopy2.ADestinationThatCannotBeOpenedIsReportedBehindARule", "touch a.tpl",
     do_copy2, {"a.tpl"}, "@/missing/a.tpl", 0,
     ruled + "Error: Can't write to \"@/missing/a.tpl\"" + missing + "\n", "", 1,
     "Error: Can't write to \"@/missing/a.tpl\": No such file or directory\n"},
    {"DoCopy2.APipeAsDestinationIsNeverWaitedFor", "touch a.tpl; mkfifo @/pipe",
     do_copy2, {"a.tpl"}, "@/pipe", 0,
     ruled + "Error: Can't write to \"@/pipe\": No such device or address\n\n",
     "0600 @/pipe (special)\n"},
    {"DoCopy2.AFullDiskIsReportedBehindARule", "echo a >a.tpl",
     do_copy2, {"a.tpl"}, "/dev/full", 0,
     ruled + "Error: Problem writing \"/dev/full\": No space left on device\n\n", "", 1,
     "Error: Problem writing \"/dev/full\": No space left on device\n"},
    {"DoCopy2.APathThatIsTooLongIsReportedAndNothingIsMade", "touch a.tpl",
     do_copy2, {"a.tpl"}, "@/x/" + std::string(600, 'y'), 0,
     "Error: Can't copy a.tpl: File name too long\n", ""},

    // Into a directory.
    {"DoCopy.CopiesIntoTheDirectoryUnderTheLastPartOfTheName", "mkdir tpl; echo a >tpl/a.tpl",
     do_copy, {"./tpl/a.tpl"}, "@", 1, ".", "0660 @/a.tpl \"a\"\n", 1,
     "Debug: DoCopy[./tpl/a.tpl]-[@/a.tpl][a.tpl]\n"},
    {"DoCopy.DotEntriesAreASuccessfulNothing", "", do_copy, {".", "tpl/.."}, "@", 1, "", ""},
    {"DoCopy.OntoItselfByOneNameIsZero", "echo kept >@/a.tpl; mkdir @/set",
     do_copy, {"@/a.tpl", "@/set"}, "@", 0, "", "0600 @/a.tpl \"kept\"\n0700 @/set/\n"},
    {"DoCopy.OntoItselfByAnotherNameIsOne", "echo kept >@/a.tpl; mkdir @/set",
     do_copy, {"../there/a.tpl", "../there/set"}, "@", 1, "",
     "0600 @/a.tpl \"kept\"\n0700 @/set/\n"},
    {"DoCopy.WithoutOverwriteAnExistingFileStays", "echo new >a.tpl; echo old >@/a.tpl",
     do_copy, {"a.tpl"}, "@", 1, "", "0600 @/a.tpl \"old\"\n", 0},
    {"DoCopyTree.CopiesEverythingBelowAndOverwritesInsideWhateverTheFlag",
     "mkdir -p set/common @/set; echo new >set/a.tpl; echo old >@/set/a.tpl; touch set/common/b.tpl",
     do_copy, {"set"}, "@", 1, "..",
     "0700 @/set/\n0660 @/set/a.tpl \"new\"\n0770 @/set/common/\n"
     "0660 @/set/common/b.tpl \"\"\n", 0},
    {"DoCopyTree.LogsTheSearchOfTheDirectory", "mkdir set",
     do_copy, {"set"}, "@", 1, "", "0770 @/set/\n", 1,
     "Debug: DoCopy[set]-[@/set][set]\nInfo:  created directory \"@/set\"\n"
     "Debug: Find all files in [set]\nDebug: Wild finding [set][*]\n"},
    {"DoCopyTree.ADirectoryThatCannotBeMadeIsReported", "mkdir set",
     do_copy, {"set"}, "relative", 0,
     "Error: \nError creating template set directory set.\n\n", ""},
    {"DoCopyTree.IsNotCopiedIntoItself", "mkdir -p @/set/below; echo a >@/set/a.tpl",
     do_copy, {"@/set"}, "@/set/below", 0, "Error: Can't copy @/set: Invalid argument\n",
     "0700 @/set/\n0600 @/set/a.tpl \"a\"\n0700 @/set/below/\n"},

    // Programs.
    {"DoExeCopy.CopiesIntoTheDirectoryWithTheModeOfAProgram", "echo program >kestrel.cgi",
     do_exe_copy, {"./kestrel.cgi"}, "@", 1, ".", "0770 @/kestrel.cgi \"program\"\n"},
    {"DoExeCopy.ToANamedFile", "echo program >kestrel.cgi",
     do_exe_copy2, {"kestrel.cgi"}, "@/mail.cgi", 1, ".", "0770 @/mail.cgi \"program\"\n"},
    {"DoExeCopy.AFailedCopyIsTheResult", "",
     do_exe_copy, {"kestrel.cgi"}, "@", 0, "Error: Can't copy kestrel.cgi" + missing, ""},
    // A directory is copied as a successful nothing.
    {"DoExeCopy.AModeThatCannotBeChangedIsReportedAndTheCopyStillCounts", "mkdir set",
     do_exe_copy, {"set"}, "@", 1,
     "Error: @/set mode not changed, No such file or directory\n", ""},

    // By pattern.
    {"DoXcopy.CopiesWhatMatchesInTheCurrentDirectory", "touch a.gif b.gif c.jpg",
     do_xcopy, {"*.gif"}, "@", 1, "..", "0660 @/a.gif \"\"\n0660 @/b.gif \"\"\n"},
    {"DoXcopy.KnowsFourPrograms",
     "touch kestrel.cgi plover.cgi tanager.cgi osprey.cgi gxsetup Kestrel.cgi",
     do_xcopy, {"*"}, "@", 1, "......",
     "0660 @/Kestrel.cgi \"\"\n0770 @/gxsetup \"\"\n0770 @/kestrel.cgi \"\"\n"
     "0660 @/osprey.cgi \"\"\n0770 @/plover.cgi \"\"\n0770 @/tanager.cgi \"\"\n"},
    {"DoXcopy.NothingFoundIsLoggedAndCountsAsSuccess", "",
     do_xcopy, {"*.gif"}, "@", 1, "", "", 1,
     "Debug: Wild finding [*.gif]\nInfo:  No files found in *.gif\n"},
    {"DoXcopy.WithoutOverwriteExistingFilesStay", "echo new >a.gif; echo old >@/a.gif",
     do_xcopy, {"*.gif"}, "@", 1, "", "0600 @/a.gif \"old\"\n", 0},
    {"DoXcopy2.CopiesWhatMatchesInTheGivenDirectory", "mkdir img; touch img/a.gif b.gif",
     xcopy2_of_img, {"*.gif"}, "@", 1, ".", "0660 @/a.gif \"\"\n"},
    {"DoXcopy2.KnowsFivePrograms",
     "mkdir img; cd img; touch kestrel.cgi plover.cgi tanager.cgi osprey.cgi gxsetup",
     xcopy2_of_img, {"*"}, "@", 1, ".....",
     "0770 @/gxsetup \"\"\n0770 @/kestrel.cgi \"\"\n0770 @/osprey.cgi \"\"\n"
     "0770 @/plover.cgi \"\"\n0770 @/tanager.cgi \"\"\n"},
    {"DoXcopy2.NothingFoundIsLoggedByThePattern", "mkdir img",
     xcopy2_of_img, {"*.gif"}, "@", 1, "", "", 1,
     "Debug: Wild finding [./img][*.gif]\nInfo:  No files found in *.gif\n"},
};
// clang-format on

const int registered = register_rows<Copy>(copies);

} // namespace

TEST_F(DoCopy2, CopiesTheBytesAndPrintsADot) {
    std::string content("a\0b\n", 4);
    for (int part = 0; part < 100000; part++) {
        content += static_cast<char>(part * 7);
    }
    write_file("a.tpl", content);
    EXPECT_EQ(shown(1, [&] { return do_copy2("a.tpl", there("b.tpl").c_str(), 1); }), ".");
    EXPECT_EQ(read_file(there("b.tpl")), content);
}

TEST_F(DoCopy2, OntoItselfIsOneAndKeepsTheFile) {
    shell("printf kept >a.tpl; ln a.tpl hard.tpl; ln -s a.tpl link.tpl");
    for (const char *mode : {"0", "444", "600"}) { // root may read and write the file with each
        shell(std::string("chmod ") + mode + " a.tpl");
        for (const char *same : {"a.tpl", "./a.tpl", "hard.tpl", "link.tpl"}) {
            EXPECT_EQ(shown(1, [&] { return do_copy2("a.tpl", same, 1); }), "") << mode << same;
        }
    }
    EXPECT_EQ(read_file("a.tpl"), "kept");
}

TEST_F(DoCopy2, AnUnreadableSourceIsReported) {
    const without_root_rights limited;
    shell("touch a.tpl; chmod 0 a.tpl");
    EXPECT_EQ(shown(0, [&] { return do_copy2("a.tpl", there("a.tpl").c_str(), 1); }),
              "Error: Can't copy a.tpl: Permission denied\n");
}

TEST_F(DoCopy2, APathOf511CharactersIsNotTooLong) {
    write_file("a.tpl", "a");
    const std::string path = make_deep_directory(there(), 505) + "/a.tpl";
    ASSERT_EQ(path.size(), 511U);
    EXPECT_EQ(shown(1, [&] { return do_copy2("a.tpl", path.c_str(), 1); }), ".");
    EXPECT_EQ(read_file(path), "a");
}

TEST_F(DoCopy, ASourceWhosePathIsTooLongIsReported) {
    const std::string deep = make_deep_directory(scratch.path("here"), 505);
    write_file(deep + "/a.tpl", "a");
    write_file(deep + "/ab.tpl", "ab");
    EXPECT_EQ(copied(1, deep + "/a.tpl", there()), ".");
    EXPECT_EQ(copied(0, deep + "/ab.tpl", there()),
              "Error: Can't copy " + deep.substr(0, 400) + "...: File name too long\n");
    EXPECT_EQ(names_below(there()), string_set{"a.tpl"});
}

TEST_F(DoExeCopy, AFailedModeChangeOfAFileThatStaysIsReported) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    gx_user = 1234; // whose file is given a mode at all
    shell("touch kestrel.cgi; cd ../there; touch kestrel.cgi; chmod 644 *; chown 1234 *");
    const without_root_rights limited;
    EXPECT_EQ(shown(1, [&] { return do_exe_copy("kestrel.cgi", there().c_str(), 0); }),
              meant("Error: @/kestrel.cgi mode not changed, Operation not permitted\n"));
}

TEST_F(Copy, EverythingMadeBelongsToTheOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    gx_user = 1234;
    gx_group = 4321;
    shell("mkdir set; touch a.tpl kestrel.cgi set/b.tpl");
    copied(1, "a.tpl", there());
    copied(1, "set", there());
    do_exe_copy("kestrel.cgi", there().c_str(), 1);
    EXPECT_EQ(names_below(there()), (string_set{"a.tpl", "kestrel.cgi", "set", "set/b.tpl"}));
    for (const std::string &name : names_below(there())) {
        EXPECT_EQ(owner_of(there(name)), "1234:4321") << name;
    }
}

TEST_F(DoCopyTree, AnEntryThatFailsIsReportedAndTheDirectoryStillSucceeds) {
    shell("mkdir set; touch set/a.tpl; mkfifo set/pipe");
    const std::string text = copied(1, "set", there());
    const std::string report = "Error: Can't copy set/pipe: Invalid argument\n"
                               "Error: Error copying set/pipe->@/set\n";
    EXPECT_TRUE(text == "." + report || text == report + ".") << text;
    EXPECT_EQ(names_below(there("set")), string_set{"a.tpl"});
}

TEST_F(DoCopyTree, AnEntryWhosePathIsTooLongIsReportedAndTheOthersAreCopied) {
    const std::string deep = make_deep_directory(there(), 501);
    shell("mkdir set; touch set/a.tpl set/ab.tpl");
    EXPECT_THAT(copied(1, "set", deep),
                HasSubstr("Error: Can't copy set/ab.tpl: File name too long\n"
                          "Error: Error copying set/ab.tpl->@/"));
    EXPECT_EQ(names_below(deep), (string_set{"set", "set/a.tpl"}));
}

TEST_F(DoCopyTree, ALinkToADirectoryAboveEnds) {
    shell("mkdir set; ln -s . set/again; touch set/a.tpl");
    EXPECT_THAT(copied(1, "set", there()), HasSubstr("Error: Error copying set/again->"));
    EXPECT_EQ(names_below(there("set")), string_set{"a.tpl"});
}

TEST_F(DoXcopy, LogsEachProgram) {
    for (const std::string name : {"kestrel.cgi", "plover.cgi", "tanager.cgi", "gxsetup"}) {
        write_file(name, "");
        shown(1, [&] { return do_xcopy(name.c_str(), there().c_str(), 1); });
        EXPECT_THAT(log(), HasSubstr("Info:  Copying " + name + "\n"));
    }
}

TEST_F(DoXcopy, AFailureIsTheResultAndTheOthersAreStillCopied) {
    shell("touch a.gif c.gif; mkfifo b.gif");
    shown(0, [&] { return do_xcopy("*.gif", there().c_str(), 1); });
    EXPECT_EQ(names_below(there()), (string_set{"a.gif", "c.gif"}));
}
