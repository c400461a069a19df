#include "core/log.h"

#include "core/text.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/stat.h>

namespace {

constexpr std::size_t stamp_length = 12;

// Day of the month in two places, time and a blank: "15 22:12:03 ", " 4 22:12:03 ".
bool is_stamp(std::string stamp) {
    for (char &character : stamp) {
        character = character >= '0' && character <= '9' ? '0' : character;
    }
    return stamp == "00 00:00:00 " || stamp == " 0 00:00:00 ";
}

// The lines of a log file without their time stamps, each of which is looked at.
std::string log_text(const std::string &path = "gxsetup.log") {
    std::istringstream lines(read_file(path));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(is_stamp(line.substr(0, stamp_length))) << line;
        text += line.substr(stamp_length) + "\n";
    }
    return text;
}

// A log that is open in the scratch directory with nothing in it and nothing counted.
class Log : public scratch_test {
  protected:
    Log() {
        close_log();
        set_loglvl(LOG_DEBUG);
        inilog(".", "gxsetup");
        close_log();
        write_file("gxsetup.log", "");
        std::filesystem::remove("init.log");
        // The next message opens the log by its size, which sets the count.
        emsg("first!");
        write_file("gxsetup.log", "");
        std::filesystem::remove("gxsetup1.log");
    }

    ~Log() override {
        close_log();
        set_loglvl(LOG_ERROR);
    }
};

using LogLevel = Log;
using LogLine = Log;
using Filemsg = Log;
using Logit = Log;
using Inilog = Log;
using RotateLogs = Log;
using PrintEmsg = Log;
using PrintImsg = Log;

// Runs `check` in a process in which no log was opened yet; it ends well when every expectation
// in it was met.
[[noreturn]] void check_and_exit(const std::function<void()> &check) {
    {
        const scratch_directory scratch;
        check();
        close_log();
    }
    std::fflush(stdout);
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

void expect_in_fresh_process(const std::function<void()> &check) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(check_and_exit(check), testing::ExitedWithCode(0), "");
}

// Logs lines of 100 bytes, "\n" included, each counted as 112.
void log_lines_of_100(int count) {
    const std::string text(92, 'x');
    for (int line = 0; line < count; line++) {
        emsg("%s", text.c_str());
    }
}

// The length of a line is that of its text and of "Error: " and "\n".
void log_line_of(std::size_t length) {
    emsg("%s", std::string(length - 8, 'y').c_str());
}

} // namespace

// --- Levels ---

TEST_F(LogLevel, InfoNeedsLevel1AndDebugLevel2) {
    set_loglvl(0);
    EXPECT_EQ(emsg("e0"), 10);
    EXPECT_EQ(imsg("i0"), 0);
    EXPECT_EQ(dmsg("d0"), 0);
    set_loglvl(1);
    EXPECT_EQ(imsg("i1"), 10);
    EXPECT_EQ(dmsg("d1"), 0);
    set_loglvl(2);
    EXPECT_EQ(dmsg("d2"), 10);
    EXPECT_EQ(log_text(), "Error: e0\nInfo:  i1\nDebug: d2\n");
}

TEST_F(LogLevel, NegativeLevelsAreIgnored) {
    set_loglvl(1);
    set_loglvl(-1);
    EXPECT_EQ(get_loglvl(), 1);
    set_loglvl(0);
    EXPECT_EQ(get_loglvl(), 0);
}

TEST(LogLevelNames, AreErrorInfoDebugAndANull) {
    EXPECT_STREQ(log_names[0], "error");
    EXPECT_STREQ(log_names[1], "info");
    EXPECT_STREQ(log_names[2], "debug");
    EXPECT_EQ(log_names[3], nullptr);
    EXPECT_EQ(LOG_ERROR, 0);
    EXPECT_EQ(LOG_INFO, 1);
    EXPECT_EQ(LOG_DEBUG, 2);
}

TEST(LogLevelNames, AreGivenByLevelAndNullOutside) {
    EXPECT_STREQ(get_loglvl_name(0), "error");
    EXPECT_STREQ(get_loglvl_name(1), "info");
    EXPECT_STREQ(get_loglvl_name(2), "debug");
    EXPECT_EQ(get_loglvl_name(3), nullptr);
    EXPECT_EQ(get_loglvl_name(-1), nullptr);
}

TEST(LogLevelNames, GiveTheirLevelCaseSensitively) {
    EXPECT_EQ(get_loglvl_id("error"), 0);
    EXPECT_EQ(get_loglvl_id("info"), 1);
    EXPECT_EQ(get_loglvl_id("debug"), 2);
    EXPECT_EQ(get_loglvl_id("Info"), -1);
    EXPECT_EQ(get_loglvl_id("inf"), -1);
    EXPECT_EQ(get_loglvl_id(nullptr), -1);
}

