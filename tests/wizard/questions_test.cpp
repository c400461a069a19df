// How the questions of an install take their answers: good ones, bad ones, none at all.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

constexpr const char *cgi_prompt =
    "\n"
    "Webserver directory for cgi-files (This must be a valid script directory)\n"
    "[@/cgi-bin]? ";
constexpr const char *templates_prompt = "\nDirectory for templates [@/spool/kestrel]? ";
constexpr const char *domain_prompt = "\n\nWhat is your domain name [example.com]? ";
constexpr const char *images_question = "\nDirectory for .gif, .jpg and .wav files\n";
constexpr const char *url_prompt = "\nRelative URL for HTML references to these images\n[/vlimg]? ";
constexpr const char *change_prompt = "\nDo you want to change any of your answers [NO]? ";

// The answers of a whole session that installs, the pause behind it included.
const std::vector<std::string> kestrel_answers = {"1",
                                                  "@/cgi-bin",
                                                  "@/spool/kestrel",
                                                  "@/html/vlimg",
                                                  "/vlimg",
                                                  "site.test",
                                                  "pop.site.test",
                                                  "",
                                                  "yes",
                                                  "no",
                                                  "yes",
                                                  "no",
                                                  ""};
const std::vector<std::string> tanager_answers = {"1",      "",          "@/spool/tanager",
                                                  "",       "",          "@/html/vlimg",
                                                  "",       "site.test", "",
                                                  "yes",    "a.test",    "",
                                                  "b.test", ".",         "",
                                                  "",       "no",        "",
                                                  "",       ""};

std::string first_of(const std::vector<std::string> &answers, std::size_t count) {
    std::string script;
    for (std::size_t number = 0; number < count; number++) {
        script += answers[number] + "\n";
    }
    return script;
}

// A directory with everything that the questions would create, so that they say nothing about it.
void create_site(const std::string &product) {
    std::filesystem::create_directories("html/vlimg");
    std::filesystem::create_directories("spool/" + product + "/manuals");
    std::filesystem::create_directories("spool/" + product + "/bulletins");
}

// --- The end of a session ---

class EveryQuestion : public testing::TestWithParam<const char *> {
  protected:
    [[nodiscard]] const std::vector<std::string> &answers() const {
        return std::string_view(GetParam()) == "kestrel" ? kestrel_answers : tanager_answers;
    }
};

TEST_P(EveryQuestion, EndOfInputQuitsAndSavesNothing) {
    std::string whole;
    {
        const world host(GetParam());
        whole = run_wizard(host, {}, first_of(answers(), answers().size())).transcript;
    }
    for (std::size_t given = 0; given + 2 < answers().size(); given++) {
        const world host(GetParam());
        const wizard_run run = run_wizard(host, {}, first_of(answers(), given));
        EXPECT_EQ(run.status, 0) << given << " answers";
        EXPECT_EQ(run.errors, "") << given << " answers";
        ASSERT_TRUE(run.transcript.ends_with(quit_at_a_question)) << run.transcript;
        const std::string held =
            run.transcript.substr(0, run.transcript.size() - quit_at_a_question.size());
        EXPECT_EQ(held, whole.substr(0, held.size())) << given << " answers";
        EXPECT_FALSE(is_there("dist/gxsetup.dat")) << given << " answers";
    }
}

