// The removal flow: asks where each part of an installed product lies and deletes it right after
// its yes. The session dispatches to it.
#pragma once

#include "setup/answer_store.h"

// Removes an installed product part by part: program files, WML program, images, users'
// directories, templates. A failure is reported and the next part follows. 1 when every attempted
// deletion succeeded, else 0; the answer `action` is then "remove".
int gxremove_main(pINI_SETTINGS ini);
