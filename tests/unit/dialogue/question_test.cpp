#include "dialogue/question.h"

#include "core/console.h"
#include "core/log.h"
#include "dialogue/help.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace std::string_literals;

// What a question showed and the answer it gave.
struct dialogue {
    std::string transcript;
    std::string answer;
};

class Dialogue : public scratch_test {
  protected:
    Dialogue() {
        set_loglvl(LOG_INFO);
        inilog(".", "gxsetup");
    }

    ~Dialogue() override {
        close_log();
        set_loglvl(LOG_ERROR);
    }

    template <class... Arguments>
    static dialogue ask(std::string_view input, question_number number, const char *dflt,
                        Arguments... arguments) {
        dialogue held;
        held.transcript =
            console_of(input, [&] { held.answer = question(number, dflt, arguments...); });
        return held;
    }

    static std::string answer_to(std::string_view input, question_number number, const char *dflt) {
        return ask(input, number, dflt).answer;
    }
};

using Question = Dialogue;
using QuestionDefault = Dialogue;
using QuestionYesNo = Dialogue;
using QuestionQuit = Dialogue;
using QuestionHelp = Dialogue;
using QuestionDirectory = Dialogue;
using QuestionInput = Dialogue;

// Asks in a process of its own, which the question is to end; what it shows goes to standard error.
void ask_until_the_end(std::string_view input, question_number number, const char *dflt) {
    feed_console(input);
    print_on_standard_error();
    question(number, dflt);
}

} // namespace

// --- Prompt and default ---

TEST_F(Question, ShowsItsTextBetweenALineFeedAndAQuestionMark) {
    const dialogue held = ask("example.com\n", I_SDOM_Q, nullptr);
    EXPECT_EQ(held.transcript, "\nSuggested domain name ? ");
    EXPECT_EQ(held.answer, "example.com");
}

TEST_F(Question, ShowsItsDefaultInSquareBrackets) {
    const dialogue held = ask("\n", I_SDOM_Q, "example.com");
    EXPECT_EQ(held.transcript, "\nSuggested domain name [example.com]? ");
    EXPECT_EQ(held.answer, "example.com");
}

TEST_F(Question, FillsItsTextWithTheFurtherArguments) {
    EXPECT_EQ(ask("a\n", I_CGI_NAME_Q, "kestrel", 2, "(wml)").transcript,
              "\nCGI name 2 (wml) [kestrel]? ");
    EXPECT_EQ(ask("y\n", YN_ORGTMP_Q, "NO", "/spool", '/', "now").transcript,
              "\nMake a copy of the original templates to \"/spool/originals\" now[NO]? ");
}

TEST_F(Question, RowsThatBeginWithALineFeedStartWithAnEmptyLine) {
    EXPECT_EQ(ask("example.com\n", I_DOM_Q, nullptr).transcript, "\n\nWhat is your domain name ? ");
}

TEST_F(Question, TheRowWithoutTextShowsOnlyTheMark) {
    EXPECT_EQ(ask("x\n", BLANK, nullptr).transcript, "\n? ");
}

TEST_F(Question, PercentsInDefaultAndArgumentsAreText) {
    const dialogue held = ask("\n", C_SCRURL_Q, "50%s", "100%d");
    EXPECT_EQ(held.transcript, "\nEnter url for message 100%d [50%s]? ");
    EXPECT_EQ(held.answer, "50%s");
}

TEST_F(Question, ItsTextIsCutAt511Characters) {
    const std::string host(2000, 'h');
    EXPECT_EQ(ask("x\n", C_SCRURL_Q, nullptr, host.c_str()).transcript,
              "\nEnter url for message " + std::string(489, 'h') + "? ");
}

TEST_F(QuestionDefault, WithoutOneAnEmptyLineAsksAgainWithoutAWord) {
    const dialogue held = ask("\n\r\nx\n", I_SDOM_Q, "");
    EXPECT_EQ(held.transcript, "\nSuggested domain name ? \nSuggested domain name ? "
                               "\nSuggested domain name ? ");
    EXPECT_EQ(held.answer, "x");
}

