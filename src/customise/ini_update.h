// The settings that the customise flow may change, and the update of the product's .ini: every
// `set` and `body_add` line is replaced, every other line is kept as it is. The operations of the
// flow change the settings, its menu updates the file after each of them.
#pragma once

#include "settings/store.h"

#include <cstdio>
#include <string_view>

// The names of the customise store. Its values are looked up by the positions of the answer store,
// which stand for other names here (kept): D_VLIMG_DIR means `version`, which therefore names the
// images directory; D_CGI_NAME means `prod_name`; D_CGI_PATH is the end of the table: no value.
extern const INI_NAMES_INFO custom_values[];

// A settings store that is cleared at the end of its scope. Its messages go to the log.
class scoped_store {
  public:
    explicit scoped_store(const INI_NAMES_INFO *names);
    ~scoped_store() { ini_clear(&store_); }
    scoped_store(const scoped_store &) = delete;
    scoped_store &operator=(const scoped_store &) = delete;

    pINI_SETTINGS get() { return &store_; }

  private:
    INI_SETTINGS store_;
};

// --- Values ---

// Copies all values of the names in the names table of `dst` from `src` to `dst`.
void load_values(pINI_SETTINGS src, pINI_SETTINGS dst);

// Replaces the values of `label` by those made from the texts of the list `text`: "MODE TEXT", or
// TEXT alone for a null `mode`. With a mode, the values of the other modes are kept in front of
// each new value, so once per text (kept). Returns 1, or 0 and changes nothing if label or text is
// missing or the list is empty.
int update_values(pINI_SETTINGS settings, const char *label, const char *mode, LINK_LIST *text);

// Returns the first word of a value, which is its mode. Blanks and tabs separate words.
std::string_view first_word(std::string_view text);

// Returns what follows the last blank of `text`. Without a blank only the first character is left
// out (kept).
const char *get_set(const char *text);

// Converts a stored word or an answer to a number: TRUE and up are 1, FALSE and left are 0. A text
// that ends in a digit is its leading integer. Anything else, and null, is -1.
int dflt_val(const char *text);

// Returns the default of a yes/no question: "NO" for 0, else "YES".
const char *give_dflt(int value);

// --- The file ---

// Replaces the `set` and `body_add` lines of (null)/PROD.ini, PROD being the `prod_name` of the
// customise store; keeps mode and owner. The directory is called "(null)", in the current one,
// because the store has no value at its position. The new file is written as (null)/PROD.new.
// Returns 1. On failure prints and logs the file and the system's error, leaves the old file as it
// was, removes the new one and returns 0.
int update_ini(pINI_SETTINGS settings);

// Writes a setting, broken into lines: while more than 256 characters are left, 255 of them and
// " /". (ini_load joins the lines but drops blanks and tabs at the start of a later one.) Returns
// 1; the caller sees a failed write when it closes the file.
int write_setting(std::FILE *file, const char *text);

// Returns 1, and the line is to be dropped, if it belongs to one of the names of `settings`: if
// is_set returns 1 for it, or if the call before dropped a line that ended in " /" (and any blanks,
// tabs and line ends). Returns 0 for every other line.
int match_setting(const char *text, pINI_SETTINGS settings);

// Returns 1 if `text`, after leading blanks and tabs, begins with a name of the names table of
// `settings`, else 0. Ignores what follows the name: "settings" is a `set` (kept).
int is_set(const char *text, pINI_SETTINGS settings);
