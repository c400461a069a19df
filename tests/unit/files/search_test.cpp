#include "files/search.h"

#include "support/rows.h"
#include "unit/failing_memory.h"
#include "unit/files/file_world.h"
#include "unit/process_limit.h"
#include "unit/rights.h"

#include <memory>
#include <unistd.h>

namespace {

// A rule of matching and examples of it, "NAME ~ PATTERN" or, where nothing matches,
// "NAME !~ PATTERN".
struct matching_rule {
    const char *name;
    std::vector<std::string> examples;
};

// Matches with the function that the suite is named after.
class matching_test : public testing::Test {
  protected:
    static int match(std::string_view rule, const char *pattern, const char *name) {
        return rule.starts_with("MatchList.")   ? match_list(pattern, name)
               : rule.starts_with("MatchWild.") ? match_wild(pattern, name)
                                                : domatch(name, pattern);
    }

    static void check(const matching_rule &rule) {
        for (const std::string &example : rule.examples) {
            const std::size_t sign = example.find("~ ");
            const bool is_match = sign == 0 || example[sign - 1] != '!';
            const std::string name = example.substr(0, sign - (is_match ? 1 : 2));
            const std::string pattern = example.substr(sign + 2);
            EXPECT_EQ(match(rule.name, pattern.c_str(), name.c_str()), is_match ? 1 : 0) << example;
        }
    }
};

// A directory "world" and a file "file" in the current one.
class Search : public FileWorld {
  protected:
    Search() { shell("mkdir world; touch file"); }

    string_set found(int count) const {
        string_set names_found;
        for (int name = 0; name < count; name++) {
            names_found.insert((*names)[static_cast<std::size_t>(name)].get());
        }
        return names_found;
    }

    static void make_files(int count) {
        for (int file = 0; file < count; file++) {
            write_file("world/" + std::to_string(file) + ".tpl", "");
        }
    }

