// The session around the flows: what it loads and settles, its main menu, what it saves.

#include "support/expected.h"
#include "support/rows.h"
#include "support/tree.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using namespace std::string_literals;

constexpr const char *menu_prompt = "What do you want to do";

// A session of kestrel with answers saved before, "@" being the root.
struct saved_session {
    const char *name;
    const char *saved;
    console_script script;
    std::string shown;
};

// What kestrel's program does when it is asked for its version, as commands of the shell, and the
// version that the menu shows. Where it does not tell, "6" is typed.
struct version_probe {
    const char *name;
    std::string program;
    std::string version;
};

constexpr const char *typed_version = "6";

class session_test : public testing::Test {
  protected:
    // What a session shows.
    [[nodiscard]] std::string shown(const console_script &script = quit_at_the_menu) const {
        const wizard_run run = run_wizard(host, {}, script);
        return run.transcript;
    }

    void check(const saved_session &row) const {
        add_answers(host, "dist/gxsetup.dat", row.saved);
        EXPECT_EQ(shown(row.script), row.shown);
    }

    void check(const version_probe &row) const {
        add_script("dist/kestrel.cgi", row.program);
        const bool is_asked = row.version == typed_version;
        EXPECT_EQ(shown(is_asked ? asking_version() : quit_at_the_menu),
                  (is_asked ? question : "") + welcome + menu("kestrel", row.version) + goodbye);
        EXPECT_FALSE(is_there("dist/ver.txt"));
    }

    // The version is asked for, and the session quit at its menu.
    static console_script asking_version() {
        return quit_at_the_menu + answering("What version", typed_version);
    }

    static inline const std::string question = "\nWhat version of kestrel is it? ";

    const world host{"kestrel"};
};

using Menu = session_test;
using Product = session_test;
using Version = session_test;
using Loading = session_test;
using Saving = session_test;

constexpr const char *no_settings =
    "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini settings\n";
constexpr const char *started = "Info:  * gxsetup, version 3.0h started *\n";

// The menu that offers an action by this digit.
std::string menu_of(const std::string &action, const std::string &digit) {
    return welcome + menu("kestrel", "3.2a", action, digit);
}

// An answer that is no choice, and its refusal.
saved_session no_choice(const char *name, const char *answer) {
    return {name, "templates @/spool/kestrel\n",
            in_order({{menu_prompt, answer}, {menu_prompt, "4"}}),
            welcome + menu("kestrel") + "That is not a valid choice, please choose again\n" +
                menu("kestrel") + goodbye};
}

const console_script quit = answering(menu_prompt, "q");
const console_script enter_throughout = {};

const std::vector<saved_session> saved_sessions = {
    {"Menu.OffersTheDigitOfTheFlowNotItsOwnNumber", "action remove\ntemplates @/spool/kestrel\n",
     quit, menu_of("remove", "4") + quit_at_a_question},
    {"Menu.EnterTakesTheDigitThatIsOffered", "action remove\ntemplates @/spool/kestrel\n",
     enter_throughout, menu_of("remove", "4") + goodbye},
    {"Menu.CustomisingHasTheDigitOfTheRemoval", "action custom\ntemplates @/spool/kestrel\n", quit,
     menu_of("custom", "3") + quit_at_a_question},
    {"Menu.AnActionInCapitalsIsOfferedAsItStands", "action INSTALL\ntemplates @/spool/kestrel\n",
     quit, menu_of("INSTALL", "INSTALL") + quit_at_a_question},
    no_choice("Menu.WhatIsNoChoiceIsAskedAgain", "0"),
    no_choice("Menu.AHigherNumberIsNoChoice", "5"),
    no_choice("Menu.AWordIsNoChoice", "word"),
    no_choice("Menu.ANegativeNumberIsNoChoice", "-1"),
    no_choice("Menu.AYesIsNoChoice", "yes"),
    no_choice("Menu.AHugeNumberIsNoChoice", "99999999999999999999"),
    no_choice("Menu.TheCharacterBeforeTheDigitsIsNoChoice", "/"),
};

