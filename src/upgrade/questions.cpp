#include "upgrade/upgrade.h"

#include "core/console.h"
#include "core/log.h"
#include "dialogue/question.h"
#include "products/product.h"
#include "setup/installed.h"
#include "setup/product_ini.h"
#include "setup/questionnaire.h"

#include <string>

namespace {

// False once the administrator wanted to change answers. Lives for the run.
bool firsttime = true;

// Set once the answers saved with the installation were loaded. Lives for the run.
bool gxdat_found_here = false;

// Whether there is no old program and the install is wanted. Any reply but yes is ignored.
bool wants_install(pINI_SETTINGS ini) {
    if (is_program_installed(ini)) {
        return false;
    }
    const char *prod_name = ini_value_num(ini, D_PROD_NAME);
    dmsg("Switch to install");
    print("\ngxsetup cannot find an old version of %s in this directory. If you\n", prod_name);
    print("have changed the name of the cgi, please enter the new name now. If there\n");
    print("is no previous version of %s, please press enter now to switch to the", prod_name);
    return is_yes(question(I_SWITCHI_Q, ""));
}

void load_old_settings(pINI_SETTINGS ini, bool has_sets) {
    if (!load_installed_ini(ini)) {
        return;
    }
    dmsg("load gxvalues with ini file settings");
    if (!gxdat_found_here) {
        dmsg("load gxsetup.dat from ini setting of templates directory");
        gxdat_found_here = load_installed_answers(ini);
    }
    if (has_sets) {
        // The old .ini names the default set's directory; the work area is the one above.
        set_answer(ini, D_TEMPLATES, ini_value_num(ini, D_WORKAREA));
        remove_answer(ini, D_TPL_SET);
    }
}

// Asks where the old program is and, in the first pass, loads what was saved with it. Returns false
// if there is none and the install is wanted.
bool find_old_installation(pINI_SETTINGS ini, bool has_sets) {
    dmsg("replace templates?");
    const std::string replaces = question(YN_RPLTMPLTS_Q, "NO");
    dmsg("CGI Path?");
    const std::string cgi_path = question(D_CGI2_Q, ini_value_num(ini, D_CGI_PATH));
    if (firsttime) {
        // Required: the old program is looked for in the directory stored before this reply.
        if (wants_install(ini)) {
            return false;
        }
        load_old_settings(ini, has_sets);
    }
    // Only now: what was loaded must not undo the replies.
    set_answer(ini, D_CGI_PATH, cgi_path.c_str());
    set_answer(ini, D_REPLACE_TMPLTS, replaces.c_str());
    return true;
}

void ask_url(pINI_SETTINGS ini) {
    path_text url(ini_value_num(ini, D_VLIMG));
    if (firsttime) {
        get_URL(ini, url);
    }
    dmsg("relative URL");
    set_answer(ini, D_VLIMG, question(I_URL_Q, url.c_str()));
}

} // namespace

int gxupgrade_quest(pINI_SETTINGS ini) {
    default_set chosen_set;
    bool keeps_sets = false; // once true, it stays so in later passes (kept)

    dmsg("upgrade questions");
    for (;;) {
        print_questions_banner(ini, "upgrade");
        const product *known = find_product(ini_value_num(ini, D_PROD_NAME));
        keeps_sets = keeps_sets || (known != nullptr && known->upgrade_keeps_sets);
        const bool has_sets = keeps_sets || (known != nullptr && known->has_template_sets);

        if (!find_old_installation(ini, has_sets)) {
            return 0;
        }
        dmsg("Templates ?");
        ask_answer(ini, D_TEMPLATES, D_TMPLTS_Q);
        dmsg("vlimg dir ?");
        ask_images_directory(ini, D_VLIMG3_Q);
        ask_url(ini);
        ask_wml(ini);
        if (is_true_answer(ini, D_REPLACE_TMPLTS)) {
            if (has_sets) {
                chosen_set = number_sets(ini);
            }
            if (is_true_answer(ini, D_WML)) {
                number_wap_sets(ini);
            }
        }
        dmsg("Action to upgrade");
        set_answer(ini, D_ACTION, "upgrade");
        if (print_gxvalues(ini) == 0) {
            store_default_set(ini, chosen_set);
            return 1;
        }
        firsttime = false;
    }
}
