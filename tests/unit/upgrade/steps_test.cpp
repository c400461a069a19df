#include "upgrade/upgrade.h"

#include "support/store_texts.h"
#include "support/tree.h"
#include "unit/upgrade/upgrade_world.h"

#include <gmock/gmock-matchers.h>

namespace {

using testing::HasSubstr;
using testing::Not;

// An upgrade that asks no more than it must: no originals, no removal of the distribution.
class Gxupgrade : public UpgradeWorld {
  protected:
    Gxupgrade() {
        std::filesystem::create_directory(scratch.path("cgi-bin"));
        set_answer(&ini, D_CGI_PATH, scratch.path("cgi-bin").c_str());
        set_answer(&ini, D_CGI_NAME, "kestrel");
        set_answer(&ini, D_TEMPLATES, installed().c_str());
        set_answer(&ini, D_VLIMG_DIR, scratch.path("img").c_str());
        set_answer(&ini, D_WML_NAME, "merlin");
        set_answer(&ini, D_DOMAIN, "example.com");
        write_file("kestrel.cgi", "program");
        write_file("kestrel.ini", "sample\n");
        write_file("merlin.ini", "deck\n");
    }

    // What gxupgrade shows; its result must be `result`.
    std::string upgrade(int result, const std::string &typed = "no\nno\n") {
        feed_console(typed);
        return shown(result, [&] { return gxupgrade(&ini); });
    }

    std::string in_cgi_bin(const std::string &name) const {
        return scratch.path("cgi-bin/" + name);
    }
};

constexpr const char *no_templates_found = "No files found in ";

} // namespace

TEST_F(Gxupgrade, WithoutReplacingTheIniWritesANewFileNamedAfterTheProduct) {
    set_answer(&ini, D_CGI_NAME, "mail");
    write_file(in_cgi_bin("kestrel.ini"), "old\n");
    const std::string text = upgrade(1);
    EXPECT_THAT(text, Not(HasSubstr("Creating")));
    EXPECT_EQ(read_file(in_cgi_bin("kestrel.ini")), "old\n");
    EXPECT_EQ(names_below(scratch.path("cgi-bin")),
              (string_set{"kestrel.cgi", "kestrel.ini", "kestrel.new"}));
    EXPECT_EQ(read_file(installed("kestrel.new")), read_file(in_cgi_bin("kestrel.new")));
}

TEST_F(Gxupgrade, TheWmlIniIsWrittenOnlyWhereThereIsNoneOrItIsToBeReplaced) {
    set_answer(&ini, D_WML, "TRUE");
    EXPECT_THAT(upgrade(1), HasSubstr("\nCreating merlin.ini file.\n"));
    EXPECT_TRUE(read_file(in_cgi_bin("merlin.ini")).starts_with("# merlin.ini created by "));

    write_file(in_cgi_bin("merlin.ini"), "old\n");
    EXPECT_THAT(upgrade(1), Not(HasSubstr("merlin.ini")));
    EXPECT_EQ(read_file(in_cgi_bin("merlin.ini")), "old\n");

    set_answer(&ini, D_REPLACE_INI, "TRUE");
    EXPECT_THAT(upgrade(1), HasSubstr("\nCreating merlin.ini file.\n"));
    EXPECT_TRUE(read_file(in_cgi_bin("merlin.ini")).starts_with("# merlin.ini created by "));
}

TEST_F(Gxupgrade, WithoutWmlSetsNoTemplateSetIsLeftAndTheDirectoriesStay) {
    set_answer(&ini, D_WML, "TRUE");
    set_answer(&ini, D_TPL_SET, "1 old");
    set_answer(&ini, D_VLIMG, "/vlimg");
    upgrade(1);
    EXPECT_EQ(values_of(&ini, "tpl_set"), texts{});
    EXPECT_STREQ(ini_value_num(&ini, D_TEMPLATES), installed().c_str());
    EXPECT_STREQ(ini_value_num(&ini, D_VLIMG), "/vlimg");
}

