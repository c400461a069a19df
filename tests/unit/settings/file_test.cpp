#include "settings/store.h"

#include "core/place.h"
#include "support/console_capture.h"
#include "support/rows.h"
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

    // The test of a row of the table below.
    template <typename Row>
    void check(const Row &row) {
        EXPECT_EQ(load(row.content), row.result);
        EXPECT_EQ(settings_of(&ini), row.settings);
        EXPECT_EQ(errors, texts{});
    }
};

// A receiver that changes errno, as any call in one may.
int clear_error(const char * /*format*/, ...) {
    return errno = 0;
}

using IniLoad = SettingsFile;
using IniSave = SettingsFile;

const std::string value_507(507, 'v');
const std::string value_508(508, 'v');

// A file, what loading it gives, and the settings then.
struct loaded_file {
    const char *name;
    std::string content;
    int result;
    texts settings;
};

// clang-format off
const std::vector<loaded_file> files = {
    {"IniLoad.OneBlankSeparatesNameAndValue", "cgi_path /usr/cgi\n", 2, {"cgi_path=/usr/cgi"}},
    {"IniLoad.FurtherBlanksAndTrailingOnesBelongToTheValue",
     "a  two\nb\tone \t\nc\t tab\n", 4, {"a= two", "b=one \t", "c= tab"}},
    {"IniLoad.AMultiValuedNameKeepsEveryLineAndASingleValuedOneTheLast",
     "tpl_set a\ncgi_name one\ntpl_set b\ncgi_name two\n", 5,
     {"tpl_set=a", "cgi_name=two", "tpl_set=b"}},
    {"IniLoad.AFileOfCommentsGivesOne", "# a comment\n#another /\n", 1, {}},
    {"IniLoad.CommentsAreSkippedWhereTheHashIsTheVeryFirstCharacter",
     "#a b\n  # note\n", 2, {"#=note"}},
    {"IniLoad.LinesOfTwoCharactersOrFewerAndBareNamesAreIgnored",
     "\n\r\na\nab\nabc\n \n  \na ", 1, {}},
    {"IniLoad.ALastLineMayEndWithoutALineFeed", "a b", 2, {"a=b"}},
    {"IniLoad.AnEmptyFileGivesOne", "", 1, {}},
    {"IniLoad.LeadingBlanksAndTabsAreSkipped", " \t a b\n", 2, {"a=b"}},
    {"IniLoad.CarriageReturnsBeforeTheLineEndAreCut",
     "a one\r\nb two\r\r\nc th\ree\r\n", 4, {"a=one", "b=two", "c=th\ree"}},
    {"IniLoad.ABlankAndASlashJoinTheNextLineWithoutItsLeadingBlanks",
     "set a /\n   b\n", 2, {"set=ab"}},
    {"IniLoad.AContinuedLineMayGoOnAgainAndWithCarriageReturns",
     "set one /\r\n\t two /\r\nthree\r\nnext 1\r\n", 3, {"set=onetwothree", "next=1"}},
    {"IniLoad.WithoutTheBlankOrWithATabOrSomethingBehindTheSlashIsTheValue",
     "set a/\nb c\t/\nd e / \n", 4, {"set=a/", "b=c\t/", "d=e / "}},
    {"IniLoad.ACommentAShortLineAndTheEndEndAContinuedLine",
     "a one /\n# comment\nb two /\n\nc three /\nx\nd four /", 5,
     {"a=one", "b=two", "c=three", "d=four"}},
    // The second piece is a line of its own, here a setting.
    {"IniLoad.ALineIsReadInPiecesOf510Characters",
     "a " + value_508 + "b rest\n", 3, {"a=" + value_508, "b=rest"}},
    {"IniLoad.ALineOf509CharactersIsOnePiece",
     "a " + value_507 + "\nb 1\n", 3, {"a=" + value_507, "b=1"}},
    {"IniLoad.ALineFeedAloneInItsPieceIsIgnored",
     "a " + value_508 + "\nb 1\n", 3, {"a=" + value_508, "b=1"}},
    {"IniLoad.ALineEndsAtANulByte",
     std::string("a one\0two\nb 1\n\0c 2\n", 19), 3, {"a=one", "b=1"}},
    {"IniLoad.ReadsALineOf10000CharactersAndOneWithoutALineEnd",
     std::string(10000, 'n') + "\nlast line", 2, {"last=line"}},
};
// clang-format on

