#include "customise/customise.h"

#include "core/log.h"
#include "files/operations.h"
#include "setup/answer_store.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"
#include "unit/customise/screens.h"
#include "wizard/session.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

const std::string menu = R"(
Options:
 1 Modify background
 2 Modify logo
 3 Add / Modify scrolling advertisements
 4 Modify email footer
 5 Quit

What do you want to do ? )";
const std::string refused = "That is not a valid choice, please choose again\n" + menu;
const std::string complete = "Operation Complete\n" + menu;

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
    static std::string run(std::string_view answers) {
        return console_of(answers, [] { EXPECT_EQ(gxcustom_main(&gxvalues), 1); });
    }

    // Runs the flow with these answers; gives its log at debug level.
    static std::string log_of(std::string_view answers) {
        const test_log log(".");
        set_loglvl(LOG_DEBUG);
        run(answers);
        return log.text();
    }

    [[nodiscard]] std::string cgi_question() const {
        return asked({"Webserver directory for cgi-files (This must be a valid script "
                      "directory)\n[" +
                      cgi_path + "]"});
    }

    [[nodiscard]] std::string images_question() const {
        return asked({"Directory for .gif, .jpg and .wav files (this must be an existing "
                      "directory)\n[" +
                      images + "]"});
    }

    // All that is shown up to the first menu when nothing but enter is pressed.
    [[nodiscard]] std::string beginning() const {
        return banner + cgi_question() + images_question() + menu;
    }

    // The backup of NAME.ini as BACKUP.ini.
    [[nodiscard]] std::string backup_of(const std::string &name, const std::string &backup) const {
        const std::string path = cgi_path + "/" + backup + ".ini";
        return "\nBacking up origionals.\nA copy of your " + name + ".ini file has been saved as " +
               path + "\n" + path + " copied\n";
    }

    [[nodiscard]] std::string backup_messages() const { return backup_of("kestrel", "kest_old"); }

    static constexpr const char *installed_ini = "domain example.com\n"
                                                 "set background old.jpg\n"
                                                 "body_add Goodbye\n"
                                                 "vlimg /vlimg\n";

    const std::string banner =
        "Customise\n" + dashes +
        R"(Please answer the following questions so I can customize kestrel templates
Notes: Defaults are shown [thus], just press enter to accept default
       Type 'q' then press enter to quit at anytime
       Type '?' then press enter at any time for help on a particular question
       All directory names must be entered from the root
)" + dashes;
    const std::string cgi_path = scratch.path("cgi");
    const std::string images = scratch.path("img");
};

TEST_F(Customise, RefusesTheTemplateSetProducts) {
    for (const char *name : {"tanager", "osprey"}) {
        set_answer(&gxvalues, D_PROD_NAME, name);
        EXPECT_EQ(run(""), "Customise\n" + dashes +
                               "Sorry at present this utility does not customise Tanager or "
                               "Osprey templates\n");
        EXPECT_STREQ(ini_value_num(&gxvalues, D_ACTION), "custom");
    }
}

TEST_F(Customise, RefusesThemUnderTheirExactNamesOnly) {
    set_answer(&gxvalues, D_PROD_NAME, "Tanager");
    EXPECT_EQ(run("\n\n5\n").substr(90, 74),
              "Please answer the following questions so I can customize Tanager templates");
}

TEST_F(Customise, QuittingAtOnceMakesTheBackup) {
    EXPECT_EQ(run("\n\n5\n"), beginning() + backup_messages());
    EXPECT_EQ(read_file("cgi/kest_old.ini"), installed_ini);
    EXPECT_EQ(read_file("(null)/kestrel.ini"), installed_ini);
    EXPECT_STREQ(ini_value_num(&gxvalues, D_ACTION), "custom");
    EXPECT_STREQ(ini_value_num(&gxvalues, D_DOMAIN), "example.com");
}

TEST_F(Customise, AnInvalidChoiceMakesTheBackupOnce) {
    EXPECT_EQ(run("\n\n6\n0\nx\n-1\nyes\n5\n"),
              beginning() + backup_messages() + refused + refused + refused + refused + refused);
    EXPECT_EQ(read_file("cgi/kest_old.ini"), installed_ini);
}

TEST_F(Customise, AnOperationChosenFirstMakesNoBackupNowOrLater) {
    EXPECT_EQ(run("\n\n4\nSee you\n[save]\n\n6\n5\n"),
              beginning() + footer_help + asked({"Line 0:[Goodbye]", "Line 1:", changes}) +
                  complete + refused);
    EXPECT_FALSE(is_there("cgi/kest_old.ini"));
    EXPECT_EQ(read_file("(null)/kestrel.ini"), "domain example.com\n"
                                               "vlimg /vlimg\n"
                                               "set background old.jpg\n"
                                               "body_add See you\n");
    EXPECT_EQ(read_file("cgi/kestrel.ini"), installed_ini);
}