// --- Lines ---

TEST_F(LogLine, BeginsWithDayAndTimeOfTheSystemsTimeText) {
    const auto stamp_now = [] {
        const std::time_t now = std::time(nullptr);
        return std::string(std::ctime(&now)).substr(8, stamp_length);
    };
    const std::string before = stamp_now();
    emsg("text");
    const std::string after = stamp_now();
    const std::string stamp = read_file("gxsetup.log").substr(0, stamp_length);
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);
}

TEST_F(LogLine, IsFormattedBehindItsPrefixAndCountedWithoutItsStamp) {
    EXPECT_EQ(emsg("%s=%d", "a", 5), 11);
    EXPECT_EQ(log_text(), "Error: a=5\n");
}

TEST_F(LogLine, ThatEndsInALineFeedGetsNoSecond) {
    EXPECT_EQ(emsg("text\n"), 12);
    EXPECT_EQ(imsg("text\n\n"), 13);
    const std::string text = read_file("gxsetup.log");
    EXPECT_EQ(text.size(), 2 * stamp_length + 12 + 13);
    EXPECT_EQ(text.substr(stamp_length, 12), "Error: text\n");
    EXPECT_EQ(text.substr(2 * stamp_length + 12), "Info:  text\n\n");
}

TEST_F(LogLine, Of510CharactersStillGetsALineFeed) {
    EXPECT_EQ(emsg("%s", std::string(503, 'x').c_str()), 511);
    EXPECT_EQ(read_file("gxsetup.log").substr(stamp_length),
              "Error: " + std::string(503, 'x') + "\n");
}

TEST_F(LogLine, Of511CharactersGetsNoLineFeed) {
    EXPECT_EQ(emsg("%s", std::string(504, 'x').c_str()), 511);
    EXPECT_EQ(read_file("gxsetup.log").substr(stamp_length), "Error: " + std::string(504, 'x'));
}

TEST_F(LogLine, IsCutAt1023Characters) {
    EXPECT_EQ(emsg("%s", std::string(5000, 'x').c_str()), 1023);
    EXPECT_EQ(read_file("gxsetup.log").substr(stamp_length), "Error: " + std::string(1016, 'x'));
}

TEST_F(LogLine, PrintsNullForAMissingText) {
    const char *missing = std::getenv("GXSETUP_TEST_NAME_THAT_IS_NOT_SET");
    emsg("{%s}", missing);
    EXPECT_EQ(log_text(), "Error: {<NULL>}\n");
}

TEST_F(Filemsg, AppendsTheSystemsErrorStraightBehindTheText) {
    set_loglvl(0);
    errno = ENOENT;
    EXPECT_EQ(filemsg("cannot open %s", "a.tpl"), 52);
    EXPECT_EQ(log_text(), "Error: cannot open a.tpl(No such file or directory)\n");
}

TEST_F(Filemsg, IsHeldIn511CharactersWithoutALineFeedThen) {
    errno = ENOENT;
    filemsg("%s", std::string(2000, 'x').c_str());
    EXPECT_EQ(read_file("gxsetup.log").substr(stamp_length), "Error: " + std::string(504, 'x'));
}

// --- Opening ---

TEST(LogBeforeInilog, GoesToInitLogAndTheRealLogSaysSo) {
    expect_in_fresh_process([] {
        EXPECT_EQ(emsg("too early"), 17);
        EXPECT_EQ(log_text("init.log"), "Error: too early\n");
        EXPECT_EQ(inilog(".", "gxsetup"), 1);
        EXPECT_EQ(log_text(), "Error: Errors logged before inilog called see init.log\n");
        emsg("in time");
        EXPECT_EQ(log_text("init.log"), "Error: too early\n");
        EXPECT_EQ(log_text(),
                  "Error: Errors logged before inilog called see init.log\nError: in time\n");
        // The notice is given once.
        EXPECT_EQ(inilog(".", "other"), 1);
        EXPECT_EQ(read_file("other.log"), "");
    });
}

TEST(LogBeforeInilog, NothingLoggedLeavesNoNoticeAndNoInitLog) {
    expect_in_fresh_process([] {
        EXPECT_EQ(get_loglvl(), 0);
        EXPECT_EQ(imsg("filtered"), 0);
        EXPECT_EQ(inilog(".", "gxsetup"), 1);
        EXPECT_EQ(read_file("gxsetup.log"), "");
        EXPECT_FALSE(is_there("init.log"));
    });
}

