// Installing tanager and osprey, whose templates come in sets.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

// Enter wherever the default lies in the world, up to the WML question.
constexpr const char *questions_without_wml = "1\n\n\n\n\n@/html/vlimg\n\n\n\n\n\n";

const std::string tanager_questions =
    "\n"
    "Directory for templates [@/spool/tanager]? "
    "@/spool/tanager does not exist... gxsetup will create it\n"
    "\n"
    "\n"
    "Directory for manual files [@/spool/tanager/manuals]? "
    "@/spool/tanager/manuals does not exist... gxsetup will create it\n"
    "\n"
    "\n"
    "Directory for bulletin files [@/spool/tanager/bulletins]? "
    "@/spool/tanager/bulletins does not exist... gxsetup will create it\n"
    "\n"
    "\n"
    "Directory for .gif, .jpg and .wav files\n"
    "[/home/httpd/html/vlimg/imap]? "
    "@/html/vlimg does not exist... gxsetup will create it\n"
    "\n"
    "\n"
    "Relative URL for HTML references to these images\n"
    "[/vlimg]? "
    "\n"
    "\n"
    "What is your domain name [example.com]? "
    "\n"
    "What is the name of your imap host [mail.example.com]? "
    "\n"
    "Do you want to restrict the IMAP hosts users can login to?[no]? "
    "\n"
    "What is the name of your smtp host [mail.example.com]? "
    "\n"
    "Do you want to install/upgrade the merlin cgi [NO]? "
    "\n"
    "\n"
    "-------------------------------------------------------------------------------\n"
    "gxsetup is ready to install tanager, to version 3.2a\n"
    "using the following answers:\n"
    "\n"
    "Directories\n"
    "webserver directory: @/cgi-bin\n"
    "images directory:    @/html/vlimg\n"
    "templates directory: @/spool/tanager\n"
    "manuals directory:   @/spool/tanager/manuals\n"
    "\n"
    "ini file settings\n"
    "imap host:           mail.example.com\n"
    "smtp host:           mail.example.com\n"
    "domain name:         example.com\n"
    "relative images URL: /vlimg\n"
    "\n"
    "\n"
    "Do you want to change any of your answers [NO]? "
    "\n"
    "Please wait while gxsetup installs tanager\n";

