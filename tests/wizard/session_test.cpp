// The session around the flows: what it loads and settles, its main menu, what it saves.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

// The version is asked for, and the session quit at its menu.
console_script typed_version(const std::string &version) {
    return quit_at_the_menu + console_script{{"What version", version}};
}

// What a session shows that is quit at its menu.
std::string shown_at_quitting(const world &host) {
    return run_wizard(host, {}, quit_at_the_menu).transcript;
}

// --- Menu ---

TEST(Menu, QuittingSavesNothing) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + goodbye);
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini "
              "settings\n");
}

TEST(Menu, QuittingLeavesSavedAnswersUntouched) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat", "# by hand\naction upgrade\ntemplates @/spool/kestrel\n");
    const wizard_run run = run_wizard(host, {}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, welcome + menu("kestrel", "3.2a", "upgrade", "2") + goodbye);
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"),
              "# by hand\naction upgrade\ntemplates @/spool/kestrel\n");
}

TEST(Menu, WhatIsNoChoiceIsAskedAgain) {
    const world host("kestrel");
    for (const char *answer : {"0", "5", "word", "-1", "yes", "99999999999999999999", "/"}) {
        const wizard_run run = run_wizard(
            host, {},
            in_order({{"What do you want to do", answer}, {"What do you want to do", "4"}}));
        EXPECT_EQ(run.transcript, welcome + menu("kestrel") +
                                      "That is not a valid choice, please choose again\n" +
                                      menu("kestrel") + goodbye)
            << answer;
        EXPECT_EQ(run.status, 0) << answer;
    }
}

TEST(Menu, OffersTheDigitOfTheFlowNotItsOwnNumber) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat", "action remove\ntemplates @/spool/kestrel\n");
    EXPECT_EQ(run_wizard(host, {}, {{"What do you want to do", "q"}}).transcript,
              welcome + menu("kestrel", "3.2a", "remove", "4") + quit_at_a_question);
    EXPECT_EQ(run_wizard(host, {}, {}).transcript,
              welcome + menu("kestrel", "3.2a", "remove", "4") + goodbye);
    add_answers(host, "dist/gxsetup.dat", "action custom\ntemplates @/spool/kestrel\n");
    EXPECT_EQ(run_wizard(host, {}, {{"What do you want to do", "q"}}).transcript,
              welcome + menu("kestrel", "3.2a", "custom", "3") + quit_at_a_question);
}

TEST(Menu, AnActionInCapitalsIsOfferedAsItStands) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat", "action INSTALL\ntemplates @/spool/kestrel\n");
    EXPECT_EQ(run_wizard(host, {}, {{"What do you want to do", "q"}}).transcript,
              welcome + menu("kestrel", "3.2a", "INSTALL", "INSTALL") + quit_at_a_question);
}

TEST(Menu, InstallAndUpgradeAreRefusedInsideTheTemplatesDirectory) {
    const world host("kestrel");
    add_answers(host, "dist/gxdflt.dat", "templates @/dist\n");
    const std::string custom_menu = menu("kestrel", "3.2a", "custom", "3");
    const std::string refusal =
        "This function cannot be run from within the templates directory\n\n";
    EXPECT_EQ(run_wizard(host, {},
                         in_order({{"What do you want to do", "1"},
                                   {"What do you want to do", "2"},
                                   {"What do you want to do", "4"}}))
                  .transcript,
              welcome + custom_menu + refusal + custom_menu + refusal + custom_menu + goodbye);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {@/dist/gxsetup.dat} could not be opened for ini settings\n"
              "Info:  This function cannot be run from within the templates directory\n"
              "Info:  This function cannot be run from within the templates directory\n");
}

TEST(Menu, InstallAndUpgradeNeedTheProductsProgram) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.cgi");
    add_answers(host, "dist/gxsetup.dat", "prod_name kestrel\ntemplates @/spool/kestrel\n");
    const std::string missing = "Error: Cannot find source files\n\n";
    const std::string shown_menu = menu("kestrel", "9");
    EXPECT_EQ(run_wizard(host, {},
                         in_order({{"What version", "9"},
                                   {"What do you want to do", "1"},
                                   {"What do you want to do", "2"},
                                   {"What do you want to do", "4"}}))
                  .transcript,
              "\nWhat version of kestrel is it? " + welcome + shown_menu + missing + shown_menu +
                  missing + shown_menu + goodbye);
}

// --- Product and version ---