TEST_F(Customise, AFailedBackupIsTriedAgain) {
    std::filesystem::create_directory("cgi/kest_old.ini");
    const std::string backup = cgi_path + "/kest_old.ini";
    const std::string failure = "\nBacking up origionals\n" + dashes + "Error: Can't write to \"" +
                                backup +
                                "\": Is a directory\n\n"
                                "Error: your kestrel.ini file has not been saved\n" +
                                backup + " not copied\n";
    EXPECT_EQ(run("\n\n6\n5\n"), beginning() + failure + refused + failure);
}

TEST_F(Customise, EveryOperationRewritesTheIni) {
    const std::string logo = scratch.path("new.gif");
    const std::string background = scratch.path("new.jpg");
    write_file(logo, "a logo");
    write_file(background, "a background");

    EXPECT_EQ(run("\n\n1\n" + background + "\n2\n" + logo +
                  "\n3\nHello\n\n\n\n\n\n\n\n\n\n\n\n4\n\n[save]\n\n5\n"),
              beginning() + image_question("background", "images/old.jpg") + "." + complete +
                  image_question("logo", "images/kestrel.gif") + "." + complete + messages_help +
                  asked({"Enter message0 ", "Enter message1 ", changes}) + urls_help +
                  asked({"Enter url for message Hello ", changes}) + property_questions() +
                  complete + footer_help + asked({"Line 0:[Goodbye]", "Line 1:", changes}) +
                  complete);
    EXPECT_EQ(read_file("images/new.jpg"), "a background");
    EXPECT_EQ(read_file("images/new.gif"), "a logo");
    EXPECT_EQ(read_file("(null)/kestrel.ini"),
              "domain example.com\n"
              "vlimg /vlimg\n"
              "set background new.jpg\n"
              "set logo new.gif\n"
              R"(set scrollmessage scrollmessage <applet code="Scrolltext.class" width = 80% )"
              R"(height = 40><param name="scrollmessage0" value="Hello"><param name="3DFrame" )"
              R"(value="0"><param name="Shadow" value="0"><param name="Scrolldirection" )"
              R"(value="0"><param name="ScrollDe)"
              " /\n"
              R"(lay" value="0"><param name="ScrollDelta" value="1"></applet>)"
              "\nbody_add Goodbye\n");
}

TEST_F(Customise, AFailedRewritingIsReportedAndTheMenuGoesOn) {
    std::filesystem::remove_all("(null)");
    EXPECT_TRUE(run("\n\n4\n[save]\n\n5\n")
                    .ends_with("Operation Complete\n"
                               "Error: Cannot find file (null)/kestrel.ini, No such file or "
                               "directory\n" +
                               menu));
}

TEST_F(Customise, AsksForTheProgramUntilItIsThere) {
    const std::string not_there =
        "\ngxsetup cannot find a version of kestrel in this directory. If you\n"
        "have changed the name of the cgi, please enter the new name now. Otherwise" +
        asked({"please press enter to quit"});
    std::filesystem::rename("cgi/kestrel.cgi", "cgi/bird.cgi");
    std::filesystem::rename("cgi/kestrel.ini", "cgi/bird.ini");
    EXPECT_EQ(run("\nhawk\n\nbird.cgi\n\n5\n"), banner + cgi_question() + not_there + not_there +
                                                    asked({"please press enter to quit"}) +
                                                    images_question() + menu +
                                                    backup_of("bird", "bird_old"));
    EXPECT_STREQ(ini_value_num(&gxvalues, D_CGI_NAME), "bird");
}

TEST_F(Customise, GoesOnWithoutAnInstalledIni) {
    std::filesystem::remove("cgi/kestrel.ini");
    EXPECT_EQ(run("\n\n5\n"), beginning() + "\nBacking up origionalsError: Can't copy " + cgi_path +
                                  "/kestrel.ini: No such file or directory\n"
                                  "Error: your kestrel.ini file has not been saved\n" +
                                  cgi_path + "/kest_old.ini not copied\n");
}

TEST_F(Customise, StoresTheDirectoriesThatAreAnswered) {
    std::filesystem::create_directories("other/img");
    std::filesystem::rename("cgi", "other/cgi");
    const std::string other = scratch.path("other/cgi");
    run(other + "\n" + scratch.path("other/img") + "\n5\n");
    EXPECT_EQ(ini_value_num(&gxvalues, D_CGI_PATH), other);
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
              beginning() + backup_messages());
}

} // namespace
