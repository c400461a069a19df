#include "templates/stamp.h"

#include "support/console_capture.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "support/tree.h"
#include "templates.h"
#include "templates/checksum.h"
#include "unit/process_limit.h"
#include "unit/rights.h"

#include <algorithm>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;

using namespace std::string_literals;
using testing::ElementsAre;
using testing::Pair;

constexpr std::size_t piece = 511;
const std::string stamped_header = "||header: modified=false tpl_set=kst_s2 tpl_version=2.0a||\n";
const std::string abc_stamped = "abc\n\n||checksum=689||\n"; // of "abc\n"
constexpr uid_t somebody = 65534;

constexpr auto headers = tpl_add_header;
constexpr auto checksums = add_checksum;

// What a mode makes of a.tpl; of a new header line, what follows it.
struct stamped_file {
    const char *name;
    int (*mode)();
    std::string file;
    std::string stamped;
};

// A run that leaves every template as it is. `preparation` is commands of the shell.
struct failed_stamp {
    const char *name;
    int (*mode)();
    const char *preparation;
    const char *marks;           // the dots and crosses
    const char *log;             // "@" is the directory
    bool is_by_somebody = false; // who has no rights
    rlim_t largest_file = RLIM_INFINITY;
};

class StampTest : public scratch_test {
  protected:
    StampTest() {
        std::filesystem::create_directory("tpl");
        std::filesystem::permissions(".", std::filesystem::perms::all);
    }

    [[nodiscard]] std::string templates() const { return scratch.path("tpl"); }

    static void add(const std::string &name, std::string_view content) {
        add_file("tpl/" + name, content);
    }

    static std::string content(const std::string &name) { return read_file("tpl/" + name); }

    // Runs a mode on the directory tpl and keeps what the console showed behind the questions.
    int stamp(int (*mode)()) {
        const bool is_headers = mode == headers;
        const std::string questions =
            "\nDirectory for templates [./tpl]? "s +
            (is_headers ? "\nNew templates set[kst_s2]? \nNew templates version[2.0a]? " : "");
        int result = -1;
        console =
            console_of(templates() + (is_headers ? "\n\n\n" : "\n"), [&] { result = mode(); });
        EXPECT_EQ(console.substr(0, questions.size()), questions);
        console.erase(0, std::min(questions.size(), console.size()));
        return result;
    }

    static std::string update(int (*mode)(), const std::string &marks) {
        return (mode == headers ? "\nUpdating headers" : "\nUpdating checksums") + marks +
               "\nUpdate complete.\n";
    }

    // What becomes of a.tpl.
    std::string stamped(int (*mode)(), const std::string &file) {
        add("a.tpl", file);
        EXPECT_EQ(stamp(mode), 1);
        EXPECT_EQ(console, update(mode, "."));
        return content("a.tpl");
    }

    void check(const stamped_file &row) {
        EXPECT_EQ(stamped(row.mode, row.file),
                  (row.mode == headers ? stamped_header : "") + row.stamped);
    }

    void check(const failed_stamp &row) {
        shell(row.preparation);
        const std::string text = content("a.tpl");
        const std::string before = tree_of("tpl");
        {
            const process_limit limit(RLIMIT_FSIZE, row.largest_file);
            const user_for_a_while user(row.is_by_somebody ? somebody : ::geteuid());
            EXPECT_EQ(stamp(row.mode), 1);
        }
        EXPECT_EQ(console, update(row.mode, row.marks));
        EXPECT_EQ(log(), row.log);
        EXPECT_EQ(tree_of("tpl"), before);
        EXPECT_TRUE(content("a.tpl") == text);
    }

    [[nodiscard]] std::string log() const { return replaced(log_.text(), templates(), "@"); }

    std::string console;

  private:
    test_log log_{scratch.path()};
};

// Whole files, before and after.

const std::string mid_line = "<!-- ||header: a=b\n|||header:\n ||header:\n||Header:\n||heade\n";
const std::string long_header = "||header:" + std::string(piece - 9, 'a');
const std::string two_pieces(2 * piece, 'a');
const std::string old_sums = "||checksum=5||\n||checksu\n||checksums\nabc\n||checks\n";
const std::string sum_of_old_sums = std::to_string(expected_checksum(old_sums));