TEST(Product, FirstProgramThatIsThereDecides) {
    const world host("tanager");
    add_program("dist/osprey.cgi", "Version: v1\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("tanager") + goodbye);
    add_program("dist/plover.cgi", "Version: v2\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("plover", "2") + goodbye);
    add_program("dist/kestrel.cgi", "Version: v3\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", "3") + goodbye);
}

TEST(Product, SavedNameIsNotGuessedAgain) {
    const world host("tanager");
    add_program("dist/kestrel.cgi", "Version: v3\n");
    add_answers(host, "dist/gxsetup.dat", "prod_name tanager\ntemplates @/spool/tanager\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("tanager") + goodbye);
}

TEST(Product, IsAskedForUntilItIsOneOfTheFour) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.cgi");
    EXPECT_EQ(run_wizard(host, {},
                         in_order({{"What product", "merlin"},
                                   {"What product", "kestre"},
                                   {"What product", "OSPREY"},
                                   {"What version", ""},
                                   {"What version", "7"},
                                   {"What do you want to do", "4"}}))
                  .transcript,
              "\nWhat product am I installing [plover]? "
              "Please enter either plover, kestrel or tanager"
              "\nWhat product am I installing [plover]? "
              "Please enter either plover, kestrel or tanager"
              "\nWhat product am I installing [plover]? "
              "\nWhat version of osprey is it? "
              "\nWhat version of osprey is it? " +
                  welcome + menu("osprey", "7") + goodbye);
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

TEST(Product, EnterMeansPlover) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.cgi");
    EXPECT_EQ(run_wizard(host, {}, typed_version("7")).transcript,
              "\nWhat product am I installing [plover]? "
              "\nWhat version of plover is it? " +
                  welcome + menu("plover", "7") + goodbye);
}

TEST(Product, SupportAddressIsThatOfTheProduct) {
    const world host("kestrel");
    EXPECT_EQ(
        run_wizard(host, {},
                   in_order({{"What do you want to do", "?"}, {"What do you want to do", "4"}}))
            .transcript,
        welcome + menu("kestrel") +
            "\n"
            "There is nothing to say about this question.\n"
            "\n"
            "For more information, e-mail: kestrel-support@varnel.example\n"
            "\n"
            "What do you want to do [1]? " +
            goodbye);
}

TEST(Version, IsAskedForWhenTheProgramDoesNotTell) {
    const world host("kestrel");
    add_program("dist/kestrel.cgi", "version: v1\n Version: v2\nVersion: 3\n");
    EXPECT_EQ(run_wizard(host, {}, typed_version("5.5")).transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "5.5") + goodbye);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini "
              "settings\n"
              "Error: cannot find version\n");
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

TEST(Version, IsWhatFollowsTheFirstSmallVBehindTheLabel) {
    struct probe {
        const char *output;
        const char *version;
    };
    for (const probe &one :
         {probe{"Version: kestrel v3.2a\n", "3.2a"},
          probe{"Welcome\nVersion:v3.2 (v7)\nVersion: v9\n", "3.2 (v7)"},
          probe{"Version: plover v3\n", "er v3"}, probe{"Version: V3 v4\r\n", "4"},
          probe{"Version: none\nVersion: v5\n", "5"}, probe{"Version: kestrel v\n", "<NULL>"},
          probe{"Version: v%s%n%d%%\n", "%s%n%d%%"}}) {
        const world host("kestrel");
        add_program("dist/kestrel.cgi", one.output);
        EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", one.version) + goodbye)
            << one.output;
        EXPECT_FALSE(is_there("dist/ver.txt"));
    }
}

TEST(Version, ProgramThatFailsMayStillTell) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "echo Version: v8\nexit 3\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", "8") + goodbye);
}

TEST(Version, ProgramThatCrashesMayHaveToldBefore) {
    for (const char *signal : {"SEGV", "KILL", "PIPE"}) {
        const world host("kestrel");
        add_script("dist/kestrel.cgi",
                   std::string("echo Version: v8\nkill -") + signal + " $$\nsleep 9\n");
        EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", "8") + goodbye) << signal;
        EXPECT_FALSE(is_there("dist/ver.txt"));
    }
}

TEST(Version, IsAskedForWhenTheProgramCrashesBeforeItTells) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "kill -SEGV $$\n");
    const wizard_run run = run_wizard(host, {}, typed_version("6"));
    EXPECT_EQ(run.transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
    EXPECT_EQ(run.status, 0);
}

