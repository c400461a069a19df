#include "customise/customise.h"

#include "core/log.h"
#include "files/operations.h"
#include "setup/answer_store.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"
#include "wizard/session.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

constexpr const char *rule =
    "-------------------------------------------------------------------------------\n";
constexpr const char *menu = "\nOptions:\n"
                             " 1 Modify background\n"
                             " 2 Modify logo\n"
                             " 3 Add / Modify scrolling advertisements\n"
                             " 4 Modify email footer\n"
                             " 5 Quit\n"
                             "\nWhat do you want to do ? ";
constexpr const char *invalid = "That is not a valid choice, please choose again\n";
constexpr const char *complete = "Operation Complete\n";

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
        return "\nWebserver directory for cgi-files (This must be a valid script directory)\n[" +
               cgi_path + "]? ";
    }

    [[nodiscard]] std::string images_question() const {
        return "\nDirectory for .gif, .jpg and .wav files (this must be an existing directory)\n[" +
               images + "]? ";
    }

    // All that is shown before the menu when nothing but enter is pressed.
    [[nodiscard]] std::string beginning() const {
        return banner + cgi_question() + images_question();
    }

    [[nodiscard]] std::string backup_messages() const {
        const std::string backup = cgi_path + "/kest_old.ini";
        return "\nBacking up origionals."
               "\nA copy of your kestrel.ini file has been saved as " +
               backup + "\n" + backup + " copied\n";
    }

    static constexpr const char *installed_ini = "domain example.com\n"
                                                 "set background old.jpg\n"
                                                 "body_add Goodbye\n"
                                                 "vlimg /vlimg\n";

    const std::string banner =
        std::string("Customise\n") + rule +
        "Please answer the following questions so I can customize kestrel templates\n"
        "Notes: Defaults are shown [thus], just press enter to accept default\n"
        "       Type 'q' then press enter to quit at anytime\n"
        "       Type '?' then press enter at any time for help on a particular question\n"
        "       All directory names must be entered from the root\n" +
        rule;
    const std::string cgi_path = scratch.path("cgi");
    const std::string images = scratch.path("img");
};

