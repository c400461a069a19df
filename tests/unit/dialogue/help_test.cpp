#include "dialogue/help.h"

#include "support/console_capture.h"
#include "support/rows.h"
#include "support/scratch_test.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace {

using namespace std::string_literals;

constexpr const char *fallback = "No specific help is available for this question.";

// The text of a topic of a file with that content.
std::string topic(std::string content, const char *id) {
    write_file("topics.hlp", content);
    HELP topics;
    EXPECT_EQ(help_init(&topics, "topics.hlp"), 1);
    std::string text = help_get(&topics, id);
    EXPECT_EQ(help_clear(&topics), 1);
    return text;
}

using HelpInit = scratch_test;
using HelpGet = scratch_test;
using HelpClear = scratch_test;
using Help = scratch_test;

const std::string piece(255, 'x');

// clang-format off
const std::vector<rule> rules = {
    {"HelpGet.GivesTheLinesUpToTheNextHeader", topic,
     {{{"[A]\none\ntwo\n[B]\nthree\n", "A"}, "one\ntwo\n"},
      {{"[A]\none\ntwo\n[B]\nthree\n", "B"}, "three\n"}}},
    {"HelpGet.SkipsCommentsRemovesTabsAndDropsATrailingEmptyLine", topic,
     {{{"[S_DIR_HELP]\n# comment\n\tEnter a path\n\n[NEXT]\nx\n", "S_DIR_HELP"},
       "Enter a path\n"}}},
    {"HelpGet.DropsAtMostOneTrailingEmptyLine", topic,
     {{{"[A]\none\n\n\n[B]\n", "A"}, "one\n\n"}, {{"[A]\n\none\n", "A"}, "\none\n"},
      {{"[A]\n\n\n[B]\n", "A"}, "\n"}, {{"[A]\n\n[B]\n", "A"}, "\n"}}},
    {"HelpGet.RemovesLeadingTabsButNotBlanks", topic,
     {{{"[A]\n\t\tone\ttwo\n \tthree\n", "A"}, "one\ttwo\n \tthree\n"}}},
    {"HelpGet.CarriageReturnsBeforeLineFeedsMakeNoDifference", topic,
     {{{"[A]\r\n\tone\r\n\r\n[B]\r\n", "A"}, "one\n"}, {{"[A]\no\rn\re\n", "A"}, "on\re\n"}}},
    {"HelpGet.TheHeaderMatchesByItsBeginning", topic,
     {{{"[A_HELP] of A\none\n", "A_HELP"}, "one\n"}, {{"[A_HELP\none\n", "A_HELP"}, "one\n"},
      {{" [A_HELP]\none\n", "A_HELP"}, fallback}, {{"[a_help]\none\n", "A_HELP"}, fallback}}},
    {"HelpGet.TheShorterOfTwoNamesFindsTheFirstHeader", topic,
     {{{"[DIR_HELP2]\nlong\n[DIR_HELP]\nshort\n", "DIR_HELP"}, "long\n"},
      {{"[DIR_HELP]\nshort\n[DIR_HELP2]\nlong\n", "DIR_HELP"}, "short\n"},
      {{"[DIR_HELP]\nshort\n[DIR_HELP2]\nlong\n", "DIR_HELP2"}, "long\n"}}},
    {"HelpGet.ATopicWithoutTextRunsOnIntoTheNext", topic,
     {{{"[A]\n[B]\n# comment\n[C]\nthree\n[D]\nfour\n", "A"}, "three\n"}}},
    {"HelpGet.AHeaderInsideACommentIsNone", topic,
     {{{"#[A]\none\n[A]\ntwo\n#[B]\nthree\n", "A"}, "two\nthree\n"}}},
    {"HelpGet.AnUnknownTopicAndOneWithoutTextGiveTheFallback", topic,
     {{{"[A]\none\n", "NO_HELP"}, fallback}, {{"[A]\n", "A"}, fallback}, {{"", "A"}, fallback}}},
    {"HelpGet.AnEmptyTopicGivesTheFallback", topic, {{{"[A]\none\n", ""}, fallback}}},
    {"HelpGet.ALastLineWithoutLineFeedIsNotRead", topic,
     {{{"[A]\none\ntwo", "A"}, "one\n"}, {{"[A]\none", "A"}, fallback}, {{"[A]", "A"}, fallback}}},
    {"HelpGet.ALastPieceWithoutLineFeedIsNotReadEither", topic,
     {{{"[A]\none\n" + piece, "A"}, "one\n"},
      {{"[A]\none\n" + piece + piece, "A"}, "one\n" + piece},
      {{"[A]\none\n" + piece + "\n", "A"}, "one\n" + piece + "\n"},
      {{"[A" + std::string(253, ']'), "A"}, fallback}}},
    {"HelpGet.ALineIsReadInPiecesOf255Characters", topic,
     {{{"[A]\n" + piece + "[B]\n", "A"}, piece},
      {{"[A]\n" + piece + "#gone\nkept\n", "A"}, piece + "kept\n"},
      {{piece + "[A]\none\n", "A"}, "one\n"},
      {{"[A]\n" + piece.substr(1) + "\nnext\n", "A"}, piece.substr(1) + "\nnext\n"}}},
    {"HelpGet.ALineEndsAtANulByte", topic, {{{"[A]\none\0two\nthree\n"s, "A"}, "onethree\n"}}},
    {"HelpGet.BearsALineOf10000Characters", topic,
     {{{"[A]\n" + std::string(10000, 'x') + "\n", "A"}, std::string(10000, 'x') + "\n"}}},
};
// clang-format on