TEST_P(EveryQuestion, TakesAQToQuit) {
    for (const char *answer : {"q", "Q"}) {
        for (std::size_t given = 0; given + 1 < answers().size(); given++) {
            const world host(GetParam());
            const wizard_run run =
                run_wizard(host, {}, first_of(answers(), given) + answer + "\n\n");
            const bool is_list_line = std::string_view(GetParam()) == "tanager" && given >= 10 &&
                                      given <= 13; // there it is a host
            EXPECT_EQ(run.status, 0) << given << " answers";
            EXPECT_TRUE(is_list_line || run.transcript.ends_with("? " + quit_at_a_question))
                << run.transcript;
            EXPECT_FALSE(is_there("dist/gxsetup.dat")) << given << " answers";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Products, EveryQuestion, testing::Values("kestrel", "tanager"));

TEST(Questions, EndOfInputInMidAnswerIsTheEndOfTheAnswer) {
    const std::string script = "1\n\n\n\n/u\nd.test\np\ns\nno\nno\nno\nno\n\n";
    for (std::size_t length = 0; length <= script.size(); length++) {
        const world host("kestrel");
        EXPECT_EQ(run_wizard(host, {}, script.substr(0, length)).status, 0) << length;
    }
}

TEST(Questions, QuittingAfterTheInstallLeavesTheFilesButSavesNoAnswers) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, "1\n\n\n\n\n\n\n\n\n\nQ\n\n");
    EXPECT_TRUE(run.transcript.ends_with("/originals\" [YES]? " + quit_at_a_question));
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
    EXPECT_FALSE(is_there("spool/kestrel/gxsetup.dat"));
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

// --- Answers ---

TEST(Questions, DirectoryThatMustExistIsCheckedAsTypedAndAsDefault) {
    const world host("kestrel");
    add_file("dist/gxdflt.dat", host.meant("cgi_path ./bin\ntemplates @/spool/kestrel\n"));
    const std::string prompt =
        "\n"
        "Webserver directory for cgi-files (This must be a valid script directory)\n"
        "[./bin]? ";
    const std::string no_root = "No root given! please enter a directory from the root\n";
    EXPECT_EQ(
        run_wizard(host, {}, "1\n\ncgi-bin\n /tmp\n@/none\n/\n@/dist/gxsetup\nq\n").transcript,
        welcome + menu("kestrel") + "Installing kestrel, version 3.2a\n\n" +
            install_questions("kestrel") + prompt + no_root + prompt + no_root + prompt + no_root +
            prompt + "@/none does not exist... please enter a valid directory\n" + prompt +
            "/ does not exist... please enter a valid directory\n" + prompt +
            "@/dist/gxsetup does not exist... please enter a valid directory\n" + prompt +
            quit_at_a_question);
}

TEST(Questions, TrailingSlashOfADirectoryIsKept) {
    const world host("kestrel");
    create_site("kestrel");
    run_wizard(host, {}, "1\n@/cgi-bin/\n@/spool/kestrel/\n@/html/vlimg/\n\n\n\n\n\n\nno\nno\n\n");
    EXPECT_NE(shown_file(host, "dist/gxsetup.dat").find("cgi_path @/cgi-bin/\n"),
              std::string::npos);
    EXPECT_NE(shown_file(host, "cgi-bin/kestrel.ini").find("\ntemplates @/spool/kestrel/\n"),
              std::string::npos);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.cgi"));
}

TEST(Questions, HelpIsShownAndTheQuestionAskedAgain) {
    const world host("kestrel");
    EXPECT_EQ(run_wizard(host, {}, "1\n?\n\n?\nq\n").transcript,
              first_question("kestrel") +
                  "\n"
                  "The directory of the web server's programs.\n"
                  "\n"
                  "For more information, e-mail: kestrel-support@varnel.example\n" +
                  cgi_prompt + templates_prompt +
                  "\n"
                  "No specific help is available for this question.\n"
                  "For more information, e-mail: kestrel-support@varnel.example\n" +
                  templates_prompt + quit_at_a_question);
}

TEST(Questions, WithoutHelpFileTheQuestionIsAskedAgain) {
    const world host("kestrel");
    std::filesystem::remove("dist/vsetup.hlp");
    EXPECT_EQ(run_wizard(host, {}, "1\n?\nq\n").transcript, first_question("kestrel") +
                                                                "Error: Help file not found\n\n" +
                                                                cgi_prompt + quit_at_a_question);
}

TEST(Questions, OneCapitalNIsNoNo) {
    const world host("kestrel");
    create_site("kestrel");
    const std::string prompt = "\nDo you want to install/upgrade the merlin cgi [NO]? ";
    const std::string refusal = "Please enter either \"YES\" or \"NO\"\n";
    const std::string transcript =
        run_wizard(host, {}, "1\n\n\n\n\n\n\n\nN\nmaybe\n yes\nno \nNo\nq\n").transcript;
    EXPECT_EQ(transcript.substr(transcript.find(prompt), 5 * prompt.size() + 4 * refusal.size()),
              prompt + refusal + prompt + refusal + prompt + refusal + prompt + refusal + prompt);
    EXPECT_TRUE(transcript.ends_with(change_prompt + quit_at_a_question)) << transcript;
}

TEST(Questions, EveryFormOfYesAndNoIsTaken) {
    for (const char *answer : {"y", "Y", "yes", "YES", "yEs", "y\r"}) {
        const world host("kestrel");
        run_wizard(host, {}, std::string("1\n\n\n\n\n\n\n\n") + answer + "\nno\nno\nno\n\n");
        EXPECT_NE(read_file("dist/gxsetup.dat").find("\nwml TRUE\n"), std::string::npos) << answer;
    }
    for (const char *answer : {"n", "no", "NO", "nO", "no\r"}) {
        const world host("kestrel");
        run_wizard(host, {}, std::string("1\n\n\n\n\n\n\n\n") + answer + "\nno\nno\nno\n\n");
        EXPECT_NE(read_file("dist/gxsetup.dat").find("\nwml FALSE\n"), std::string::npos) << answer;
    }
}

TEST(Questions, ImagesDirectoryMustNotBeTheTemplatesDirectory) {
    const world host("kestrel");
    const std::string question = std::string(images_question) + "[@/html/vlimg]? ";
    const std::string refusal =
        "For efficiency, kestrel now source graphic and wav files from an images directory\n"
        "that can be accessed from the cgi.\n"
        "Please enter a directory with such a path. For more information type '?' then press "
        "enter.\n";
    std::filesystem::create_directories("spool/kestrel");
    EXPECT_EQ(run_wizard(host, {}, "1\n\n\n@/spool/kestrel\n@/spool/kestrel\n@/spool/kestrel/\nq\n")
                  .transcript,
              first_question("kestrel") + templates_prompt + question + refusal + question +
                  refusal + question +
                  "\n"
                  "Relative URL for HTML references to these images\n"
                  "[/kestrel/]? " +
                  quit_at_a_question);
}

TEST(Questions, OldProgramOffersTheUpgrade) {
    const world host("kestrel");
    add_program("cgi-bin/kestrel.cgi", "Version: v1\n");
    const std::string found = first_question("kestrel") +
                              "\n"
                              "gxsetup has found an old version of kestrel in this directory"
                              "\n"
                              "Do you want to switch to the upgrade questions [YES]? ";
    EXPECT_EQ(run_wizard(host, {}, "1\n\nq\n").transcript, found + quit_at_a_question);
    EXPECT_EQ(
        run_wizard(host, {}, "1\n\n\nq\n").transcript,
        found +
            "-------------------------------------------------------------------------------\n"
            "Please answer the following questions so I can upgrade kestrel\n"
            "correctly on your system\n"
            "Notes: Defaults are shown [thus], just press enter to accept default\n"
            "       Type 'q' then press enter to quit at anytime\n"
            "       Type '?' then press enter at any time for help on a particular question\n"
            "       All directory names must be entered from the root\n"
            "       There will be the option to change any answers at the end\n"
            "-------------------------------------------------------------------------------\n"
            "\n"
            "Would you like to replace the old templates [NO]? " +
            quit_at_a_question);
}

TEST(Questions, DecliningTheUpgradeOffersTheOldInstallationsAnswers) {
    const world host("kestrel");
    create_site("old");
    std::filesystem::create_directories("html/old");
    add_program("cgi-bin/kestrel.cgi", "Version: v1\n");
    add_file("cgi-bin/kestrel.ini", host.meant("templates @/spool/old\ndomain ini.test\n"));
    add_file("spool/old/gxsetup.dat", host.meant("vlimg_dir @/html/old\ndomain old.test\n"));
    EXPECT_EQ(run_wizard(host, {}, "1\n\nno\n\n\n\nq\n").transcript,
              first_question("kestrel") +
                  "\n"
                  "gxsetup has found an old version of kestrel in this directory"
                  "\n"
                  "Do you want to switch to the upgrade questions [YES]? "
                  "\n"
                  "Directory for templates [@/spool/old]? " +
                  images_question + "[@/html/old]? " +
                  "\n"
                  "Relative URL for HTML references to these images\n"
                  "[/old]? "
                  "\n"
                  "\n"
                  "What is your domain name [old.test]? " +
                  quit_at_a_question);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini "
              "settings\n"
              "Info:  Installing kestrel, version 3.2a\n"
              "Info:  switch to upgrade?\n"
              "Info:  load gxvalues from ini file\n"
              "Info:  load gxvalues from ini setting of templates directory\n");
}

