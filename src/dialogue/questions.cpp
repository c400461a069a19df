#include "dialogue/questions.h"

#include <cstddef>

namespace {

constexpr int any_text = 0;
constexpr int existing_dir = dir_must_exist;
constexpr int new_dir = dir_must_exist | dir_may_be_new;

} // namespace

constexpr std::array<QUESTIONS, question_count> quest_pool = {{
    {D_CGI_Q, "cgi_path",
     "Webserver directory for cgi-files (This must be a valid script directory)\n", "I_CGI_HELP",
     existing_dir},
    {D_CGI2_Q, "cgi_path",
     "Where are the cgi files\n(this will be a scripts or cgi directory setup for the webserver)\n",
     "R_DIR_HELP", existing_dir},
    {D_SCGI_Q, "cgi_path", "Suggested cgi path ", "S_DIR_HELP", any_text},
    {D_VLIMG_Q, "vlimg_dir",
     "\nWhere are the old graphics and wav files (this must be an existing directory)\n",
     "R_DIR_HELP", existing_dir},
    {D_VLIMG2_Q, "vlimg_dir", "Directory for .gif, .jpg and .wav files\n", "I_VLIMG_HELP", new_dir},
    {D_VLIMG3_Q, "vlimg_dir", "Where are the .gif, .jpg and .wav files\n", "U_VLIMG_HELP", new_dir},
    {D_VLIMG4_Q, "vlimg_dir", "Directory for %s image and wav files\n", "B_VLIMG_HELP",
     existing_dir},
    {D_VLIMG5_Q, "vlimg_dir",
     "Directory for .gif, .jpg and .wav files (this must be an existing directory)\n",
     "I_VLIMG_HELP", existing_dir},
    {D_SVLIMG_Q, "vlimg_dir", "Suggested image and wav file directory ", "S_DIR_HELP", any_text},
    {D_TMPLTS_Q, "templates",
     "Where are your template files (this must be an existing directory)\n", "R_DIR_HELP",
     existing_dir},
    {D_TMPLTS2_Q, "templates", "Directory for templates ", "I_TMPLTS_HELP", new_dir},
    {D_TMPLTS3_Q, "templates", "Directory for %s templates ", "B_TMPLTS_HELP", existing_dir},
    {D_MANUAL_Q, "manual", "Directory for manual files ", "NO_HELP", new_dir},
    {D_BULLETIN_Q, "bulletin_path", "Directory for bulletin files ", "NO_HELP", new_dir},
    {D_STMPLTS_Q, "templates", "Suggested templates directory ", "S_DIR_HELP", any_text},
    {D_BRAMBLE_Q, "bramble", "Directory for Bramble templates ", "NO_HELP", new_dir},
    {D_WKAREA_Q, "workarea", "\nWhere is your work area (this must be an existing directory)\n",
     "R_DIR_HELP", new_dir},
    {D_WKAREA2_Q, "workarea", "Directory for %s workarea (user files) ", "B_WKAREA_HELP",
     existing_dir},
    {YN_SWITCHU_Q, "switch_to_upgrade", "Do you want to switch to the upgrade questions ",
     "NO_HELP", any_text},
    {YN_CHDIR_Q, "change_directories", "Do you want to change the default suggested directories ",
     "S_DIR_HELP", any_text},
    {YN_CHINI_Q, "change_settings", "Do you want to change the default suggested .ini settings ",
     "S_INI_HELP", any_text},
    {YN_ORGTMP_Q, "keep_originals", "Make a copy of the original templates to \"%s%coriginals\" %s",
     "ORG_CPY_HELP", any_text},
    {YN_DELTEMP_Q, "delete_temporary", "Shall I delete the temporary files ", "DEL_TMP_HELP",
     any_text},
    {YN_RCGI_Q, "remove_programs", "Remove %s CGI files from %s ", "DEL_HELP", any_text},
    {YN_RVLIMG_Q, "remove_images",
     "\nRemove all %s files from %s and all subdirectories\n(Warning: this may affect other Varnel "
     "Ltd. products) ",
     "DEL_HELP", any_text},
    {YN_RUINFO_Q, "remove_users", "\nRemove all user information from %s ", "DEL_HELP", any_text},
    {YN_RTMPLTS_Q, "remove_templates", "\nRemove template files and subdirectories from %s %s",
     "DEL_HELP", any_text},
    {YN_CHANS_Q, "change_answers", "Do you want to change any of your answers ", "SETUP_END_HELP",
     any_text},
    {YN_RPLTMPLTS_Q, "replace_templates", "Would you like to replace the old templates ",
     "KEEP_TMPLTS_HELP", any_text},
    {YN_RPLINI_Q, "replace_ini", "Do you want to replace the old .ini file ", "R_INI_HELP",
     any_text},
    {YN_VIEWLIST_Q, "view_list", "Do you want to view these categories now ", "VIEWLIST_HELP",
     any_text},
    {YN_SAFE_Q, "replace_safe",
     "Do you want to replace the templates that can be safely updated\n(category 1 templates)",
     "SAFE_HELP", any_text},
    {YN_WML_Q, "wml", "Do you want to install/upgrade the %s cgi ", "WML_HELP", any_text},
    {I_VER_Q, "version", "Version", "NO_HELP", any_text},
    {I_PROD_Q, "prod_name", "Product Name ", "NO_HELP", any_text},
    {I_OPSYS_Q, "op_system", "Operating System ", "NO_HELP", any_text},
    {I_SDOM_Q, "domain", "Suggested domain name ", "S_INI_HELP", any_text},
    {I_SPOP_Q, "pophost", "Suggested pop host ", "S_INI_HELP", any_text},
    {I_SIMAP_Q, "imaphost", "Suggested imap host", "S_INI_HELP", any_text},
    {I_SSMTP_Q, "smtphost", "Suggested smtp host ", "S_INI_HELP", any_text},
    {I_PROD2_Q, "prod_name", "What product am I installing ", "INIT_HELP", any_text},
    {I_GXVER_Q, "version", "What version of %s is it", "INIT_HELP", any_text},
    {I_BVER_Q, "bramble_version", "What version of Bramble is it", "INIT_HELP", any_text},
    {I_MENU_Q, "action", "What do you want to do ", "NO_HELP", any_text},
    {I_URL_Q, "vlimg", "Relative URL for HTML references to these images\n", "URL_HELP", any_text},
    {I_SWITCHI_Q, "switch_to_install", "install questions ", "NO_HELP", any_text},
    {I_DOM_Q, "domain", "\nWhat is your domain name ", "INI_HELP", any_text},
    {I_POP_Q, "pophost", "What is the name of your pop host ", "INI_HELP", any_text},
    {I_IMAP_Q, "imaphost", "What is the name of your imap host ", "INI_HELP", any_text},
    {I_SMTP_Q, "smtphost", "What is the name of your smtp host ", "INI_HELP", any_text},
    {I_ADMIN_MAIL_Q, "admin_email", "E-mail address for Bramble administrator ", "INI_HELP",
     any_text},
    {I_CGI_NAME_Q, "cgi_name", "CGI name %d %s ", "B_CGINAME_HELP", any_text},
    {I_USERNAME_Q, "owner", "What username shall I use for the files and directories I create\n",
     "NO_HELP", any_text},
    {I_TMPLT_SET_Q, "template_set", "New templates set", "NO_HELP", any_text},
    {I_TMPLT_VERS_Q, "template_version", "New templates version", "NO_HELP", any_text},
    {I_ENTER_Q, "cgi_name", "please press enter to quit", "NO_HELP", any_text},
    {I_DFLT_TPL_SET, "default_set", "Which set do you want to use as a default ", "NO_HELP",
     any_text},
    {I_ALLOW_HOST, "restrict_hosts", "Do you want to restrict the %s hosts users can login to?",
     "NO_HELP", any_text},
    {F_DFLTFILE_Q, "defaults_file", "Enter file to store defaults in ", "S_FILE_HELP", any_text},
    {C_IMGFILE_Q, "image_file",
     "Please enter the full path to the file you want as a %s\n(this image will be copied to the "
     "images directory)\n",
     "NO_HELP", any_text},
    {C_SCRMESS_Q, "message", "Enter message%d ", "NO_HELP", any_text},
    {C_SCRURL_Q, "message_url", "Enter url for message %s ", "NO_HELP", any_text},
    {C_SCRBOX1_Q, "box_size", "Enter %s of scrollbox (value or percentage) ", "NO_HELP", any_text},
    {C_SCRBOX2_Q, "three_dimensional", "Three dimensional ", "NO_HELP", any_text},
    {C_SCRTXT1_Q, "shadow", "Add shadow to text ", "NO_HELP", any_text},
    {C_SCRTXT2_Q, "direction", "Scroll direction (up or left) ", "NO_HELP", any_text},
    {C_SCRTXT3_Q, "delay", "Scroll delay (between messages) ", "NO_HELP", any_text},
    {C_SCRTXT4_Q, "speed", "Scroll speed (pixels) ", "NO_HELP", any_text},
    {C_REMOVE_Q, "remove_setting", "Remove %ss ", "NO_HELP", any_text},
    {C_BODY_ADD_Q, "footer_line", "Line %d:", "", any_text},
    {BLANK, "cgi_name", "", "NO_HELP", any_text},
}};

namespace {

consteval bool rows_stand_at_their_numbers() {
    for (std::size_t row = 0; row < quest_pool.size(); row++) {
        if (quest_pool[row].quest_num != static_cast<int>(row)) {
            return false;
        }
    }
    return true;
}
static_assert(rows_stand_at_their_numbers());

} // namespace
