// The product's .ini file: the questions that feed it, the summary of all answers, and the writer
// that makes the file from the distribution's sample and the answers. Install and upgrade use it.
#pragma once

#include "core/format.h"
#include "setup/answer_store.h"

// The name under whose rules the WML program's .ini is written.
inline constexpr const char *wml_product = "merlin";

// Writes the .ini of product `prod` to `file` from the sample PROD.ini of the current directory and
// the answers, gives it to the owner and copies it into the templates directory. Returns 1; 0 if
// the sample or the file cannot be opened, or the file cannot be written. Prints and logs such a
// failure and leaves an older file as it was.
int write_new_gxini(pINI_SETTINGS ini, const char *prod, const char *file);

// Asks for domain and mail hosts and, for the products with template sets, for the hosts that users
// may log in to. With `guess` the host defaults are first made from the domain. Returns the result
// of the last ini_add.
int do_ini_quest(pINI_SETTINGS ini, int guess);

// Makes the relative URL of the images directory: its path below the document root, which is taken
// to be the directory below the common parent of it and the cgi directory. Returns the text of
// `url`.
const char *get_URL(pINI_SETTINGS ini, path_text &url);

// Shows all answers and asks whether to change any. Returns 1 for a change, else 0.
int print_gxvalues(pINI_SETTINGS ini);
