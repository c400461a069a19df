// Sample distributions of the products. The worlds of the tests and of the fuzz target unpack
// them; nothing here needs a test framework.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// What tells one release from another.
struct sample_release {
    std::string version;             // what the program prints when it is asked
    std::string mark;                // each file is "MARK PATH", its path below the distribution
    std::string settings;            // PRODUCT.ini
    std::string merlin_settings;     // merlin.ini
    bool has_plain_templates = true; // tpl/index.tpl and tpl/head.tpl of a flat product
};

// The names of all products.
std::vector<std::string> product_names();

// Whether the product's templates come in sets.
bool has_sets(std::string_view product);

// Makes dist/ below the working directory the release of the product, in place of an older one;
// what the wizard left there stays.
//
// kestrel and plover have their templates and images in tpl/; tanager and osprey have the sets
// "blue" and "marble" beside "common" in tpl/ and img/, and manuals/. All have the WML set "wml"
// beside "common" in wap/, two scripts, the setup program and its help.
void unpack_release(const std::string &product, const sample_release &release);

// Makes a file and the directories above it, of mode 0644.
void add_file(const std::string &path, std::string_view content);

// Makes `path` a program of shell commands.
void add_script(const std::string &path, std::string_view commands);

// Makes `path` a program that prints `output`, which ends in a line feed, when it is called with
// -version.
void add_program(const std::string &path, std::string_view output);
