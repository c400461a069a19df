#include "settings/store.h"

#include "core/place.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "unit/settings/recording_store.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace std::string_literals;
constexpr INI_NAMES_INFO names[] = {
    {"cgi_name", nullptr, 0, 0}, {"tpl_set", nullptr, 1, 0}, {nullptr, nullptr, 0, 0}};

class SettingsFile : public scratch_test, public recording_store {
  protected:
    SettingsFile() {
        ini_setup(&ini, names, nullptr);
        debug_messages.clear();
    }

    int load(std::string_view content) {
        write_file("file.ini", content);
        return ini_load(&ini, "file.ini");
    }
};

using IniLoad = SettingsFile;
using IniSave = SettingsFile;

} // namespace

TEST_F(IniLoad, OneBlankSeparatesNameAndValue) {
    EXPECT_EQ(load("cgi_path /usr/cgi\n"), 2);
    EXPECT_EQ(settings(), texts{"cgi_path=/usr/cgi"});
}

TEST_F(IniLoad, FurtherBlanksAndTrailingOnesBelongToTheValue) {
    EXPECT_EQ(load("a  two\nb\tone \t\nc\t tab\n"), 4);
    EXPECT_EQ(settings(), (texts{"a= two", "b=one \t", "c= tab"}));
}

TEST_F(IniLoad, AMultiValuedNameKeepsEveryLineAndASingleValuedOneTheLast) {
    EXPECT_EQ(load("tpl_set a\ncgi_name one\ntpl_set b\ncgi_name two\n"), 5);
    EXPECT_EQ(settings(), (texts{"tpl_set=a", "cgi_name=two", "tpl_set=b"}));
}

TEST_F(IniLoad, MergesIntoWhatTheStoreHolds) {
    ini_add(&ini, "cgi_name", "kestrel");
    ini_add(&ini, "kept", "1");
    ini_add(&ini, "tpl_set", "a");
    EXPECT_EQ(load("cgi_name plover\ntpl_set b\n"), 3);
    EXPECT_EQ(settings(), (texts{"cgi_name=plover", "kept=1", "tpl_set=a", "tpl_set=b"}));
}

TEST_F(IniLoad, CommentsAreSkippedWhereTheHashIsTheVeryFirstCharacter) {
    EXPECT_EQ(load("# a comment\n#another /\n"), 1);
    EXPECT_EQ(settings(), texts{});
    EXPECT_EQ(load("  # note\n"), 2);
    EXPECT_EQ(settings(), texts{"#=note"});
}

TEST_F(IniLoad, LinesOfTwoCharactersOrFewerAndBareNamesAreIgnored) {
    EXPECT_EQ(load("\n\r\na\nab\nabc\n \n  \n"), 1);
    EXPECT_EQ(load("a "), 1);
    EXPECT_EQ(settings(), texts{});
    EXPECT_EQ(errors, texts{});
    EXPECT_EQ(load("a b"), 2);
    EXPECT_EQ(settings(), texts{"a=b"});
}

TEST_F(IniLoad, AnEmptyFileGivesOne) {
    EXPECT_EQ(load(""), 1);
}

