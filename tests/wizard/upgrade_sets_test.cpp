// Upgrading tanager and osprey, whose templates come in sets, from release 3.1 to 3.2.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

const console_script images = {{"Where are the .gif", "@/html/vlimg"}};
const console_script replacing = images + answering("replace the old templates", "yes");

// "tpl_set NUMBER DIRECTORY/SET URL/SET SET Set".
std::string set_line(const std::string &key, const std::string &source, const std::string &set,
                     const std::string &directory) {
    return key + " " + set_number(source, set) + " " + directory + "/" + set + " /vlimg/" + set +
           " " + set + " Set\n";
}

// The lines of all sets, the default one first.
std::string set_lines(const std::string &key, const std::string &source,
                      const std::string &default_set, const std::string &directory) {
    std::string lines = set_line(key, source, default_set, directory);
    for (const std::string &set : set_names(source)) {
        lines += set == default_set ? "" : set_line(key, source, set, directory);
    }
    return lines;
}

// --- Without replacing the templates ---

using UpgradeTanager = upgraded_test<tanager>;

TEST_F(UpgradeTanager, WithoutReplacingTheSetsAreCopiedAsTreesWhichOverwritesInsideThem) {
    expect_kept_run(host, run_wizard(host, {}, images), {"html", "spool"});
}

TEST_F(UpgradeTanager, DebugLogNamesEachStep) {
    run_wizard(host, {"-debug"}, replacing);
    expect_kept("log", shown_log_without(
                           host, "dist/gxsetup.log",
                           {"INI: ", "DoCopy[", "Wild finding", "Find all files", "directory"}));
}

TEST_F(UpgradeTanager, WithoutReplacingTheNewIniNamesNoSets) {
    const std::string old = read_file("cgi-bin/tanager.ini");
    run_wizard(host, {}, images + no_to_both);
    EXPECT_EQ(read_file("cgi-bin/tanager.ini"), old);
    expect_kept("tanager.new", shown_file(host, "cgi-bin/tanager.new"));
}

TEST_F(UpgradeTanager, TemplatesBesideTheSetsAreClassifiedByTheirOwnFamily) {
    add_file("spool/tanager/notes.tpl", "no header\n");
    const wizard_run run =
        run_wizard(host, {}, images + no_to_both + answering("view these categories", "no"));
    EXPECT_THAT(run.transcript,
                HasSubstr("\nA copy of the list has been saved to your templates directory "
                          "as \"tmptlist.txt\"\n\n"
                          "\nPlease press enter to continue with the upgrade..."
                          "\nCopying new template files.....\n"));
    EXPECT_THAT(read_file("spool/tanager/tmptlist.txt"),
                EndsWith("\n\n"
                         "2. notes.tpl          Current template set: tan_s1 version 1.0a\n"
                         "                 Distribution template set: tan_s2 version 2.0a\n"));
}

TEST_F(UpgradeTanager, EveryNewFileBelongsToTheOwnerOfInstalledFiles) {
    run_wizard(host, {}, replacing + answering("merlin cgi", "yes"));
    expect_owned_site(host);
}

TEST_F(UpgradeTanager, AManualsDirectoryThatCannotBeMadeEndsIt) {
    edit_by_hand("cgi-bin/tanager.ini", "manual no/root");
    make_own("cgi-bin/tanager.ini");
    const wizard_run run = run_wizard(host, {}, images);
    expect_kept("screen", run.transcript);
    EXPECT_FALSE(is_there("cgi-bin/tanager.new"));
}

// --- Replacing the templates ---

TEST_F(UpgradeTanager, ReplacingCopiesTheSetsWithTheirCommonFilesButTheWordList) {
    const std::string sets = set_lines("tpl_set", "dist/tpl", "marble", "@/spool/tanager");
    expect_kept_run(host, run_wizard(host, {}, replacing + no_to_both), {"html", "spool"});
    const std::string ini = shown_file(host, "cgi-bin/tanager.new");
    expect_kept("tanager.new", ini.substr(0, ini.find("tpl_set ")));
    EXPECT_THAT(ini, EndsWith("\n" + sets));
}

TEST(UpgradeOsprey, ANewWmlPartLeavesItsFirstSetOutOfTheTemplateSets) {
    const upgrade_world host("osprey");
    add_file("dist/wap/pocket/index.tpl", "32 pocket deck");
    const std::string sets = set_lines("tpl_set", "dist/tpl", "marble", "@/spool/osprey");
    const std::string wap_sets = set_lines("tpl_set", "dist/wap", "wml", "@/spool/osprey");
    const std::string pocket = set_line("tpl_set", "dist/wap", "pocket", "@/spool/osprey");
    expect_kept_run(host, run_wizard(host, {}, replacing + answering("merlin cgi", "yes")),
                    {"cgi-bin", "spool/osprey/wml", "spool/osprey/pocket"});
    EXPECT_THAT(shown_file(host, "cgi-bin/osprey.new"),
                EndsWith("\nbulletin_path @/spool/osprey/bulletins\n" + sets));
    const std::string ini = shown_file(host, "cgi-bin/merlin.ini");
    expect_kept("merlin.ini", ini.substr(0, ini.find("tpl_set ")));
    EXPECT_THAT(ini, EndsWith("\n" + wap_sets));
    // The answers keep what the WML part needed.
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_THAT(saved, EndsWith("\nwap_templates @/spool/osprey/wml\n"
                                "wap_vlimg /vlimg/wml\n" +
                                pocket));
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/osprey/wml\n"));
    EXPECT_THAT(saved, HasSubstr("\nvlimg /vlimg/wml\n"));
}

TEST(UpgradeOsprey, AnOldWmlIniStaysAndSoDoTheTemplateSets) {
    const upgrade_world host("osprey", "yes");
    const std::string old = read_file("cgi-bin/merlin.ini");
    const std::string sets = set_lines("tpl_set", "dist/tpl", "marble", "@/spool/osprey");
    expect_kept("screen", run_wizard(host, {}, replacing + no_to_both).transcript);
    EXPECT_EQ(read_file("cgi-bin/merlin.ini"), old);
    EXPECT_EQ(read_file("cgi-bin/merlin.cgi"), read_file("dist/osprey.cgi"));
    const std::string saved = shown_file(host, "dist/gxsetup.dat");
    EXPECT_THAT(saved, HasSubstr("\n" + sets));
    EXPECT_THAT(saved, HasSubstr("\ntemplates @/spool/osprey/marble\n"));
}

TEST(UpgradeOsprey, WithoutReplacingTheWmlSetsAreNotCopied) {
    const upgrade_world host("osprey", "yes");
    expect_kept("screen", run_wizard(host, {}, images + no_to_both).transcript);
    EXPECT_EQ(read_file("spool/osprey/wml/index.tpl"), "31 wap/wml/index.tpl");
    EXPECT_EQ(read_file("spool/osprey/marble/index.tpl"), "32 tpl/marble/index.tpl");
}

} // namespace
