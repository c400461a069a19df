#include "core/log.h"

#include "core/text.h"
#include "support/console_capture.h"
#include "support/rows.h"
#include "support/scratch_test.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <gtest/gtest.h>
#include <map>
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

// A log file without its time stamps; "?" stands before a line that has none.
std::string log_text(const std::string &path = "gxsetup.log") {
    const std::string content = read_file(path);
    std::string text;
    for (std::size_t at = 0, end = 0; at < content.size(); at = end) {
        end = std::min(content.find('\n', at), content.size() - 1) + 1;
        const std::string line = content.substr(at, end - at);
        const bool is_stamped = is_stamp(line.substr(0, stamp_length));
        text += is_stamped ? line.substr(stamp_length) : line == "\n" ? line : "?" + line;
    }
    return text;
}

// Each file *.log in the working directory and below it, but for gxsetup.log.
std::map<std::string, std::string> other_logs() {
    std::map<std::string, std::string> logs;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(".")) {
        const std::string name = entry.path().lexically_relative(".");
        if (entry.is_regular_file() && name.ends_with(".log") && name != "gxsetup.log") {
            logs[name] = log_text(name);
        }
    }
    return logs;
}

// A line of 100 bytes, "\n" included, which counts as 112, and one of another length.
const std::string line_of_100 = "Error: " + std::string(92, 'x') + "\n";

std::string line_of(std::size_t length) {
    return "Error: " + std::string(length - 8, 'y') + "\n";
}

std::string lines_of_100(int count) {
    std::string lines;
    for (int line = 0; line < count; line++) {
        lines += line_of_100;
    }
    return lines;
}

// A directory that no rename replaces.
void make_full(const std::string &path) {
    std::filesystem::create_directories(path + "/full");
}

// Logs lines as they are in the file. Gives how many were.
int log_lines(const std::string &lines) {
    int count = 0;
    std::istringstream input(lines);
    for (std::string line; std::getline(input, line);) {
        count += emsg("%s", line.substr(std::strlen("Error: ")).c_str()) > 0 ? 1 : 0;
    }
    return count;
}

using results = std::vector<int>;

// Calls and what they give; then the log, what the console shows, and the other logs.
struct logging {
    const char *name;
    results (*calls)();
    results given;
    std::string log;
    std::map<std::string, std::string> others = {};
    std::string console = "";
};

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

    static void check(const logging &row) {
        results given;
        EXPECT_EQ(console_of([&] { given = row.calls(); }), row.console);
        EXPECT_EQ(given, row.given);
        EXPECT_EQ(log_text(), row.log);
        EXPECT_EQ(other_logs(), row.others);
    }
};

using LogLevel = Log;
using LogLine = Log;
using Inilog = Log;
using Logit = Log;

const std::string x_503(503, 'x');
const std::string o_99949(99949, 'o');
const std::string notice = "Error: Errors logged before inilog called see init.log\n";