TEST(InstallTanager, ShowsAndCopiesTheProgramTwice) {
    const world host("tanager");
    const wizard_run run = run_wizard(host, {}, std::string(questions_without_wml) + "\n\n\n\n\n");
    EXPECT_EQ(run.transcript, first_question("tanager") + tanager_questions +
                                  "\n"
                                  "Copying template files.......\n"
                                  "Copying graphic and wav files........\n"
                                  "Copying cgi files.\n"
                                  "Copying manual files.\n"
                                  "Copying cgi files.\n"
                                  "Creating tanager.ini file." +
                                  outcome("@/spool/tanager") +
                                  "Copying original template files.......\n"
                                  "Copy complete.\n"
                                  "\n"
                                  "Shall I delete the temporary files [YES]? "
                                  "\n"
                                  "Deleting temporary files.........................." +
                                  farewell("tanager", "http://example.com/cgi-bin/tanager.cgi"));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(InstallTanager, SetsAndCommonFilesAreInPlaceWithTheirModes) {
    const world host("tanager");
    run_wizard(host, {}, std::string(questions_without_wml) + "\n\n\n\n\n");
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/tanager.cgi\n"
                                        "0644 cgi-bin/tanager.ini\n");
    EXPECT_EQ(tree_of(host, "html"), "0755 html/vlimg/\n"
                                     "0770 html/vlimg/blue/\n"
                                     "0660 html/vlimg/blue/bell.wav \"bell sound\"\n"
                                     "0660 html/vlimg/blue/logo.gif \"blue logo\"\n"
                                     "0770 html/vlimg/marble/\n"
                                     "0660 html/vlimg/marble/bell.wav \"bell sound\"\n"
                                     "0660 html/vlimg/marble/logo.gif \"marble logo\"\n");
    EXPECT_EQ(tree_of(host, "spool"),
              "0770 spool/tanager/\n"
              "0770 spool/tanager/blue/\n"
              "0660 spool/tanager/blue/head.tpl \"common head\"\n"
              "0660 spool/tanager/blue/index.tpl \"blue index\"\n"
              "0660 spool/tanager/blue/words.dat \"words\"\n"
              "0770 spool/tanager/bulletins/\n"
              "0660 spool/tanager/gxsetup.dat\n"
              "0660 spool/tanager/gxsetup.log\n"
              "0770 spool/tanager/img/\n"
              "0770 spool/tanager/img/blue/\n"
              "0660 spool/tanager/img/blue/bell.wav \"bell sound\"\n"
              "0660 spool/tanager/img/blue/logo.gif \"blue logo\"\n"
              "0770 spool/tanager/img/marble/\n"
              "0660 spool/tanager/img/marble/bell.wav \"bell sound\"\n"
              "0660 spool/tanager/img/marble/logo.gif \"marble logo\"\n"
              "0770 spool/tanager/manuals/\n"
              "0660 spool/tanager/manuals/index.html \"manual\"\n"
              "0770 spool/tanager/marble/\n"
              "0660 spool/tanager/marble/head.tpl \"common head\"\n"
              "0660 spool/tanager/marble/index.tpl \"marble index\"\n"
              "0660 spool/tanager/marble/tanager.ini\n"
              "0660 spool/tanager/marble/words.dat \"words\"\n"
              "0770 spool/tanager/originals/\n"
              "0770 spool/tanager/originals/tpl/\n"
              "0770 spool/tanager/originals/tpl/blue/\n"
              "0660 spool/tanager/originals/tpl/blue/index.tpl \"blue index\"\n"
              "0770 spool/tanager/originals/tpl/common/\n"
              "0660 spool/tanager/originals/tpl/common/head.tpl \"common head\"\n"
              "0660 spool/tanager/originals/tpl/common/words.dat \"words\"\n"
              "0770 spool/tanager/originals/tpl/marble/\n"
              "0660 spool/tanager/originals/tpl/marble/head.tpl \"marble head\"\n"
              "0660 spool/tanager/originals/tpl/marble/index.tpl \"marble index\"\n"
              "0770 spool/tanager/originals/wap/\n"
              "0770 spool/tanager/originals/wap/common/\n"
              "0660 spool/tanager/originals/wap/common/words.dat \"deck words\"\n"
              "0770 spool/tanager/originals/wap/wml/\n"
              "0660 spool/tanager/originals/wap/wml/index.tpl \"deck\"\n");
    EXPECT_EQ(tree_of(host, "dist"), "0644 dist/gxsetup \"the setup program\"\n"
                                     "0644 dist/gxsetup.dat\n"
                                     "0644 dist/gxsetup.log\n"
                                     "0644 dist/gxsetup1.log \"\"\n");
    EXPECT_EQ(read_file("spool/tanager/marble/tanager.ini"), read_file("cgi-bin/tanager.ini"));
}

TEST(InstallTanager, EveryFileBelongsToTheOwnerOfInstalledFiles) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    const world host("tanager");
    run_wizard(host, {}, std::string(questions_without_wml) + "yes\n\n\n\n\n");
    EXPECT_EQ(not_owned("spool/tanager"), "");
    EXPECT_EQ(not_owned("html/vlimg"), "");
    EXPECT_EQ(not_owned("cgi-bin"), "cgi-bin\n");
}