TEST_F(QuestionDefault, ThreeQuestionsTakeAnEmptyLine) {
    EXPECT_EQ(ask("\n", C_SCRMESS_Q, nullptr, 1).transcript, "\nEnter message1 ? ");
    EXPECT_EQ(ask("\n", C_SCRMESS_Q, nullptr, 1).answer, "");
    EXPECT_EQ(ask("\n", C_SCRURL_Q, "", "one").answer, "");
    EXPECT_EQ(ask("\n", C_BODY_ADD_Q, nullptr, 1).answer, "");
    EXPECT_EQ(ask("\n", C_SCRURL_Q, "kept", "one").answer, "kept");
}

TEST_F(QuestionDefault, TheEnterAndSwitchAndBlankQuestionsAskAgain) {
    for (const question_number number : {I_ENTER_Q, I_SWITCHI_Q, BLANK}) {
        EXPECT_EQ(answer_to("\n\nx\n", number, nullptr), "x");
    }
}

TEST_F(QuestionDefault, TrueAndFalseAreShownAsYesAndNo) {
    EXPECT_EQ(ask("\n", YN_CHDIR_Q, "TRUE").transcript,
              "\nDo you want to change the default suggested directories [YES]? ");
    EXPECT_EQ(answer_to("\n", YN_CHDIR_Q, "TRUE"), "TRUE");
    EXPECT_EQ(ask("\n", YN_CHDIR_Q, "false").transcript,
              "\nDo you want to change the default suggested directories [NO]? ");
    EXPECT_EQ(answer_to("\n", YN_CHDIR_Q, "false"), "FALSE");
}

TEST_F(QuestionDefault, ActionsAreShownAsTheNumbersOfTheirFlows) {
    EXPECT_EQ(ask("\n", I_MENU_Q, "upgrade").transcript, "\nWhat do you want to do [2]? ");
    EXPECT_EQ(answer_to("\n", I_MENU_Q, "install"), "1");
    EXPECT_EQ(answer_to("\n", I_MENU_Q, "upgrade"), "2");
    EXPECT_EQ(answer_to("\n", I_MENU_Q, "custom"), "3");
    EXPECT_EQ(answer_to("\n", I_MENU_Q, "remove"), "4");
    EXPECT_EQ(answer_to("\n", I_MENU_Q, "Install"), "Install");
    EXPECT_EQ(answer_to("\n", I_MENU_Q, "installed"), "installed");
    EXPECT_EQ(answer_to("install\n", I_MENU_Q, "upgrade"), "install");
}

TEST_F(QuestionDefault, IsCutAt511Characters) {
    const std::string text(600, 'd');
    EXPECT_EQ(answer_to("\n", I_SDOM_Q, text.c_str()), std::string(511, 'd'));
}

TEST_F(QuestionDefault, MayBeTheAnswerOfTheQuestionBefore) {
    feed_console("example.com\n\n");
    EXPECT_EQ(console_of([] {
                  const char *first = question(I_SDOM_Q, nullptr);
                  EXPECT_STREQ(question(I_SPOP_Q, first), "example.com");
              }),
              "\nSuggested domain name ? \nSuggested pop host [example.com]? ");
}

// --- Yes and no ---

TEST_F(QuestionYesNo, TheAnswersThatMeanYes) {
    for (const char *typed : {"y\n", "Y\n", "yes\n", "YES\n", "yEs\r\n"}) {
        EXPECT_EQ(answer_to(typed, YN_CHDIR_Q, "NO"), "TRUE") << typed;
    }
}

TEST_F(QuestionYesNo, TheAnswersThatMeanNo) {
    for (const char *typed : {"n\n", "no\n", "NO\n", "No\n", "nO\r\n"}) {
        EXPECT_EQ(answer_to(typed, YN_CHDIR_Q, "YES"), "FALSE") << typed;
    }
}

