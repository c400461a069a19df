// The install flow: its questions and its steps. The session dispatches to it.
#pragma once

#include "setup/answer_store.h"

// Asks the install questions and installs. 1 for success, 0 for failure, -1 when the administrator
// wants the upgrade instead.
int gxinstall_main(pINI_SETTINGS ini);

// Fills the answer store. 1 when the answers were accepted, 0 when the product is installed already
// and the administrator wants the upgrade (questions.cpp).
int gxinstall_quest(pINI_SETTINGS ini);

// Installs the product whose distribution lies in the current directory by the stored answers. 1
// when every checked step succeeded; 0 when one failed, or at once when a directory could not be
// created (steps.cpp).
int gxinstall(pINI_SETTINGS ini);
