// The upgrade flow: its questions and its steps. The session dispatches to it.
#pragma once

#include "setup/answer_store.h"

// Asks the upgrade questions and upgrades. The result of gxupgrade, -2 when the administrator wants
// the install instead.
int gxupgrade_main(pINI_SETTINGS ini);

// Fills the answer store from the old installation and the replies. 1 when the answers were
// accepted, 0 when no old program was found and the install is wanted (questions.cpp).
int gxupgrade_quest(pINI_SETTINGS ini);

// Upgrades the installation by the stored answers from the distribution in the current directory.
// 1 when it reached the end, whatever a copy did, which the console is told; 0 at once when a
// directory could not be created (steps.cpp).
int gxupgrade(pINI_SETTINGS ini);
