#include "core/console.h"

#include "support/console_capture.h"
#include "support/rows.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <unistd.h>

namespace {

using namespace std::string_literals;

std::string shown(std::string text) {
    return without_controls(text);
}

// The lines of 15 bytes at most that read_line gives of an input, each in brackets.
std::string lines_of(const std::string &input) {
    std::array<char, 16> line{};
    std::string lines;
    feed_console(input);
    while (read_line(line)) {
        lines += "[" + std::string(line.data()) + "]";
    }
    EXPECT_STREQ(line.data(), "");
    return lines;
}

const std::string utf8 = "\xC2\xA0 \xC3\x9B \xDF\xBF \xE0\xA0\x80 \xE2\x82\xAC \xED\x9F\xBF "
                         "\xEE\x80\x80 \xF0\x90\x80\x9B \xF4\x8F\xBF\xBF";

// clang-format off
const std::vector<rule> rules = {
    {"WithoutControls.EachControlCharacterOfAsciiIsAQuestionMark", shown,
     {{{"a\x1b[2Jb\r\n\t\x7f"}, "a?[2Jb????"}, {{"\0\x01\x1f ~"s}, "??? ~"}, {{""}, ""}}},
    {"WithoutControls.SoIsEachBehindThemInUtf8AndAsASingleByte", shown,
     {{{"\xC2\x80|\xC2\x9B|\xC2\x9F"}, "?|?|?"}, {{"\x80|\x9B|\x9F"}, "?|?|?"}}},
    {"WithoutControls.Utf8Stays", shown, {{{utf8}, utf8}}},
    // Too long a form of a control character, surrogates, too large a number, a sequence cut short.
    {"WithoutControls.BytesOfNoSequenceCountOneByOne", shown,
     {{{"\xC0\x9B"}, "\xC0?"}, {{"\xE0\x80\x9B"}, "\xE0??"}, {{"\xED\xA0\x80"}, "\xED\xA0?"},
      {{"\xF4\x90\x80\x80"}, "\xF4???"}, {{"\xE2\x9B"}, "\xE2?"}, {{"\xF0\x9F\x98"}, "\xF0??"},
      {{"\xE2\x9B\x1b"}, "\xE2??"}, {{"\xF4~\x80\x80"}, "\xF4~??"}, {{"caf\xE9"}, "caf\xE9"}}},
    {"WithoutControls.WhatIsKeptStays", without_controls, {{{"a\n\tb\r\x1b", "\n\t"}, "a\n\tb??"}}},

    {"ReadLine.GivesTheLineWithItsLineFeed", lines_of, {{{"first\nsecond"}, "[first\n][second]"}}},
    {"ReadLine.LeavesTheRestOfALongLineForTheNextRead", lines_of,
     {{{"abcdefghijklmnopqr\n"}, "[abcdefghijklmno][pqr\n]"}}},
    {"ReadLine.ANulByteEndsTheTextButTheWholeLineIsTaken", lines_of,
     {{{"ab\0cd\nnext\n"s}, "[ab][next\n]"}}},
};
// clang-format on

const int registered = register_rows(rules);

} // namespace

TEST(Print, ShowsTheFormattedTextHoweverLong) {
    const std::string text(3000, 'x');
    EXPECT_EQ(console_of([&] { print("%s %d\n", text.c_str(), 7); }), text + " 7\n");
}

TEST(PrintLines, ShowsATextAsItIs) {
    EXPECT_EQ(console_of([] { print_lines("100%\n\ttext\n"); }), "100%\n\ttext\n");
}

TEST(PrintDot, ShowsOneDot) {
    EXPECT_EQ(console_of([] { print_dot(); }), ".");
}

// In a process that has not looked for a terminal yet.
TEST(PrintDot, IsSeenAtOnceOnATerminal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto see_the_dot = [] {
        const int screen = ::posix_openpt(O_RDWR | O_NOCTTY);
        ::unlockpt(screen);
        ::dup2(::open(::ptsname(screen), O_RDWR | O_NOCTTY), STDOUT_FILENO);
        print_dot();
        pollfd shown = {screen, POLLIN, 0};
        constexpr int longest = 1000;
        ::_exit(::poll(&shown, 1, longest) == 1 ? 0 : 1);
    };
    EXPECT_EXIT(see_the_dot(), testing::ExitedWithCode(0), "");
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
