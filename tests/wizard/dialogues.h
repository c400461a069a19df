// Sessions of which the screen alone counts, as rows.
#pragma once

#include "support/expected.h"
#include "support/rows.h"
#include "wizard/releases.h"

#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>

enum class installed { nothing, release_31 };

inline const std::string whole_screen = ""; // in place of the end of one: it is a kept text

// A session of a product that is unpacked, its older release being installed or not.
struct dialogue {
    const char *name;
    const char *product;
    installed before;
    std::string preparation; // commands of the shell, "@" is the root
    console_script answers;
    std::string end = whole_screen;
    std::string missing = {}; // a file that is not there afterwards
};

class dialogue_test : public testing::Test {
  protected:
    static void check(const dialogue &row) {
        std::unique_ptr<const world> host;
        if (row.before == installed::nothing) {
            host = std::make_unique<const world>(row.product);
        } else {
            host = std::make_unique<const upgrade_world>(row.product);
        }
        shell(host->meant(row.preparation));
        const wizard_run run = run_wizard(*host, {}, row.answers);
        if (row.end.empty()) {
            expect_kept("screen", run.transcript);
        } else {
            EXPECT_THAT(run.transcript, testing::EndsWith(row.end));
        }
        EXPECT_FALSE(is_there(row.missing)) << row.missing;
    }
};
