// The program's one log file. Every error, informational step and (at debug level) detail of a run
// is a time-stamped line of gxsetup.log; earlier runs stay as gxsetup1.log and gxsetup2.log.
// Messages from before the log is opened go to init.log. Two variants print the message too.
#pragma once

#include <cstddef>

enum log_level : int { LOG_ERROR = 0, LOG_INFO = 1, LOG_DEBUG = 2 };

// The names of the levels in their order, ended by a null.
inline constexpr const char *log_names[] = {"error", "info", "debug", nullptr};

// Opens PATH/S.log for appending. Returns 1, or 0 if it cannot be opened; prints nothing.
int inilog(const char *path, const char *s);

// Closes the log if it is open. A later message opens it again.
void close_log();

// Keeps no log from here on: messages are only shown, where they are shown.
void keep_no_log();

// The level: a message is written if its own level is no higher. Negative levels are ignored.
int get_loglvl();
void set_loglvl(int level);

// Write one line at level error, info or debug, "\n" added. Return the bytes of the line without
// its time stamp, 0 if it was filtered out or could not be written.
[[gnu::format(printf, 1, 2)]] int emsg(const char *format, ...);
[[gnu::format(printf, 1, 2)]] int imsg(const char *format, ...);
[[gnu::format(printf, 1, 2)]] int dmsg(const char *format, ...);

// Writes a prepared line of `len` bytes after a time stamp. Rotates first if the file would grow
// past 100000 counted bytes. Returns `len`; on failure prints so and returns 0.
int logit(const char *output, std::size_t len);

// Renames NAME1.log to NAME2.log and NAME.log to NAME1.log, then starts NAME.log anew, always in
// the current directory. Returns 1 if every rename worked and the new file is open, else 0.
int rotate_logs();

// Print a message ("Error: MESSAGE" or the message alone, and a line feed) and log it at level
// error or info. An error is noted as a failure of the run. The log reads the finished text as a
// format again, with no arguments.
[[gnu::format(printf, 1, 2)]] void print_emsg(const char *msg, ...);
[[gnu::format(printf, 1, 2)]] void print_imsg(const char *msg, ...);

// --- Part of the fixed interface; the program itself does not call these ---

// Return the name of a level, or null outside 0 to 2; the level of an exact name, or -1.
const char *get_loglvl_name(int level);
int get_loglvl_id(const char *name);

// As emsg, with the text of the current system error in parentheses after the message.
[[gnu::format(printf, 1, 2)]] int filemsg(const char *format, ...);
