#include "core/paths.h"

#include <gtest/gtest.h>
#include <string>

namespace {

constexpr const char *no_text = nullptr;

} // namespace

TEST(CheckForRoot, LooksAtTheFirstCharacter) {
    EXPECT_EQ(check_for_root("/srv"), 1);
    EXPECT_EQ(check_for_root("/"), 1);
    EXPECT_EQ(check_for_root("srv/"), 0);
    EXPECT_EQ(check_for_root(" /srv"), 0);
    EXPECT_EQ(check_for_root(""), 0);
}

TEST(CleanUpRoot, GivesTheFirstSeparatorOrTheEnd) {
    const char *text = "abc/def/";
    EXPECT_EQ(clean_up_root(text), text + 3);
    const char *plain = "abc";
    EXPECT_EQ(clean_up_root(plain), plain + 3);
    EXPECT_EQ(clean_up_root(nullptr), nullptr);
}

TEST(RmvEndSep, TakesOneTrailingSeparatorAway) {
    EXPECT_STREQ(rmv_end_sep("/srv/site/"), "/srv/site");
    EXPECT_STREQ(rmv_end_sep("/srv/site"), "/srv/site");
    EXPECT_STREQ(rmv_end_sep("/srv/site//"), "/srv/site/");
    EXPECT_STREQ(rmv_end_sep("/"), "");
    EXPECT_STREQ(rmv_end_sep(""), "");
    EXPECT_STREQ(rmv_end_sep(nullptr), "");
}

TEST(AddEndSep, AppendsASeparatorUnlessThereIsOne) {
    EXPECT_STREQ(add_end_sep("/srv/site"), "/srv/site/");
    EXPECT_STREQ(add_end_sep("/srv/site/"), "/srv/site/");
    EXPECT_STREQ(add_end_sep(""), "/");
    EXPECT_STREQ(add_end_sep(nullptr), "/");
}

TEST(EndSep, BothAreHeldIn511Characters) {
    const std::string path(600, 'p');
    EXPECT_EQ(std::string(rmv_end_sep(path.c_str())), std::string(511, 'p'));
    EXPECT_EQ(std::string(add_end_sep(path.c_str())), std::string(511, 'p'));
}

TEST(EndSep, EachHasABufferOfItsOwn) {
    const char *removed = rmv_end_sep("/a/");
    const char *added = add_end_sep("/b");
    EXPECT_STREQ(removed, "/a");
    EXPECT_STREQ(added, "/b/");
}

TEST(StripDirectory, GivesWhatFollowsTheLastSeparator) {
    const char *path = "/a/b.tpl";
    EXPECT_EQ(strip_directory(path), path + 3);
    const char *plain = "b.tpl";
    EXPECT_EQ(strip_directory(plain), plain);
    EXPECT_STREQ(strip_directory("/a/"), "");
}

TEST(ValidFile, KeepsLettersDigitsAndNineCharacters) {
    EXPECT_STREQ(valid_file("aZ09._*-#:/@%"), "aZ09._*-#:/@%");
    EXPECT_STREQ(valid_file("a!\"$&'()+,;<=>?[\\]^`{|}~\t\n\x80\xff"
                            "b"),
                 "ab");
}

TEST(ValidFile, ABlankBecomesAnUnderscore) {
    EXPECT_STREQ(valid_file(" my file "), "_my_file_");
}

TEST(ValidFile, LooksAtTheFirst511CharactersOnly) {
    const std::string dropped(510, '!');
    EXPECT_STREQ(valid_file((dropped + "ab").c_str()), "a");
    EXPECT_STREQ(valid_file(nullptr), "");
}

TEST(AttachPath, JoinsWithExactlyOneSeparator) {
    EXPECT_STREQ(attach_path("/srv/site", "img"), "/srv/site/img");
    EXPECT_STREQ(attach_path("/srv/site/", "/img"), "/srv/site/img");
    EXPECT_STREQ(attach_path("/srv/site/", "img"), "/srv/site/img");
    EXPECT_STREQ(attach_path("/srv/site", "/img"), "/srv/site/img");
}

TEST(AttachPath, ADirectoryAloneGetsItsSeparator) {
    EXPECT_STREQ(attach_path("/srv/site", ""), "/srv/site/");
    EXPECT_STREQ(attach_path("/srv/site/", nullptr), "/srv/site/");
}

TEST(AttachPath, AFileAloneIsCleaned) {
    EXPECT_STREQ(attach_path("", "my file"), "my_file");
    EXPECT_STREQ(attach_path(nullptr, "a!b"), "ab");
    EXPECT_STREQ(attach_path("/srv", "my file"), "/srv/my_file");
}

TEST(AttachPath, NothingGivesNothing) {
    EXPECT_STREQ(attach_path(nullptr, nullptr), "");
    EXPECT_STREQ(attach_path("", ""), "");
}

