#include "upgrade/upgrade.h"

#include "core/console.h"
#include "core/log.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "files/search.h"
#include "setup/distribution.h"
#include "setup/installed.h"
#include "setup/job.h"
#include "setup/owner_choice.h"
#include "setup/product_ini.h"
#include "templates/sets.h"
#include "upgrade/classify.h"

#include <string>
#include <vector>

namespace {

// For do_template_copy: leaves the word list of "common" out.
constexpr int skip_words = 1;

bool create_directories(const setup_job &job) {
    if (make_owned_dir(job.answer(D_VLIMG_DIR), images_mode) == 0) {
        return false;
    }
    return !job.has_sets ||
           (make_owned_dir(job.answer(D_MANUAL), directory_mode) != 0 &&
            make_owned_dir(job.below_install_dir("img").c_str(), directory_mode) != 0);
}

void replace_templates(setup_job &job) {
    const char *install_dir = job.answer(D_INSTALL_DIR);
    announce("Copying template files");
    if (!job.has_sets) {
        job.check(do_xcopy2(templates_source, "*.*", install_dir, 1));
        return;
    }
    do_template_copy(templates_source, install_dir, skip_words);
    if (job.wants_wml) {
        do_template_copy(wap_source, install_dir, 0);
    }
}

void copy_templates(setup_job &job, int overwrite) {
    if (overwrite != 0) {
        replace_templates(job);
    } else {
        // Before any copy: it compares what was installed so far.
        do_upgrade_list(job.ini);
        announce("Copying new template files");
    }
    // Required: also after replace_templates, which copied the same files.
    job.check(do_xcopy2(templates_source, job.has_sets ? "*" : "*.*", job.answer(D_INSTALL_DIR),
                        overwrite));
}

void copy_images(setup_job &job, int overwrite) {
    if (!job.has_sets) {
        copy_flat_images(job, overwrite);
        return;
    }
    announce("Copying graphic and wav files");
    do_template_copy(images_source, job.answer(D_VLIMG_DIR), skip_words);
    do_template_copy(images_source, job.below_install_dir("img").c_str(), skip_words);
}

void copy_programs(setup_job &job) {
    announce("Copying cgi files", "Copying CGI files");
    copy_program(job);
    if (job.wants_wml) {
        copy_wml_program(job);
    }
}

void write_ini(setup_job &job, bool replaces_ini) {
    if (replaces_ini) {
        dmsg("Creaing new ini file"); // spelled so in every log (kept)
        print("\nCreating new %s.ini file", job.answer(D_PROD_NAME));
    } else {
        dmsg("Creaing .new file");
    }
    const std::string file = cgi_file(job.ini, D_PROD_NAME, replaces_ini ? "ini" : "new");
    job.check(write_new_gxini(job.ini, job.answer(D_PROD_NAME), file.c_str()));
}

// Required: the first WML set is left out.
void use_wap_sets_as_template_sets(pINI_SETTINGS ini) {
    const std::vector<std::string> sets = answer_values(ini, D_WML_TPL_SET);
    remove_answer(ini, D_TPL_SET);
    for (std::size_t number = 1; number < sets.size(); number++) {
        set_answer(ini, D_TPL_SET, sets[number].c_str());
    }
    set_answer(ini, D_TEMPLATES, ini_value_num(ini, D_WAP_TEMPLATES));
    set_answer(ini, D_VLIMG, ini_value_num(ini, D_WAP_VLIMG));
}

void renew_wml_ini(setup_job &job, bool replaces_ini) {
    if (!replaces_ini && file_exists(cgi_file(job.ini, D_WML_NAME, "ini").c_str()) == 1) {
        return;
    }
    dmsg("Creating ini file");
    print("\nCreating %s.ini file", job.answer(D_WML_NAME));
    use_wap_sets_as_template_sets(job.ini);
    write_wml_ini(job);
}

void print_advice() {
    print("You may wish to make changes to any of the template files.  If you do, it is\n");
    print("advisable to keep a copy of the unchanged templates (ie. those in the \n");
    print("distribution set).\n");
}

// The answer about the installed templates also decides about originals of an earlier run.
bool copy_originals(const setup_job &job, const std::string &originals) {
    const int overwrite = is_true_answer(job.ini, D_REPLACE_TMPLTS) ? 1 : 0;
    do_xcopy2(templates_source, job.has_sets ? "*" : "*.tpl", originals.c_str(), overwrite);
    return true;
}

void offer_clean_up(const setup_job &job) {
    if (!can_clean_up(job)) {
        return;
    }
    if (is_yes(question(YN_DELTEMP_Q, "YES"))) {
        dmsg("Deleting temporary files");
        print("\nDeleting temporary files");
        do_tmprmv(job.ini, "*"); // required: a failure changes no result
    }
}

} // namespace

int gxupgrade_main(pINI_SETTINGS ini) {
    dmsg("gxupgrade_main()");
    if (gxupgrade_quest(ini) == 0) {
        return switch_to_install;
    }
    print("\nPlease wait while gxsetup upgrades %s\n", ini_value_num(ini, D_PROD_NAME));
    return gxupgrade(ini);
}

int gxupgrade(pINI_SETTINGS ini) {
    dmsg("upgrade");
    get_uid(); // whose all that follows will be
    setup_job job(ini);
    const int overwrite = is_true_answer(ini, D_REPLACE_TMPLTS) ? 1 : 0;
    const bool replaces_ini = is_true_answer(ini, D_REPLACE_INI);

    if (!create_directories(job)) {
        return 0;
    }
    copy_templates(job, overwrite);
    copy_images(job, overwrite);
    copy_programs(job);
    if (job.has_sets) {
        copy_manuals(job);
    }
    write_ini(job, replaces_ini);
    if (job.wants_wml) {
        renew_wml_ini(job, replaces_ini);
    }
    print_outcome(job, "Upgrade", "upgrade");
    print_advice();
    if (!offer_originals(job, overwrite != 0 ? "" : keeps_templates_note, copy_originals)) {
        return 0;
    }
    offer_clean_up(job);
    print_thanks(job, "upgrading");
    // Required: also if a copy failed, which print_outcome has said.
    return 1;
}
