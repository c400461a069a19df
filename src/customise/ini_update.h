// The settings that the customise flow may change, and the rewriting of the product's .ini with
// them: every `set` and `body_add` line is replaced, every other line is kept as it is. The
// operations of the flow change the settings here, its menu rewrites the file after each of them.
#pragma once

#include "settings/store.h"

#include <cstdio>
#include <string_view>

// The names of the customise store. The flow looks its values up by the positions of the answer
// store, and this is meant so: D_VLIMG_DIR gives `version` (which therefore names the images
// directory), D_CGI_NAME gives `prod_name`, D_CGI_PATH the end of the table, which has no value.
extern const INI_NAMES_INFO custom_values[];

// A settings store that lives as long as its owner. Its messages go to the log.
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

// Copies every value of each name in the names table of `dst` from `src` to `dst`.
void load_values(pINI_SETTINGS src, pINI_SETTINGS dst);

// Replaces the values of `label` by those made from the texts of the list `text`: "MODE TEXT", or
// TEXT alone for a null `mode`. With a mode, the values of other modes are kept in front of each
// new value (so once per text). 1; 0 when label or text is missing or the list is empty, and
// nothing changes.
int update_values(pINI_SETTINGS settings, const char *label, const char *mode, LINK_LIST *text);

// The first word of a value, which tells its mode: what stands behind leading blanks and tabs, up
// to the next blank or tab.
std::string_view first_word(std::string_view text);

// What follows the last blank of `text`; in a text without a blank, its second character and on.
const char *get_set(const char *text);

// A stored word or an answer as a number: TRUE and up are 1, FALSE and left are 0, a text that ends
// in a digit is its leading integer, anything else (null too) -1. Back: what a yes/no question
// offers, "YES" for a number other than 0.
int dflt_val(const char *text);
const char *give_dflt(int value);

// --- The file ---

// Rewrites (null)/PROD.ini, PROD being the `prod_name` of the customise store, by way of
// (null)/PROD.new; both are relative to the current directory, as the store has no value at the
// position of the directory. 1; 0 when it fails, which console and log are told with the file and
// the system's error: the old file is then as it was and the new one gone. Mode and owner of the
// old file are kept.
int update_ini(pINI_SETTINGS settings);

// Writes a setting as the .ini holds it: pieces of 255 characters, each but the last ended by " /",
// while more than 256 are left. (Reading joins the pieces but drops blanks and tabs at the start of
// a later one.) 1; a failed write shows when the file is closed.
int write_setting(std::FILE *file, const char *text);

// 1 when a line of the .ini belongs to one of the names of `settings`: it is_set, or continues the
// line before it, which was dropped and ended in " /" (whatever blanks, tabs and line ends
// follow).
int match_setting(const char *text, pINI_SETTINGS settings);

// 1 when `text`, behind leading blanks and tabs, begins with a name of the names table of
// `settings`. What follows the name is not looked at: "settings" is a `set`.
int is_set(const char *text, pINI_SETTINGS settings);
