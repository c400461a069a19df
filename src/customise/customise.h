// The customise flow: the look of an installed kestrel or plover. It finds the installed program,
// keeps the settings that may be changed in a small store of its own and offers a menu of
// operations on it; after each of them the product's .ini is rewritten. The session runs it.
#pragma once

#include "settings/store.h"

// Runs the flow on the answer store. Always 1; a template-set product is refused at once. Who
// cannot name the program leaves with "q". What fails in an operation is reported and the menu goes
// on.
//
// The .ini is backed up as CGI_PATH/NAME_old.ini (NAME cut to four characters) at the first choice
// that is no operation; once an operation was chosen, it never is.
int gxcustom_main(pINI_SETTINGS ini);