TEST(Questions, SavedAnswersOfTheOldInstallationAreLoadedOnce) {
    const world host("kestrel");
    create_site("old");
    add_file("dist/gxsetup.dat", host.meant("cgi_path @/cgi-bin\ntemplates @/spool/kestrel\n"));
    add_program("cgi-bin/kestrel.cgi", "Version: v1\n");
    add_file("cgi-bin/kestrel.ini", host.meant("templates @/spool/old\n"));
    add_file("spool/old/gxsetup.dat", host.meant("templates @/spool/older\n"));
    const std::string transcript = run_wizard(host, {}, "1\n\nno\nq\n").transcript;
    EXPECT_TRUE(
        transcript.ends_with("\nDirectory for templates [@/spool/old]? " + quit_at_a_question))
        << transcript;
}

TEST(Questions, OldIniIsLoadedWithoutAnOldProgramToo) {
    const world host("kestrel");
    add_file("cgi-bin/kestrel.ini", host.meant("templates @/spool/old\n"));
    EXPECT_EQ(run_wizard(host, {}, "1\n\nq\n").transcript,
              first_question("kestrel") + "\nDirectory for templates [@/spool/old]? " +
                  quit_at_a_question);
}

TEST(Questions, SecondPassOffersTheAnswersOfTheFirst) {
    const world host("kestrel");
    create_site("kestrel");
    std::filesystem::create_directories("spool/mail");
    std::filesystem::create_directories("html/mail");
    const std::string rule =
        "-------------------------------------------------------------------------------\n";
    const wizard_run run =
        run_wizard(host, {},
                   "1\n\n@/spool/mail\n@/html/mail\n/pictures\nsite.test\npop.site.test\n"
                   "smtp.site.test\nno\nyes\n"
                   "\n\n\n/other\nother.test\n\n\n\nq\n");
    EXPECT_EQ(run.transcript, first_question("kestrel") + templates_prompt + images_question +
                                  "[@/html/vlimg]? " +
                                  "\n"
                                  "Relative URL for HTML references to these images\n"
                                  "[/mail]? " +
                                  domain_prompt +
                                  "\n"
                                  "What is the name of your pop host [mail.site.test]? "
                                  "\n"
                                  "What is the name of your smtp host [pop.site.test]? "
                                  "\n"
                                  "Do you want to install/upgrade the merlin cgi [NO]? "
                                  "\n"
                                  "\n" +
                                  rule +
                                  "gxsetup is ready to install kestrel, to version 3.2a\n"
                                  "using the following answers:\n"
                                  "\n"
                                  "Directories\n"
                                  "webserver directory: @/cgi-bin\n"
                                  "images directory:    @/html/mail\n"
                                  "templates directory: @/spool/mail\n"
                                  "ini file settings\n"
                                  "pop host:            pop.site.test\n"
                                  "smtp host:           smtp.site.test\n"
                                  "domain name:         site.test\n"
                                  "relative images URL: /pictures\n"
                                  "\n" +
                                  change_prompt + install_questions("kestrel") + cgi_prompt +
                                  "\n"
                                  "Directory for templates [@/spool/mail]? " +
                                  images_question +
                                  "[@/html/mail]? "
                                  "\n"
                                  "Relative URL for HTML references to these images\n"
                                  "[/pictures]? "
                                  "\n"
                                  "\n"
                                  "What is your domain name [site.test]? "
                                  "\n"
                                  "What is the name of your pop host [pop.site.test]? "
                                  "\n"
                                  "What is the name of your smtp host [pop.site.test]? "
                                  "\n"
                                  "Do you want to install/upgrade the merlin cgi [NO]? "
                                  "\n"
                                  "\n" +
                                  rule +
                                  "gxsetup is ready to install kestrel, to version 3.2a\n"
                                  "using the following answers:\n"
                                  "\n"
                                  "Directories\n"
                                  "webserver directory: @/cgi-bin\n"
                                  "images directory:    @/html/mail\n"
                                  "templates directory: @/spool/mail\n"
                                  "ini file settings\n"
                                  "pop host:            pop.site.test\n"
                                  "smtp host:           pop.site.test\n"
                                  "domain name:         other.test\n"
                                  "relative images URL: /other\n"
                                  "\n" +
                                  change_prompt + quit_at_a_question);
}

