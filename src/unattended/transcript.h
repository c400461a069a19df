// The dialogue of an unattended run while it is kept from the console: a rehearsal shows it when it
// is over or not at all, and a quiet run never does. What the wizard said to an answer that it
// refused is looked up here.
#pragma once

#include <string>
#include <string_view>

// Keeps all that is printed from here on.
void keep_transcript();

// Goes on at the console. Shows there what was kept, if it `is_wanted`.
void end_transcript(bool is_wanted);

// Returns what was printed since the last mark, in one line and without the `end` that it ends in;
// "" if nothing is kept.
std::string said_since_mark(const std::string &end);

// The text with each run of line ends and blanks as one blank, and none at either end.
std::string in_one_line(std::string_view text);

// Marks how far the dialogue has come.
void mark_transcript();
