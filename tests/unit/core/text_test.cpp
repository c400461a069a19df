#include "core/text.h"

#include "support/console_capture.h"
#include "unit/failing_memory.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr const char *no_text = nullptr;

// A buffer of 16 bytes that begins with a text and is filled up with '#'.
struct buffer {
    explicit buffer(std::string_view text) {
        bytes.fill('#');
        std::copy(text.begin(), text.end(), bytes.begin());
        bytes[text.size()] = '\0';
    }

    [[nodiscard]] std::string first(std::size_t count) const { return {bytes.data(), count}; }

    std::array<char, 16> bytes{};
};

std::string bytes(const char *text, std::size_t count) {
    return {text, count};
}

} // namespace

// --- Bounded copies ---

TEST(Ncpy, CopiesAtMostLenCharactersAndGivesTheEnd) {
    buffer text("");
    EXPECT_EQ(ncpy(text.bytes.data(), "abcdef", 4), text.bytes.data() + 4);
    EXPECT_EQ(text.first(6), bytes("abcd\0#", 6));
}

TEST(Ncpy, AlwaysSetsTheByteAtLen) {
    buffer text("");
    EXPECT_EQ(ncpy(text.bytes.data(), "ab", 5), text.bytes.data() + 2);
    EXPECT_EQ(text.first(7), bytes("ab\0##\0#", 7));
}

TEST(Ncpy, ANullSourceGivesAnEmptyTextAndTheDestination) {
    buffer text("old");
    EXPECT_EQ(ncpy(text.bytes.data(), nullptr, 5), text.bytes.data());
    EXPECT_EQ(text.first(6), bytes("\0ld\0##", 6));
}

TEST(Ncpy, ANullDestinationGivesNull) {
    EXPECT_EQ(ncpy(nullptr, "abc", 3), nullptr);
}

TEST(Ncat, FillsTheTextUpToLenCharacters) {
    buffer text("ab");
    EXPECT_EQ(ncat(text.bytes.data(), "cdef", 4), text.bytes.data());
    EXPECT_EQ(text.first(6), bytes("abcd\0#", 6));
}

TEST(Ncat, AlwaysSetsTheByteAtLen) {
    buffer text("ab");
    ncat(text.bytes.data(), "c", 6);
    EXPECT_EQ(text.first(8), bytes("abc\0##\0#", 8));
}

TEST(Ncat, ANullOnEitherSideChangesNothing) {
    buffer text("ab");
    EXPECT_EQ(ncat(text.bytes.data(), nullptr, 6), text.bytes.data());
    EXPECT_EQ(text.first(4), bytes("ab\0#", 4));
    EXPECT_EQ(ncat(nullptr, "c", 6), nullptr);
}

TEST(Lcpy, LenIsTheSizeOfTheDestination) {
    buffer text("");
    EXPECT_EQ(lcpy(text.bytes.data(), "abcdef", 4), text.bytes.data());
    EXPECT_EQ(text.first(5), bytes("abc\0#", 5));
}

TEST(Lcpy, SizeOneLeavesOnlyTheTerminator) {
    buffer text("old");
    lcpy(text.bytes.data(), "abc", 1);
    EXPECT_STREQ(text.bytes.data(), "");
    lcpy(text.bytes.data() + 4, "abc", 0);
    EXPECT_EQ(text.bytes[4], '#');
}

TEST(Lcpy, ANullSourceDoesNotClearTheDestination) {
    buffer text("old");
    EXPECT_EQ(lcpy(text.bytes.data(), nullptr, 8), text.bytes.data());
    EXPECT_STREQ(text.bytes.data(), "old");
    EXPECT_EQ(lcpy(nullptr, "abc", 8), nullptr);
}

TEST(Lcat, NeverWritesBehindItsSize) {
    buffer text("ab");
    EXPECT_EQ(lcat(text.bytes.data(), "cdef", 5), text.bytes.data());
    EXPECT_EQ(text.first(6), bytes("abcd\0#", 6));
    lcat(text.bytes.data(), "more", 5);
    EXPECT_EQ(text.first(6), bytes("abcd\0#", 6));
}

