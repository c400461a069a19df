#include "core/text.h"

#include "support/console_capture.h"
#include "support/rows.h"
#include "unit/failing_memory.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr const char *no_text = nullptr;

const std::string long_text(2000, 'x');
const std::string long_quote = '"' + long_text;

// What a bounded copy makes of a buffer that holds a text and is filled up with '#': the place it
// gives, then the bytes, "." for NUL.
std::string copied(char *(*copy)(char *, const char *, std::size_t), std::string before,
                   const char *source, std::size_t len) {
    before += '\0';
    before.resize(9, '#');
    const auto place = copy(before.data(), source, len) - before.data();
    std::replace(before.begin(), before.end(), '\0', '.');
    return std::to_string(place) + " " + before;
}

char *strcpy_whole(char *destination, const char *source, std::size_t /*len*/) {
    return s_strcpy(destination, source);
}

// The sign of what s_strcmp gives.
int order(const char *a, const char *b) {
    const int difference = s_strcmp(a, b);
    return (difference > 0) - (difference < 0);
}

// What a function makes of a text in place.
std::string changed(char *(*change)(char *), std::string text) {
    EXPECT_EQ(change(text.data()), text.data());
    return text;
}

// The token that each of these sets of separators gives, "-" for null, divided by "|".
std::string tokens(const char *text, const std::vector<const char *> &sets) {
    std::string all;
    for (const char *set : sets) {
        const char *token = s_strtoken(all.empty() ? text : nullptr, set);
        all += (all.empty() ? "" : "|") + std::string(token != nullptr ? token : "-");
    }
    return all;
}

