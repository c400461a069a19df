#include "unit/files/file_world.h"

#include <fcntl.h>

namespace {

// Two empty directories, `here` (the current one) and `there`.
class Copy : public FileWorld {
  protected:
    std::string there(const std::string &name = "") const {
        return scratch.path(name.empty() ? "there" : "there/" + name);
    }

    int copy(const char *src, int overwrite = 1) const {
        return do_copy(src, there().c_str(), overwrite);
    }

    int copy2(const char *src, const std::string &name, int overwrite = 1) const {
        return do_copy2(src, there(name).c_str(), overwrite);
    }
};

using DoCopy2 = Copy;
using DoCopy = Copy;
using DoCopyTree = Copy;
using DoExeCopy = Copy;
using DoXcopy = Copy;
using DoXcopy2 = Copy;

constexpr const char *rule = "\n-----------------------------------------------------------------"
                             "--------------\n";

} // namespace

// --- To a named file ---

TEST_F(DoCopy2, CopiesTheBytesAndPrintsADot) {
    std::string content("a\0b\n", 4);
    for (int part = 0; part < 100000; part++) {
        content += static_cast<char>(part * 7);
    }
    write_file("a.tpl", content);
    EXPECT_EQ(shown(1, [&] { return copy2("a.tpl", "b.tpl"); }), ".");
    EXPECT_EQ(read_file(there("b.tpl")), content);
}

TEST_F(DoCopy2, TheCopyHasMode0660WhateverTheUmaskAndTheSource) {
    write_file("a.tpl", "a");
    ::chmod("a.tpl", 0744);
    copy2("a.tpl", "a.tpl");
    EXPECT_EQ(mode_of(there("a.tpl")), "0660");
    write_file(there("b.tpl"), "old");
    ::chmod(there("b.tpl").c_str(), 0777);
    copy2("a.tpl", "b.tpl");
    EXPECT_EQ(mode_of(there("b.tpl")), "0660");
}

TEST_F(DoCopy2, TheCopyBelongsToTheOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    gx_user = 1234;
    gx_group = 4321;
    write_file("a.tpl", "a");
    copy2("a.tpl", "a.tpl");
    EXPECT_EQ(owner_of(there("a.tpl")), "1234:4321");
}

TEST_F(DoCopy2, ReplacesALongerFile) {
    write_file("a.tpl", "new");
    write_file(there("a.tpl"), "a much longer old one");
    EXPECT_EQ(shown(1, [&] { return copy2("a.tpl", "a.tpl"); }), ".");
    EXPECT_EQ(read_file(there("a.tpl")), "new");
}

TEST_F(DoCopy2, AnEmptySourceLeavesNothingOfTheSmallestOldFile) {
    write_file("a.tpl", "");
    write_file(there("a.tpl"), "x");
    EXPECT_EQ(shown(1, [&] { return copy2("a.tpl", "a.tpl"); }), ".");
    EXPECT_EQ(read_file(there("a.tpl")), "");
}

TEST_F(DoCopy2, WithoutOverwriteAnExistingFileStaysAndCountsAsSuccess) {
    write_file("a.tpl", "new");
    write_file(there("a.tpl"), "old");
    EXPECT_EQ(shown(1, [&] { return copy2("a.tpl", "a.tpl", 0); }), "");
    EXPECT_EQ(read_file(there("a.tpl")), "old");
    EXPECT_EQ(shown(1, [&] { return copy2("a.tpl", "b.tpl", 0); }), ".");
}

TEST_F(DoCopy2, DotEntriesAndDirectoriesAreASuccessfulNothing) {
    for (const char *source : {".", "..", "/tmp/.", "missing/.."}) {
        EXPECT_EQ(shown(1, [&] { return copy2(source, "x"); }), "");
    }
    std::filesystem::create_directory("set");
    EXPECT_EQ(shown(1, [&] { return copy2("set", "x"); }), "");
    EXPECT_EQ(names_below(there()), string_set{});
}

