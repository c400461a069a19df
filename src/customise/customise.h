// The customise flow: the look of an installed kestrel or plover. It finds the installed program,
// keeps the settings that may be changed in a small store of its own and offers a menu of
// operations on it; after each of them the product's .ini is rewritten. The session runs it.
#pragma once

#include "settings/store.h"

// Runs the flow on the answer store and returns 1. Refuses a product with template sets at once. A
// failed operation is reported and the menu goes on.
//
// Backs the .ini up as CGI_PATH/NAME_old.ini (NAME cut to four characters) when the first choice is
// to quit or is invalid, and tries again at the next such choice if that failed. Once an operation
// was chosen no backup is made.
int gxcustom_main(pINI_SETTINGS ini);
