// Installing kestrel and plover, whose templates lie flat in tpl/.

#include "support/tree.h"
#include "support/wizard_run.h"
#include "wizard/screens.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

// Enter at every question of a session that installs, and at the pause behind it.
constexpr const char *enter_throughout = "\n\n\n\n\n\n\n\n\n\n\n\n\n";

constexpr const char *kestrel_questions =
    "\n"
    "Directory for templates [@/spool/kestrel]? "
    "@/spool/kestrel does not exist... gxsetup will create it\n"
    "\n"
    "\n"
    "Directory for .gif, .jpg and .wav files\n"
    "[@/html/vlimg]? "
    "@/html/vlimg does not exist... gxsetup will create it\n"
    "\n"
    "\n"
    "Relative URL for HTML references to these images\n"
    "[/vlimg]? "
    "\n"
    "\n"
    "What is your domain name [example.com]? "
    "\n"
    "What is the name of your pop host [mail.example.com]? "
    "\n"
    "What is the name of your smtp host [mail.example.com]? "
    "\n"
    "Do you want to install/upgrade the merlin cgi [NO]? "
    "\n"
    "\n"
    "-------------------------------------------------------------------------------\n"
    "gxsetup is ready to install kestrel, to version 3.2a\n"
    "using the following answers:\n"
    "\n"
    "Directories\n"
    "webserver directory: @/cgi-bin\n"
    "images directory:    @/html/vlimg\n"
    "templates directory: @/spool/kestrel\n"
    "ini file settings\n"
    "pop host:            mail.example.com\n"
    "smtp host:           mail.example.com\n"
    "domain name:         example.com\n"
    "relative images URL: /vlimg\n"
    "\n"
    "\n"
    "Do you want to change any of your answers [NO]? ";

constexpr const char *kestrel_copies = "\n"
                                       "Please wait while gxsetup installs kestrel\n"
                                       "\n"
                                       "Copying template files........................\n"
                                       "Copying graphic and wav files...\n"
                                       "Copying VBS and JS files..\n"
                                       "Copying cgi files.\n"
                                       "Creating kestrel.ini file.";

TEST(InstallKestrel, EnterThroughoutHoldsThisDialogue) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(run.transcript, first_question("kestrel") + kestrel_questions + kestrel_copies +
                                  outcome("@/spool/kestrel") +
                                  "Copying original template files..\n"
                                  "Copy complete.\n"
                                  "\n"
                                  "Shall I delete the temporary files [YES]? "
                                  "\n"
                                  "Deleting temporary files................." +
                                  farewell("kestrel", "http://example.com/cgi-bin/kestrel.cgi"));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST(InstallKestrel, EveryFileIsInPlaceWithItsMode) {
    const world host("kestrel");
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n");
    EXPECT_EQ(tree_of(host, "html"), "0755 html/vlimg/\n"
                                     "0660 html/vlimg/back.jpg \"back picture\"\n"
                                     "0660 html/vlimg/bell.wav \"bell sound\"\n"
                                     "0660 html/vlimg/logo.gif \"logo picture\"\n"
                                     "0660 html/vlimg/menu.js \"menu script\"\n"
                                     "0660 html/vlimg/menu.vbs \"menu script too\"\n");
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n"
                                      "0660 spool/kestrel/back.jpg \"back picture\"\n"
                                      "0660 spool/kestrel/bell.wav \"bell sound\"\n"
                                      "0660 spool/kestrel/gxdflt.dat\n"
                                      "0770 spool/kestrel/gxsetup \"the setup program\"\n"
                                      "0660 spool/kestrel/gxsetup.dat\n"
                                      "0660 spool/kestrel/gxsetup.log\n"
                                      "0660 spool/kestrel/gxsetup1.log \"\"\n"
                                      "0660 spool/kestrel/head.tpl \"head template\"\n"
                                      "0660 spool/kestrel/index.tpl \"index template\"\n"
                                      "0770 spool/kestrel/kestrel.cgi\n"
                                      "0660 spool/kestrel/kestrel.ini\n"
                                      "0660 spool/kestrel/logo.gif \"logo picture\"\n"
                                      "0660 spool/kestrel/menu.js \"menu script\"\n"
                                      "0660 spool/kestrel/menu.vbs \"menu script too\"\n"
                                      "0660 spool/kestrel/merlin.ini\n"
                                      "0770 spool/kestrel/originals/\n"
                                      "0660 spool/kestrel/originals/head.tpl \"head template\"\n"
                                      "0660 spool/kestrel/originals/index.tpl \"index template\"\n"
                                      "0770 spool/kestrel/tpl/\n"
                                      "0660 spool/kestrel/tpl/back.jpg \"back picture\"\n"
                                      "0660 spool/kestrel/tpl/bell.wav \"bell sound\"\n"
                                      "0660 spool/kestrel/tpl/head.tpl \"head template\"\n"
                                      "0660 spool/kestrel/tpl/index.tpl \"index template\"\n"
                                      "0660 spool/kestrel/tpl/logo.gif \"logo picture\"\n"
                                      "0660 spool/kestrel/tpl/words.dat \"words\"\n"
                                      "0660 spool/kestrel/vsetup.hlp\n"
                                      "0770 spool/kestrel/wap/\n"
                                      "0770 spool/kestrel/wap/common/\n"
                                      "0660 spool/kestrel/wap/common/words.dat \"deck words\"\n"
                                      "0770 spool/kestrel/wap/wml/\n"
                                      "0660 spool/kestrel/wap/wml/index.tpl \"deck\"\n"
                                      "0660 spool/kestrel/words.dat \"words\"\n");
    EXPECT_EQ(tree_of(host, "dist"), "0644 dist/gxsetup \"the setup program\"\n"
                                     "0644 dist/gxsetup.dat\n"
                                     "0644 dist/gxsetup.log\n"
                                     "0644 dist/gxsetup1.log \"\"\n");
    EXPECT_EQ(read_file("spool/kestrel/kestrel.ini"), read_file("cgi-bin/kestrel.ini"));
    EXPECT_EQ(read_file("spool/kestrel/gxsetup.dat"), read_file("dist/gxsetup.dat"));
    EXPECT_EQ(read_file("spool/kestrel/kestrel.cgi"), read_file("cgi-bin/kestrel.cgi"));
}