TEST_F(DoCopy2, OntoItselfIsOneAndKeepsTheFile) {
    write_file("a.tpl", "kept");
    EXPECT_EQ(shown(1, [] { return do_copy2("a.tpl", "a.tpl", 1); }), "");
    EXPECT_EQ(shown(1, [] { return do_copy2("a.tpl", "./a.tpl", 1); }), "");
    std::filesystem::create_hard_link("a.tpl", there("hard.tpl"));
    EXPECT_EQ(shown(1, [&] { return copy2("a.tpl", "hard.tpl"); }), "");
    std::filesystem::create_symlink(std::filesystem::absolute("a.tpl"), there("link.tpl"));
    EXPECT_EQ(shown(1, [&] { return copy2("a.tpl", "link.tpl"); }), "");
    EXPECT_EQ(read_file("a.tpl"), "kept");
    for (const mode_t mode : {0444U, 0U}) { // which root may read and write as well
        ::chmod("a.tpl", mode);
        EXPECT_EQ(shown(1, [] { return do_copy2("a.tpl", "./a.tpl", 1); }), "");
    }
}

TEST_F(DoCopy2, AMissingSourceIsReported) {
    EXPECT_EQ(shown(0, [&] { return copy2("a.tpl", "a.tpl"); }),
              "Error: Can't copy a.tpl: No such file or directory\n");
    EXPECT_EQ(log(), "Error: Can't copy a.tpl: No such file or directory\n");
    EXPECT_EQ(names_below(there()), string_set{});
}

TEST_F(DoCopy2, AnUnreadableSourceIsReported) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    write_file("a.tpl", "a");
    ::chmod("a.tpl", 0);
    EXPECT_EQ(shown(0, [&] { return copy2("a.tpl", "a.tpl"); }),
              "Error: Can't copy a.tpl: Permission denied\n");
}

TEST_F(DoCopy2, APipeIsNotOpened) {
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(shown(0, [&] { return copy2("pipe", "pipe"); }),
              "Error: Can't copy pipe: Invalid argument\n");
    EXPECT_EQ(shown(0, [&] { return copy2("/dev/null", "null"); }),
              "Error: Can't copy /dev/null: Invalid argument\n");
    EXPECT_EQ(names_below(there()), string_set{});
}

TEST_F(DoCopy2, ADestinationThatCannotBeOpenedIsReportedBehindARule) {
    write_file("a.tpl", "a");
    const std::string destination = there("missing/a.tpl");
    EXPECT_EQ(shown(0, [&] { return copy2("a.tpl", "missing/a.tpl"); }),
              rule +
                  ("Error: Can't write to \"" + destination + "\": No such file or directory\n\n"));
    EXPECT_EQ(log(), "Error: Can't write to \"" + destination + "\": No such file or directory\n");
}

TEST_F(DoCopy2, APipeAsDestinationIsNeverWaitedFor) {
    write_file("a.tpl", "a");
    ASSERT_EQ(::mkfifo(there("pipe").c_str(), 0600), 0);
    EXPECT_EQ(
        shown(0, [&] { return copy2("a.tpl", "pipe"); }),
        rule + ("Error: Can't write to \"" + there("pipe") + "\": No such device or address\n\n"));
}

TEST_F(DoCopy2, AFullDiskIsReportedBehindARule) {
    write_file("a.tpl", "a");
    EXPECT_EQ(shown(0, [] { return do_copy2("a.tpl", "/dev/full", 1); }),
              rule + std::string("Error: Problem writing \"/dev/full\": No space left on device"
                                 "\n\n"));
    EXPECT_EQ(log(), "Error: Problem writing \"/dev/full\": No space left on device\n");
}

TEST_F(DoCopy2, APathThatIsTooLongIsReportedAndNothingIsMade) {
    write_file("a.tpl", "a");
    const std::string name = "x/" + std::string(600, 'y');
    EXPECT_EQ(shown(0, [&] { return copy2("a.tpl", name); }),
              "Error: Can't copy a.tpl: File name too long\n");
    EXPECT_EQ(names_below(there()), string_set{});
}

TEST_F(DoCopy2, APathOf511CharactersIsNotTooLong) {
    write_file("a.tpl", "a");
    const std::string path = make_deep_directory(there(), 505) + "/a.tpl";
    ASSERT_EQ(path.size(), 511U);
    EXPECT_EQ(shown(1, [&] { return do_copy2("a.tpl", path.c_str(), 1); }), ".");
    EXPECT_EQ(read_file(path), "a");
}

