// The answer store: every answer of a run under its name, and the positions by which the flows
// look them up. The session fills and saves it; questions, flows and the .ini writer use it.
#pragma once

#include "settings/store.h"

#include <string>
#include <vector>

// Positions in the names table. A position is not a question: D_MANUAL is where the answer is kept,
// D_MANUAL_Q (dialogue/questions.h) asks for it.
enum answer_position : int {
    D_INSTALL_DIR,    // installation directory; reads as the templates directory when absent
    D_WAP_TEMPLATES,  // directory of the WML templates
    D_WAP_VLIMG,      // image URL of the WML part
    D_TEMPLATES,      // templates (spool) directory
    D_WORKAREA,       // work area (user files); reads as the templates directory when absent
    D_VLIMG_DIR,      // directory of the images
    D_CGI_NAME,       // name of the CGI program
    D_CGI_PATH,       // directory of the CGI programs
    D_VERSION,        // version of the product being installed
    D_PROD_NAME,      // product name
    D_OP_SYSTEM,      // operating system of the server
    D_MANUAL,         // manuals directory
    D_BULLETIN,       // bulletins directory
    D_WML,            // whether the WML part is set up
    D_DEL_USERS,      // whether a removal takes the users' information too
    D_REPLACE_TMPLTS, // whether existing templates are replaced
    D_REPLACE_INI,    // whether the product's .ini is replaced
    D_ACTION,         // install, upgrade, custom or remove
    D_WML_NAME,       // name of the WML program
    D_TPL_SET,        // template sets
    D_WML_TPL_SET,    // WML template sets
    D_POPHOST,        // POP server
    D_IMAPHOST,       // IMAP server
    D_SMTPHOST,       // SMTP server
    D_DOMAIN,         // mail domain
    D_VLIMG,          // relative URL of the images
    D_SET,            // .ini settings of the customise flow
    D_BODY_ADD,       // e-mail footer lines of the customise flow
    D_ALLOW_HOST,     // hosts that users may log in to
    D_BRAMBLE,        // templates of the sibling product Bramble (no flow sets it)
    D_ADMIN_EMAIL,    // e-mail address of the Bramble administrator (no flow sets it)
    D_LOG_LVL,        // log level recorded for the product
    D_LAST
};

// Every answer of the run.
extern INI_SETTINGS gxvalues;

// The names by position (D_LAST of them and the end record), and the associations: the name whose
// value stands in for a missing one.
extern const INI_NAMES_INFO ans_values[D_LAST + 1];
extern const char *const ans_associations[];

// 1 once answers saved by an earlier run were loaded. The session and the install set it.
extern int gxdat_found;

// The file of saved answers, in the current directory and in the installation directory.
inline constexpr const char *answers_file = "gxsetup.dat";

// Stores placeholders for the mail hosts and the domain, until the administrator types real names.
void add_placeholder_hosts(pINI_SETTINGS ini);

// Stores an answer by position. Returns the result of ini_add.
int set_answer(pINI_SETTINGS ini, answer_position position, const char *value);

// Replaces the first value of a stored answer.
void replace_answer(pINI_SETTINGS ini, answer_position position, const char *value);

// Removes all values of an answer.
void remove_answer(pINI_SETTINGS ini, answer_position position);

// Returns all values of an answer, in their order.
std::vector<std::string> answer_values(pINI_SETTINGS ini, answer_position position);

// Whether an answer is a stored yes.
bool is_true_answer(pINI_SETTINGS ini, answer_position position);