// clang-format off
const std::vector<logging> loggings = {
    // --- Lines ---
    {"LogLine.IsCountedWithoutItsStamp",
     [] { return results{emsg("%s=%d", "a", 5)}; }, {11}, "Error: a=5\n"},
    {"LogLine.ThatEndsInALineFeedGetsNoSecond",
     [] { return results{emsg("text\n"), imsg("text\n\n")}; }, {12, 13},
     "Error: text\nInfo:  text\n\n"},
    {"LogLine.Of510CharactersStillGetsALineFeed",
     [] { return results{emsg("%s", x_503.c_str())}; }, {511}, "Error: " + x_503 + "\n"},
    {"LogLine.Of511CharactersGetsNoLineFeed",
     [] { return results{emsg("x%s", x_503.c_str())}; }, {511}, "Error: x" + x_503},
    {"LogLine.IsCutAt1023Characters",
     [] { return results{emsg("%s", std::string(5000, 'x').c_str())}; }, {1023},
     "Error: " + std::string(1016, 'x')},
    {"LogLine.PrintsNullForAMissingText",
     [] { return results{emsg("{%s}", std::getenv("GXSETUP_TEST_NAME_THAT_IS_NOT_SET"))}; }, {16},
     "Error: {<NULL>}\n"},
    {"Filemsg.AppendsTheSystemsErrorStraightBehindTheText",
     [] { errno = ENOENT; return results{filemsg("cannot open %s", "a.tpl")}; }, {52},
     "Error: cannot open a.tpl(No such file or directory)\n"},
    {"Filemsg.IsCutAt511Characters",
     [] { return results{filemsg("%s", std::string(2000, 'x').c_str())}; }, {511},
     "Error: x" + x_503},

    // --- Opening ---
    {"Inilog.OpensPathAndNameForAppending",
     [] { std::filesystem::create_directory("logs"); write_file("logs/run.log", "old\n");
          return results{inilog("logs", "run"), emsg("new")}; },
     {1, 11}, "", {{"logs/run.log", "?old\n" + notice + "Error: new\n"}}},
    {"Inilog.ThatCannotOpenGivesZeroAndPrintsNothing",
     [] { return results{inilog("missing", "run")}; }, {0}, ""},
    {"Inilog.AfterItFailedAMessageTellsTheConsole",
     [] { return results{inilog("missing", "run"), emsg("lost")}; }, {0, 0}, "", {},
     "Cant open logfile missing/run.log\n"},
    {"Inilog.SaysThatAMessageReopenedAClosedLog",
     [] { close_log(); return results{emsg("again"), inilog(".", "next")}; }, {13, 1},
     "Error: again\n", {{"next.log", notice}}},

    // --- Writing ---
    {"Logit.WritesExactlyTheBytesItIsGiven", [] { return results{logit("a\0b\n%s\n", 7)}; }, {7},
     std::string("a\0b\n?%s\n", 8)},
    {"Logit.EachLineIsInTheFileAtOnce", [] { return results{emsg("seen")}; }, {12},
     "Error: seen\n"},
    // The fixture's line is counted with 12 + 14 bytes: 26 + 892 * 112 = 99930.
    {"Logit.RotatesBeforeTheLineThatWouldPass100000CountedBytes",
     [] { return results{log_lines(lines_of_100(892) + line_of(70) + line_of(20))}; }, {894},
     line_of(20), {{"gxsetup1.log", lines_of_100(892) + line_of(70)}}},
    {"Logit.RotatesForOneByteTooMuch",
     [] { return results{log_lines(lines_of_100(892) + line_of(71))}; }, {893},
     line_of(71), {{"gxsetup1.log", lines_of_100(892)}}},
    {"Logit.CountsAnewAfterARotation",
     [] { return results{log_lines(lines_of_100(892 + 892 + 1))}; }, {892 + 892 + 1},
     lines_of_100(1), {{"gxsetup1.log", lines_of_100(892)}, {"gxsetup2.log", lines_of_100(892)}}},
    // The line that opens the log is checked before the count is known.
    {"Logit.ALogOpenedAgainIsCountedByItsSize",
     [] { close_log(); write_file("gxsetup.log", o_99949 + "\n");
          return results{log_lines(line_of(40) + line_of(20))}; },
     {2}, line_of(20),
     {{"gxsetup1.log", "?" + o_99949 + "\n" + line_of(40)}}},

    // --- Rotation ---
    // There is no first generation to rename at the first rotation.
    {"RotateLogs.KeepsThreeGenerations",
     [] { return results{emsg("one"), rotate_logs(), emsg("two"), rotate_logs(), emsg("three")}; },
     {11, 0, 11, 1, 13}, "Error: three\n",
     {{"gxsetup1.log", "Error: two\n"}, {"gxsetup2.log", "Error: one\n"}}},
    {"RotateLogs.KeepsNoFourth",
     [] { return results{emsg("one"), rotate_logs(), emsg("two"), rotate_logs(), emsg("three"),
                         rotate_logs()}; },
     {11, 0, 11, 1, 13, 1}, "",
     {{"gxsetup1.log", "Error: three\n"}, {"gxsetup2.log", "Error: two\n"}}},
    {"RotateLogs.TheOldestGoesEvenWhenNothingTakesItsPlace",
     [] { write_file("gxsetup2.log", "oldest"); return results{emsg("one"), rotate_logs()}; },
     {11, 0}, "", {{"gxsetup1.log", "Error: one\n"}}},
    {"RotateLogs.WorksInTheCurrentDirectoryWhereverTheLogWasOpened",
     [] { std::filesystem::create_directory("logs"); write_file("run.log", "here\n");
          return results{inilog("logs", "run"), emsg("there"), rotate_logs(), emsg("new")}; },
     {1, 13, 0, 11}, "",
     {{"logs/run.log", notice + "Error: there\n"}, {"run.log", "Error: new\n"},
      {"run1.log", "?here\n"}}},
    {"RotateLogs.AFailedRenameStartsTheLogAnew",
     [] { set_loglvl(LOG_INFO); make_full("gxsetup1.log"); make_full("gxsetup2.log");
          return results{emsg("old"), rotate_logs(), emsg("new")}; },
     {11, 0, 11}, "Error: new\n"},
    {"RotateLogs.AFailedRenameOfAFullLogLosesNoLaterLine",
     [] { make_full("gxsetup1.log"); make_full("gxsetup2.log");
          return results{log_lines(lines_of_100(893) + line_of(20))}; },
     {894}, lines_of_100(1) + line_of(20)},

    // --- Console variants ---
    {"PrintEmsg.ShowsTheErrorAndLogsIt",
     [] { print_emsg("Can't copy %s: %s", "a", "why"); return results{}; }, {},
     "Error: Can't copy a: why\n", {}, "Error: Can't copy a: why\n"},
    {"PrintEmsg.ALineFeedOfItsOwnIsLoggedOnce",
     [] { print_emsg("not found\n"); return results{}; }, {}, "Error: not found\n", {},
     "Error: not found\n\n"},
    {"PrintEmsg.TheLogReadsTheFinishedTextAsAFormatAgain",
     [] { print_emsg("%s", "100%% of %s, %5d, %n, 5%"); return results{}; }, {},
     "Error: 100% of <NULL>, 0, %n, 5%\n", {}, "Error: 100%% of %s, %5d, %n, 5%\n"},
    {"PrintEmsg.IsCutAt511Characters",
     [] { print_emsg("%s", std::string(2000, 'x').c_str()); return results{}; }, {},
     "Error: " + std::string(511, 'x'), {}, "Error: " + std::string(511, 'x') + "\n"},
    {"PrintImsg.ShowsTheTextAloneAndLogsItAsInfo",
     [] { print_imsg("made %s", "a"); return results{}; }, {}, "Info:  made a\n", {}, "made a\n"},
    {"PrintImsg.IsShownAtAnyLevelAndLoggedFromInfoOn",
     [] { set_loglvl(LOG_ERROR); print_imsg("made %s", "50%%"); return results{}; }, {}, "", {},
     "made 50%%\n"},
};
const std::vector<rule> rules = {
    {"LogLevelNames.AreErrorInfoDebugAndANull", +[](std::size_t level) { return log_names[level]; },
     {{{LOG_ERROR}, "error"}, {{LOG_INFO}, "info"}, {{LOG_DEBUG}, "debug"}, {{3}, null}}},
    {"LogLevelNames.AreGivenByLevelAndNullOutside", get_loglvl_name,
     {{{0}, "error"}, {{1}, "info"}, {{2}, "debug"}, {{3}, null}, {{-1}, null}}},
    {"LogLevelNames.GiveTheirLevelCaseSensitively", get_loglvl_id,
     {{{"error"}, 0}, {{"info"}, 1}, {{"debug"}, 2}, {{"Info"}, -1}, {{"inf"}, -1},
      {{nullptr}, -1}}},
};
// clang-format on