// --- Into a directory ---

TEST_F(DoCopy, CopiesIntoTheDirectoryUnderTheLastPartOfTheName) {
    std::filesystem::create_directory("tpl");
    write_file("tpl/a.tpl", "a");
    EXPECT_EQ(shown(1, [&] { return copy("./tpl/a.tpl"); }), ".");
    EXPECT_EQ(read_file(there("a.tpl")), "a");
    EXPECT_EQ(mode_of(there("a.tpl")), "0660");
    EXPECT_EQ(log(), "Debug: DoCopy[./tpl/a.tpl]-[" + there("a.tpl") + "][a.tpl]\n");
}

TEST_F(DoCopy, ASourceWhosePathIsTooLongIsReported) {
    const std::string deep = make_deep_directory(scratch.path("here"), 505);
    write_file(deep + "/a.tpl", "a");
    write_file(deep + "/ab.tpl", "ab");
    EXPECT_EQ(shown(1, [&] { return copy((deep + "/a.tpl").c_str()); }), ".");
    EXPECT_EQ(shown(0, [&] { return copy((deep + "/ab.tpl").c_str()); }),
              "Error: Can't copy " + deep.substr(0, 400) + "...: File name too long\n");
    EXPECT_EQ(names_below(there()), string_set{"a.tpl"});
}

TEST_F(DoCopy, DotEntriesAreASuccessfulNothing) {
    EXPECT_EQ(shown(1, [&] { return copy("."); }), "");
    EXPECT_EQ(shown(1, [&] { return copy("tpl/.."); }), "");
    EXPECT_EQ(names_below(there()), string_set{});
}

TEST_F(DoCopy, OntoItselfByOneNameIsZeroAndByAnotherIsOne) {
    write_file("a.tpl", "kept");
    EXPECT_EQ(shown(0, [] { return do_copy("./a.tpl", ".", 1); }), "");
    EXPECT_EQ(shown(1, [] { return do_copy("a.tpl", ".", 1); }), "");
    EXPECT_EQ(read_file("a.tpl"), "kept");
    std::filesystem::create_directory("set");
    EXPECT_EQ(shown(0, [] { return do_copy("./set", ".", 1); }), "");
    EXPECT_EQ(shown(1, [] { return do_copy("set", ".", 1); }), "");
}

TEST_F(DoCopy, WithoutOverwriteAnExistingFileStays) {
    write_file("a.tpl", "new");
    write_file(there("a.tpl"), "old");
    EXPECT_EQ(shown(1, [&] { return copy("a.tpl", 0); }), "");
    EXPECT_EQ(read_file(there("a.tpl")), "old");
}

TEST_F(DoCopyTree, CopiesEverythingBelowAndOverwritesInsideWhateverTheFlag) {
    std::filesystem::create_directories("set/common");
    write_file("set/a.tpl", "new");
    write_file("set/common/b.tpl", "b");
    std::filesystem::create_directory(there("set"));
    write_file(there("set/a.tpl"), "old");
    EXPECT_EQ(shown(1, [&] { return copy("set", 0); }), "..");
    EXPECT_EQ(names_below(there("set")), (string_set{"a.tpl", "common", "common/b.tpl"}));
    EXPECT_EQ(read_file(there("set/a.tpl")), "new");
    EXPECT_EQ(mode_of(there("set/common")), "0770");
    EXPECT_EQ(mode_of(there("set/common/b.tpl")), "0660");
}

TEST_F(DoCopyTree, LogsTheSearchOfTheDirectory) {
    std::filesystem::create_directory("set");
    copy("set");
    EXPECT_EQ(log(), "Debug: DoCopy[set]-[" + there("set") + "][set]\n" +
                         "Info:  created directory \"" + there("set") + "\"\n" +
                         "Debug: Find all files in [set]\nDebug: Wild finding [set][*]\n");
}

TEST_F(DoCopyTree, EverythingMadeBelongsToTheOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    gx_user = 1234;
    gx_group = 4321;
    std::filesystem::create_directory("set");
    write_file("set/a.tpl", "a");
    copy("set");
    EXPECT_EQ(owner_of(there("set")), "1234:4321");
    EXPECT_EQ(owner_of(there("set/a.tpl")), "1234:4321");
}

