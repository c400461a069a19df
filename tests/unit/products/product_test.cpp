#include "products/product.h"

#include <gtest/gtest.h>

TEST(Product, NamesAreKnownInAnyLetterCase) {
    EXPECT_STREQ(find_product("PLOVER")->name, "plover");
    EXPECT_STREQ(find_product("plover")->spool_subdirectory, "plov");
    EXPECT_EQ(find_product("merlin"), nullptr);
    EXPECT_EQ(find_product(""), nullptr);
    EXPECT_EQ(find_product(nullptr), nullptr);
}

TEST(Product, OnlyTanagerAndOspreyHaveTemplateSets) {
    EXPECT_TRUE(has_template_sets("Tanager"));
    EXPECT_TRUE(has_template_sets("OSPREY"));
    for (const char *name : {"kestrel", "plover", "merlin", ""}) {
        EXPECT_FALSE(has_template_sets(name)) << name;
    }
}

TEST(Product, OnlyTanagerIsTheImapProduct) {
    EXPECT_TRUE(is_imap_product("TANAGER"));
    for (const char *name : {"kestrel", "plover", "osprey", "merlin", ""}) {
        EXPECT_FALSE(is_imap_product(name)) << name;
    }
}

TEST(Product, SetFamilyGoesByTheExactName) {
    EXPECT_EQ(set_family("kestrel"), "kst");
    EXPECT_EQ(set_family("tanager"), "tan");
    for (const char *name : {"plover", "osprey", "merlin", "Kestrel", ""}) {
        EXPECT_EQ(set_family(name), "plv") << name;
    }
}

TEST(Product, OfAnUnknownNameIsOsprey) {
    EXPECT_STREQ(product_or_osprey("Plover").name, "plover");
    EXPECT_STREQ(product_or_osprey("merlin").name, "osprey");
    EXPECT_STREQ(product_or_osprey(nullptr).name, "osprey");
}

TEST(Product, ProgramsAreTheProductsAndTheWizard) {
    for (const char *file : {"kestrel.cgi", "plover.cgi", "tanager.cgi", "osprey.cgi", "gxsetup"}) {
        EXPECT_TRUE(is_program(file)) << file;
    }
    for (const char *file : {"Kestrel.cgi", "kestrel", "merlin.cgi", "gxsetup.cgi", ""}) {
        EXPECT_FALSE(is_program(file)) << file;
    }
}

TEST(Product, TheCurrentDirectorysOspreyIsNoProgram) {
    for (const char *file : {"kestrel.cgi", "plover.cgi", "tanager.cgi", "gxsetup"}) {
        EXPECT_TRUE(is_program_here(file)) << file;
    }
    EXPECT_FALSE(is_program_here("osprey.cgi"));
    EXPECT_FALSE(is_program_here("merlin.cgi"));
}
