// The two marker lines of a template: the header line (set, version, "modified" flag) and the
// checksum line, by which an upgrade tells which installed templates the customer has edited and
// which are older. The upgrade reads them into TMPLT_INFO records; main runs the two batch modes by
// which a distributor writes them.
//
// A template is read in pieces: lines of at most 511 characters, a longer line in as many pieces as
// it takes. A piece is a string of bytes; a NUL in it is a character like any other, but ends the
// text of a header line and a number.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

struct TMPLT_INFO {
    std::string name;           // the template's file name
    int category = 0;           // what tpl_category gave
    std::string old_tmplt_vers; // of the installed copy
    std::string new_tmplt_vers; // of the distribution's copy
    std::string old_tmplt_set;
    std::string new_tmplt_set;
    int modified = 0; // the installed copy counts as edited by the customer
};

// Fills the record's old fields (`is_new` 0) or new fields from the template `file`. An installed
// copy counts as modified when its flag says so, when its checksum disagrees or is missing, and
// when it has no header. 1 when it has one; 0 when the product's defaults were taken, which the log
// is told at debug level.
int tpl_load(TMPLT_INFO *tpl, const char *file, const char *prodname, int is_new);

// The same from the header line alone, which is one of the first five pieces; what the line lacks
// is empty. 0, and the record as it was, when there is none or when the file cannot be opened or
// read, which is logged under the record's name.
int tpl_get_header_info(TMPLT_INFO *tpl, const char *file, int is_new);

// What an upgrade makes of a record: 0 nothing newer, 1 newer and safe to replace, 2 newer but
// edited, 3 of another family of sets. The file is not looked at.
int tpl_category(const TMPLT_INFO *tpl, const char *file);

// Empties the five texts. 1.
int tpl_free(TMPLT_INFO *tpl);

// The checksum of a file, or with `compare` the checksum less the number on the file's checksum
// line (0 without such a line); 0 when it cannot be opened. A file that cannot be read to its end
// never agrees: it gives 1 with `compare`, 0 without. Both failures are logged.
int do_checksum(const char *file, int compare);

// The part of a checksum that the bytes `bf` add when the first of them is at the offset `fpos` of
// the file: each but line feeds and carriage returns, shifted left by its offset modulo 3, in
// wrapping 32-bit arithmetic.
int calculate(std::string_view bf, std::size_t fpos);

// Asks for a directory, a set and a version and makes the header line of each *.tpl in it anew, any
// older one dropped. The console gets a "." for each template stamped and an "x" for each that
// keeps its old content, whose error is logged. 1, or 0 when there is none to stamp.
//
// A template is replaced whole or not at all, and keeps its mode and owner; a link is replaced by
// the stamped file. temp.tpl is the scratch file: a template cannot have that name.
int tpl_add_header();

// The same for the checksum line at the end; asks for the directory alone.
int add_checksum();