// clang-format off
const std::vector<rule> rules = {
    // --- Bounded copies ---
    {"Ncpy.CopiesAtMostLenCharactersAndGivesTheEnd", copied,
     {{{ncpy, "", "abcdef", 4}, "4 abcd.####"}}},
    {"Ncpy.AlwaysSetsTheByteAtLen", copied, {{{ncpy, "", "ab", 5}, "2 ab.##.###"}}},
    {"Ncpy.ANullSourceGivesAnEmptyTextAndTheDestination", copied,
     {{{ncpy, "old", nullptr, 5}, "0 .ld.#####"}}},
    {"Ncpy.ANullDestinationGivesNull", ncpy, {{{nullptr, "abc", 3}, null}}},
    {"Ncat.FillsTheTextUpToLenCharacters", copied, {{{ncat, "ab", "cdef", 4}, "0 abcd.####"}}},
    {"Ncat.AlwaysSetsTheByteAtLen", copied, {{{ncat, "ab", "c", 6}, "0 abc.##.##"}}},
    {"Ncat.ANullSourceChangesNothing", copied, {{{ncat, "ab", nullptr, 6}, "0 ab.######"}}},
    {"Ncat.ANullDestinationGivesNull", ncat, {{{nullptr, "c", 6}, null}}},
    {"Lcpy.LenIsTheSizeOfTheDestination", copied, {{{lcpy, "", "abcdef", 4}, "0 abc.#####"}}},
    {"Lcpy.SizeOneLeavesOnlyTheTerminator", copied,
     {{{lcpy, "old", "abc", 1}, "0 .ld.#####"}, {{lcpy, "old", "abc", 0}, "0 old.#####"}}},
    {"Lcpy.ANullSourceDoesNotClearTheDestination", copied,
     {{{lcpy, "old", nullptr, 8}, "0 old.#####"}}},
    {"Lcpy.ANullDestinationGivesNull", lcpy, {{{nullptr, "abc", 8}, null}}},
    {"Lcat.NeverWritesBehindItsSize", copied,
     {{{lcat, "ab", "cdef", 5}, "0 abcd.####"}, {{lcat, "abcd", "more", 5}, "0 abcd.####"}}},
    {"Lcat.ANullSourceChangesNothing", copied, {{{lcat, "ab", nullptr, 8}, "0 ab.######"}}},
    {"Lcat.ANullDestinationGivesNull", lcat, {{{nullptr, "c", 8}, null}}},

    // --- The C library's functions, accepting null texts ---
    {"SStrcpy.ANullSourceGivesAnEmptyText", copied,
     {{{strcpy_whole, "old", nullptr, 0}, "0 .ld.#####"},
      {{strcpy_whole, "old", "new", 0}, "0 new.#####"}}},
    {"SStrcpy.ANullDestinationGivesNull", s_strcpy, {{{nullptr, "new"}, null}}},
    {"SStrcmp.NullNeverEqualsAnything", s_strcmp,
     {{{nullptr, "a"}, 1}, {{"a", nullptr}, 1}, {{nullptr, nullptr}, 1}}},
    {"SStrcmp.GivesTheDifferenceOfTheFirstBytes", s_strcmp,
     {{{"c", "a"}, 2}, {{"a", "d"}, -3}, {{"\xff", "a"}, 0xff - 'a'}, {{"", "a"}, -'a'}}},
    {"SStrcmp.ComparesTheWholeTexts", order,
     {{{"abc", "abc"}, 0}, {{"", ""}, 0}, {{"abc", "abd"}, -1}, {{"abc", "ab"}, 1},
      {{"Cgi_name", "cgi_name"}, -1}}},
    {"SStricmp.IgnoresCase", s_stricmp, {{{"Abc", "aBC"}, 0}, {{"", ""}, 0}}},
    {"SStricmp.APrefixComparesAsOneWhicheverIsTheShorter", s_stricmp,
     {{{"ab", "abc"}, 1}, {{"abc", "ab"}, 1}, {{"", "a"}, 1}}},
    {"SStricmp.GivesTheDifferenceOfTheUpperCaseCharacters", s_stricmp,
     {{{"aB", "Ad"}, 'B' - 'D'}, {{"a", "_"}, 'A' - '_'}}},
    {"SStricmp.NullGivesOne", s_stricmp,
     {{{nullptr, "a"}, 1}, {{"a", nullptr}, 1}, {{nullptr, nullptr}, 1}}},
    {"SStrncmp.TextsShorterThanTheCountCompareAsUnequal", s_strncmp,
     {{{"abc", "abc", 5}, 1}, {{"abc", "abc", 4}, 1}, {{"abc", "abc", 3}, 0},
      {{"ab", "abc", 3}, 1}}},
    {"SStrncmp.LooksAtTheFirstCharactersOnly", s_strncmp, {{{"abcd", "abcx", 3}, 0}}},
    {"SStrncmp.ADifferenceIsOneUnlessAtTheLastCharacter", s_strncmp,
     {{{"aXcd", "abcd", 4}, 1}, {{"abca", "abcd", 4}, -3}, {{"d", "a", 1}, 3},
      {{"~a", "~b", 2}, -1}}},
    {"SStrncmp.NoCharactersCompareAsEqual", s_strncmp, {{{"abc", "xyz", 0}, 0}, {{"", "", 0}, 0}}},
    {"SStrncmp.NullGivesOneEvenForNoCharacters", s_strncmp,
     {{{nullptr, "a", 0}, 1}, {{"a", nullptr, 1}, 1}}},
    {"SStrnicmp.IgnoresCase", s_strnicmp,
     {{{"Yes please", "yES", 3}, 0}, {{"ye", "yes", 3}, 1}, {{"yeT", "yes", 3}, 1}}},
    {"SStrnicmp.NoCharactersCompareAsEqualAndNullGivesOne", s_strnicmp,
     {{{"abc", "", 0}, 0}, {{nullptr, nullptr, 0}, 1}}},
    {"SStrlwr.LowersInPlace", changed, {{{s_strlwr, "ABC def_9"}, "abc def_9"}}},
    {"SStrlwr.OfNullIsNull", s_strlwr, {{{nullptr}, null}}},
    {"SStrstr.FindsTheNeedleAndBearsNull", s_strstr,
     {{{"kestrel.cgi", "cgi"}, "cgi"}, {{"kestrel.cgi", "CGI"}, null}, {{nullptr, "a"}, null},
      {{"kestrel.cgi", nullptr}, null}}},
    {"SStrchr.SearchesForTheLowEightBits", s_strchr,
     {{{"a/b/c", '/'}, "/b/c"}, {{"a/b/c", 0x100 + 'b'}, "b/c"}, {{"a/b/c", 'x'}, null},
      {{"a/b/c", '\0'}, ""}, {{nullptr, 'a'}, null}}},
    {"SStristr.GivesThePlaceOfTheFirstMatchIgnoringCase", s_stristr,
     {{{"Kestrel.CGI cgi", "cgi"}, "CGI cgi"}, {{"Kestrel.CGI", "STREL"}, "strel.CGI"},
      {{"Kestrel.CGI", "plover"}, null}, {{"Kestrel.CGI", ""}, "Kestrel.CGI"}, {{"", "a"}, null},
      {{nullptr, "a"}, null}, {{"Kestrel.CGI", nullptr}, null}}},
    {"SStrlen.OfNullIsZero", s_strlen, {{{nullptr}, 0}, {{"abc"}, 3}}},
    {"SAtoi.ReadsALeadingNumber", s_atoi,
     {{{" 42px"}, 42}, {{"-7"}, -7}, {{"x"}, 0}, {{nullptr}, 0}}},
    {"SStrtoken.SeparatorsAreNotSkipped", tokens,
     {{{"a,,b", {",", ",", ",", ",", ","}}, "a||b|-|-"}}},
    {"SStrtoken.AFinalSeparatorGivesAFinalEmptyToken", tokens, {{{"a,", {",", ",", ","}}, "a||-"}}},
    {"SStrtoken.AnyCharacterOfTheSetSeparatesAndTheSetMayChange", tokens,
     {{{"a b;c,d", {"; ", "; ", ",", "", ""}}, "a|b|c|d|-"}}},
    {"SStrtoken.ANullSetGivesNullAndKeepsThePlace", tokens,
     {{{"a,b", {nullptr, ",", nullptr, ","}}, "-|a|-|b"}}},
    {"SStrtoken.AnEmptyTextIsOneEmptyToken", s_strtoken, {{{"", ","}, ""}, {{nullptr, ","}, null}}},
    {"SStrtoken.HoldsAtMost1023Characters", s_strtoken,
     {{{long_text.c_str(), ","}, std::string(1023, 'x')}}},

    // The compiler puts this text where nothing may be written.
    {"SStrtrm.GivesOneAndKeepsTheBlanks", s_strtrm, {{{"abc  "}, 1}, {{nullptr}, 0}}},

    // --- Quotes and characters ---
    {"RemoveQuote.GivesWhatStandsBetweenTheFirstTwoQuotes", remove_quote,
     {{{R"(set "blue" and "red")"}, "blue"}, {{R"("")"}, ""}}},
    {"RemoveQuote.AnUnclosedQuoteGoesToTheEnd", remove_quote,
     {{{"set \"blue"}, "blue"}, {{"set\""}, ""}}},
    {"RemoveQuote.WithoutAQuoteOrATextIsEmpty", remove_quote,
     {{{"blue"}, ""}, {{""}, ""}, {{nullptr}, ""}}},
    {"RemoveQuote.IsCutAt511Characters", remove_quote,
     {{{long_quote.c_str()}, std::string(511, 'x')}}},
    {"CharReplace.ReplacesEveryOccurrence", changed,
     {{{[](char *text) { return char_replace(text, '\\', '/'); }, "a\\b\\c"}, "a/b/c"}}},
    {"Strlwr.LowersTheLettersAToZOnly", changed, {{{strlwr, "AZ[@\xc4 az09"}, "az[@\xc4 az09"}}},
};
// clang-format on

