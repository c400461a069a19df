// Clean-up of what was typed: small pure helpers on texts that the question engine and the flows
// share. Several are deliberately looser or stricter than their names suggest.
#pragma once

// Replaces every carriage return and line feed of `answer` by a NUL, so that it ends at the first.
// Gives `answer`.
char *clean_up_answer(char *answer);

// Whether a reply is a yes or a no. Case is ignored, but a single "N" is no "no".
bool says_yes(const char *reply);
bool says_no(const char *reply);

// The first character of `text` that is neither a blank nor a tab.
const char *strip_leading_spaces(const char *text);

// 1 when `name` is empty or all blanks, else 0. Cuts `name` in place behind its first word.
int valid_dir_name(char *name);

// 1 for a text that may be a number or a percentage: its first "%", looked for behind leading
// digits, is its last character, or it has none. Other characters are not judged.
int num_perc(const char *text);

// Cuts `name` in place at its first ".". Gives `name`.
char *clean_up_name(char *name);

// A heap copy of the characters before the first blank of `line` (511 at most), which the caller
// frees. A line without a blank is copied whole.
char *get_label(const char *line);

// Rewrites `line` in place to the text behind its first blank, without line ends and without each
// pair of a blank and "/". Gives `line`; a line without a blank becomes "".
char *clean_up_set(char *line);
