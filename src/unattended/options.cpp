#include "unattended/options.h"

#include "core/console.h"
#include "core/program.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <getopt.h>
#include <string_view>

namespace {

constexpr const char *usage =
    "Usage: gxsetup-unattended [OPTION]... install|upgrade|remove [FILE | NAME=VALUE]...\n"
    "Install, upgrade or remove the product whose distribution lies here, with named answers.\n"
    "A question that no answer is named for takes what is offered; nothing is deleted unless an\n"
    "answer says so.\n"
    "\n"
    "  -C, --directory=DIRECTORY     work in DIRECTORY, where the distribution was unpacked\n"
    "  -n, --rehearse                show everything up to the summary, change nothing\n"
    "  -l, --list                    list the names that the action asks for, as a file to edit\n"
    "      --expect-product=PRODUCT  do nothing unless this is the product\n"
    "      --expect-version=VERSION  do nothing unless this is the version\n"
    "      --debug                   log details\n"
    "  -q, --quiet                   show problems only\n"
    "      --help                    show this text\n"
    "      --version                 show the version\n"
    "\n"
    "FILE holds answers, a name and a value on each line. NAME=VALUE wins over any file.\n"
    "\n"
    "Status: 0 done; 1 begun, but a step failed; 2 not begun; 3 nothing to do.\n";

enum long_option : int { expect_product = 256, expect_version, debug, help, version };

constexpr auto long_options = std::to_array<option>({
    {"directory", required_argument, nullptr, 'C'},
    {"rehearse", no_argument, nullptr, 'n'},
    {"list", no_argument, nullptr, 'l'},
    {"expect-product", required_argument, nullptr, expect_product},
    {"expect-version", required_argument, nullptr, expect_version},
    {"debug", no_argument, nullptr, debug},
    {"quiet", no_argument, nullptr, 'q'},
    {"help", no_argument, nullptr, help},
    {"version", no_argument, nullptr, version},
    {nullptr, 0, nullptr, 0},
});

[[noreturn]] void print_and_exit(const char *format, const char *argument) {
    print(format, argument);
    // A text that could not be shown is no success.
    std::exit(std::fflush(stdout) == 0 ? done_whole : not_begun);
}

[[noreturn]] void refuse_usage() {
    std::fprintf(stderr, "Try '%s --help'.\n", program_name);
    std::exit(not_begun);
}

void take_option(run_options &options, int found) {
    switch (found) {
    case 'C':
        options.directory = optarg;
        break;
    case 'n':
        options.rehearses = true;
        break;
    case 'l':
        options.lists = true;
        break;
    case 'q':
        options.is_quiet = true;
        break;
    case expect_product:
        options.expected_product = optarg;
        break;
    case expect_version:
        options.expected_version = optarg;
        break;
    case debug:
        options.logs_details = true;
        break;
    case help:
        print_and_exit("%s", usage);
    case version:
        print_and_exit("gxsetup-unattended of %s\n", program_version);
    default:
        refuse_usage();
    }
}

flow_number flow_of(std::string_view action) {
    if (action == "install") {
        return flow_install;
    }
    if (action == "upgrade") {
        return flow_upgrade;
    }
    return action == "remove" ? flow_remove : flow_none;
}

} // namespace

run_options read_options(int argc, char **argv) {
    run_options options;
    // getopt_long prints what is wrong with an option itself.
    for (int found = 0;
         (found = ::getopt_long(argc, argv, "C:nlq", long_options.data(), nullptr)) != -1;) {
        take_option(options, found);
    }
    if (optind == argc) {
        std::fprintf(stderr, "%s: install, upgrade or remove?\n", program_name);
        refuse_usage();
    }
    options.action = argv[optind];
    options.flow = flow_of(options.action);
    if (options.flow == flow_none) {
        std::fprintf(stderr, "%s: there is no action '%s'\n", program_name, argv[optind]);
        refuse_usage();
    }
    options.answers.assign(argv + optind + 1, argv + argc);
    return options;
}
