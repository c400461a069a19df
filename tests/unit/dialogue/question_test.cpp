#include "dialogue/question.h"

#include "core/console.h"
#include "dialogue/help.h"
#include "support/console_capture.h"
#include "support/expected.h"
#include "support/rows.h"
#include "support/scratch_test.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

// What is typed at a question, the answer it gives then, and what it shows; longer dialogues are
// kept texts. "@" is the test's directory.
struct exchange {
    question_number number;
    const char *dflt;
    std::string typed;
    std::string answer;
    std::string shown = "";
};

struct dialogue {
    const char *name;
    std::vector<exchange> exchanges;
    std::string log = "";
};

class Dialogue : public scratch_test {
  protected:
    Dialogue() { set_loglvl(LOG_INFO); }

    // What the question shows. Its answer is kept.
    template <class... Arguments>
    std::string ask(std::string_view typed, question_number number, const char *dflt,
                    Arguments... arguments) {
        return console_of(typed, [&] { answer = question(number, dflt, arguments...); });
    }

    void check(const dialogue &row) {
        std::string kept;
        for (const exchange &one : row.exchanges) {
            const std::string dflt = here(one.dflt != nullptr ? one.dflt : "");
            const std::string shown = ask(here(one.typed), one.number,
                                          one.dflt != nullptr ? dflt.c_str() : nullptr, "kestrel");
            EXPECT_EQ(answer, here(one.answer));
            if (one.shown.empty()) {
                kept += scratch.with_at(shown);
            } else {
                EXPECT_EQ(shown, one.shown);
            }
        }
        if (!kept.empty()) {
            expect_kept("console", kept);
        }
        EXPECT_EQ(log.text(), here(row.log));
        EXPECT_FALSE(is_there("missing"));
    }

    // A text with the test's directory for each "@".
    [[nodiscard]] std::string here(const std::string &text) const {
        return replaced(text, "@", scratch.path());
    }

    std::string answer;
    test_log log{"."};
};

using Question = Dialogue;
using QuestionDefault = Dialogue;
using QuestionQuit = Dialogue;
using QuestionHelp = Dialogue;
using QuestionInput = Dialogue;

const std::string domain = "\nSuggested domain name ";
const std::string directories = "\nDo you want to change the default suggested directories ";
const std::string created = "@/missing does not exist... gxsetup will create it\n";
const std::string long_answer(511, 'a');
const std::string too_long_default(600, 'd');

