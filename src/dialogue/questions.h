// The question table: every question that the program asks, addressed by its number. The texts are
// formats; their arguments come from the caller of the question engine. Questions that ask for the
// same thing share a name.
#pragma once

#include <array>

// The prefixes group the rows (D_ directories, YN_ yes or no, I_ information, F_ file names,
// C_ customisation); the engine goes by the default and by dir_action, never by a prefix.
// D_VLIMG4_Q, D_TMPLTS3_Q, D_BRAMBLE_Q, D_WKAREA2_Q, YN_RPLINI_Q, I_BVER_Q, I_ADMIN_MAIL_Q,
// I_CGI_NAME_Q and I_DFLT_TPL_SET are part of the fixed table; no flow asks them.
enum question_number : int {
    D_CGI_Q,
    D_CGI2_Q,
    D_SCGI_Q,
    D_VLIMG_Q,
    D_VLIMG2_Q,
    D_VLIMG3_Q,
    D_VLIMG4_Q,
    D_VLIMG5_Q,
    D_SVLIMG_Q,
    D_TMPLTS_Q,
    D_TMPLTS2_Q,
    D_TMPLTS3_Q,
    D_MANUAL_Q,
    D_BULLETIN_Q,
    D_STMPLTS_Q,
    D_BRAMBLE_Q,
    D_WKAREA_Q,
    D_WKAREA2_Q,
    YN_SWITCHU_Q,
    YN_CHDIR_Q,
    YN_CHINI_Q,
    YN_ORGTMP_Q,
    YN_DELTEMP_Q,
    YN_RCGI_Q,
    YN_RVLIMG_Q,
    YN_RUINFO_Q,
    YN_RTMPLTS_Q,
    YN_CHANS_Q,
    YN_RPLTMPLTS_Q,
    YN_RPLINI_Q,
    YN_VIEWLIST_Q,
    YN_SAFE_Q,
    YN_WML_Q,
    I_VER_Q,
    I_PROD_Q,
    I_OPSYS_Q,
    I_SDOM_Q,
    I_SPOP_Q,
    I_SIMAP_Q,
    I_SSMTP_Q,
    I_PROD2_Q,
    I_GXVER_Q,
    I_BVER_Q,
    I_MENU_Q,
    I_URL_Q,
    I_SWITCHI_Q,
    I_DOM_Q,
    I_POP_Q,
    I_IMAP_Q,
    I_SMTP_Q,
    I_ADMIN_MAIL_Q,
    I_CGI_NAME_Q,
    I_USERNAME_Q,
    I_TMPLT_SET_Q,
    I_TMPLT_VERS_Q,
    I_ENTER_Q,
    I_DFLT_TPL_SET,
    I_ALLOW_HOST,
    F_DFLTFILE_Q,
    C_IMGFILE_Q,
    C_SCRMESS_Q,
    C_SCRURL_Q,
    C_SCRBOX1_Q,
    C_SCRBOX2_Q,
    C_SCRTXT1_Q,
    C_SCRTXT2_Q,
    C_SCRTXT3_Q,
    C_SCRTXT4_Q,
    C_REMOVE_Q,
    C_BODY_ADD_Q,
    BLANK,
    question_count // no question: how many there are
};

// What a directory question demands of its answer.
inline constexpr int dir_must_exist = 1; // an existing directory given from the root
inline constexpr int dir_may_be_new = 2; // with dir_must_exist: the caller creates a missing one

struct QUESTIONS {
    int quest_num;    // the row's position
    const char *name; // what the answer is called: the setting's name where it becomes one
    const char *ask;  // format of the question
    const char *help; // topic of the help file
    int dir_action;   // dir_must_exist, dir_may_be_new
};

extern const std::array<QUESTIONS, question_count> quest_pool;
