#include "products/product.h"

#include "support/rows.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

const char *name_or_osprey(const char *name) {
    return product_or_osprey(name).name;
}

// clang-format off
const std::vector<rule> rules = {
    {"Product.OnlyTanagerAndOspreyHaveTemplateSets", has_template_sets,
     {{{"Tanager"}, true}, {{"OSPREY"}, true}, {{"kestrel"}, false}, {{"plover"}, false},
      {{"merlin"}, false}, {{""}, false}}},
    {"Product.OnlyTanagerIsTheImapProduct", is_imap_product,
     {{{"TANAGER"}, true}, {{"kestrel"}, false}, {{"plover"}, false}, {{"osprey"}, false},
      {{"merlin"}, false}, {{""}, false}}},
    {"Product.SetFamilyGoesByTheExactName", set_family,
     {{{"kestrel"}, "kst"}, {{"tanager"}, "tan"}, {{"plover"}, "plv"}, {{"osprey"}, "plv"},
      {{"merlin"}, "plv"}, {{"Kestrel"}, "plv"}, {{""}, "plv"}}},
    {"Product.OfAnUnknownNameIsOsprey", name_or_osprey,
     {{{"Plover"}, "plover"}, {{"merlin"}, "osprey"}, {{nullptr}, "osprey"}}},
    {"Product.ProgramsAreTheProductsAndTheWizard", is_program,
     {{{"kestrel.cgi"}, true}, {{"plover.cgi"}, true}, {{"tanager.cgi"}, true},
      {{"osprey.cgi"}, true}, {{"gxsetup"}, true}, {{"Kestrel.cgi"}, false}, {{"kestrel"}, false},
      {{"merlin.cgi"}, false}, {{"gxsetup.cgi"}, false}, {{""}, false}}},
    {"Product.TheCurrentDirectorysOspreyIsNoProgram", is_program_here,
     {{{"kestrel.cgi"}, true}, {{"plover.cgi"}, true}, {{"tanager.cgi"}, true}, {{"gxsetup"}, true},
      {{"osprey.cgi"}, false}, {{"merlin.cgi"}, false}}},
};
// clang-format on

const int registered = register_rows(rules);

} // namespace

TEST(Product, NamesAreKnownInAnyLetterCase) {
    EXPECT_STREQ(find_product("PLOVER")->name, "plover");
    EXPECT_STREQ(find_product("plover")->spool_subdirectory, "plov");
    EXPECT_EQ(find_product("merlin"), nullptr);
    EXPECT_EQ(find_product(""), nullptr);
    EXPECT_EQ(find_product(nullptr), nullptr);
}
