#include "templates/header.h"

#include "support/rows.h"
#include "support/scratch_test.h"
#include "support/world.h"
#include "templates.h"

#include <gtest/gtest.h>

namespace {

const std::string header_line = "||header: modified=false tpl_set=kst_s1 tpl_version=1.0b||\n";

// What is read of an installed copy: "set [SET] version [VERSION]", or "none".
struct installed_copy {
    const char *name;
    std::string content;
    std::string read;
};

// What a copy without header or with one counts as.
struct loaded_copy {
    const char *name;
    std::string content;
    int is_new;
    int found;
    int modified;
};

class HeaderTest : public scratch_test {
  protected:
    // Reads `content` as the installed copy.
    TMPLT_INFO installed(std::string_view content) {
        write_file("index.tpl", content);
        TMPLT_INFO tpl;
        tpl.name = "index.tpl";
        found = tpl_get_header_info(&tpl, "index.tpl", 0);
        return tpl;
    }

    TMPLT_INFO loaded(std::string_view content, const char *prodname, int is_new) {
        write_file("index.tpl", content);
        TMPLT_INFO tpl;
        found = tpl_load(&tpl, "index.tpl", prodname, is_new);
        return tpl;
    }

    void check(const installed_copy &row) {
        const TMPLT_INFO tpl = installed(row.content);
        const std::string read = "set [" + tpl.old_tmplt_set + "] version [" + tpl.old_tmplt_vers +
                                 "]" + (tpl.modified == 1 ? " modified" : "");
        EXPECT_EQ(found == 1 ? read : "none", row.read);
        EXPECT_EQ(tpl.new_tmplt_set + tpl.new_tmplt_vers, "");
    }

    void check(const loaded_copy &row) {
        EXPECT_EQ(loaded(row.content, "kestrel", row.is_new).modified, row.modified);
        EXPECT_EQ(found, row.found);
    }

    [[nodiscard]] std::string log() const { return log_.text(); }

    int found = -1;