TEST(Lcat, ANullOnEitherSideChangesNothing) {
    buffer text("ab");
    EXPECT_EQ(lcat(text.bytes.data(), nullptr, 8), text.bytes.data());
    EXPECT_STREQ(text.bytes.data(), "ab");
    EXPECT_EQ(lcat(nullptr, "c", 8), nullptr);
}

// --- The C library's functions, accepting null texts ---

TEST(SStrcpy, ANullSourceGivesAnEmptyText) {
    buffer text("old");
    EXPECT_EQ(s_strcpy(text.bytes.data(), nullptr), text.bytes.data());
    EXPECT_STREQ(text.bytes.data(), "");
    EXPECT_EQ(s_strcpy(text.bytes.data(), "new"), text.bytes.data());
    EXPECT_STREQ(text.bytes.data(), "new");
    EXPECT_EQ(s_strcpy(nullptr, "new"), nullptr);
}

TEST(SStrcmp, NullNeverEqualsAnything) {
    EXPECT_EQ(s_strcmp(nullptr, "a"), 1);
    EXPECT_EQ(s_strcmp("a", nullptr), 1);
    EXPECT_EQ(s_strcmp(nullptr, nullptr), 1);
}

TEST(SStrcmp, GivesTheDifferenceOfTheFirstBytesAsUnsignedNumbers) {
    EXPECT_EQ(s_strcmp("c", "a"), 2);
    EXPECT_EQ(s_strcmp("a", "d"), -3);
    EXPECT_EQ(s_strcmp("\xff", "a"), 0xff - 'a');
    EXPECT_EQ(s_strcmp("", "a"), -'a');
}

TEST(SStrcmp, ComparesTheWholeTexts) {
    EXPECT_EQ(s_strcmp("abc", "abc"), 0);
    EXPECT_EQ(s_strcmp("", ""), 0);
    EXPECT_LT(s_strcmp("abc", "abd"), 0);
    EXPECT_GT(s_strcmp("abc", "ab"), 0);
    EXPECT_NE(s_strcmp("Cgi_name", "cgi_name"), 0);
}

TEST(SStricmp, IgnoresCase) {
    EXPECT_EQ(s_stricmp("Abc", "aBC"), 0);
    EXPECT_EQ(s_stricmp("", ""), 0);
}

TEST(SStricmp, APrefixComparesAsOneWhicheverIsTheShorter) {
    EXPECT_EQ(s_stricmp("ab", "abc"), 1);
    EXPECT_EQ(s_stricmp("abc", "ab"), 1);
    EXPECT_EQ(s_stricmp("", "a"), 1);
}

TEST(SStricmp, GivesTheDifferenceOfTheUpperCaseCharacters) {
    EXPECT_EQ(s_stricmp("aB", "Ad"), 'B' - 'D');
    EXPECT_EQ(s_stricmp("a", "_"), 'A' - '_');
}

TEST(SStricmp, NullGivesOne) {
    EXPECT_EQ(s_stricmp(nullptr, "a"), 1);
    EXPECT_EQ(s_stricmp("a", nullptr), 1);
    EXPECT_EQ(s_stricmp(nullptr, nullptr), 1);
}

TEST(SStrncmp, TextsShorterThanTheCountCompareAsUnequal) {
    EXPECT_EQ(s_strncmp("abc", "abc", 5), 1);
    EXPECT_EQ(s_strncmp("abc", "abc", 4), 1);
    EXPECT_EQ(s_strncmp("abc", "abc", 3), 0);
    EXPECT_EQ(s_strncmp("ab", "abc", 3), 1);
}

TEST(SStrncmp, LooksAtTheFirstCharactersOnly) {
    EXPECT_EQ(s_strncmp("abcd", "abcx", 3), 0);
}

TEST(SStrncmp, ADifferenceBeforeTheLastCharacterGivesOneAndAtTheLastItself) {
    EXPECT_EQ(s_strncmp("aXcd", "abcd", 4), 1);
    EXPECT_EQ(s_strncmp("abca", "abcd", 4), -3);
    EXPECT_EQ(s_strncmp("d", "a", 1), 3);
    EXPECT_EQ(s_strncmp("~a", "~b", 2), -1);
}

