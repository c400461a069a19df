// The choice of the owner of everything that is made. Install and upgrade call it before they make
// anything.
#pragma once

#include "files/accounts.h"

// Makes the user "nobody" the owner; if the system has none, asks for a user name until it knows
// one. The group is "nobody" if that exists, else the user's own. Always returns 1.
int get_uid();

// The same for the users and groups that the sources know.
void choose_owner(const account_sources &sources);
