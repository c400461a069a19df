#include "remove/remove.h"

#include "core/console.h"
#include "core/failures.h"
#include "core/log.h"
#include "core/paths.h"
#include "dialogue/path_checks.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "files/search.h"
#include "setup/installed.h"
#include "setup/job.h"
#include "setup/questionnaire.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <unistd.h>

namespace {

// Set once the answers saved with the installation were loaded; lives for the run.
bool gxdat_found_here = false;

void print_removal_banner(const setup_job &job) {
    print_imsg("Removing %s, version %s", job.answer(D_PROD_NAME), job.answer(D_VERSION));
    print("\n%s\n", dashed_rule);
    print("Please answer the following questions so I can remove %s correctly from\nyour system\n",
          job.answer(D_PROD_NAME));
    print("You will be asked for directories then prompted to delete them\n");
    print_notes(true);
    print("%s\n", dashed_rule);
}

void explain_missing_program(const char *prod_name) {
    print("\ngxsetup cannot find an old version of %s in this directory. If you\n", prod_name);
    print("have changed the name of the cgi, please enter the new name now. If there\n");
    print("is no previous version of %s, please enter Q to quit", prod_name);
}

void load_old_settings(const setup_job &job) {
    if (!load_installed_ini(job.ini)) {
        return;
    }
    if (!gxdat_found_here) {
        gxdat_found_here = load_installed_answers(job.ini);
    }
    if (job.has_sets) {
        // The .ini names the default set's directory, which is below this one.
        set_answer(job.ini, D_TEMPLATES, job.answer(D_INSTALL_DIR));
    }
}

void remove_program(setup_job &job, const char *shown_name, const char *name) {
    if (is_yes(question(YN_RCGI_Q, "YES", shown_name, job.answer(D_CGI_PATH)))) {
        const std::string wild = formatted("%s.*", name);
        job.check(do_xrmv(job.ini, wild.c_str(), job.answer(D_CGI_PATH), 1, 0));
    }
}

void remove_or_report(const char *directory) {
    if (!remove_empty_directory(directory)) {
        // What nobody has asked to remove may well be in it.
        const expected_failures kept(errno == ENOTEMPTY || errno == EEXIST);
        print_emsg("Cannot remove %s: %s", directory, std::strerror(errno));
    }
}

void remove_images(setup_job &job) {
    dmsg("Remove vlimg files");
    const std::string directory = ask_answer(job.ini, D_VLIMG_DIR, D_VLIMG_Q);
    if (is_yes(question(YN_RVLIMG_Q, "NO", "graphics and wav", directory.c_str()))) {
        job.check(do_xrmv(job.ini, "*.gif,*.jpg,*.wav", directory.c_str(), 1, 0));
    }
    // Also after a no: an empty images directory goes, one that is not is reported.
    remove_or_report(directory.c_str());
}

void remove_user_directories(setup_job &job, const char *workarea) {
    const place directory(workarea);
    found_names names;
    plain_files plain{};
    const int count = wild_find2(directory, workarea, "u_*", names, plain);
    if (count == 0) {
        print_imsg("No user directories found.");
    }
    for_each_name(names, count, [&](const char *name) {
        struct stat entry {};
        if (directory.look(name, entry)) {
            if (has_directory_bit(entry)) {
                const std::string path = path_in(workarea, name);
                job.check(remove_tree(job.ini, "*", directory, name, path.c_str()));
            } else {
                dmsg("u_ file found weird?");
            }
        }
    });
}

void remove_users(setup_job &job) {
    dmsg("Remove user files");
    // By name: looked up by position, the templates directory would stand in for it.
    if (ini_value(job.ini, "workarea", 0) == nullptr) {
        set_answer(job.ini, D_WORKAREA, job.answer(D_TEMPLATES));
    }
    const std::string workarea = ask_answer(job.ini, D_WORKAREA, D_WKAREA_Q);
    if (is_yes(question(YN_RUINFO_Q, "NO", workarea.c_str()))) {
        remove_user_directories(job, workarea.c_str());
    } else {
        set_answer(job.ini, D_DEL_USERS, "FALSE");
    }
    print("\n");
}

// What the question about the templates says of users' directories below them.
const char *users_note(const setup_job &job) {
    const char *templates = job.answer(D_TEMPLATES);
    // Required: FALSE is a value too. The session stores one, so it never shows the note.
    const bool are_kept = job.answer(D_DEL_USERS) == nullptr &&
                          s_strncmp(job.answer(D_WORKAREA), templates, s_strlen(templates)) == 0;
    return are_kept ? keeps_users_note : "";
}

void remove_templates(setup_job &job) {
    dmsg("Remove template files");
    const std::string templates = ask_answer(job.ini, D_TEMPLATES, D_TMPLTS_Q);
    if (!is_yes(question(YN_RTMPLTS_Q, "YES", templates.c_str(), users_note(job)))) {
        return;
    }
    if (match_root_dir(templates.c_str()) == 1) {
        job.check(do_tmprmv(job.ini, "*"));
        remove_here(answers_file); // do_tmprmv keeps every "gxsetup..."
        return;
    }
    job.check(do_xrmv(job.ini, "*", templates.c_str(), 1, 0));
    remove_or_report(templates.c_str());
}

} // namespace

int gxremove_main(pINI_SETTINGS ini) {
    setup_job job(ini);

    print_removal_banner(job);
    dmsg("Remove cgi");
    ask_answer(ini, D_CGI_PATH, D_CGI2_Q);
    ask_program_name(ini, BLANK, explain_missing_program);
    load_old_settings(job); // before the program's .ini goes
    remove_program(job, job.answer(D_PROD_NAME), job.answer(D_CGI_NAME));
    remove_program(job, job.answer(D_WML_NAME), job.answer(D_WML_NAME));
    remove_images(job);
    remove_users(job);
    remove_templates(job);
    dmsg("Change action to remove");
    set_answer(ini, D_ACTION, "remove");
    return job.success ? 1 : 0;
}
