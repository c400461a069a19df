// How the questions of an install take their answers: good ones, bad ones, none at all.

#include "support/tree.h"
#include "wizard/dialogues.h"
#include "wizard/screens.h"

#include <algorithm>
#include <filesystem>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char *cgi_prompt =
    "\n"
    "Webserver directory for cgi-files (This must be a valid script directory)\n"
    "[@/cgi-bin]? ";

// The lines of a whole session that installs, the pause behind it included.
constexpr std::string_view kestrel_answers =
    "1\n@/cgi-bin\n@/spool/kestrel\n@/html/vlimg\n/vlimg\nsite.test\npop.site.test\n\nyes\nno\n"
    "yes\nno\n\n";
constexpr std::string_view tanager_answers =
    "1\n\n@/spool/tanager\n\n\n@/html/vlimg\n\nsite.test\n\nyes\na.test\n\nb.test\n.\n\n\nno\n\n\n";

std::string first_of(std::string_view answers, std::size_t count) {
    std::size_t end = 0;
    for (std::size_t line = 0; line < count; line++) {
        end = answers.find('\n', end) + 1;
    }
    return std::string(answers.substr(0, end));
}

// --- Screens ---

using Questions = dialogue_test<unpacked_test<kestrel>>;
using OddAnswers = Questions;
using namespace std::string_literals;

constexpr const char *cgi_question = "Webserver directory";
const std::string create_kestrel_site = "mkdir -p html/vlimg spool/kestrel\n";
const std::string add_old_program = "echo echo Version: v1 >cgi-bin/kestrel.cgi\n";

const std::vector<dialogue> dialogues = {
    {"Questions.DirectoryThatMustExistIsCheckedAsTypedAndAsDefault",
     "echo cgi_path ./bin >dist/gxdflt.dat; echo templates @/spool/kestrel >>dist/gxdflt.dat",
     in_order({{cgi_question, ""},
               {cgi_question, "cgi-bin"},
               {cgi_question, " /tmp"},
               {cgi_question, "@/none"},
               {cgi_question, "/"},
               {cgi_question, "@/dist/gxsetup"},
               {cgi_question, "q"}})},
    {"Questions.HelpIsShownAndTheQuestionAskedAgain", "",
     in_order({{cgi_question, "?"},
               {cgi_question, ""},
               {"Directory for templates", "?"},
               {"Directory for templates", "q"}})},
    {"Questions.WithoutHelpFileTheQuestionIsAskedAgain", "rm dist/vsetup.hlp",
     in_order({{cgi_question, "?"}, {cgi_question, "q"}}),
     std::string(cgi_prompt) + "Error: Help file not found\n\n" + cgi_prompt + quit_at_a_question},
    {"Questions.OneCapitalNIsNoNo", create_kestrel_site,
     in_order({{"merlin cgi", "N"},
               {"merlin cgi", "maybe"},
               {"merlin cgi", " yes"},
               {"merlin cgi", "no "},
               {"merlin cgi", "No"},
               {"change any", "q"}})},
    {"Questions.ImagesDirectoryMustNotBeTheTemplatesDirectory", "mkdir spool/kestrel",
     in_order({{"Directory for .gif", "@/spool/kestrel"},
               {"Directory for .gif", "@/spool/kestrel"},
               {"Directory for .gif", "@/spool/kestrel/"},
               {"Relative URL", "q"}})},
    {"Questions.OldProgramOffersTheUpgradeByDefault", add_old_program,
     answering("upgrade questions", "q"),
     "\ngxsetup has found an old version of kestrel in this directory"
     "\nDo you want to switch to the upgrade questions [YES]? " +
         quit_at_a_question},
    {"Questions.OldProgramOffersTheUpgrade", add_old_program,
     answering("replace the old templates", "q")},
    {"Questions.SavedAnswersOfTheOldInstallationAreLoadedOnce",
     add_old_program + "mkdir -p html/vlimg spool/old\n"
                       "echo cgi_path @/cgi-bin >dist/gxsetup.dat\n"
                       "echo templates @/spool/kestrel >>dist/gxsetup.dat\n"
                       "echo templates @/spool/old >cgi-bin/kestrel.ini\n"
                       "echo templates @/spool/older >spool/old/gxsetup.dat",
     answering("upgrade questions", "no") + answering("Directory for templates", "q"),
     "\nDirectory for templates [@/spool/old]? " + quit_at_a_question},
    {"Questions.OldIniIsLoadedWithoutAnOldProgramToo",
     "echo templates @/spool/old >cgi-bin/kestrel.ini", answering("Directory for templates", "q"),
     cgi_prompt + ("\nDirectory for templates [@/spool/old]? " + quit_at_a_question)},
    {"Questions.SecondPassOffersTheAnswersOfTheFirst",
     create_kestrel_site + "mkdir spool/mail html/mail",
     in_order({{"Directory for templates", "@/spool/mail"},
               {"Directory for .gif", "@/html/mail"},
               {"Relative URL", "/pictures"},
               {"domain name", "site.test"},
               {"pop host", "pop.site.test"},
               {"smtp host", "smtp.site.test"},
               {"change any", "yes"},
               {"Relative URL", "/other"},
               {"domain name", "other.test"},
               {"change any", "q"}})},
    {"Questions.SecondPassLooksForNoOldProgram",
     create_kestrel_site + add_old_program + "echo templates @/spool/kestrel >cgi-bin/kestrel.ini",
     in_order({{"upgrade questions", "no"},
               {"domain name", "other.test"},
               {"change any", "yes"},
               {"domain name", "q"}})},
    {"OddAnswers.NulByteEndsTheAnswer", create_kestrel_site,
     answering("domain name", "site.test\0.com"s) + answering("pop host", "\0"s) +
         answering("smtp host", "q"),
     "\nWhat is the name of your pop host [mail.site.test]? "
     "\nWhat is the name of your smtp host [mail.site.test]? " +
         quit_at_a_question},
};