TEST(SStrncmp, NoCharactersCompareAsEqual) {
    EXPECT_EQ(s_strncmp("abc", "xyz", 0), 0);
    EXPECT_EQ(s_strncmp("", "", 0), 0);
    EXPECT_EQ(s_strnicmp("abc", "", 0), 0);
}

TEST(SStrncmp, NullGivesOneEvenForNoCharacters) {
    EXPECT_EQ(s_strncmp(nullptr, "a", 0), 1);
    EXPECT_EQ(s_strncmp("a", nullptr, 1), 1);
    EXPECT_EQ(s_strnicmp(nullptr, nullptr, 0), 1);
}

TEST(SStrnicmp, IgnoresCase) {
    EXPECT_EQ(s_strnicmp("Yes please", "yES", 3), 0);
    EXPECT_EQ(s_strnicmp("ye", "yes", 3), 1);
    EXPECT_EQ(s_strnicmp("yeT", "yes", 3), 1);
    EXPECT_EQ(s_strncmp("Yes", "yes", 3), 1);
}

TEST(SStrlwr, LowersInPlace) {
    char text[] = "ABC def_9";
    EXPECT_EQ(s_strlwr(text), text);
    EXPECT_STREQ(text, "abc def_9");
    EXPECT_EQ(s_strlwr(nullptr), nullptr);
}

TEST(SStrtrm, GivesOneAndKeepsTheBlanks) {
    char text[] = "abc  ";
    EXPECT_EQ(s_strtrm(text), 1);
    EXPECT_STREQ(text, "abc  ");
    EXPECT_EQ(s_strtrm(nullptr), 0);
}

TEST(SStrcat, AppendsTheFormattedText) {
    char text[64] = "set";
    EXPECT_EQ(s_strcat(text, " %s=%d", "a", 5), text);
    EXPECT_STREQ(text, "set a=5");
}

TEST(SStrcat, ANullOnEitherSideChangesNothing) {
    char text[8] = "set";
    EXPECT_EQ(s_strcat(text, no_text), text);
    EXPECT_STREQ(text, "set");
    EXPECT_EQ(s_strcat(nullptr, "x"), nullptr);
}

