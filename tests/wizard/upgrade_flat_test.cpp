// Upgrading kestrel and plover from release 3.1 to 3.2: templates, images, programs, .ini files.

#include "support/tree.h"
#include "wizard/dialogues.h"
#include "wizard/screens.h"

#include <filesystem>
#include <map>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

const console_script replacing = no_to_both + answering("replace the old templates", "yes");

// The questions about newer templates: whether they are viewed and the safe ones replaced.
console_script newer_templates(const std::string &view, const std::string &replace) {
    return no_to_both +
           console_script{{"view these categories", view}, {"safely updated", replace}};
}

// What an upgrade shows between "Please wait" and the outcome.
std::string steps_of(const wizard_run &run) {
    return part_between(run.transcript, "\nPlease wait while gxsetup upgrades kestrel\n",
                        rule + "Upgrade ");
}

std::string end_of_upgrade(const wizard_run &run) {
    return run.transcript.substr(run.transcript.find(rule + "Upgrade "));
}

// A template's lines in the list, whose category, set and version are these.
std::string list_entry(const std::string &name, const std::string &category,
                       const std::string &set) {
    return category + ". " + (name + std::string(19 - name.size(), ' ')) +
           "Current template set: kst_s2 version 2.0a\n"
           "                 Distribution template set: " +
           set + "\n";
}

// The lines of a list, in the order in which the system lists the installed templates.
std::string in_listed_order(const std::string &directory,
                            const std::map<std::string, std::string> &entries) {
    std::string lines;
    for (const std::string &name : listed_names(directory)) {
        lines += entries.contains(name) ? entries.at(name) : "";
    }
    return lines;
}

const std::map<std::string, std::string> left_entries = {
    {"moved.tpl", list_entry("moved.tpl", "3", "pad_s1 version 1.0")},
    {"edited.tpl", list_entry("edited.tpl", "2", "kst_s2 version 2.1")}};

// The texts of the installed templates, in the order of their names.
std::vector<std::string> installed_texts(const std::string &directory) {
    std::vector<std::string> texts;
    for (const char *name :
         {"brandnew.tpl", "clean.tpl", "dropped.tpl", "edited.tpl", "moved.tpl", "same.tpl"}) {
        texts.push_back(template_text(directory + "/" + name));
    }
    return texts;
}

using UpgradeKestrel = dialogue_test<upgraded_test<kestrel>>;
using UpgradeWithWml = upgraded_test<kestrel, yes>;
using UpgradePlover = upgraded_test<plover>;

const std::vector<dialogue> dialogues = {
    {"UpgradeKestrel.WithNothingNewerNothingIsAskedListedOrWaitedFor",
     "cd spool/kestrel; rm clean.tpl edited.tpl moved.tpl", no_to_both, whole_screen,
     "dist/tmptlist.txt"},
    {"UpgradeKestrel.WithoutInstalledTemplatesThatIsSaidAndNothingAsked", "rm spool/kestrel/*.tpl",
     no_to_both, whole_screen, "dist/tmptlist.txt"},
    {"UpgradeKestrel.AListThatCannotBeOpenedSkipsTheConfirmationAlone", "mkdir dist/tmptlist.txt",
     newer_templates("no", "no")},
};

const int registered = register_rows<UpgradeKestrel>(dialogues);

// --- Without replacing the templates ---

TEST_F(UpgradeKestrel, EnterThroughoutHoldsThisDialogue) {
    const std::string edited = read_file("spool/kestrel/edited.tpl");
    expect_kept_run(host, run_wizard(host, {}, {}));
    EXPECT_EQ(installed_texts("spool/kestrel"),
              (std::vector<std::string>{"brand new", "new clean", "old dropped", "old edited",
                                        "old moved", "old same"}));
    EXPECT_EQ(read_file("spool/kestrel/edited.tpl"), edited);
}

TEST_F(UpgradeKestrel, SavedAnswersHoldTheUpgradeAndNoneOfTheOneRunAnswers) {
    run_wizard(host, {}, {});
    expect_kept("gxsetup.dat", shown_file(host, "dist/gxsetup.dat"));
    EXPECT_EQ(read_file("spool/kestrel/gxsetup.dat"), read_file("dist/gxsetup.dat"));
}

