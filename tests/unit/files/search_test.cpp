#include "files/search.h"

#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "unit/failing_memory.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Whether the name is matched, written "NAME ~ PATTERN" where a test fails.
testing::AssertionResult matches(const char *name, const char *pattern) {
    const int result = domatch(name, pattern);
    return (result == 1 ? testing::AssertionSuccess() : testing::AssertionFailure())
           << name << " ~ " << pattern << " gives " << result;
}

class Search : public scratch_test {
  protected:
    Search() {
        set_loglvl(LOG_DEBUG);
        std::filesystem::create_directory("world");
    }

    [[nodiscard]] std::string log() const { return log_.text(); }

    std::set<std::string> found(int count) const {
        std::set<std::string> names_found;
        for (int name = 0; name < count; name++) {
            names_found.insert((*names)[static_cast<std::size_t>(name)].get());
        }
        return names_found;
    }

    void make_files(int count) const {
        for (int file = 0; file < count; file++) {
            write_file(scratch.path("world/" + std::to_string(file) + ".tpl"), "");
        }
    }

    std::unique_ptr<found_names> names = std::make_unique<found_names>();

  private:
    test_log log_{scratch.path("logs")};
};

using WildFind = Search;
using WildFind2 = Search;
using DirExists = Search;
using FileExists = Search;

using string_set = std::set<std::string>;

} // namespace

// --- Matching ---

TEST(Domatch, OrdinaryCharactersMatchThemselvesCaseSensitively) {
    EXPECT_TRUE(matches("index.tpl", "index.tpl"));
    EXPECT_FALSE(matches("index.tpl", "index.TPL"));
    EXPECT_FALSE(matches("index.tpl", "index.tp"));
    EXPECT_FALSE(matches("index.tp", "index.tpl"));
    EXPECT_TRUE(matches("", ""));
    EXPECT_FALSE(matches("a", ""));
    EXPECT_FALSE(matches("", "a"));
}

TEST(Domatch, AStarMatchesAnyRun) {
    EXPECT_TRUE(matches("index.tpl", "*.tpl"));
    EXPECT_TRUE(matches(".tpl", "*.tpl"));
    EXPECT_FALSE(matches("index.TPL", "*.tpl"));
    EXPECT_TRUE(matches("index.tpl.tpl", "*.tpl"));
    EXPECT_TRUE(matches("index.tpl", "in*"));
    EXPECT_TRUE(matches("in", "in*"));
    EXPECT_TRUE(matches("abcabd", "*ab?"));
    EXPECT_TRUE(matches("a1b2c", "a*b*c"));
    EXPECT_FALSE(matches("a1b2", "a*b*c"));
    EXPECT_TRUE(matches("anything", "*"));
    EXPECT_TRUE(matches("", "*"));
    // What stands before the star and what stands behind it do not overlap.
    EXPECT_FALSE(matches("aabc", "aab*abc"));
}

TEST(MatchWild, AStarAloneMatchesAnEmptyNameToo) {
    EXPECT_EQ(match_wild("*", ""), 1);
    EXPECT_EQ(match_wild("?", ""), 0);
}

TEST(Domatch, SeveralStarsCountAsOne) {
    EXPECT_TRUE(matches("index.tpl", "***.tpl"));
    EXPECT_TRUE(matches("", "***"));
    EXPECT_TRUE(matches("a", "a**"));
}

TEST(Domatch, AQuestionMarkMatchesExactlyOneCharacter) {
    EXPECT_TRUE(matches("ab", "a?"));
    EXPECT_FALSE(matches("a", "a?"));
    EXPECT_FALSE(matches("", "?"));
    EXPECT_FALSE(matches("", "*?"));
    EXPECT_FALSE(matches("abc", "a?"));
}

TEST(Domatch, ASetMatchesItsMembersAndRanges) {
    EXPECT_TRUE(matches("bx", "[a-c]x"));
    EXPECT_TRUE(matches("ax", "[a-c]x"));
    EXPECT_TRUE(matches("cx", "[a-c]x"));
    EXPECT_FALSE(matches("dx", "[a-c]x"));
    EXPECT_TRUE(matches("z", "[xyz]"));
    EXPECT_FALSE(matches("", "[xyz]"));
    EXPECT_TRUE(matches("\xe4", "[\x80-\xff]"));
    EXPECT_FALSE(matches("b", "[c-a]"));
}

TEST(Domatch, ACircumflexNegatesTheSet) {
    EXPECT_TRUE(matches("dx", "[^a-c]x"));
    EXPECT_FALSE(matches("bx", "[^a-c]x"));
    EXPECT_FALSE(matches("", "[^a]"));
    EXPECT_TRUE(matches("^", "[a^]"));
}

