// Clean-up of what was typed: small pure helpers on texts that the question engine and the flows
// share. Several are deliberately looser or stricter than their names suggest.
#pragma once

// Cuts `answer` in place at its first carriage return or line feed: replaces each of them by a NUL.
// Returns `answer`.
char *clean_up_answer(char *answer);

// Whether a reply is a yes or a no. Case is ignored, but a single "N" is no "no".
bool says_yes(const char *reply);
bool says_no(const char *reply);

// Returns the first character of `text` that is neither a blank nor a tab.
const char *strip_leading_spaces(const char *text);

// Returns 1 unless text follows the first "%" after the leading digits, else 0. Checks nothing
// else: "abc" passes.
int num_perc(const char *text);

// Cuts `name` in place at its first ".". Returns `name`.
char *clean_up_name(char *name);

// --- Part of the fixed interface; the program itself does not call these ---

// Returns 1 if `name` is empty or all blanks, else 0. Cuts `name` in place after its first word.
int valid_dir_name(char *name);

// Returns a heap copy of what comes before the first blank of `line`, or of all of it, 511
// characters at most. The caller frees it.
char *get_label(const char *line);

// Keeps in place what follows the first blank of `line`, nothing without a blank. Drops every
// carriage return, line feed and " /". Returns `line`.
char *clean_up_set(char *line);