TEST(InstallKestrel, EveryFileBelongsToTheOwnerOfInstalledFiles) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root may give files away";
    }
    const world host("kestrel");
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(not_owned("spool/kestrel"), "");
    EXPECT_EQ(not_owned("html/vlimg"), "");
    EXPECT_EQ(not_owned("cgi-bin"), "cgi-bin\n");
}

TEST(InstallKestrel, ModesDoNotDependOnTheUmask) {
    const world host("kestrel");
    run_wizard(host, {}, enter_throughout, {.prepare = [] { ::umask(077); }});
    const std::string html = tree_of(host, "html");
    EXPECT_EQ(html.substr(0, html.find('\n')), "0755 html/vlimg/");
    const std::string spool = tree_of(host, "spool");
    EXPECT_EQ(spool.substr(0, spool.find('\n')), "0770 spool/kestrel/");
    EXPECT_EQ(tree_of(host, "spool/kestrel/originals"),
              "0660 spool/kestrel/originals/head.tpl \"head template\"\n"
              "0660 spool/kestrel/originals/index.tpl \"index template\"\n");
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0600 cgi-bin/kestrel.ini\n");
}

TEST(InstallKestrel, IniHoldsTheSampleAndTheAnswers) {
    const world host("kestrel");
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(shown_file(host, "cgi-bin/kestrel.ini"),
              "# kestrel.ini created by gxsetup, version 3.0h for kestrel, version 3.2a\n"
              "\n"
              "# sample of kestrel\n"
              "timeout 30\n"
              "tpl_set 7 of the sample\n"
              "\n"
              "\n"
              "domain example.com\n"
              "pophost mail.example.com\n"
              "smtphost mail.example.com\n"
              "templates @/spool/kestrel\n"
              "workarea @/spool/kestrel\n"
              "vlimg /vlimg\n"
              "# Never change the next line, even if you change pophost\n"
              "original_pophost mail.example.com\n");
}

