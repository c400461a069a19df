// The install flow: its questions and its steps. The session dispatches to it.
#pragma once

#include "setup/answer_store.h"

// Asks the install questions and installs. Returns 1 for success, 0 for failure, switch_to_upgrade
// if the administrator wants the upgrade instead.
int gxinstall_main(pINI_SETTINGS ini);

// Fills the answer store. Returns 1 once the answers are accepted, 0 if the product is installed
// already and the administrator wants the upgrade (questions.cpp).
int gxinstall_quest(pINI_SETTINGS ini);

// Installs the product whose distribution lies in the current directory by the stored answers.
// Returns 1 if every checked step succeeded; 0 if one failed, or at once if a directory could not
// be created (steps.cpp).
int gxinstall(pINI_SETTINGS ini);
