// The product's .ini file: the questions that feed it, the summary of all answers, and the writer
// that makes the file from the distribution's sample and the answers. Install and upgrade use it.
#pragma once

#include "core/format.h"
#include "setup/answer_store.h"

// The name under whose rules the WML program's .ini is written.
inline constexpr const char *wml_product = "merlin";

// Writes the .ini of product `prod` to `file` from the sample PROD.ini of the current directory and
// the answers, gives it to the owner and copies it into the templates directory. 1; 0 when the
// sample or the file cannot be opened or the file not be written, which console and log are told:
// an older file is then left as it was.
int write_new_gxini(pINI_SETTINGS ini, const char *prod, const char *file);

// Asks for domain and mail hosts and, for the template-set products, for the hosts that users may
// log in to. With `guess` the host defaults are first made from the domain. The result of the last
// store.
int do_ini_quest(pINI_SETTINGS ini, int guess);

// The relative URL of the images directory: the directory below the common parent of it and the
// cgi directory is taken for the web server's document root. Gives `url`.
const char *get_URL(pINI_SETTINGS ini, path_text &url);

// Shows all answers and asks whether to change any. 1 for a change, 0 for none.
int print_gxvalues(pINI_SETTINGS ini);
