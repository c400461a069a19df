// What the program calls itself. Every banner, comment line and log line that names the program
// takes the text from here; the build reads the package version out of it.
#pragma once

inline constexpr const char *program_version = "gxsetup, version 3.0h";
