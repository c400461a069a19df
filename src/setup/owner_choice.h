// The choice of the owner of everything that is made. Install and upgrade call it before they make
// anything.
#pragma once

#include "files/accounts.h"

// Makes "nobody" the owner, or else asks for a user name until the system knows it. The group is
// the user's own, or "nobody" wherever that group exists, whatever the user. Always returns 1.
int get_uid();

// The same for the users and groups that the sources know.
void choose_owner(const account_sources &sources);