const int registered = register_rows<SettingsFile>(files);

} // namespace

TEST_F(IniLoad, AFailureLeavesItsErrorWhateverTheReceiverDoes) {
    ini.emsg = clear_error;
    EXPECT_EQ(ini_load(&ini, "missing.ini"), 0);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(IniLoad, MergesIntoWhatTheStoreHolds) {
    ini_add(&ini, "cgi_name", "kestrel");
    ini_add(&ini, "kept", "1");
    ini_add(&ini, "tpl_set", "a");
    EXPECT_EQ(load("cgi_name plover\ntpl_set b\n"), 3);
    EXPECT_EQ(settings_of(&ini), (texts{"cgi_name=plover", "kept=1", "tpl_set=a", "tpl_set=b"}));
}

TEST_F(IniLoad, AnEmptyValueCountsButStoresNothing) {
    ini_add(&ini, "cgi_name", "kestrel");
    EXPECT_EQ(load("cgi_name \n"), 2);
    EXPECT_EQ(settings_of(&ini), texts{"cgi_name=kestrel"});
}

TEST_F(IniLoad, ContinuedPiecesMakeALongValue) {
    std::string content = "set ";
    std::string value;
    for (int line = 0; line < 100; line++) {
        content += std::string(400, 'v') + " /\n";
        value += std::string(400, 'v');
    }
    EXPECT_EQ(load(content + "end\n"), 2);
    EXPECT_EQ(settings_of(&ini), texts{"set=" + value + "end"});
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
    EXPECT_EQ(settings_of(&ini), texts{"cgi_name=kestrel"});
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
    EXPECT_EQ(settings_of(&ini), texts{"cgi_name=plover"});
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

TEST_F(IniSave, WritesEachSettingInOrder) {
    ini_add(&ini, "tpl_set", "a");
    ini_add(&ini, "cgi_name", " 100% %s ");
    ini_add(&ini, "tpl_set", "b");
    EXPECT_EQ(ini_save(&ini, "out.dat", "test"), 4);
    EXPECT_TRUE(
        read_file("out.dat").ends_with("comments\n\ntpl_set a\ncgi_name  100% %s \ntpl_set b\n"));
}

TEST_F(IniSave, WhatIsSavedLoadsTheSameInTheSameOrder) {
    load("tpl_set a\ncgi_name  two \ntpl_set b\n");
    const texts before = settings_of(&ini);
    ini_save(&ini, "out.dat", "test");
    ini_clear(&ini);
    EXPECT_EQ(ini_load(&ini, "out.dat"), 4);
    EXPECT_EQ(settings_of(&ini), before);
}

TEST_F(IniSave, ReplacesAnOlderFile) {
    write_file("out.dat", std::string(1000, 'o'));
    ini_save(&ini, "out.dat", "test");
    EXPECT_EQ(read_file("out.dat").substr(0, 23), "# file written by test\n");
}

TEST_F(IniSave, AFileThatCannotBeCreatedIsNamed) {
    EXPECT_EQ(ini_save(&ini, "missing/out.dat", "test"), 0);
    EXPECT_EQ(errors, texts{"INI: file {missing/out.dat} could not be opened for ini settings"});
}

TEST_F(IniSave, AFullDiskIsNamedWithItsFile) {
    ini_add(&ini, "cgi_name", "kestrel");
    EXPECT_EQ(ini_save(&ini, "/dev/full", "test"), 0);
    EXPECT_EQ(errors, texts{"INI: file {/dev/full} could not be written: No "
                            "space left on device"});
}

TEST_F(IniSave, ANullStoreGivesZeroAndMakesNoFile) {
    EXPECT_EQ(ini_save(nullptr, "out.dat", "test"), 0);
    EXPECT_FALSE(is_there("out.dat"));
}