const std::vector<stamped_file> stamped_files = {
    {"StampTest.TheHeaderStandsFirst", headers, "<html>\n</html>\n", "<html>\n</html>\n"},
    {"StampTest.OlderHeadersAreDroppedWhereverTheyStand", headers,
     "||header: modified=true tpl_set=x tpl_version=1||\n<html>\n||header:\n||header:\r\n</html>\n"
     "||header: no line end",
     "<html>\n</html>\n"},
    {"StampTest.AHeaderInMidLineStays", headers, mid_line, mid_line},
    {"StampTest.StampingHeadersAgainChangesNothing", headers, stamped_header + "<html>\r\n",
     "<html>\r\n"},
    {"StampTest.OnlyTheFirstPieceOfALongHeaderIsDropped", headers, long_header + "rest\nnext\n",
     "rest\nnext\n"},
    {"StampTest.TheFirstPieceOfALongHeaderLeavesItsLineFeed", headers, long_header + "\nnext\n",
     "\nnext\n"},
    {"StampTest.APieceThatBeginsLikeAHeaderIsDroppedInMidLine", headers,
     two_pieces + "||header: x\nnext\n", two_pieces + "next\n"},
    {"StampTest.APieceThatHoldsAHeaderBehindItsBeginningStays", headers,
     "b" + two_pieces + "||header: x\nnext\n", "b" + two_pieces + "||header: x\nnext\n"},
    {"StampTest.TheChecksumLineStandsLastBehindAnEmptyLine", checksums, "abc\n", abc_stamped},
    {"StampTest.TheRestBehindTheLastLineFeedEndsBeforeTheChecksumLine", checksums, "abc\nabc",
     "abc\nabc\n||checksum=1374||\n"},
    {"StampTest.AnEmptyFileGetsAChecksumOfNothing", checksums, "", "\n||checksum=0||\n"},
    {"StampTest.OlderChecksumLinesAreDroppedByTheirFirstNineCharacters", checksums, old_sums,
     "abc\n||checks\n\n||checksum=" + sum_of_old_sums + "||\n"},
    {"StampTest.AChecksumInMidLineStaysAndIsNotSummed", checksums, "A ||checksum=5||B\n",
     "A ||checksum=5||B\n\n||checksum=66||\n"},
    {"StampTest.WindowsLinesStayAsTheyAre", checksums, "a\r\nb\r\n",
     "a\r\nb\r\n\n||checksum=195||\n"},
    {"StampTest.NulBytesStay", headers, "\0||header:\n||header:\0x\n\0"s, "\0||header:\n\0"s},
    {"StampTest.NulBytesAreSummed", checksums, "a\0b\n\0||checksum=1||\nc"s,
     expected_stamped("a\0b\n\0||checksum=1||\nc"s)},
};

// A template is its old self or its stamped self.

