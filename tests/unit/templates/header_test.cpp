#include "templates/header.h"

#include "support/scratch_test.h"
#include "templates.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

constexpr const char *header_line = "||header: modified=false tpl_set=kst_s1 tpl_version=1.0b||\n";

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

    [[nodiscard]] std::string log() const { return log_.text(); }

    int found = -1;

  private:
    test_log log_{scratch.path()};
};

// Reading the header.

TEST_F(HeaderTest, SetAndVersionAreRead) {
    const TMPLT_INFO tpl = installed(std::string(header_line) + "<html>\n");
    EXPECT_EQ(found, 1);
    EXPECT_EQ(tpl.old_tmplt_set, "kst_s1");
    EXPECT_EQ(tpl.old_tmplt_vers, "1.0b");
    EXPECT_EQ(tpl.new_tmplt_set, "");
    EXPECT_EQ(tpl.new_tmplt_vers, "");
}

TEST_F(HeaderTest, ANewCopyFillsTheNewFieldsAndNeverTheFlag) {
    write_file("index.tpl", "||header: modified=true tpl_set=kst_s2 tpl_version=2.0a||\n");
    TMPLT_INFO tpl;
    EXPECT_EQ(tpl_get_header_info(&tpl, "index.tpl", 1), 1);
    EXPECT_EQ(tpl.new_tmplt_set, "kst_s2");
    EXPECT_EQ(tpl.new_tmplt_vers, "2.0a");
    EXPECT_EQ(tpl.old_tmplt_set, "");
    EXPECT_EQ(tpl.modified, 0);
}

TEST_F(HeaderTest, OnTheFifthLineIsFound) {
    EXPECT_EQ(installed(std::string("1\n2\n\n4\n") + header_line).old_tmplt_set, "kst_s1");
    EXPECT_EQ(found, 1);
}

TEST_F(HeaderTest, OnTheSixthLineIsNotFound) {
    EXPECT_EQ(installed(std::string("1\n2\n\n4\n5\n") + header_line).old_tmplt_set, "");
    EXPECT_EQ(found, 0);
}

TEST_F(HeaderTest, PiecesOfALongLineCountAsLines) {
    const std::string four_pieces = std::string(4 * 511, 'x');
    installed(four_pieces + header_line);
    EXPECT_EQ(found, 1);
    installed(four_pieces + "x\n" + header_line);
    EXPECT_EQ(found, 0);
}

TEST_F(HeaderTest, AMarkCutByTheEndOfAPieceIsNotFound) {
    installed(std::string(505, 'x') + header_line);
    EXPECT_EQ(found, 0);
    installed(std::string(511, 'x') + header_line);
    EXPECT_EQ(found, 1);
}

TEST_F(HeaderTest, WhatStandsBeforeTheMarkIsDropped) {
    const TMPLT_INFO tpl =
        installed("<!-- a=b c=d ||header: modified=true tpl_set=plv_s1 tpl_version=3.1||-->\n");
    EXPECT_EQ(tpl.modified, 1);
    EXPECT_EQ(tpl.old_tmplt_set, "plv_s1");
    EXPECT_EQ(tpl.old_tmplt_vers, "3.1");
}

TEST_F(HeaderTest, TheFlagIsReadInAnyLetterCase) {
    for (const char *flag : {"true", "True", "TRUE", "tRuEst"}) {
        const TMPLT_INFO tpl = installed(std::string("||header: modified=") + flag +
                                         " tpl_set=kst_s1 tpl_version=1.0b||\n");
        EXPECT_EQ(tpl.modified, 1) << flag;
    }
}

TEST_F(HeaderTest, AnyOtherFlagIsNotModified) {
    for (const char *flag : {"false", "", "yes", "1", "tru", " true", "untrue"}) {
        const TMPLT_INFO tpl = installed(std::string("||header: modified=") + flag +
                                         " tpl_set=kst_s1 tpl_version=1.0b||\n");
        EXPECT_EQ(tpl.modified, 0) << flag;
    }
}

TEST_F(HeaderTest, AFalseFlagClearsTheRecords) {
    write_file("index.tpl", header_line);
    TMPLT_INFO tpl;
    tpl.modified = 1;
    tpl_get_header_info(&tpl, "index.tpl", 0);
    EXPECT_EQ(tpl.modified, 0);
}

struct malformed_header {
    const char *description;
    std::string_view line;
    const char *set;
    const char *version;
};

