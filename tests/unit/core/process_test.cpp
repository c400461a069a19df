#include "core/process.h"

#include "support/rows.h"
#include "support/scratch_test.h"
#include "unit/process_limit.h"

#include <cerrno>
#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Process = scratch_test;

constexpr std::size_t limit = 100;

// What a shell's program prints.
std::string printed(const std::string &program, std::size_t most) {
    return output_of({"/bin/sh", "-c", program}, most).value_or("(not started)");
}

// clang-format off
const std::vector<rule> rules = {
    {"Process.OutputIsWhatAProgramPrints", printed, {{{"echo one; echo two", limit}, "one\ntwo\n"}}},
    {"Process.AProgramThatFailsHasNoOutput", printed, {{{"echo half; exit 1", limit}, ""}}},
    {"Process.AProgramThatASignalEndsHasNoOutput", printed,
     {{{"echo half; kill -9 $$", limit}, ""}}},
    {"Process.OutputOfTheLimitIsTaken", printed,
     {{{"printf %0100d 0", limit}, std::string(100, '0')}}},
    {"Process.OutputBeyondTheLimitIsNone", printed, {{{"printf %0101d 0", limit}, ""}}},
    {"Process.OutputOfSeveralBlocksIsWhole", printed,
     {{{"printf %010000d 0; sleep 0.01; printf 1", 20000}, std::string(10000, '0') + "1"}}},
    // The program ends by the signal of a pipe that nobody reads, which this program ignores.
    {"Process.AProgramThatPrintsForEverIsEnded", printed,
     {{{"while :; do echo more; done", limit}, ""}}},
    {"Process.StandardInputIsClosed", printed,
     {{{"if read -r line; then echo read; else echo closed; fi 2>/dev/null", limit}, "closed\n"}}},
};
// clang-format on

const int registered = register_rows<Process>(rules);

} // namespace

TEST_F(Process, WordsArriveAsTheyAreWithoutAShell) {
    EXPECT_EQ(output_of({"/bin/echo", "$HOME; a  b", "*", ""}, limit), "$HOME; a  b * \n");
}

TEST_F(Process, AProgramThatCannotBeStartedLeavesTheReason) {
    EXPECT_EQ(output_of({"./missing"}, limit), std::nullopt);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Process, WithoutADescriptorThereIsNoOutput) {
    const process_limit none(RLIMIT_NOFILE, 0);
    EXPECT_EQ(output_of({"/bin/echo"}, limit), std::nullopt);
    EXPECT_EQ(errno, EMFILE);
}

TEST_F(Process, OutputIsTakenWhereChildrenLeaveNoStatus) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    const std::string output = printed("echo one", limit);
    std::signal(SIGCHLD, before);
    EXPECT_EQ(output, "one\n");
}

TEST_F(Process, WaitingGivesTheStatus) {
    const started_program program = start_program({"/bin/sh", "-c", "exit 3"}, STDOUT_FILENO);
    ASSERT_EQ(program.error, 0);
    const int status = wait_for(program.child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(wait_for(program.child), -1) << "it has ended already";
}