TEST(Questions, SecondPassLooksForNoOldProgram) {
    const world host("kestrel");
    create_site("kestrel");
    add_program("cgi-bin/kestrel.cgi", "Version: v1\n");
    add_file("cgi-bin/kestrel.ini", host.meant("templates @/spool/kestrel\n"));
    const std::string transcript =
        run_wizard(host, {}, "1\n\nno\n\n\n\nother.test\n\n\n\nyes\n\n\n\n\nq\n").transcript;
    EXPECT_TRUE(transcript.ends_with(change_prompt + install_questions("kestrel") + cgi_prompt +
                                     templates_prompt + images_question + "[@/html/vlimg]? " +
                                     url_prompt +
                                     "\n"
                                     "\n"
                                     "What is your domain name [other.test]? " +
                                     quit_at_a_question))
        << transcript;
}

TEST(Questions, SecondPassNumbersTheSetsAnewAndKeepsTheHosts) {
    const world host("tanager");
    const std::string marble = set_number("dist/tpl", "marble");
    const std::string blue = set_number("dist/tpl", "blue");
    create_site("tanager");
    run_wizard(host, {},
               "1\n\n@/spool/first\n\n\n@/html/vlimg\n\n\n\nyes\na.test\n.\n\n\nyes\n"
               "\n@/spool/second\n\n\n@/html/vlimg\n/url\n\n\nyes\nb.test\n.\n\n\nno\nno\nno\n\n");
    EXPECT_EQ(shown_file(host, "cgi-bin/tanager.ini"),
              "# tanager.ini created by gxsetup, version 3.0h for tanager, version 3.2a\n"
              "\n"
              "# sample of tanager\n"
              "timeout 30\n"
              "\n"
              "\n"
              "domain example.com\n"
              "imaphost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/second/marble\n"
              "workarea @/spool/second\n"
              "vlimg /url/marble\n"
              "bulletin_path @/spool/second/bulletins\n"
              "tpl_set " +
                  marble +
                  " @/spool/second/marble /url/marble marble Set\n"
                  "tpl_set " +
                  blue +
                  " @/spool/second/blue /url/blue blue Set\n"
                  "allow_host_login a.test\n"
                  "allow_host_login b.test\n");
    EXPECT_FALSE(is_there("spool/first"));
}