TEST(Version, IsFoundBehindAMegabyteWithoutALineEnd) {
    const world host("kestrel");
    add_file("dist/noise", std::string(1'000'000, 'x') + "\nVersion: v8\n");
    add_script("dist/kestrel.cgi", "cat noise\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", "8") + goodbye);
}

TEST(Version, AMegabyteWithoutAnythingIsNone) {
    const world host("kestrel");
    add_file("dist/noise", std::string(1'000'000, 'v'));
    add_script("dist/kestrel.cgi", "cat noise\n");
    EXPECT_EQ(run_wizard(host, {}, typed_version("6")).transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
}

TEST(Version, OfAMegabyteIsCutLikeAnyLine) {
    const world host("kestrel");
    add_file("dist/noise", "Version: v" + std::string(1'000'000, '7') + "\n");
    add_script("dist/kestrel.cgi", "cat noise\n");
    // What a line holds, less the label.
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", std::string(500, '7')) + goodbye);
}

TEST(Version, BytesThatAreNoTextDoNoHarm) {
    std::string bytes;
    for (int value = 255; value >= 0; value--) {
        bytes.push_back(static_cast<char>(value));
    }
    const world host("kestrel");
    add_file("dist/noise", bytes + bytes + "\nVersion: v\xff\x01\x1b[m\n");
    add_script("dist/kestrel.cgi", "cat noise\n");
    const wizard_run run = run_wizard(host, {}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, welcome + menu("kestrel", "\xff\x01\x1b[m") + goodbye);
    EXPECT_EQ(run.status, 0);
}

TEST(Version, ProgramDoesNotReadTheAnswers) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "cat\necho Version: v8\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", "8") + goodbye);
}

