// Which template set and version a template belongs to and whether the customer has edited it, read
// from its header line and its checksum. The upgrade fills a TMPLT_INFO record for each template
// and asks for its category.
//
// A template is read in pieces: lines of at most 511 characters, a longer line in as many pieces as
// it takes. A NUL is a character like any other, but ends the text of a header line.
#pragma once

#include <string>

struct TMPLT_INFO {
    std::string name;           // the template's file name
    int category = 0;           // the result of tpl_category
    std::string old_tmplt_vers; // of the installed copy
    std::string new_tmplt_vers; // of the distribution's copy
    std::string old_tmplt_set;
    std::string new_tmplt_set;
    int modified = 0; // 1 if the installed copy counts as edited by the customer
};

// Fills the record's old fields (`is_new` 0) or new fields from the template `file`. Returns 1 if
// it has a header. Returns 0 if the product's defaults were used, and logs that at debug level.
//
// An installed copy counts as modified if it has no header, if its header says so, or if its
// checksum disagrees or is missing.
int tpl_load(TMPLT_INFO *tpl, const char *file, const char *prodname, int is_new);

// Fills the fields, and for an installed copy `modified`, from the header line alone. It is looked
// for in the first five pieces; a field that it lacks is empty. Returns 1, or 0 and leaves the
// record as it was if there is none. A file that cannot be opened or read has none; its name in the
// record is logged.
int tpl_get_header_info(TMPLT_INFO *tpl, const char *file, int is_new);

// Returns what an upgrade makes of a record: 0 nothing newer, 1 newer and safe to replace, 2 newer
// but edited, 3 of another family of sets. `file` is not used.
int tpl_category(const TMPLT_INFO *tpl, const char *file);

// Empties the record's five texts. Returns 1. Part of the fixed interface; the program itself does
// not call it.
int tpl_free(TMPLT_INFO *tpl);