TEST_F(UpgradeKestrel, ListHoldsWhatIsLeftInTheOrderOfTheDirectoryAndACopyIsInstalled) {
    const std::string lines = in_listed_order("spool/kestrel", left_entries);
    run_wizard(host, {}, no_to_both);
    EXPECT_THAT(read_file("spool/kestrel/tmptlist.txt"), EndsWith("\n\n" + lines));
    EXPECT_THAT(read_file("dist/tmptlist.txt"), EndsWith("\n\n" + lines));
}

TEST_F(UpgradeKestrel, DecliningTheViewStillOffersTheSafeReplacementAndWritesTheList) {
    std::map<std::string, std::string> entries = left_entries;
    entries["clean.tpl"] = list_entry("clean.tpl", "1", "kst_s2 version 2.1");
    const std::string lines = in_listed_order("spool/kestrel", entries);
    expect_kept("steps", steps_of(run_wizard(host, {}, newer_templates("no", "no"))));
    EXPECT_THAT(read_file("spool/kestrel/tmptlist.txt"), EndsWith("\n\n" + lines));
    EXPECT_EQ(template_text("spool/kestrel/clean.tpl"), "old clean");
}

TEST_F(UpgradeKestrel, WithSafeTemplatesAloneTheListIsDeletedButThePauseComes) {
    shell("cd spool/kestrel; rm edited.tpl moved.tpl");
    // Beside the new templates, the two that were missing are copied.
    expect_kept("steps", steps_of(run_wizard(host, {}, newer_templates("no", "yes"))));
    EXPECT_FALSE(is_there("dist/tmptlist.txt"));
    EXPECT_FALSE(is_there("spool/kestrel/tmptlist.txt"));
    EXPECT_EQ(template_text("spool/kestrel/clean.tpl"), "new clean");
}

TEST_F(UpgradeKestrel, ASafeTemplateThatWasDroppedFailsItsCopyAndTheUpgradeSucceeds) {
    add_templates(host, "spool/kestrel", {{"dropped.tpl", "kst_s1", "1.9", "old dropped"}});
    shell("cd spool/kestrel; rm clean.tpl edited.tpl moved.tpl");
    expect_kept("screen", run_wizard(host, {}, newer_templates("no", "yes")).transcript);
    EXPECT_EQ(template_text("spool/kestrel/dropped.tpl"), "old dropped");
    EXPECT_THAT(read_file("spool/kestrel/tmptlist.txt"),
                EndsWith("\n\n1. dropped.tpl        Current template set: kst_s1 version 1.9\n"
                         "                 Distribution template set: kst_s2 version 2.0a\n"));
}

TEST_F(UpgradeKestrel, LogTellsEachStep) {
    run_wizard(host, {}, {});
    expect_kept("log", shown_log(host, "dist/gxsetup.log"));
}

TEST_F(UpgradeKestrel, DebugLogNamesEachStep) {
    run_wizard(host, {"-debug"}, {});
    expect_kept("log", shown_log_without(host, "dist/gxsetup.log",
                                         {"INI: ", "DoCopy[", "Wild finding", "Find all files",
                                          "directory \"", "\": "}));
}

// --- The .ini file ---

TEST_F(UpgradeKestrel, TheNewIniLiesBesideTheOldOneWhichStays) {
    edit_by_hand("cgi-bin/kestrel.ini", "by hand");
    const std::string old = read_file("cgi-bin/kestrel.ini");
    run_wizard(host, {}, {});
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n"
                                        "0644 cgi-bin/kestrel.new\n");
    EXPECT_EQ(read_file("cgi-bin/kestrel.ini"), old);
    EXPECT_THAT(read_file("cgi-bin/kestrel.cgi"), HasSubstr("3.2a"));
    expect_kept("kestrel.new", shown_file(host, "cgi-bin/kestrel.new"));
}

TEST_F(UpgradeKestrel, AnOldIniMayAskToBeReplaced) {
    edit_by_hand("cgi-bin/kestrel.ini", "replace_ini TRUE");
    expect_kept_run(host, run_wizard(host, {}, replacing), {"cgi-bin"});
    EXPECT_THAT(read_file("cgi-bin/kestrel.ini"), HasSubstr("\ntimeout 32\n"));
    // The next run does not remember it.
    EXPECT_THAT(read_file("dist/gxsetup.dat"), Not(HasSubstr("replace_ini")));
}

