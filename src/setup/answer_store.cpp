#include "setup/answer_store.h"

#include "dialogue/question.h"

INI_SETTINGS gxvalues;

int gxdat_found = 0;

// In the order of answer_position.
const INI_NAMES_INFO ans_values[D_LAST + 1] = {
    {"install_dir", nullptr, 0, 0},
    {"wap_templates", "", 0, 0},
    {"wap_vlimg", "", 0, 0},
    {"templates", "", 0, 0},
    {"workarea", "", 0, 0},
    {"vlimg_dir", "", 0, 0},
    {"cgi_name", "", 0, 0},
    {"cgi_path", "", 0, 0},
    {"version", "", 0, 0},
    {"prod_name", "", 0, 0},
    {"op_system", "", 0, 0},
    {"manual", "", 0, 0},
    {"bulletin_path", "", 0, 0},
    {"wml", "", 0, 0},
    {"del_users", "", 0, 0},
    {"replace_tmplts", "", 0, 0},
    {"replace_ini", "", 0, 0},
    {"action", "", 0, 0},
    {"wml_name", "", 0, 0},
    {"tpl_set", "", 1, 0},
    {"wap_tpl_set", "", 1, 0},
    {"pophost", "", 0, 0},
    {"imaphost", "", 0, 0},
    {"smtphost", "", 0, 0},
    {"domain", "", 0, 0},
    {"vlimg", "", 0, 0},
    {"set", "", 1, 0},
    {"body_add", "", 1, 0},
    {"allow_host_login", "", 1, 0},
    {"bramble", "", 0, 0},
    {"admin_email", "", 0, 0},
    {"log_lvl", "", 0, 0},
    {nullptr, nullptr, 0, 0},
};

// With template sets `templates` ends as the default set's directory; these keep the one above it.
const char *const ans_associations[] = {
    "workarea", "templates", "install_dir", "templates", nullptr,
};

void add_placeholder_hosts(pINI_SETTINGS ini) {
    set_answer(ini, D_POPHOST, "pop.example.com");
    set_answer(ini, D_IMAPHOST, "imap.example.com");
    set_answer(ini, D_SMTPHOST, "smtp.example.com");
    set_answer(ini, D_DOMAIN, "example.com");
}

int set_answer(pINI_SETTINGS ini, answer_position position, const char *value) {
    return ini_add(ini, ans_values[position].name, value);
}

void replace_answer(pINI_SETTINGS ini, answer_position position, const char *value) {
    ini_value_num(ini, position); // ini_update replaces the value read last
    ini_update(ini, value);
}

void remove_answer(pINI_SETTINGS ini, answer_position position) {
    ini_remove_all(ini, ans_values[position].name);
}

std::vector<std::string> answer_values(pINI_SETTINGS ini, answer_position position) {
    std::vector<std::string> values;
    for (const char *value = ini_value_num(ini, position); value != nullptr;
         value = ini_next_value_num(ini, position)) {
        values.emplace_back(value);
    }
    return values;
}

bool is_true_answer(pINI_SETTINGS ini, answer_position position) {
    return is_yes(ini_value_num(ini, position));
}
