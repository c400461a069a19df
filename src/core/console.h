// The console: every dialogue, progress line and pause goes through here. What is printed goes to
// standard output in order, and is flushed before a line is read.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// The line of 79 dashes that sets the parts of the dialogue apart.
inline constexpr const char *dashed_rule =
    "-------------------------------------------------------------------------------";

// Prints to the console. The format is the program's own; a text argument (%s) may come from
// anywhere and is printed as_shown.
[[gnu::format(printf, 1, 2)]] void print(const char *format, ...);

// Prints a text of several lines, whose line feeds and tabs are its layout: the program's own, the
// distribution's, or one that as_shown returned.
void print_lines(std::string_view text);

// Returns a name, answer or other text from outside as the console shows it: without_controls at a
// terminal, as it is anywhere else.
std::string as_shown(std::string_view text);

// Returns the text with a "?" for each control character but those in `kept`: nothing in it can
// hide, move or rewrite what a terminal shows. Valid UTF-8 stays as it is.
std::string without_controls(std::string_view text, std::string_view kept = "");

// Prints the "." of one file copied or removed. Flushed at once if stdout is a terminal.
void print_dot();

// Gathers what is printed from here on in `text`, as it would show; null shows it again.
void gather_output(std::string *text);

// Reads one line of standard input, at most line.size() - 1 characters of it, the line feed
// included; the rest of a longer line is left for the next read. A NUL byte ends the text. Returns
// false, with `line` empty, at the end of input or if it cannot be read.
bool read_line(std::span<char> line);

// Waits until a line is entered (or input ends) and drops it.
void wait_for_enter();
