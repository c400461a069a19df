// The products and what tells them apart. Session, questions and flows ask here instead of
// comparing names.
#pragma once

#include <array>

struct product {
    const char *name;
    const char *templates_subdirectory; // below the spool directory
    bool has_template_sets;             // sets, per-set images, manuals, bulletins, login hosts
    bool is_imap;                       // asks for an imap host, the others for a pop host
};

// In the order in which they are looked for.
inline constexpr std::array<product, 4> products = {{
    {"kestrel", "kestrel", false, false},
    {"plover", "plov", false, false},
    {"tanager", "tanager", true, true},
    {"osprey", "osprey", true, false},
}};

// The product of that name, case ignored, or null.
const product *find_product(const char *name);

// Whether the product of that name has template sets; whether it is an IMAP product.
bool has_template_sets(const char *name);
bool is_imap_product(const char *name);

// Which product's program lies in the current directory: 1 kestrel, 2 plover, 3 tanager, 4 osprey,
// 0 none. The first one that can be opened decides.
int prod_guess();