TEST_F(QuestionYesNo, ASingleUpperCaseNIsNotANo) {
    const dialogue held = ask("N\nn\n", YN_CHDIR_Q, "YES");
    EXPECT_EQ(held.transcript, "\nDo you want to change the default suggested directories [YES]? "
                               "Please enter either \"YES\" or \"NO\"\n"
                               "\nDo you want to change the default suggested directories [YES]? ");
    EXPECT_EQ(held.answer, "FALSE");
}

TEST_F(QuestionYesNo, AnyOtherAnswerAsksAgain) {
    EXPECT_EQ(ask("maybe\n yes\ny\n", YN_CHDIR_Q, "NO").transcript,
              "\nDo you want to change the default suggested directories [NO]? "
              "Please enter either \"YES\" or \"NO\"\n"
              "\nDo you want to change the default suggested directories [NO]? "
              "Please enter either \"YES\" or \"NO\"\n"
              "\nDo you want to change the default suggested directories [NO]? ");
}

TEST_F(QuestionYesNo, IsMadeByTheDefaultNotByTheRow) {
    EXPECT_EQ(answer_to("other\n", YN_CHDIR_Q, nullptr), "other");
    EXPECT_EQ(answer_to("other\n", YN_CHDIR_Q, "y"), "other");
    EXPECT_EQ(ask("other\n\n", I_SDOM_Q, "Yes").transcript,
              "\nSuggested domain name [Yes]? Please enter either \"YES\" or \"NO\"\n"
              "\nSuggested domain name [Yes]? ");
}

TEST_F(QuestionYesNo, AYesOrNoIsTakenByEveryQuestion) {
    EXPECT_EQ(answer_to("yes\n", I_SDOM_Q, nullptr), "TRUE");
    EXPECT_EQ(answer_to("n\n", I_SDOM_Q, nullptr), "FALSE");
    EXPECT_EQ(answer_to("N\n", I_SDOM_Q, nullptr), "N");
    EXPECT_EQ(answer_to("yes\n", D_CGI_Q, nullptr), "TRUE");
    EXPECT_EQ(answer_to("no\n", D_TMPLTS2_Q, nullptr), "FALSE");
}

// --- Quitting ---

TEST_F(QuestionQuit, QEndsTheProgramWithStatus0AfterOneMoreLine) {
    for (const char *typed : {"q\n\n", "Q\r\nanything\n"}) {
        EXPECT_EXIT(ask_until_the_end(typed, I_SDOM_Q, nullptr), testing::ExitedWithCode(0),
                    testing::Eq("\nSuggested domain name ? Please press enter to quit...\n"s));
    }
}

TEST_F(QuestionQuit, QEndsAYesNoAndADirectoryQuestionToo) {
    EXPECT_EXIT(ask_until_the_end("q\n\n", YN_CHDIR_Q, "NO"), testing::ExitedWithCode(0),
                "Please press enter to quit");
    EXPECT_EXIT(ask_until_the_end("Q\n\n", D_CGI_Q, nullptr), testing::ExitedWithCode(0),
                "Please press enter to quit");
}

TEST_F(QuestionQuit, TheEndOfInputIsLikeQ) {
    EXPECT_EXIT(ask_until_the_end("", I_SDOM_Q, "example.com"), testing::ExitedWithCode(0),
                testing::Eq("\nSuggested domain name [example.com]? "
                            "Please press enter to quit...\n"s));
    EXPECT_EXIT(ask_until_the_end("\n\n", BLANK, nullptr), testing::ExitedWithCode(0),
                testing::Eq("\n? \n? \n? Please press enter to quit...\n"s));
}

TEST_F(QuestionQuit, AnythingElseThatBeginsWithQIsAnAnswer) {
    EXPECT_EQ(answer_to("quit\n", I_SDOM_Q, nullptr), "quit");
    EXPECT_EQ(answer_to(" q\n", I_SDOM_Q, nullptr), " q");
    EXPECT_EQ(answer_to("q \n", I_SDOM_Q, nullptr), "q ");
}

// --- Help ---