TEST(Domatch, ABracketOrHyphenInFirstPlaceIsAMember) {
    EXPECT_TRUE(matches("]", "[]]"));
    EXPECT_TRUE(matches("a", "[]a]"));
    EXPECT_TRUE(matches("-", "[-a]"));
    EXPECT_TRUE(matches("a", "[-a]"));
    EXPECT_FALSE(matches("b", "[-a]"));
    EXPECT_FALSE(matches("b", "[-z]"));
    EXPECT_FALSE(matches("]", "[^]]"));
    EXPECT_TRUE(matches("a", "[^]]"));
    EXPECT_FALSE(matches("-", "[^-a]"));
    EXPECT_TRUE(matches("b", "[^-a]"));
}

TEST(Domatch, AHyphenBeforeTheClosingBracketIsAMember) {
    EXPECT_TRUE(matches("-", "[a-]"));
    EXPECT_TRUE(matches("a", "[a-]"));
    EXPECT_FALSE(matches("b", "[a-]"));
    EXPECT_TRUE(matches("-]", "[a-]]"));
}

TEST(Domatch, AHyphenBehindARangeJoinsItsEndToTheNextCharacter) {
    EXPECT_TRUE(matches("d", "[a-c-e]"));
    EXPECT_FALSE(matches("-", "[a-c-e]"));
    EXPECT_TRUE(matches("-", "[a-c-]"));
}

TEST(Domatch, ABackslashTakesTheNextCharacterLiterally) {
    EXPECT_TRUE(matches("*", "\\*"));
    EXPECT_FALSE(matches("a", "\\*"));
    EXPECT_FALSE(matches("**", "\\*"));
    EXPECT_TRUE(matches("\\", "\\\\"));
    EXPECT_TRUE(matches("[a]", "\\[a]"));
    EXPECT_TRUE(matches("x?", "*\\?"));
}

TEST(Domatch, AnUnclosedSetOrALoneBackslashMatchesNothing) {
    for (const char *pattern : {"[", "[a", "[^", "[]", "[a-", "*[a", "\\", "a\\", "*\\"}) {
        for (const char *name : {"", "a", "[", "[a", "\\", "a\\"}) {
            EXPECT_FALSE(matches(name, pattern));
        }
    }
}

TEST(Domatch, ManyStarsEndSoon) {
    const std::string name(5000, 'a');
    std::string pattern;
    for (int star = 0; star < 200; star++) {
        pattern += "*a";
    }
    EXPECT_FALSE(matches(name.c_str(), (pattern + "b").c_str()));
    EXPECT_TRUE(matches(name.c_str(), pattern.c_str()));
}

TEST(MatchWild, AStarAloneMatchesEveryNameEvenAnEmptyOne) {
    EXPECT_EQ(match_wild("*", ""), 1);
    EXPECT_EQ(match_wild("*", "index.tpl"), 1);
}

TEST(MatchWild, TakesThePatternFirst) {
    EXPECT_EQ(match_wild("*.tpl", "index.tpl"), 1);
    EXPECT_EQ(match_wild("index.tpl", "*.tpl"), 0);
}

TEST(MatchList, AnyElementMayMatchIgnoringCase) {
    EXPECT_EQ(match_list("*.gif,*.jpg,*.wav", "logo.jpg"), 1);
    EXPECT_EQ(match_list("*.gif,*.jpg,*.wav", "LOGO.Gif"), 1);
    EXPECT_EQ(match_list("*.TPL", "index.tpl"), 1);
    EXPECT_EQ(match_list("*.gif,*.jpg,*.wav", "index.tpl"), 0);
}

TEST(MatchList, NullGivesZero) {
    EXPECT_EQ(match_list(nullptr, "a"), 0);
    EXPECT_EQ(match_list("*", nullptr), 0);
}

TEST(MatchList, AnEmptyListMatchesNothing) {
    EXPECT_EQ(match_list("", "a"), 0);
    EXPECT_EQ(match_list("", ""), 0);
}

TEST(MatchList, ATrailingCommaIsAsIfAbsent) {
    EXPECT_EQ(match_list("*.gif,", "logo.gif"), 1);
    EXPECT_EQ(match_list("*.gif,", ""), 0);
    EXPECT_EQ(match_list(",", ""), 1); // an empty element before the comma
}

TEST(MatchList, TheLastElementThatMatchesDecides) {
    EXPECT_EQ(match_list("*.gif,!logo*.gif", "logo1.gif"), 0);
    EXPECT_EQ(match_list("*.gif,!logo*.gif", "back.gif"), 1);
    EXPECT_EQ(match_list("!logo*.gif,*.gif", "logo1.gif"), 1);
    EXPECT_EQ(match_list("*.gif,!*.GIF,logo*", "logo1.gif"), 1);
    EXPECT_EQ(match_list("!*", "a"), 0);
}