const std::vector<version_probe> version_probes = {
    {"Version.IsWhatFollowsTheFirstSmallVBehindTheLabel", "echo Version: kestrel v3.2a", "3.2a"},
    {"Version.TheFirstLineOfItsFormTells",
     "echo Welcome; echo 'Version:v3.2 (v7)'; echo Version: v9", "3.2 (v7)"},
    {"Version.TheFirstVOfAWordTellsToo", "echo Version: plover v3", "er v3"},
    {"Version.ACapitalVDoesNotTell", "printf 'Version: V3 v4\\r\\n'", "4"},
    {"Version.ALineWithoutAVDoesNotTell", "echo Version: none; echo Version: v5", "5"},
    {"Version.NothingBehindTheVIsNoText", "echo Version: kestrel v", "<NULL>"},
    {"Version.ConversionsAreText", "echo Version: v%s%n%d%%", "%s%n%d%%"},
    {"Version.IsAskedForWhenTheProgramDoesNotTell",
     "echo version: v1; echo ' Version: v2'; echo Version: 3", typed_version},
    {"Version.ProgramThatFailsMayStillTell", "echo Version: v8; exit 3", "8"},
    {"Version.ProgramThatCrashesMayHaveToldBefore", "echo Version: v8; kill -SEGV $$; sleep 9",
     "8"},
    {"Version.ProgramThatIsKilledMayHaveToldBefore", "echo Version: v8; kill -KILL $$; sleep 9",
     "8"},
    {"Version.ProgramThatLosesItsPipeMayHaveToldBefore", "echo Version: v8; kill -PIPE $$; sleep 9",
     "8"},
    {"Version.IsAskedForWhenTheProgramCrashesBeforeItTells", "kill -SEGV $$", typed_version},
    {"Version.IsFoundBehindAMegabyteWithoutALineEnd",
     "head -c 1000000 /dev/zero | tr '\\0' x; echo; echo Version: v8", "8"},
    {"Version.AMegabyteWithoutAnythingIsNone", "head -c 1000000 /dev/zero | tr '\\0' v",
     typed_version},
    // What a line holds, less the label.
    {"Version.OfAMegabyteIsCutLikeAnyLine",
     "printf 'Version: v'; head -c 1000000 /dev/zero | tr '\\0' 7", std::string(500, '7')},
    {"Version.ProgramDoesNotReadTheAnswers", "cat; echo Version: v8", "8"},
    {"Version.IsReadFromThisWizardsFileWhateverAnotherPutsUnderItsName",
     "echo Version: v8; rm ver.txt; echo Version: v9 >ver.txt", "8"},
};

const int registered =
    register_rows<session_test>(saved_sessions) + register_rows<session_test>(version_probes);

// --- Menu ---

TEST_F(Menu, QuittingSavesNothing) {
    EXPECT_EQ(shown(), welcome + menu("kestrel") + goodbye);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), started + std::string(no_settings));
}

TEST_F(Menu, QuittingLeavesSavedAnswersUntouched) {
    const std::string saved = "# by hand\naction upgrade\ntemplates @/spool/kestrel\n";
    add_answers(host, "dist/gxsetup.dat", saved);
    EXPECT_EQ(shown(), menu_of("upgrade", "2") + goodbye);
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"), saved);
}

TEST_F(Menu, InstallAndUpgradeAreRefusedInsideTheTemplatesDirectory) {
    add_answers(host, "dist/gxdflt.dat", "templates @/dist\n");
    const std::string custom_menu = menu("kestrel", "3.2a", "custom", "3");
    const std::string refusal = "This function cannot be run from within the templates directory\n";
    EXPECT_EQ(shown(in_order({{menu_prompt, "1"}, {menu_prompt, "2"}, {menu_prompt, "4"}})),
              welcome + custom_menu + refusal + "\n" + custom_menu + refusal + "\n" + custom_menu +
                  goodbye);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              started +
                  "Error: INI: file {@/dist/gxsetup.dat} could not be opened for ini settings\n"s +
                  "Info:  " + refusal + "Info:  " + refusal);
}

TEST_F(Menu, InstallAndUpgradeNeedTheProductsProgram) {
    std::filesystem::remove("dist/kestrel.cgi");
    add_answers(host, "dist/gxsetup.dat", "prod_name kestrel\ntemplates @/spool/kestrel\n");
    const std::string missing = "Error: Cannot find source files\n\n";
    const std::string shown_menu = menu("kestrel", "9");
    EXPECT_EQ(
        shown(in_order(
            {{"What version", "9"}, {menu_prompt, "1"}, {menu_prompt, "2"}, {menu_prompt, "4"}})),
        question + welcome + shown_menu + missing + shown_menu + missing + shown_menu + goodbye);
}

// --- Product and version ---

TEST_F(Product, FirstProgramThatIsThereDecides) {
    const world tanager("tanager");
    const auto menu_shown = [&] { return run_wizard(tanager, {}, quit_at_the_menu).transcript; };
    add_program("dist/osprey.cgi", "Version: v1\n");
    EXPECT_EQ(menu_shown(), welcome + menu("tanager") + goodbye);
    add_program("dist/plover.cgi", "Version: v2\n");
    EXPECT_EQ(menu_shown(), welcome + menu("plover", "2") + goodbye);
    add_program("dist/kestrel.cgi", "Version: v3\n");
    EXPECT_EQ(menu_shown(), welcome + menu("kestrel", "3") + goodbye);
}

