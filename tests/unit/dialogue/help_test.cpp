#include "dialogue/help.h"

#include "core/log.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace {

using namespace std::string_literals;

constexpr const char *fallback = "No specific help is available for this question.";

class HelpFile : public scratch_test {
  protected:
    ~HelpFile() override { close_log(); }

    // The text of a topic of a file with that content.
    static std::string topic(std::string_view content, const char *id) {
        write_file("topics.hlp", content);
        HELP topics;
        EXPECT_EQ(help_init(&topics, "topics.hlp"), 1);
        const std::string text = help_get(&topics, id);
        EXPECT_EQ(help_clear(&topics), 1);
        return text;
    }
};

using HelpInit = HelpFile;
using HelpGet = HelpFile;
using HelpClear = HelpFile;
using Help = HelpFile;

} // namespace

TEST_F(HelpInit, GivesZeroWithoutTheFile) {
    HELP topics;
    topics.ref = "old";
    topics.last_help = "old";
    EXPECT_EQ(help_init(&topics, "missing.hlp"), 0);
    EXPECT_FALSE(topics.ref.has_value());
    EXPECT_FALSE(topics.last_help.has_value());
}

TEST_F(HelpGet, GivesTheLinesUpToTheNextHeader) {
    EXPECT_EQ(topic("[A]\none\ntwo\n[B]\nthree\n", "A"), "one\ntwo\n");
    EXPECT_EQ(topic("[A]\none\ntwo\n[B]\nthree\n", "B"), "three\n");
}

TEST_F(HelpGet, SkipsCommentsRemovesTabsAndDropsATrailingEmptyLine) {
    EXPECT_EQ(topic("[S_DIR_HELP]\n# comment\n\tEnter a path\n\n[NEXT]\nx\n", "S_DIR_HELP"),
              "Enter a path\n");
}

TEST_F(HelpGet, DropsAtMostOneTrailingEmptyLine) {
    EXPECT_EQ(topic("[A]\none\n\n\n[B]\n", "A"), "one\n\n");
    EXPECT_EQ(topic("[A]\n\none\n", "A"), "\none\n");
    EXPECT_EQ(topic("[A]\n\n\n[B]\n", "A"), "\n");
    EXPECT_EQ(topic("[A]\n\n[B]\n", "A"), "\n");
}

TEST_F(HelpGet, RemovesLeadingTabsButNotBlanks) {
    EXPECT_EQ(topic("[A]\n\t\tone\ttwo\n \tthree\n", "A"), "one\ttwo\n \tthree\n");
}

TEST_F(HelpGet, CarriageReturnsBeforeLineFeedsMakeNoDifference) {
    EXPECT_EQ(topic("[A]\r\n\tone\r\n\r\n[B]\r\n", "A"), "one\n");
    EXPECT_EQ(topic("[A]\no\rn\re\n", "A"), "on\re\n");
}

TEST_F(HelpGet, TheHeaderMatchesByItsBeginning) {
    EXPECT_EQ(topic("[A_HELP] of A\none\n", "A_HELP"), "one\n");
    EXPECT_EQ(topic("[A_HELP\none\n", "A_HELP"), "one\n");
    EXPECT_EQ(topic(" [A_HELP]\none\n", "A_HELP"), fallback);
    EXPECT_EQ(topic("[a_help]\none\n", "A_HELP"), fallback);
}

TEST_F(HelpGet, TheShorterOfTwoNamesFindsTheFirstHeader) {
    EXPECT_EQ(topic("[DIR_HELP2]\nlong\n[DIR_HELP]\nshort\n", "DIR_HELP"), "long\n");
    EXPECT_EQ(topic("[DIR_HELP]\nshort\n[DIR_HELP2]\nlong\n", "DIR_HELP"), "short\n");
    EXPECT_EQ(topic("[DIR_HELP]\nshort\n[DIR_HELP2]\nlong\n", "DIR_HELP2"), "long\n");
}

TEST_F(HelpGet, ATopicWithoutTextRunsOnIntoTheNext) {
    EXPECT_EQ(topic("[A]\n[B]\n# comment\n[C]\nthree\n[D]\nfour\n", "A"), "three\n");
}

