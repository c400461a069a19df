// The version probe: asks the product's program in the current directory for its version. The
// session calls it.
#pragma once

#include "setup/answer_store.h"

// Runs the program named by the answer `setting` with -version, directly and with its standard
// input closed. Collects its output in ver.txt, which is then removed. Stores what follows the
// first lower-case v of a "Version:" line as the answer `version`. Returns 1, or 0 if there is no
// such line. Logs every failure but an unreadable ver.txt.
//
// Runs no program of another directory. For root, runs another user's program with that user's
// rights.
int get_version(pINI_SETTINGS ini, answer_position setting);