const std::vector<failed_stamp> failed_stamps = {
    {"StampTest.AScratchNameThatIsADirectoryStopsEveryStamp", headers,
     "echo abc >tpl/a.tpl; mkdir tpl/temp.tpl", "xx",
     "Error: Can't open @/temp.tpl, Is a directory\n"
     "Error: Can't open @/temp.tpl, Is a directory\n"},
    {"StampTest.ADirectoryOfATemplatesNameShowsAnX", headers, "mkdir tpl/d.tpl", "x",
     "Error: Can't open @/d.tpl, Is a directory\n"},
    {"StampTest.APipeOfATemplatesNameShowsAnXAndStays", headers, "mkfifo tpl/p.tpl", "x",
     "Error: Can't open @/p.tpl, Invalid argument\n"},
    {"StampTest.AnUnreadableTemplateShowsAnX", checksums,
     "echo abc >tpl/a.tpl; chmod 0 tpl/a.tpl; chmod 777 tpl", "x",
     "Error: can't open @/a.tpl, Permission denied\n"
     "Error: Can't open @/a.tpl, Permission denied\n",
     true},
    {"StampTest.AnUnwritableDirectoryKeepsItsTemplates", headers,
     "echo abc >tpl/a.tpl; chmod 555 tpl", "x", "Error: Can't open @/temp.tpl, Permission denied\n",
     true},
    {"StampTest.AScratchFileThatMustStayIsNotWritten", headers,
     "echo abc >tpl/a.tpl; echo torn >tpl/temp.tpl; chmod 666 tpl/temp.tpl; chmod 555 tpl", "xx",
     "Error: Can't open @/temp.tpl, Permission denied\n"
     "Error: Can't open @/temp.tpl, Permission denied\n",
     true},
    {"StampTest.AWriteThatFailsKeepsTheTemplate", headers,
     "head -c 100000 /dev/zero >tpl/a.tpl; chmod 777 tpl", "x",
     "Error: Can't write @/temp.tpl, File too large\n"
     "Error: can't remove @/temp.tpl, File too large\n",
     false, 50'000},
    {"StampTest.AChecksumLineThatCannotBeWrittenKeepsTheTemplate", checksums,
     "head -c 5000 /dev/zero >tpl/a.tpl; chmod 777 tpl", "x",
     "Error: Can't write @/temp.tpl, File too large\n"
     "Error: can't remove @/temp.tpl, File too large\n",
     false, 5005},
    // It opens like a plain file and cannot be read at its start.
    {"StampTest.AReadThatFailsKeepsTheTemplate", headers,
     "ln -s /proc/self/mem tpl/a.tpl; chmod 777 tpl", "x",
     "Error: Can't open @/a.tpl, Input/output error\n"
     "Error: can't remove @/temp.tpl, Input/output error\n"},
};

const int registered =
    register_rows<StampTest>(stamped_files) + register_rows<StampTest>(failed_stamps);

TEST_F(StampTest, TheSuggestedDirectoryHasNoRootAndIsRefused) {
    add("a.tpl", "abc\n");
    EXPECT_EQ(console_of("\n" + templates() + "\n", [] { checksums(); }),
              "\nDirectory for templates [./tpl]? "
              "No root given! please enter a directory from the root\n"
              "\nDirectory for templates [./tpl]? \nUpdating checksums.\nUpdate complete.\n");
}

TEST_F(StampTest, ADirectoryWithoutTemplatesHasNothingToStamp) {
    add("readme.txt", "text\n");
    add("a.TPL", "text\n");
    EXPECT_EQ(stamp(headers), 0);
    EXPECT_EQ(console, "No files found in " + templates() + "\n");
    EXPECT_EQ(stamp(checksums), 0);
    EXPECT_EQ(console, "No files found in " + templates() + "\n");
    EXPECT_EQ(content("readme.txt"), "text\n");
    EXPECT_EQ(content("a.TPL"), "text\n");
}

TEST_F(StampTest, AMissingDirectoryIsNotMade) {
    std::filesystem::remove("tpl");
    stream_capture errors(stderr);
    EXPECT_EQ(stamp(checksums), 0);
    EXPECT_EQ(errors.finish(), "Could not read directory file: No such file or directory\n");
    EXPECT_EQ(console, templates() + " does not exist... gxsetup will create it\n\n" +
                           "No files found in " + templates() + "\n");
    EXPECT_FALSE(is_there("tpl"));
}

TEST_F(StampTest, OneDotForEachTemplate) {
    shell("cd tpl; touch a.tpl b.tpl c.tpl; echo text >other.txt");
    EXPECT_EQ(stamp(checksums), 1);
    EXPECT_EQ(console, update(checksums, "..."));
    EXPECT_EQ(content("other.txt"), "text\n");
    EXPECT_EQ(log(), "");
}

TEST_F(StampTest, PercentSignsInTheAnswersAreText) {
    add("a.tpl", "");
    console_of(templates() + "\n%s%n\n100%\n", [] { tpl_add_header(); });
    EXPECT_EQ(content("a.tpl"), "||header: modified=false tpl_set=%s%n tpl_version=100%||\n");
}

TEST_F(StampTest, FilesOfEveryEnding) {
    for (const char *file : {"", "\n", "one line", "one line\n", "a\r\nb\r\n", "a\r\nb", "\r",
                             "\n\n\n", "last\n||header"}) {
        EXPECT_EQ(stamped(headers, file), std::string(stamped_header) + file);
    }
}

TEST_F(StampTest, EachFurtherStampingAddsAnEmptyLine) {
    const std::string once = stamped(checksums, "abc\n");
    const std::string twice = stamped(checksums, once);
    EXPECT_EQ(twice, "abc\n\n\n||checksum=689||\n");
    EXPECT_EQ(stamped(checksums, twice), "abc\n\n\n\n||checksum=689||\n");
    EXPECT_EQ(do_checksum("tpl/a.tpl", 1), 0);
}

TEST_F(StampTest, HeaderThenChecksumAgrees) {
    stamped(headers, "<html>\n</html>\n");
    stamp(checksums);
    EXPECT_EQ(content("a.tpl").substr(0, 60), std::string(stamped_header) + "<");
    EXPECT_EQ(do_checksum("tpl/a.tpl", 1), 0);
    stamped(headers, content("a.tpl"));
    stamp(checksums);
    EXPECT_EQ(do_checksum("tpl/a.tpl", 1), 0);
}

TEST_F(StampTest, FilesOfRandomPieces) {
    std::mt19937 random(3); // NOLINT: the same files each time
    for (int round = 0; round < 120; round++) {
        const std::string file =
            random_file(random, round % 8 == 0 ? 200'000 : 4'000, round % 4 == 0 ? 700 : 2);
        SCOPED_TRACE(round);
        EXPECT_TRUE(stamped(checksums, file) == expected_stamped(file));
        EXPECT_TRUE(stamped(headers, file) == stamped_header + without_pieces(file, "||header:"));
    }
}

TEST_F(StampTest, TheScratchFileIsGoneAtTheEnd) {
    stamped(headers, "<html>\n");
    stamped(checksums, "<html>\n");
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
    EXPECT_EQ(log(), "");
}

TEST_F(StampTest, AScratchFileLeftBehindIsNoTemplate) {
    add("a.tpl", "abc\n");
    add("temp.tpl", "torn");
    EXPECT_EQ(stamp(checksums), 1);
    std::string shown = console;
    std::sort(shown.begin() + 19, shown.begin() + 21);
    EXPECT_EQ(shown, "\nUpdating checksums.x\nUpdate complete.\n");
    EXPECT_EQ(content("a.tpl"), abc_stamped);
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
    EXPECT_EQ(log(), "Error: can't open @/temp.tpl, No such file or directory\n"
                     "Error: Can't open @/temp.tpl, No such file or directory\n");
}

TEST_F(StampTest, AScratchNameThatIsALinkLeadsNowhere) {
    write_file("precious", "kept\n");
    std::filesystem::create_symlink("../precious", "tpl/temp.tpl");
    add("a.tpl", "abc\n");
    stamp(checksums);
    EXPECT_EQ(read_file("precious"), "kept\n");
    EXPECT_EQ(content("a.tpl"), abc_stamped);
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
}

TEST_F(StampTest, AStampedTemplateKeepsItsMode) {
    for (const std::string mode : {"0640", "0400", "0755"}) {
        shell("rm -f tpl/a.tpl; echo abc >tpl/a.tpl; chmod " + mode + " tpl/a.tpl");
        stamp(checksums);
        EXPECT_EQ(tree_of("tpl"), mode + " tpl/a.tpl\n");
        EXPECT_EQ(content("a.tpl"), abc_stamped);
    }
}

TEST_F(StampTest, AStampedTemplateKeepsItsOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root gives files away";
    }
    add("a.tpl", "abc\n");
    ASSERT_EQ(::chown("tpl/a.tpl", 12345, 23456), 0);
    stamp(checksums);
    EXPECT_EQ(owner_of("tpl/a.tpl"), "12345:23456");
}

