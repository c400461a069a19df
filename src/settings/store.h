// The settings store: an ordered collection of name/value settings. A names table may give known
// names a default, many values or a password's secrecy; associations let a name fall back on
// another's value. Every answer of a run lives in one store; product .ini files are read into
// others. The text form (ini_load, ini_save) is one setting a line; see docs/maintaining.md.
//
// The store owns copies of its names and values; a value that a lookup returns lives until that
// setting is replaced or removed. There is one iteration point, which every lookup and change
// moves. For a null store the procedures return 0 or null. For a store that was never initialised
// they print the system's error report (perror, POSIX) and end the process with status 1.
#pragma once

#include "core/format.h"
#include "core/list.h"
#include "core/place.h"
#include "core/text.h"

inline constexpr const char *ini_library = "INI v1.3c";
inline constexpr int ini_init_value = 32000;

// A settings file is read in pieces of 510 characters and a NUL: a longer line is several.
inline constexpr std::size_t setting_piece_size = 511;

struct INI_NAMES_INFO {
    const char *name;          // null ends a table
    const char *default_value; // may be null
    int multi_lines;           // the name may have many values: every add appends
    int password;              // the value is masked in log messages
};

// Finds the first setting of a name; private to the store.
struct ini_index;

struct ini_settings {
    int init_value;                  // ini_init_value once initialised
    message_function dmsg;           // receives debug messages; may be null
    message_function emsg;           // receives error messages; may be null
    const INI_NAMES_INFO *ini_names; // may be null
    const char *const *associations; // pairs (name, substitute), ended by a null; may be null
    LINK_LIST settings;              // name, value, name, value, ...
    ini_index *index;                // made with the first setting, freed by ini_clear
};
using INI_SETTINGS = ini_settings;
using pINI_SETTINGS = ini_settings *;

// --- Life ---

// Makes `ini` an empty store without tables. The message functions may be null; they receive each
// message with its % doubled. Returns 1.
int ini_init(pINI_SETTINGS ini, message_function emsg, message_function dmsg);

// Stores the names table and the associations (either may be null; both must outlive the store) and
// adds the table's defaults. Returns what ini_default returns.
int ini_setup(pINI_SETTINGS ini, const INI_NAMES_INFO *names, const char *const *associations_list);

// Adds the default of every name of the table. Returns 1, or 0 if any add failed, which is logged.
int ini_default(pINI_SETTINGS ini);

// Frees every setting. The store can be filled again. Returns 1.
int ini_clear(pINI_SETTINGS ini);

// --- Changes ---

// Sets `name` to a copy of `value`: replaces the value in place, or appends a setting if the name
// is new or has many values. A null or empty value changes nothing and counts as done. Returns 1,
// or 0 for a null name or if memory runs out. The latter is logged and leaves no half-added
// setting, but a setting whose new value cannot be inserted is removed.
int ini_add(pINI_SETTINGS ini, const char *name, const char *value);

// Removes the first setting of a name. Returns 1, or 0 if there is none.
int ini_remove(pINI_SETTINGS ini, const char *want_name);

// Removes every setting of a name.
void ini_remove_all(pINI_SETTINGS ini, const char *want_name);

// Replaces the value that the iteration returned last by a copy of `value`, in place. Returns the
// old value. Returns null and changes nothing if an argument is null, if the iteration returned a
// name or nothing last, or if memory runs out.
heap_text ini_update(pINI_SETTINGS ini, const char *value);

// --- Iteration ---

// Returns the number of list items: twice the number of settings.
int ini_number(pINI_SETTINGS ini);
// Moves the iteration point to the first item. Returns 1.
int ini_start(pINI_SETTINGS ini);
// Returns the item at the iteration point, alternately a name and a value, and steps on. Returns
// null at the end.
const char *ini_get(pINI_SETTINGS ini);

// --- Lookups ---

// Returns the substitute of `want_name` in the associations, or null. Logs a substitute (debug).
const char *ini_get_association(pINI_SETTINGS ini, const char *want_name);

// Returns the first value of a name, or null. With `associations` set, a name without a value is
// looked up under its substitute, and so on. Leaves the iteration point right after the value, or
// at the end.
const char *ini_value(pINI_SETTINGS ini, const char *want_name, int associations);

// Returns the next value of that name after the iteration point, or null. Uses no associations.
const char *ini_next_value(pINI_SETTINGS ini, const char *want_name);

// Returns all values of a name (the first with associations) as a new list of the store's own
// texts, which the caller clears with list_clear.
LINK_LIST ini_get_multi_value(pINI_SETTINGS ini, const char *want_name);

// The same for the name at position `id` of the names table, with associations. Without a table
// they return null or an empty list. `id` is not checked.
const char *ini_value_num(pINI_SETTINGS ini, int id);
const char *ini_next_value_num(pINI_SETTINGS ini, int id);

// The same, but they return "" in place of null.
const char *ini_value2(pINI_SETTINGS ini, const char *want_name, int associations);
const char *ini_value2_num(pINI_SETTINGS ini, int id);

// --- Messages ---

// Pass "INI: " and the formatted message (1023 characters at most) to the store's message function,
// if it has one. Return 1.
[[gnu::format(printf, 2, 3)]] int ini_emsg(pINI_SETTINGS ini, const char *format, ...);
[[gnu::format(printf, 2, 3)]] int ini_dmsg(pINI_SETTINGS ini, const char *format, ...);

// --- Files (file.cpp) ---

// Adds the settings of a file. A line is NAME, one blank or tab, VALUE; "#" begins a comment; a
// blank and "/" at the end continue the line on the next one. Returns 1 plus the number of settings
// added. If the file cannot be opened or read to its end, logs that, changes nothing and returns 0
// with errno set.
int ini_load(pINI_SETTINGS ini, const char *filename);

// Opens a settings file to read it, by the rules of place::open_to_read; more than 16 MiB cannot be
// opened. And ini_load for the file that was opened so; `filename` names it in messages. A caller
// that must know whose file it is looks at it between the two.
open_file open_settings(const named_place &where);
int ini_load_opened(pINI_SETTINGS ini, const char *filename, open_file opened);

// Writes the store, after a comment that names `written_by`. Returns 1 plus the number of settings
// written. If the file cannot be created or written, logs that, leaves an older file as it was and
// returns 0 with errno set.
int ini_save(pINI_SETTINGS ini, const char *filename, const char *written_by);

// ini_save to a file that gets no more rights than `most` has.
int ini_save_limited(pINI_SETTINGS ini, const char *filename, const char *written_by, mode_t most);

// --- Part of the fixed interface; the program itself does not call these ---

// ini_get_multi_value and ini_next_value by position, or with "" in place of null.
LINK_LIST ini_get_multi_value_num(pINI_SETTINGS ini, int id);
const char *ini_next_value2(pINI_SETTINGS ini, const char *want_name);
const char *ini_next_value2_num(pINI_SETTINGS ini, int id);

// Return 1 if the value begins with "yes" or "on", in any case; otherwise -1 (not 0), also if there
// is no value.
int ini_true(pINI_SETTINGS ini, const char *want_name);
int ini_true_num(pINI_SETTINGS ini, int id);
