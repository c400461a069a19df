// An installed product: where its files are and what was saved with it. The flows find and load it
// here.
#pragma once

#include "setup/answer_store.h"

#include <string>

// Returns CGI_PATH/NAME.EXTENSION, where NAME is the answer `name`.
std::string cgi_file(pINI_SETTINGS ini, answer_position name, const char *extension);

// Whether the product's program is in the cgi directory, under the name that the answers tell.
bool is_program_installed(pINI_SETTINGS ini);

// Load the .ini of the product installed as cgi_name, and the answers saved in its templates
// directory. Return false if the file could not be opened, which is logged.
bool load_installed_ini(pINI_SETTINGS ini);
bool load_installed_answers(pINI_SETTINGS ini);