TEST(InstallTanager, IniNamesTheImapHostAndTheDefaultSetFirst) {
    const world host("tanager");
    const std::string marble = set_number("dist/tpl", "marble");
    const std::string blue = set_number("dist/tpl", "blue");
    run_wizard(host, {}, std::string(questions_without_wml) + "\n\n\n\n\n");
    EXPECT_EQ(shown_file(host, "cgi-bin/tanager.ini"),
              "# tanager.ini created by gxsetup, version 3.0h for tanager, version 3.2a\n"
              "\n"
              "# sample of tanager\n"
              "timeout 30\n"
              "\n"
              "\n"
              "domain example.com\n"
              "imaphost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/tanager/marble\n"
              "workarea @/spool/tanager\n"
              "vlimg /vlimg/marble\n"
              "bulletin_path @/spool/tanager/bulletins\n"
              "tpl_set " +
                  marble +
                  " @/spool/tanager/marble /vlimg/marble marble Set\n"
                  "tpl_set " +
                  blue + " @/spool/tanager/blue /vlimg/blue blue Set\n");
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"),
              "# file written by gxsetup, version 3.0h\n"
              "# library: INI v1.3c\n"
              "\n"
              "# Lines starting with # are comments\n"
              "\n"
              "cgi_path @/cgi-bin\n"
              "vlimg_dir @/html/vlimg\n"
              "templates @/spool/tanager/marble\n"
              "op_system UNIX\n"
              "action upgrade\n"
              "vlimg /vlimg/marble\n"
              "imaphost mail.example.com\n"
              "smtphost mail.example.com\n"
              "domain example.com\n"
              "log_lvl INFO\n"
              "wml_name merlin\n"
              "wml FALSE\n"
              "prod_name tanager\n"
              "manual @/spool/tanager/manuals\n"
              "cgi_name tanager\n"
              "version 3.2a\n"
              "workarea @/spool/tanager\n"
              "bulletin_path @/spool/tanager/bulletins\n"
              "install_dir @/spool/tanager\n"
              "tpl_set " +
                  marble +
                  " @/spool/tanager/marble /vlimg/marble marble Set\n"
                  "tpl_set " +
                  blue + " @/spool/tanager/blue /vlimg/blue blue Set\n");
}

TEST(InstallTanager, LogTellsEachStep) {
    const world host("tanager");
    run_wizard(host, {}, std::string(questions_without_wml) + "\n\n\n\n\n");
    EXPECT_EQ(
        shown_log(host, "dist/gxsetup.log"),
        "Info:  * gxsetup, version 3.0h started *\n"
        "Error: INI: file {@/spool/tanager/gxsetup.dat} could not be opened for ini settings\n"
        "Info:  Installing tanager, version 3.2a\n"
        "Error: INI: file {@/cgi-bin/tanager.ini} could not be opened for ini settings\n"
        "Info:  @/spool/tanager does not exist... gxsetup will create it\n"
        "Info:  @/spool/tanager/manuals does not exist... gxsetup will create it\n"
        "Info:  @/spool/tanager/bulletins does not exist... gxsetup will create it\n"
        "Info:  @/html/vlimg does not exist... gxsetup will create it\n"
        "Info:  Can't create \"@/spool/tanager/originals\": directory already exists.\n"
        "Info:  created directory \"@/html/vlimg\"\n"
        "Info:  created directory \"@/html/vlimg/blue\"\n"
        "Info:  created directory \"@/html/vlimg/marble\"\n"
        "Info:  created directory \"@/spool/tanager\"\n"
        "Info:  created directory \"@/spool/tanager/blue\"\n"
        "Info:  created directory \"@/spool/tanager/bulletins\"\n"
        "Info:  created directory \"@/spool/tanager/img\"\n"
        "Info:  created directory \"@/spool/tanager/img/blue\"\n"
        "Info:  created directory \"@/spool/tanager/img/marble\"\n"
        "Info:  created directory \"@/spool/tanager/manuals\"\n"
        "Info:  created directory \"@/spool/tanager/marble\"\n"
        "Info:  created directory \"@/spool/tanager/originals\"\n"
        "Info:  created directory \"@/spool/tanager/originals/tpl\"\n"
        "Info:  created directory \"@/spool/tanager/originals/tpl/blue\"\n"
        "Info:  created directory \"@/spool/tanager/originals/tpl/common\"\n"
        "Info:  created directory \"@/spool/tanager/originals/tpl/marble\"\n"
        "Info:  created directory \"@/spool/tanager/originals/wap\"\n"
        "Info:  created directory \"@/spool/tanager/originals/wap/common\"\n"
        "Info:  created directory \"@/spool/tanager/originals/wap/wml\"\n"
        "Info:  Removed temporary files\n"
        "Info:  install successful\n"
        "Info:  * gxsetup finished *\n");
}

