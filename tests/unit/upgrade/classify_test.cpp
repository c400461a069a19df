#include "upgrade/classify.h"

#include "support/expected.h"
#include "support/tree.h"
#include "unit/upgrade/upgrade_world.h"

#include <gmock/gmock-matchers.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::HasSubstr;

class Classification : public UpgradeWorld {
  protected:
    // Runs do_upgrade_list; what it shows when `typed` is all that is entered must be the kept
    // console.
    void expect_list(const std::string &typed) {
        expect_shown(0, typed, [&] { return do_upgrade_list(&ini); });
    }

    // The same for any other code, which must give `result`.
    void expect_shown(int result, const std::string &typed, const std::function<int()> &code) {
        feed_console(typed);
        expect_kept("console", with_at(shown(result, code)));
    }

    // An installed template and the one of the distribution.
    void add_templates(const std::string &old_one, const std::string &new_one) const {
        write_file(installed("a.tpl"), old_one);
        write_file("tpl/a.tpl", new_one);
    }

    static inline const std::string new_template = stamped("kst_s2", "2.1", "new");

    static TMPLT_INFO entry(const std::string &name, int category) {
        return {.name = name,
                .category = category,
                .old_tmplt_vers = "1.9",
                .new_tmplt_vers = "2.1",
                .old_tmplt_set = "old_" + name.substr(0, 1),
                .new_tmplt_set = "new_" + name.substr(0, 1),
                .modified = 0};
    }

    // What the writing of the list shows; its result must be `result`.
    std::string saved(int result, std::span<const TMPLT_INFO> templates) {
        return with_at(shown(result, [&] { return save_upgrade_list(&ini, templates); }));
    }

    static std::string categories_of(std::span<const TMPLT_INFO> templates) {
        std::string categories;
        for (const TMPLT_INFO &tpl : templates) {
            categories += std::to_string(tpl.category) + " ";
        }
        return categories;
    }

    // The part of a list behind its header.
    static std::string entries_of(const std::string &path) {
        const std::string content = read_file(path);
        const std::size_t end = content.find("\n\n");
        return end == std::string::npos ? content : content.substr(end + 2);
    }
};

using DoUpgradeList = Classification;
using PrintUpgradeList = Classification;
using SafeSave = Classification;
using SaveUpgradeList = Classification;

} // namespace

// --- The list as a whole ---

TEST_F(DoUpgradeList, WithoutInstalledTemplatesSaysSoAndAsksNothing) {
    write_file("tpl/a.tpl", stamped("kst_s2", "2.1", "new"));
    write_file(installed("a.gif"), "no template");
    set_loglvl(LOG_INFO);
    feed_console("no\n");
    EXPECT_EQ(shown(0, [&] { return do_upgrade_list(&ini); }),
              "No files found in " + installed() + "\n");
    EXPECT_EQ(log(), "Info:  No files found in " + installed() + "\n");
    EXPECT_FALSE(is_there("tmptlist.txt"));
}

TEST_F(DoUpgradeList, WithNothingNewerPrintsAndAsksNothing) {
    add_templates(stamped("kst_s2", "2.1", "old"), new_template);
    write_file("tmptlist.txt", "an older list");
    feed_console("no\n");
    EXPECT_EQ(shown(0, [&] { return do_upgrade_list(&ini); }), "");
    EXPECT_EQ(read_file("tmptlist.txt"), "an older list");
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(DoUpgradeList, AllSafeAndCopiedLeavesNoListButStillWaits) {
    add_templates(stamped("kst_s2", "2.0a", "old"), new_template);
    write_file("tmptlist.txt", "an older list");
    expect_list("no\nyes\n\n");
    EXPECT_EQ(read_file(installed("a.tpl")), read_file("tpl/a.tpl"));
    EXPECT_FALSE(is_there("tmptlist.txt"));
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(DoUpgradeList, DecliningTheViewStillOffersTheSafeOnesAndWritesTheList) {
    add_templates(stamped("kst_s2", "2.0a", "old"), new_template);
    expect_list("no\nno\n\n");
    EXPECT_EQ(entries_of(installed("tmptlist.txt")),
              "1. a.tpl              Current template set: kst_s2 version 2.0a\n"
              "                 Distribution template set: kst_s2 version 2.1\n");
    EXPECT_EQ(read_file(installed("a.tpl")), stamped("kst_s2", "2.0a", "old"));
}

TEST_F(DoUpgradeList, EditedTemplatesAloneOfferNoReplacement) {
    add_templates(stamped("kst_s2", "2.0a", "old") + "by hand\n", new_template);
    expect_list("no\n\n");
    EXPECT_EQ(read_file(installed("tmptlist.txt")), read_file("tmptlist.txt"));
}

TEST_F(DoUpgradeList, TheSetIsThatOfTheProductWhereAHeaderIsMissing) {
    const std::vector<std::pair<const char *, std::string>> families = {
        {"kestrel", "kst"}, {"plover", "plv"}, {"tanager", "tan"}, {"osprey", "plv"}};
    for (const auto &[product, family] : families) {
        set_answer(&ini, D_PROD_NAME, product);
        write_file(installed("a.tpl"), "no header\n");
        write_file("tpl/a.tpl", "no header either\n");
        feed_console("no\n\n");
        shown(0, [&] { return do_upgrade_list(&ini); });
        EXPECT_EQ(entries_of("tmptlist.txt"),
                  "2. a.tpl              Current template set: " + family +
                      "_s1 version 1.0a\n                 Distribution template set: " + family +
                      "_s2 version 2.0a\n")
            << product;
    }
}

TEST_F(DoUpgradeList, TheEndOfInputEndsThePause) {
    write_file(installed("a.tpl"), "no header\n");
    expect_list("no\n");
}

TEST_F(DoUpgradeList, AThousandTemplatesAreLookedAtAndTheLogTellsOfMore) {
    for (int number = 0; number < 1001; number++) {
        write_file(installed(formatted("%d.tpl", number)), "");
    }
    feed_console("no\n\n");
    shown(0, [&] { return do_upgrade_list(&ini); });
    EXPECT_EQ(count_of("\n2. ", read_file("tmptlist.txt")), 1000);
    EXPECT_THAT(log(), HasSubstr("Error: MAXWILD exceeded\n"));
}

// --- On the screen ---

TEST_F(PrintUpgradeList, SectionsComeInTheOrderThreeTwoOneAndEntriesInThatOfTheList) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1), entry("b.tpl", 3), entry("c.tpl", 0),
                                    entry("d.tpl", 2), entry("e.tpl", 1), entry("f.tpl", 3)};
    expect_shown(1, "yes\n", [&] { return print_upgrade_list(templates); });
}