TEST_F(StampTest, ALinkIsReplacedAndWhatItLeadsToStays) {
    write_file("shared.tpl", "abc\n");
    std::filesystem::create_symlink("../shared.tpl", "tpl/a.tpl");
    stamp(checksums);
    EXPECT_EQ(read_file("shared.tpl"), "abc\n");
    EXPECT_FALSE(std::filesystem::is_symlink("tpl/a.tpl"));
    EXPECT_EQ(content("a.tpl"), abc_stamped);
}

TEST_F(StampTest, OfOneThousandAndOneTemplatesOneIsLeft) {
    for (int number = 0; number < 1001; number++) {
        add(std::to_string(number) + ".tpl", "abc\n");
    }
    EXPECT_EQ(stamp(checksums), 1);
    EXPECT_EQ(console, "Error: MAXWILD exceeded\n" + update(checksums, std::string(1000, '.')));
    std::map<std::string, int> contents;
    for (int number = 0; number < 1001; number++) {
        contents[content(std::to_string(number) + ".tpl")]++;
    }
    EXPECT_THAT(contents, ElementsAre(Pair("abc\n", 1), Pair(abc_stamped, 1000)));
    EXPECT_EQ(log(), "Error: MAXWILD exceeded\n");
}

TEST_F(StampTest, ATemplateOfSixtyFourMegabytes) {
    for (const std::size_t line : {std::size_t{80}, std::size_t{1} << 20U}) {
        const large_template file = make_large_template(line);
        const std::string sum = std::to_string(static_cast<int>(file.sum));
        EXPECT_TRUE(stamped(checksums, file.content) ==
                    file.content + "\n||checksum=" + sum + "||\n");
    }
}

