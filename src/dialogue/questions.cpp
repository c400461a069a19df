#include "dialogue/questions.h"

#include <cstddef>

namespace {

constexpr int plain = 0;
constexpr int existing_dir = dir_must_exist;
constexpr int new_dir = dir_must_exist | dir_may_be_new;

} // namespace

constexpr std::array<QUESTIONS, question_count> quest_pool = {{
    {D_CGI_Q, "Webserver directory for cgi-files (This must be a valid script directory)\n",
     "I_CGI_HELP", existing_dir},
    {D_CGI2_Q,
     "Where are the cgi files\n(this will be a scripts or cgi directory setup for the webserver)\n",
     "R_DIR_HELP", existing_dir},
    {D_SCGI_Q, "Suggested cgi path ", "S_DIR_HELP", plain},
    {D_VLIMG_Q, "\nWhere are the old graphics and wav files (this must be an existing directory)\n",
     "R_DIR_HELP", existing_dir},
    {D_VLIMG2_Q, "Directory for .gif, .jpg and .wav files\n", "I_VLIMG_HELP", new_dir},
    {D_VLIMG3_Q, "Where are the .gif, .jpg and .wav files\n", "U_VLIMG_HELP", new_dir},
    {D_VLIMG4_Q, "Directory for %s image and wav files\n", "B_VLIMG_HELP", existing_dir},
    {D_VLIMG5_Q, "Directory for .gif, .jpg and .wav files (this must be an existing directory)\n",
     "I_VLIMG_HELP", existing_dir},
    {D_SVLIMG_Q, "Suggested image and wav file directory ", "S_DIR_HELP", plain},
    {D_TMPLTS_Q, "Where are your template files (this must be an existing directory)\n",
     "R_DIR_HELP", existing_dir},
    {D_TMPLTS2_Q, "Directory for templates ", "I_TMPLTS_HELP", new_dir},
    {D_TMPLTS3_Q, "Directory for %s templates ", "B_TMPLTS_HELP", existing_dir},
    {D_MANUAL_Q, "Directory for manual files ", "NO_HELP", new_dir},
    {D_BULLETIN_Q, "Directory for bulletin files ", "NO_HELP", new_dir},
    {D_STMPLTS_Q, "Suggested templates directory ", "S_DIR_HELP", plain},
    {D_BRAMBLE_Q, "Directory for Bramble templates ", "NO_HELP", new_dir},
    {D_WKAREA_Q, "\nWhere is your work area (this must be an existing directory)\n", "R_DIR_HELP",
     new_dir},
    {D_WKAREA2_Q, "Directory for %s workarea (user files) ", "B_WKAREA_HELP", existing_dir},
    {YN_SWITCHU_Q, "Do you want to switch to the upgrade questions ", "NO_HELP", plain},
    {YN_CHDIR_Q, "Do you want to change the default suggested directories ", "S_DIR_HELP", plain},
    {YN_CHINI_Q, "Do you want to change the default suggested .ini settings ", "S_INI_HELP", plain},
    {YN_ORGTMP_Q, "Make a copy of the original templates to \"%s%coriginals\" %s", "ORG_CPY_HELP",
     plain},
    {YN_DELTEMP_Q, "Shall I delete the temporary files ", "DEL_TMP_HELP", plain},
    {YN_RCGI_Q, "Remove %s CGI files from %s ", "DEL_HELP", plain},
    {YN_RVLIMG_Q,
     "\nRemove all %s files from %s and all subdirectories\n(Warning: this may affect other Varnel "
     "Ltd. products) ",
     "DEL_HELP", plain},
    {YN_RUINFO_Q, "\nRemove all user information from %s ", "DEL_HELP", plain},
    {YN_RTMPLTS_Q, "\nRemove template files and subdirectories from %s %s", "DEL_HELP", plain},
    {YN_CHANS_Q, "Do you want to change any of your answers ", "SETUP_END_HELP", plain},
    {YN_RPLTMPLTS_Q, "Would you like to replace the old templates ", "KEEP_TMPLTS_HELP", plain},
    {YN_RPLINI_Q, "Do you want to replace the old .ini file ", "R_INI_HELP", plain},
    {YN_VIEWLIST_Q, "Do you want to view these categories now ", "VIEWLIST_HELP", plain},
    {YN_SAFE_Q,
     "Do you want to replace the templates that can be safely updated\n(category 1 templates)",
     "SAFE_HELP", plain},
    {YN_WML_Q, "Do you want to install/upgrade the %s cgi ", "WML_HELP", plain},
    {I_VER_Q, "Version", "NO_HELP", plain},
    {I_PROD_Q, "Product Name ", "NO_HELP", plain},
    {I_OPSYS_Q, "Operating System ", "NO_HELP", plain},
    {I_SDOM_Q, "Suggested domain name ", "S_INI_HELP", plain},
    {I_SPOP_Q, "Suggested pop host ", "S_INI_HELP", plain},
    {I_SIMAP_Q, "Suggested imap host", "S_INI_HELP", plain},
    {I_SSMTP_Q, "Suggested smtp host ", "S_INI_HELP", plain},
    {I_PROD2_Q, "What product am I installing ", "INIT_HELP", plain},
    {I_GXVER_Q, "What version of %s is it", "INIT_HELP", plain},
    {I_BVER_Q, "What version of Bramble is it", "INIT_HELP", plain},
    {I_MENU_Q, "What do you want to do ", "NO_HELP", plain},
    {I_URL_Q, "Relative URL for HTML references to these images\n", "URL_HELP", plain},
    {I_SWITCHI_Q, "install questions ", "NO_HELP", plain},
    {I_DOM_Q, "\nWhat is your domain name ", "INI_HELP", plain},
    {I_POP_Q, "What is the name of your pop host ", "INI_HELP", plain},
    {I_IMAP_Q, "What is the name of your imap host ", "INI_HELP", plain},
    {I_SMTP_Q, "What is the name of your smtp host ", "INI_HELP", plain},
    {I_ADMIN_MAIL_Q, "E-mail address for Bramble administrator ", "INI_HELP", plain},
    {I_CGI_NAME_Q, "CGI name %d %s ", "B_CGINAME_HELP", plain},
    {I_USERNAME_Q, "What username shall I use for the files and directories I create\n", "NO_HELP",
     plain},
    {I_TMPLT_SET_Q, "New templates set", "NO_HELP", plain},
    {I_TMPLT_VERS_Q, "New templates version", "NO_HELP", plain},
    {I_ENTER_Q, "please press enter to quit", "NO_HELP", plain},
    {I_DFLT_TPL_SET, "Which set do you want to use as a default ", "NO_HELP", plain},
    {I_ALLOW_HOST, "Do you want to restrict the %s hosts users can login to?", "NO_HELP", plain},
    {F_DFLTFILE_Q, "Enter file to store defaults in ", "S_FILE_HELP", plain},
    {C_IMGFILE_Q,
     "Please enter the full path to the file you want as a %s\n(this image will be copied to the "
     "images directory)\n",
     "NO_HELP", plain},
    {C_SCRMESS_Q, "Enter message%d ", "NO_HELP", plain},
    {C_SCRURL_Q, "Enter url for message %s ", "NO_HELP", plain},
    {C_SCRBOX1_Q, "Enter %s of scrollbox (value or percentage) ", "NO_HELP", plain},
    {C_SCRBOX2_Q, "Three dimensional ", "NO_HELP", plain},
    {C_SCRTXT1_Q, "Add shadow to text ", "NO_HELP", plain},
    {C_SCRTXT2_Q, "Scroll direction (up or left) ", "NO_HELP", plain},
    {C_SCRTXT3_Q, "Scroll delay (between messages) ", "NO_HELP", plain},
    {C_SCRTXT4_Q, "Scroll speed (pixels) ", "NO_HELP", plain},
    {C_REMOVE_Q, "Remove %ss ", "NO_HELP", plain},
    {C_BODY_ADD_Q, "Line %d:", "", plain},
    {BLANK, "", "NO_HELP", plain},
}};

namespace {

constexpr bool rows_stand_at_their_numbers() {
    for (std::size_t row = 0; row < quest_pool.size(); row++) {
        if (quest_pool[row].quest_num != static_cast<int>(row)) {
            return false;
        }
    }
    return true;
}
static_assert(rows_stand_at_their_numbers());

} // namespace
