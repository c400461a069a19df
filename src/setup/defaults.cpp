#include "setup/defaults.h"

#include "core/console.h"
#include "core/format.h"
#include "core/log.h"
#include "core/program.h"
#include "core/text.h"
#include "dialogue/question.h"
#include "products/product.h"
#include "setup/answer_store.h"
#include "setup/questionnaire.h"

#include <string_view>

namespace {

// What is suggested for an operating system, beside the templates directory.
struct system_defaults {
    const char *cgi_path;
    const char *vlimg_dir;
    const char *product::*templates;
    bool knows_imap; // required: on Unix every product gets a POP host
};

constexpr system_defaults unix_defaults = {
    .cgi_path = "/home/httpd/cgi-bin",
    .vlimg_dir = "/home/httpd/html/vlimg",
    .templates = &product::unix_templates,
    .knows_imap = false,
};

constexpr system_defaults windows_defaults = {
    .cgi_path = R"(\inetpub\scripts)",
    .vlimg_dir = R"(\inetpub\wwwroot\vlimg)",
    .templates = &product::windows_templates,
    .knows_imap = true,
};

const char *product_name() {
    return ini_value_num(&gxvalues, D_PROD_NAME);
}

void start_answers() {
    ini_init(&gxvalues, emsg, dmsg);
    ini_setup(&gxvalues, ans_values, nullptr);
    add_placeholder_hosts(&gxvalues);
}

void print_defaults_banner() {
    print("To create a file of defaults for use in gxsetup, answer the following questions\n");
    print("Notes: Suggestions are shown in square brackets [thus]\n");
    print("       Just press Enter to accept suggestion.\n");
    print("%s\n", dashed_rule);
}

void ask_directories() {
    if (is_yes(question(YN_CHDIR_Q, "NO"))) {
        ask_answer(&gxvalues, D_TEMPLATES, D_STMPLTS_Q);
        ask_answer(&gxvalues, D_VLIMG_DIR, D_SVLIMG_Q);
        ask_answer(&gxvalues, D_CGI_PATH, D_SCGI_Q);
    }
}

void ask_hosts(bool is_imap) {
    if (!is_yes(question(YN_CHINI_Q, "NO"))) {
        return;
    }
    const char *domain = ask_answer(&gxvalues, D_DOMAIN, I_SDOM_Q);
    path_text suggestion;
    suggestion.format("mail.%s", domain);
    if (is_imap) {
        set_answer(&gxvalues, D_IMAPHOST, question(I_SIMAP_Q, suggestion.c_str()));
    } else {
        set_answer(&gxvalues, D_POPHOST, question(I_SPOP_Q, suggestion.c_str()));
    }
    // Also after the imap question: the pop host's placeholder then decides what is suggested.
    path_text pop_host(ini_value_num(&gxvalues, D_POPHOST));
    set_answer(&gxvalues, D_POPHOST, strlwr(pop_host.data()));
    if (pop_host.view().starts_with("pop")) {
        suggestion.format("smtp.%s", domain);
    }
    set_answer(&gxvalues, D_SMTPHOST, question(I_SSMTP_Q, suggestion.c_str()));
}

// Returns the name of the file to write. If it is refused prints and logs why and returns "".
path_text ask_file(const path_text &op_system) {
    path_text suggestion;
    suggestion.format("gxdflt_%s.dat", op_system.c_str());
    path_text name(question(F_DFLTFILE_Q, suggestion.c_str()));
    // Required: the first dot counts, so that "a.b.dat" is refused.
    const std::size_t dot = name.view().find('.');
    if (dot == std::string_view::npos) {
        name.append(".dat");
    } else if (s_stricmp(name.c_str() + dot + 1, "dat") != 0) {
        print_imsg("%s not valid: gxsetup will only read .dat files", name.c_str());
        name.assign("");
    }
    return name;
}

int save_answers(const path_text &name) {
    if (name.is_cut() || ini_save(&gxvalues, name.c_str(), program_version) == 0) {
        print_emsg("cannot write to %s\n", name.c_str());
        return 0;
    }
    print_imsg("%s saved\n", name.c_str());
    dmsg("Clear gxvalues");
    ini_clear(&gxvalues);
    return 1;
}

} // namespace

int make_dflt() {
    start_answers();
    print_defaults_banner();
    ask_answer(&gxvalues, D_VERSION, I_VER_Q);
    set_answer(&gxvalues, D_PROD_NAME, question(I_PROD_Q, "plover"));
    const path_text op_system(ask_answer(&gxvalues, D_OP_SYSTEM, I_OPSYS_Q));
    const bool is_windows = s_stricmp(op_system.c_str(), "nt") == 0;
    const system_defaults &defaults = is_windows ? windows_defaults : unix_defaults;
    const bool is_imap = defaults.knows_imap && is_imap_product(product_name());
    set_answer(&gxvalues, D_CGI_PATH, defaults.cgi_path);
    set_answer(&gxvalues, D_VLIMG_DIR, defaults.vlimg_dir);
    set_answer(&gxvalues, D_TEMPLATES, product_or_osprey(product_name()).*defaults.templates);
    ask_directories();
    ask_hosts(is_imap);
    // The file suggests the host of one protocol only.
    remove_answer(&gxvalues, is_imap ? D_POPHOST : D_IMAPHOST);
    set_answer(&gxvalues, D_WML, question(YN_WML_Q, "NO", ini_value_num(&gxvalues, D_WML_NAME)));
    const path_text name = ask_file(op_system);
    return name.empty() ? 0 : save_answers(name);
}
