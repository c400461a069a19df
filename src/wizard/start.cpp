#include "wizard/start.h"

#include "core/console.h"
#include "core/log.h"
#include "core/program.h"
#include "dialogue/help.h"

#include <csignal>
#include <fcntl.h>

void secure_standard_streams() {
    for (int descriptor = 0; descriptor <= 2; descriptor++) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            ::open("/dev/null", O_RDWR); // takes the lowest free number: this one (POSIX open)
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void start_log() {
    set_loglvl(LOG_INFO);
    if (inilog(".", "gxsetup") == 0) {
        print("Error: log file cannot be opened\n");
    }
    rotate_logs(); // renames what inilog named: a run begins in an empty log
    support_email.assign("support@varnel.example");
    imsg("* %s started *", program_version);
}

void log_details() {
    imsg("Logging set to DEBUG.");
    set_loglvl(LOG_DEBUG);
}
