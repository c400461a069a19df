// The products: one row each, with everything that differs between them. Every other module asks
// here instead of comparing names.
#pragma once

#include <array>
#include <string_view>

enum class mail_protocol { pop3, imap };

struct product {
    const char *name;
    const char *spool_subdirectory; // below the spool directory
    bool has_template_sets;       // template sets, per-set images, manuals, bulletins, login hosts
    mail_protocol protocol;       // which mail host is asked for and written to the .ini
    const char *images_directory; // replaces any loaded one; null keeps that
    const char *unix_templates;   // what a defaults file suggests, by operating system
    const char *windows_templates;
    const char *set_family;  // of the template sets that a template without a header gets
    bool shows_manuals;      // the summary of answers names the manuals directory
    bool upgrade_keeps_sets; // an upgrade that met it once keeps to template sets
    bool is_program_here;    // its program in the current directory is copied as a program
};

// In the order in which prod_guess looks for them.
inline constexpr auto products = std::to_array<product>({
    {
        .name = "kestrel",
        .spool_subdirectory = "kestrel",
        .has_template_sets = false,
        .protocol = mail_protocol::pop3,
        .images_directory = nullptr,
        .unix_templates = "/var/spool/kestrel",
        .windows_templates = R"(\kestrel)",
        .set_family = "kst",
        .shows_manuals = false,
        .upgrade_keeps_sets = false,
        .is_program_here = true,
    },
    {
        .name = "plover",
        .spool_subdirectory = "plov",
        .has_template_sets = false,
        .protocol = mail_protocol::pop3,
        .images_directory = nullptr,
        .unix_templates = "/var/spool/plov",
        .windows_templates = R"(\plov)",
        .set_family = "plv",
        .shows_manuals = false,
        .upgrade_keeps_sets = false,
        .is_program_here = true,
    },
    {
        .name = "tanager",
        .spool_subdirectory = "tanager",
        .has_template_sets = true,
        .protocol = mail_protocol::imap,
        .images_directory = "/home/httpd/html/vlimg/imap",
        .unix_templates = "/var/spool/tanager",
        .windows_templates = R"(\tanager)",
        .set_family = "tan",
        .shows_manuals = true,
        .upgrade_keeps_sets = false,
        .is_program_here = true,
    },
    {
        .name = "osprey",
        .spool_subdirectory = "osprey",
        .has_template_sets = true,
        .protocol = mail_protocol::pop3,
        .images_directory = "/home/httpd/html/vlimg/mail",
        .unix_templates = "/var/spool/osprey",
        .windows_templates = R"(\osprey)",
        .set_family = "plv",
        .shows_manuals = false,
        .upgrade_keeps_sets = true,
        .is_program_here = false,
    },
});

// Returns the product of that name, case ignored, or null.
const product *find_product(const char *name);

// The same, but osprey for an unknown name: its directories are then offered.
const product &product_or_osprey(const char *name);

// Whether the product of that name has template sets; whether it is an IMAP product. False for an
// unknown name.
bool has_template_sets(const char *name);
bool is_imap_product(const char *name);

// Returns the family of the template sets of the product with exactly that name; plover's for any
// other name.
std::string_view set_family(std::string_view name);

// Whether `file` is copied with the mode of a program: the wizard itself, or a product's program.
// In the current directory only products with `is_program_here` count.
bool is_program(std::string_view file);
bool is_program_here(std::string_view file);
