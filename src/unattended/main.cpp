// The entry of gxsetup-unattended: the same flows as the wizard's, with answers that were named
// beforehand. A child process rehearses the run first, so that an answer that does not fit is found
// before anything is changed.

#include "core/log.h"
#include "core/place.h"
#include "core/process.h"
#include "files/operations.h"
#include "unattended/named_answers.h"
#include "unattended/options.h"
#include "unattended/replies.h"
#include "unattended/transcript.h"
#include "wizard/session.h"
#include "wizard/start.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void run_rehearsal(const named_answers &answers, const run_options &options) {
    keep_transcript();
    keep_no_log();
    rehearse_removals();
    reply_with(answers, options, options.lists ? run_kind::listing : run_kind::rehearsal);
    run_flows(begin_session());
    end_rehearsal();
}

// Returns the status of the rehearsal; its messages were shown. From here on children leave a
// status, whoever started this program.
int rehearse(const named_answers &answers, const run_options &options) {
    std::fflush(nullptr);
    std::signal(SIGCHLD, SIG_DFL); // where it is ignored, they leave none (POSIX wait)
    const ::pid_t child = ::fork();
    if (child < 0) {
        refuse(std::strerror(errno));
    }
    if (child == 0) {
        run_rehearsal(answers, options);
    }
    const int status = wait_for(child);
    if (!WIFEXITED(status)) {
        refuse("the rehearsal was ended by a signal");
    }
    return WEXITSTATUS(status);
}

[[noreturn]] void work(const named_answers &answers, const run_options &options) {
    if (options.is_quiet) {
        keep_transcript();
    }
    reply_with(answers, options, run_kind::work);
    start_log();
    if (options.logs_details) {
        log_details();
    }
    gxsetup_main();
    end_work();
}

// Goes to the directory of the distribution, by the links that may be followed.
void enter_directory(const std::string &path) {
    if (path.empty()) {
        return;
    }
    const place directory(path);
    if (!directory.is_open()) {
        refuse(path + ": " + std::strerror(directory.error()));
    }
    // A descriptor that can be read: others cannot be gone to before Linux 3.5.
    const directory_handle entries = directory.list();
    if (!entries || ::fchdir(::dirfd(entries.get())) != 0) {
        refuse(path + ": " + std::strerror(errno));
    }
}

} // namespace

int main(int argc, char **argv) {
    secure_standard_streams();
    const run_options options = read_options(argc, argv);
    named_answers answers;
    reply_with(answers, options, run_kind::rehearsal);
    const std::string fault = read_answers(options.answers, answers);
    if (!fault.empty()) {
        refuse(fault);
    }
    enter_directory(options.directory);
    const int status = rehearse(answers, options);
    if (status != done_whole || options.rehearses || options.lists) {
        return status;
    }
    work(answers, options);
}
