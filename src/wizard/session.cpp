#include "wizard/session.h"

#include "core/console.h"
#include "core/failures.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/program.h"
#include "core/text.h"
#include "customise/customise.h"
#include "dialogue/help.h"
#include "dialogue/path_checks.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "files/search.h"
#include "install/install.h"
#include "products/product.h"
#include "remove/remove.h"
#include "setup/answer_loading.h"
#include "setup/answer_store.h"
#include "setup/distribution.h"
#include "setup/installed.h"
#include "setup/job.h"
#include "setup/product.h"
#include "setup/version.h"
#include "upgrade/upgrade.h"

#include <cerrno>
#include <cstring>
#include <string>

namespace {

constexpr const char *defaults_file = "gxdflt.dat";
constexpr const char *spool_directory = "/var/spool";
constexpr const char *log_file = "gxsetup.log";

// Whether the product that the session began with is an IMAP product. Set by begin_session; what
// is loaded later does not change it.
bool is_imap = false;

const char *answer(answer_position position) {
    return ini_value_num(&gxvalues, position);
}

bool is_action(const char *name) {
    return s_stricmp(answer(D_ACTION), name) == 0;
}

bool has_answer(answer_position position) {
    return *ini_value2_num(&gxvalues, position) != '\0';
}

void add_built_in_answers() {
    dmsg("Loading gxvalues defaults");
    // The store formats its debug texts only if they will be logged.
    ini_init(&gxvalues, emsg, get_loglvl() >= LOG_DEBUG ? dmsg : nullptr);
    ini_setup(&gxvalues, ans_values, ans_associations);
    set_answer(&gxvalues, D_CGI_PATH, "/home/httpd/cgi-bin");
    set_answer(&gxvalues, D_VLIMG_DIR, "/home/httpd/html/vlimg");
    set_answer(&gxvalues, D_TEMPLATES, spool_directory);
    set_answer(&gxvalues, D_OP_SYSTEM, "UNIX");
    set_answer(&gxvalues, D_ACTION, "install");
    set_answer(&gxvalues, D_VLIMG, "/vlimg");
    set_answer(&gxvalues, D_DEL_USERS, "FALSE");
    set_answer(&gxvalues, D_REPLACE_TMPLTS, "FALSE");
    set_answer(&gxvalues, D_REPLACE_INI, "FALSE");
    add_placeholder_hosts(&gxvalues);
    set_answer(&gxvalues, D_LOG_LVL, "INFO");
    set_answer(&gxvalues, D_WML_NAME, "merlin");
    set_answer(&gxvalues, D_WML, "NO");
}

void load_saved_answers() {
    const char *name = defaults_file;
    if (file_exists(answers_file) == 1) {
        gxdat_found = 1;
        name = answers_file;
    }
    dmsg("Loading gxvalues from default file");
    if (load_answers(&gxvalues, name) == 0) {
        print_emsg("Can't open file \"%s\": %s", name, std::strerror(errno));
    }
}

void ask_product() {
    while (true) {
        path_text reply(question(I_PROD2_Q, "plover"));
        // Two steps: the log tells the name as it was typed.
        set_answer(&gxvalues, D_PROD_NAME, reply.c_str());
        replace_answer(&gxvalues, D_PROD_NAME, strlwr(reply.data()));
        if (find_product(reply.c_str()) != nullptr) {
            return;
        }
        print("Please enter either plover, kestrel or tanager"); // osprey is taken as well (kept)
    }
}

void settle_product() {
    dmsg("Forming product name");
    if (!has_answer(D_PROD_NAME)) {
        if (const int found = prod_guess(); found != 0) {
            set_answer(&gxvalues, D_PROD_NAME, products[static_cast<std::size_t>(found) - 1].name);
        } else {
            ask_product();
        }
    }
    support_email.format("%s-support@varnel.example", answer(D_PROD_NAME));
}

void settle_images_directory() {
    const product *found = find_product(answer(D_PROD_NAME));
    // Required: also over a loaded answer.
    if (found != nullptr && found->images_directory != nullptr) {
        set_answer(&gxvalues, D_VLIMG_DIR, found->images_directory);
    }
}

void settle_templates_directory() {
    dmsg("Building template directory");
    if (s_stricmp(answer(D_TEMPLATES), spool_directory) == 0) {
        const product &known = product_or_osprey(answer(D_PROD_NAME));
        const std::string templates = path_in(answer(D_TEMPLATES), known.spool_subdirectory);
        set_answer(&gxvalues, D_TEMPLATES, templates.c_str());
    }
    set_answer(&gxvalues, D_MANUAL, path_in(answer(D_TEMPLATES), "manuals").c_str());
}

void load_installed_answers_once() {
    if (gxdat_found == 0) {
        dmsg("loading gxsetup.dat from templates directory");
        gxdat_found = load_installed_answers(&gxvalues) ? 1 : 0;
    }
}

void settle_program_name() {
    dmsg("Getting cgi_name");
    if (!has_answer(D_CGI_NAME)) {
        set_answer(&gxvalues, D_CGI_NAME, answer(D_PROD_NAME));
    }
}

void settle_version() {
    dmsg("Getting version #");
    if (get_version(&gxvalues, D_CGI_NAME) == 0) {
        set_answer(&gxvalues, D_VERSION, question(I_GXVER_Q, "", answer(D_PROD_NAME)));
    }
}

void print_banner() {
    constexpr const char *double_rule =
        "===============================================================================";
    print("\n%s", double_rule);
    print("\n                        Welcome to %s                      ", program_version);
    print("\n                 Setup wizard for kestrel, plover, tanager and osprey        ");
    print("\n%s\n\n", double_rule);
}

bool is_in_templates_directory() {
    return match_root_dir(answer(D_TEMPLATES)) == 1;
}

int ask_menu_choice() {
    const char *prod_name = answer(D_PROD_NAME);
    const char *version = answer(D_VERSION);
    print("Options:\n");
    print(" 1 Install %s, version %s\n", prod_name, version);
    print(" 2 Upgrade from earlier version of %s to %s, version %s\n", prod_name, prod_name,
          version);
    print(" 3 Remove %s and associated files\n", prod_name);
    print(" 4 Quit without %s\n", answer(D_ACTION));
    return s_atoi(question(I_MENU_Q, answer(D_ACTION)));
}

// Whether an install or upgrade can be run from here. Prints and logs why not.
bool can_set_up_here(const char *logged) {
    if (is_in_templates_directory()) {
        print_imsg("This function cannot be run from within the templates directory\n");
        return false;
    }
    dmsg("%s", logged);
    if (file_exists(product_program(&gxvalues).c_str()) == 0) {
        print_emsg("Cannot find source files\n");
        return false;
    }
    return true;
}

flow_number choose_install() {
    if (!can_set_up_here("Case 1: Install product")) {
        return flow_none;
    }
    print_imsg("Installing %s, version %s\n", answer(D_PROD_NAME), answer(D_VERSION));
    return flow_install;
}

flow_number choose_upgrade() {
    if (!can_set_up_here("Case 2: Upgrade product")) {
        return flow_none;
    }
    print_imsg("Upgrading %s to version %s\n", answer(D_PROD_NAME), answer(D_VERSION));
    return flow_upgrade;
}

// The chosen flow, flow_none to quit.
flow_number choose_flow() {
    flow_number flow = flow_none;
    while (flow == flow_none) {
        switch (ask_menu_choice()) {
        case 1:
            flow = choose_install();
            break;
        case 2:
            flow = choose_upgrade();
            break;
        case 3:
            dmsg("Case 4: Remove product"); // the number of the flow, not of the choice
            flow = flow_remove;
            break;
        case 4:
            return flow_none;
        default:
            print("That is not a valid choice, please choose again\n");
        }
    }
    return flow;
}

int run_flow(flow_number flow) {
    switch (flow) {
    case flow_install:
        return gxinstall_main(&gxvalues);
    case flow_upgrade:
        return gxupgrade_main(&gxvalues);
    case flow_customise:
        return gxcustom_main(&gxvalues);
    case flow_remove:
        return gxremove_main(&gxvalues);
    case flow_none:
        break;
    }
    return 0;
}

void strip_one_run_answers() {
    for (const answer_position position :
         {D_REPLACE_TMPLTS, D_REPLACE_INI, D_DEL_USERS, D_BODY_ADD, D_SET}) {
        remove_answer(&gxvalues, position);
    }
    ini_remove(&gxvalues, "separator"); // no position: only a loaded file can hold it
}

void save_answers() {
    dmsg("Save gxvalues to default file");
    // The host of the other protocol, which no question asked for.
    remove_answer(&gxvalues, is_imap ? D_POPHOST : D_IMAPHOST);
    if (ini_save_limited(&gxvalues, answers_file, program_version, saved_answers_mode()) == 0) {
        print_emsg("Can't write \"%s\": %s", answers_file, std::strerror(errno));
    }
    do_copy_limited(answers_file, answer(D_INSTALL_DIR), 1, saved_answers_mode());
}

void close_session() {
    if (is_action("install")) {
        set_answer(&gxvalues, D_ACTION, "upgrade"); // what the next run offers
    }
    // Required: a removal leaves no answers behind, nor does customising.
    if (!is_action("custom") && !is_action("remove")) {
        save_answers();
    }
    dmsg("Clear gxvalues");
    ini_clear(&gxvalues);
}

} // namespace