// --- Answers that are hardly answers ---

TEST(OddAnswers, LongLineAnswersTheQuestionsInPieces) {
    const world host("kestrel");
    create_site("kestrel");
    const std::string piece(511, 'a');
    const std::string suggested = "mail." + std::string(506, 'a');
    const std::string yes_or_no = "\nDo you want to install/upgrade the merlin cgi [NO]? ";
    std::string expected = first_question("kestrel") + templates_prompt + images_question +
                           "[@/html/vlimg]? " + url_prompt + domain_prompt;
    expected += "\nWhat is the name of your pop host [" + suggested;
    expected = expected + "]? \nWhat is the name of your smtp host [" + piece + "]? ";
    // 10000 characters are 19 pieces and a shorter one; three of them were answers.
    for (int rest = 0; rest < 17; rest++) {
        expected += yes_or_no + "Please enter either \"YES\" or \"NO\"\n";
    }
    expected += yes_or_no + quit_at_a_question;
    const wizard_run run =
        run_wizard(host, {}, "1\n\n\n\n\n" + std::string(10000, 'a') + "\nq\n\n");
    EXPECT_EQ(run.transcript, expected);
    EXPECT_EQ(run.status, 0);
}

TEST(OddAnswers, LongLineAtADirectoryQuestionIsRefusedPieceByPiece) {
    const world host("kestrel");
    std::string expected = first_question("kestrel") + "/" + std::string(510, 'a') +
                           " does not exist... please enter a valid directory\n";
    for (int rest = 0; rest < 19; rest++) {
        expected +=
            std::string(cgi_prompt) + "No root given! please enter a directory from the root\n";
    }
    const wizard_run run = run_wizard(host, {}, "1\n/" + std::string(9999, 'a') + "\nq\n\n");
    EXPECT_EQ(run.transcript, expected + cgi_prompt + quit_at_a_question);
}