TEST_F(Product, SavedNameIsNotGuessedAgain) {
    add_program("dist/tanager.cgi", "Version: v3\n");
    add_answers(host, "dist/gxsetup.dat", "prod_name tanager\ntemplates @/spool/tanager\n");
    EXPECT_EQ(shown(), welcome + menu("tanager", "3") + goodbye);
}

TEST_F(Product, IsAskedForUntilItIsOneOfTheFour) {
    std::filesystem::remove("dist/kestrel.cgi");
    expect_kept("screen", shown(in_order({{"What product", "merlin"},
                                          {"What product", "kestre"},
                                          {"What product", "OSPREY"},
                                          {"What version", ""},
                                          {"What version", "7"},
                                          {menu_prompt, "4"}})));
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

TEST_F(Product, EnterMeansPlover) {
    std::filesystem::remove("dist/kestrel.cgi");
    EXPECT_EQ(shown(asking_version()), "\nWhat product am I installing [plover]? "
                                       "\nWhat version of plover is it? " +
                                           welcome + menu("plover", typed_version) + goodbye);
}

TEST_F(Product, SupportAddressIsThatOfTheProduct) {
    EXPECT_THAT(shown(in_order({{menu_prompt, "?"}, {menu_prompt, "4"}})),
                HasSubstr("[1]? \n"
                          "There is nothing to say about this question.\n"
                          "\n"
                          "For more information, e-mail: kestrel-support@varnel.example\n"
                          "\n"
                          "What do you want to do [1]? "));
}

TEST_F(Version, AProgramThatDoesNotTellIsLogged) {
    add_script("dist/kestrel.cgi", "echo none");
    run_wizard(host, {}, asking_version());
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              started + std::string(no_settings) + "Error: cannot find version\n");
}

TEST_F(Version, BytesThatAreNoTextDoNoHarm) {
    std::string bytes;
    for (int value = 255; value >= 0; value--) {
        bytes.push_back(static_cast<char>(value));
    }
    add_file("dist/noise", bytes + bytes + "\nVersion: v\xff\x01\x1b[m\n");
    add_script("dist/kestrel.cgi", "cat noise\n");
    EXPECT_EQ(shown(), welcome + menu("kestrel", "\xff\x01\x1b[m") + goodbye);
}

