#include "customise/customise.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "customise/ini_update.h"
#include "customise/look.h"
#include "customise/scroll.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "products/product.h"
#include "setup/installed.h"
#include "setup/questionnaire.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

// Menu choice 1 is the first operation; the choice after the last one ends the menu.
constexpr std::array operations = {do_background, do_logo, do_scrollmsg, do_emailfoot};
constexpr int quit_choice = static_cast<int>(operations.size()) + 1;

bool is_operation(int choice) {
    return choice > 0 && choice < quit_choice;
}

// Compares with case: prod_name is spelled as in the table wherever the session sets it.
bool is_refused(pINI_SETTINGS ini) {
    const char *prod_name = ini_value_num(ini, D_PROD_NAME);
    return std::any_of(products.begin(), products.end(), [prod_name](const product &one) {
        return one.has_template_sets && s_strcmp(one.name, prod_name) == 0;
    });
}

void print_customise_banner(pINI_SETTINGS ini) {
    print("Please answer the following questions so I can customize %s templates\n",
          ini_value_num(ini, D_PROD_NAME));
    print_notes(false);
    print("%s\n", dashed_rule);
}

void explain_missing_program(const char *prod_name) {
    print("\ngxsetup cannot find a version of %s in this directory. If you\n", prod_name);
    print("have changed the name of the cgi, please enter the new name now. Otherwise");
}

int ask_choice() {
    print("\nOptions:\n");
    print(" 1 Modify background\n");
    print(" 2 Modify logo\n");
    print(" 3 Add / Modify scrolling advertisements\n");
    print(" 4 Modify email footer\n");
    print(" 5 Quit\n");
    return s_atoi(question(I_MENU_Q, ""));
}

void run_operation(int choice, pINI_SETTINGS settings) {
    if (operations[static_cast<std::size_t>(choice) - 1](settings) != 0) {
        print_imsg("Operation Complete");
    } else {
        print_emsg("cannot complete");
    }
    update_ini(settings);
}

// Prints and logs the outcome. Returns false if the .ini was not copied.
bool back_up(const char *cgi_name, const std::string &ini_file, const std::string &backup_file) {
    print("\nBacking up origionals"); // spelled so (kept)
    if (do_copy2(ini_file.c_str(), backup_file.c_str(), 1) == 0) {
        print_emsg("your %s.ini file has not been saved", cgi_name);
        print_imsg("%s not copied", backup_file.c_str());
        return false;
    }
    print("\nA copy of your %s.ini file has been saved as %s\n", cgi_name, backup_file.c_str());
    print_imsg("%s copied", backup_file.c_str());
    return true;
}

void run_menu(pINI_SETTINGS settings, const char *cgi_name, const std::string &ini_file,
              const std::string &backup_file) {
    // Quitting or an invalid choice makes the backup, unless an operation came first (kept).
    bool needs_backup = true;
    for (int choice = 0; choice != quit_choice;) {
        choice = ask_choice();
        if (is_operation(choice)) {
            needs_backup = false;
            run_operation(choice, settings);
            continue;
        }
        if (needs_backup) {
            needs_backup = !back_up(cgi_name, ini_file, backup_file);
        }
        if (choice != quit_choice) {
            print("That is not a valid choice, please choose again\n");
        }
    }
}

} // namespace

int gxcustom_main(pINI_SETTINGS ini) {
    dmsg("Action custom");
    set_answer(ini, D_ACTION, "custom");
    print("Customise\n%s\n", dashed_rule);
    if (is_refused(ini)) {
        print("Sorry at present this utility does not customise Tanager or Osprey templates\n");
        return 1;
    }
    scoped_store settings(custom_values);
    print_customise_banner(ini);
    ask_answer(ini, D_CGI_PATH, D_CGI_Q);
    ask_program_name(ini, I_ENTER_Q, explain_missing_program);
    // Before the .ini is loaded: what it says must not lead to another file.
    const std::string ini_file = cgi_file(ini, D_CGI_NAME, "ini");
    load_installed_ini(ini);
    ask_answer(ini, D_VLIMG_DIR, D_VLIMG5_Q);
    const char *cgi_name = ini_value_num(ini, D_CGI_NAME);
    const std::string backup_file =
        path_in(ini_value_num(ini, D_CGI_PATH), formatted("%.4s_old.ini", cgi_name).c_str());
    load_values(ini, settings.get());
    run_menu(settings.get(), cgi_name, ini_file, backup_file);
    return 1;
}