TEST_F(DoCopyTree, AnEntryThatFailsIsReportedAndTheDirectoryStillSucceeds) {
    std::filesystem::create_directory("set");
    write_file("set/a.tpl", "a");
    ASSERT_EQ(::mkfifo("set/pipe", 0600), 0);
    const std::string text = shown(1, [&] { return copy("set"); });
    const std::string report = "Error: Can't copy set/pipe: Invalid argument\n"
                               "Error: Error copying set/pipe->" +
                               there("set") + "\n";
    EXPECT_TRUE(text == "." + report || text == report + ".") << text;
    EXPECT_EQ(names_below(there("set")), string_set{"a.tpl"});
}

TEST_F(DoCopyTree, AnEntryWhosePathIsTooLongIsReportedAndTheOthersAreCopied) {
    const std::string deep = make_deep_directory(there(), 501);
    std::filesystem::create_directory("set");
    write_file("set/a.tpl", "a");
    write_file("set/ab.tpl", "ab");
    const std::string text = shown(1, [&] { return do_copy("set", deep.c_str(), 1); });
    EXPECT_NE(text.find("Error: Can't copy set/ab.tpl: File name too long\n"
                        "Error: Error copying set/ab.tpl->/"),
              std::string::npos)
        << text;
    EXPECT_EQ(names_below(deep), (string_set{"set", "set/a.tpl"}));
}

TEST_F(DoCopyTree, ADirectoryThatCannotBeMadeIsReported) {
    std::filesystem::create_directory("set");
    EXPECT_EQ(shown(0, [] { return do_copy("set", "relative", 1); }),
              "Error: \nError creating template set directory set.\n\n");
}

TEST_F(DoCopyTree, IsNotCopiedIntoItself) {
    std::filesystem::create_directories("set/below");
    write_file("set/a.tpl", "a");
    const std::string below = std::filesystem::absolute("set/below");
    EXPECT_EQ(shown(0, [&] { return do_copy("set", below.c_str(), 1); }),
              "Error: Can't copy set: Invalid argument\n");
    EXPECT_EQ(names_below("set"), (string_set{"a.tpl", "below"}));
}

TEST_F(DoCopyTree, ALinkToADirectoryAboveEnds) {
    std::filesystem::create_directory("set");
    std::filesystem::create_directory_symlink(".", "set/again");
    write_file("set/a.tpl", "a");
    const std::string text = shown(1, [&] { return copy("set"); });
    EXPECT_NE(text.find("Error: Error copying set/again->"), std::string::npos) << text;
    EXPECT_EQ(names_below(there("set")), string_set{"a.tpl"});
}

// --- Programs ---

TEST_F(DoExeCopy, CopiesIntoTheDirectoryWithTheModeOfAProgram) {
    write_file("kestrel.cgi", "program");
    EXPECT_EQ(shown(1, [&] { return do_exe_copy("./kestrel.cgi", there().c_str(), 1); }), ".");
    EXPECT_EQ(read_file(there("kestrel.cgi")), "program");
    EXPECT_EQ(mode_of(there("kestrel.cgi")), "0770");
}

TEST_F(DoExeCopy, ToANamedFile) {
    write_file("kestrel.cgi", "program");
    EXPECT_EQ(shown(1, [&] { return do_exe_copy2("kestrel.cgi", there("mail.cgi").c_str(), 1); }),
              ".");
    EXPECT_EQ(mode_of(there("mail.cgi")), "0770");
}

TEST_F(DoExeCopy, TheProgramBelongsToTheOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    gx_user = 1234;
    gx_group = 4321;
    write_file("kestrel.cgi", "program");
    do_exe_copy("kestrel.cgi", there().c_str(), 1);
    EXPECT_EQ(owner_of(there("kestrel.cgi")), "1234:4321");
}

TEST_F(DoExeCopy, AFailedCopyIsTheResult) {
    EXPECT_EQ(shown(0, [&] { return do_exe_copy("kestrel.cgi", there().c_str(), 1); }),
              "Error: Can't copy kestrel.cgi: No such file or directory\n");
}

