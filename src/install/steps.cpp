#include "install/install.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "setup/distribution.h"
#include "setup/installed.h"
#include "setup/job.h"
#include "setup/owner_choice.h"
#include "setup/product_ini.h"
#include "templates/sets.h"

#include <string>

namespace {

bool create_directories(const setup_job &job) {
    if (make_owned_dir(job.answer(D_INSTALL_DIR), directory_mode) == 0) {
        return false;
    }
    if (job.has_sets &&
        (make_owned_dir(job.answer(D_MANUAL), directory_mode) == 0 ||
         make_owned_dir(job.below_install_dir("img").c_str(), directory_mode) == 0 ||
         make_owned_dir(job.answer(D_BULLETIN), directory_mode) == 0)) {
        return false;
    }
    return make_owned_dir(job.answer(D_VLIMG_DIR), images_mode) != 0;
}

void copy_flat_product(setup_job &job) {
    const char *install_dir = job.answer(D_INSTALL_DIR);
    announce("Copying template files");
    job.check(do_xcopy("*", install_dir, 1)); // the whole distribution, its directories included
    words_copy(install_dir, "tpl_", "words.dat"); // copies nothing, see its header
    job.check(do_xcopy2(templates_source, "*", install_dir, 1));
    copy_flat_images(job, 1);
}

void announce_and_copy_program(setup_job &job) {
    announce("Copying cgi files");
    copy_program(job);
}

// Required: sets that could not be copied whole do not make the installation fail.
void copy_set_product(setup_job &job) {
    const char *install_dir = job.answer(D_INSTALL_DIR);
    announce("Copying template files");
    do_template_copy(templates_source, install_dir, 0);
    if (job.wants_wml) {
        do_template_copy(wap_source, install_dir, 0);
    }
    announce("Copying graphic and wav files");
    do_template_copy(images_source, job.answer(D_VLIMG_DIR), 0);
    do_template_copy(images_source, job.below_install_dir("img").c_str(), 0);
    // Required: gxinstall does it once more.
    announce_and_copy_program(job);
    copy_manuals(job);
}

void announce_ini(const setup_job &job, answer_position name) {
    dmsg("Creating ini file");
    print("\nCreating %s.ini file", job.answer(name));
}

void write_ini(setup_job &job) {
    announce_ini(job, D_PROD_NAME);
    const std::string file = cgi_file(job.ini, D_PROD_NAME, "ini");
    job.check(write_new_gxini(job.ini, job.answer(D_PROD_NAME), file.c_str()));
}

void install_wml(setup_job &job) {
    copy_wml_program(job);
    announce_ini(job, D_WML_NAME);
    write_wml_ini(job);
}

bool copy_original_sets(const std::string &originals) {
    const std::string templates = path_in(originals, "tpl");
    const std::string wap = path_in(originals, "wap");
    make_dir(originals.c_str(), directory_mode); // required: logs that it is there already
    if (make_owned_dir(templates.c_str(), directory_mode) == 0) {
        return false;
    }
    do_xcopy2(templates_source, "*", templates.c_str(), 1);
    if (make_owned_dir(wap.c_str(), directory_mode) == 0) {
        return false;
    }
    // Required: also if the WML program was not wanted.
    do_xcopy2(wap_source, "*", wap.c_str(), 1);
    return true;
}

bool copy_originals(const setup_job &job, const std::string &originals) {
    if (job.has_sets) {
        return copy_original_sets(originals);
    }
    do_xcopy2(templates_source, "*.tpl", originals.c_str(), 1);
    return true;
}

void offer_clean_up(setup_job &job) {
    if (!can_clean_up(job)) {
        return;
    }
    dmsg("Delete temp ?");
    if (is_yes(question(YN_DELTEMP_Q, "YES"))) {
        print("\nDeleting temporary files");
        job.check(do_tmprmv(job.ini, "*"));
        imsg("Removed temporary files");
    }
}

} // namespace

int gxinstall_main(pINI_SETTINGS ini) {
    dmsg("gxinstall_main()");
    if (gxinstall_quest(ini) == 0) {
        return switch_to_upgrade;
    }
    const char *action = ini_value_num(ini, D_ACTION);
    print("\nPlease wait while gxsetup %ss %s\n", action, ini_value_num(ini, D_PROD_NAME));
    return gxinstall(ini);
}

int gxinstall(pINI_SETTINGS ini) {
    setup_job job(ini);
    get_uid(); // whose all that follows will be
    if (!create_directories(job)) {
        return 0;
    }
    if (job.has_sets) {
        copy_set_product(job);
    } else {
        copy_flat_product(job);
    }
    announce_and_copy_program(job);
    write_ini(job);
    if (job.wants_wml) {
        install_wml(job);
    }
    print_outcome(job, "Installation", "installation");
    print("You may wish to customize the template and .ini files.  If you do, it is\n");
    print("advisable to keep a copy of the original templates.\n");
    if (!offer_originals(job, "", copy_originals)) {
        return 0;
    }
    offer_clean_up(job);
    print_thanks(job, "installing");
    return job.success ? 1 : 0;
}
