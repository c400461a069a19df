// The entry: starts the log, reads the one argument, runs what it selects, waits for enter.

#include "core/console.h"
#include "core/log.h"
#include "core/program.h"
#include "core/text.h"
#include "dialogue/answer_source.h"
#include "dialogue/help.h"
#include "setup/defaults.h"
#include "templates/stamp.h"
#include "wizard/session.h"
#include "wizard/start.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <random>

namespace {

constexpr const char *argument_help = "ARG_HELP";

struct selected_modes {
    bool makedflt = false;
    bool header = false;
    bool checksum = false;
    bool gxsetup = false;
};

[[noreturn]] void leave(int status) {
    close_log();
    std::exit(status);
}

bool is_one_of(const char *argument, std::initializer_list<const char *> names) {
    return std::any_of(names.begin(), names.end(),
                       [argument](const char *name) { return s_strcmp(argument, name) == 0; });
}

// Returns what the argument selects. Ends the program for a help request and an unknown argument.
selected_modes read_argument(char *argument) {
    selected_modes modes;
    strlwr(argument);
    if (is_one_of(argument, {"-make", "/make"})) {
        modes.makedflt = true;
    } else if (is_one_of(argument, {"-header", "/header"})) {
        modes.header = true;
        modes.checksum = true;
    } else if (is_one_of(argument, {"-checksum", "/checksum"})) {
        modes.checksum = true;
    } else if (is_one_of(argument, {"?", "help"})) {
        help(argument_help);
        leave(0);
    } else if (is_one_of(argument, {"-debug"})) {
        log_details();
        modes.gxsetup = true;
    } else if (is_one_of(argument, {"-version"})) {
        print("%s\n", program_version); // enter is waited for here too (kept)
    } else {
        print_emsg("Invalid Argument");
        help(argument_help);
        leave(1);
    }
    return modes;
}

} // namespace

int main(int argc, char **argv) {
    secure_standard_streams();
    std::srand(std::random_device{}()); // the names of probe files are not to be foretold
    start_log();
    if (argc > 2) {
        print_emsg("Too many command line arguments");
        help(argument_help);
        quit_at_console();
    }
    selected_modes modes;
    if (argc == 2) {
        modes = read_argument(argv[1]);
    } else {
        modes.gxsetup = true;
    }
    if (modes.makedflt) {
        make_dflt();
    }
    if (modes.header) {
        tpl_add_header();
    }
    if (modes.checksum) {
        add_checksum();
    }
    if (modes.gxsetup) {
        gxsetup_main();
    }
    print("\n");
    quit_at_console();
}