TEST(InstallKestrel, SavedAnswersOfferAnUpgradeNextTime) {
    const world host("kestrel");
    run_wizard(host, {}, enter_throughout);
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"), "# file written by gxsetup, version 3.0h\n"
                                                    "# library: INI v1.3c\n"
                                                    "\n"
                                                    "# Lines starting with # are comments\n"
                                                    "\n"
                                                    "cgi_path @/cgi-bin\n"
                                                    "vlimg_dir @/html/vlimg\n"
                                                    "templates @/spool/kestrel\n"
                                                    "op_system UNIX\n"
                                                    "action upgrade\n"
                                                    "vlimg /vlimg\n"
                                                    "pophost mail.example.com\n"
                                                    "smtphost mail.example.com\n"
                                                    "domain example.com\n"
                                                    "log_lvl INFO\n"
                                                    "wml_name merlin\n"
                                                    "wml FALSE\n"
                                                    "prod_name kestrel\n"
                                                    "manual @/spool/kestrel/manuals\n"
                                                    "cgi_name kestrel\n"
                                                    "version 3.2a\n"
                                                    "workarea @/spool/kestrel\n");
}

TEST(InstallKestrel, LogTellsEachStep) {
    const world host("kestrel");
    run_wizard(host, {}, enter_throughout);
    const std::string log =
        "Info:  * gxsetup, version 3.0h started *\n"
        "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini settings\n"
        "Info:  Installing kestrel, version 3.2a\n"
        "Error: INI: file {@/cgi-bin/kestrel.ini} could not be opened for ini settings\n"
        "Info:  @/spool/kestrel does not exist... gxsetup will create it\n"
        "Info:  @/html/vlimg does not exist... gxsetup will create it\n"
        "Info:  Copying gxsetup\n"
        "Info:  Copying kestrel.cgi\n"
        "Info:  created directory \"@/html/vlimg\"\n"
        "Info:  created directory \"@/spool/kestrel\"\n"
        "Info:  created directory \"@/spool/kestrel/originals\"\n"
        "Info:  created directory \"@/spool/kestrel/tpl\"\n"
        "Info:  created directory \"@/spool/kestrel/wap\"\n"
        "Info:  created directory \"@/spool/kestrel/wap/common\"\n"
        "Info:  created directory \"@/spool/kestrel/wap/wml\"\n"
        "Info:  Removed temporary files\n";
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), log + "Info:  install successful\n"
                                                         "Info:  * gxsetup finished *\n");
    // It was copied before the last lines were written.
    EXPECT_EQ(shown_log(host, "spool/kestrel/gxsetup.log"), log);
}

