#include "templates/stamp.h"

#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "templates.h"
#include "templates/checksum.h"

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t piece = 511;
constexpr const char *stamped_header =
    "||header: modified=false tpl_set=kst_s2 tpl_version=2.0a||\n";
constexpr uid_t somebody = 65534;

class StampTest : public scratch_test {
  protected:
    StampTest() { std::filesystem::create_directory("tpl"); }

    [[nodiscard]] std::string templates() const { return scratch.path("tpl"); }

    static void add(const std::string &name, std::string_view content) {
        write_file("tpl/" + name, content);
    }

    static std::string content(const std::string &name) { return read_file("tpl/" + name); }

    // Run the modes on the directory tpl and keep what the console showed behind the questions.
    int stamp_headers() {
        return run(tpl_add_header, templates() + "\n\n\n",
                   "\nDirectory for templates [./tpl]? \nNew templates set[kst_s2]? "
                   "\nNew templates version[2.0a]? ");
    }

    int stamp_checksums() {
        return run(add_checksum, templates() + "\n", "\nDirectory for templates [./tpl]? ");
    }

    std::string headed(const std::string &file) {
        add("a.tpl", file);
        stamp_headers();
        EXPECT_EQ(console, "\nUpdating headers.\nUpdate complete.\n");
        return content("a.tpl");
    }

    std::string summed(const std::string &file) {
        add("a.tpl", file);
        stamp_checksums();
        EXPECT_EQ(console, "\nUpdating checksums.\nUpdate complete.\n");
        return content("a.tpl");
    }

    [[nodiscard]] std::string log() const { return log_.text(); }

    std::string console;

  private:
    test_log log_{scratch.path()};

    int run(int (*mode)(), const std::string &answers, const std::string &questions) {
        int result = -1;
        console = console_of(answers, [&] { result = mode(); });
        EXPECT_EQ(console.substr(0, questions.size()), questions);
        console.erase(0, std::min(questions.size(), console.size()));
        return result;
    }
};

// A user without rights for a while, where the test runs as root.
class without_rights {
  public:
    without_rights() : before_(::geteuid()) {
        if (before_ == 0) {
            EXPECT_EQ(::seteuid(somebody), 0);
        }
    }
    ~without_rights() { EXPECT_EQ(::seteuid(before_), 0); }
    without_rights(const without_rights &) = delete;
    without_rights &operator=(const without_rights &) = delete;

  private:
    uid_t before_;
};

