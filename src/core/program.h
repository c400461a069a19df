// The program's name and version, as every banner, comment line and log line shows them. The build
// reads the package version from here.
#pragma once

inline constexpr const char *program_version = "gxsetup, version 3.0h";
