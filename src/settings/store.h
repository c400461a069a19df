// The settings store: an ordered collection of name/value settings. A names table may give known
// names a default, many values or a password's secrecy; associations let a name fall back on
// another's value. Every answer of a run lives in one store; product .ini files are read into
// others. The text form (ini_load, ini_save) is one setting a line; see docs/maintaining.md.
//
// The store owns copies of its names and values; a value that a lookup gives lives until that
// setting is replaced or removed. There is one iteration point, moved by every lookup and change.
// Functions that give an int give 0 for a null store, those that give a text give null. A store
// that was never initialised is a fault of the program: the system's error report says so and the
// process ends with status 1.
#pragma once

#include "core/format.h"
#include "core/list.h"
#include "core/text.h"

inline constexpr const char *ini_library = "INI v1.3c";
inline constexpr int ini_init_value = 32000;

struct INI_NAMES_INFO {
    const char *name;          // null ends a table
    const char *default_value; // may be null
    int multi_lines;           // the name may occur many times: every add appends
    int password;              // the value is masked in log messages
};

// Where the first setting of each name stands; kept by the store.
struct ini_places;

struct ini_settings {
    int init_value;                  // ini_init_value once initialised
    message_function dmsg;           // receives debug messages; may be null
    message_function emsg;           // receives error messages; may be null
    const INI_NAMES_INFO *ini_names; // may be null
    const char *const *associations; // pairs (name, substitute), ended by a null; may be null
    LINK_LIST settings;              // name, value, name, value, ...
    ini_places *places;              // made with the first setting, freed by ini_clear
};
using INI_SETTINGS = ini_settings;
using pINI_SETTINGS = ini_settings *;

// --- Life ---

// Makes `ini` an empty store without tables. The message functions may be null; they receive each
// message with its % doubled. 1 when the list initialised.
int ini_init(pINI_SETTINGS ini, message_function emsg, message_function dmsg);

// Stores the names table and the associations (either may be null; both must outlive the store)
// and adds the table's defaults. The result of ini_default.
int ini_setup(pINI_SETTINGS ini, const INI_NAMES_INFO *names, const char *const *associations_list);

// Adds the default of every name of the table. 1 when all adds succeeded, 0 after an error
// message otherwise.
int ini_default(pINI_SETTINGS ini);

// Frees every setting. The store can be filled again. 1.
int ini_clear(pINI_SETTINGS ini);

// --- Changes ---

// Sets `name` to a copy of `value`: replaced in place, or appended when the name is new or has many
// values. A null or empty value changes nothing and counts as done. 0 for a null name or without
// memory, which leaves the store without a half-added setting and is reported as an error.
int ini_add(pINI_SETTINGS ini, const char *name, const char *value);

// Removes the first setting of a name. 1, or 0 when there is none.
int ini_remove(pINI_SETTINGS ini, const char *want_name);

// Removes every setting of a name.
void ini_remove_all(pINI_SETTINGS ini, const char *want_name);

// Replaces the value that the iteration gave last by a copy of `value`, in place. Gives the
// replaced text, null (and nothing changed) when either argument is null, when the iteration gave
// a name or nothing last, or without memory.
heap_text ini_update(pINI_SETTINGS ini, const char *value);

// --- Iteration ---

// The number of list items: twice the number of settings.
int ini_number(pINI_SETTINGS ini);
// Puts the iteration at the first item. 1.
int ini_start(pINI_SETTINGS ini);
// The item at the iteration point, alternately a name and a value, then steps on; null at the end.
const char *ini_get(pINI_SETTINGS ini);

// --- Lookups ---

// The name that stands in for `want_name` in the associations, or null.
const char *ini_get_association(pINI_SETTINGS ini, const char *want_name);

// The first value of a name, or null. With `associations` set, a name without value is looked up
// under its substitute, and so on. The iteration point is left just behind the value.
const char *ini_value(pINI_SETTINGS ini, const char *want_name, int associations);

// The next value of that name behind the iteration point, or null.
const char *ini_next_value(pINI_SETTINGS ini, const char *want_name);

// All values of a name (the first with associations on) as a new list of the store's own texts.
// The caller clears the list with list_clear.
LINK_LIST ini_get_multi_value(pINI_SETTINGS ini, const char *want_name);

// The same by position in the names table (associations on); null or an empty list without a table.
// `id` is not range-checked.
const char *ini_value_num(pINI_SETTINGS ini, int id);
const char *ini_next_value_num(pINI_SETTINGS ini, int id);
LINK_LIST ini_get_multi_value_num(pINI_SETTINGS ini, int id);

// The same with "" in place of null.
const char *ini_value2(pINI_SETTINGS ini, const char *want_name, int associations);
const char *ini_next_value2(pINI_SETTINGS ini, const char *want_name);
const char *ini_value2_num(pINI_SETTINGS ini, int id);
const char *ini_next_value2_num(pINI_SETTINGS ini, int id);

// 1 when the value begins with "yes" or "on", ignoring case; otherwise -1 (not 0), also when there
// is none.
int ini_true(pINI_SETTINGS ini, const char *want_name);
int ini_true_num(pINI_SETTINGS ini, int id);

// --- Messages ---

// Hand "INI: " and the formatted message (1023 characters at most) to the store's receiver, if it
// has one. 1.
[[gnu::format(printf, 2, 3)]] int ini_emsg(pINI_SETTINGS ini, const char *format, ...);
[[gnu::format(printf, 2, 3)]] int ini_dmsg(pINI_SETTINGS ini, const char *format, ...);

// --- Files (file.cpp) ---

// Adds the settings of a file: NAME, one blank or tab, VALUE; "#" lines are comments; a line that
// ends in a blank and "/" goes on on the next. 1 plus the number of settings added, 0 (and an
// error message, errno saying why) when the file cannot be opened or read to its end; the store is
// then unchanged.
int ini_load(pINI_SETTINGS ini, const char *filename);

// Writes the store under a comment that names `written_by`. 1 plus the number of settings written;
// 0 after an error message, errno saying why, when the file cannot be created or written, which
// leaves an older file as it was.
int ini_save(pINI_SETTINGS ini, const char *filename, const char *written_by);