const int loggings_registered = register_rows<Log>(loggings);
const int rules_registered = register_rows(rules);

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

} // namespace

TEST_F(LogLevel, InfoNeedsLevel1AndDebugLevel2) {
    set_loglvl(0);
    EXPECT_EQ((results{emsg("e0"), imsg("i0"), dmsg("d0")}), (results{10, 0, 0}));
    set_loglvl(1);
    EXPECT_EQ((results{imsg("i1"), dmsg("d1")}), (results{10, 0}));
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

TEST(LogBeforeInilog, GoesToInitLogAndTheRealLogSaysSo) {
    expect_in_fresh_process([] {
        EXPECT_EQ(emsg("too early"), 17);
        EXPECT_EQ(log_text("init.log"), "Error: too early\n");
        EXPECT_EQ(inilog(".", "gxsetup"), 1);
        EXPECT_EQ(log_text(), notice);
        emsg("in time");
        EXPECT_EQ(log_text("init.log"), "Error: too early\n");
        EXPECT_EQ(log_text(), notice + "Error: in time\n");
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
        EXPECT_EQ(console_of([] { EXPECT_EQ(emsg("lost"), 0); }), "Cant open logfile init.log\n");
    });
}

TEST_F(Inilog, APipeIsNeverWaitedFor) {
    ASSERT_EQ(::mkfifo("pipe.log", 0600), 0);
    EXPECT_EQ(inilog(".", "pipe"), 0);
}

TEST_F(Logit, AFullDiskIsToldTheConsole) {
    close_log();
    std::filesystem::create_symlink("/dev/full", "full.log");
    EXPECT_EQ(inilog(".", "full"), 1);
    EXPECT_EQ(console_of([] { EXPECT_EQ(emsg("lost"), 0); }), "Error printing to log file\n");
}