    std::unique_ptr<found_names> names = std::make_unique<found_names>();
};

using WildFind = Search;
using WildFind2 = Search;
using DirExists = Search;
using FileExists = Search;

const std::string hundred(100, 'a');

const std::vector<matching_rule> rules = {
    {"Domatch.OrdinaryCharactersMatchThemselvesCaseSensitively",
     {"index.tpl ~ index.tpl", "index.tpl !~ index.TPL", "index.tpl !~ index.tp",
      "index.tp !~ index.tpl", " ~ ", "a !~ ", " !~ a"}},
    // What stands before the star and what stands behind it do not overlap.
    {"Domatch.AStarMatchesAnyRun",
     {"index.tpl ~ *.tpl", ".tpl ~ *.tpl", "index.TPL !~ *.tpl", "index.tpl.tpl ~ *.tpl",
      "index.tpl ~ in*", "in ~ in*", "abcabd ~ *ab?", "a1b2c ~ a*b*c", "a1b2 !~ a*b*c",
      "anything ~ *", " ~ *", "aabc !~ aab*abc"}},
    {"Domatch.SeveralStarsCountAsOne", {"index.tpl ~ ***.tpl", " ~ ***", "a ~ a**"}},
    {"Domatch.AQuestionMarkMatchesExactlyOneCharacter",
     {"ab ~ a?", "a !~ a?", " !~ ?", " !~ *?", "abc !~ a?"}},
    {"Domatch.ASetMatchesItsMembersAndRanges",
     {"bx ~ [a-c]x", "ax ~ [a-c]x", "cx ~ [a-c]x", "dx !~ [a-c]x", "z ~ [xyz]", " !~ [xyz]",
      "\xe4 ~ [\x80-\xff]", "b !~ [c-a]"}},
    {"Domatch.ACircumflexNegatesTheSet", {"dx ~ [^a-c]x", "bx !~ [^a-c]x", " !~ [^a]", "^ ~ [a^]"}},
    {"Domatch.ABracketOrHyphenInFirstPlaceIsAMember",
     {"] ~ []]", "a ~ []a]", "- ~ [-a]", "a ~ [-a]", "b !~ [-a]", "b !~ [-z]", "] !~ [^]]",
      "a ~ [^]]", "- !~ [^-a]", "b ~ [^-a]"}},
    {"Domatch.AHyphenBeforeTheClosingBracketIsAMember",
     {"- ~ [a-]", "a ~ [a-]", "b !~ [a-]", "-] ~ [a-]]"}},
    {"Domatch.AHyphenBehindARangeJoinsItsEndToTheNextCharacter",
     {"d ~ [a-c-e]", "- !~ [a-c-e]", "- ~ [a-c-]"}},
    {"Domatch.ABackslashTakesTheNextCharacterLiterally",
     {"* ~ \\*", "a !~ \\*", "** !~ \\*", "\\ ~ \\\\", "[a] ~ \\[a]", "x? ~ *\\?"}},
    {"MatchWild.AStarAloneMatchesEveryNameEvenAnEmptyOne", {" ~ *", "index.tpl ~ *", " !~ ?"}},
    {"MatchWild.TakesThePatternFirst", {"index.tpl ~ *.tpl", "*.tpl !~ index.tpl"}},
    {"MatchList.AnyElementMayMatchIgnoringCase",
     {"logo.jpg ~ *.gif,*.jpg,*.wav", "LOGO.Gif ~ *.gif,*.jpg,*.wav", "index.tpl ~ *.TPL",
      "index.tpl !~ *.gif,*.jpg,*.wav"}},
    {"MatchList.AnEmptyListMatchesNothing", {"a !~ ", " !~ "}},
    // The last example has an empty element before the comma.
    {"MatchList.ATrailingCommaIsAsIfAbsent", {"logo.gif ~ *.gif,", " !~ *.gif,", " ~ ,"}},
    {"MatchList.TheLastElementThatMatchesDecides",
     {"logo1.gif !~ *.gif,!logo*.gif", "back.gif ~ *.gif,!logo*.gif",
      "logo1.gif ~ !logo*.gif,*.gif", "logo1.gif ~ *.gif,!*.GIF,logo*", "a !~ !*"}},
    {"MatchList.LeadingBlanksAndTrailingLineEndsOfAnElementAreDropped",
     {"a.jpg ~  \t*.gif,\t *.jpg\r\n", "a.gif ~ *.gif\n,*.jpg", "a  ~ a , b", "a !~ a , b"}},
    {"MatchList.AHundredCharactersOfAnElementCount",
     {hundred + " ~ " + hundred + "bcd,x", hundred + "bcd !~ " + hundred + "bcd,x",
      hundred + " ~  " + hundred}},
    {"MatchList.FiveHundredAndElevenCharactersOfTheNameCount",
     {std::string(510, 'a') + "bc ~ *b", std::string(511, 'a') + "c !~ *c"}},
};

using Domatch = matching_test;
using MatchList = matching_test;

const std::vector<rule> existences = {
    {"DirExists.WithOrWithoutATrailingSeparator",
     dir_exists,
     {{{"/tmp"}, 1}, {{"/tmp/"}, 1}, {{"world"}, 1}, {{"world/missing"}, 0}}},
    {"DirExists.TheRootAloneAndNoPathAreZero", dir_exists, {{{"/"}, 0}, {{""}, 0}, {{nullptr}, 0}}},
    {"DirExists.AFileIsNoDirectory", dir_exists, {{{"file"}, 0}, {{"file/"}, 0}}},
    {"FileExists.IsOneForWhatCanBeOpenedToBeRead",
     file_exists,
     {{{"file"}, 1}, {{"world"}, 1}, {{"missing"}, 0}, {{""}, 0}}},
};

const int registered = register_rows<matching_test>(rules) + register_rows<Search>(existences);

} // namespace

// --- Matching ---

TEST_F(Domatch, AnUnclosedSetOrALoneBackslashMatchesNothing) {
    for (const char *pattern : {"[", "[a", "[^", "[]", "[a-", "*[a", "\\", "a\\", "*\\"}) {
        for (const char *name : {"", "a", "[", "[a", "\\", "a\\"}) {
            EXPECT_EQ(domatch(name, pattern), 0) << name << " ~ " << pattern;
        }
    }
}

TEST_F(Domatch, ManyStarsEndSoon) {
    const std::string name(5000, 'a');
    std::string pattern;
    for (int star = 0; star < 200; star++) {
        pattern += "*a";
    }
    EXPECT_EQ(domatch(name.c_str(), (pattern + "b").c_str()), 0);
    EXPECT_EQ(domatch(name.c_str(), pattern.c_str()), 1);
}

TEST_F(MatchList, NullGivesZero) {
    EXPECT_EQ(match_list(nullptr, "a"), 0);
    EXPECT_EQ(match_list("*", nullptr), 0);
}

// --- Directory search ---

