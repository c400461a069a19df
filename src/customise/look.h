// The look of an installed product: its background image, its logo and the footer of its e-mails.
// Three operations of the customise menu on the customise store. Each gives 1, or 0 when there is
// no memory for what was chosen.
#pragma once

#include "settings/store.h"

// Ask for an image file, copy it into the images directory (the store's `version`; a failed copy is
// reported and changes nothing else) and record its name as the `set` value of the mode
// "background" or "logo".
int do_background(pINI_SETTINGS settings);
int do_logo(pINI_SETTINGS settings);

// Edits the lines of the e-mail footer, the values of `body_add`, in passes. A footer that ends up
// without lines is left as it was: it is removed with [remove].
int do_emailfoot(pINI_SETTINGS settings);