TEST_F(QuestionHelp, AQuestionMarkShowsTheRowsTopicAndAsksAgain) {
    write_file("vsetup.hlp", "[S_INI_HELP]\nThe settings.\n[NO_HELP]\nNone.\n");
    support_email.assign("support@varnel.example");
    const dialogue held = ask("?\nx\n", I_SDOM_Q, "example.com");
    EXPECT_EQ(held.transcript,
              "\nSuggested domain name [example.com]? "
              "\nThe settings.\n\nFor more information, e-mail: support@varnel.example\n"
              "\nSuggested domain name [example.com]? ");
    EXPECT_EQ(held.answer, "x");
    EXPECT_EQ(ask("?\nx\n", I_MENU_Q, nullptr).transcript,
              "\nWhat do you want to do ? "
              "\nNone.\n\nFor more information, e-mail: support@varnel.example\n"
              "\nWhat do you want to do ? ");
}

TEST_F(QuestionHelp, TheRowWithoutATopicShowsTheFallback) {
    write_file("vsetup.hlp", "[S_INI_HELP]\nThe settings.\n");
    support_email.assign("a");
    EXPECT_EQ(ask("?\nx\n", C_BODY_ADD_Q, nullptr, 3).transcript,
              "\nLine 3:? \nNo specific help is available for this question.\n"
              "For more information, e-mail: a\n\nLine 3:? ");
}

TEST_F(QuestionHelp, WithoutTheFileItsAbsenceIsShown) {
    EXPECT_EQ(ask("?\nx\n", I_SDOM_Q, nullptr).transcript,
              "\nSuggested domain name ? Error: Help file not found\n\n"
              "\nSuggested domain name ? ");
}

// --- Directories ---

TEST_F(QuestionDirectory, AnExistingOneFromTheRootIsGivenAsTyped) {
    const std::string path = scratch.path();
    EXPECT_EQ(answer_to(path + "\n", D_CGI_Q, nullptr), path);
    EXPECT_EQ(answer_to(path + "/\r\n", D_CGI_Q, nullptr), path + "/");
}

TEST_F(QuestionDirectory, ARelativeOneIsRefused) {
    const dialogue held = ask("cgi-bin\n" + scratch.path() + "\n", D_VLIMG2_Q, nullptr);
    EXPECT_EQ(held.transcript, "\nDirectory for .gif, .jpg and .wav files\n? "
                               "No root given! please enter a directory from the root\n"
                               "\nDirectory for .gif, .jpg and .wav files\n? ");
    EXPECT_EQ(held.answer, scratch.path());
}

TEST_F(QuestionDirectory, AMissingOneIsRefusedWhereItMustExist) {
    const std::string missing = scratch.path("missing");
    const dialogue held = ask(missing + "\n" + scratch.path() + "\n", D_TMPLTS_Q, nullptr);
    EXPECT_EQ(held.transcript,
              "\nWhere are your template files (this must be an existing directory)\n? " + missing +
                  " does not exist... please enter a valid directory\n"
                  "\nWhere are your template files (this must be an existing directory)\n? ");
    EXPECT_EQ(held.answer, scratch.path());
    EXPECT_EQ(read_file("gxsetup.log"), "");
}

TEST_F(QuestionDirectory, AMissingOneIsReportedAndGivenWhereItMayBeNew) {
    const std::string missing = scratch.path("missing");
    const dialogue held = ask(missing + "\n", D_TMPLTS2_Q, nullptr);
    EXPECT_EQ(held.transcript, "\nDirectory for templates ? " + missing +
                                   " does not exist... gxsetup will create it\n\n");
    EXPECT_EQ(held.answer, missing);
    EXPECT_FALSE(is_there(missing));
    EXPECT_EQ(read_file("gxsetup.log").substr(12),
              "Info:  " + missing + " does not exist... gxsetup will create it\n");
}

TEST_F(QuestionDirectory, TheRootAloneIsRefusedAsNotExisting) {
    EXPECT_EQ(ask("/\n" + scratch.path() + "\n", D_WKAREA2_Q, nullptr, "kestrel").transcript,
              "\nDirectory for kestrel workarea (user files) ? "
              "/ does not exist... please enter a valid directory\n"
              "\nDirectory for kestrel workarea (user files) ? ");
    EXPECT_EQ(ask("/\n" + scratch.path() + "\n", D_TMPLTS2_Q, nullptr).transcript,
              "\nDirectory for templates ? "
              "/ does not exist... please enter a valid directory\n"
              "\nDirectory for templates ? ");
}

