#include "dialogue/answers.h"

#include "core/text.h"
#include "support/rows.h"
#include "unit/failing_memory.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// What a function makes of a text in place.
std::string changed(char *(*change)(char *), std::string text) {
    EXPECT_EQ(change(text.data()), text.data());
    return text.c_str();
}

// What valid_dir_name gives for a name, and the name then.
std::string valid(std::string name) {
    const int result = valid_dir_name(name.data());
    return std::to_string(result) + " " + name.c_str();
}

std::string label_of(const char *line) {
    return heap_text(get_label(line)).get();
}

const std::string long_label = std::string(600, 'l') + " x";

// clang-format off
const std::vector<rule> rules = {
    {"CleanUpAnswer.CutsTheLineEnd", changed, {{{clean_up_answer, "/srv/site\r\n"}, "/srv/site"}}},
    {"CleanUpAnswer.LeavesATextWithoutLineEnd", changed,
     {{{clean_up_answer, " a b\t"}, " a b\t"}, {{clean_up_answer, ""}, ""}}},
    {"StripLeadingSpaces.GivesTheFirstCharacterThatIsNeitherBlankNorTab", strip_leading_spaces,
     {{{" \t answer "}, "answer "}, {{"\t  "}, ""}, {{"\n"}, "\n"}}},
    {"ValidDirName.IsOneForAnEmptyOrBlankName", valid,
     {{{""}, "1 "}, {{"   "}, "1    "}, {{"\t"}, "0 \t"}}},
    {"ValidDirName.CutsTheNameBehindItsFirstWord", valid, {{{"  ~my dir"}, "0   ~my"}}},
    {"NumPerc.TakesANumberOrAPercentage", num_perc,
     {{{"100"}, 1}, {{"100%"}, 1}, {{"50%"}, 1}, {{"%"}, 1}, {{""}, 1}}},
    {"NumPerc.JudgesOnlyThePlaceOfTheFirstPercent", num_perc,
     {{{"abc%"}, 1}, {{"20px"}, 1}, {{"abc"}, 1}, {{"-5"}, 1}, {{"10%5"}, 0}, {{"5%0"}, 0},
      {{"50%%"}, 0}, {{"% "}, 0}}},
    {"CleanUpName.KeepsTheTextBeforeTheFirstDot", changed,
     {{{clean_up_name, "kestrel.old.cgi"}, "kestrel"},
      {{clean_up_name, "kestrel"}, "kestrel"},
      {{clean_up_name, ".kestrel"}, ""}}},
    {"GetLabel.CopiesTheCharactersBeforeTheFirstBlank", label_of,
     {{{"set body x"}, "set"}, {{" set"}, ""}}},
    {"GetLabel.CopiesAtMost511Characters", label_of,
     {{{long_label.c_str()}, std::string(511, 'l')}}},
    {"CleanUpSet.GivesTheTextBehindTheFirstBlank", changed,
     {{{clean_up_set, "set body bgcolor\r\n"}, "body bgcolor"}}},
    {"CleanUpSet.DropsLineEndsAndEachPairOfABlankAndASlash", changed,
     {{{clean_up_set, "set a /\r\n b / /c/d  /"}, "a bc/d "}}},
};
// clang-format on

const int registered = register_rows(rules);

} // namespace

TEST(CleanUpAnswer, ReplacesEveryCarriageReturnAndLineFeed) {
    char text[] = "a\rb\nc";
    clean_up_answer(text);
    EXPECT_EQ(std::string(text, 5), std::string("a\0b\0c", 5));
}
