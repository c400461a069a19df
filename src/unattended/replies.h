// The replies of an unattended run: where the question engine gets its answers from when they were
// named beforehand. Its main sets them up.
//
// A question that no answer is named for takes what is offered, and no where a yes would delete
// something. A question asked twice in a row has refused its answer: the run ends.
#pragma once

#include "unattended/named_answers.h"
#include "unattended/options.h"

#include <string>

enum class run_kind {
    listing,   // finds out what is asked for; nothing is changed
    rehearsal, // goes up to the summary, or through a removal; nothing is changed
    work,
};

// Makes `answers` the source of all replies; they and the options must outlive the run.
void reply_with(const named_answers &answers, const run_options &options, run_kind kind);

// End the program where the flow came to its end: with the status, and one line that says what was
// done and where.
[[noreturn]] void end_rehearsal();
[[noreturn]] void end_work();

// Ends the program with a message: with status 2, or 1 if the work has begun.
[[noreturn]] void refuse(const std::string &message);
