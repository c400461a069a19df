// The command line of gxsetup-unattended. Its main reads it here.
#pragma once

#include "wizard/session.h"

#include <string>
#include <vector>

// How an unattended run ends. The numbers are promised: scripts act on them.
enum run_status : int {
    done_whole = 0,
    step_failed = 1,
    not_begun = 2,
    nothing_to_do = 3,
};

// The name under which messages are shown.
inline constexpr const char *program_name = "gxsetup-unattended";

struct run_options {
    flow_number flow = flow_none;
    std::string action;    // install, upgrade or remove
    std::string directory; // of the distribution; "" for the current one
    bool rehearses = false;
    bool lists = false;
    bool is_quiet = false;
    bool logs_details = false;
    std::string expected_product; // "" for any
    std::string expected_version;
    std::vector<std::string> answers; // FILE and NAME=VALUE, as given
};

// Reads the command line. Ends the program for --help and --version, and with status 2 and a
// message on standard error for one that cannot be understood.
run_options read_options(int argc, char **argv);