TEST_F(PrintUpgradeList, AnEmptySectionSaysSo) {
    expect_shown(1, "\n", [] { return print_upgrade_list({}); });
}

TEST_F(PrintUpgradeList, ANameIsCutToFourteenCharactersHereAndInTheFile) {
    const TMPLT_INFO templates[] = {entry("abcdefghij.tpl", 2), entry("abcdefghijk.tpl", 2)};
    expect_shown(1, "yes\n", [&] { return print_upgrade_list(templates); });
    EXPECT_EQ(saved(1, templates), ".");
    expect_kept("tmptlist.txt", read_file("tmptlist.txt"));
}

TEST_F(PrintUpgradeList, DecliningShowsNoSection) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    expect_shown(1, "n\n", [&] { return print_upgrade_list(templates); });
}

// --- The safe replacement ---

TEST_F(SafeSave, ReplacesCategoryOneAloneAndTakesItOutOfTheList) {
    shell("for name in a b c; do printf new >tpl/$name.tpl; printf old >../there/$name.tpl; done");
    TMPLT_INFO templates[] = {entry("a.tpl", 2), entry("b.tpl", 1), entry("c.tpl", 3)};
    EXPECT_EQ(shown(1, [&] { return safe_save(&ini, templates); }),
              "\nUpdating unmodified template files.");
    EXPECT_EQ(read_file(installed("a.tpl")) + read_file(installed("b.tpl")) +
                  read_file(installed("c.tpl")),
              "oldnewold");
    EXPECT_EQ(mode_of(installed("b.tpl")), "0660");
    EXPECT_EQ(categories_of(templates), "2 0 3 ");
}

TEST_F(SafeSave, AFailedCopyIsReportedKeepsItsCategoryAndTheRestIsTried) {
    write_file("tpl/b.tpl", "new");
    write_file("tpl/c.tpl", "new");
    std::filesystem::create_directory(installed("b.tpl"));
    TMPLT_INFO templates[] = {entry("a.tpl", 1), entry("b.tpl", 1), entry("c.tpl", 1)};
    expect_shown(0, "", [&] { return safe_save(&ini, templates); });
    EXPECT_EQ(read_file(installed("c.tpl")), "new");
    EXPECT_EQ(categories_of(templates), "1 1 0 ");
}

// --- The list file ---

TEST_F(SaveUpgradeList, HoldsHeaderAndEntriesInTheOrderOfTheList) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1), entry("b.tpl", 3), entry("c.tpl", 0),
                                    entry("d.tpl", 2)};
    EXPECT_EQ(saved(1, templates), ".");
    expect_kept("tmptlist.txt", read_file("tmptlist.txt"));
    EXPECT_EQ(read_file(installed("tmptlist.txt")), read_file("tmptlist.txt"));
    EXPECT_EQ(mode_of(installed("tmptlist.txt")), "0660");
}

TEST_F(SaveUpgradeList, WithNothingToListRemovesTheFileAndIsNoCopy) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 0)};
    write_file("tmptlist.txt", "an older list");
    write_file(installed("tmptlist.txt"), "an older copy");
    EXPECT_EQ(saved(0, templates), "");
    EXPECT_EQ(names_below("."), string_set{"tpl"});
    EXPECT_EQ(read_file(installed("tmptlist.txt")), "an older copy");
}

TEST_F(SaveUpgradeList, AFileThatCannotBeOpenedIsReportedWithTheSystemsText) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    std::filesystem::create_directory("tmptlist.txt");
    EXPECT_EQ(saved(0, templates), "Error: Can't open \"tmptlist.txt\": Is a directory\n");
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(SaveUpgradeList, AFullDiskIsReportedAndNothingIsCopied) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    std::filesystem::create_symlink("/dev/full", "tmptlist.txt");
    EXPECT_EQ(saved(0, templates),
              "Error: Can't write \"tmptlist.txt\": No space left on device\n");
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(SaveUpgradeList, ACopyThatFailsIsReported) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    std::filesystem::create_directory(installed("tmptlist.txt"));
    EXPECT_EQ(saved(0, templates),
              "\n" + std::string(79, '-') +
                  "\nError: Can't write to \"@/tmptlist.txt\": Is a directory\n\n");
    EXPECT_EQ(entries_of("tmptlist.txt"),
              "1. a.tpl              Current template set: old_a version 1.9\n"
              "                 Distribution template set: new_a version 2.1\n");
}
