#include "core/console.h"

#include "support/console_capture.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

TEST(Print, ShowsTheFormattedTextHoweverLong) {
    const std::string text(3000, 'x');
    EXPECT_EQ(console_of([&] { print("%s %d\n", text.c_str(), 7); }), text + " 7\n");
}

TEST(PrintLines, ShowsATextAsItIs) {
    EXPECT_EQ(console_of([] { print_lines("100%\n\ttext\n"); }), "100%\n\ttext\n");
}

TEST(WithoutControls, EachControlCharacterOfAsciiIsAQuestionMark) {
    using namespace std::string_literals;
    EXPECT_EQ(without_controls("a\x1b[2Jb\r\n\t\x7f"), "a?[2Jb????");
    EXPECT_EQ(without_controls("\0\x01\x1f ~"s), "??? ~");
    EXPECT_EQ(without_controls(""), "");
}

TEST(WithoutControls, SoIsEachBehindThemInUtf8AndAsASingleByte) {
    EXPECT_EQ(without_controls("\xC2\x80|\xC2\x9B|\xC2\x9F"), "?|?|?");
    EXPECT_EQ(without_controls("\x80|\x9B|\x9F"), "?|?|?");
}

TEST(WithoutControls, Utf8Stays) {
    const std::string text = "\xC2\xA0 \xC3\x9B \xDF\xBF \xE0\xA0\x80 \xE2\x82\xAC "
                             "\xED\x9F\xBF \xEE\x80\x80 \xF0\x90\x80\x9B \xF4\x8F\xBF\xBF";
    EXPECT_EQ(without_controls(text), text);
}

// Too long a form of a control character, surrogates, too large a number, a sequence cut short.
TEST(WithoutControls, BytesOfNoSequenceCountOneByOne) {
    EXPECT_EQ(without_controls("\xC0\x9B"), "\xC0?");
    EXPECT_EQ(without_controls("\xE0\x80\x9B"), "\xE0??");
    EXPECT_EQ(without_controls("\xED\xA0\x80"), "\xED\xA0?");
    EXPECT_EQ(without_controls("\xF4\x90\x80\x80"), "\xF4???");
    EXPECT_EQ(without_controls("\xE2\x9B"), "\xE2?");
    EXPECT_EQ(without_controls("\xF0\x9F\x98"), "\xF0??");
    EXPECT_EQ(without_controls("\xE2\x9B\x1b"), "\xE2??");
    EXPECT_EQ(without_controls("caf\xE9"), "caf\xE9");
}

TEST(WithoutControls, WhatIsKeptStays) {
    EXPECT_EQ(without_controls("a\n\tb\r\x1b", "\n\t"), "a\n\tb??");
}

TEST(PrintDot, ShowsOneDot) {
    EXPECT_EQ(console_of([] { print_dot(); }), ".");
}

TEST(ReadLine, GivesTheLineWithItsLineFeed) {
    std::array<char, 16> line{};
    feed_console("first\nsecond");
    EXPECT_TRUE(read_line(line));
    EXPECT_STREQ(line.data(), "first\n");
    EXPECT_TRUE(read_line(line));
    EXPECT_STREQ(line.data(), "second");
    EXPECT_FALSE(read_line(line));
    EXPECT_STREQ(line.data(), "");
}

TEST(ReadLine, LeavesTheRestOfALongLineForTheNextRead) {
    std::array<char, 5> line{};
    feed_console("abcdefg\n");
    EXPECT_TRUE(read_line(line));
    EXPECT_STREQ(line.data(), "abcd");
    EXPECT_TRUE(read_line(line));
    EXPECT_STREQ(line.data(), "efg\n");
}

TEST(ReadLine, ANulByteEndsTheTextButTheWholeLineIsTaken) {
    using namespace std::string_literals;
    std::array<char, 16> line{};
    feed_console("ab\0cd\nnext\n"s);
    EXPECT_TRUE(read_line(line));
    EXPECT_STREQ(line.data(), "ab");
    EXPECT_TRUE(read_line(line));
    EXPECT_STREQ(line.data(), "next\n");
}

// What was printed must be seen before the program waits for an answer.
TEST(ReadLine, FlushesTheConsoleFirst) {
    feed_console("");
    stream_capture console(stdout);
    print("prompt? ");
    std::array<char, 16> line{};
    read_line(line);
    EXPECT_EQ(::lseek(STDOUT_FILENO, 0, SEEK_CUR), 8);
    EXPECT_EQ(console.finish(), "prompt? ");
}

TEST(WaitForEnter, TakesOneLine) {
    std::array<char, 16> line{};
    feed_console("anything\nnext\n");
    wait_for_enter();
    EXPECT_TRUE(read_line(line));
    EXPECT_STREQ(line.data(), "next\n");
}

TEST(WaitForEnter, EndsAtTheEndOfInput) {
    feed_console("");
    wait_for_enter();
}
