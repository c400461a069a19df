// Which product a distribution holds. The session and the .ini writer ask.
#pragma once

// Returns which product's program lies in the current directory: 1 kestrel, 2 plover, 3 tanager,
// 4 osprey, 0 none. The first one that can be opened decides.
int prod_guess();
