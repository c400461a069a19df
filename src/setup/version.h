// The version probe: what version is the product whose program lies in the current directory?
#pragma once

#include "setup/answer_store.h"

// Runs the program named by the answer `setting` with -version, its output going to ver.txt, and
// stores what follows the first lower-case v of a "Version:" line as the answer `version`. 1 when
// there was such a line; 0 otherwise, which the log is told where it says more than that ver.txt
// could not be opened. The program is started directly, its standard input closed; ver.txt is
// deleted once it was read.
int get_version(pINI_SETTINGS ini, answer_position setting);