const int registered = register_rows<Questions>(dialogues);

// --- The end of a session ---

class EveryQuestion : public testing::TestWithParam<const char *> {
  protected:
    const std::string_view answers =
        std::string_view(GetParam()) == "kestrel" ? kestrel_answers : tanager_answers;
    const std::size_t count =
        static_cast<std::size_t>(std::count(answers.begin(), answers.end(), '\n'));
};

TEST_P(EveryQuestion, EndOfInputQuitsAndSavesNothing) {
    std::string whole;
    {
        const world host(GetParam());
        whole = run_wizard(host, {}, typed(answers)).transcript;
    }
    for (std::size_t given = 0; given + 2 < count; given++) {
        const world host(GetParam());
        const wizard_run run = run_wizard(host, {}, typed(first_of(answers, given)));
        EXPECT_EQ(run.errors, "") << given << " answers";
        ASSERT_THAT(run.transcript, EndsWith(quit_at_a_question));
        const std::string held =
            run.transcript.substr(0, run.transcript.size() - quit_at_a_question.size());
        EXPECT_EQ(held, whole.substr(0, held.size())) << given << " answers";
        EXPECT_FALSE(is_there("dist/gxsetup.dat")) << given << " answers";
    }
}

TEST_P(EveryQuestion, TakesAQToQuit) {
    for (const std::string answer : {"q", "Q"}) {
        for (std::size_t given = 0; given + 1 < count; given++) {
            const world host(GetParam());
            const wizard_run run =
                run_wizard(host, {}, typed(first_of(answers, given) + answer + "\n\n"));
            const bool is_list_line = std::string_view(GetParam()) == "tanager" && given >= 10 &&
                                      given <= 13; // there it is a host
            EXPECT_TRUE(is_list_line || run.transcript.ends_with("? " + quit_at_a_question))
                << run.transcript;
            EXPECT_FALSE(is_there("dist/gxsetup.dat")) << given << " answers";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Products, EveryQuestion, testing::Values("kestrel", "tanager"));

TEST_F(Questions, EndOfInputInMidAnswerIsTheEndOfTheAnswer) {
    const std::string script = "1\n\n\n\n/u\nd.test\np\ns\nno\nno\nno\nno\n\n";
    for (std::size_t length = 0; length <= script.size(); length++) {
        const world fresh("kestrel");
        run_wizard(fresh, {}, typed(script.substr(0, length)));
    }
}

TEST_F(Questions, QuittingAfterTheInstallLeavesTheFilesButSavesNoAnswers) {
    const wizard_run run = run_wizard(host, {}, {{"original templates", "Q"}});
    EXPECT_THAT(run.transcript, EndsWith("/originals\" [YES]? " + quit_at_a_question));
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
    EXPECT_FALSE(is_there("spool/kestrel/gxsetup.dat"));
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

TEST_F(Questions, TrailingSlashOfADirectoryIsKept) {
    shell(create_kestrel_site);
    run_wizard(host, {},
               no_to_both + console_script{{"Webserver directory", "@/cgi-bin/"},
                                           {"Directory for templates", "@/spool/kestrel/"},
                                           {"Directory for .gif", "@/html/vlimg/"}});
    EXPECT_THAT(shown_file(host, "dist/gxsetup.dat"), HasSubstr("cgi_path @/cgi-bin/\n"));
    EXPECT_THAT(shown_file(host, "cgi-bin/kestrel.ini"),
                HasSubstr("\ntemplates @/spool/kestrel/\n"));
    EXPECT_TRUE(is_there("cgi-bin/kestrel.cgi"));
}

TEST_F(Questions, EveryFormOfYesAndNoIsTaken) {
    for (const std::string answer :
         {"y", "Y", "yes", "YES", "yEs", "y\r", "n", "no", "NO", "nO", "no\r"}) {
        const world fresh("kestrel");
        run_wizard(fresh, {}, no_to_both + answering("merlin cgi", answer));
        EXPECT_THAT(
            read_file("dist/gxsetup.dat"),
            HasSubstr(answer[0] == 'y' || answer[0] == 'Y' ? "\nwml TRUE\n" : "\nwml FALSE\n"))
            << answer;
    }
}

TEST_F(Questions, DecliningTheUpgradeOffersTheOldInstallationsAnswers) {
    shell("mkdir -p html/vlimg html/old spool/old/manuals spool/old/bulletins");
    add_program("cgi-bin/kestrel.cgi", "Version: v1\n");
    add_answers(host, "cgi-bin/kestrel.ini", "templates @/spool/old\ndomain ini.test\n");
    add_answers(host, "spool/old/gxsetup.dat", "vlimg_dir @/html/old\ndomain old.test\n");
    const wizard_run run =
        run_wizard(host, {}, {{"upgrade questions", "no"}, {"your domain name", "q"}});
    expect_kept("screen", run.transcript);
    expect_kept("log", shown_log(host, "dist/gxsetup.log"));
}

TEST_F(Questions, SecondPassNumbersTheSetsAnewAndKeepsTheHosts) {
    const world with_sets("tanager");
    const set_numbers numbers("dist/tpl");
    shell("mkdir -p html/vlimg spool/tanager/manuals spool/tanager/bulletins");
    run_wizard(with_sets, {},
               in_order({{"Directory for templates", "@/spool/first"},
                         {"Directory for .gif", "@/html/vlimg"},
                         {"IMAP hosts", "yes\na.test\n."},
                         {"change any", "yes"},
                         {"Directory for templates", "@/spool/second"},
                         {"Directory for .gif", "@/html/vlimg"},
                         {"Relative URL", "/url"},
                         {"IMAP hosts", "yes\nb.test\n."},
                         {"original templates", "no"},
                         {"temporary files", "no"}}));
    expect_kept("tanager.ini", numbers.named(shown_file(with_sets, "cgi-bin/tanager.ini")));
    EXPECT_FALSE(is_there("spool/first"));
}

// --- Answers that are hardly answers ---

TEST_F(OddAnswers, LongLineAnswersTheQuestionsInPieces) {
    shell(create_kestrel_site);
    const std::string yes_or_no = "\nDo you want to install/upgrade the merlin cgi [NO]? ";
    std::string expected = "\nWhat is the name of your pop host [mail." + std::string(506, 'a') +
                           "]? \nWhat is the name of your smtp host [" + std::string(511, 'a') +
                           "]? ";
    // 10000 characters are 19 pieces and a shorter one; three of them were answers.
    for (int rest = 0; rest < 17; rest++) {
        expected += yes_or_no + "Please enter either \"YES\" or \"NO\"\n";
    }
    const wizard_run run =
        run_wizard(host, {}, typed("1\n\n\n\n\n" + std::string(10000, 'a') + "\nq\n\n"));
    EXPECT_THAT(run.transcript, EndsWith("\nWhat is your domain name [example.com]? " + expected +
                                         yes_or_no + quit_at_a_question));
}

TEST_F(OddAnswers, LongLineAtADirectoryQuestionIsRefusedPieceByPiece) {
    std::string expected = cgi_prompt + ("/" + std::string(510, 'a')) +
                           " does not exist... please enter a valid directory\n";
    for (int rest = 0; rest < 19; rest++) {
        expected +=
            std::string(cgi_prompt) + "No root given! please enter a directory from the root\n";
    }
    const wizard_run run = run_wizard(host, {}, typed("1\n/" + std::string(9999, 'a') + "\nq\n\n"));
    EXPECT_THAT(run.transcript, EndsWith(expected + cgi_prompt + quit_at_a_question));
}

TEST_F(OddAnswers, TooLongTemplatesDirectoryFailsTheInstallAndHarmsNothing) {
    const std::string directory =
        host.path("spool/") + std::string(200, 'b') + "/" + std::string(200, 'c') + "/";
    const std::string longest = directory + std::string(505 - directory.size(), 'd');
    const wizard_run run =
        run_wizard(host, {}, no_to_both + answering("Directory for templates", longest));
    EXPECT_THAT(run.transcript, HasSubstr("Error: Can't copy kestrel.cgi: File name too long\n"));
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation unsuccessful.\n"));
    EXPECT_TRUE(is_there("cgi-bin/kestrel.cgi"));
    // Names of three characters just fit.
    EXPECT_THAT(tree_of(host, longest), StartsWith("0770 "));
    EXPECT_EQ(std::filesystem::remove_all(longest), 3);
}

TEST_F(OddAnswers, BlanksAndBytesOfNoEncodingAreKept) {
    const std::string directory = "spool/two  words \xff\xfe";
    run_wizard(host, {}, no_to_both + answering("Directory for templates", "@/" + directory));
    EXPECT_TRUE(is_there(directory + "/index.tpl"));
    EXPECT_THAT(shown_file(host, "cgi-bin/kestrel.ini"),
                HasSubstr("\nworkarea @/" + directory + "\n"));
    const wizard_run run = run_wizard(host, {},
                                      {{"What do you want to do", "1"},
                                       {"upgrade questions", "no"},
                                       {"Directory for templates", "q"}});
    EXPECT_THAT(run.transcript,
                EndsWith("\nDirectory for templates [@/" + directory + "]? " + quit_at_a_question));
}

TEST_F(OddAnswers, YesAtADirectoryQuestionIsStoredAsTrueAndStopsTheInstall) {
    std::filesystem::create_directories("html/vlimg");
    const wizard_run run = run_wizard(host, {}, {{"Directory for templates", "yes"}});
    EXPECT_THAT(
        run.transcript,
        EndsWith("\nPlease wait while gxsetup installs kestrel\n" + rule +
                 "Error: Can't write to \"TRUE/gxsetup.log\": No such file or directory\n\n\n" +
                 rule + "install unsuccessful\n\n" + rule +
                 "Error: Can't write to \"TRUE/gxsetup.dat\": No such file or directory\n\n"
                 "\nPlease press enter to quit...\n"));
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                HasSubstr("Error: Can't create \"TRUE\": no root supplied\n"));
}

TEST_F(OddAnswers, YesAtTheOtherDirectoryQuestionsStopsTheInstallToo) {
    for (const std::string question : {"manual files", "bulletin files", ".gif"}) {
        const world with_sets("tanager");
        const console_script answers = {{"Directory for templates", "@/spool/t"},
                                        {"Directory for " + question, "yes"}};
        const wizard_run run =
            run_wizard(with_sets, {}, question == ".gif" ? answers : images_here + answers);
        EXPECT_EQ(run.transcript.find("Copying"), std::string::npos) << run.transcript;
        EXPECT_THAT(run.transcript, HasSubstr("\ninstall unsuccessful\n"));
        EXPECT_TRUE(is_there("spool/t"));
        EXPECT_FALSE(is_there("cgi-bin/tanager.cgi"));
    }
}

} // namespace
