// A small host of a test's own: a distribution of one product, unpacked in dist/, and a site whose
// directories the defaults of that distribution point into. Nothing that the wizard is told here
// leads outside. The tests that run the program or a whole flow work in one.
#pragma once

#include "support/distribution.h"
#include "support/scratch_directory.h"

#include <string>
#include <string_view>
#include <vector>

// Below the root, which is the working directory of the test while the world lives: dist/ (the
// distribution), cgi-bin/, html/ and spool/ (the site, empty).
//
// gxdflt.dat offers cgi-bin, html/vlimg and spool/PRODUCT; for tanager and
// osprey the session overwrites the images directory, so every script for them names it.
class world {
  public:
    explicit world(std::string product);

    [[nodiscard]] const std::string &product() const { return product_; }
    [[nodiscard]] std::string root() const { return scratch_.path(); }

    // The path of NAME below the root.
    [[nodiscard]] std::string path(std::string_view name) const { return scratch_.path(name); }

    // Texts as the expectations show them: "@" is the root.
    [[nodiscard]] std::string shown(std::string_view text) const;
    [[nodiscard]] std::string meant(std::string_view text) const;

  private:
    scratch_directory scratch_;
    std::string product_;
};

// Runs commands of the shell in the working directory. The test fails when one of them does.
void shell(const std::string &commands);

// Makes a file of answers or settings, in which "@" is the root.
void add_answers(const world &host, const std::string &path, std::string_view lines);

// The names in `directory` in the order in which the system lists them.
std::vector<std::string> listed_names(const std::string &directory);

// The subdirectories among them, "common" left out.
std::vector<std::string> set_names(const std::string &directory);

// The number that the wizard gives a set: its place among the set directories, from 1.
std::string set_number(const std::string &directory, std::string_view set);
