#include "upgrade/classify.h"

#include "unit/upgrade/upgrade_world.h"

namespace {

class Classification : public UpgradeWorld {
  protected:
    // What do_upgrade_list shows when `typed` is all that is entered.
    std::string list_shown(const std::string &typed) {
        feed_console(typed);
        return shown(0, [&] { return do_upgrade_list(&ini); });
    }

    static TMPLT_INFO entry(const std::string &name, int category) {
        return {.name = name,
                .category = category,
                .old_tmplt_vers = "1.9",
                .new_tmplt_vers = "2.1",
                .old_tmplt_set = "old_" + name.substr(0, 1),
                .new_tmplt_set = "new_" + name.substr(0, 1),
                .modified = 0};
    }

    static std::string listed(const std::string &number, const std::string &name,
                              const std::string &letter) {
        return number + ". " + name + "     Current template set: old_" + letter +
               " version 1.9\n"
               "                 Distribution template set: new_" +
               letter + " version 2.1\n";
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

const std::string found_text =
    std::string(78, '-') +
    "\n"
    "gxsetup has scanned your template directory, comparing them to the templates\n"
    "in the current distribution set and has found some templates that have an\n"
    "upgraded template available. These templates have been put into one of three\n"
    "categories:\n"
    "1. Templates that have not been modified and are safe to change now.\n"
    "2. Templates have been modified but need to be inspected for any changes.\n"
    "3. Templates belonging to a different template set from the ones currently.\n"
    "   in the distribution set.\n"
    "\n"
    "Do you want to view these categories now [YES]? ";

const std::string safe_question =
    "\n"
    "Do you want to replace the templates that can be safely updated\n"
    "(category 1 templates)[YES]? ";

const std::string press_enter = "\nPlease press enter to continue with the upgrade...";

const std::string saved_note =
    "\nA copy of the list has been saved to your templates directory as \"tmptlist.txt\"\n\n";

} // namespace

// --- The list as a whole ---

TEST_F(DoUpgradeList, WithoutInstalledTemplatesSaysSoAndAsksNothing) {
    write_file("tpl/a.tpl", stamped("kst_s2", "2.1", "new"));
    write_file(installed("a.gif"), "no template");
    set_loglvl(LOG_INFO);
    EXPECT_EQ(list_shown("no\n"), "No files found in " + installed() + "\n");
    EXPECT_EQ(log(), "Info:  No files found in " + installed() + "\n");
    EXPECT_FALSE(is_there("tmptlist.txt"));
}

TEST_F(DoUpgradeList, WithNothingNewerPrintsAndAsksNothing) {
    write_file(installed("a.tpl"), stamped("kst_s2", "2.1", "old"));
    write_file("tpl/a.tpl", stamped("kst_s2", "2.1", "new"));
    write_file("tmptlist.txt", "an older list");
    EXPECT_EQ(list_shown("no\n"), "");
    EXPECT_EQ(read_file("tmptlist.txt"), "an older list");
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(DoUpgradeList, AllSafeAndCopiedLeavesNoListButStillWaits) {
    write_file(installed("a.tpl"), stamped("kst_s2", "2.0a", "old"));
    write_file("tpl/a.tpl", stamped("kst_s2", "2.1", "new"));
    write_file("tmptlist.txt", "an older list");
    EXPECT_EQ(list_shown("no\nyes\n\n"),
              found_text + safe_question + "\nUpdating unmodified template files." + press_enter);
    EXPECT_EQ(read_file(installed("a.tpl")), read_file("tpl/a.tpl"));
    EXPECT_FALSE(is_there("tmptlist.txt"));
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(DoUpgradeList, DecliningTheViewStillOffersTheSafeOnesAndWritesTheList) {
    write_file(installed("a.tpl"), stamped("kst_s2", "2.0a", "old"));
    write_file("tpl/a.tpl", stamped("kst_s2", "2.1", "new"));
    EXPECT_EQ(list_shown("no\nno\n\n"),
              found_text + safe_question + "." + saved_note + press_enter);
    EXPECT_EQ(entries_of(installed("tmptlist.txt")),
              "1. a.tpl              Current template set: kst_s2 version 2.0a\n"
              "                 Distribution template set: kst_s2 version 2.1\n");
    EXPECT_EQ(read_file(installed("a.tpl")), stamped("kst_s2", "2.0a", "old"));
}

TEST_F(DoUpgradeList, EditedTemplatesAloneOfferNoReplacement) {
    write_file(installed("a.tpl"), stamped("kst_s2", "2.0a", "old") + "by hand\n");
    write_file("tpl/a.tpl", stamped("kst_s2", "2.1", "new"));
    EXPECT_EQ(list_shown("no\n\n"), found_text + "." + saved_note + press_enter);
    EXPECT_EQ(read_file(installed("tmptlist.txt")), read_file("tmptlist.txt"));
}

TEST_F(DoUpgradeList, TheSetIsThatOfTheProductWhereAHeaderIsMissing) {
    struct product_sets {
        const char *product;
        const char *family;
    };
    for (const auto &[product, family] : {product_sets{"kestrel", "kst"},
                                          {"plover", "plv"},
                                          {"tanager", "tan"},
                                          {"osprey", "plv"}}) {
        set_answer(&ini, D_PROD_NAME, product);
        write_file(installed("a.tpl"), "no header\n");
        write_file("tpl/a.tpl", "no header either\n");
        list_shown("no\n\n");
        EXPECT_EQ(entries_of("tmptlist.txt"),
                  std::string("2. a.tpl              Current template set: ") + family +
                      "_s1 version 1.0a\n"
                      "                 Distribution template set: " +
                      family + "_s2 version 2.0a\n")
            << product;
    }
}

TEST_F(DoUpgradeList, ATemplateThatWasDroppedIsComparedWithTheDefaultsAndItsCopyFailsOnce) {
    write_file(installed("a.tpl"), stamped("kst_s1", "1.9", "old"));
    EXPECT_EQ(list_shown("no\n\n\n"),
              found_text + safe_question +
                  "\nUpdating unmodified template files"
                  "Error: Can't copy ./tpl/a.tpl: No such file or directory\n"
                  "Error: Can't copy ./tpl/a.tpl\n"
                  "Error: Can't do safe save\n." +
                  saved_note + press_enter);
    EXPECT_EQ(entries_of("tmptlist.txt"),
              "1. a.tpl              Current template set: kst_s1 version 1.9\n"
              "                 Distribution template set: kst_s2 version 2.0a\n");
}

TEST_F(DoUpgradeList, TheEndOfInputEndsThePause) {
    write_file(installed("a.tpl"), "no header\n");
    EXPECT_EQ(list_shown("no\n"), found_text + "." + saved_note + press_enter);
}

TEST_F(DoUpgradeList, AThousandTemplatesAreLookedAtAndTheLogTellsOfMore) {
    for (int number = 0; number < 1001; number++) {
        write_file(installed(formatted("%d.tpl", number)), "");
    }
    list_shown("no\n\n");
    const std::string list = read_file("tmptlist.txt");
    std::size_t count = 0;
    for (std::size_t at = list.find("\n2. "); at != std::string::npos;
         at = list.find("\n2. ", at + 1)) {
        count++;
    }
    EXPECT_EQ(count, 1000U);
    EXPECT_NE(log().find("Error: MAXWILD exceeded\n"), std::string::npos);
}

// --- On the screen ---

TEST_F(PrintUpgradeList, SectionsComeInTheOrderThreeTwoOneAndEntriesInThatOfTheList) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1), entry("b.tpl", 3), entry("c.tpl", 0),
                                    entry("d.tpl", 2), entry("e.tpl", 1), entry("f.tpl", 3)};
    feed_console("yes\n");
    const auto lines = [](const std::string &name, const std::string &letter) {
        return name + "              Current template set: old_" + letter +
               " version 1.9\n"
               "              Distribution template set: new_" +
               letter + " version 2.1\n";
    };
    EXPECT_EQ(shown(1, [&] { return print_upgrade_list(templates); }),
              found_text + "\n" + std::string(77, '-') +
                  "\n"
                  "Templates that belong to a different template set from the ones currently in\n"
                  "the distribution set:\n\n" +
                  lines("b.tpl", "b") + lines("f.tpl", "f") + "\n" + std::string(77, '-') +
                  "\n"
                  "Templates that have been modified but have an upgrade available and should be\n"
                  "inspected for any changes:\n\n" +
                  lines("d.tpl", "d") + "\n" + std::string(77, '-') +
                  "\n"
                  "Templates that have not been modified but have an upgrade available and can be\n"
                  "upgraded safely:\n\n" +
                  lines("a.tpl", "a") + lines("e.tpl", "e") + std::string(77, '-'));
}

TEST_F(PrintUpgradeList, AnEmptySectionSaysSo) {
    feed_console("\n");
    EXPECT_EQ(shown(1, [] { return print_upgrade_list({}); }),
              found_text + "\n" + std::string(77, '-') +
                  "\n"
                  "Templates that belong to a different template set from the ones currently in\n"
                  "the distribution set:\n\n"
                  "No files in this category\n"
                  "\n" +
                  std::string(77, '-') +
                  "\n"
                  "Templates that have been modified but have an upgrade available and should be\n"
                  "inspected for any changes:\n\n"
                  "No files in this category\n"
                  "\n" +
                  std::string(77, '-') +
                  "\n"
                  "Templates that have not been modified but have an upgrade available and can be\n"
                  "upgraded safely:\n\n"
                  "No files in this category\n" +
                  std::string(77, '-'));
}

TEST_F(PrintUpgradeList, ANameIsCutToFourteenCharactersHereAndInTheFile) {
    const TMPLT_INFO templates[] = {entry("abcdefghij.tpl", 2), entry("abcdefghijk.tpl", 2)};
    feed_console("yes\n");
    const std::string text = shown(1, [&] { return print_upgrade_list(templates); });
    EXPECT_NE(text.find("\n\nabcdefghij.tpl     Current template set: old_a version 1.9\n"),
              std::string::npos);
    EXPECT_NE(text.find("\nabcdefghijk.tp     Current template set: old_a version 1.9\n"),
              std::string::npos);
    EXPECT_EQ(shown(1, [&] { return save_upgrade_list(&ini, templates); }), ".");
    EXPECT_EQ(entries_of("tmptlist.txt"),
              listed("2", "abcdefghij.tpl", "a") + listed("2", "abcdefghijk.tp", "a"));
}

TEST_F(PrintUpgradeList, DecliningShowsNoSection) {
    feed_console("n\n");
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    EXPECT_EQ(shown(1, [&] { return print_upgrade_list(templates); }), found_text);
}

// --- The safe replacement ---

TEST_F(SafeSave, ReplacesCategoryOneAloneAndTakesItOutOfTheList) {
    for (const char *name : {"a.tpl", "b.tpl", "c.tpl"}) {
        write_file(std::string("tpl/") + name, "new");
        write_file(installed(name), "old");
    }
    TMPLT_INFO templates[] = {entry("a.tpl", 2), entry("b.tpl", 1), entry("c.tpl", 3)};
    EXPECT_EQ(shown(1, [&] { return safe_save(&ini, templates); }),
              "\nUpdating unmodified template files.");
    EXPECT_EQ(read_file(installed("a.tpl")) + read_file(installed("b.tpl")) +
                  read_file(installed("c.tpl")),
              "oldnewold");
    EXPECT_EQ(mode_of(installed("b.tpl")), "0660");
    EXPECT_EQ(templates[0].category, 2);
    EXPECT_EQ(templates[1].category, 0);
    EXPECT_EQ(templates[2].category, 3);
}

TEST_F(SafeSave, AFailedCopyIsReportedKeepsItsCategoryAndTheRestIsTried) {
    write_file("tpl/b.tpl", "new");
    write_file("tpl/c.tpl", "new");
    std::filesystem::create_directory(installed("b.tpl"));
    TMPLT_INFO templates[] = {entry("a.tpl", 1), entry("b.tpl", 1), entry("c.tpl", 1)};
    EXPECT_EQ(shown(0, [&] { return safe_save(&ini, templates); }),
              "\nUpdating unmodified template files"
              "Error: Can't copy ./tpl/a.tpl: No such file or directory\n"
              "Error: Can't copy ./tpl/a.tpl\n"
              "\n" +
                  std::string(79, '-') + "\nError: Can't write to \"" + installed("b.tpl") +
                  "\": Is a directory\n\n"
                  "Error: Can't copy ./tpl/b.tpl\n"
                  ".");
    EXPECT_EQ(read_file(installed("c.tpl")), "new");
    EXPECT_EQ(templates[0].category, 1);
    EXPECT_EQ(templates[1].category, 1);
    EXPECT_EQ(templates[2].category, 0);
}

// --- The list file ---

TEST_F(SaveUpgradeList, HoldsHeaderAndEntriesInTheOrderOfTheList) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1), entry("b.tpl", 3), entry("c.tpl", 0),
                                    entry("d.tpl", 2)};
    EXPECT_EQ(shown(1, [&] { return save_upgrade_list(&ini, templates); }), ".");
    EXPECT_EQ(read_file("tmptlist.txt"),
              "# \"tmptlist.txt\" created by gxsetup, version 3.0h\n"
              "#\n"
              "# Categories:\n"
              "# 1. These files have not been modified, are from the same template set\n"
              "#    as those in the distribution set and have an upgrade available.\n"
              "#    - Files can be easily upgraded to the new template.\n"
              "# 2. These files have been modified, are from the same template set as\n"
              "#    those in the distribution set and have an upgrade available\n"
              "#    - Files should be inspected for changes.\n"
              "# 3. These files belong to a different template set to the one that is\n"
              "#    in the current distribution set\n"
              "\n" +
                  listed("1", "a.tpl         ", "a") + listed("3", "b.tpl         ", "b") +
                  listed("2", "d.tpl         ", "d"));
    EXPECT_EQ(read_file(installed("tmptlist.txt")), read_file("tmptlist.txt"));
    EXPECT_EQ(mode_of(installed("tmptlist.txt")), "0660");
}