// Files of this process cannot grow beyond a size for a while: the write fails as on a full disk.
class small_files {
  public:
    explicit small_files(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{size, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~small_files() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    small_files(const small_files &) = delete;
    small_files &operator=(const small_files &) = delete;

  private:
    rlimit before_{};
    void (*handler_)(int);
};

// The dialogues.

TEST_F(StampTest, HeadersAskForDirectorySetAndVersion) {
    add("a.tpl", "<html>\n");
    int result = 0;
    const std::string transcript =
        console_of(templates() + "\nplv_s7\n3.1c\n", [&] { result = tpl_add_header(); });
    EXPECT_EQ(transcript, "\nDirectory for templates [./tpl]? \nNew templates set[kst_s2]? "
                          "\nNew templates version[2.0a]? \nUpdating headers.\n"
                          "Update complete.\n");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(content("a.tpl"), "||header: modified=false tpl_set=plv_s7 tpl_version=3.1c||\n"
                                "<html>\n");
}

TEST_F(StampTest, ChecksumsAskForTheDirectoryAlone) {
    add("a.tpl", "abc\n");
    int result = 0;
    const std::string transcript = console_of(templates() + "\n", [&] { result = add_checksum(); });
    EXPECT_EQ(transcript, "\nDirectory for templates [./tpl]? \nUpdating checksums.\n"
                          "Update complete.\n");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(content("a.tpl"), "abc\n\n||checksum=689||\n");
}

TEST_F(StampTest, TheSuggestedDirectoryHasNoRootAndIsRefused) {
    add("a.tpl", "abc\n");
    const std::string transcript = console_of("\n" + templates() + "\n", [] { add_checksum(); });
    EXPECT_EQ(transcript, "\nDirectory for templates [./tpl]? "
                          "No root given! please enter a directory from the root\n"
                          "\nDirectory for templates [./tpl]? \nUpdating checksums.\n"
                          "Update complete.\n");
}

TEST_F(StampTest, ADirectoryWithoutTemplatesHasNothingToStamp) {
    add("readme.txt", "text\n");
    add("a.TPL", "text\n");
    EXPECT_EQ(stamp_headers(), 0);
    EXPECT_EQ(console, "No files found in " + templates() + "\n");
    EXPECT_EQ(stamp_checksums(), 0);
    EXPECT_EQ(console, "No files found in " + templates() + "\n");
    EXPECT_EQ(content("readme.txt"), "text\n");
    EXPECT_EQ(content("a.TPL"), "text\n");
}

TEST_F(StampTest, AMissingDirectoryIsNotMade) {
    std::filesystem::remove("tpl");
    stream_capture errors(stderr);
    EXPECT_EQ(stamp_checksums(), 0);
    EXPECT_EQ(errors.finish(), "Could not read directory file: No such file or directory\n");
    EXPECT_EQ(console, templates() + " does not exist... gxsetup will create it\n\n" +
                           "No files found in " + templates() + "\n");
    EXPECT_FALSE(is_there("tpl"));
}

TEST_F(StampTest, OneDotForEachTemplate) {
    for (const char *name : {"a.tpl", "b.tpl", "c.tpl"}) {
        add(name, "<html>\n");
    }
    add("other.txt", "text\n");
    EXPECT_EQ(stamp_checksums(), 1);
    EXPECT_EQ(console, "\nUpdating checksums...\nUpdate complete.\n");
    EXPECT_EQ(content("other.txt"), "text\n");
    EXPECT_EQ(log(), "");
}

// Headers.

TEST_F(StampTest, TheHeaderStandsFirst) {
    EXPECT_EQ(headed("<html>\n</html>\n"), std::string(stamped_header) + "<html>\n</html>\n");
}

TEST_F(StampTest, OlderHeadersAreDroppedWhereverTheyStand) {
    EXPECT_EQ(headed("||header: modified=true tpl_set=x tpl_version=1||\n<html>\n"
                     "||header:\n||header:\r\n</html>\n||header: no line end"),
              std::string(stamped_header) + "<html>\n</html>\n");
}

TEST_F(StampTest, AHeaderInMidLineStays) {
    const std::string file = "<!-- ||header: a=b\n|||header:\n ||header:\n||Header:\n||heade\n";
    EXPECT_EQ(headed(file), stamped_header + file);
}

TEST_F(StampTest, StampingHeadersAgainChangesNothing) {
    const std::string once = headed("<html>\r\n");
    EXPECT_EQ(headed(once), once);
}

TEST_F(StampTest, FilesOfEveryEnding) {
    for (const char *file : {"", "\n", "one line", "one line\n", "a\r\nb\r\n", "a\r\nb", "\r",
                             "\n\n\n", "last\n||header"}) {
        EXPECT_EQ(headed(file), std::string(stamped_header) + file);
    }
}

TEST_F(StampTest, OnlyTheFirstPieceOfALongHeaderIsDropped) {
    const std::string line = "||header:" + std::string(piece - 9, 'a');
    EXPECT_EQ(headed(line + "rest\nnext\n"), std::string(stamped_header) + "rest\nnext\n");
    EXPECT_EQ(headed(line + "\nnext\n"), std::string(stamped_header) + "\nnext\n");
}

TEST_F(StampTest, APieceThatBeginsLikeAHeaderIsDroppedInMidLine) {
    const std::string before(2 * piece, 'a');
    EXPECT_EQ(headed(before + "||header: x\nnext\n"), stamped_header + before + "next\n");
    EXPECT_EQ(headed("b" + before + "||header: x\nnext\n"),
              stamped_header + ("b" + before) + "||header: x\nnext\n");
}

TEST_F(StampTest, PercentSignsInTheAnswersAreText) {
    add("a.tpl", "");
    console_of(templates() + "\n%s%n\n100%\n", [] { tpl_add_header(); });
    EXPECT_EQ(content("a.tpl"), "||header: modified=false tpl_set=%s%n tpl_version=100%||\n");
}

// Checksums.

TEST_F(StampTest, TheChecksumLineStandsLastBehindAnEmptyLine) {
    EXPECT_EQ(summed("abc\n"), "abc\n\n||checksum=689||\n");
}

TEST_F(StampTest, TheRestBehindTheLastLineFeedEndsBeforeTheChecksumLine) {
    EXPECT_EQ(summed("abc\nabc"), "abc\nabc\n||checksum=1374||\n");
}

TEST_F(StampTest, AnEmptyFileGetsAChecksumOfNothing) {
    EXPECT_EQ(summed(""), "\n||checksum=0||\n");
}

TEST_F(StampTest, EachFurtherStampingAddsAnEmptyLine) {
    const std::string once = summed("abc\n");
    const std::string twice = summed(once);
    EXPECT_EQ(twice, "abc\n\n\n||checksum=689||\n");
    EXPECT_EQ(summed(twice), "abc\n\n\n\n||checksum=689||\n");
    EXPECT_EQ(do_checksum("tpl/a.tpl", 1), 0);
}

TEST_F(StampTest, OlderChecksumLinesAreDroppedByTheirFirstNineCharacters) {
    EXPECT_EQ(summed("||checksum=5||\n||checksu\n||checksums\nabc\n||checks\n"),
              "abc\n||checks\n\n||checksum=" +
                  std::to_string(expected_checksum(
                      "||checksum=5||\n||checksu\n||checksums\nabc\n||checks\n")) +
                  "||\n");
}

TEST_F(StampTest, AChecksumInMidLineStaysAndIsNotSummed) {
    EXPECT_EQ(summed("A ||checksum=5||B\n"), "A ||checksum=5||B\n\n||checksum=66||\n");
}

TEST_F(StampTest, HeaderThenChecksumAgrees) {
    headed("<html>\n</html>\n");
    stamp_checksums();
    EXPECT_EQ(content("a.tpl").substr(0, 60), std::string(stamped_header) + "<");
    EXPECT_EQ(do_checksum("tpl/a.tpl", 1), 0);
    headed(content("a.tpl"));
    stamp_checksums();
    EXPECT_EQ(do_checksum("tpl/a.tpl", 1), 0);
}

TEST_F(StampTest, WindowsLinesStayAsTheyAre) {
    EXPECT_EQ(summed("a\r\nb\r\n"), "a\r\nb\r\n\n||checksum=195||\n");
    EXPECT_EQ(do_checksum("tpl/a.tpl", 1), 0);
}

TEST_F(StampTest, NulBytesStay) {
    using namespace std::string_literals;
    EXPECT_EQ(summed("a\0b\n\0||checksum=1||\nc"s), expected_stamped("a\0b\n\0||checksum=1||\nc"s));
    EXPECT_EQ(headed("\0||header:\n||header:\0x\n\0"s), stamped_header + "\0||header:\n\0"s);
}

TEST_F(StampTest, FilesOfRandomPieces) {
    const std::string parts[] = {
        "\n", "\r\n", "||checksum=12||",   "||checksu", "||header:", "|", "||",
        "x",  "\xff", std::string(1, '\0')};
    std::mt19937 random(3); // NOLINT: the same files each time
    for (int round = 0; round < 120; round++) {
        std::string file;
        const std::size_t length = random() % (round % 8 == 0 ? 200'000 : 4'000);
        while (file.size() < length) {
            file += parts[random() % std::size(parts)];
            file.append(random() % 4 == 0 ? random() % 700 : 0, 'q');
        }
        SCOPED_TRACE(round);
        EXPECT_TRUE(summed(file) == expected_stamped(file));
        EXPECT_TRUE(headed(file) == stamped_header + without_pieces(file, "||header:"));
    }
}

// The place of the file.

TEST_F(StampTest, TheScratchFileIsGoneAtTheEnd) {
    headed("<html>\n");
    summed("<html>\n");
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
    EXPECT_EQ(log(), "");
}

TEST_F(StampTest, AScratchFileLeftBehindIsNoTemplate) {
    add("a.tpl", "abc\n");
    add("temp.tpl", "torn");
    EXPECT_EQ(stamp_checksums(), 1);
    std::string shown = console;
    std::sort(shown.begin() + 19, shown.begin() + 21);
    EXPECT_EQ(shown, "\nUpdating checksums.x\nUpdate complete.\n");
    EXPECT_EQ(content("a.tpl"), "abc\n\n||checksum=689||\n");
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
    EXPECT_EQ(log(), "Error: can't open " + templates() + "/temp.tpl, No such file or directory\n" +
                         "Error: Can't open " + templates() +
                         "/temp.tpl, No such file or directory\n");
}

TEST_F(StampTest, AScratchNameThatIsALinkLeadsNowhere) {
    write_file("precious", "kept\n");
    std::filesystem::create_symlink("../precious", "tpl/temp.tpl");
    add("a.tpl", "abc\n");
    stamp_checksums();
    EXPECT_EQ(read_file("precious"), "kept\n");
    EXPECT_EQ(content("a.tpl"), "abc\n\n||checksum=689||\n");
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
}

TEST_F(StampTest, AScratchNameThatIsADirectoryStopsEveryStamp) {
    std::filesystem::create_directory("tpl/temp.tpl");
    add("a.tpl", "abc\n");
    EXPECT_EQ(stamp_headers(), 1);
    EXPECT_EQ(console, "\nUpdating headersxx\nUpdate complete.\n");
    EXPECT_EQ(content("a.tpl"), "abc\n");
    const std::string line = "Error: Can't open " + templates() + "/temp.tpl, Is a directory\n";
    EXPECT_EQ(log(), line + line);
}

TEST_F(StampTest, AStampedTemplateKeepsItsMode) {
    for (const mode_t mode : {0640, 0400, 0755}) {
        add("a.tpl", "abc\n");
        ::chmod("tpl/a.tpl", mode);
        stamp_checksums();
        struct stat status {};
        ::stat("tpl/a.tpl", &status);
        EXPECT_EQ(status.st_mode & 07777, mode);
        EXPECT_EQ(content("a.tpl"), "abc\n\n||checksum=689||\n");
        ::unlink("tpl/a.tpl");
    }
}

TEST_F(StampTest, AStampedTemplateKeepsItsOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root gives files away";
    }
    add("a.tpl", "abc\n");
    ASSERT_EQ(::chown("tpl/a.tpl", 12345, 23456), 0);
    stamp_checksums();
    struct stat status {};
    ::stat("tpl/a.tpl", &status);
    EXPECT_EQ(status.st_uid, 12345U);
    EXPECT_EQ(status.st_gid, 23456U);
}

TEST_F(StampTest, ALinkIsReplacedAndWhatItLeadsToStays) {
    write_file("shared.tpl", "abc\n");
    std::filesystem::create_symlink("../shared.tpl", "tpl/a.tpl");
    stamp_checksums();
    EXPECT_EQ(read_file("shared.tpl"), "abc\n");
    EXPECT_FALSE(std::filesystem::is_symlink("tpl/a.tpl"));
    EXPECT_EQ(content("a.tpl"), "abc\n\n||checksum=689||\n");
}

TEST_F(StampTest, OfOneThousandAndOneTemplatesOneIsLeft) {
    for (int number = 0; number < 1001; number++) {
        add(std::to_string(number) + ".tpl", "abc\n");
    }
    EXPECT_EQ(stamp_checksums(), 1);
    EXPECT_EQ(console, "Error: MAXWILD exceeded\n\nUpdating checksums" + std::string(1000, '.') +
                           "\nUpdate complete.\n");
    int stamped = 0;
    int left = 0;
    for (int number = 0; number < 1001; number++) {
        const std::string text = content(std::to_string(number) + ".tpl");
        stamped += text == "abc\n\n||checksum=689||\n" ? 1 : 0;
        left += text == "abc\n" ? 1 : 0;
    }
    EXPECT_EQ(stamped, 1000);
    EXPECT_EQ(left, 1);
    EXPECT_EQ(log(), "Error: MAXWILD exceeded\n");
}

TEST_F(StampTest, ATemplateOfSixtyFourMegabytes) {
    for (const std::size_t line : {std::size_t{80}, std::size_t{1} << 20U}) {
        const large_template file = make_large_template(line);
        const std::string sum = std::to_string(static_cast<int>(file.sum));
        EXPECT_TRUE(summed(file.content) == file.content + "\n||checksum=" + sum + "||\n");
    }
}

// Failures: a template is its old self or its stamped self.

TEST_F(StampTest, ADirectoryOfATemplatesNameShowsAnX) {
    std::filesystem::create_directory("tpl/d.tpl");
    EXPECT_EQ(stamp_headers(), 1);
    EXPECT_EQ(console, "\nUpdating headersx\nUpdate complete.\n");
    EXPECT_TRUE(std::filesystem::is_directory("tpl/d.tpl"));
    EXPECT_EQ(log(), "Error: Can't open " + templates() + "/d.tpl, Is a directory\n");
}

TEST_F(StampTest, APipeOfATemplatesNameShowsAnXAndStays) {
    ASSERT_EQ(::mkfifo("tpl/p.tpl", 0600), 0);
    stamp_headers();
    EXPECT_EQ(console, "\nUpdating headersx\nUpdate complete.\n");
    EXPECT_TRUE(std::filesystem::is_fifo("tpl/p.tpl"));
    EXPECT_EQ(log(), "Error: Can't open " + templates() + "/p.tpl, Invalid argument\n");
}

TEST_F(StampTest, AnUnreadableTemplateShowsAnX) {
    add("a.tpl", "abc\n");
    ::chmod("tpl/a.tpl", 0);
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::all);
    std::filesystem::permissions("tpl", std::filesystem::perms::all);
    {
        const without_rights nobody;
        EXPECT_EQ(stamp_checksums(), 1);
    }
    EXPECT_EQ(console, "\nUpdating checksumsx\nUpdate complete.\n");
    ::chmod("tpl/a.tpl", 0600);
    EXPECT_EQ(content("a.tpl"), "abc\n");
    EXPECT_EQ(log(), "Error: can't open " + templates() + "/a.tpl, Permission denied\n" +
                         "Error: Can't open " + templates() + "/a.tpl, Permission denied\n");
}