const int registered = register_rows<scratch_test>(rules);

} // namespace

TEST_F(HelpInit, GivesZeroWithoutTheFile) {
    HELP topics;
    topics.ref = "old";
    topics.last_help = "old";
    EXPECT_EQ(help_init(&topics, "missing.hlp"), 0);
    EXPECT_FALSE(topics.ref.has_value());
    EXPECT_FALSE(topics.last_help.has_value());
}

TEST_F(HelpGet, TheTopicFetchedLastIsKept) {
    write_file("topics.hlp", "[A]\none\n[B]\ntwo\n");
    HELP topics;
    help_init(&topics, "topics.hlp");
    const char *text = help_get(&topics, "A");
    EXPECT_EQ(topics.ref, "A");
    EXPECT_EQ(topics.last_help, "one\n");
    EXPECT_EQ(help_get(&topics, "A"), text);
    topics.last_help = "kept";
    EXPECT_STREQ(help_get(&topics, "A"), "kept");
    EXPECT_STREQ(help_get(&topics, "B"), "two\n");
    EXPECT_STREQ(help_get(&topics, "A"), "one\n");
    help_clear(&topics);
}

TEST_F(HelpClear, ForgetsTheTopicAndClosesTheFile) {
    write_file("topics.hlp", "[A]\none\n");
    HELP topics;
    help_init(&topics, "topics.hlp");
    help_get(&topics, "A");
    EXPECT_EQ(help_clear(&topics), 1);
    EXPECT_FALSE(topics.ref.has_value());
    EXPECT_FALSE(topics.last_help.has_value());
    EXPECT_EQ(topics.hfile, nullptr);
}

TEST_F(Help, PrintsTheTopicAndTheSupportAddress) {
    write_file("vsetup.hlp", "[S_DIR_HELP]\nEnter a path\n");
    support_email.assign("support@varnel.example");
    EXPECT_EQ(console_of([] { EXPECT_EQ(help("S_DIR_HELP"), 1); }),
              "\nEnter a path\n\nFor more information, e-mail: support@varnel.example\n");
}

TEST_F(Help, PercentsInTheFileAreText) {
    write_file("vsetup.hlp", "[A]\n100% %s %n\n");
    support_email.assign("a%sb");
    EXPECT_EQ(console_of([] { help("A"); }),
              "\n100% %s %n\n\nFor more information, e-mail: a%sb\n");
}

TEST_F(Help, WithoutTheFileConsoleAndLogAreTold) {
    const test_log log(".");
    EXPECT_EQ(console_of([] { EXPECT_EQ(help("A"), 0); }), "Error: Help file not found\n\n");
    EXPECT_EQ(log.text(), "Error: Help file not found\n");
}

TEST_F(Help, OfAFileThatGrowsOnlyTheFirst16MiBAreRead) {
    write_file("topics.hlp", "");
    HELP topics;
    ASSERT_EQ(help_init(&topics, "topics.hlp"), 1);
    const std::string filler(settings_limit.bytes - 4, '\n');
    write_file("topics.hlp", filler + "[A]\none\n");
    EXPECT_STREQ(help_get(&topics, "A"), fallback);
    write_file("topics.hlp", filler.substr(4) + "[B]\none\n");
    EXPECT_STREQ(help_get(&topics, "B"), "one\n");
    help_clear(&topics);
}

TEST_F(Help, APipeAsTheFileIsNotReadFrom) {
    ASSERT_EQ(::mkfifo("vsetup.hlp", 0600), 0);
    EXPECT_EQ(console_of([] { EXPECT_EQ(help("A"), 0); }), "Error: Help file not found\n\n");
}
