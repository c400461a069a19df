// What both programs do first. Their mains call it.
#pragma once

// Opens /dev/null for each standard stream that is closed, so that no file that is opened later
// gets its number and the dialogue with it. Ignores SIGPIPE and SIGXFSZ: a console that goes away
// or a file that may not grow then fails a write, and does not end the program in its work.
void secure_standard_streams();

// Starts gxsetup.log in the current directory, the older logs rotated, at level info.
void start_log();

// Logs at level debug from here on.
void log_details();