TEST_F(Gxupgrade, AnImagesDirectoryThatCannotBeMadeEndsItBeforeAnythingIsShown) {
    set_answer(&ini, D_VLIMG_DIR, "no/root");
    set_loglvl(LOG_ERROR);
    EXPECT_EQ(upgrade(0), "");
    EXPECT_EQ(log(), "Error: Can't create \"no/root\": no root supplied\n");
    EXPECT_FALSE(is_there(in_cgi_bin("kestrel.cgi")));
}

TEST_F(Gxupgrade, TheManualsDirectoryIsMadeForSetProductsAlone) {
    set_answer(&ini, D_MANUAL, "no/root");
    EXPECT_NE(upgrade(1), "");
    set_answer(&ini, D_PROD_NAME, "tanager");
    EXPECT_EQ(upgrade(0), "");
}

TEST_F(Gxupgrade, AnImagesCopyThatCannotBeMadeEndsASetProductsUpgrade) {
    set_answer(&ini, D_PROD_NAME, "osprey");
    set_answer(&ini, D_MANUAL, installed("manuals").c_str());
    set_answer(&ini, D_INSTALL_DIR, "no/root");
    EXPECT_EQ(upgrade(0), "");
    EXPECT_TRUE(is_there(installed("manuals")));
}

TEST_F(Gxupgrade, OriginalsThatCannotBeMadeEndItBehindTheOutcomeWithoutThanks) {
    set_answer(&ini, D_INSTALL_DIR, "no/root");
    stream_capture errors(stderr);
    const std::string text = upgrade(0, "yes\n");
    errors.finish();
    EXPECT_TRUE(text.starts_with(no_templates_found + std::string("no/root\n"))) << text;
    EXPECT_TRUE(
        text.ends_with("\nMake a copy of the original templates to \"no/root/originals\" \n"
                       "(This will not overwrite any templates already in this directory) [YES]? "))
        << text;
}

TEST_F(Gxupgrade, WithoutReplacingOriginalsThatAreThereStayAndNewOnesArrive) {
    std::filesystem::create_directory(installed("originals"));
    write_file(installed("originals/a.tpl"), "kept");
    write_file("tpl/a.tpl", "new");
    write_file("tpl/b.tpl", "new");
    write_file("tpl/b.gif", "no template");
    upgrade(1, "yes\nno\n");
    EXPECT_EQ(read_file(installed("originals/a.tpl")), "kept");
    EXPECT_EQ(names_below(installed("originals")), (string_set{"a.tpl", "b.tpl"}));
    EXPECT_EQ(mode_of(installed("originals/b.tpl")), "0660");
}

TEST_F(Gxupgrade, ReplacingOverwritesOriginalsToo) {
    set_answer(&ini, D_REPLACE_TMPLTS, "TRUE");
    std::filesystem::create_directory(installed("originals"));
    write_file(installed("originals/a.tpl"), "kept");
    write_file("tpl/a.tpl", "new");
    upgrade(1, "yes\nno\n");
    EXPECT_EQ(read_file(installed("originals/a.tpl")), "new");
}

TEST_F(Gxupgrade, OnlyTrueReplaces) {
    write_file("tpl/a.tpl", stamped("kst_s2", "2.0a", "new"));
    write_file(installed("a.tpl"), stamped("kst_s2", "2.0a", "old"));
    for (const char *no : {"FALSE", "true", "YES", "TRUE "}) {
        set_answer(&ini, D_REPLACE_TMPLTS, no);
        set_answer(&ini, D_REPLACE_INI, no);
        EXPECT_THAT(upgrade(1), HasSubstr("\nCopying new template files\n")) << no;
        EXPECT_EQ(read_file(installed("a.tpl")), stamped("kst_s2", "2.0a", "old")) << no;
        EXPECT_FALSE(is_there(in_cgi_bin("kestrel.ini"))) << no;
    }
}
