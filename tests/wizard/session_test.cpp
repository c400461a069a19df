// The session around the flows: what it loads and settles, its main menu, what it saves.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

constexpr const char *enter_throughout = "1\n\n\n\n\n\n\n\n\n\n\n\n\n";

// A file of answers; "@" is the root.
void add_answers(const world &host, const std::string &path, std::string_view lines) {
    add_file(path, host.meant(lines));
}

// --- Menu ---

TEST(Menu, QuittingSavesNothing) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, "4\n\n");
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
    const wizard_run run = run_wizard(host, {}, "4\n\n");
    EXPECT_EQ(run.transcript, welcome + menu("kestrel", "3.2a", "upgrade", "2") + goodbye);
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"),
              "# by hand\naction upgrade\ntemplates @/spool/kestrel\n");
}

TEST(Menu, WhatIsNoChoiceIsAskedAgain) {
    const world host("kestrel");
    for (const char *answer : {"0", "5", "word", "-1", "yes", "99999999999999999999", "/"}) {
        const wizard_run run = run_wizard(host, {}, std::string(answer) + "\n4\n\n");
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
    EXPECT_EQ(run_wizard(host, {}, "q\n\n").transcript,
              welcome + menu("kestrel", "3.2a", "remove", "4") + quit_at_a_question);
    EXPECT_EQ(run_wizard(host, {}, "\n\n").transcript,
              welcome + menu("kestrel", "3.2a", "remove", "4") + goodbye);
    add_answers(host, "dist/gxsetup.dat", "action custom\ntemplates @/spool/kestrel\n");
    EXPECT_EQ(run_wizard(host, {}, "q\n\n").transcript,
              welcome + menu("kestrel", "3.2a", "custom", "3") + quit_at_a_question);
}

TEST(Menu, AnActionInCapitalsIsOfferedAsItStands) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat", "action INSTALL\ntemplates @/spool/kestrel\n");
    EXPECT_EQ(run_wizard(host, {}, "q\n\n").transcript,
              welcome + menu("kestrel", "3.2a", "INSTALL", "INSTALL") + quit_at_a_question);
}

