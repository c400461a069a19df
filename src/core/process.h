// Other programs, started directly and without a shell, and the end of children. The version probe,
// the lookup of users and the rehearsal of an unattended run use this.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// A program that was started.
struct started_program {
    pid_t child;
    int error; // of starting it (posix_spawn, POSIX); 0 if it runs
};

// Starts words[0], a path, with all words as its arguments. Its standard input is closed, its
// standard output is the descriptor `output`, and signals that this program ignores have their
// default effect again.
started_program start_program(std::vector<std::string> words, int output);

// Waits until a child has ended. Returns its status (waitpid, POSIX), or -1 if there is no such
// child.
int wait_for(pid_t child);

// Runs a program to its end. Returns what it printed on its standard output: nothing if it ended
// with another status than 0 or printed more than `limit` bytes. Returns no value, with errno set,
// if it could not be started.
std::optional<std::string> output_of(std::vector<std::string> words, std::size_t limit);
