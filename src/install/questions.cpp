#include "install/install.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "dialogue/question.h"
#include "products/product.h"
#include "setup/installed.h"
#include "setup/product_ini.h"
#include "setup/questionnaire.h"

namespace {

// Whether the product is there already and its upgrade is wanted instead.
bool wants_upgrade(pINI_SETTINGS ini) {
    if (!is_program_installed(ini)) {
        return false;
    }
    print("\ngxsetup has found an old version of %s in this directory",
          ini_value_num(ini, D_PROD_NAME));
    imsg("switch to upgrade?");
    return is_yes(question(YN_SWITCHU_Q, "YES"));
}

void load_old_settings(pINI_SETTINGS ini) {
    if (!load_installed_ini(ini)) {
        return;
    }
    imsg("load gxvalues from ini file");
    // The .ini may name another templates directory, where answers were saved too.
    if (gxdat_found == 0) {
        imsg("load gxvalues from ini setting of templates directory");
        gxdat_found = load_installed_answers(ini) ? 1 : 0;
    }
}

void ask_templates(pINI_SETTINGS ini, bool has_sets) {
    if (has_sets) {
        // A loaded answer may be the default set's directory, which is below this one.
        set_answer(ini, D_TEMPLATES, ini_value_num(ini, D_INSTALL_DIR));
        remove_answer(ini, D_TPL_SET); // number_sets stores this distribution's
    }
    dmsg("Templates directory");
    const std::string templates = ask_answer(ini, D_TEMPLATES, D_TMPLTS2_Q);
    set_answer(ini, D_WORKAREA, templates.c_str());
    if (has_sets) {
        set_answer(ini, D_MANUAL, path_in(templates.c_str(), "manuals").c_str());
        set_answer(ini, D_BULLETIN, path_in(templates.c_str(), "bulletins").c_str());
        ask_answer(ini, D_MANUAL, D_MANUAL_Q);
        ask_answer(ini, D_BULLETIN, D_BULLETIN_Q);
    }
}

void ask_images(pINI_SETTINGS ini, bool is_first_pass) {
    dmsg("vlimg directory");
    ask_images_directory(ini, D_VLIMG2_Q);
    path_text url(ini_value_num(ini, D_VLIMG));
    // A later pass offers the URL that was typed.
    set_answer(ini, D_VLIMG, question(I_URL_Q, is_first_pass ? get_URL(ini, url) : url.c_str()));
}

void ask_wml_support(pINI_SETTINGS ini) {
    dmsg("WML Support?");
    ask_wml(ini);
    if (is_true_answer(ini, D_WML)) {
        number_wap_sets(ini);
    }
}

} // namespace

int gxinstall_quest(pINI_SETTINGS ini) {
    bool is_first_pass = true;
    default_set chosen_set;

    dmsg("install questions");
    for (;;) {
        print_questions_banner(ini, "setup");
        const bool has_sets = has_template_sets(ini_value_num(ini, D_PROD_NAME));
        dmsg("CGI path");
        ask_answer(ini, D_CGI_PATH, D_CGI_Q);
        if (is_first_pass) {
            if (wants_upgrade(ini)) {
                return 0;
            }
            load_old_settings(ini);
        }
        ask_templates(ini, has_sets);
        ask_images(ini, is_first_pass);
        if (has_sets) {
            chosen_set = number_sets(ini);
        }
        do_ini_quest(ini, is_first_pass ? 1 : 0);
        ask_wml_support(ini);
        dmsg("Action install");
        set_answer(ini, D_ACTION, "install");
        // The summary shows the hosts only if the .ini is replaced.
        set_answer(ini, D_REPLACE_INI, "TRUE");
        set_answer(ini, D_REPLACE_TMPLTS, "TRUE");
        if (print_gxvalues(ini) == 0) {
            store_default_set(ini, chosen_set);
            return 1;
        }
        is_first_pass = false;
    }
}
