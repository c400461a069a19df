// The question table: every question that the program asks, addressed by its number. The texts are
// formats; their arguments come from the caller of the question engine.
#pragma once

#include <array>

// The prefixes group the rows (D_ directories, YN_ yes or no, I_ information, F_ file names,
// C_ customisation); the engine goes by the default and by dir_action, never by a prefix.
enum question_number : int {
    D_CGI_Q = 0,
    D_CGI2_Q = 1,
    D_SCGI_Q = 2,
    D_VLIMG_Q = 3,
    D_VLIMG2_Q = 4,
    D_VLIMG3_Q = 5,
    D_VLIMG4_Q = 6,
    D_VLIMG5_Q = 7,
    D_SVLIMG_Q = 8,
    D_TMPLTS_Q = 9,
    D_TMPLTS2_Q = 10,
    D_TMPLTS3_Q = 11,
    D_MANUAL_Q = 12,
    D_BULLETIN_Q = 13,
    D_STMPLTS_Q = 14,
    D_BRAMBLE_Q = 15,
    D_WKAREA_Q = 16,
    D_WKAREA2_Q = 17,
    YN_SWITCHU_Q = 18,
    YN_CHDIR_Q = 19,
    YN_CHINI_Q = 20,
    YN_ORGTMP_Q = 21,
    YN_DELTEMP_Q = 22,
    YN_RCGI_Q = 23,
    YN_RVLIMG_Q = 24,
    YN_RUINFO_Q = 25,
    YN_RTMPLTS_Q = 26,
    YN_CHANS_Q = 27,
    YN_RPLTMPLTS_Q = 28,
    YN_RPLINI_Q = 29,
    YN_VIEWLIST_Q = 30,
    YN_SAFE_Q = 31,
    YN_WML_Q = 32,
    I_VER_Q = 33,
    I_PROD_Q = 34,
    I_OPSYS_Q = 35,
    I_SDOM_Q = 36,
    I_SPOP_Q = 37,
    I_SIMAP_Q = 38,
    I_SSMTP_Q = 39,
    I_PROD2_Q = 40,
    I_GXVER_Q = 41,
    I_BVER_Q = 42,
    I_MENU_Q = 43,
    I_URL_Q = 44,
    I_SWITCHI_Q = 45,
    I_DOM_Q = 46,
    I_POP_Q = 47,
    I_IMAP_Q = 48,
    I_SMTP_Q = 49,
    I_ADMIN_MAIL_Q = 50,
    I_CGI_NAME_Q = 51,
    I_USERNAME_Q = 52,
    I_TMPLT_SET_Q = 53,
    I_TMPLT_VERS_Q = 54,
    I_ENTER_Q = 55,
    I_DFLT_TPL_SET = 56,
    I_ALLOW_HOST = 57,
    F_DFLTFILE_Q = 58,
    C_IMGFILE_Q = 59,
    C_SCRMESS_Q = 60,
    C_SCRURL_Q = 61,
    C_SCRBOX1_Q = 62,
    C_SCRBOX2_Q = 63,
    C_SCRTXT1_Q = 64,
    C_SCRTXT2_Q = 65,
    C_SCRTXT3_Q = 66,
    C_SCRTXT4_Q = 67,
    C_REMOVE_Q = 68,
    C_BODY_ADD_Q = 69,
    BLANK = 70,
};

// What a directory question demands of its answer.
inline constexpr int dir_must_exist = 1; // an existing directory given from the root
inline constexpr int dir_may_be_new = 2; // with dir_must_exist: the caller creates a missing one

struct QUESTIONS {
    int quest_num;    // the row's position
    const char *ask;  // format of the question
    const char *help; // topic of the help file
    int dir_action;   // dir_must_exist, dir_may_be_new
};

inline constexpr int question_count = 71;

extern const std::array<QUESTIONS, question_count> quest_pool;