TEST_F(HeaderTest, WhatAMalformedLineLacksIsEmpty) {
    using namespace std::string_view_literals;
    const malformed_header cases[] = {
        {"the mark alone", "||header:\n", "", ""},
        {"the mark alone, cut file", "||header:", "", ""},
        {"one piece", "||header: modified=false\n", "", ""},
        {"no set", "||header: modified=false tpl_set=\n", "", ""},
        {"cut in the set", "||header: modified=false tpl_set=kst", "kst", ""},
        {"line end behind the set", "||header: modified=false tpl_set=kst_s1\r\n", "kst_s1", ""},
        {"no version", "||header: modified=false tpl_set=kst_s1 tpl_version=||\n", "kst_s1", ""},
        {"no equals sign before the version", "||header: modified=false tpl_set=kst_s1 2.0||\n",
         "kst_s1", ""},
        {"no bar", "||header: modified=false tpl_set=kst_s1 tpl_version=2.0a\r\n", "kst_s1",
         "2.0a"},
        {"cut in the version", "||header: modified=false tpl_set=kst_s1 tpl_version=2.", "kst_s1",
         "2."},
        {"two blanks before the version", "||header: modified=false tpl_set=kst_s1  v=2||\n",
         "kst_s1", "2"},
        {"blank behind the equals sign", "||header: modified=false tpl_set= tpl_version=2||\n", "",
         "2"},
        {"a NUL ends the text", "||header: modified=false tpl_set=ks\0t_s1 tpl_version=2||\n"sv,
         "ks", ""},
        {"a NUL before the mark", "\0||header: modified=false tpl_set=kst tpl_version=2||\n"sv,
         "kst", "2"},
    };
    for (const malformed_header &row : cases) {
        SCOPED_TRACE(row.description);
        const TMPLT_INFO tpl = installed(row.line);
        EXPECT_EQ(found, 1);
        EXPECT_EQ(tpl.modified, 0);
        EXPECT_EQ(tpl.old_tmplt_set, row.set);
        EXPECT_EQ(tpl.old_tmplt_vers, row.version);
    }
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

TEST_F(HeaderTest, AnEmptyFileHasNone) {
    installed("");
    EXPECT_EQ(found, 0);
}

TEST_F(HeaderTest, AFileThatCannotBeOpenedIsLoggedUnderTheRecordsName) {
    TMPLT_INFO tpl;
    tpl.name = "login.tpl";
    EXPECT_EQ(tpl_get_header_info(&tpl, "missing/login.tpl", 0), 0);
    EXPECT_EQ(log(), "Error: Can't open login.tpl, header information unobtainable\n");
}

TEST_F(HeaderTest, ADirectoryIsNoTemplate) {
    std::filesystem::create_directory("dir.tpl");
    TMPLT_INFO tpl;
    tpl.name = "dir.tpl";
    EXPECT_EQ(tpl_get_header_info(&tpl, "dir.tpl", 0), 0);
    EXPECT_EQ(log(), "Error: Can't open dir.tpl, header information unobtainable\n");
}

// Loading with the defaults.

struct default_set {
    const char *product;
    const char *old_set;
    const char *new_set;
};

TEST_F(HeaderTest, WithoutHeaderTheProductsDefaultsAreTaken) {
    const default_set rows[] = {
        {"kestrel", "kst_s1", "kst_s2"}, {"tanager", "tan_s1", "tan_s2"},
        {"plover", "plv_s1", "plv_s2"},  {"osprey", "plv_s1", "plv_s2"},
        {"KESTREL", "plv_s1", "plv_s2"}, {"", "plv_s1", "plv_s2"},
        {nullptr, "plv_s1", "plv_s2"},
    };
    for (const default_set &row : rows) {
        SCOPED_TRACE(row.old_set);
        const TMPLT_INFO old_copy = loaded("<html>\n", row.product, 0);
        EXPECT_EQ(found, 0);
        EXPECT_EQ(old_copy.old_tmplt_set, row.old_set);
        EXPECT_EQ(old_copy.old_tmplt_vers, "1.0a");
        EXPECT_EQ(old_copy.new_tmplt_set, "");
        const TMPLT_INFO new_copy = loaded("<html>\n", row.product, 1);
        EXPECT_EQ(found, 0);
        EXPECT_EQ(new_copy.new_tmplt_set, row.new_set);
        EXPECT_EQ(new_copy.new_tmplt_vers, "2.0a");
        EXPECT_EQ(new_copy.old_tmplt_set, "");
    }
}

TEST_F(HeaderTest, AnInstalledCopyWithoutHeaderCountsAsModified) {
    EXPECT_EQ(loaded("<html>\n", "kestrel", 0).modified, 1);
    EXPECT_EQ(loaded("<html>\n", "kestrel", 1).modified, 0);
}

TEST_F(HeaderTest, MissingHeadersAreLoggedAtDebugLevel) {
    set_loglvl(LOG_DEBUG);
    loaded("<html>\n", "kestrel", 0);
    loaded("<html>\n", "kestrel", 1);
    set_loglvl(LOG_ERROR);
    EXPECT_EQ(log(), "Debug: Old header info not found\nDebug: New header info not found\n");
}

TEST_F(HeaderTest, AnInstalledCopyWhoseChecksumAgreesIsNotModified) {
    EXPECT_EQ(loaded(expected_stamped(header_line), "kestrel", 0).modified, 0);
    EXPECT_EQ(found, 1);
}

TEST_F(HeaderTest, AnInstalledCopyWhoseChecksumDisagreesIsModified) {
    std::string content = expected_stamped(std::string(header_line) + "<html>\n");
    content[content.find("html")] = 'H';
    EXPECT_EQ(loaded(content, "kestrel", 0).modified, 1);
}

TEST_F(HeaderTest, AnInstalledCopyWithoutChecksumLineCountsAsModified) {
    EXPECT_EQ(loaded(std::string(header_line) + "<html>\n", "kestrel", 0).modified, 1);
    EXPECT_EQ(found, 1);
}

TEST_F(HeaderTest, AModifiedFlagStandsWhateverTheChecksum) {
    const std::string header = "||header: modified=true tpl_set=kst_s1 tpl_version=1.0b||\n";
    EXPECT_EQ(loaded(expected_stamped(header), "kestrel", 0).modified, 1);
}

TEST_F(HeaderTest, TheChecksumOfANewCopyIsNotLookedAt) {
    EXPECT_EQ(loaded(std::string(header_line) + "<html>\n", "kestrel", 1).modified, 0);
}

// Categories.

struct category_case {
    const char *old_set;
    const char *old_version;
    const char *new_set;
    const char *new_version;
    int category;          // not modified
    int modified_category; // modified
};

TEST(Category, FollowsSetsAndVersions) {
    const category_case rows[] = {
        {"kst_s1", "1.0a", "kst_s2", "2.0a", 1, 2}, // another set of the family, newer
        {"kst_s1", "9.9", "kst_s2", "1.0", 1, 2},   // the versions do not count then
        {"kst_s2", "1.0a", "kst_s1", "2.0a", 0, 0}, // older
        {"plv_s2", "2.0a", "kst_s2", "2.0a", 3, 3}, // another family
        {"kst", "1.0", "kst_s1", "1.0", 3, 3},      // a shorter name is another family
        {"", "1.0", "kst_s1", "1.0", 3, 3},          {"kst_s", "1.0", "kst_s1", "1.0", 1, 2},
        {"kst_s\xe4", "1.0", "kst_sz", "1.0", 0, 0}, // bytes compare unsigned
        {"kst_s2", "2.0a", "kst_s2", "2.0b", 1, 2},  // equal numbers: by their texts
        {"kst_s2", "2.0b", "kst_s2", "2.0a", 0, 0},  {"kst_s2", "2.0a", "kst_s2", "2.0a", 0, 0},
        {"kst_s2", "2.0a", "kst_s2", "2.1", 1, 2},   {"kst_s2", "2.1", "kst_s2", "2.0a", 0, 0},
        {"kst_s2", "9.0", "kst_s2", "10.0", 1, 2}, // by their numbers first
        {"kst_s2", "10.0", "kst_s2", "9.0", 0, 0},   {"kst_s2", "", "kst_s2", "0.1", 1, 2},
        {"kst_s2", "", "kst_s2", "", 0, 0},
    };
    for (const category_case &row : rows) {
        TMPLT_INFO tpl;
        tpl.old_tmplt_set = row.old_set;
        tpl.old_tmplt_vers = row.old_version;
        tpl.new_tmplt_set = row.new_set;
        tpl.new_tmplt_vers = row.new_version;
        SCOPED_TRACE(tpl.old_tmplt_set + " " + row.old_version + " to " + row.new_set + " " +
                     row.new_version);
        EXPECT_EQ(tpl_category(&tpl, "ignored"), row.category);
        tpl.modified = 1;
        EXPECT_EQ(tpl_category(&tpl, nullptr), row.modified_category);
    }
}

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
