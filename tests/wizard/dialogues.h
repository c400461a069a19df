// Sessions of which the screen alone counts, as rows.
#pragma once

#include "support/expected.h"
#include "support/rows.h"
#include "wizard/fixtures.h"

#include <gmock/gmock-matchers.h>
#include <string>

inline const std::string whole_screen = ""; // in place of the end of one: it is a kept text

// A session in the world of its suite.
struct dialogue {
    const char *name;
    std::string preparation; // commands of the shell, "@" is the root
    console_script answers;
    std::string end = whole_screen;
    std::string missing = {}; // a file that is not there afterwards
};

// `Host` is one of the suites of fixtures.h.
template <typename Host>
class dialogue_test : public Host {
  protected:
    void check(const dialogue &row) const {
        shell(this->host.meant(row.preparation));
        const wizard_run run = run_wizard(this->host, {}, row.answers);
        if (row.end.empty()) {
            expect_kept("screen", run.transcript);
        } else {
            EXPECT_THAT(run.transcript, testing::EndsWith(row.end));
        }
        EXPECT_FALSE(is_there(row.missing)) << row.missing;
    }
};