TEST(InstallPlover, WmlPartGetsAProgramAndAnIniOfItsOwn) {
    const world host("plover");
    const wizard_run run = run_wizard(host, {},
                                      "1\n\n\n\n/pictures\n192.0.2.7\n\nsmtp.site.test\n"
                                      "yes\nno\nno\nn\n\n");
    EXPECT_EQ(
        run.transcript,
        first_question("plover") +
            "\n"
            "Directory for templates [@/spool/plover]? "
            "@/spool/plover does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Directory for .gif, .jpg and .wav files\n"
            "[@/html/vlimg]? "
            "@/html/vlimg does not exist... gxsetup will create it\n"
            "\n"
            "\n"
            "Relative URL for HTML references to these images\n"
            "[/vlimg]? "
            "\n"
            "\n"
            "What is your domain name [example.com]? "
            "\n"
            "What is the name of your pop host [192.0.2.7]? "
            "\n"
            "What is the name of your smtp host [192.0.2.7]? "
            "\n"
            "Do you want to install/upgrade the merlin cgi [NO]? "
            "\n"
            "\n"
            "-------------------------------------------------------------------------------\n"
            "gxsetup is ready to install plover, to version 3.2a\n"
            "using the following answers:\n"
            "\n"
            "Directories\n"
            "webserver directory: @/cgi-bin\n"
            "images directory:    @/html/vlimg\n"
            "templates directory: @/spool/plover\n"
            "ini file settings\n"
            "pop host:            192.0.2.7\n"
            "smtp host:           smtp.site.test\n"
            "domain name:         192.0.2.7\n"
            "relative images URL: /pictures\n"
            "\n"
            "\n"
            "Do you want to change any of your answers [NO]? "
            "\n"
            "Please wait while gxsetup installs plover\n"
            "\n"
            "Copying template files........................\n"
            "Copying graphic and wav files...\n"
            "Copying VBS and JS files..\n"
            "Copying cgi files.\n"
            "Creating plover.ini file..\n"
            "Creating merlin.ini file." +
            outcome("@/spool/plover") +
            "\n"
            "Shall I delete the temporary files [YES]? " +
            farewell("plover", "http://192.0.2.7/cgi-bin/plover.cgi"));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/merlin.cgi\n"
                                        "0644 cgi-bin/merlin.ini\n"
                                        "0770 cgi-bin/plover.cgi\n"
                                        "0644 cgi-bin/plover.ini\n");
    EXPECT_EQ(read_file("cgi-bin/merlin.cgi"), read_file("dist/plover.cgi"));
    EXPECT_EQ(shown_file(host, "cgi-bin/plover.ini"),
              "# plover.ini created by gxsetup, version 3.0h for plover, version 3.2a\n"
              "\n"
              "# sample of plover\n"
              "timeout 30\n"
              "tpl_set 7 of the sample\n"
              "\n"
              "\n"
              "domain 192.0.2.7\n"
              "pophost 192.0.2.7\n"
              "smtphost smtp.site.test\n"
              "templates @/spool/plover\n"
              "workarea @/spool/plover\n"
              "vlimg /pictures\n"
              "# Never change the next line, even if you change pophost\n"
              "original_pophost 192.0.2.7\n");
    EXPECT_EQ(shown_file(host, "cgi-bin/merlin.ini"),
              "# merlin.ini created by gxsetup, version 3.0h for merlin, version 3.2a\n"
              "\n"
              "# sample of merlin\n"
              "deck 12\n"
              "\n"
              "\n"
              "domain 192.0.2.7\n"
              "pophost 192.0.2.7\n"
              "smtphost smtp.site.test\n"
              "templates @/spool/plover\n"
              "workarea @/spool/plover\n"
              "vlimg /pictures\n"
              "# Never change the next line, even if you change pophost\n"
              "original_pophost 192.0.2.7\n");
    EXPECT_EQ(shown_file(host, "dist/gxsetup.dat"),
              "# file written by gxsetup, version 3.0h\n"
              "# library: INI v1.3c\n"
              "\n"
              "# Lines starting with # are comments\n"
              "\n"
              "cgi_path @/cgi-bin\n"
              "vlimg_dir @/html/vlimg\n"
              "templates @/spool/plover\n"
              "op_system UNIX\n"
              "action upgrade\n"
              "vlimg /pictures\n"
              "pophost 192.0.2.7\n"
              "smtphost smtp.site.test\n"
              "domain 192.0.2.7\n"
              "log_lvl INFO\n"
              "wml_name merlin\n"
              "wml TRUE\n"
              "prod_name plover\n"
              "manual @/spool/plover/manuals\n"
              "cgi_name plover\n"
              "version 3.2a\n"
              "workarea @/spool/plover\n"
              "install_dir @/spool/plover\n"
              "wap_tpl_set 1 @/spool/plover/wml /pictures/wml wml Set\n"
              "wap_templates @/spool/plover/wml\n"
              "wap_vlimg /pictures/wml\n");
}

TEST(InstallPlover, DecliningBothOffersLeavesTheDistributionAndNoOriginals) {
    const world host("plover");
    run_wizard(host, {}, "1\n\n\n\n\n\n\n\n\n\nno\nno\n\n");
    EXPECT_FALSE(is_there("spool/plover/originals"));
    EXPECT_EQ(tree_of(host, "dist"), "0644 dist/gxdflt.dat\n"
                                     "0644 dist/gxsetup \"the setup program\"\n"
                                     "0644 dist/gxsetup.dat\n"
                                     "0644 dist/gxsetup.log\n"
                                     "0644 dist/gxsetup1.log \"\"\n"
                                     "0644 dist/menu.js \"menu script\"\n"
                                     "0644 dist/menu.vbs \"menu script too\"\n"
                                     "0644 dist/merlin.ini\n"
                                     "0755 dist/plover.cgi\n"
                                     "0644 dist/plover.ini\n"
                                     "0755 dist/tpl/\n"
                                     "0644 dist/tpl/back.jpg \"back picture\"\n"
                                     "0644 dist/tpl/bell.wav \"bell sound\"\n"
                                     "0644 dist/tpl/head.tpl \"head template\"\n"
                                     "0644 dist/tpl/index.tpl \"index template\"\n"
                                     "0644 dist/tpl/logo.gif \"logo picture\"\n"
                                     "0644 dist/tpl/words.dat \"words\"\n"
                                     "0644 dist/vsetup.hlp\n"
                                     "0755 dist/wap/\n"
                                     "0755 dist/wap/common/\n"
                                     "0644 dist/wap/common/words.dat \"deck words\"\n"
                                     "0755 dist/wap/wml/\n"
                                     "0644 dist/wap/wml/index.tpl \"deck\"\n");
}

} // namespace