TEST(LogBeforeInilog, AnInitLogThatCannotBeOpenedIsToldTheConsole) {
    expect_in_fresh_process([] {
        std::filesystem::create_directory("init.log");
        int result = -1;
        EXPECT_EQ(console_of([&] { result = emsg("lost"); }), "Cant open logfile init.log\n");
        EXPECT_EQ(result, 0);
    });
}

TEST_F(Inilog, OpensPathAndNameForAppending) {
    std::filesystem::create_directory("logs");
    write_file("logs/run.log", "old\n");
    close_log();
    EXPECT_EQ(inilog("logs", "run"), 1);
    emsg("new");
    const std::string text = read_file("logs/run.log");
    EXPECT_EQ(text.substr(0, 4), "old\n");
    EXPECT_EQ(text.substr(text.size() - 11), "Error: new\n");
}

TEST_F(Inilog, ThatCannotOpenGivesZeroAndPrintsNothing) {
    int result = -1;
    EXPECT_EQ(console_of([&] { result = inilog("missing", "run"); }), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(console_of([&] { result = emsg("lost"); }), "Cant open logfile missing/run.log\n");
    EXPECT_EQ(result, 0);
}

TEST_F(Inilog, AMessageAfterCloseLogOpensTheLogAgainAndTheNextInilogSaysSo) {
    close_log();
    emsg("again");
    EXPECT_EQ(log_text(), "Error: again\n");
    inilog(".", "next");
    EXPECT_EQ(log_text("next.log"), "Error: Errors logged before inilog called see init.log\n");
}

TEST_F(Inilog, APipeIsNeverWaitedFor) {
    ASSERT_EQ(::mkfifo("pipe.log", 0600), 0);
    EXPECT_EQ(inilog(".", "pipe"), 0);
}

// --- Writing ---

TEST_F(Logit, WritesExactlyTheBytesItIsGiven) {
    EXPECT_EQ(logit("a\0b\n%s", 6), 6);
    EXPECT_EQ(read_file("gxsetup.log").substr(stamp_length), std::string("a\0b\n%s", 6));
}

TEST_F(Logit, AFullDiskIsToldTheConsole) {
    close_log();
    std::filesystem::create_symlink("/dev/full", "full.log");
    EXPECT_EQ(inilog(".", "full"), 1);
    int result = -1;
    EXPECT_EQ(console_of([&] { result = emsg("lost"); }), "Error printing to log file\n");
    EXPECT_EQ(result, 0);
}

TEST_F(Logit, EachLineIsInTheFileAtOnce) {
    emsg("seen");
    EXPECT_EQ(log_text(), "Error: seen\n");
}

// The fixture's line is counted with 12 + 14 bytes.
TEST_F(Logit, RotatesBeforeTheLineThatWouldPass100000CountedBytes) {
    log_lines_of_100(892); // 26 + 892 * 112 = 99930
    log_line_of(70);
    EXPECT_FALSE(is_there("gxsetup1.log")); // 100000 are not too many
    log_line_of(20);
    EXPECT_EQ(read_file("gxsetup1.log").size(), 892U * 112 + 82);
    EXPECT_EQ(log_text(), "Error: yyyyyyyyyyyy\n");
}

TEST_F(Logit, RotatesForOneByteTooMuch) {
    log_lines_of_100(892);
    log_line_of(71);
    EXPECT_EQ(read_file("gxsetup1.log").size(), 892U * 112);
    EXPECT_EQ(read_file("gxsetup.log").size(), 12U + 71);
}

TEST_F(Logit, CountsAnewAfterARotation) {
    log_lines_of_100(893);
    EXPECT_EQ(read_file("gxsetup.log").size(), 112U);
    log_lines_of_100(891); // 892 lines: 99904
    EXPECT_EQ(read_file("gxsetup.log").size(), 892U * 112);
    EXPECT_FALSE(is_there("gxsetup2.log"));
    log_lines_of_100(1);
    EXPECT_TRUE(is_there("gxsetup2.log"));
}

TEST_F(Logit, ALogOpenedAgainIsCountedByItsSize) {
    close_log();
    write_file("gxsetup.log", std::string(99950, 'o'));
    log_line_of(40); // opens; the check came before the count
    EXPECT_FALSE(is_there("gxsetup1.log"));
    log_line_of(20);
    EXPECT_EQ(read_file("gxsetup1.log").size(), 99950U + 52);
}

// --- Rotation ---

TEST_F(RotateLogs, KeepsThreeGenerations) {
    emsg("one");
    EXPECT_EQ(rotate_logs(), 0); // there was no first generation to rename yet
    emsg("two");
    EXPECT_EQ(rotate_logs(), 1);
    emsg("three");
    EXPECT_EQ(log_text("gxsetup2.log"), "Error: one\n");
    EXPECT_EQ(log_text("gxsetup1.log"), "Error: two\n");
    EXPECT_EQ(log_text("gxsetup.log"), "Error: three\n");
    EXPECT_EQ(rotate_logs(), 1);
    EXPECT_EQ(log_text("gxsetup2.log"), "Error: two\n");
    EXPECT_EQ(log_text("gxsetup1.log"), "Error: three\n");
    EXPECT_EQ(read_file("gxsetup.log"), "");
    EXPECT_FALSE(is_there("gxsetup3.log"));
}

TEST_F(RotateLogs, TheOldestGoesEvenWhenNothingTakesItsPlace) {
    write_file("gxsetup2.log", "oldest");
    emsg("one");
    EXPECT_EQ(rotate_logs(), 0);
    EXPECT_FALSE(is_there("gxsetup2.log"));
    EXPECT_EQ(log_text("gxsetup1.log"), "Error: one\n");
}

TEST_F(RotateLogs, WorksInTheCurrentDirectoryWhereverTheLogWasOpened) {
    std::filesystem::create_directory("logs");
    inilog("logs", "run");
    write_file("logs/run.log", "");
    emsg("there");
    write_file("run.log", "here");
    EXPECT_EQ(rotate_logs(), 0);
    emsg("new");
    EXPECT_EQ(read_file("run1.log"), "here");
    EXPECT_EQ(log_text("run.log"), "Error: new\n");
    EXPECT_EQ(log_text("logs/run.log"), "Error: there\n");
}

TEST_F(RotateLogs, AFailedRenameIsOnlyADebugMessageAndTheLogBeginsAnew) {
    set_loglvl(LOG_INFO);
    std::filesystem::create_directories("gxsetup1.log/full");
    std::filesystem::create_directories("gxsetup2.log/full");
    emsg("old");
    EXPECT_EQ(console_of([] { EXPECT_EQ(rotate_logs(), 0); }), "");
    EXPECT_EQ(read_file("gxsetup.log"), "");
    emsg("new");
    EXPECT_EQ(log_text(), "Error: new\n");
}

TEST_F(RotateLogs, AFailedRenameOfAFullLogLosesNoLaterLine) {
    std::filesystem::create_directories("gxsetup1.log/full");
    std::filesystem::create_directories("gxsetup2.log/full");
    log_lines_of_100(893);
    log_line_of(20);
    EXPECT_EQ(read_file("gxsetup.log").size(), 112U + 32);
}

// --- Console variants ---

TEST_F(PrintEmsg, ShowsTheErrorAndLogsIt) {
    EXPECT_EQ(console_of([] { print_emsg("Can't copy %s: %s", "a", "why"); }),
              "Error: Can't copy a: why\n");
    EXPECT_EQ(log_text(), "Error: Can't copy a: why\n");
}

TEST_F(PrintEmsg, ALineFeedOfItsOwnShowsTwiceOnTheConsoleAndOnceInTheLog) {
    EXPECT_EQ(console_of([] { print_emsg("not found\n"); }), "Error: not found\n\n");
    EXPECT_EQ(log_text(), "Error: not found\n");
}

TEST_F(PrintEmsg, TheLogReadsTheFinishedTextAsAFormatAgain) {
    EXPECT_EQ(console_of([] { print_emsg("%s", "100%% of %s, %5d, %n, 5%"); }),
              "Error: 100%% of %s, %5d, %n, 5%\n");
    EXPECT_EQ(log_text(), "Error: 100% of <NULL>, 0, %n, 5%\n");
}

TEST_F(PrintEmsg, IsCutAt511Characters) {
    const std::string text(2000, 'x');
    EXPECT_EQ(console_of([&] { print_emsg("%s", text.c_str()); }),
              "Error: " + std::string(511, 'x') + "\n");
    EXPECT_EQ(read_file("gxsetup.log").substr(stamp_length), "Error: " + std::string(511, 'x'));
}

TEST_F(PrintImsg, ShowsTheTextAloneAndLogsItAsInfo) {
    EXPECT_EQ(console_of([] { print_imsg("made %s", "a"); }), "made a\n");
    EXPECT_EQ(log_text(), "Info:  made a\n");
}

TEST_F(PrintImsg, ShowsOnTheConsoleAtAnyLevelButIsLoggedFromInfoOn) {
    set_loglvl(LOG_ERROR);
    EXPECT_EQ(console_of([] { print_imsg("made %s", "50%%"); }), "made 50%%\n");
    EXPECT_EQ(log_text(), "");
}
