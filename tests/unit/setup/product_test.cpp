#include "setup/product.h"

#include "support/scratch_test.h"

#include <gtest/gtest.h>

namespace {

using ProdGuess = scratch_test;

TEST_F(ProdGuess, IsTheFirstProgramOfTheList) {
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

TEST_F(ProdGuess, KnowsNoOtherSpelling) {
    write_file("Kestrel.cgi", "");
    write_file("kestrel", "");
    write_file("merlin.cgi", "");
    EXPECT_EQ(prod_guess(), 0);
}

} // namespace