TEST(AttachPath, AFileWithAColonInSecondPlaceIsJoinedWithoutSeparator) {
    EXPECT_STREQ(attach_path("/srv", "x:name"), "/srvx:name");
    EXPECT_STREQ(attach_path("/srv/", "x:name"), "/srvx:name");
    EXPECT_STREQ(attach_path("/srv", "x:"), "/srvx:");
    EXPECT_STREQ(attach_path("/srv", "x"), "/srv/x");
}

TEST(AttachPath, TheDirectoryIsNotCleaned) {
    EXPECT_STREQ(attach_path("/my site", "a"), "/my site/a");
}

TEST(AttachPath, IsCutAt511Characters) {
    const std::string directory(600, 'd');
    EXPECT_EQ(std::string(attach_path(directory.c_str(), "file")), std::string(511, 'd'));
}

TEST(AttachExt, AddsTheDotWhenTheExtensionHasNone) {
    EXPECT_STREQ(attach_ext("index", "tpl"), "index.tpl");
    EXPECT_STREQ(attach_ext("index", ".tpl"), "index.tpl");
    EXPECT_STREQ(attach_ext("index", ""), "index.");
}

TEST(AttachExt, BearsNull) {
    EXPECT_STREQ(attach_ext("index", nullptr), "index");
    EXPECT_STREQ(attach_ext(nullptr, "tpl"), "");
    EXPECT_STREQ(attach_ext(nullptr, nullptr), "");
}

TEST(StripExt, CutsAtTheLastDotDirectoriesIncluded) {
    EXPECT_STREQ(strip_ext("index.tpl"), "index");
    EXPECT_STREQ(strip_ext("a.b.c"), "a.b");
    EXPECT_STREQ(strip_ext("dir.d/file"), "dir");
    EXPECT_STREQ(strip_ext(".profile"), "");
    EXPECT_STREQ(strip_ext("plain"), "plain");
    EXPECT_STREQ(strip_ext(""), "");
    EXPECT_STREQ(strip_ext(nullptr), "");
}

TEST(StripExt, AFinalDotGoesOnlyBehindACharacterThatIsNotTheFirst) {
    EXPECT_STREQ(strip_ext("name."), "name");
    EXPECT_STREQ(strip_ext("ab."), "ab");
    EXPECT_STREQ(strip_ext("."), ".");
    EXPECT_STREQ(strip_ext(".."), "..");
    EXPECT_STREQ(strip_ext("a."), "a.");
    EXPECT_STREQ(strip_ext("a.."), "a..");
    EXPECT_STREQ(strip_ext("abc.."), "abc..");
}

TEST(StripPath, GivesWhatFollowsTheLastSeparator) {
    EXPECT_STREQ(strip_path("/a/b/c.tpl", 0), "c.tpl");
    EXPECT_STREQ(strip_path("c.tpl", 0), "c.tpl");
    EXPECT_STREQ(strip_path("/a/b/", 0), "");
    EXPECT_STREQ(strip_path(nullptr, 0), "");
}

TEST(StripPath, WithoutItsExtensionWhenAsked) {
    EXPECT_STREQ(strip_path("/a/b/c.tpl", 1), "c");
    EXPECT_STREQ(strip_path("/a.d/c", 1), "c");
    EXPECT_STREQ(strip_path(nullptr, 1), "");
}

TEST(StripFilename, GivesTheDirectoryWithItsSeparator) {
    EXPECT_STREQ(strip_filename("a/b/c"), "a/b/");
    EXPECT_STREQ(strip_filename("/c"), "/");
    EXPECT_STREQ(strip_filename("a/"), "a/");
}

TEST(StripFilename, AnEmptyResultIsNull) {
    EXPECT_EQ(strip_filename("c.tpl"), nullptr);
    EXPECT_EQ(strip_filename(""), nullptr);
    EXPECT_EQ(strip_filename(nullptr), nullptr);
}

TEST(RemovePath, GivesTheNameOrTheDirectory) {
    EXPECT_STREQ(remove_path("/a/b/c.tpl", 1), "c.tpl");
    EXPECT_STREQ(remove_path("/a/b/c.tpl", 0), "/a/b/");
}

TEST(RemovePath, AnEmptyResultIsNull) {
    EXPECT_EQ(remove_path("/a/b/", 1), nullptr);
    EXPECT_EQ(remove_path("c.tpl", 0), nullptr);
    EXPECT_EQ(remove_path(nullptr, 0), nullptr);
    EXPECT_EQ(remove_path(nullptr, 1), nullptr);
}

TEST(OwnBuffers, AreOneForEachFunction) {
    const char *file = valid_file("one");
    const char *path = attach_path("/two", nullptr);
    const char *extension = attach_ext("three", nullptr);
    const char *stripped = strip_ext("four.x");
    const char *name = strip_path("a/five", 0);
    const char *directory = strip_filename("six/a");
    const char *part = remove_path("seven", 1);
    EXPECT_STREQ(file, "one");
    EXPECT_STREQ(path, "/two/");
    EXPECT_STREQ(extension, "three");
    EXPECT_STREQ(stripped, "four");
    EXPECT_STREQ(directory, "six/");
    EXPECT_STREQ(part, "seven");
    EXPECT_STREQ(name, "seven"); // remove_path went through strip_path
}