TEST_F(Customise, RefusesTheTemplateSetProducts) {
    for (const char *name : {"tanager", "osprey"}) {
        set_answer(&gxvalues, D_PROD_NAME, name);
        EXPECT_EQ(run(""), std::string("Customise\n") + rule +
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
    EXPECT_EQ(run("\n\n5\n"), beginning() + menu + backup_messages());

    EXPECT_EQ(read_file("cgi/kest_old.ini"), installed_ini);
    EXPECT_EQ(read_file("(null)/kestrel.ini"), installed_ini);
    EXPECT_STREQ(ini_value_num(&gxvalues, D_ACTION), "custom");
    EXPECT_STREQ(ini_value_num(&gxvalues, D_DOMAIN), "example.com");
}

TEST_F(Customise, AnInvalidChoiceMakesTheBackupOnce) {
    EXPECT_EQ(run("\n\n6\n0\nx\n-1\nyes\n5\n"), beginning() + menu + backup_messages() + invalid +
                                                    menu + invalid + menu + invalid + menu +
                                                    invalid + menu + invalid + menu);
    EXPECT_EQ(read_file("cgi/kest_old.ini"), installed_ini);
}

TEST_F(Customise, AnOperationChosenFirstMakesNoBackupNowOrLater) {
    EXPECT_EQ(run("\n\n4\nSee you\n[save]\n\n6\n5\n").substr(beginning().size()),
              menu +
                  std::string("\n\n\n"
                              "NOTE : This footer will be added to the end of every message "
                              "sent.\n"
                              "->Defaults are shown [thus], if no default is given a <return> "
                              "will\n"
                              "  insert a blank line.\n"
                              "->Otherwise type [ins] to insert a blank line, [del] to remove a "
                              "line,\n"
                              "  type [save] to save & exit, type [remove] to remove all Email "
                              "footers.\n"
                              "\nLine 0:[Goodbye]? "
                              "\nLine 1:? "
                              "\nDo you want to change any of your answers [NO]? ") +
                  complete + menu + invalid + menu);

    EXPECT_FALSE(is_there("cgi/kest_old.ini"));
    EXPECT_EQ(read_file("(null)/kestrel.ini"), "domain example.com\n"
                                               "vlimg /vlimg\n"
                                               "set background old.jpg\n"
                                               "body_add See you\n");
    EXPECT_EQ(read_file("cgi/kestrel.ini"), installed_ini);
}

TEST_F(Customise, AFailedBackupIsTriedAgainAtTheNextChoiceThatIsNoOperation) {
    std::filesystem::create_directory("cgi/kest_old.ini");
    const std::string backup = cgi_path + "/kest_old.ini";
    const std::string failure = "\nBacking up origionals\n" + std::string(rule) +
                                "Error: Can't write to \"" + backup +
                                "\": Is a directory\n\n"
                                "Error: your kestrel.ini file has not been saved\n" +
                                backup + " not copied\n";

    EXPECT_EQ(run("\n\n6\n5\n"), beginning() + menu + failure + invalid + menu + failure);
}

TEST_F(Customise, EveryOperationRewritesTheIni) {
    const std::string logo = scratch.path("new.gif");
    const std::string background = scratch.path("new.jpg");
    write_file(logo, "a logo");
    write_file(background, "a background");

    const std::string shown = run("\n\n1\n" + background + "\n2\n" + logo +
                                  "\n3\nHello\n\n\n\n\n\n\n\n\n\n\n\n4\n\n[save]\n\n5\n");

    EXPECT_EQ(shown,
              beginning() + menu +
                  "\nPlease enter the full path to the file you want as a background\n"
                  "(this image will be copied to the images directory)\n"
                  "[images/old.jpg]? ." +
                  complete + menu +
                  "\nPlease enter the full path to the file you want as a logo\n"
                  "(this image will be copied to the images directory)\n"
                  "[images/kestrel.gif]? ." +
                  complete + menu +
                  "\n(Press enter to continue, or \"[del]\" to delete a message.)"
                  "\nEnter message0 ? "
                  "\nEnter message1 ? "
                  "\nDo you want to change any of your answers [NO]? "
                  "\n(Press enter to continue, or \"[del]\" to delete a url.)"
                  "\nEnter url for message Hello ? "
                  "\nDo you want to change any of your answers [NO]? "
                  "\nEnter height of scrollbox (value or percentage) [40]? "
                  "\nEnter width of scrollbox (value or percentage) [80%]? "
                  "\nThree dimensional [NO]? "
                  "\nAdd shadow to text [NO]? "
                  "\nScroll direction (up or left) [left]? "
                  "\nScroll delay (between messages) [0]? "
                  "\nScroll speed (pixels) [1]? " +
                  complete + menu +
                  "\n\n\n"
                  "NOTE : This footer will be added to the end of every message sent.\n"
                  "->Defaults are shown [thus], if no default is given a <return> will\n"
                  "  insert a blank line.\n"
                  "->Otherwise type [ins] to insert a blank line, [del] to remove a line,\n"
                  "  type [save] to save & exit, type [remove] to remove all Email footers.\n"
                  "\nLine 0:[Goodbye]? "
                  "\nLine 1:? "
                  "\nDo you want to change any of your answers [NO]? " +
                  complete + menu);
    EXPECT_EQ(read_file("images/new.jpg"), "a background");
    EXPECT_EQ(read_file("images/new.gif"), "a logo");
    EXPECT_EQ(
        read_file("(null)/kestrel.ini"),
        "domain example.com\n"
        "vlimg /vlimg\n"
        "set background new.jpg\n"
        "set logo new.gif\n"
        "set scrollmessage scrollmessage <applet code=\"Scrolltext.class\" width = 80% height "
        "= 40><param name=\"scrollmessage0\" value=\"Hello\"><param name=\"3DFrame\" "
        "value=\"0\"><param name=\"Shadow\" value=\"0\"><param name=\"Scrolldirection\" "
        "value=\"0\"><param name=\"ScrollDe /\n"
        "lay\" value=\"0\"><param name=\"ScrollDelta\" value=\"1\"></applet>\n"
        "body_add Goodbye\n");
}

TEST_F(Customise, AFailedRewritingIsReportedAndTheMenuGoesOn) {
    std::filesystem::remove_all("(null)");

    EXPECT_TRUE(run("\n\n4\n[save]\n\n5\n")
                    .ends_with("Operation Complete\n"
                               "Error: Cannot find file (null)/kestrel.ini, No such file or "
                               "directory\n" +
                               std::string(menu)));
}

TEST_F(Customise, AsksForTheProgramUntilItIsThere) {
    const std::string not_there =
        "\ngxsetup cannot find a version of kestrel in this directory. If you\n"
        "have changed the name of the cgi, please enter the new name now. Otherwise"
        "\nplease press enter to quit? ";
    std::filesystem::rename("cgi/kestrel.cgi", "cgi/bird.cgi");
    std::filesystem::rename("cgi/kestrel.ini", "cgi/bird.ini");

    EXPECT_EQ(run("\nhawk\n\nbird.cgi\n\n5\n"),
              banner + cgi_question() + not_there + not_there + "\nplease press enter to quit? " +
                  images_question() + menu +
                  "\nBacking up origionals."
                  "\nA copy of your bird.ini file has been saved as " +
                  cgi_path + "/bird_old.ini\n" + cgi_path + "/bird_old.ini copied\n");
    EXPECT_STREQ(ini_value_num(&gxvalues, D_CGI_NAME), "bird");
}

TEST_F(Customise, GoesOnWithoutAnInstalledIni) {
    std::filesystem::remove("cgi/kestrel.ini");

    EXPECT_EQ(run("\n\n5\n"), beginning() + menu + "\nBacking up origionals" +
                                  "Error: Can't copy " + cgi_path +
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
              beginning() + menu + backup_messages());
}

} // namespace