TEST(MatchList, LeadingBlanksAndTrailingLineEndsOfAnElementAreDropped) {
    EXPECT_EQ(match_list(" \t*.gif,\t *.jpg\r\n", "a.jpg"), 1);
    EXPECT_EQ(match_list("*.gif\n,*.jpg", "a.gif"), 1);
    EXPECT_EQ(match_list("a , b", "a "), 1); // trailing blanks are kept
    EXPECT_EQ(match_list("a , b", "a"), 0);
}

TEST(MatchList, AHundredCharactersOfAnElementCount) {
    const std::string hundred(100, 'a');
    EXPECT_EQ(match_list((hundred + "bcd,x").c_str(), hundred.c_str()), 1);
    EXPECT_EQ(match_list((hundred + "bcd,x").c_str(), (hundred + "bcd").c_str()), 0);
    EXPECT_EQ(match_list((" " + hundred).c_str(), hundred.c_str()), 1);
}

TEST(MatchList, FiveHundredAndElevenCharactersOfTheNameCount) {
    EXPECT_EQ(match_list("*b", (std::string(510, 'a') + "bc").c_str()), 1);
    EXPECT_EQ(match_list("*c", (std::string(511, 'a') + "c").c_str()), 0);
}

// --- Directory search ---

TEST_F(WildFind, GivesTheMatchingNamesOfTheCurrentDirectory) {
    std::filesystem::current_path("world");
    for (const char *name : {"a.tpl", "b.tpl", "c.TPL", "d.gif"}) {
        write_file(name, "");
    }
    std::filesystem::create_directory("set.tpl");
    std::filesystem::create_symlink("nowhere", "link.tpl");
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
    std::filesystem::current_path("..");
}

TEST_F(WildFind, ADirectoryThatCannotBeReadIsAnErrorInTheLog) {
    (*names)[0].reset(::strdup("untouched"));
    // No descriptor is left for the directory.
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const int free_descriptor = ::dup(STDIN_FILENO);
    ::close(free_descriptor);
    const rlimit none = {static_cast<rlim_t>(free_descriptor), before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    const int count = wild_find("*", *names);
    ::setrlimit(RLIMIT_NOFILE, &before);
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

TEST_F(DirExists, WithOrWithoutATrailingSeparator) {
    EXPECT_EQ(dir_exists("/tmp"), 1);
    EXPECT_EQ(dir_exists("/tmp/"), 1);
    EXPECT_EQ(dir_exists("world"), 1);
    EXPECT_EQ(dir_exists(scratch.path("missing").c_str()), 0);
}

TEST_F(DirExists, TheRootAloneAndNoPathAreZero) {
    EXPECT_EQ(dir_exists("/"), 0);
    EXPECT_EQ(dir_exists(""), 0);
    EXPECT_EQ(dir_exists(nullptr), 0);
}

TEST_F(DirExists, AFileIsNoDirectory) {
    write_file("file", "");
    EXPECT_EQ(dir_exists("file"), 0);
    EXPECT_EQ(dir_exists("file/"), 0);
}

TEST_F(DirExists, ADirectoryThatMayNotBeReadCountsAsMissing) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    std::filesystem::permissions("world", std::filesystem::perms::none);
    EXPECT_EQ(dir_exists("world"), 0);
}

TEST_F(DirExists, APathOfMoreThan511CharactersIsNeverTakenInCutForm) {
    std::string path = scratch.path();
    while (path.size() < 511) {
        path += "/" + std::string(std::min<std::size_t>(100, 511 - path.size() - 1), 'd');
        if (path.size() == 510) {
            path += "d";
        }
    }
    std::filesystem::create_directories(path);
    EXPECT_EQ(dir_exists(path.c_str()), 1);
    EXPECT_EQ(dir_exists((path + "d").c_str()), 0);
    EXPECT_EQ(dir_exists((path + "dd").c_str()), 0);
}

TEST_F(FileExists, IsOneForWhatCanBeOpenedToBeRead) {
    write_file("file", "");
    EXPECT_EQ(file_exists("file"), 1);
    EXPECT_EQ(file_exists("world"), 1);
    EXPECT_EQ(file_exists("missing"), 0);
    EXPECT_EQ(file_exists(""), 0);
}

TEST_F(FileExists, AFileThatMayNotBeReadCountsAsMissing) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    write_file("file", "");
    std::filesystem::permissions("file", std::filesystem::perms::none);
    EXPECT_EQ(file_exists("file"), 0);
}

TEST_F(FileExists, APipeIsNeverWaitedFor) {
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(file_exists("pipe"), 1);
}
