#include "customise/customise.h"

#include "core/log.h"
#include "files/operations.h"
#include "setup/answer_store.h"
#include "support/console_capture.h"
#include "support/expected.h"
#include "support/scratch_test.h"
#include "wizard/session.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

// An installed kestrel in a scratch directory: cgi/ holds program and .ini, images/ the images (as
// the version says), img/ is the directory that the answers name, (null)/ the .ini that is
// rewritten.
class Customise : public scratch_test {
  protected:
    Customise() {
        gx_user = ::geteuid();
        gx_group = ::getegid();
        for (const char *directory : {"cgi", "images", "img", "(null)"}) {
            std::filesystem::create_directory(directory);
        }
        write_file("cgi/kestrel.cgi", "");
        write_file("cgi/kestrel.ini", installed_ini);
        write_file("(null)/kestrel.ini", installed_ini);
        ini_init(&gxvalues, emsg, dmsg);
        ini_setup(&gxvalues, ans_values, ans_associations);
        set_answer(&gxvalues, D_PROD_NAME, "kestrel");
        set_answer(&gxvalues, D_CGI_NAME, "kestrel");
        set_answer(&gxvalues, D_CGI_PATH, cgi_path.c_str());
        set_answer(&gxvalues, D_VLIMG_DIR, images.c_str());
        set_answer(&gxvalues, D_VERSION, "images");
        set_answer(&gxvalues, D_ACTION, "upgrade");
    }

    ~Customise() override { ini_clear(&gxvalues); }

    // Runs the flow with these answers; gives what the console shows.
    static std::string flow(std::string_view answers) {
        return console_of(answers, [] { EXPECT_EQ(gxcustom_main(&gxvalues), 1); });
    }

    // Runs the flow and compares what the console shows.
    void run(std::string_view answers) const {
        expect_kept("console", scratch.with_at(flow(answers)));
    }

    // Runs the flow with these answers; gives its log at debug level.
    static std::string log_of(std::string_view answers) {
        const test_log log(".");
        set_loglvl(LOG_DEBUG);
        flow(answers);
        return log.text();
    }

    static constexpr const char *installed_ini = "domain example.com\n"
                                                 "set background old.jpg\n"
                                                 "body_add Goodbye\n"
                                                 "vlimg /vlimg\n";

    const std::string cgi_path = scratch.path("cgi");
    const std::string images = scratch.path("img");
};

TEST_F(Customise, RefusesTheTemplateSetProducts) {
    for (const char *name : {"tanager", "osprey"}) {
        set_answer(&gxvalues, D_PROD_NAME, name);
        run("");
        EXPECT_STREQ(ini_value_num(&gxvalues, D_ACTION), "custom");
    }
}

TEST_F(Customise, RefusesThemUnderTheirExactNamesOnly) {
    set_answer(&gxvalues, D_PROD_NAME, "Tanager");
    run("\n\n5\n");
}

TEST_F(Customise, QuittingAtOnceMakesTheBackup) {
    run("\n\n5\n");
    EXPECT_EQ(read_file("cgi/kest_old.ini"), installed_ini);
    EXPECT_EQ(read_file("(null)/kestrel.ini"), installed_ini);
    EXPECT_STREQ(ini_value_num(&gxvalues, D_ACTION), "custom");
    EXPECT_STREQ(ini_value_num(&gxvalues, D_DOMAIN), "example.com");
}

TEST_F(Customise, AnInvalidChoiceMakesTheBackupOnce) {
    run("\n\n6\n0\nx\n-1\nyes\n5\n");
    EXPECT_EQ(read_file("cgi/kest_old.ini"), installed_ini);
}

TEST_F(Customise, AnOperationChosenFirstMakesNoBackupNowOrLater) {
    run("\n\n4\nSee you\n[save]\n\n6\n5\n");
    EXPECT_FALSE(is_there("cgi/kest_old.ini"));
    expect_kept("kestrel.ini", read_file("(null)/kestrel.ini"));
    EXPECT_EQ(read_file("cgi/kestrel.ini"), installed_ini);
}

TEST_F(Customise, AFailedBackupIsTriedAgain) {
    std::filesystem::create_directory("cgi/kest_old.ini");
    run("\n\n6\n5\n");
}

TEST_F(Customise, EveryOperationRewritesTheIni) {
    const std::string logo = scratch.path("new.gif");
    const std::string background = scratch.path("new.jpg");
    write_file(logo, "a logo");
    write_file(background, "a background");
    run("\n\n1\n" + background + "\n2\n" + logo +
        "\n3\nHello\n\n\n\n\n\n\n\n\n\n\n\n4\n\n[save]\n\n5\n");
    EXPECT_EQ(read_file("images/new.jpg"), "a background");
    EXPECT_EQ(read_file("images/new.gif"), "a logo");
    expect_kept("kestrel.ini", read_file("(null)/kestrel.ini"));
}

TEST_F(Customise, AFailedRewritingIsReportedAndTheMenuGoesOn) {
    std::filesystem::remove_all("(null)");
    run("\n\n4\n[save]\n\n5\n");
}

TEST_F(Customise, AsksForTheProgramUntilItIsThere) {
    std::filesystem::rename("cgi/kestrel.cgi", "cgi/bird.cgi");
    std::filesystem::rename("cgi/kestrel.ini", "cgi/bird.ini");
    run("\nhawk\n\nbird.cgi\n\n5\n");
    EXPECT_STREQ(ini_value_num(&gxvalues, D_CGI_NAME), "bird");
}

TEST_F(Customise, GoesOnWithoutAnInstalledIni) {
    std::filesystem::remove("cgi/kestrel.ini");
    run("\n\n5\n");
}

TEST_F(Customise, StoresTheDirectoriesThatAreAnswered) {
    std::filesystem::create_directories("other/img");
    std::filesystem::rename("cgi", "other/cgi");
    run(scratch.path("other/cgi") + "\n" + scratch.path("other/img") + "\n5\n");
    EXPECT_EQ(ini_value_num(&gxvalues, D_CGI_PATH), scratch.path("other/cgi"));
    EXPECT_EQ(ini_value_num(&gxvalues, D_VLIMG_DIR), scratch.path("other/img"));
    EXPECT_TRUE(is_there("other/cgi/kest_old.ini"));
}

TEST_F(Customise, LogsWhatItDoes) {
    const std::string log = log_of("\n\n5\n");
    EXPECT_TRUE(log.starts_with("Debug: Action custom\n")) << log;
    EXPECT_TRUE(log.ends_with("\nInfo:  " + cgi_path + "/kest_old.ini copied\n")) << log;
}

TEST_F(Customise, SetsItsStoreUpBeforeTheFirstQuestion) {
    const std::string log = log_of("\n\n5\n");
    const std::size_t first_answer = log.find("changed {cgi_path=");
    ASSERT_NE(first_answer, std::string::npos) << log;
    EXPECT_LT(log.find("{prod_name} not added"), first_answer) << log;
}

TEST_F(Customise, IsRunByTheDispatchForFlowThree) {
    EXPECT_EQ(console_of("\n\n5\n", [] { EXPECT_EQ(run_flows(flow_customise), 1); }),
              flow("\n\n5\n"));
}

} // namespace