TEST(OddAnswers, TooLongTemplatesDirectoryFailsTheInstallAndHarmsNothing) {
    const world host("kestrel");
    const std::string directory =
        host.path("spool/") + std::string(200, 'b') + "/" + std::string(200, 'c') + "/";
    const std::string longest = directory + std::string(505 - directory.size(), 'd');
    const wizard_run run = run_wizard(host, {}, "1\n\n" + longest + "\n\n\n\n\n\n\n\nno\nno\n\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.transcript.find("Error: Can't copy kestrel.cgi: File name too long\n"),
              std::string::npos);
    EXPECT_NE(run.transcript.find("\nInstallation unsuccessful.\n"), std::string::npos);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.cgi"));
    // Names of three characters just fit.
    EXPECT_EQ(tree_of(host, longest).substr(0, 5), "0770 ");
    EXPECT_EQ(std::filesystem::remove_all(longest), 3);
}

TEST(OddAnswers, NulByteEndsTheAnswer) {
    using namespace std::string_literals;
    const world host("kestrel");
    create_site("kestrel");
    const std::string transcript =
        run_wizard(host, {}, "1\n\n\n\n\nsite.test\0.com\n\0\nq\n"s).transcript;
    EXPECT_TRUE(transcript.ends_with("\nWhat is the name of your pop host [mail.site.test]? "
                                     "\nWhat is the name of your smtp host [mail.site.test]? " +
                                     quit_at_a_question))
        << transcript;
}

