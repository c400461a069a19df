#include "dialogue/questions.h"

#include <gtest/gtest.h>

namespace {

struct expected_row {
    int number;
    question_number name;
    const char *ask;
    const char *help;
    int dir_action;
};

constexpr expected_row expected_rows[] = {
    {0, D_CGI_Q, "Webserver directory for cgi-files (This must be a valid script directory)\n",
     "I_CGI_HELP", 1},
    {1, D_CGI2_Q,
     "Where are the cgi files\n(this will be a scripts or cgi directory setup for the webserver)\n",
     "R_DIR_HELP", 1},
    {2, D_SCGI_Q, "Suggested cgi path ", "S_DIR_HELP", 0},
    {3, D_VLIMG_Q,
     "\nWhere are the old graphics and wav files (this must be an existing directory)\n",
     "R_DIR_HELP", 1},
    {4, D_VLIMG2_Q, "Directory for .gif, .jpg and .wav files\n", "I_VLIMG_HELP", 3},
    {5, D_VLIMG3_Q, "Where are the .gif, .jpg and .wav files\n", "U_VLIMG_HELP", 3},
    {6, D_VLIMG4_Q, "Directory for %s image and wav files\n", "B_VLIMG_HELP", 1},
    {7, D_VLIMG5_Q,
     "Directory for .gif, .jpg and .wav files (this must be an existing directory)\n",
     "I_VLIMG_HELP", 1},
    {8, D_SVLIMG_Q, "Suggested image and wav file directory ", "S_DIR_HELP", 0},
    {9, D_TMPLTS_Q, "Where are your template files (this must be an existing directory)\n",
     "R_DIR_HELP", 1},
    {10, D_TMPLTS2_Q, "Directory for templates ", "I_TMPLTS_HELP", 3},
    {11, D_TMPLTS3_Q, "Directory for %s templates ", "B_TMPLTS_HELP", 1},
    {12, D_MANUAL_Q, "Directory for manual files ", "NO_HELP", 3},
    {13, D_BULLETIN_Q, "Directory for bulletin files ", "NO_HELP", 3},
    {14, D_STMPLTS_Q, "Suggested templates directory ", "S_DIR_HELP", 0},
    {15, D_BRAMBLE_Q, "Directory for Bramble templates ", "NO_HELP", 3},
    {16, D_WKAREA_Q, "\nWhere is your work area (this must be an existing directory)\n",
     "R_DIR_HELP", 3},
    {17, D_WKAREA2_Q, "Directory for %s workarea (user files) ", "B_WKAREA_HELP", 1},
    {18, YN_SWITCHU_Q, "Do you want to switch to the upgrade questions ", "NO_HELP", 0},
    {19, YN_CHDIR_Q, "Do you want to change the default suggested directories ", "S_DIR_HELP", 0},
    {20, YN_CHINI_Q, "Do you want to change the default suggested .ini settings ", "S_INI_HELP", 0},
    {21, YN_ORGTMP_Q, "Make a copy of the original templates to \"%s%coriginals\" %s",
     "ORG_CPY_HELP", 0},
    {22, YN_DELTEMP_Q, "Shall I delete the temporary files ", "DEL_TMP_HELP", 0},
    {23, YN_RCGI_Q, "Remove %s CGI files from %s ", "DEL_HELP", 0},
    {24, YN_RVLIMG_Q,
     "\nRemove all %s files from %s and all subdirectories\n(Warning: this may affect other Varnel "
     "Ltd. products) ",
     "DEL_HELP", 0},
    {25, YN_RUINFO_Q, "\nRemove all user information from %s ", "DEL_HELP", 0},
    {26, YN_RTMPLTS_Q, "\nRemove template files and subdirectories from %s %s", "DEL_HELP", 0},
    {27, YN_CHANS_Q, "Do you want to change any of your answers ", "SETUP_END_HELP", 0},
    {28, YN_RPLTMPLTS_Q, "Would you like to replace the old templates ", "KEEP_TMPLTS_HELP", 0},
    {29, YN_RPLINI_Q, "Do you want to replace the old .ini file ", "R_INI_HELP", 0},
    {30, YN_VIEWLIST_Q, "Do you want to view these categories now ", "VIEWLIST_HELP", 0},
    {31, YN_SAFE_Q,
     "Do you want to replace the templates that can be safely updated\n(category 1 templates)",
     "SAFE_HELP", 0},
    {32, YN_WML_Q, "Do you want to install/upgrade the %s cgi ", "WML_HELP", 0},
    {33, I_VER_Q, "Version", "NO_HELP", 0},
    {34, I_PROD_Q, "Product Name ", "NO_HELP", 0},
    {35, I_OPSYS_Q, "Operating System ", "NO_HELP", 0},
    {36, I_SDOM_Q, "Suggested domain name ", "S_INI_HELP", 0},
    {37, I_SPOP_Q, "Suggested pop host ", "S_INI_HELP", 0},
    {38, I_SIMAP_Q, "Suggested imap host", "S_INI_HELP", 0},
    {39, I_SSMTP_Q, "Suggested smtp host ", "S_INI_HELP", 0},
    {40, I_PROD2_Q, "What product am I installing ", "INIT_HELP", 0},
    {41, I_GXVER_Q, "What version of %s is it", "INIT_HELP", 0},
    {42, I_BVER_Q, "What version of Bramble is it", "INIT_HELP", 0},
    {43, I_MENU_Q, "What do you want to do ", "NO_HELP", 0},
    {44, I_URL_Q, "Relative URL for HTML references to these images\n", "URL_HELP", 0},
    {45, I_SWITCHI_Q, "install questions ", "NO_HELP", 0},
    {46, I_DOM_Q, "\nWhat is your domain name ", "INI_HELP", 0},
    {47, I_POP_Q, "What is the name of your pop host ", "INI_HELP", 0},
    {48, I_IMAP_Q, "What is the name of your imap host ", "INI_HELP", 0},
    {49, I_SMTP_Q, "What is the name of your smtp host ", "INI_HELP", 0},
    {50, I_ADMIN_MAIL_Q, "E-mail address for Bramble administrator ", "INI_HELP", 0},
    {51, I_CGI_NAME_Q, "CGI name %d %s ", "B_CGINAME_HELP", 0},
    {52, I_USERNAME_Q, "What username shall I use for the files and directories I create\n",
     "NO_HELP", 0},
    {53, I_TMPLT_SET_Q, "New templates set", "NO_HELP", 0},
    {54, I_TMPLT_VERS_Q, "New templates version", "NO_HELP", 0},
    {55, I_ENTER_Q, "please press enter to quit", "NO_HELP", 0},
    {56, I_DFLT_TPL_SET, "Which set do you want to use as a default ", "NO_HELP", 0},
    {57, I_ALLOW_HOST, "Do you want to restrict the %s hosts users can login to?", "NO_HELP", 0},
    {58, F_DFLTFILE_Q, "Enter file to store defaults in ", "S_FILE_HELP", 0},
    {59, C_IMGFILE_Q,
     "Please enter the full path to the file you want as a %s\n(this image will be copied to the "
     "images directory)\n",
     "NO_HELP", 0},
    {60, C_SCRMESS_Q, "Enter message%d ", "NO_HELP", 0},
    {61, C_SCRURL_Q, "Enter url for message %s ", "NO_HELP", 0},
    {62, C_SCRBOX1_Q, "Enter %s of scrollbox (value or percentage) ", "NO_HELP", 0},
    {63, C_SCRBOX2_Q, "Three dimensional ", "NO_HELP", 0},
    {64, C_SCRTXT1_Q, "Add shadow to text ", "NO_HELP", 0},
    {65, C_SCRTXT2_Q, "Scroll direction (up or left) ", "NO_HELP", 0},
    {66, C_SCRTXT3_Q, "Scroll delay (between messages) ", "NO_HELP", 0},
    {67, C_SCRTXT4_Q, "Scroll speed (pixels) ", "NO_HELP", 0},
    {68, C_REMOVE_Q, "Remove %ss ", "NO_HELP", 0},
    {69, C_BODY_ADD_Q, "Line %d:", "", 0},
    {70, BLANK, "", "NO_HELP", 0},
};

} // namespace

TEST(QuestPool, HasSeventyOneRowsAtTheirNumbers) {
    ASSERT_EQ(quest_pool.size(), 71U);
    for (std::size_t row = 0; row < quest_pool.size(); row++) {
        EXPECT_EQ(quest_pool[row].quest_num, static_cast<int>(row));
    }
}

TEST(QuestPool, EachRowHasItsNameTextTopicAndDirectoryRule) {
    ASSERT_EQ(std::size(expected_rows), quest_pool.size());
    for (const expected_row &expected : expected_rows) {
        SCOPED_TRACE(expected.number);
        const QUESTIONS &row = quest_pool[static_cast<std::size_t>(expected.number)];
        EXPECT_EQ(expected.name, expected.number);
        EXPECT_STREQ(row.ask, expected.ask);
        EXPECT_STREQ(row.help, expected.help);
        EXPECT_EQ(row.dir_action, expected.dir_action);
    }
}