TEST_F(StampTest, AnUnwritableDirectoryKeepsItsTemplates) {
    add("a.tpl", "abc\n");
    ::chmod("tpl/a.tpl", 0644);
    ::chmod("tpl", 0555);
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::all);
    {
        const without_rights nobody;
        EXPECT_EQ(stamp_headers(), 1);
    }
    ::chmod("tpl", 0755);
    EXPECT_EQ(console, "\nUpdating headersx\nUpdate complete.\n");
    EXPECT_EQ(content("a.tpl"), "abc\n");
    EXPECT_EQ(log(), "Error: Can't open " + templates() + "/temp.tpl, Permission denied\n");
}

TEST_F(StampTest, AScratchFileThatMustStayIsNotWritten) {
    add("a.tpl", "abc\n");
    add("temp.tpl", "torn");
    ::chmod("tpl/a.tpl", 0644);
    ::chmod("tpl/temp.tpl", 0666);
    ::chmod("tpl", 0555);
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::all);
    {
        const without_rights nobody;
        EXPECT_EQ(stamp_headers(), 1);
    }
    ::chmod("tpl", 0755);
    EXPECT_EQ(console, "\nUpdating headersxx\nUpdate complete.\n");
    EXPECT_EQ(content("a.tpl"), "abc\n");
    EXPECT_EQ(content("temp.tpl"), "torn");
    const std::string line = "Error: Can't open " + templates() + "/temp.tpl, Permission denied\n";
    EXPECT_EQ(log(), line + line);
}

