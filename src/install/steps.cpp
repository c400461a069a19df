#include "install/install.h"

#include "core/console.h"
#include "core/log.h"
#include "dialogue/path_checks.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "setup/flow.h"
#include "setup/product.h"
#include "setup/product_ini.h"
#include "templates/sets.h"

#include <string>

namespace {

constexpr const char *templates_source = "./tpl";
constexpr const char *wap_source = "./wap";
constexpr const char *images_source = "./img";
constexpr const char *manuals_source = "./manuals";

// The installation as its steps see it; `success` is cleared by each step that fails.
struct installation {
    pINI_SETTINGS ini;
    bool has_sets;
    bool wants_wml;
    bool success = true;

    [[nodiscard]] const char *answer(answer_position position) const {
        return ini_value_num(ini, position);
    }

    [[nodiscard]] std::string below_install_dir(const char *name) const {
        return formatted("%s%c%s", answer(D_INSTALL_DIR), '/', name);
    }

    void check(int result) { success = success && result != 0; }
};

// The line that the dots of the step follow; the log has its own words for it.
void announce(const char *logged, const char *shown) {
    dmsg("%s", logged);
    print("\n%s", shown);
}

bool create_directories(const installation &job) {
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

void copy_flat_product(installation &job) {
    const char *install_dir = job.answer(D_INSTALL_DIR);
    const char *images = job.answer(D_VLIMG_DIR);
    announce("Copying template files", "Copying template files");
    job.check(do_xcopy("*", install_dir, 1));
    words_copy(install_dir, "tpl_", "words.dat");
    job.check(do_xcopy2(templates_source, "*", install_dir, 1));
    announce("Copying graphic and wav files", "Copying graphic and wav files");
    for (const char *pattern : {"*.jpg", "*.wav", "*.gif"}) {
        job.check(do_xcopy2(templates_source, pattern, images, 1));
    }
    announce("Copy vbs and js files.", "Copying VBS and JS files");
    for (const char *pattern : {"*.vbs", "*.js"}) {
        job.check(do_xcopy(pattern, images, 1));
    }
}

void copy_program(installation &job) {
    announce("Copying cgi files", "Copying cgi files");
    job.check(do_exe_copy(product_program(job.ini).c_str(), job.answer(D_CGI_PATH), 1));
}

// Whether the sets were copied whole is not asked: the result does not depend on it.
void copy_set_product(installation &job) {
    const char *install_dir = job.answer(D_INSTALL_DIR);
    announce("Copying template files", "Copying template files");
    do_template_copy(templates_source, install_dir, 0);
    if (job.wants_wml) {
        do_template_copy(wap_source, install_dir, 0);
    }
    announce("Copying graphic and wav files", "Copying graphic and wav files");
    do_template_copy(images_source, job.answer(D_VLIMG_DIR), 0);
    do_template_copy(images_source, job.below_install_dir("img").c_str(), 0);
    copy_program(job);
    announce("Copying manual files", "Copying manual files");
    job.check(do_xcopy2(manuals_source, "*", job.answer(D_MANUAL), 1));
}

void write_ini(installation &job, answer_position name, const char *prod) {
    dmsg("Creating ini file");
    print("\nCreating %s.ini file", job.answer(name));
    job.check(write_new_gxini(job.ini, prod, cgi_file(job.ini, name, "ini").c_str()));
}

void install_wml(installation &job) {
    job.check(copy_wml_program(job.ini));
    write_ini(job, D_WML_NAME, wml_product);
}

bool copy_original_sets(const std::string &originals) {
    const std::string templates = originals + "/tpl";
    const std::string wap = originals + "/wap";
    make_dir(originals.c_str(), directory_mode);
    if (make_owned_dir(templates.c_str(), directory_mode) == 0) {
        return false;
    }
    do_xcopy2(templates_source, "*", templates.c_str(), 1);
    if (make_owned_dir(wap.c_str(), directory_mode) == 0) {
        return false;
    }
    do_xcopy2(wap_source, "*", wap.c_str(), 1);
    return true;
}

// Offers a copy of the distribution's templates. False when a directory could not be created.
bool offer_originals(const installation &job) {
    if (s_strcmp(question(YN_ORGTMP_Q, "YES", job.answer(D_INSTALL_DIR), '/', ""), "TRUE") != 0) {
        return true;
    }
    dmsg("Copy originals");
    const std::string originals = job.below_install_dir("originals");
    if (make_owned_dir(originals.c_str(), directory_mode) == 0) {
        return false;
    }
    print("Copying original template files");
    if (!job.has_sets) {
        do_xcopy2(templates_source, "*.tpl", originals.c_str(), 1);
    } else if (!copy_original_sets(originals)) {
        return false;
    }
    print("\nCopy complete.\n");
    return true;
}

void offer_clean_up(installation &job) {
    if (match_root_dir(job.answer(D_INSTALL_DIR)) == 1) {
        return;
    }
    dmsg("Delete temp ?");
    if (s_strcmp(question(YN_DELTEMP_Q, "YES"), "TRUE") == 0) {
        print("\nDeleting temporary files");
        job.check(do_tmprmv(job.ini, "*"));
        imsg("Removed temporary files");
    }
}

} // namespace

int gxinstall_main(pINI_SETTINGS ini) {
    dmsg("gxinstall_main()");
    if (gxinstall_quest(ini) == 0) {
        return -1;
    }
    const char *action = ini_value_num(ini, D_ACTION);
    print("\nPlease wait while gxsetup %ss %s\n", action, ini_value_num(ini, D_PROD_NAME));
    return gxinstall(ini);
}

int gxinstall(pINI_SETTINGS ini) {
    const char *prod_name = ini_value_num(ini, D_PROD_NAME);
    installation job = {.ini = ini,
                        .has_sets = has_template_sets(prod_name),
                        .wants_wml = is_true_answer(ini, D_WML)};
    get_uid();
    if (!create_directories(job)) {
        return 0;
    }
    if (job.has_sets) {
        copy_set_product(job);
    } else {
        copy_flat_product(job);
    }
    copy_program(job);
    write_ini(job, D_PROD_NAME, prod_name);
    if (job.wants_wml) {
        install_wml(job);
    }
    print_outcome(ini, "Installation", "installation", job.success);
    print("You may wish to customize the template and .ini files.  If you do, it is\n");
    print("advisable to keep a copy of the original templates.\n");
    if (!offer_originals(job)) {
        return 0;
    }
    offer_clean_up(job);
    print_thanks(ini, "installing");
    return job.success ? 1 : 0;
}