// clang-format off
const std::vector<dialogue> dialogues = {
    // --- Prompt and default ---
    {"Question.ShowsItsTextBetweenALineFeedAndAQuestionMark",
     {{I_SDOM_Q, nullptr, "example.com\n", "example.com", domain + "? "}}},
    {"Question.ShowsItsDefaultInSquareBrackets",
     {{I_SDOM_Q, "example.com", "\n", "example.com", domain + "[example.com]? "}}},
    {"Question.RowsThatBeginWithALineFeedStartWithAnEmptyLine",
     {{I_DOM_Q, nullptr, "example.com\n", "example.com", "\n\nWhat is your domain name ? "}}},
    {"Question.TheRowWithoutTextShowsOnlyTheMark", {{BLANK, nullptr, "x\n", "x", "\n? "}}},
    {"QuestionDefault.WithoutOneAnEmptyLineAsksAgainWithoutAWord",
     {{I_SDOM_Q, "", "\n\r\nx\n", "x", domain + "? " + domain + "? " + domain + "? "}}},
    {"QuestionDefault.TheEnterAndSwitchAndBlankQuestionsAskAgain",
     {{I_ENTER_Q, nullptr, "\n\nx\n", "x"}, {I_SWITCHI_Q, nullptr, "\n\nx\n", "x"},
      {BLANK, nullptr, "\n\nx\n", "x"}}},
    {"QuestionDefault.TrueAndFalseAreShownAsYesAndNo",
     {{YN_CHDIR_Q, "TRUE", "\n", "TRUE", directories + "[YES]? "},
      {YN_CHDIR_Q, "false", "\n", "FALSE", directories + "[NO]? "}}},
    {"QuestionDefault.ActionsAreShownAsTheNumbersOfTheirFlows",
     {{I_MENU_Q, "upgrade", "\n", "2", "\nWhat do you want to do [2]? "},
      {I_MENU_Q, "install", "\n", "1"}, {I_MENU_Q, "custom", "\n", "3"},
      {I_MENU_Q, "remove", "\n", "4"}, {I_MENU_Q, "Install", "\n", "Install"},
      {I_MENU_Q, "installed", "\n", "installed"}, {I_MENU_Q, "upgrade", "install\n", "install"}}},
    {"QuestionDefault.IsCutAt511Characters",
     {{I_SDOM_Q, too_long_default.c_str(), "\n", std::string(511, 'd')}}},

    // --- Yes and no ---
    {"QuestionYesNo.TheAnswersThatMeanYes",
     {{YN_CHDIR_Q, "NO", "y\n", "TRUE"}, {YN_CHDIR_Q, "NO", "Y\n", "TRUE"},
      {YN_CHDIR_Q, "NO", "yes\n", "TRUE"}, {YN_CHDIR_Q, "NO", "YES\n", "TRUE"},
      {YN_CHDIR_Q, "NO", "yEs\r\n", "TRUE"}}},
    {"QuestionYesNo.TheAnswersThatMeanNo",
     {{YN_CHDIR_Q, "YES", "n\n", "FALSE"}, {YN_CHDIR_Q, "YES", "no\n", "FALSE"},
      {YN_CHDIR_Q, "YES", "NO\n", "FALSE"}, {YN_CHDIR_Q, "YES", "No\n", "FALSE"},
      {YN_CHDIR_Q, "YES", "nO\r\n", "FALSE"}}},
    {"QuestionYesNo.ASingleUpperCaseNIsNotANo", {{YN_CHDIR_Q, "YES", "N\nn\n", "FALSE"}}},
    {"QuestionYesNo.AnyOtherAnswerAsksAgain", {{YN_CHDIR_Q, "NO", "maybe\n yes\ny\n", "TRUE"}}},
    {"QuestionYesNo.IsMadeByTheDefaultNotByTheRow",
     {{YN_CHDIR_Q, nullptr, "other\n", "other"}, {YN_CHDIR_Q, "y", "other\n", "other"},
      {I_SDOM_Q, "Yes", "other\n\n", "TRUE"}}},
    {"QuestionYesNo.AYesOrNoIsTakenByEveryQuestion",
     {{I_SDOM_Q, nullptr, "yes\n", "TRUE"}, {I_SDOM_Q, nullptr, "n\n", "FALSE"},
      {I_SDOM_Q, nullptr, "N\n", "N"}, {D_CGI_Q, nullptr, "yes\n", "TRUE"},
      {D_TMPLTS2_Q, nullptr, "no\n", "FALSE"}}},
    {"QuestionQuit.AnythingElseThatBeginsWithQIsAnAnswer",
     {{I_SDOM_Q, nullptr, "quit\n", "quit"}, {I_SDOM_Q, nullptr, " q\n", " q"},
      {I_SDOM_Q, nullptr, "q \n", "q "}}},

    // --- Directories ---
    {"QuestionDirectory.AnExistingOneFromTheRootIsGivenAsTyped",
     {{D_CGI_Q, nullptr, "@\n", "@"}, {D_CGI_Q, nullptr, "@/\r\n", "@/"}}},
    {"QuestionDirectory.ARelativeOneIsRefused", {{D_VLIMG2_Q, nullptr, "cgi-bin\n@\n", "@"}}},
    {"QuestionDirectory.AMissingOneIsRefusedWhereItMustExist",
     {{D_TMPLTS_Q, nullptr, "@/missing\n@\n", "@"}}},
    {"QuestionDirectory.AMissingOneIsReportedAndGivenWhereItMayBeNew",
     {{D_TMPLTS2_Q, nullptr, "@/missing\n", "@/missing"}}, "Info:  " + created},
    {"QuestionDirectory.TheRootAloneIsRefusedAsNotExisting", {{D_WKAREA2_Q, nullptr, "/\n@\n", "@"},
      {D_TMPLTS2_Q, nullptr, "/\n@\n", "@"}}},
    {"QuestionDirectory.TheDefaultIsCheckedLikeATypedAnswer", {{D_TMPLTS_Q, "./tpl", "\n@\n", "@"},
      {D_TMPLTS_Q, "@", "\n", "@"}}},
    {"QuestionDirectory.LeadingBlanksStayAndHideTheRoot", {{D_MANUAL_Q, nullptr, " /\n@\n", "@"}}},
    {"QuestionDirectory.RowsWithoutADirectoryRuleTakeAnything",
     {{D_STMPLTS_Q, nullptr, "not/there\n", "not/there"}}},
    {"QuestionDirectory.AFileIsNoDirectory", {{D_WKAREA2_Q, nullptr, "@/gxsetup.log\n@\n", "@"}}},

    // --- Input ---
    {"QuestionInput.LeadingAndTrailingBlanksBelongToTheAnswer",
     {{I_SDOM_Q, nullptr, " \t a b \n", " \t a b "}}},
    {"QuestionInput.TheAnswerEndsAtItsFirstLineEnd", {{I_SDOM_Q, nullptr, "one\rtwo\n", "one"}}},
    {"QuestionInput.ARefusedLongLineIsAnsweredByItsOwnRest",
     {{YN_CHDIR_Q, "NO", long_answer + "y\n", "TRUE"}}},
    {"QuestionInput.ANulByteEndsTheAnswer",
     {{I_SDOM_Q, nullptr, "one\0two\n"s, "one"}, {I_SDOM_Q, "default", "\0two\n"s, "default"},
      {YN_CHDIR_Q, "NO", "y\0es\n"s, "TRUE"}}},
    {"QuestionInput.ALastLineWithoutLineEndIsAnAnswer", {{I_SDOM_Q, nullptr, "last", "last"}}},
};
// clang-format on

const int registered = register_rows<Dialogue>(dialogues);