TEST_F(DoExeCopy, AModeThatCannotBeChangedIsReportedAndTheCopyStillCounts) {
    std::filesystem::create_directory("set"); // copied as a successful nothing
    EXPECT_EQ(shown(1, [&] { return do_exe_copy("set", there().c_str(), 1); }),
              "Error: " + there("set") + " mode not changed, No such file or directory\n");
}

// --- By pattern ---

TEST_F(DoXcopy, CopiesWhatMatchesInTheCurrentDirectory) {
    for (const char *name : {"a.gif", "b.gif", "c.jpg"}) {
        write_file(name, name);
    }
    EXPECT_EQ(shown(1, [&] { return do_xcopy("*.gif", there().c_str(), 1); }), "..");
    EXPECT_EQ(names_below(there()), (string_set{"a.gif", "b.gif"}));
}

TEST_F(DoXcopy, KnowsFourPrograms) {
    for (const char *name :
         {"kestrel.cgi", "plover.cgi", "tanager.cgi", "osprey.cgi", "gxsetup", "Kestrel.cgi"}) {
        write_file(name, "");
    }
    EXPECT_EQ(shown(1, [&] { return do_xcopy("*", there().c_str(), 1); }), "......");
    for (const char *name : {"kestrel.cgi", "plover.cgi", "tanager.cgi", "gxsetup"}) {
        EXPECT_EQ(mode_of(there(name)), "0770") << name;
        EXPECT_NE(log().find(std::string("Info:  Copying ") + name + "\n"), std::string::npos);
    }
    EXPECT_EQ(mode_of(there("osprey.cgi")), "0660");
    EXPECT_EQ(mode_of(there("Kestrel.cgi")), "0660");
}

TEST_F(DoXcopy, NothingFoundIsLoggedAndCountsAsSuccess) {
    EXPECT_EQ(shown(1, [&] { return do_xcopy("*.gif", there().c_str(), 1); }), "");
    EXPECT_EQ(log(), "Debug: Wild finding [*.gif]\nInfo:  No files found in *.gif\n");
}

TEST_F(DoXcopy, AFailureIsTheResultAndTheOthersAreStillCopied) {
    for (const char *name : {"a.gif", "c.gif"}) {
        write_file(name, name);
    }
    ASSERT_EQ(::mkfifo("b.gif", 0600), 0);
    shown(0, [&] { return do_xcopy("*.gif", there().c_str(), 1); });
    EXPECT_EQ(names_below(there()), (string_set{"a.gif", "c.gif"}));
}

TEST_F(DoXcopy, WithoutOverwriteExistingFilesStay) {
    write_file("a.gif", "new");
    write_file(there("a.gif"), "old");
    EXPECT_EQ(shown(1, [&] { return do_xcopy("*.gif", there().c_str(), 0); }), "");
    EXPECT_EQ(read_file(there("a.gif")), "old");
}

TEST_F(DoXcopy2, CopiesWhatMatchesInTheGivenDirectory) {
    std::filesystem::create_directory("img");
    write_file("img/a.gif", "a");
    write_file("b.gif", "b");
    EXPECT_EQ(shown(1, [&] { return do_xcopy2("./img", "*.gif", there().c_str(), 1); }), ".");
    EXPECT_EQ(names_below(there()), string_set{"a.gif"});
}

TEST_F(DoXcopy2, KnowsFivePrograms) {
    std::filesystem::create_directory("cgi");
    for (const char *name : {"kestrel.cgi", "plover.cgi", "tanager.cgi", "osprey.cgi", "gxsetup"}) {
        write_file(std::string("cgi/") + name, "");
    }
    EXPECT_EQ(shown(1, [&] { return do_xcopy2("cgi", "*", there().c_str(), 1); }), ".....");
    for (const char *name : {"kestrel.cgi", "plover.cgi", "tanager.cgi", "osprey.cgi", "gxsetup"}) {
        EXPECT_EQ(mode_of(there(name)), "0770") << name;
    }
}

TEST_F(DoXcopy2, NothingFoundIsLoggedByThePattern) {
    std::filesystem::create_directory("img");
    EXPECT_EQ(shown(1, [&] { return do_xcopy2("img", "*.gif", there().c_str(), 1); }), "");
    EXPECT_EQ(log(), "Debug: Wild finding [img][*.gif]\nInfo:  No files found in *.gif\n");
}
