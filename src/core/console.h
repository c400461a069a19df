// The console: every dialogue, progress line and pause goes through here. What is printed goes to
// standard output in order, and is flushed before a line is read.
#pragma once

#include <cstddef>
#include <span>

// The line of 79 dashes that sets the parts of the dialogue apart.
inline constexpr const char *dashed_rule =
    "-------------------------------------------------------------------------------";

// Prints to the console.
[[gnu::format(printf, 1, 2)]] void print(const char *format, ...);

// Prints the "." that stands for one file copied or removed. Flushed at once at a terminal.
void print_dot();

// Reads one line of standard input, at most line.size() - 1 characters of it, the line feed
// included; the rest of a longer line is left for the next read. A NUL byte ends the text. Returns
// false, with `line` empty, at the end of input or if it cannot be read.
bool read_line(std::span<char> line);

// Waits until a line is entered (or input ends) and drops it.
void wait_for_enter();