TEST_F(StampTest, ATemplateThatCannotBeReplacedKeepsItsContent) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root makes another user's file";
    }
    add("a.tpl", "abc\n");
    ::chmod("tpl/a.tpl", 0644);
    ::chmod("tpl", 01777);
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::all);
    {
        const without_rights nobody;
        EXPECT_EQ(stamp_headers(), 1);
    }
    EXPECT_EQ(console, "\nUpdating headersx\nUpdate complete.\n");
    EXPECT_EQ(content("a.tpl"), "abc\n");
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
    EXPECT_EQ(log(), "Error: can't remove " + templates() + "/a.tpl, Operation not permitted\n" +
                         "Error: can't remove " + templates() +
                         "/temp.tpl, Operation not permitted\n");
}

TEST_F(StampTest, AWriteThatFailsKeepsTheTemplate) {
    // The limit cuts the first file in its text, the second in its checksum line.
    for (const auto &[size, largest] : {std::pair(100'000, 50'000), std::pair(5000, 5005)}) {
        const std::string file(static_cast<std::size_t>(size), 'a');
        add("a.tpl", file);
        {
            const small_files limit(static_cast<rlim_t>(largest));
            EXPECT_EQ(stamp_checksums(), 1);
        }
        EXPECT_EQ(console, "\nUpdating checksumsx\nUpdate complete.\n");
        EXPECT_TRUE(content("a.tpl") == file);
        EXPECT_FALSE(is_there("tpl/temp.tpl"));
    }
}

