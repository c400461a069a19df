// The upgrade flow: its questions and its steps. The session dispatches to it.
#pragma once

#include "setup/answer_store.h"

// Asks the upgrade questions and upgrades. Returns the result of gxupgrade, switch_to_install if
// the administrator wants the install instead.
int gxupgrade_main(pINI_SETTINGS ini);

// Fills the answer store from the old installation and the replies. Returns 1 once the answers are
// accepted, 0 if no old program was found and the install is wanted (questions.cpp).
int gxupgrade_quest(pINI_SETTINGS ini);

// Upgrades the installation by the stored answers from the distribution in the current directory.
// Returns 1 once it reached the end, even if a copy failed and said so; 0 at once if a directory
// could not be created (steps.cpp).
int gxupgrade(pINI_SETTINGS ini);