TEST(Menu, InstallAndUpgradeAreRefusedInsideTheTemplatesDirectory) {
    const world host("kestrel");
    add_answers(host, "dist/gxdflt.dat", "templates @/dist\n");
    const std::string custom_menu = menu("kestrel", "3.2a", "custom", "3");
    const std::string refusal =
        "This function cannot be run from within the templates directory\n\n";
    EXPECT_EQ(run_wizard(host, {}, "1\n2\n4\n\n").transcript,
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
    EXPECT_EQ(run_wizard(host, {}, "9\n1\n2\n4\n\n").transcript,
              "\nWhat version of kestrel is it? " + welcome + shown_menu + missing + shown_menu +
                  missing + shown_menu + goodbye);
}

// --- Product and version ---

TEST(Product, FirstProgramThatIsThereDecides) {
    const world host("tanager");
    add_program("dist/osprey.cgi", "Version: v1\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("tanager") + goodbye);
    add_program("dist/plover.cgi", "Version: v2\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("plover", "2") + goodbye);
    add_program("dist/kestrel.cgi", "Version: v3\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("kestrel", "3") + goodbye);
}

TEST(Product, SavedNameIsNotGuessedAgain) {
    const world host("tanager");
    add_program("dist/kestrel.cgi", "Version: v3\n");
    add_answers(host, "dist/gxsetup.dat", "prod_name tanager\ntemplates @/spool/tanager\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("tanager") + goodbye);
}

TEST(Product, IsAskedForUntilItIsOneOfTheFour) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.cgi");
    EXPECT_EQ(run_wizard(host, {}, "merlin\nkestre\nOSPREY\n\n7\n4\n\n").transcript,
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
    EXPECT_EQ(run_wizard(host, {}, "\n7\n4\n\n").transcript,
              "\nWhat product am I installing [plover]? "
              "\nWhat version of plover is it? " +
                  welcome + menu("plover", "7") + goodbye);
}

TEST(Product, SupportAddressIsThatOfTheProduct) {
    const world host("kestrel");
    EXPECT_EQ(run_wizard(host, {}, "?\n4\n\n").transcript,
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
    EXPECT_EQ(run_wizard(host, {}, "5.5\n4\n\n").transcript,
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
        EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript,
                  welcome + menu("kestrel", one.version) + goodbye)
            << one.output;
        EXPECT_FALSE(is_there("dist/ver.txt"));
    }
}

TEST(Version, ProgramThatFailsMayStillTell) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "echo Version: v8\nexit 3\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("kestrel", "8") + goodbye);
}

TEST(Version, ProgramThatCrashesMayHaveToldBefore) {
    for (const char *signal : {"SEGV", "KILL", "PIPE"}) {
        const world host("kestrel");
        add_script("dist/kestrel.cgi",
                   std::string("echo Version: v8\nkill -") + signal + " $$\nsleep 9\n");
        EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript,
                  welcome + menu("kestrel", "8") + goodbye)
            << signal;
        EXPECT_FALSE(is_there("dist/ver.txt"));
    }
}

TEST(Version, IsAskedForWhenTheProgramCrashesBeforeItTells) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "kill -SEGV $$\n");
    const wizard_run run = run_wizard(host, {}, "6\n4\n\n");
    EXPECT_EQ(run.transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
    EXPECT_EQ(run.status, 0);
}

TEST(Version, IsFoundBehindAMegabyteWithoutALineEnd) {
    const world host("kestrel");
    add_file("dist/noise", std::string(1'000'000, 'x') + "\nVersion: v8\n");
    add_script("dist/kestrel.cgi", "cat noise\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("kestrel", "8") + goodbye);
}

TEST(Version, AMegabyteWithoutAnythingIsNone) {
    const world host("kestrel");
    add_file("dist/noise", std::string(1'000'000, 'v'));
    add_script("dist/kestrel.cgi", "cat noise\n");
    EXPECT_EQ(run_wizard(host, {}, "6\n4\n\n").transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
}

TEST(Version, OfAMegabyteIsCutLikeAnyLine) {
    const world host("kestrel");
    add_file("dist/noise", "Version: v" + std::string(1'000'000, '7') + "\n");
    add_script("dist/kestrel.cgi", "cat noise\n");
    // What a line holds, less the label.
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript,
              welcome + menu("kestrel", std::string(500, '7')) + goodbye);
}

TEST(Version, BytesThatAreNoTextDoNoHarm) {
    std::string bytes;
    for (int value = 255; value >= 0; value--) {
        bytes.push_back(static_cast<char>(value));
    }
    const world host("kestrel");
    add_file("dist/noise", bytes + bytes + "\nVersion: v\xff\x01\x1b[m\n");
    add_script("dist/kestrel.cgi", "cat noise\n");
    const wizard_run run = run_wizard(host, {}, "4\n\n");
    EXPECT_EQ(run.transcript, welcome + menu("kestrel", "\xff\x01\x1b[m") + goodbye);
    EXPECT_EQ(run.status, 0);
}

TEST(Version, ProgramDoesNotReadTheAnswers) {
    const world host("kestrel");
    add_script("dist/kestrel.cgi", "cat\necho Version: v8\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("kestrel", "8") + goodbye);
}

TEST(Version, ProgramThatCannotBeStartedLeavesNothingBehind) {
    const world host("kestrel");
    std::filesystem::permissions("dist/kestrel.cgi", std::filesystem::perms(0644));
    EXPECT_EQ(run_wizard(host, {}, "6\n4\n\n").transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

TEST(Version, IsAskedForWhenTheOutputHasNowhereToGo) {
    const world host("kestrel");
    add_file("dist/ver.txt/kept", "");
    EXPECT_EQ(run_wizard(host, {}, "6\n4\n\n").transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
    EXPECT_TRUE(is_there("dist/ver.txt/kept"));
}

// --- Loading ---

TEST(Loading, MissingDefaultsAreReportedAndTheBuiltInOnesStand) {
    const world host("kestrel");
    std::filesystem::remove("dist/gxdflt.dat");
    const wizard_run run = run_wizard(host, {}, "4\n\n");
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
    run_wizard(host, {"-debug"}, "4\n\n");
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
    EXPECT_NE(log.find(begin + answers + "Debug: Loading gxvalues from default file\n"),
              std::string::npos)
        << log;
}

TEST(Loading, EachAnswerIsLoggedAtDebugLevelOnly) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat", "domain example.org\n");
    const auto is_logged = [&](const std::vector<std::string> &arguments) {
        run_wizard(host, arguments, "4\n\n");
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
        EXPECT_EQ(run_wizard(host, {}, "1\n\nq\n").transcript,
                  first_question(one.product) + "\nDirectory for templates [" + one.directory +
                      "]? " + quit_at_a_question);
    }
}

TEST(Loading, SpoolDirectoryIsKnownInAnyLetterCase) {
    const world host("plover");
    add_answers(host, "dist/gxdflt.dat", "cgi_path @/cgi-bin\ntemplates /Var/Spool\n");
    EXPECT_EQ(run_wizard(host, {}, "1\n\nq\n").transcript,
              first_question("plover") + "\nDirectory for templates [/Var/Spool/plov]? " +
                  quit_at_a_question);
}

TEST(Loading, AnswersInTheTemplatesDirectoryAreLoadedWhenThereAreNoneHere) {
    const world host("tanager");
    std::filesystem::create_directories("html/vlimg");
    std::filesystem::create_directories("spool/other/manuals");
    std::filesystem::create_directories("spool/other/bulletins");
    // They come after the images directory is settled, so that theirs stands.
    add_answers(host, "spool/tanager/gxsetup.dat",
                "vlimg_dir @/html/vlimg\naction upgrade\ntemplates @/spool/other\n");
    EXPECT_EQ(run_wizard(host, {}, "1\n\n\n\n\nq\n").transcript,
              welcome + menu("tanager", "3.2a", "upgrade", "2") +
                  "Installing tanager, version 3.2a\n\n" + install_questions("tanager") +
                  "\n"
                  "Webserver directory for cgi-files (This must be a valid script directory)\n"
                  "[@/cgi-bin]? "
                  "\n"
                  "Directory for templates [@/spool/other]? "
                  "\n"
                  "Directory for manual files [@/spool/other/manuals]? "
                  "\n"
                  "Directory for bulletin files [@/spool/other/bulletins]? "
                  "\n"
                  "Directory for .gif, .jpg and .wav files\n"
                  "[@/html/vlimg]? " +
                  quit_at_a_question);
}

TEST(Loading, AnswersHereKeepThoseInTheTemplatesDirectoryOut) {
    const world host("kestrel");
    add_answers(host, "dist/gxsetup.dat", "templates @/spool/kestrel\n");
    add_answers(host, "spool/kestrel/gxsetup.dat", "action upgrade\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript, welcome + menu("kestrel") + goodbye);
}

TEST(Loading, FileOfAHundredThousandLinesLoads) {
    const world host("kestrel");
    std::string lines = host.meant("templates @/spool/kestrel\n");
    for (int number = 0; number < 100000; number++) {
        lines += "key" + std::to_string(number) + " value\n";
    }
    add_file("dist/gxsetup.dat", lines + "action upgrade\n");
    EXPECT_EQ(run_wizard(host, {}, "4\n\n").transcript,
              welcome + menu("kestrel", "3.2a", "upgrade", "2") + goodbye);
}

TEST(Loading, BytesThatAreNoTextDoNoHarm) {
    using namespace std::string_literals;
    const world host("kestrel");
    add_file("dist/gxsetup.dat", host.meant("templates @/spool/kestrel\n") + "act\0ion remove\n"s +
                                     "\0\0\0 \0\n"s + "%s%n %d%%\n\xff\xfe \x80\n" +
                                     std::string(2000, '\0') + "\naction upgrade\n");
    const wizard_run run = run_wizard(host, {}, "4\n\n");
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
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"), "# file written by gxsetup, version 3.0h\n"
                                                    "# library: INI v1.3c\n"
                                                    "\n"
                                                    "# Lines starting with # are comments\n"
                                                    "\n"
                                                    "cgi_path @/cgi-bin\n"
                                                    "vlimg_dir @/html/vlimg\n"
                                                    "templates @/spool/kestrel\n"
                                                    "op_system UNIX\n"
                                                    "action upgrade\n"
                                                    "vlimg /vlimg\n"
                                                    "pophost mail.example.com\n"
                                                    "smtphost mail.example.com\n"
                                                    "domain example.com\n"
                                                    "log_lvl INFO\n"
                                                    "wml_name merlin\n"
                                                    "wml FALSE\n"
                                                    "kept value\n"
                                                    "prod_name kestrel\n"
                                                    "manual @/spool/kestrel/manuals\n"
                                                    "cgi_name kestrel\n"
                                                    "version 3.2a\n"
                                                    "workarea @/spool/kestrel\n");
}

TEST(Saving, NextRunOffersTheAnswersOfTheFirst) {
    const world host("plover");
    std::filesystem::create_directory("cgi-bin/mail");
    run_wizard(host, {},
               "1\n@/cgi-bin/mail\n@/spool/mail\n@/html/mail\n/pictures\nsite.test\n"
               "pop.site.test\nsmtp.site.test\nno\nno\nno\nno\n\n");
    const wizard_run run = run_wizard(host, {}, "1\n\nno\n\n\n\n\n\n\n\nq\n");
    EXPECT_EQ(
        run.transcript,
        welcome + menu("plover", "3.2a", "upgrade", "2") + "Installing plover, version 3.2a\n\n" +
            install_questions("plover") +
            "\n"
            "Webserver directory for cgi-files (This must be a valid script directory)\n"
            "[@/cgi-bin/mail]? "
            "\n"
            "gxsetup has found an old version of plover in this directory"
            "\n"
            "Do you want to switch to the upgrade questions [YES]? "
            "\n"
            "Directory for templates [@/spool/mail]? "
            "\n"
            "Directory for .gif, .jpg and .wav files\n"
            "[@/html/mail]? "
            "\n"
            "Relative URL for HTML references to these images\n"
            "[/mail]? "
            "\n"
            "\n"
            "What is your domain name [site.test]? "
            "\n"
            "What is the name of your pop host [mail.site.test]? "
            "\n"
            "What is the name of your smtp host [mail.site.test]? "
            "\n"
            "Do you want to install/upgrade the merlin cgi [NO]? "
            "\n"
            "\n"
            "-------------------------------------------------------------------------------\n"
            "gxsetup is ready to install plover, to version 3.2a\n"
            "using the following answers:\n"
            "\n"
            "Directories\n"
            "webserver directory: @/cgi-bin/mail\n"
            "images directory:    @/html/mail\n"
            "templates directory: @/spool/mail\n"
            "ini file settings\n"
            "pop host:            mail.site.test\n"
            "smtp host:           mail.site.test\n"
            "domain name:         site.test\n"
            "relative images URL: /mail\n"
            "\n"
            "\n"
            "Do you want to change any of your answers [NO]? " +
            quit_at_a_question);
    EXPECT_EQ(run.status, 0);
}

} // namespace
