// The removal flow: asks where each part of an installed product lies and deletes it right after
// the yes to it. The session dispatches to it.
#pragma once

#include "setup/answer_store.h"

// Removes an installed product part by part: program files, WML program, images, users'
// directories, templates. Reports a failure and goes on with the next part. Sets the answer
// `action` to "remove". Returns 1 if every attempted deletion succeeded, else 0.
int gxremove_main(pINI_SETTINGS ini);