TEST_F(QuestionDirectory, TheDefaultIsCheckedLikeATypedAnswer) {
    const dialogue held = ask("\n" + scratch.path() + "\n", D_TMPLTS_Q, "./tpl");
    EXPECT_EQ(held.transcript,
              "\nWhere are your template files (this must be an existing directory)\n[./tpl]? "
              "No root given! please enter a directory from the root\n"
              "\nWhere are your template files (this must be an existing directory)\n[./tpl]? ");
    EXPECT_EQ(held.answer, scratch.path());
    EXPECT_EQ(answer_to("\n", D_TMPLTS_Q, scratch.path().c_str()), scratch.path());
}

TEST_F(QuestionDirectory, LeadingBlanksStayAndHideTheRoot) {
    EXPECT_EQ(ask(" /\n" + scratch.path() + "\n", D_MANUAL_Q, nullptr).transcript,
              "\nDirectory for manual files ? "
              "No root given! please enter a directory from the root\n"
              "\nDirectory for manual files ? ");
}

TEST_F(QuestionDirectory, RowsWithoutADirectoryRuleTakeAnything) {
    EXPECT_EQ(answer_to("not/there\n", D_STMPLTS_Q, nullptr), "not/there");
}

TEST_F(QuestionDirectory, AFileIsNoDirectory) {
    write_file("file", "");
    EXPECT_EQ(ask(scratch.path("file") + "\n" + scratch.path() + "\n", D_TMPLTS3_Q, nullptr, "k")
                  .transcript,
              "\nDirectory for k templates ? " + scratch.path("file") +
                  " does not exist... please enter a valid directory\n"
                  "\nDirectory for k templates ? ");
}

// --- Input ---

TEST_F(QuestionInput, LeadingAndTrailingBlanksBelongToTheAnswer) {
    EXPECT_EQ(answer_to(" \t a b \n", I_SDOM_Q, nullptr), " \t a b ");
}

TEST_F(QuestionInput, TheAnswerEndsAtItsFirstLineEnd) {
    EXPECT_EQ(answer_to("one\rtwo\n", I_SDOM_Q, nullptr), "one");
}

TEST_F(QuestionInput, TheRestOfALongLineAnswersTheNextPrompt) {
    feed_console(std::string(511, 'a') + "rest\nnext\n");
    console_of([] {
        EXPECT_EQ(question(I_SDOM_Q, nullptr), std::string(511, 'a'));
        EXPECT_STREQ(question(I_SPOP_Q, nullptr), "rest");
        EXPECT_STREQ(question(I_SIMAP_Q, nullptr), "next");
    });
}

TEST_F(QuestionInput, ARefusedLongLineIsAnsweredByItsOwnRest) {
    EXPECT_EQ(ask(std::string(511, 'a') + "y\n", YN_CHDIR_Q, "NO").answer, "TRUE");
}

TEST_F(QuestionInput, ANulByteEndsTheAnswer) {
    EXPECT_EQ(answer_to("one\0two\n"s, I_SDOM_Q, nullptr), "one");
    EXPECT_EQ(answer_to("\0two\n"s, I_SDOM_Q, "default"), "default");
    EXPECT_EQ(answer_to("y\0es\n"s, YN_CHDIR_Q, "NO"), "TRUE");
}

TEST_F(QuestionInput, ALastLineWithoutLineEndIsAnAnswer) {
    EXPECT_EQ(answer_to("last", I_SDOM_Q, nullptr), "last");
}

TEST_F(QuestionInput, TheAnswerStaysUntilTheNextQuestion) {
    feed_console("one\ntwo\n");
    console_of([] {
        const char *first = question(I_SDOM_Q, nullptr);
        EXPECT_STREQ(first, "one");
        EXPECT_EQ(question(I_SPOP_Q, nullptr), first);
        EXPECT_STREQ(first, "two");
    });
}
