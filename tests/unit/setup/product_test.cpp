#include "setup/product.h"

#include "support/scratch_test.h"

#include <gtest/gtest.h>

namespace {

using Product = scratch_test;

TEST_F(Product, GuessIsTheFirstProgramOfTheList) {
    EXPECT_EQ(prod_guess(), 0);
    write_file("osprey.cgi", "");
    EXPECT_EQ(prod_guess(), 4);
    write_file("tanager.cgi", "");
    EXPECT_EQ(prod_guess(), 3);
    write_file("plover.cgi", "");
    EXPECT_EQ(prod_guess(), 2);
    write_file("kestrel.cgi", "");
    EXPECT_EQ(prod_guess(), 1);
}

TEST_F(Product, GuessKnowsNoOtherSpelling) {
    write_file("Kestrel.cgi", "");
    write_file("kestrel", "");
    write_file("merlin.cgi", "");
    EXPECT_EQ(prod_guess(), 0);
}

TEST_F(Product, NamesAreKnownInAnyLetterCase) {
    EXPECT_STREQ(find_product("PLOVER")->name, "plover");
    EXPECT_STREQ(find_product("plover")->templates_subdirectory, "plov");
    EXPECT_EQ(find_product("merlin"), nullptr);
    EXPECT_EQ(find_product(""), nullptr);
    EXPECT_EQ(find_product(nullptr), nullptr);
}

TEST_F(Product, OnlyTanagerAndOspreyHaveTemplateSets) {
    EXPECT_TRUE(has_template_sets("Tanager"));
    EXPECT_TRUE(has_template_sets("OSPREY"));
    for (const char *name : {"kestrel", "plover", "merlin", ""}) {
        EXPECT_FALSE(has_template_sets(name)) << name;
    }
}

TEST_F(Product, OnlyTanagerIsTheImapProduct) {
    EXPECT_TRUE(is_imap_product("TANAGER"));
    for (const char *name : {"kestrel", "plover", "osprey", "merlin", ""}) {
        EXPECT_FALSE(is_imap_product(name)) << name;
    }
}

} // namespace