TEST_F(UpgradeKestrel, AWmlPartThatIsNewGetsItsIni) {
    const wizard_run run = run_wizard(host, {}, replacing + answering("merlin cgi", "yes"));
    // The WML set is what the .ini names, but only products with sets have a directory for it.
    EXPECT_THAT(steps_of(run),
                EndsWith("\nCopying cgi files...\nCreating merlin.ini file" + rule +
                         "Error: Can't write to \"@/spool/kestrel/wml/merlin.ini\": No such file "
                         "or directory\n\n"));
    expect_kept("merlin.ini", shown_file(host, "cgi-bin/merlin.ini"));
}

// --- Replacing the templates ---

TEST_F(UpgradePlover, ReplacingCopiesTheTemplatesTwiceAndOverwritesEveryOne) {
    const wizard_run run = run_wizard(host, {}, {{"replace the old templates", "yes"}});
    expect_kept_run(host, run, {"html"});
    expect_kept("gxsetup.dat", shown_file(host, "dist/gxsetup.dat"));
    EXPECT_EQ(installed_texts("spool/plover"),
              (std::vector<std::string>{"brand new", "new clean", "old dropped", "new edited",
                                        "new moved", "new same"}));
    EXPECT_THAT(read_file("spool/plover/edited.tpl"), Not(HasSubstr("by hand")));
    EXPECT_FALSE(is_there("spool/plover/tmptlist.txt"));
}

TEST_F(UpgradePlover, ListNamesItsOwnFamilyOfSets) {
    std::filesystem::remove("spool/plover/moved.tpl");
    run_wizard(host, {}, newer_templates("no", "yes"));
    EXPECT_THAT(read_file("spool/plover/tmptlist.txt"),
                EndsWith("\n\n2. edited.tpl         Current template set: plv_s2 version 2.0a\n"
                         "                 Distribution template set: plv_s2 version 2.1\n"));
}

// --- Where it runs, and what fails ---

TEST_F(UpgradeKestrel, RunFromInsideTheInstallationItDoesNotOfferTheCleanUp) {
    const wizard_run run = run_wizard(host, {},
                                      {{"replace the old templates", "yes"},
                                       {"Where are your template files", "@/dist"},
                                       {"original templates", "no"}});
    expect_kept("screen", run.transcript);
    EXPECT_TRUE(is_there("dist/tpl/clean.tpl"));
    EXPECT_EQ(template_text("dist/clean.tpl"), "new clean");
}

TEST_F(UpgradeKestrel, AFailedCopyIsReportedAndTheUpgradeGoesOn) {
    shell("rm dist/kestrel.ini; ln -sf nowhere dist/tpl/extra.gif");
    const wizard_run run = run_wizard(host, {}, newer_templates("no", "yes"));
    EXPECT_THAT(steps_of(run),
                EndsWith("\n"
                         "Copying graphic and wav files"
                         "Error: Can't copy ./tpl/extra.gif: No such file or directory\n"
                         "\n"
                         "Copying VBS and JS files\n"
                         "Copying cgi files."
                         "Error: Can't open kestrel.ini\n"));
    // The outcome tells; the result of the run does not depend on it.
    expect_kept("end", end_of_upgrade(run));
}

TEST_F(UpgradeKestrel, OriginalsThatCannotBeMadeEndItWithoutThanks) {
    edit_by_hand("cgi-bin/kestrel.ini", "install_dir nowhere");
    make_own("cgi-bin/kestrel.ini");
    const wizard_run run = run_wizard(host, {}, {{"replace the old templates", "yes"}});
    expect_kept("end", end_of_upgrade(run));
}

// --- With the WML part of the old release ---

TEST_F(UpgradeWithWml, BothProgramsAreRenewedButAnOldWmlIniStays) {
    const std::string old = read_file("cgi-bin/merlin.ini");
    expect_kept_run(host, run_wizard(host, {}, replacing), {"cgi-bin"});
    EXPECT_EQ(read_file("cgi-bin/merlin.ini"), old);
    EXPECT_EQ(read_file("cgi-bin/merlin.cgi"), read_file("dist/kestrel.cgi"));
    EXPECT_EQ(read_file("cgi-bin/kestrel.cgi"), read_file("dist/kestrel.cgi"));
}

TEST_F(UpgradeWithWml, EveryNewFileBelongsToTheOwnerOfInstalledFiles) {
    shell("rm -r html/vlimg cgi-bin/merlin.ini");
    run_wizard(host, {}, {});
    expect_owned_site(host);
}

} // namespace