  private:
    test_log log_{scratch.path()};
};

using namespace std::string_literals;

const std::string four_pieces = std::string(4 * 511, 'x');

// A header of these words.
std::string marked(const std::string &words) {
    return "||header: " + words;
}

const std::vector<installed_copy> installed_copies = {
    {"HeaderTest.SetAndVersionAreRead", header_line + "<html>\n", "set [kst_s1] version [1.0b]"},
    {"HeaderTest.OnTheFifthLineIsFound", "1\n2\n\n4\n" + header_line,
     "set [kst_s1] version [1.0b]"},
    {"HeaderTest.OnTheSixthLineIsNotFound", "1\n2\n\n4\n5\n" + header_line, "none"},
    {"HeaderTest.PiecesOfALongLineCountAsLines", four_pieces + header_line,
     "set [kst_s1] version [1.0b]"},
    {"HeaderTest.TheSixthPieceIsNotLookedAt", four_pieces + "x\n" + header_line, "none"},
    {"HeaderTest.AMarkCutByTheEndOfAPieceIsNotFound", std::string(505, 'x') + header_line, "none"},
    {"HeaderTest.AMarkBehindTheEndOfAPieceIsFound", std::string(511, 'x') + header_line,
     "set [kst_s1] version [1.0b]"},
    {"HeaderTest.WhatStandsBeforeTheMarkIsDropped",
     "<!-- a=b c=d ||header: modified=true tpl_set=plv_s1 tpl_version=3.1||-->\n",
     "set [plv_s1] version [3.1] modified"},
    {"HeaderTest.AnEmptyFileHasNone", "", "none"},
    {"HeaderTest.TheMarkAloneHasNoFields", "||header:\n", "set [] version []"},
    {"HeaderTest.TheMarkAtTheEndOfTheFileHasNoFields", "||header:", "set [] version []"},
    {"HeaderTest.AFlagAloneHasNoFields", marked("modified=false\n"), "set [] version []"},
    {"HeaderTest.ASetMayBeEmpty", marked("modified=false tpl_set=\n"), "set [] version []"},
    {"HeaderTest.ASetMayBeCut", marked("modified=false tpl_set=kst"), "set [kst] version []"},
    {"HeaderTest.ALineEndEndsTheSet", marked("modified=false tpl_set=kst_s1\r\n"),
     "set [kst_s1] version []"},
    {"HeaderTest.AVersionMayBeEmpty", marked("modified=false tpl_set=kst_s1 tpl_version=||\n"),
     "set [kst_s1] version []"},
    {"HeaderTest.AVersionNeedsAnEqualsSign", marked("modified=false tpl_set=kst_s1 2.0||\n"),
     "set [kst_s1] version []"},
    {"HeaderTest.ALineEndEndsTheVersion",
     marked("modified=false tpl_set=kst_s1 tpl_version=2.0a\r\n"), "set [kst_s1] version [2.0a]"},
    {"HeaderTest.AVersionMayBeCut", marked("modified=false tpl_set=kst_s1 tpl_version=2."),
     "set [kst_s1] version [2.]"},
    {"HeaderTest.TwoBlanksMayStandBeforeTheVersion",
     marked("modified=false tpl_set=kst_s1  v=2||\n"), "set [kst_s1] version [2]"},
    {"HeaderTest.ABlankBehindTheEqualsSignIsAnEmptySet",
     marked("modified=false tpl_set= tpl_version=2||\n"), "set [] version [2]"},
    {"HeaderTest.ANulEndsTheText", marked("modified=false tpl_set=ks\0t_s1 tpl_version=2||\n"s),
     "set [ks] version []"},
    {"HeaderTest.ANulMayStandBeforeTheMark",
     "\0"s + marked("modified=false tpl_set=kst tpl_version=2||\n"), "set [kst] version [2]"},
};

const std::vector<loaded_copy> loaded_copies = {
    {"HeaderTest.AnInstalledCopyWithoutHeaderCountsAsModified", "<html>\n", 0, 0, 1},
    {"HeaderTest.ANewCopyWithoutHeaderDoesNot", "<html>\n", 1, 0, 0},
    {"HeaderTest.AnInstalledCopyWhoseChecksumAgreesIsNotModified", expected_stamped(header_line), 0,
     1, 0},
    {"HeaderTest.AnInstalledCopyWhoseChecksumDisagreesIsModified",
     replaced(expected_stamped(header_line + "<html>\n"), "html", "Html"), 0, 1, 1},
    {"HeaderTest.AnInstalledCopyWithoutChecksumLineCountsAsModified", header_line + "<html>\n", 0,
     1, 1},
    {"HeaderTest.AModifiedFlagStandsWhateverTheChecksum",
     expected_stamped(marked("modified=true tpl_set=kst_s1 tpl_version=1.0b||\n")), 0, 1, 1},
    {"HeaderTest.TheChecksumOfANewCopyIsNotLookedAt", header_line + "<html>\n", 1, 1, 0},
};

const int registered =
    register_rows<HeaderTest>(installed_copies) + register_rows<HeaderTest>(loaded_copies);

TEST_F(HeaderTest, ANewCopyFillsTheNewFieldsAndNeverTheFlag) {
    write_file("index.tpl", "||header: modified=true tpl_set=kst_s2 tpl_version=2.0a||\n");
    TMPLT_INFO tpl;
    EXPECT_EQ(tpl_get_header_info(&tpl, "index.tpl", 1), 1);
    EXPECT_EQ(tpl.new_tmplt_set, "kst_s2");
    EXPECT_EQ(tpl.new_tmplt_vers, "2.0a");
    EXPECT_EQ(tpl.old_tmplt_set, "");
    EXPECT_EQ(tpl.modified, 0);
}

TEST_F(HeaderTest, TheFlagIsReadInAnyLetterCase) {
    for (const char *flag : {"true", "True", "TRUE", "tRuEst"}) {
        EXPECT_EQ(installed(marked("modified="s + flag + " tpl_set=k")).modified, 1) << flag;
    }
}

TEST_F(HeaderTest, AnyOtherFlagIsNotModified) {
    for (const char *flag : {"false", "", "yes", "1", "tru", " true", "untrue"}) {
        EXPECT_EQ(installed(marked("modified="s + flag + " tpl_set=k")).modified, 0) << flag;
    }
}

TEST_F(HeaderTest, AFalseFlagClearsTheRecords) {
    write_file("index.tpl", header_line);
    TMPLT_INFO tpl;
    tpl.modified = 1;
    tpl_get_header_info(&tpl, "index.tpl", 0);
    EXPECT_EQ(tpl.modified, 0);
}

TEST_F(HeaderTest, ALineThatFillsThePieceIsRead) {
    const std::string set(600, 's');
    const TMPLT_INFO tpl = installed("||header: modified=false tpl_set=" + set);
    EXPECT_EQ(tpl.old_tmplt_set, set.substr(0, 511 - 33));
}

TEST_F(HeaderTest, AFileWithoutHeaderLeavesTheRecord) {
    write_file("index.tpl", "<html>\n");
    TMPLT_INFO tpl;
    tpl.old_tmplt_set = "kept";
    tpl.modified = 7;
    EXPECT_EQ(tpl_get_header_info(&tpl, "index.tpl", 0), 0);
    EXPECT_EQ(tpl.old_tmplt_set, "kept");
    EXPECT_EQ(tpl.modified, 7);
}

TEST_F(HeaderTest, AFileThatCannotBeOpenedAndADirectoryAreLoggedUnderTheRecordsName) {
    std::filesystem::create_directory("dir.tpl");
    TMPLT_INFO tpl;
    tpl.name = "login.tpl";
    EXPECT_EQ(tpl_get_header_info(&tpl, "missing/login.tpl", 0), 0);
    EXPECT_EQ(tpl_get_header_info(&tpl, "dir.tpl", 0), 0);
    const std::string line = "Error: Can't open login.tpl, header information unobtainable\n";
    EXPECT_EQ(log(), line + line);
}

// Loading with the defaults.

TEST_F(HeaderTest, WithoutHeaderTheProductsDefaultsAreTaken) {
    for (const auto &[product, family] : {std::pair("kestrel", "kst"),
                                          {"tanager", "tan"},
                                          {"plover", "plv"},
                                          {"osprey", "plv"},
                                          {"KESTREL", "plv"},
                                          {"", "plv"},
                                          {static_cast<const char *>(nullptr), "plv"}}) {
        SCOPED_TRACE(family);
        const TMPLT_INFO old_copy = loaded("<html>\n", product, 0);
        EXPECT_EQ(found, 0);
        const TMPLT_INFO new_copy = loaded("<html>\n", product, 1);
        EXPECT_EQ(found, 0);
        EXPECT_EQ(old_copy.old_tmplt_set + " " + old_copy.old_tmplt_vers, family + "_s1 1.0a"s);
        EXPECT_EQ(new_copy.new_tmplt_set + " " + new_copy.new_tmplt_vers, family + "_s2 2.0a"s);
        EXPECT_EQ(old_copy.new_tmplt_set + new_copy.old_tmplt_set, "");
    }
}

TEST_F(HeaderTest, MissingHeadersAreLoggedAtDebugLevel) {
    set_loglvl(LOG_DEBUG);
    loaded("<html>\n", "kestrel", 0);
    loaded("<html>\n", "kestrel", 1);
    set_loglvl(LOG_ERROR);
    EXPECT_EQ(log(), "Debug: Old header info not found\nDebug: New header info not found\n");
}

// Categories.

// The category of an unmodified template, and of a modified one.
std::string categories(const char *old_set, const char *old_version, const char *new_set,
                       const char *new_version) {
    TMPLT_INFO tpl{"", 0, old_version, new_version, old_set, new_set, 0};
    const std::string unmodified = std::to_string(tpl_category(&tpl, "ignored"));
    tpl.modified = 1;
    return unmodified + std::to_string(tpl_category(&tpl, nullptr));
}

// clang-format off
const std::vector<rule> category_rules = {
    {"Category.FollowsSetsAndVersions", categories,
     // Another set of the family: the versions do not count.
     {{{"kst_s1", "1.0a", "kst_s2", "2.0a"}, "12"}, {{"kst_s1", "9.9", "kst_s2", "1.0"}, "12"},
      {{"kst_s2", "1.0a", "kst_s1", "2.0a"}, "00"}, {{"kst_s", "1.0", "kst_s1", "1.0"}, "12"},
      // Bytes compare unsigned.
      {{"kst_s\xe4", "1.0", "kst_sz", "1.0"}, "00"},
      // Another family, or a name too short to be of this one.
      {{"plv_s2", "2.0a", "kst_s2", "2.0a"}, "33"}, {{"kst", "1.0", "kst_s1", "1.0"}, "33"},
      {{"", "1.0", "kst_s1", "1.0"}, "33"},
      // The same set: by the numbers of the versions first, then by their texts.
      {{"kst_s2", "2.0a", "kst_s2", "2.0b"}, "12"}, {{"kst_s2", "2.0b", "kst_s2", "2.0a"}, "00"},
      {{"kst_s2", "2.0a", "kst_s2", "2.0a"}, "00"}, {{"kst_s2", "2.0a", "kst_s2", "2.1"}, "12"},
      {{"kst_s2", "2.1", "kst_s2", "2.0a"}, "00"}, {{"kst_s2", "9.0", "kst_s2", "10.0"}, "12"},
      {{"kst_s2", "10.0", "kst_s2", "9.0"}, "00"}, {{"kst_s2", "", "kst_s2", "0.1"}, "12"},
      {{"kst_s2", "", "kst_s2", ""}, "00"}}},
};
// clang-format on

const int categories_registered = register_rows(category_rules);

TEST(TplFree, ClearsTheFiveTexts) {
    TMPLT_INFO tpl{"a", 2, "b", "c", "d", "e", 1};
    EXPECT_EQ(tpl_free(&tpl), 1);
    EXPECT_EQ(tpl.name + tpl.old_tmplt_vers + tpl.new_tmplt_vers + tpl.old_tmplt_set +
                  tpl.new_tmplt_set,
              "");
    EXPECT_EQ(tpl.category, 2);
    EXPECT_EQ(tpl.modified, 1);
}

} // namespace
