// The look of an installed product: its background image, its logo and the footer of its e-mails.
// Three operations of the customise menu on the customise store.
#pragma once

#include "settings/store.h"

// Ask for an image file, copy it into the images directory (the store's `version`) and record its
// name as the `set` value of the mode "background" or "logo". A failed copy is reported; the name
// is recorded all the same. Return 1, or 0 if memory runs out.
int do_background(pINI_SETTINGS settings);
int do_logo(pINI_SETTINGS settings);

// Edits the lines of the e-mail footer, the values of `body_add`, in passes. If no line is left the
// footer stays as it was; only [remove] removes it. Returns 1.
int do_emailfoot(pINI_SETTINGS settings);