const int registered = register_rows(rules);

} // namespace

TEST(SStrcat, AppendsTheFormattedTextOfAtMost1023Characters) {
    char text[2048] = "set";
    EXPECT_EQ(s_strcat(text, " %s=%d", "a", 5), text);
    EXPECT_STREQ(text, "set a=5");
    s_strcat(text, "%s", long_text.c_str());
    EXPECT_EQ(text, "set a=5" + std::string(1023, 'x'));
}

TEST(SStrcat, ANullOnEitherSideChangesNothing) {
    char text[8] = "set";
    EXPECT_EQ(s_strcat(text, no_text), text);
    EXPECT_STREQ(text, "set");
    EXPECT_EQ(s_strcat(nullptr, "x"), nullptr);
}

TEST(SStradd, GrowsAHeapText) {
    char *text = s_stradd(nullptr, "one");
    EXPECT_STREQ(text, "one");
    text = s_stradd(text, " two");
    const heap_text owner(text);
    EXPECT_STREQ(text, "one two");
}

TEST(SStradd, NothingToAddGivesTheTextBack) {
    char text[] = "kept";
    EXPECT_EQ(s_stradd(text, nullptr), text);
    EXPECT_EQ(s_stradd(nullptr, nullptr), nullptr);
}

TEST(SStradd, WithoutMemoryKeepsTheOldText) {
    const heap_text text(s_stradd(nullptr, "old"));
    const failing_memory none(memory_of::texts, 0);
    EXPECT_EQ(s_stradd(text.get(), "new"), text.get());
    EXPECT_STREQ(text.get(), "old");
}

