#include "core/format.h"

#include "support/rows.h"
#include "support/scratch_directory.h"

#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

// Called through here, a null argument and odd formats pass the compiler's own checks.
std::string formatted_freely(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = vformatted(format, arguments);
    va_end(arguments);
    return text;
}

const char *const no_text = nullptr;

// clang-format off
const std::vector<rule> rules = {
    {"FormatWithoutArguments.ReadsEveryConversionAsMissing", format_without_arguments,
     {{{"%s|%d|%i|%u|%x|%c|%%"}, "<NULL>|0|0|0|0||%"}}},
    {"FormatWithoutArguments.PassesOverFlagsWidthAndPrecision", format_without_arguments,
     {{{"[%-14.14s][%05d][%.4s][%*d][% i][%+u][%#x]"}, "[<NULL>][0][<NULL>][0][0][0][0]"}}},
    {"FormatWithoutArguments.LeavesAnythingElseAsItStands", format_without_arguments,
     {{{"%n %p %f %ld 50%"}, "%n %p %f %ld 50%"}, {{"%5.2q"}, "%5.2q"}, {{""}, ""}}},
};
// clang-format on

const int registered = register_rows(rules);

} // namespace

TEST(FormatText, PutsTextsNumbersAndCharacters) {
    EXPECT_EQ(formatted("%s%c%s", "/usr", '/', "cgi"), "/usr/cgi");
    EXPECT_EQ(formatted("%d %i %u %x", -12, 34, 56U, 255U), "-12 34 56 ff");
    EXPECT_EQ(formatted("100%% %s", "sure"), "100% sure");
}

TEST(FormatText, PutsTheLimitsOfNumbers) {
    EXPECT_EQ(formatted("%d", INT_MIN), "-2147483648");
    EXPECT_EQ(formatted("%d", INT_MAX), "2147483647");
    EXPECT_EQ(formatted("%u", UINT_MAX), "4294967295");
    EXPECT_EQ(formatted("%x", UINT_MAX), "ffffffff");
}

TEST(FormatText, ANullTextPrintsNull) {
    EXPECT_EQ(formatted_freely("{%s=%s}", "name", no_text), "{name=<NULL>}");
}

TEST(FormatText, WidthPadsOnTheLeftAndWithMinusOnTheRight) {
    EXPECT_EQ(formatted("[%5s][%-5s]", "ab", "ab"), "[   ab][ab   ]");
    EXPECT_EQ(formatted("[%5d][%-5d]", -42, -42), "[  -42][-42  ]");
    EXPECT_EQ(formatted("[%3c][%-3c]", 'x', 'x'), "[  x][x  ]");
    EXPECT_EQ(formatted("[%1s]", "abc"), "[abc]");
}

TEST(FormatText, PrecisionCutsATextAndWidthPadsIt) {
    EXPECT_EQ(formatted("[%.4s]", "kestrel"), "[kest]");
    EXPECT_EQ(formatted("[%-14.14s]", "index.tpl"), "[index.tpl     ]");
    EXPECT_EQ(formatted("[%-14.14s]", "a_very_long_name.tpl"), "[a_very_long_na]");
    EXPECT_EQ(formatted("[%.0s][%.s]", "gone", "gone"), "[][]");
    EXPECT_EQ(formatted("[%.9s]", "ab"), "[ab]");
}

TEST(FormatText, PrecisionCutsNullTextLikeAnyOther) {
    EXPECT_EQ(formatted_freely("%.3s|%8s", no_text, no_text), "<NU|  <NULL>");
}

TEST(FormatText, WhatIsNoConversionStandsAsItIs) {
    EXPECT_EQ(formatted_freely("50%"), "50%");
    EXPECT_EQ(formatted_freely("%q and %-5"), "%q and %-5");
    EXPECT_EQ(formatted_freely("%n%p%f"), "%n%p%f");
}

TEST(FormatText, AHugeWidthPadsNoMoreThan4096Characters) {
    EXPECT_EQ(formatted("%999999999d", 1), std::string(4095, ' ') + "1");
}

TEST(FormatFile, WritesTheTextAndSaysWhetherTheFileTookIt) {
    const scratch_directory scratch;
    std::FILE *file = std::fopen("out", "w");
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(format_file(file, "%s %d%s", "line", 1, "\n"));
    std::fclose(file);
    EXPECT_EQ(read_file("out"), "line 1\n");

    std::FILE *full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_FALSE(format_file(full, "%s", "text"));
    std::fclose(full);
}

TEST(FormatWithoutArguments, DoubledPercentsGiveTheTextBack) {
    EXPECT_EQ(double_percents("100% of %s"), "100%% of %%s");
    EXPECT_EQ(format_without_arguments(double_percents("100% of %s %n %%")), "100% of %s %n %%");
}

TEST(BoundedText, HoldsSizeLessOneCharactersAndSaysWhenItCut) {
    bounded_text<6> text("abcde");
    EXPECT_STREQ(text.c_str(), "abcde");
    EXPECT_FALSE(text.is_cut());
    text.assign("abcdef");
    EXPECT_STREQ(text.c_str(), "abcde");
    EXPECT_TRUE(text.is_cut());
    text.assign("ab");
    EXPECT_FALSE(text.is_cut());
    text.append("cdef");
    EXPECT_STREQ(text.c_str(), "abcde");
    EXPECT_TRUE(text.is_cut());
    text.format("%s", "123456");
    EXPECT_STREQ(text.c_str(), "12345");
    EXPECT_TRUE(text.is_cut());
    text.format("%s", "12345");
    EXPECT_FALSE(text.is_cut());
}

TEST(BoundedText, WritesNothingBehindItsBuffer) {
    struct {
        bounded_text<4> text;
        char next = '#';
    } room;
    room.text.format("%s-%d", "abcdef", 12345).append("zz");
    EXPECT_STREQ(room.text.c_str(), "abc");
    EXPECT_EQ(room.next, '#');
}

TEST(BoundedText, ANullTextIsEmpty) {
    path_text text("something");
    text.assign(no_text);
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(text.c_str(), "");
}

TEST(BoundedText, MayBeAssignedAPartOfItself) {
    path_text text("/srv/site/");
    text.assign(text.view().substr(5));
    EXPECT_STREQ(text.c_str(), "site/");
}