TEST(Version, ProgramThatCannotBeStartedLeavesNothingBehind) {
    const world host("kestrel");
    std::filesystem::permissions("dist/kestrel.cgi", std::filesystem::perms(0644));
    EXPECT_EQ(run_wizard(host, {}, typed_version("6")).transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

TEST(Version, IsAskedForWhenTheOutputHasNowhereToGo) {
    const world host("kestrel");
    add_file("dist/ver.txt/kept", "");
    EXPECT_EQ(run_wizard(host, {}, typed_version("6")).transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
    EXPECT_TRUE(is_there("dist/ver.txt/kept"));
}

// --- Loading ---

TEST(Loading, MissingDefaultsAreReportedAndTheBuiltInOnesStand) {
    const world host("kestrel");
    std::filesystem::remove("dist/gxdflt.dat");
    const wizard_run run = run_wizard(host, {}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, "Error: Can't open file \"gxdflt.dat\": No such file or directory\n" +
                                  welcome + menu("kestrel") + goodbye);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {gxdflt.dat} could not be opened for ini settings\n"
              "Error: Can't open file \"gxdflt.dat\": No such file or directory\n"
              "Error: INI: file {/var/spool/kestrel/gxsetup.dat} could not be opened for ini "
              "settings\n");
}

TEST(Loading, BuiltInAnswersComeFirst) {
    const world host("kestrel");
    run_wizard(host, {"-debug"}, quit_at_the_menu);
    const std::string log = shown_log_without(host, "dist/gxsetup.log", {"Blank INI Setting"});
    const std::string begin = "Debug: Loading gxvalues defaults\n";
    std::string answers;
    for (const std::string answer :
         {"cgi_path=/home/httpd/cgi-bin", "vlimg_dir=/home/httpd/html/vlimg",
          "templates=/var/spool", "op_system=UNIX", "action=install", "vlimg=/vlimg",
          "del_users=FALSE", "replace_tmplts=FALSE", "replace_ini=FALSE", "pophost=pop.example.com",
          "imaphost=imap.example.com", "smtphost=smtp.example.com", "domain=example.com",
          "log_lvl=INFO", "wml_name=merlin", "wml=NO"}) {
        answers += "Debug: INI: ini settings changed {" + answer + "}\n";
    }
    EXPECT_THAT(log, HasSubstr(begin + answers + "Debug: Loading gxvalues from default file\n"));
}

TEST(Loading, EachAnswerIsLoggedAtDebugLevelOnly) {
    const world host("kestrel");
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

TEST(Loading, SpoolDirectoryAloneGetsTheProductsOwn) {
    struct offer {
        const char *product;
        const char *directory;
    };
    for (const offer &one :
         {offer{"kestrel", "/var/spool/kestrel"}, offer{"plover", "/var/spool/plov"},
          offer{"tanager", "/var/spool/tanager"}, offer{"osprey", "/var/spool/osprey"}}) {
        const world host(one.product);
        add_answers(host, "dist/gxdflt.dat", "cgi_path @/cgi-bin\n");
        EXPECT_THAT(run_wizard(host, {}, {{"Directory for templates", "q"}}).transcript,
                    EndsWith("\nDirectory for templates [" + std::string(one.directory) + "]? " +
                             quit_at_a_question));
    }
}

TEST(Loading, SpoolDirectoryIsKnownInAnyLetterCase) {
    const world host("plover");
    add_answers(host, "dist/gxdflt.dat", "cgi_path @/cgi-bin\ntemplates /Var/Spool\n");
    EXPECT_THAT(run_wizard(host, {}, {{"Directory for templates", "q"}}).transcript,
                EndsWith("\nDirectory for templates [/Var/Spool/plov]? " + quit_at_a_question));
}

TEST(Loading, AnswersInTheTemplatesDirectoryAreLoadedWhenThereAreNoneHere) {
    const world host("tanager");
    std::filesystem::create_directories("html/vlimg");
    std::filesystem::create_directories("spool/other/manuals");
    std::filesystem::create_directories("spool/other/bulletins");
    // They come after the images directory is settled, so that theirs stands.
    add_answers(host, "spool/tanager/gxsetup.dat",
                "vlimg_dir @/html/vlimg\naction upgrade\ntemplates @/spool/other\n");
    const wizard_run run =
        run_wizard(host, {}, {{"What do you want to do", "1"}, {"Directory for .gif", "q"}});
    expect_kept("screen", run.transcript);
}

TEST(Loading, AnswersHereKeepThoseInTheTemplatesDirectoryOut) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat", "templates @/spool/kestrel\n");
    add_answers(host, "spool/kestrel/gxsetup.dat", "action upgrade\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel") + goodbye);
}

TEST(Loading, FileOfAHundredThousandLinesLoads) {
    const world host("kestrel");
    std::string lines = host.meant("templates @/spool/kestrel\n");
    for (int number = 0; number < 100000; number++) {
        lines += "key" + std::to_string(number) + " value\n";
    }
    add_file("dist/gxsetup.dat", lines + "action upgrade\n");
    EXPECT_EQ(shown_at_quitting(host), welcome + menu("kestrel", "3.2a", "upgrade", "2") + goodbye);
}

TEST(Loading, BytesThatAreNoTextDoNoHarm) {
    using namespace std::string_literals;
    const world host("kestrel");
    add_file("dist/gxsetup.dat", host.meant("templates @/spool/kestrel\n") + "act\0ion remove\n"s +
                                     "\0\0\0 \0\n"s + "%s%n %d%%\n\xff\xfe \x80\n" +
                                     std::string(2000, '\0') + "\naction upgrade\n");
    const wizard_run run = run_wizard(host, {}, quit_at_the_menu);
    EXPECT_EQ(run.transcript, welcome + menu("kestrel", "3.2a", "upgrade", "2") + goodbye);
    EXPECT_EQ(run.status, 0);
}

// --- Saving ---

TEST(Saving, OneRunAnswersAreNotSaved) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat",
                "cgi_path @/cgi-bin\nvlimg_dir @/html/vlimg\ntemplates @/spool/kestrel\n"
                "set one\nset two\nbody_add one\nbody_add two\nseparator x\ndel_users TRUE\n"
                "kept value\n");
    run_wizard(host, {}, {});
    expect_kept("gxsetup.dat", shown_file(host, "dist/gxsetup.dat"));
}

TEST(Saving, NextRunOffersTheAnswersOfTheFirst) {
    const world host("plover");
    std::filesystem::create_directory("cgi-bin/mail");
    run_wizard(host, {},
               no_to_both + console_script{{"Webserver directory", "@/cgi-bin/mail"},
                                           {"Directory for templates", "@/spool/mail"},
                                           {"Directory for .gif", "@/html/mail"},
                                           {"Relative URL", "/pictures"},
                                           {"domain name", "site.test"},
                                           {"pop host", "pop.site.test"},
                                           {"smtp host", "smtp.site.test"}});
    const wizard_run run = run_wizard(
        host, {},
        {{"What do you want to do", "1"}, {"upgrade questions", "no"}, {"change any", "q"}});
    expect_kept("screen", run.transcript);
    EXPECT_EQ(run.status, 0);
}

} // namespace
