#include "wizard/session.h"

#include "core/log.h"
#include "files/operations.h"
#include "setup/answer_store.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

const std::string rule =
    "\n\n-------------------------------------------------------------------------------\n";

class PrintEnd : public scratch_test {
  protected:
    PrintEnd() {
        gx_user = ::geteuid();
        gx_group = ::getegid();
        ini_init(&gxvalues, emsg, nullptr);
        ini_setup(&gxvalues, ans_values, nullptr);
        std::filesystem::create_directory("there");
        set_answer(&gxvalues, D_INSTALL_DIR, scratch.path("there").c_str());
    }

    ~PrintEnd() override { ini_clear(&gxvalues); }

    // Ends a run of the action; gives what the console shows. The log's lines go to `logged`.
    std::string end_of(const char *action, int success) {
        set_answer(&gxvalues, D_ACTION, action);
        const test_log log(".");
        set_loglvl(LOG_INFO);
        std::string shown = console_of([success] { print_end(success); });
        logged = log.text();
        return shown;
    }

    std::string logged;
};

} // namespace

TEST_F(PrintEnd, SaysHowItWentAndKeepsTheLogWithTheInstallation) {
    EXPECT_EQ(end_of("Install", 1), "." + rule + "Install successful\n\n");
    EXPECT_EQ(logged, "Info:  Install successful\nInfo:  * gxsetup finished *\n");
    EXPECT_TRUE(is_there("there/gxsetup.log"));
}

TEST_F(PrintEnd, OfARemovalKeepsNoLog) {
    EXPECT_EQ(end_of("REMOVE", 1), rule + "REMOVE successful\n\n");
    EXPECT_FALSE(is_there("there/gxsetup.log"));
}

TEST_F(PrintEnd, OfAQuitIsNeverUnsuccessfulAndKeepsNoLog) {
    EXPECT_EQ(end_of("Quit", 0), rule);
    EXPECT_EQ(logged, "Info:  * gxsetup finished *\n");
    EXPECT_EQ(end_of("quit", 1), rule + "quit successful\n\n");
    EXPECT_FALSE(is_there("there/gxsetup.log"));
}

TEST_F(PrintEnd, OfACustomisationSaysGoodByeAlone) {
    EXPECT_EQ(end_of("Custom", 1), "." + rule + "Good-bye\n");
    EXPECT_EQ(logged, "");
    EXPECT_TRUE(is_there("there/gxsetup.log"));
}