TEST_F(StampTest, ATemplateThatCannotBeReplacedKeepsItsContent) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root makes another user's file";
    }
    add("a.tpl", "abc\n");
    ::chmod("tpl", 01777);
    {
        const user_for_a_while user(somebody);
        EXPECT_EQ(stamp(headers), 1);
    }
    EXPECT_EQ(console, update(headers, "x"));
    EXPECT_EQ(content("a.tpl"), "abc\n");
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
    EXPECT_EQ(log(), "Error: can't remove @/a.tpl, Operation not permitted\n"
                     "Error: can't remove @/temp.tpl, Operation not permitted\n");
}

// The child is ended by the system in the middle of a write.
TEST_F(StampTest, AnInterruptedRunKeepsTheTemplateAndTheNextOneStampsIt) {
    const std::string file(300'000, 'a');
    add("a.tpl", file);
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit{150'000, 150'000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const rlimit no_core{0, 0};
        ::setrlimit(RLIMIT_CORE, &no_core);
        feed_console(templates() + "\n");
        const stream_capture silent(stdout);
        add_checksum();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(content("a.tpl") == file);
    EXPECT_TRUE(is_there("tpl/temp.tpl"));
    stamp(checksums);
    EXPECT_TRUE(content("a.tpl") == expected_stamped(file));
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
}

TEST_F(StampTest, OneFailureDoesNotStopTheRest) {
    shell("cd tpl; for name in a b c d; do echo abc >$name.tpl; done; mkdir e.tpl");
    EXPECT_EQ(stamp(checksums), 1);
    EXPECT_EQ(std::count(console.begin(), console.end(), 'x'), 1);
    for (const char *name : {"a.tpl", "b.tpl", "c.tpl", "d.tpl"}) {
        EXPECT_EQ(content(name), abc_stamped);
    }
}

TEST_F(StampTest, APathThatDoesNotFitIsNotActedOn) {
    // The directory's path has 505 characters: neither a.tpl nor temp.tpl fits behind it.
    const std::string deep = make_deep_directory(scratch.path("tpl"), 505);
    write_file(deep + "/ab.tpl", "abc\n");
    write_file(deep + "/temp.t", "kept\n");
    const std::string transcript = console_of(deep + "\n\n\n", [] { tpl_add_header(); });
    EXPECT_EQ(transcript.substr(transcript.find("\nUpdating")),
              "\nUpdating headersx\nUpdate complete.\n");
    EXPECT_EQ(read_file(deep + "/ab.tpl"), "abc\n");
    EXPECT_EQ(read_file(deep + "/temp.t"), "kept\n");
    close_log();
    EXPECT_THAT(read_file("gxsetup.log"), HasSubstr("/ab.tp, File name too long"));
}

} // namespace
