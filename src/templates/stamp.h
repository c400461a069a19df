// The two batch modes by which a distributor writes the marker lines of templates. main runs them.
//
// Both ask for a directory and stamp each *.tpl in it. The console gets a "." for each template
// stamped and an "x" for each that keeps its old content; why it does is logged. A template is
// replaced whole or not at all and keeps its mode and owner; a link is replaced by the stamped
// file. The scratch file is temp.tpl in that directory: no template can have that name.
#pragma once

// Replaces the header lines of each template by a new first line. Asks for its set and version.
// Returns 1, or 0 if the directory holds no template.
int tpl_add_header();

// Replaces the checksum lines of each template by a new last line. Returns 1, or 0 if the directory
// holds no template.
int add_checksum();
