// The classification of installed templates at an upgrade that does not replace them: which have a
// newer copy in the distribution, and is it safe to replace them. The upgrade calls it before it
// copies any template.
#pragma once

#include "setup/answer_store.h"
#include "templates/header.h"

#include <span>

// The category of templates that can be replaced without loss.
inline constexpr int safe_category = 1;

// Compares the installed template `name` with the distribution's. Logs what cannot be read.
TMPLT_INFO classify_template(pINI_SETTINGS ini, const char *name);

// Compares every installed template with the distribution's of the same name. Where any has an
// upgrade: shows the categories on request, offers to replace the safe ones, leaves tmptlist.txt in
// the current and the installation directory and waits for enter. Always returns 0.
int do_upgrade_list(pINI_SETTINGS ini);

// Prints what was found and, if that is wanted, the three categories. Returns 1.
int print_upgrade_list(std::span<const TMPLT_INFO> templates);

// Copies the distribution's copy of each template of category 1 into the installation directory.
// One that was copied gets category 0. Returns 1 if every copy succeeded, else 0.
int safe_save(pINI_SETTINGS ini, std::span<TMPLT_INFO> templates);

// Writes the templates that have a category to tmptlist.txt and copies that into the installation
// directory. Returns 1. Returns 0 if it could not be written or copied, which is printed and
// logged, and if there is nothing to list, which leaves no file.
int save_upgrade_list(pINI_SETTINGS ini, std::span<const TMPLT_INFO> templates);