TEST_F(HelpGet, AHeaderInsideACommentIsNone) {
    EXPECT_EQ(topic("#[A]\none\n[A]\ntwo\n#[B]\nthree\n", "A"), "two\nthree\n");
}

TEST_F(HelpGet, AnUnknownTopicAndOneWithoutTextGiveTheFallback) {
    EXPECT_EQ(topic("[A]\none\n", "NO_HELP"), fallback);
    EXPECT_EQ(topic("[A]\n", "A"), fallback);
    EXPECT_EQ(topic("", "A"), fallback);
}

TEST_F(HelpGet, AnEmptyTopicGivesTheFallback) {
    EXPECT_EQ(topic("[A]\none\n", ""), fallback);
}

TEST_F(HelpGet, ALastLineWithoutLineFeedIsNotRead) {
    EXPECT_EQ(topic("[A]\none\ntwo", "A"), "one\n");
    EXPECT_EQ(topic("[A]\none", "A"), fallback);
    EXPECT_EQ(topic("[A]", "A"), fallback);
}

TEST_F(HelpGet, ALastPieceOf255CharactersWithoutLineFeedIsNotReadEither) {
    const std::string piece(255, 'x');
    EXPECT_EQ(topic("[A]\none\n" + piece, "A"), "one\n");
    EXPECT_EQ(topic("[A]\none\n" + piece + piece, "A"), "one\n" + piece);
    EXPECT_EQ(topic("[A]\none\n" + piece + "\n", "A"), "one\n" + piece + "\n");
    EXPECT_EQ(topic("[A" + std::string(253, ']'), "A"), fallback);
}

TEST_F(HelpGet, ALineIsReadInPiecesOf255CharactersEachALineOfItsOwn) {
    const std::string piece(255, 'x');
    EXPECT_EQ(topic("[A]\n" + piece + "[B]\n", "A"), piece);
    EXPECT_EQ(topic("[A]\n" + piece + "#gone\nkept\n", "A"), piece + "kept\n");
    EXPECT_EQ(topic(piece + "[A]\none\n", "A"), "one\n");
    EXPECT_EQ(topic("[A]\n" + piece.substr(1) + "\nnext\n", "A"), piece.substr(1) + "\nnext\n");
}

TEST_F(HelpGet, ALineEndsAtANulByte) {
    EXPECT_EQ(topic("[A]\none\0two\nthree\n"s, "A"), "onethree\n");
}

TEST_F(HelpGet, BearsALineOf10000Characters) {
    EXPECT_EQ(topic("[A]\n" + std::string(10000, 'x') + "\n", "A"), std::string(10000, 'x') + "\n");
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

TEST_F(Help, PrintsTheFallbackForATopicThatTheFileLacks) {
    write_file("vsetup.hlp", "[S_DIR_HELP]\nEnter a path\n");
    support_email.assign("kestrel-support@varnel.example");
    EXPECT_EQ(console_of([] { EXPECT_EQ(help("NO_HELP"), 1); }),
              "\nNo specific help is available for this question.\n"
              "For more information, e-mail: kestrel-support@varnel.example\n");
}

TEST_F(Help, PercentsInTheFileAreText) {
    write_file("vsetup.hlp", "[A]\n100% %s %n\n");
    support_email.assign("a%sb");
    EXPECT_EQ(console_of([] { help("A"); }),
              "\n100% %s %n\n\nFor more information, e-mail: a%sb\n");
}

TEST_F(Help, WithoutTheFileConsoleAndLogAreTold) {
    inilog(".", "gxsetup");
    EXPECT_EQ(console_of([] { EXPECT_EQ(help("A"), 0); }), "Error: Help file not found\n\n");
    EXPECT_TRUE(read_file("gxsetup.log").ends_with(" Error: Help file not found\n"));
}

TEST_F(Help, APipeAsTheFileIsNotReadFrom) {
    ASSERT_EQ(::mkfifo("vsetup.hlp", 0600), 0);
    EXPECT_EQ(console_of([] { EXPECT_EQ(help("A"), 0); }), "Error: Help file not found\n\n");
}