TEST(InstallTanager, DebugLogNamesEachStep) {
    const world host("tanager");
    run_wizard(host, {"-debug"}, std::string(questions_without_wml) + "\n\n\n\n\n");
    EXPECT_EQ(shown_log_without(host, "dist/gxsetup.log",
                                {"INI: ", "DoCopy[", "Wild finding", "Find all files",
                                 "created directory", "directory already exists"}),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Info:  Logging set to DEBUG.\n"
              "Debug: Loading gxvalues defaults\n"
              "Debug: Loading gxvalues from default file\n"
              "Debug: Forming product name\n"
              "Debug: Building template directory\n"
              "Debug: loading gxsetup.dat from templates directory\n"
              "Debug: Getting cgi_name\n"
              "Debug: Getting version #\n"
              "Debug: Getting version from [./tanager.cgi -version >ver.txt]\n"
              "Debug: Case 1: Install product\n"
              "Info:  Installing tanager, version 3.2a\n"
              "Debug: Change replace ini to FALSE\n"
              "Debug: gxinstall_main()\n"
              "Debug: install questions\n"
              "Debug: CGI path\n"
              "Debug: Templates directory\n"
              "Info:  @/spool/tanager does not exist... gxsetup will create it\n"
              "Info:  @/spool/tanager/manuals does not exist... gxsetup will create it\n"
              "Info:  @/spool/tanager/bulletins does not exist... gxsetup will create it\n"
              "Debug: vlimg directory\n"
              "Info:  @/html/vlimg does not exist... gxsetup will create it\n"
              "Debug: ini questions\n"
              "Debug: WML Support?\n"
              "Debug: Action install\n"
              "Debug: Copying template files\n"
              "Debug: Copying graphic and wav files\n"
              "Debug: Copying cgi files\n"
              "Debug: Copying manual files\n"
              "Debug: Copying cgi files\n"
              "Debug: Creating ini file\n"
              "Debug: Copy originals\n"
              "Debug: Delete temp ?\n"
              "Info:  Removed temporary files\n"
              "Debug: Copy gxsetup.log\n"
              "Info:  install successful\n"
              "Info:  * gxsetup finished *\n"
              "Debug: Save gxvalues to default file\n"
              "Debug: Clear gxvalues\n");
}