flow_number begin_session() {
    // Each step goes by what those before it settled: the product tells the directories, the
    // templates directory holds older answers, these name the program that tells its version.
    add_built_in_answers();
    load_saved_answers();
    settle_product();
    is_imap = is_imap_product(answer(D_PROD_NAME));
    settle_images_directory();
    settle_templates_directory();
    load_installed_answers_once();
    settle_program_name();
    settle_version();

    print_banner();
    if (is_in_templates_directory()) {
        // Required: the menu offers 3 for it, the number of the flow, which there is the removal.
        set_answer(&gxvalues, D_ACTION, "custom");
    }
    const flow_number flow = choose_flow();
    if (flow != flow_none) {
        dmsg("Change replace ini to FALSE");
        set_answer(&gxvalues, D_REPLACE_INI, "FALSE");
    }
    return flow;
}

int gxsetup_main() {
    const flow_number flow = begin_session();
    if (flow == flow_none) {
        ini_clear(&gxvalues);
        print("\n----------------------------------------------------------\nGoodbye\n\n");
        return 0;
    }
    const int success = run_flows(flow) == 0 ? 0 : 1;
    strip_one_run_answers();
    print_end(success);
    close_session();
    return 1;
}

int run_flows(flow_number flow) {
    for (;;) {
        const int result = run_flow(flow);
        if (result == switch_to_upgrade) {
            flow = flow_upgrade;
        } else if (result == switch_to_install) {
            flow = flow_install;
        } else {
            return result;
        }
    }
}

void print_end(int success) {
    // No flow sets "quit"; a loaded file can.
    if (!is_action("remove") && !is_action("quit")) {
        dmsg("Copy gxsetup.log");
        if (do_copy(log_file, answer(D_INSTALL_DIR), 1) == 0) {
            dmsg("Copy gxsetup.log failed");
        }
    }
    print("\n\n%s\n", dashed_rule);
    if (is_action("custom")) {
        print("Good-bye\n");
        return;
    }
    if (success != 0) {
        print_imsg("%s successful\n", answer(D_ACTION));
    } else if (!is_action("quit")) {
        print_imsg("%s unsuccessful\n", answer(D_ACTION));
        note_failure(formatted("%s unsuccessful", answer(D_ACTION)));
    }
    imsg("* gxsetup finished *");
}