TEST(OddAnswers, ConversionsInAnswersAreTextEverywhereButInTheLog) {
    const world host("kestrel");
    std::filesystem::create_directories("html/vlimg");
    const wizard_run run =
        run_wizard(host, {}, "1\n\n@/spool/%s%n%d%%\n\n/%n%s\n%s%n%d%%\n\n\n\n\nyes\nno\n\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.transcript.find("? @/spool/%s%n%d%% does not exist... gxsetup will create it\n"),
              std::string::npos);
    EXPECT_NE(run.transcript.find("domain name:         %s%n%d%%\nrelative images URL: /%n%s\n"),
              std::string::npos);
    EXPECT_TRUE(
        run.transcript.ends_with(farewell("kestrel", "http://%s%n%d%%/cgi-bin/kestrel.cgi")));
    EXPECT_TRUE(is_there("spool/%s%n%d%%/originals/index.tpl"));
    EXPECT_EQ(shown_file(host, "cgi-bin/kestrel.ini"),
              "# kestrel.ini created by gxsetup, version 3.0h for kestrel, version 3.2a\n"
              "\n"
              "# sample of kestrel\n"
              "timeout 30\n"
              "tpl_set 7 of the sample\n"
              "\n"
              "\n"
              "domain %s%n%d%%\n"
              "pophost mail.%s%n%d%%\n"
              "smtphost mail.%s%n%d%%\n"
              "templates @/spool/%s%n%d%%\n"
              "workarea @/spool/%s%n%d%%\n"
              "vlimg /%n%s\n"
              "# Never change the next line, even if you change pophost\n"
              "original_pophost mail.%s%n%d%%\n");
    const std::string log = shown_log(host, "dist/gxsetup.log");
    EXPECT_NE(log.find("Info:  @/spool/<NULL>%n0% does not exist... gxsetup will create it\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("Info:  created directory \"@/spool/%s%n%d%%\"\n"), std::string::npos)
        << log;
}

TEST(OddAnswers, BlanksAndBytesOfNoEncodingAreKept) {
    const world host("kestrel");
    const std::string directory = "spool/two  words \xff\xfe";
    run_wizard(host, {}, "1\n\n@/" + directory + "\n\n\n\n\n\n\n\nno\nno\n\n");
    EXPECT_TRUE(is_there(directory + "/index.tpl"));
    EXPECT_NE(shown_file(host, "cgi-bin/kestrel.ini").find("\nworkarea @/" + directory + "\n"),
              std::string::npos);
    const std::string transcript = run_wizard(host, {}, "1\n\nno\nq\n").transcript;
    EXPECT_TRUE(transcript.ends_with("\nDirectory for templates [@/" + directory + "]? " +
                                     quit_at_a_question))
        << transcript;
}

TEST(OddAnswers, YesAtADirectoryQuestionIsStoredAsTrueAndStopsTheInstall) {
    const world host("kestrel");
    std::filesystem::create_directories("html/vlimg");
    const wizard_run run = run_wizard(host, {}, "1\n\nyes\n\n\n\n\n\n\n\n\n");
    const std::string stopped = "\nPlease wait while gxsetup installs kestrel\n";
    const std::string rule =
        "\n-------------------------------------------------------------------------------\n";
    ASSERT_NE(run.transcript.find(stopped), std::string::npos) << run.transcript;
    EXPECT_EQ(run.transcript.substr(run.transcript.find(stopped)),
              stopped + rule +
                  "Error: Can't write to \"TRUE/gxsetup.log\": No such file or directory\n\n" +
                  "\n" + rule + "install unsuccessful\n\n" + rule +
                  "Error: Can't write to \"TRUE/gxsetup.dat\": No such file or directory\n\n" +
                  "\nPlease press enter to quit...\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
    const std::string log = shown_log(host, "dist/gxsetup.log");
    EXPECT_NE(log.find("Error: Can't create \"TRUE\": no root supplied\n"), std::string::npos)
        << log;
}

TEST(OddAnswers, YesAtTheOtherDirectoryQuestionsStopsTheInstallToo) {
    for (const char *answers : {"\n@/spool/t\nyes\n\n@/html/vlimg\n",
                                "\n@/spool/t\n\nyes\n@/html/vlimg\n", "\n@/spool/t\n\n\nyes\n"}) {
        const world host("tanager");
        const wizard_run run =
            run_wizard(host, {}, "1\n" + std::string(answers) + "\n\n\n\n\n\n\n\n\n\n");
        EXPECT_EQ(run.status, 0) << answers;
        EXPECT_EQ(run.transcript.find("Copying"), std::string::npos) << run.transcript;
        EXPECT_NE(run.transcript.find("\ninstall unsuccessful\n"), std::string::npos) << answers;
        EXPECT_TRUE(is_there("spool/t"));
        EXPECT_FALSE(is_there("cgi-bin/tanager.cgi"));
    }
}

} // namespace
