// Two releases of a distribution for the tests of upgrade and removal: 3.1, which is installed, and
// 3.2, which is unpacked over it. Both are made and installed by the wizard itself.
#pragma once

#include "support/wizard_run.h"

#include <string>
#include <string_view>
#include <vector>

// A template that the two stamping modes have marked.
struct stamped_template {
    std::string name;
    std::string set;
    std::string version;
    std::string text;
};

// Makes templates of `directory`, stamped by the wizard.
void add_templates(const world &host, const std::string &directory,
                   const std::vector<stamped_template> &templates);

// What stands between header and checksum of a stamped template.
std::string template_text(const std::string &path);

// Adds a line to a file, as an administrator would by hand.
void edit_by_hand(const std::string &path, std::string_view line);

// Makes a file the administrator's own, whose word counts without being weighed.
void make_own(const std::string &path);

// Makes dist/ the release 3.1 or 3.2 of the world's product. What the wizard itself left there
// (answers, log) stays.
//
// kestrel and plover (FAM is "kst" or "plv"):
//   template      3.1              3.2
//   clean.tpl     FAM_s2 2.0a      FAM_s2 2.1
//   edited.tpl    FAM_s2 2.0a      FAM_s2 2.1
//   moved.tpl     FAM_s2 2.0a      pad_s1 1.0
//   same.tpl      FAM_s2 2.1       FAM_s2 2.1, with another text
//   dropped.tpl   FAM_s2 2.5       -
//   brandnew.tpl  -                FAM_s2 2.1
// and new pictures, one of them under a new name.
//
// tanager and osprey: other texts in every set, a new set "slate", and a word list among the
// images.
//
// Both: other programs, samples, scripts, manuals and WML pages, where there are any.
void unpack_31(const world &host);
void unpack_32(const world &host);

// Installs 3.1 (with the WML part when `wml` is "yes") without originals, the unpacked files being
// deleted, edits edited.tpl, or index.tpl of the set "marble", by hand and unpacks 3.2.
void install_31_and_unpack_32(const world &host, const std::string &wml = "no");

// A world in which that has been done.
class upgrade_world : public world {
  public:
    explicit upgrade_world(std::string product, const std::string &wml = "no")
        : world(std::move(product)) {
        install_31_and_unpack_32(*this, wml);
    }
};