TEST_F(SaveUpgradeList, WithNothingToListRemovesTheFileAndIsNoCopy) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 0)};
    write_file("tmptlist.txt", "an older list");
    write_file(installed("tmptlist.txt"), "an older copy");
    EXPECT_EQ(shown(0, [&] { return save_upgrade_list(&ini, templates); }), "");
    EXPECT_EQ(names_below("."), string_set{"tpl"});
    EXPECT_EQ(read_file(installed("tmptlist.txt")), "an older copy");
}

TEST_F(SaveUpgradeList, AFileThatCannotBeOpenedIsReportedWithTheSystemsText) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    std::filesystem::create_directory("tmptlist.txt");
    EXPECT_EQ(shown(0, [&] { return save_upgrade_list(&ini, templates); }),
              "Error: Can't open \"tmptlist.txt\": Is a directory\n");
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(SaveUpgradeList, AFullDiskIsReportedAndNothingIsCopied) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    std::filesystem::create_symlink("/dev/full", "tmptlist.txt");
    EXPECT_EQ(shown(0, [&] { return save_upgrade_list(&ini, templates); }),
              "Error: Can't write \"tmptlist.txt\": No space left on device\n");
    EXPECT_FALSE(is_there(installed("tmptlist.txt")));
}

TEST_F(SaveUpgradeList, ACopyThatFailsIsReported) {
    const TMPLT_INFO templates[] = {entry("a.tpl", 1)};
    std::filesystem::create_directory(installed("tmptlist.txt"));
    EXPECT_EQ(shown(0, [&] { return save_upgrade_list(&ini, templates); }),
              "\n" + std::string(79, '-') + "\nError: Can't write to \"" +
                  installed("tmptlist.txt") + "\": Is a directory\n\n");
    EXPECT_EQ(entries_of("tmptlist.txt"), listed("1", "a.tpl         ", "a"));
}