TEST(SStrcat, AppendsAtMost1023Characters) {
    const std::string piece(2000, 'p');
    std::array<char, 2048> text{};
    s_strcat(text.data(), "%s", piece.c_str());
    EXPECT_EQ(std::string(text.data()), std::string(1023, 'p'));
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

TEST(SStrstr, FindsTheNeedleAndBearsNull) {
    const char *hay = "kestrel.cgi";
    EXPECT_EQ(s_strstr(hay, "cgi"), hay + 8);
    EXPECT_EQ(s_strstr(hay, "CGI"), nullptr);
    EXPECT_EQ(s_strstr(nullptr, "a"), nullptr);
    EXPECT_EQ(s_strstr(hay, nullptr), nullptr);
}

TEST(SStrchr, SearchesForTheLowEightBits) {
    const char *text = "a/b/c";
    EXPECT_EQ(s_strchr(text, '/'), text + 1);
    EXPECT_EQ(s_strchr(text, 0x100 + 'b'), text + 2);
    EXPECT_EQ(s_strchr(text, 'x'), nullptr);
    EXPECT_EQ(s_strchr(text, '\0'), text + 5);
    EXPECT_EQ(s_strchr(nullptr, 'a'), nullptr);
}

TEST(SStristr, GivesThePlaceOfTheFirstMatchIgnoringCase) {
    const char *hay = "Kestrel.CGI cgi";
    EXPECT_EQ(s_stristr(hay, "cgi"), hay + 8);
    EXPECT_EQ(s_stristr(hay, "STREL"), hay + 2);
    EXPECT_EQ(s_stristr(hay, "plover"), nullptr);
    EXPECT_EQ(s_stristr(hay, ""), hay);
    EXPECT_EQ(s_stristr("", "a"), nullptr);
    EXPECT_EQ(s_stristr(nullptr, "a"), nullptr);
    EXPECT_EQ(s_stristr(hay, nullptr), nullptr);
}

TEST(SStrlen, OfNullIsZero) {
    EXPECT_EQ(s_strlen(nullptr), 0U);
    EXPECT_EQ(s_strlen("abc"), 3U);
}

TEST(SAtoi, ReadsALeadingNumber) {
    EXPECT_EQ(s_atoi(" 42px"), 42);
    EXPECT_EQ(s_atoi("-7"), -7);
    EXPECT_EQ(s_atoi("x"), 0);
    EXPECT_EQ(s_atoi(nullptr), 0);
}

TEST(SStrtoken, SeparatorsAreNotSkipped) {
    EXPECT_STREQ(s_strtoken("a,,b", ","), "a");
    EXPECT_STREQ(s_strtoken(nullptr, ","), "");
    EXPECT_STREQ(s_strtoken(nullptr, ","), "b");
    EXPECT_EQ(s_strtoken(nullptr, ","), nullptr);
    EXPECT_EQ(s_strtoken(nullptr, ","), nullptr);
}

TEST(SStrtoken, AFinalSeparatorGivesAFinalEmptyToken) {
    EXPECT_STREQ(s_strtoken("a,", ","), "a");
    EXPECT_STREQ(s_strtoken(nullptr, ","), "");
    EXPECT_EQ(s_strtoken(nullptr, ","), nullptr);
}

TEST(SStrtoken, AnyCharacterOfTheSetSeparatesAndTheSetMayChange) {
    EXPECT_STREQ(s_strtoken("a b;c,d", "; "), "a");
    EXPECT_STREQ(s_strtoken(nullptr, "; "), "b");
    EXPECT_STREQ(s_strtoken(nullptr, ","), "c");
    EXPECT_STREQ(s_strtoken(nullptr, ""), "d");
    EXPECT_EQ(s_strtoken(nullptr, ""), nullptr);
}

TEST(SStrtoken, ANullSetGivesNullAndKeepsThePlace) {
    EXPECT_EQ(s_strtoken("a,b", nullptr), nullptr);
    EXPECT_STREQ(s_strtoken(nullptr, ","), "a");
    EXPECT_EQ(s_strtoken(nullptr, nullptr), nullptr);
    EXPECT_STREQ(s_strtoken(nullptr, ","), "b");
}

TEST(SStrtoken, AnEmptyTextIsOneEmptyToken) {
    EXPECT_STREQ(s_strtoken("", ","), "");
    EXPECT_EQ(s_strtoken(nullptr, ","), nullptr);
}

TEST(SStrtoken, HoldsAtMost1023Characters) {
    const std::string text(2000, 't');
    EXPECT_EQ(std::string(s_strtoken(text.c_str(), ",")), std::string(1023, 't'));
}

// --- Quotes and characters ---

TEST(RemoveQuote, GivesWhatStandsBetweenTheFirstTwoQuotes) {
    EXPECT_STREQ(remove_quote("set \"blue\" and \"red\""), "blue");
    EXPECT_STREQ(remove_quote("\"\""), "");
}

TEST(RemoveQuote, AnUnclosedQuoteGoesToTheEnd) {
    EXPECT_STREQ(remove_quote("set \"blue"), "blue");
    EXPECT_STREQ(remove_quote("set\""), "");
}

TEST(RemoveQuote, WithoutAQuoteOrATextIsEmpty) {
    EXPECT_STREQ(remove_quote("blue"), "");
    EXPECT_STREQ(remove_quote(""), "");
    EXPECT_STREQ(remove_quote(nullptr), "");
}

TEST(RemoveQuote, IsCutAt511Characters) {
    const std::string text = "\"" + std::string(600, 'q') + "\"";
    EXPECT_EQ(std::string(remove_quote(text.c_str())), std::string(511, 'q'));
}

TEST(CharReplace, ReplacesEveryOccurrence) {
    char text[] = "a\\b\\c";
    EXPECT_EQ(char_replace(text, '\\', '/'), text);
    EXPECT_STREQ(text, "a/b/c");
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

TEST(Strlwr, LowersTheLettersAToZOnly) {
    char text[] = "AZ[@\xc4 az09";
    EXPECT_EQ(strlwr(text), text);
    EXPECT_STREQ(text, "az[@\xc4 az09");
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
