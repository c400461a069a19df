// The upgrade questions keep flags for the whole run, and what was typed counts for it: every test
// asks them in a process of its own that has run no other.

#include "support/asked_console.h"
#include "unit/upgrade/upgrade_world.h"
#include "upgrade/upgrade.h"

namespace {

class GxupgradeQuest : public UpgradeWorld {
  protected:
    GxupgradeQuest() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        for (const char *directory : {"cgi-bin", "img", "spool"}) {
            std::filesystem::create_directory(scratch.path(directory));
        }
        ini_remove(&ini, "install_dir");
        set_answer(&ini, D_CGI_PATH, scratch.path("cgi-bin").c_str());
        set_answer(&ini, D_CGI_NAME, "kestrel");
        set_answer(&ini, D_VLIMG_DIR, scratch.path("img").c_str());
        set_answer(&ini, D_WML_NAME, "merlin");
        set_answer(&ini, D_WML, "NO");
        set_loglvl(LOG_DEBUG);
    }

    void add_program() const { write_file(scratch.path("cgi-bin/kestrel.cgi"), ""); }

    void add_ini(const std::string &lines) const {
        write_file(scratch.path("cgi-bin/kestrel.ini"), lines);
    }

    // Runs `code` with its questions answered in a new process, which fails when an expectation
    // does.
    void in_a_process(const console_script &answers, const std::function<void()> &code) {
        EXPECT_EXIT(
            {
                std::fputs(console_of(answers, code).c_str(), stderr);
                std::exit(testing::Test::HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "");
    }

    std::string answer(answer_position position) { return ini_value2_num(&ini, position); }

    // How often the log has a line of this text.
    int logged(const std::string &text) const { return count_of(text + "\n", log()); }
};

} // namespace

TEST_F(GxupgradeQuest, EveryCallLooksUpTheOldIniButSavedAnswersAreLoadedOnceARun) {
    add_program();
    add_ini("templates " + scratch.path("spool") + "\nsmtphost first\n");
    write_file(scratch.path("spool/gxsetup.dat"), "domain first\n");
    in_a_process({}, [&] {
        EXPECT_EQ(gxupgrade_quest(&ini), 1);
        EXPECT_EQ(answer(D_SMTPHOST), "first");
        EXPECT_EQ(answer(D_DOMAIN), "first");
        add_ini("smtphost second\n");
        write_file(scratch.path("spool/gxsetup.dat"), "domain second\n");
        EXPECT_EQ(gxupgrade_quest(&ini), 1);
        EXPECT_EQ(answer(D_SMTPHOST), "second");
        EXPECT_EQ(answer(D_DOMAIN), "first");
        EXPECT_EQ(logged("Debug: load gxvalues with ini file settings"), 2);
        EXPECT_EQ(logged("Debug: load gxsetup.dat from ini setting of templates directory"), 1);
    });
}

TEST_F(GxupgradeQuest, SavedAnswersThatWereNotThereAreLookedForAgain) {
    add_program();
    add_ini("templates " + scratch.path("spool") + "\n");
    in_a_process({}, [&] {
        EXPECT_EQ(gxupgrade_quest(&ini), 1);
        write_file(scratch.path("spool/gxsetup.dat"), "domain second\n");
        EXPECT_EQ(gxupgrade_quest(&ini), 1);
        EXPECT_EQ(answer(D_DOMAIN), "second");
    });
}

TEST_F(GxupgradeQuest, AfterAPassThatWasToBeChangedNoCallLooksAgain) {
    add_program();
    set_answer(&ini, D_TEMPLATES, scratch.path("spool").c_str());
    in_a_process(in_order({{"change any of your answers", "yes"}}), [&] {
        EXPECT_EQ(gxupgrade_quest(&ini), 1);
        std::filesystem::remove(scratch.path("cgi-bin/kestrel.cgi"));
        add_ini("smtphost second\n");
        EXPECT_EQ(gxupgrade_quest(&ini), 1);
        EXPECT_EQ(answer(D_SMTPHOST), "");
        EXPECT_EQ(logged("Debug: Switch to install"), 0);
    });
}

TEST_F(GxupgradeQuest, AYesToTheInstallEndsItAndAnswersNothing) {
    set_answer(&ini, D_REPLACE_TMPLTS, "FALSE");
    in_a_process({{"replace the old templates", "yes"},
                  {"Where are the cgi files", scratch.path("img")},
                  {"install questions", "y"}},
                 [&] {
                     EXPECT_EQ(gxupgrade_main(&ini), -2);
                     EXPECT_EQ(answer(D_CGI_PATH), scratch.path("cgi-bin"));
                     EXPECT_EQ(answer(D_REPLACE_TMPLTS), "FALSE");
                     EXPECT_EQ(logged("Debug: Switch to install"), 1);
                     EXPECT_EQ(logged("Debug: Templates ?"), 0);
                 });
}

TEST_F(GxupgradeQuest, AnImapProductIsJudgedAnewEachPassButOspreyStaysASetProductInACall) {
    std::filesystem::create_directory("tpl/marble");
    add_program();
    set_answer(&ini, D_TEMPLATES, scratch.path("spool").c_str());
    add_ini("prod_name kestrel\n");
    const console_script answers =
        in_order({{"change any of your answers", "yes"}, {"replace the old templates", "yes"}});
    for (const auto &[product, sets] : {std::pair("tanager", 0), {"osprey", 1}}) {
        set_answer(&ini, D_PROD_NAME, product);
        in_a_process(answers, [&, expected = sets] {
            EXPECT_EQ(gxupgrade_quest(&ini), 1);
            LINK_LIST values = ini_get_multi_value_num(&ini, D_TPL_SET);
            EXPECT_EQ(list_num(&values), expected);
            list_clear(&values);
        });
    }
}

TEST_F(GxupgradeQuest, AMissingOldIniLeavesTemplatesAndSetsAsTheyAre) {
    add_program();
    set_answer(&ini, D_PROD_NAME, "osprey");
    set_answer(&ini, D_TEMPLATES, scratch.path("spool").c_str());
    set_answer(&ini, D_WORKAREA, scratch.path("img").c_str());
    set_answer(&ini, D_TPL_SET, "1 one");
    write_file(scratch.path("spool/gxsetup.dat"), "domain saved\n");
    in_a_process({}, [&] {
        EXPECT_EQ(gxupgrade_quest(&ini), 1);
        EXPECT_EQ(answer(D_TEMPLATES), scratch.path("spool"));
        EXPECT_EQ(answer(D_TPL_SET), "1 one");
        EXPECT_EQ(answer(D_DOMAIN), "");
    });
}