TEST_F(IniLoad, AnEmptyValueCountsButStoresNothing) {
    ini_add(&ini, "cgi_name", "kestrel");
    EXPECT_EQ(load("cgi_name \n"), 2);
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

TEST_F(IniLoad, LeadingBlanksAndTabsAreSkipped) {
    EXPECT_EQ(load(" \t a b\n"), 2);
    EXPECT_EQ(settings(), texts{"a=b"});
}

TEST_F(IniLoad, CarriageReturnsBeforeTheLineEndAreCut) {
    EXPECT_EQ(load("a one\r\nb two\r\r\nc th\ree\r\n"), 4);
    EXPECT_EQ(settings(), (texts{"a=one", "b=two", "c=th\ree"}));
}

TEST_F(IniLoad, ABlankAndASlashJoinTheNextLineWithoutItsLeadingBlanks) {
    EXPECT_EQ(load("set a /\n   b\n"), 2);
    EXPECT_EQ(settings(), texts{"set=ab"});
}

TEST_F(IniLoad, AContinuedLineMayGoOnAgainAndWithCarriageReturns) {
    EXPECT_EQ(load("set one /\r\n\t two /\r\nthree\r\nnext 1\r\n"), 3);
    EXPECT_EQ(settings(), (texts{"set=onetwothree", "next=1"}));
}

TEST_F(IniLoad, WithoutTheBlankOrWithATabOrSomethingBehindTheSlashIsTheValue) {
    EXPECT_EQ(load("set a/\nb c\t/\nd e / \n"), 4);
    EXPECT_EQ(settings(), (texts{"set=a/", "b=c\t/", "d=e / "}));
}

TEST_F(IniLoad, ACommentAShortLineAndTheEndEndAContinuedLine) {
    EXPECT_EQ(load("a one /\n# comment\nb two /\n\nc three /\nx\nd four /"), 5);
    EXPECT_EQ(settings(), (texts{"a=one", "b=two", "c=three", "d=four"}));
}

TEST_F(IniLoad, ALineIsReadInPiecesOf510Characters) {
    // The second piece is a line of its own, here a setting.
    const std::string value(508, 'v');
    EXPECT_EQ(load("a " + value + "b rest\n"), 3);
    EXPECT_EQ(settings(), (texts{"a=" + value, "b=rest"}));
}

TEST_F(IniLoad, ALineOf509CharactersIsOnePiece) {
    const std::string value(507, 'v');
    EXPECT_EQ(load("a " + value + "\nb 1\n"), 3);
    EXPECT_EQ(settings(), (texts{"a=" + value, "b=1"}));
}

TEST_F(IniLoad, ALineFeedAloneInItsPieceIsIgnored) {
    const std::string value(508, 'v');
    EXPECT_EQ(load("a " + value + "\nb 1\n"), 3);
    EXPECT_EQ(settings(), (texts{"a=" + value, "b=1"}));
}

TEST_F(IniLoad, ContinuedPiecesMakeALongValue) {
    std::string content = "set ";
    std::string value;
    for (int line = 0; line < 100; line++) {
        content += std::string(400, 'v') + " /\n";
        value += std::string(400, 'v');
    }
    EXPECT_EQ(load(content + "end\n"), 2);
    EXPECT_EQ(settings(), texts{"set=" + value + "end"});
}

TEST_F(IniLoad, ALineEndsAtANulByte) {
    EXPECT_EQ(load("a one\0two\nb 1\n\0c 2\n"s), 3);
    EXPECT_EQ(settings(), (texts{"a=one", "b=1"}));
}

TEST_F(IniLoad, ReadsALineOf10000CharactersAndOneWithoutALineEnd) {
    EXPECT_EQ(load(std::string(10000, 'n') + "\nlast line"), 2);
    EXPECT_EQ(settings(), texts{"last=line"});
}

TEST_F(IniLoad, ReadsAFileOf100000Lines) {
    std::string content;
    for (int line = 0; line < 100000; line++) {
        content += "name" + std::to_string(line) + " value\n";
    }
    ini.dmsg = nullptr;
    EXPECT_EQ(load(content), 100001);
    EXPECT_EQ(ini_number(&ini), 200000);
    EXPECT_EQ(load(content), 100001);
    EXPECT_EQ(ini_number(&ini), 200000);
}

TEST_F(IniLoad, LogsTheNameOfTheFile) {
    load("");
    EXPECT_EQ(debug_messages, texts{"INI: Opening {file.ini}"});
}

TEST_F(IniLoad, AFileThatCannotBeOpenedGivesZeroAndAnError) {
    ini_add(&ini, "cgi_name", "kestrel");
    EXPECT_EQ(ini_load(&ini, "missing.ini"), 0);
    EXPECT_EQ(errors, texts{"INI: file {missing.ini} could not be opened for ini settings"});
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

TEST_F(IniLoad, ANullStoreGivesZero) {
    EXPECT_EQ(ini_load(nullptr, "file.ini"), 0);
}

TEST_F(IniLoad, APipeIsNeitherReadNorWaitedFor) {
    ASSERT_EQ(::mkfifo("pipe.ini", 0600), 0);
    EXPECT_EQ(ini_load(&ini, "pipe.ini"), 0);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(errors, texts{"INI: file {pipe.ini} could not be opened for ini settings"});
}

TEST_F(IniLoad, AFileOfMoreThan16MebibytesCannotBeOpened) {
    write_file("large.ini", "cgi_name kestrel\n");
    std::filesystem::resize_file("large.ini", (16 << 20) + 1);
    EXPECT_EQ(ini_load(&ini, "large.ini"), 0);
    EXPECT_EQ(errno, EFBIG);
    std::filesystem::resize_file("large.ini", 16 << 20);
    EXPECT_GT(ini_load(&ini, "large.ini"), 1);
}

// The system refuses to read this one at its beginning (Linux proc(5)).
TEST_F(IniLoad, AFileThatCannotBeReadToItsEndLeavesTheStore) {
    ini_add(&ini, "cgi_name", "plover");
    EXPECT_EQ(ini_load(&ini, "/proc/self/mem"), 0);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(settings(), texts{"cgi_name=plover"});
    EXPECT_EQ(errors, texts{"INI: file {/proc/self/mem} could not be read: Input/output error"});
}

// Its size is told as 0, and it holds far more.
TEST_F(IniLoad, AFileThatGrowsWhileItIsReadEndsToo) {
    EXPECT_EQ(ini_load(&ini, "/proc/self/pagemap"), 0);
    EXPECT_EQ(errors, texts{"INI: file {/proc/self/pagemap} could not be read: File too large"});
}

TEST_F(IniSave, OfAnEmptyStoreWritesTheHeaderAndGivesOne) {
    EXPECT_EQ(ini_save(&ini, "out.dat", "gxsetup, version 3.0h"), 1);
    EXPECT_EQ(read_file("out.dat"), "# file written by gxsetup, version 3.0h\n"
                                    "# library: INI v1.3c\n"
                                    "\n"
                                    "# Lines starting with # are comments\n"
                                    "\n");
}

TEST_F(IniSave, WritesEachSettingInOrderAndGivesOneMoreThanTheirNumber) {
    ini_add(&ini, "tpl_set", "a");
    ini_add(&ini, "cgi_name", " 100% %s ");
    ini_add(&ini, "tpl_set", "b");
    EXPECT_EQ(ini_save(&ini, "out.dat", "test"), 4);
    EXPECT_EQ(read_file("out.dat"), "# file written by test\n"
                                    "# library: INI v1.3c\n"
                                    "\n"
                                    "# Lines starting with # are comments\n"
                                    "\n"
                                    "tpl_set a\n"
                                    "cgi_name  100% %s \n"
                                    "tpl_set b\n");
}

TEST_F(IniSave, WhatIsSavedLoadsTheSameInTheSameOrder) {
    load("tpl_set a\ncgi_name  two \ntpl_set b\n");
    const texts before = settings();
    ini_save(&ini, "out.dat", "test");
    ini_clear(&ini);
    EXPECT_EQ(ini_load(&ini, "out.dat"), 4);
    EXPECT_EQ(settings(), before);
}

TEST_F(IniSave, ReplacesAnOlderFile) {
    write_file("out.dat", std::string(1000, 'o'));
    ini_save(&ini, "out.dat", "test");
    EXPECT_EQ(read_file("out.dat").substr(0, 23), "# file written by test\n");
}

TEST_F(IniSave, AFileThatCannotBeCreatedGivesZeroAndAnErrorWithItsName) {
    EXPECT_EQ(ini_save(&ini, "missing/out.dat", "test"), 0);
    EXPECT_EQ(errors, texts{"INI: file {missing/out.dat} could not be opened for ini settings"});
}

TEST_F(IniSave, AFullDiskGivesZeroAndNamesTheFileAndTheSystemsError) {
    ini_add(&ini, "cgi_name", "kestrel");
    EXPECT_EQ(ini_save(&ini, "/dev/full", "test"), 0);
    EXPECT_EQ(errors, texts{"INI: file {/dev/full} could not be written: No space left on device"});
}

TEST_F(IniSave, ANullStoreGivesZeroAndMakesNoFile) {
    EXPECT_EQ(ini_save(nullptr, "out.dat", "test"), 0);
    EXPECT_FALSE(is_there("out.dat"));
}