// --- Sorting ---

namespace {

int compare_numbers(const void *one, const void *other) {
    const int left = *static_cast<const int *>(one);
    const int right = *static_cast<const int *>(other);
    return (left > right) - (left < right);
}

void expect_sorted(std::vector<int> numbers) {
    std::vector<int> expected = numbers;
    std::sort(expected.begin(), expected.end());
    myqsort(numbers.data(), numbers.size(), sizeof(int), compare_numbers);
    EXPECT_EQ(numbers, expected);
}

} // namespace

TEST(Myqsort, SortsEveryOrderOfFewRecords) {
    for (int count = 0; count <= 6; count++) {
        std::vector<int> numbers(static_cast<std::size_t>(count));
        std::iota(numbers.begin(), numbers.end(), 0);
        do {
            expect_sorted(numbers);
        } while (std::next_permutation(numbers.begin(), numbers.end()));
    }
}

TEST(Myqsort, SortsManyRecordsInAwkwardOrders) {
    std::vector<int> numbers(5000);
    std::iota(numbers.begin(), numbers.end(), 0);
    expect_sorted(numbers);
    std::reverse(numbers.begin(), numbers.end());
    expect_sorted(numbers);
    expect_sorted(std::vector<int>(5000, 7));
    std::mt19937 random(1);
    std::shuffle(numbers.begin(), numbers.end(), random);
    expect_sorted(numbers);
    for (int &number : numbers) {
        number %= 10;
    }
    expect_sorted(numbers);
}

TEST(Myqsort, SortsRecordsOfAnySize) {
    char records[] = "cc1aa2bb3aa4";
    myqsort(records, 4, 3,
            [](const void *one, const void *other) { return std::memcmp(one, other, 3); });
    EXPECT_STREQ(records, "aa2aa4bb3cc1");
}

TEST(Exchange, SwapsTwoRecords) {
    char records[] = "abcdef";
    exchange(records, records + 3, 3);
    EXPECT_STREQ(records, "defabc");
    exchange(records, records, 3);
    EXPECT_STREQ(records, "defabc");
}

TEST(Maistrdup, CopiesToTheHeap) {
    const heap_text copy(maistrdup("text"));
    EXPECT_STREQ(copy.get(), "text");
}

TEST(Maistrdup, WithoutMemorySaysSoAndGivesNull) {
    const failing_memory none(memory_of::texts, 0);
    EXPECT_EQ(console_of([] { EXPECT_EQ(maistrdup("text"), nullptr); }),
              "NOT ENOUGH MEMORY ALLOCATED ERROR");
}