// Expects the question to end its process, with nothing left to read, after it showed this.
void expect_end(std::string_view typed, question_number number, const char *dflt,
                const std::string &shown) {
    const auto ask_until_the_end = [&] {
        feed_console(typed);
        std::atexit([] { // nothing is left to read
            if (std::getchar() != EOF) {
                std::_Exit(1);
            }
        });
        print_on_standard_error();
        question(number, dflt);
    };
    EXPECT_EXIT(ask_until_the_end(), testing::ExitedWithCode(0),
                testing::Eq(shown + "Please press enter to quit...\n"))
        << typed;
}

} // namespace

TEST_F(Question, FillsItsTextWithTheFurtherArguments) {
    EXPECT_EQ(ask("a\n", I_CGI_NAME_Q, "kestrel", 2, "(wml)"), "\nCGI name 2 (wml) [kestrel]? ");
    EXPECT_EQ(ask("y\n", YN_ORGTMP_Q, "NO", "/spool", '/', "now"),
              "\nMake a copy of the original templates to \"/spool/originals\" now[NO]? ");
}

TEST_F(Question, PercentsInDefaultAndArgumentsAreText) {
    EXPECT_EQ(ask("\n", C_SCRURL_Q, "50%s", "100%d"), "\nEnter url for message 100%d [50%s]? ");
    EXPECT_EQ(answer, "50%s");
}

TEST_F(Question, ItsTextIsCutAt511Characters) {
    EXPECT_EQ(ask("x\n", C_SCRURL_Q, nullptr, std::string(2000, 'h').c_str()),
              "\nEnter url for message " + std::string(489, 'h') + "? ");
}

TEST_F(QuestionDefault, ThreeQuestionsTakeAnEmptyLine) {
    EXPECT_EQ(ask("\n", C_SCRMESS_Q, nullptr, 1), "\nEnter message1 ? ");
    EXPECT_EQ(answer, "");
    ask("\n", C_SCRURL_Q, "", "one");
    EXPECT_EQ(answer, "");
    ask("\n", C_BODY_ADD_Q, nullptr, 1);
    EXPECT_EQ(answer, "");
    ask("\n", C_SCRURL_Q, "kept", "one");
    EXPECT_EQ(answer, "kept");
}

TEST_F(QuestionDefault, MayBeTheAnswerOfTheQuestionBefore) {
    EXPECT_EQ(console_of("example.com\n\n",
                         [] {
                             const char *first = question(I_SDOM_Q, nullptr);
                             EXPECT_STREQ(question(I_SPOP_Q, first), "example.com");
                         }),
              domain + "? \nSuggested pop host [example.com]? ");
}

TEST_F(QuestionQuit, QEndsTheProgramWithStatus0AfterOneMoreLine) {
    expect_end("q\n\n", I_SDOM_Q, nullptr, domain + "? ");
    expect_end("Q\r\nanything\n", I_SDOM_Q, nullptr, domain + "? ");
}

TEST_F(QuestionQuit, QEndsAYesNoAndADirectoryQuestionToo) {
    expect_end("q\n\n", YN_CHDIR_Q, "NO", directories + "[NO]? ");
    expect_end("Q\n\n", D_MANUAL_Q, nullptr, "\nDirectory for manual files ? ");
}

TEST_F(QuestionQuit, TheEndOfInputIsLikeQ) {
    expect_end("", I_SDOM_Q, "example.com", domain + "[example.com]? ");
    expect_end("\n\n", BLANK, nullptr, "\n? \n? \n? ");
}

TEST_F(QuestionHelp, AQuestionMarkShowsTheRowsTopicAndAsksAgain) {
    write_file("vsetup.hlp", "[S_INI_HELP]\nThe settings.\n[NO_HELP]\nNone.\n");
    support_email.assign("support@varnel.example");
    check({"", {{I_SDOM_Q, "example.com", "?\nx\n", "x"}, {I_MENU_Q, nullptr, "?\nx\n", "x"}}});
}

TEST_F(QuestionHelp, TheRowWithoutATopicShowsTheFallback) {
    write_file("vsetup.hlp", "[S_INI_HELP]\nThe settings.\n");
    support_email.assign("a");
    expect_kept("console", ask("?\nx\n", C_BODY_ADD_Q, nullptr, 3));
}

TEST_F(QuestionHelp, WithoutTheFileItsAbsenceIsShown) {
    expect_kept("console", ask("?\nx\n", I_SDOM_Q, nullptr));
}

TEST_F(QuestionInput, TheRestOfALongLineAnswersTheNextPrompt) {
    console_of(long_answer + "rest\nnext\n", [] {
        EXPECT_EQ(question(I_SDOM_Q, nullptr), long_answer);
        EXPECT_STREQ(question(I_SPOP_Q, nullptr), "rest");
        EXPECT_STREQ(question(I_SIMAP_Q, nullptr), "next");
    });
}

TEST_F(QuestionInput, TheAnswerStaysUntilTheNextQuestion) {
    console_of("one\ntwo\n", [] {
        const char *first = question(I_SDOM_Q, nullptr);
        EXPECT_STREQ(first, "one");
        EXPECT_EQ(question(I_SPOP_Q, nullptr), first);
        EXPECT_STREQ(first, "two");
    });
}