TEST(InstallTanager, WmlPartPointsAtItsOwnSet) {
    const world host("tanager");
    const std::string marble = set_number("dist/tpl", "marble");
    const std::string blue = set_number("dist/tpl", "blue");
    const wizard_run run =
        run_wizard(host, {}, std::string(questions_without_wml) + "yes\n\nno\nno\n\n");
    EXPECT_EQ(run.transcript, first_question("tanager") + tanager_questions +
                                  "\n"
                                  "Copying template files.........\n"
                                  "Copying graphic and wav files........\n"
                                  "Copying cgi files.\n"
                                  "Copying manual files.\n"
                                  "Copying cgi files.\n"
                                  "Creating tanager.ini file..\n"
                                  "Creating merlin.ini file." +
                                  outcome("@/spool/tanager") +
                                  "\n"
                                  "Shall I delete the temporary files [YES]? " +
                                  farewell("tanager", "http://example.com/cgi-bin/tanager.cgi"));
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/merlin.cgi\n"
                                        "0644 cgi-bin/merlin.ini\n"
                                        "0770 cgi-bin/tanager.cgi\n"
                                        "0644 cgi-bin/tanager.ini\n");
    EXPECT_EQ(tree_of(host, "spool/tanager/wml"),
              "0660 spool/tanager/wml/index.tpl \"deck\"\n"
              "0660 spool/tanager/wml/words.dat \"deck words\"\n");
    EXPECT_TRUE(is_there("spool/tanager/marble/merlin.ini"));
    EXPECT_EQ(shown_file(host, "cgi-bin/merlin.ini"),
              "# merlin.ini created by gxsetup, version 3.0h for merlin, version 3.2a\n"
              "\n"
              "# sample of merlin\n"
              "deck 12\n"
              "\n"
              "\n"
              "domain example.com\n"
              "pophost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/tanager/wml\n"
              "workarea @/spool/tanager\n"
              "vlimg /vlimg/wml\n"
              "bulletin_path @/spool/tanager/bulletins\n"
              "tpl_set 1 @/spool/tanager/wml /vlimg/wml wml Set\n");
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"),
              "# file written by gxsetup, version 3.0h\n"
              "# library: INI v1.3c\n"
              "\n"
              "# Lines starting with # are comments\n"
              "\n"
              "cgi_path @/cgi-bin\n"
              "vlimg_dir @/html/vlimg\n"
              "templates @/spool/tanager/marble\n"
              "op_system UNIX\n"
              "action upgrade\n"
              "vlimg /vlimg/marble\n"
              "imaphost mail.example.com\n"
              "smtphost mail.example.com\n"
              "domain example.com\n"
              "log_lvl INFO\n"
              "wml_name merlin\n"
              "wml TRUE\n"
              "prod_name tanager\n"
              "manual @/spool/tanager/manuals\n"
              "cgi_name tanager\n"
              "version 3.2a\n"
              "workarea @/spool/tanager\n"
              "bulletin_path @/spool/tanager/bulletins\n"
              "install_dir @/spool/tanager\n"
              "tpl_set " +
                  marble +
                  " @/spool/tanager/marble /vlimg/marble marble Set\n"
                  "tpl_set " +
                  blue +
                  " @/spool/tanager/blue /vlimg/blue blue Set\n"
                  "wap_tpl_set 1 @/spool/tanager/wml /vlimg/wml wml Set\n"
                  "wap_templates @/spool/tanager/wml\n"
                  "wap_vlimg /vlimg/wml\n");
}

