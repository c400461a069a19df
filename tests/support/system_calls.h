// Runs of the real program in which the system refuses it one call. strace makes the call fail at
// the border of the system (its option "inject"), so that what the C library does of its own
// accord can fail too. Only the program's own calls count, not those of a program it starts.
#pragma once

#include "support/wizard_run.h"

#include <string>
#include <string_view>
#include <vector>

// A call that a run makes.
struct system_call {
    std::string name;
    int number;         // among the calls of this name, from 1
    std::string text;   // as strace shows it: a descriptor with its file, "@" for the root
    bool is_on_written; // it opens or closes a file that is written
};

// What is run: the words behind the program's name, and all that is typed, no prompt waited for.
struct session_script {
    std::vector<std::string> arguments;
    std::string answers;
    bool is_without_copying =
        false; // copy_file_range is refused as well: what is copied is written
};

struct refused_run {
    wizard_run run;
    std::string call; // the call that failed; empty when the run never came to it
};

// Where the program runs under strace with these options.
run_place under_strace(const std::vector<std::string> &options);

// Whether calls can be made to fail here: strace is there and may trace.
bool can_refuse_calls();

// Runs the program undisturbed and gives the calls it made on files of the world, on its streams
// and on processes, from the opening of its log on.
std::vector<system_call> calls_of(const world &host, const session_script &script);

// Runs the program; the call of this name and number fails with the error ("ENOSPC").
refused_run run_with_refused_call(const world &host, const session_script &script,
                                  const system_call &call, const std::string &error);

// The same for every call of the name from the number on.
refused_run run_with_refused_calls(const world &host, const session_script &script,
                                   const system_call &first, const std::string &error);
