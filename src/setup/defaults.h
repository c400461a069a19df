// The defaults-file maker: asks a distributor what a product's setup should suggest and saves the
// answers as a settings file. The session starts from that file if it is beside the product as
// gxdflt.dat. main runs this.
#pragma once

// Asks its questions and saves the answers in a file of the name given last, whose ending must be
// ".dat" (added if the name has no "."). Fills and clears the answer store. Returns 1. If the name
// is refused or the file cannot be written prints and logs why, leaves the store full and returns
// 0.
int make_dflt();
