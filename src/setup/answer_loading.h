// Loading of answers from settings files, and what is taken from a file that another user can
// write: the saved answers beside an installation, an installed .ini. Session and flows load
// through here.
#pragma once

#include "setup/answer_store.h"

#include <sys/types.h>

// Loads a settings file as ini_load does and returns its result.
//
// From a file that somebody else than root and the one who runs the program can write, or replace,
// takes as prod_name only a product, as cgi_name and wml_name only bare file names, and as a
// directory that no question shows (install_dir, manual, bulletin_path) only one that belongs to
// the same user as the file. From no file takes another directory than the one typed in this run.
// What is not taken stays as it was; the log says why.
int load_answers(pINI_SETTINGS ini, const char *path);

// Marks the answer, a directory, as typed in this run.
void mark_typed(answer_position position);

// Whether `name` is a file name that holds only printing characters, no "/" and nothing that a
// pattern or a list of patterns reads as more than itself.
bool is_bare_name(const char *name);

// The bits that the mode of saved answers may have: a group, or others, that may not read one of
// the files loaded by load_answers have no rights to them.
mode_t saved_answers_mode();
