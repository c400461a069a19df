// Whether an upgrade or an installation would change anything: the replies ask when they know all
// answers.
#pragma once

#include "setup/answer_store.h"
#include "unattended/named_answers.h"

// Whether the distribution in the current directory is installed by the answers of the store, and
// every answer that was named is the one of the last run. What is compared:
//
// - the program, and the WML program if it is wanted, with the distribution's, byte for byte: what
//   version the saved answers tell is not asked;
// - its .ini is there;
// - each template and image of the distribution is there. Its content is not compared, since
//   templates are edited, but a template that was not edited must be as new as the distribution's,
//   unless `replace_safe` is no;
// - the named answers that are saved, with gxsetup.dat of the installation. How the files are put
//   in place (`replace_templates`, `keep_originals` and the like) is no part of what is installed.
bool is_installed_with(pINI_SETTINGS ini, const named_answers &named);
