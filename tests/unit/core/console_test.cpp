#include "core/console.h"

#include "support/console_capture.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

TEST(Print, ShowsTheFormattedTextHoweverLong) {
    const std::string text(3000, 'x');
    EXPECT_EQ(console_of([&] { print("%s %d\n", text.c_str(), 7); }), text + " 7\n");
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
