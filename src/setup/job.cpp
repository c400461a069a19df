#include "setup/job.h"

#include "core/console.h"
#include "core/failures.h"
#include "core/log.h"
#include "core/paths.h"
#include "dialogue/path_checks.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "files/search.h"
#include "products/product.h"
#include "setup/distribution.h"
#include "setup/installed.h"
#include "setup/product_ini.h"

setup_job::setup_job(pINI_SETTINGS answers)
    : ini(answers), has_sets(has_template_sets(ini_value_num(answers, D_PROD_NAME))),
      wants_wml(is_true_answer(answers, D_WML)) {}

const char *setup_job::answer(answer_position position) const {
    return ini_value_num(ini, position);
}

std::string setup_job::below_install_dir(const char *name) const {
    return path_in(answer(D_INSTALL_DIR), name);
}

void setup_job::check(int result) {
    success = success && result != 0;
}

void announce(const char *shown) {
    announce(shown, shown);
}

void announce(const char *shown, const char *logged) {
    dmsg("%s", logged);
    print("\n%s", shown); // no line end: the dots of the copies follow
}

void copy_flat_images(setup_job &job, int overwrite) {
    const char *images = job.answer(D_VLIMG_DIR);
    announce("Copying graphic and wav files");
    for (const char *pattern : {"*.jpg", "*.wav", "*.gif"}) {
        job.check(do_xcopy2(templates_source, pattern, images, overwrite));
    }
    announce("Copying VBS and JS files", "Copy vbs and js files.");
    // The scripts lie beside the program, not among the templates.
    for (const char *pattern : {"*.vbs", "*.js"}) {
        job.check(do_xcopy(pattern, images, overwrite));
    }
}

void copy_manuals(setup_job &job) {
    announce("Copying manual files");
    job.check(do_xcopy2(manuals_source, "*", job.answer(D_MANUAL), 1));
}

void copy_program(setup_job &job) {
    job.check(do_exe_copy(product_program(job.ini).c_str(), job.answer(D_CGI_PATH), 1));
}

void copy_wml_program(setup_job &job) {
    const std::string program = cgi_file(job.ini, D_WML_NAME, "cgi");
    job.check(do_exe_copy2(product_program(job.ini).c_str(), program.c_str(), 1));
}

void write_wml_ini(setup_job &job) {
    const std::string file = cgi_file(job.ini, D_WML_NAME, "ini");
    job.check(write_new_gxini(job.ini, wml_product, file.c_str()));
}

void print_outcome(const setup_job &job, const char *title, const char *work) {
    const char *install_dir = job.answer(D_INSTALL_DIR);
    print("\n%s\n", dashed_rule);
    print("%s %s.\n\n", title, job.success ? "successful" : "unsuccessful");
    if (!job.success) {
        // Shown without print_emsg, which would note it.
        note_failure(formatted("%s unsuccessful", title));
    }
    print("A log of the %s can be found \"%s/gxsetup.log\".\n", work, install_dir);
    print("All setup information has been written to gxsetup.dat which has been saved in\n");
    print("\"%s\" for use in future upgrades.\n\n", install_dir);
}

bool offer_originals(const setup_job &job, const char *note,
                     bool (*copy)(const setup_job &job, const std::string &originals)) {
    if (!is_yes(question(YN_ORGTMP_Q, "YES", job.answer(D_INSTALL_DIR), '/', note))) {
        return true;
    }
    dmsg("Copy originals");
    const std::string originals = job.below_install_dir("originals");
    if (make_owned_dir(originals.c_str(), directory_mode) == 0) {
        return false;
    }
    print("Copying original template files");
    if (!copy(job, originals)) {
        return false;
    }
    print("\nCopy complete.\n");
    return true;
}

bool can_clean_up(const setup_job &job) {
    return match_root_dir(job.answer(D_INSTALL_DIR)) == 0;
}

void print_thanks(const setup_job &job, const char *doing) {
    print("\n\nThank-you for %s %s\n\n", doing, job.answer(D_PROD_NAME));
    print("To connect to %s enter the following URL on your web browser\n\n",
          job.answer(D_PROD_NAME));
    // The web server is taken to offer the directory under its last name.
    const char *cgi_directory = strip_directory(ini_value2_num(job.ini, D_CGI_PATH));
    print("    http://%s/%s/%s.cgi", job.answer(D_DOMAIN), cgi_directory, job.answer(D_CGI_NAME));
}
