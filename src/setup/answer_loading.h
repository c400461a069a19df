// Loading of answers from settings files, and what is taken from a file that another user can
// write: the saved answers beside an installation, an installed .ini. Session and flows load
// through here.
#pragma once

#include "setup/answer_store.h"

#include <sys/types.h>

// Loads a settings file as ini_load does and returns its result.
//
// A file that somebody else than root and the one who runs the program can write or replace may set
// - prod_name only to a product,
// - cgi_name and wml_name only to bare file names,
// - a directory that no question shows (install_dir, manual, bulletin_path) only to one of the same
//   user as the file.
// No file changes a directory that was typed in this run. A refused answer keeps its value; the
// refusal is logged.
int load_answers(pINI_SETTINGS ini, const char *path);

// Marks the answer, a directory, as typed in this run.
void mark_typed(answer_position position);

// Whether `name` is a file name that holds only printing characters, no "/" and nothing that a
// pattern or a list of patterns reads as more than itself.
bool is_bare_name(const char *name);

// Returns the mode bits that the saved answers may have. A group, or others, that may not read one
// of the files loaded by load_answers get none. It is private_mode if one of these was a private
// file that another user could have put there.
mode_t saved_answers_mode();
