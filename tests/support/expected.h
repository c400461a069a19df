// Whole screens, trees, logs and files that a test expects, kept as text files that read as a
// person sees them: expected/SUITE.TEST/NAME beside the tests.
#pragma once

#include "support/wizard_run.h"

#include <string>
#include <string_view>

// Compares `seen` with the kept text of this name of the test that runs. Where they differ the test
// fails and shows the difference.
void expect_kept(const std::string &name, std::string_view seen);

// The file "tree" of what lies in `directories`.
void expect_kept_tree(const world &host, const std::vector<std::string> &directories);

// The files "screen" and "tree" of a run that says nothing on standard error: what it
// showed, and what lies in `directories` afterwards.
void expect_kept_run(const world &host, const wizard_run &run,
                     const std::vector<std::string> &directories = {"cgi-bin", "html", "spool",
                                                                    "dist"});

// The folder of the kept texts of the program that runs.
const char *kept_texts();

// From here on what is seen is kept. Only for someone who looks at the difference afterwards.
void keep_what_is_seen();