TEST(InstallOsprey, HostsThatUsersMayLogInToStandInBothInis) {
    const world host("osprey");
    const std::string marble = set_number("dist/tpl", "marble");
    const std::string blue = set_number("dist/tpl", "blue");
    const wizard_run run = run_wizard(host, {},
                                      "\n\n@/spool/mail\n@/html/manuals\n\n@/html/pictures\n/p\n"
                                      "site.test\npop.site.test\nY\n"
                                      "  one.test \t\n\n . \r\ntwo.test\n.\n"
                                      "\ny\n\nno\nno\n\n");
    EXPECT_EQ(
        run.transcript,
        first_question("osprey") +
            "\n"
            "Directory for templates [@/spool/osprey]? "
            "@/spool/mail does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Directory for manual files [@/spool/mail/manuals]? "
            "@/html/manuals does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Directory for bulletin files [@/spool/mail/bulletins]? "
            "@/spool/mail/bulletins does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Directory for .gif, .jpg and .wav files\n"
            "[/home/httpd/html/vlimg/mail]? "
            "@/html/pictures does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Relative URL for HTML references to these images\n"
            "[/pictures]? "
            "\n"
            "\n"
            "What is your domain name [example.com]? "
            "\n"
            "What is the name of your pop host [mail.site.test]? "
            "\n"
            "Do you want to restrict the POP3 hosts users can login to?[no]? "
            "Enter a host and press enter, enter a . to finish\n"
            "\n"
            "What is the name of your smtp host [pop.site.test]? "
            "\n"
            "Do you want to install/upgrade the merlin cgi [NO]? "
            "\n"
            "\n"
            "-------------------------------------------------------------------------------\n"
            "gxsetup is ready to install osprey, to version 3.2a\n"
            "using the following answers:\n"
            "\n"
            "Directories\n"
            "webserver directory: @/cgi-bin\n"
            "images directory:    @/html/pictures\n"
            "templates directory: @/spool/mail\n"
            "ini file settings\n"
            "pop host:            pop.site.test\n"
            "smtp host:           pop.site.test\n"
            "domain name:         site.test\n"
            "relative images URL: /p\n"
            "\n"
            "\n"
            "Do you want to change any of your answers [NO]? "
            "\n"
            "Please wait while gxsetup installs osprey\n"
            "\n"
            "Copying template files.........\n"
            "Copying graphic and wav files........\n"
            "Copying cgi files.\n"
            "Copying manual files.\n"
            "Copying cgi files.\n"
            "Creating osprey.ini file..\n"
            "Creating merlin.ini file." +
            outcome("@/spool/mail") +
            "\n"
            "Shall I delete the temporary files [YES]? " +
            farewell("osprey", "http://site.test/cgi-bin/osprey.cgi"));
    EXPECT_EQ(shown_file(host, "cgi-bin/osprey.ini"),
              "# osprey.ini created by gxsetup, version 3.0h for osprey, version 3.2a\n"
              "\n"
              "# sample of osprey\n"
              "timeout 30\n"
              "\n"
              "\n"
              "domain site.test\n"
              "pophost pop.site.test\n"
              "smtphost pop.site.test\n"
              "templates @/spool/mail/marble\n"
              "workarea @/spool/mail\n"
              "vlimg /p/marble\n"
              "bulletin_path @/spool/mail/bulletins\n"
              "tpl_set " +
                  marble +
                  " @/spool/mail/marble /p/marble marble Set\n"
                  "tpl_set " +
                  blue +
                  " @/spool/mail/blue /p/blue blue Set\n"
                  "allow_host_login   one.test\n"
                  "allow_host_login  .\n"
                  "allow_host_login two.test\n");
    EXPECT_EQ(shown_file(host, "cgi-bin/merlin.ini"),
              "# merlin.ini created by gxsetup, version 3.0h for merlin, version 3.2a\n"
              "\n"
              "# sample of merlin\n"
              "deck 12\n"
              "\n"
              "\n"
              "domain site.test\n"
              "pophost pop.site.test\n"
              "smtphost pop.site.test\n"
              "templates @/spool/mail/wml\n"
              "workarea @/spool/mail\n"
              "vlimg /p/wml\n"
              "bulletin_path @/spool/mail/bulletins\n"
              "tpl_set 1 @/spool/mail/wml /p/wml wml Set\n"
              "allow_host_login   one.test\n"
              "allow_host_login  .\n"
              "allow_host_login two.test\n");
    const std::string saved = shown_file(host, "spool/mail/gxsetup.dat");
    EXPECT_NE(saved.find("\npophost pop.site.test\n"), std::string::npos);
    EXPECT_EQ(saved.find("imaphost"), std::string::npos);
}

TEST(InstallOsprey, ProgramIsExecutableAndModesAreTheRightOnes) {
    const world host("osprey");
    run_wizard(host, {}, std::string(questions_without_wml) + "\n\nno\nno\n\n");
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/osprey.cgi\n"
                                        "0644 cgi-bin/osprey.ini\n");
    EXPECT_FALSE(is_there("spool/osprey/wml"));
    EXPECT_FALSE(is_there("spool/osprey/originals"));
}

} // namespace