TEST_F(Version, ProgramThatCannotBeStartedLeavesNothingBehind) {
    shell("chmod 644 dist/kestrel.cgi");
    EXPECT_EQ(shown(asking_version()),
              question + welcome + menu("kestrel", typed_version) + goodbye);
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

TEST_F(Version, ProgramThatMayBeRunButNotReadIsStarted) {
    add_answers(host, "dist/gxsetup.dat", "prod_name kestrel\ntemplates @/spool/kestrel\n");
    shell("chmod 111 dist/kestrel.cgi");
    const wizard_run run = run_wizard(host, {}, asking_version(), as_ordinary_user(host));
    // The shell that is to run it cannot read it.
    EXPECT_THAT(run.errors, HasSubstr("kestrel.cgi"));
}

TEST_F(Version, IsAskedForWhenTheOutputHasNowhereToGo) {
    add_file("dist/ver.txt/kept", "");
    EXPECT_EQ(shown(asking_version()),
              question + welcome + menu("kestrel", typed_version) + goodbye);
    EXPECT_TRUE(is_there("dist/ver.txt/kept"));
}

// --- Loading ---

TEST_F(Loading, MissingDefaultsAreReportedAndTheBuiltInOnesStand) {
    std::filesystem::remove("dist/gxdflt.dat");
    EXPECT_EQ(shown(), "Error: Can't open file \"gxdflt.dat\": No such file or directory\n" +
                           welcome + menu("kestrel") + goodbye);
    expect_kept("log", shown_log(host, "dist/gxsetup.log"));
}

TEST_F(Loading, BuiltInAnswersComeFirst) {
    run_wizard(host, {"-debug"}, quit_at_the_menu);
    const std::string log = shown_log_without(host, "dist/gxsetup.log", {"Blank INI Setting"});
    expect_kept("log", log.substr(0, log.find("Debug: Loading gxvalues from default file\n")));
}

TEST_F(Loading, EachAnswerIsLoggedAtDebugLevelOnly) {
    add_answers(host, "dist/gxsetup.dat", "domain example.org\n");
    const auto is_logged = [&](const std::vector<std::string> &arguments) {
        run_wizard(host, arguments, quit_at_the_menu);
        return shown_log(host, "dist/gxsetup.log")
                   .find("Debug: INI: ini settings changed {domain=example.org}\n") !=
               std::string::npos;
    };
    EXPECT_TRUE(is_logged({"-debug"}));
    EXPECT_FALSE(is_logged({}));
}

// What the install offers for the templates when the defaults of the product are these.
std::string templates_offered(const std::string &product, const std::string &defaults) {
    const world host(product);
    add_answers(host, "dist/gxdflt.dat", "cgi_path @/cgi-bin\n" + defaults);
    return part_between(run_wizard(host, {}, {{"Directory for templates", "q"}}).transcript,
                        "\nDirectory for templates [", "]? " + quit_at_a_question);
}

TEST_F(Loading, SpoolDirectoryAloneGetsTheProductsOwn) {
    EXPECT_EQ(templates_offered("kestrel", ""), "/var/spool/kestrel");
    EXPECT_EQ(templates_offered("plover", ""), "/var/spool/plov");
    EXPECT_EQ(templates_offered("tanager", ""), "/var/spool/tanager");
    EXPECT_EQ(templates_offered("osprey", ""), "/var/spool/osprey");
}

TEST_F(Loading, SpoolDirectoryIsKnownInAnyLetterCase) {
    EXPECT_EQ(templates_offered("plover", "templates /Var/Spool\n"), "/Var/Spool/plov");
}

TEST_F(Loading, AnswersInTheTemplatesDirectoryAreLoadedWhenThereAreNoneHere) {
    const world tanager("tanager");
    shell("mkdir -p html/vlimg spool/other/manuals spool/other/bulletins");
    // They come after the images directory is settled, so that theirs stands.
    add_answers(tanager, "spool/tanager/gxsetup.dat",
                "vlimg_dir @/html/vlimg\naction upgrade\ntemplates @/spool/other\n");
    const wizard_run run =
        run_wizard(tanager, {}, {{menu_prompt, "1"}, {"Directory for .gif", "q"}});
    expect_kept("screen", run.transcript);
}

TEST_F(Loading, AnswersHereKeepThoseInTheTemplatesDirectoryOut) {
    add_answers(host, "dist/gxsetup.dat", "templates @/spool/kestrel\n");
    add_answers(host, "spool/kestrel/gxsetup.dat", "action upgrade\n");
    EXPECT_EQ(shown(), welcome + menu("kestrel") + goodbye);
}

TEST_F(Loading, FileOfAHundredThousandLinesLoads) {
    shell("seq -f 'key%.0f value' 100000 >dist/gxsetup.dat");
    shell(host.meant("printf 'templates @/spool/kestrel\\naction upgrade\\n' >>dist/gxsetup.dat"));
    EXPECT_EQ(shown(), menu_of("upgrade", "2") + goodbye);
}

TEST_F(Loading, BytesThatAreNoTextDoNoHarm) {
    add_file("dist/gxsetup.dat", host.meant("templates @/spool/kestrel\n") + "act\0ion remove\n"s +
                                     "\0\0\0 \0\n"s + "%s%n %d%%\n\xff\xfe \x80\n" +
                                     std::string(2000, '\0') + "\naction upgrade\n");
    EXPECT_EQ(shown(), menu_of("upgrade", "2") + goodbye);
}

// --- Saving ---

TEST_F(Saving, OneRunAnswersAreNotSaved) {
    add_answers(host, "dist/gxsetup.dat",
                "cgi_path @/cgi-bin\nvlimg_dir @/html/vlimg\ntemplates @/spool/kestrel\n"
                "set one\nset two\nbody_add one\nbody_add two\nseparator x\ndel_users TRUE\n"
                "kept value\n");
    run_wizard(host, {}, {});
    expect_kept("gxsetup.dat", shown_file(host, "dist/gxsetup.dat"));
}

TEST_F(Saving, NextRunOffersTheAnswersOfTheFirst) {
    const world plover("plover");
    std::filesystem::create_directory("cgi-bin/mail");
    run_wizard(plover, {},
               no_to_both + console_script{{"Webserver directory", "@/cgi-bin/mail"},
                                           {"Directory for templates", "@/spool/mail"},
                                           {"Directory for .gif", "@/html/mail"},
                                           {"Relative URL", "/pictures"},
                                           {"domain name", "site.test"},
                                           {"pop host", "pop.site.test"},
                                           {"smtp host", "smtp.site.test"}});
    const wizard_run run = run_wizard(
        plover, {}, {{menu_prompt, "1"}, {"upgrade questions", "no"}, {"change any", "q"}});
    expect_kept("screen", run.transcript);
}

} // namespace