TEST_F(WildFind, GivesTheMatchingNamesOfTheCurrentDirectory) {
    std::filesystem::current_path("world");
    shell("touch a.tpl b.tpl c.TPL d.gif; mkdir set.tpl; ln -s nowhere link.tpl");
    const int count = wild_find("*.tpl", *names);
    EXPECT_EQ(found(count), (string_set{"a.tpl", "b.tpl", "set.tpl", "link.tpl"}));
    EXPECT_EQ(log(), "Debug: Wild finding [*.tpl]\n");
}

TEST_F(WildFind, NeverGivesTheDotEntries) {
    std::filesystem::current_path("world");
    write_file(".hidden", "");
    EXPECT_EQ(found(wild_find("*", *names)), string_set{".hidden"});
    EXPECT_EQ(wild_find(".", *names), 0);
    EXPECT_EQ(wild_find("..", *names), 0);
}

TEST_F(WildFind, ADirectoryThatCannotBeReadIsAnErrorInTheLog) {
    (*names)[0].reset(::strdup("untouched"));
    const file_descriptor last(::dup(STDIN_FILENO));
    int count = -1;
    {
        const process_limit no_more(RLIMIT_NOFILE, static_cast<rlim_t>(last.number()));
        count = wild_find("*", *names);
    }
    EXPECT_EQ(count, 0);
    EXPECT_STREQ((*names)[0].get(), "untouched");
    EXPECT_EQ(log(), "Debug: Wild finding [*]\n"
                     "Error: Could not read directory file: Too many open files\n");
}

TEST_F(WildFind2, GivesTheMatchingNamesOfTheDirectory) {
    make_files(3);
    const int count = wild_find2("world", "[01].tpl", *names);
    EXPECT_EQ(found(count), (string_set{"0.tpl", "1.tpl"}));
    EXPECT_EQ(log(), "Debug: Wild finding [world][[01].tpl]\n");
}

TEST_F(WildFind2, ADirectoryThatCannotBeReadIsToldStandardError) {
    (*names)[0].reset(::strdup("untouched"));
    stream_capture errors(stderr);
    EXPECT_EQ(wild_find2("missing", "*", *names), 0);
    EXPECT_EQ(errors.finish(), "Could not read directory file: No such file or directory\n");
    EXPECT_STREQ((*names)[0].get(), "untouched");
    EXPECT_EQ(log(), "Debug: Wild finding [missing][*]\n");
}

TEST_F(WildFind2, MoreThan1000NamesAreAnErrorAndTheFirst1000Stand) {
    make_files(1001);
    EXPECT_EQ(console_of([&] { EXPECT_EQ(wild_find2("world", "*", *names), 1000); }),
              "Error: MAXWILD exceeded\n");
    EXPECT_EQ(found(1000).size(), 1000U);
    EXPECT_EQ(log(), "Debug: Wild finding [world][*]\nError: MAXWILD exceeded\n");
}

TEST_F(WildFind2, LessThan1000NamesAreNoError) {
    make_files(999);
    EXPECT_EQ(wild_find2("world", "*.tpl", *names), 999);
    EXPECT_EQ(log(), "Debug: Wild finding [world][*.tpl]\n");
}

TEST_F(WildFind2, ANameThatCannotBeCopiedIsCountedAsNull) {
    make_files(2);
    const failing_memory one(memory_of::texts, 1);
    EXPECT_EQ(console_of([&] { EXPECT_EQ(wild_find2("world", "*", *names), 2); }),
              "NOT ENOUGH MEMORY ALLOCATED ERROR");
    EXPECT_NE((*names)[0].get(), nullptr);
    EXPECT_EQ((*names)[1].get(), nullptr);
}

// --- Existence ---

TEST_F(DirExists, ADirectoryThatMayNotBeReadCountsAsMissing) {
    const without_root_rights limited;
    std::filesystem::permissions("world", std::filesystem::perms::none);
    EXPECT_EQ(dir_exists("world"), 0);
}

TEST_F(DirExists, APathOfMoreThan511CharactersIsNeverTakenInCutForm) {
    const std::string path = make_deep_directory(scratch.path(), 511);
    EXPECT_EQ(dir_exists(path.c_str()), 1);
    EXPECT_EQ(dir_exists((path + "d").c_str()), 0);
    EXPECT_EQ(dir_exists((path + "dd").c_str()), 0);
}

TEST_F(FileExists, AFileThatMayNotBeReadCountsAsMissing) {
    const without_root_rights limited;
    std::filesystem::permissions("file", std::filesystem::perms::none);
    EXPECT_EQ(file_exists("file"), 0);
}

TEST_F(FileExists, APipeIsNeverWaitedFor) {
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(file_exists("pipe"), 1);
}