TEST_F(StampTest, AWriteThatFailsNamesTheFileAndTheError) {
    add("a.tpl", std::string(100'000, 'a'));
    {
        const small_files limit(50'000);
        stamp_headers();
    }
    EXPECT_EQ(log(), "Error: Can't write " + templates() + "/temp.tpl, File too large\n" +
                         "Error: can't remove " + templates() + "/temp.tpl, File too large\n");
}

// /proc/self/mem opens like a plain file and cannot be read at its start.
TEST_F(StampTest, AReadThatFailsKeepsTheTemplate) {
    std::filesystem::create_symlink("/proc/self/mem", "tpl/a.tpl");
    EXPECT_EQ(stamp_headers(), 1);
    EXPECT_EQ(console, "\nUpdating headersx\nUpdate complete.\n");
    EXPECT_TRUE(std::filesystem::is_symlink("tpl/a.tpl"));
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
    EXPECT_EQ(log(), "Error: Can't open " + templates() + "/a.tpl, Input/output error\n" +
                         "Error: can't remove " + templates() + "/temp.tpl, Input/output error\n");
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
    stamp_checksums();
    EXPECT_TRUE(content("a.tpl") == expected_stamped(file));
    EXPECT_FALSE(is_there("tpl/temp.tpl"));
}

TEST_F(StampTest, OneFailureDoesNotStopTheRest) {
    for (const char *name : {"a.tpl", "b.tpl", "c.tpl", "d.tpl"}) {
        add(name, "abc\n");
    }
    std::filesystem::create_directory("tpl/e.tpl");
    EXPECT_EQ(stamp_checksums(), 1);
    EXPECT_EQ(std::count(console.begin(), console.end(), 'x'), 1);
    for (const char *name : {"a.tpl", "b.tpl", "c.tpl", "d.tpl"}) {
        EXPECT_EQ(content(name), "abc\n\n||checksum=689||\n");
    }
}

TEST_F(StampTest, APathThatDoesNotFitIsNotActedOn) {
    // The directory's path has 505 characters: neither a.tpl nor temp.tpl fits behind it.
    std::string deep = scratch.path("tpl");
    while (deep.size() < 505) {
        deep += "/" + std::string(std::min<std::size_t>(504 - deep.size(), 100), 'd');
    }
    ASSERT_EQ(deep.size(), 505U);
    std::filesystem::create_directories(deep);
    write_file(deep + "/ab.tpl", "abc\n");
    write_file(deep + "/temp.t", "kept\n");
    const std::string transcript = console_of(deep + "\n\n\n", [] { tpl_add_header(); });
    EXPECT_EQ(transcript.substr(transcript.find("\nUpdating")),
              "\nUpdating headersx\nUpdate complete.\n");
    EXPECT_EQ(read_file(deep + "/ab.tpl"), "abc\n");
    EXPECT_EQ(read_file(deep + "/temp.t"), "kept\n");
    close_log();
    EXPECT_NE(read_file("gxsetup.log").find("/ab.tp, File name too long"), std::string::npos);
}

} // namespace
