#include "dialogue/answers.h"

#include "core/text.h"
#include "support/console_capture.h"
#include "unit/failing_memory.h"

#include <gtest/gtest.h>
#include <string>

TEST(CleanUpAnswer, CutsTheLineEnd) {
    char text[] = "/srv/site\r\n";
    EXPECT_EQ(clean_up_answer(text), text);
    EXPECT_STREQ(text, "/srv/site");
}

TEST(CleanUpAnswer, ReplacesEveryCarriageReturnAndLineFeed) {
    char text[] = "a\rb\nc";
    clean_up_answer(text);
    EXPECT_EQ(std::string(text, 5), std::string("a\0b\0c", 5));
}

TEST(CleanUpAnswer, LeavesATextWithoutLineEnd) {
    char text[] = " a b\t";
    clean_up_answer(text);
    EXPECT_STREQ(text, " a b\t");
    char empty[] = "";
    EXPECT_STREQ(clean_up_answer(empty), "");
}

TEST(StripLeadingSpaces, GivesTheFirstCharacterThatIsNeitherBlankNorTab) {
    const char *text = " \t answer ";
    EXPECT_EQ(strip_leading_spaces(text), text + 3);
    const char *blank = "\t  ";
    EXPECT_EQ(strip_leading_spaces(blank), blank + 3);
    const char *line = "\n";
    EXPECT_EQ(strip_leading_spaces(line), line);
}

TEST(ValidDirName, IsOneForAnEmptyOrBlankName) {
    char empty[] = "";
    char blank[] = "   ";
    char tab[] = "\t";
    EXPECT_EQ(valid_dir_name(empty), 1);
    EXPECT_EQ(valid_dir_name(blank), 1);
    EXPECT_EQ(valid_dir_name(tab), 0);
}

TEST(ValidDirName, CutsTheNameBehindItsFirstWord) {
    char name[] = "  ~my dir";
    EXPECT_EQ(valid_dir_name(name), 0);
    EXPECT_STREQ(name, "  ~my");
}

TEST(NumPerc, TakesANumberOrAPercentage) {
    for (const char *text : {"100", "100%", "50%", "%", ""}) {
        EXPECT_EQ(num_perc(text), 1) << text;
    }
}

TEST(NumPerc, JudgesOnlyThePlaceOfTheFirstPercent) {
    for (const char *text : {"abc%", "20px", "abc", "-5"}) {
        EXPECT_EQ(num_perc(text), 1) << text;
    }
    for (const char *text : {"10%5", "5%0", "50%%", "% "}) {
        EXPECT_EQ(num_perc(text), 0) << text;
    }
}

TEST(CleanUpName, KeepsTheTextBeforeTheFirstDot) {
    char two_dots[] = "kestrel.old.cgi";
    EXPECT_EQ(clean_up_name(two_dots), two_dots);
    EXPECT_STREQ(two_dots, "kestrel");
    char plain[] = "kestrel";
    EXPECT_STREQ(clean_up_name(plain), "kestrel");
    char hidden[] = ".kestrel";
    EXPECT_STREQ(clean_up_name(hidden), "");
}

TEST(GetLabel, CopiesTheCharactersBeforeTheFirstBlank) {
    EXPECT_STREQ(heap_text(get_label("set body x")).get(), "set");
    EXPECT_STREQ(heap_text(get_label(" set")).get(), "");
}

TEST(GetLabel, CopiesAtMost511Characters) {
    const std::string line = std::string(600, 'l') + " x";
    EXPECT_EQ(std::string(heap_text(get_label(line.c_str())).get()), std::string(511, 'l'));
}

TEST(CleanUpSet, GivesTheTextBehindTheFirstBlank) {
    char line[] = "set body bgcolor\r\n";
    EXPECT_EQ(clean_up_set(line), line);
    EXPECT_STREQ(line, "body bgcolor");
}

TEST(CleanUpSet, DropsLineEndsAndEachPairOfABlankAndASlash) {
    char line[] = "set a /\r\n b / /c/d  /";
    EXPECT_STREQ(clean_up_set(line), "a bc/d ");
}
