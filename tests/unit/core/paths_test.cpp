#include "core/paths.h"

#include "support/rows.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

const std::string long_path(600, 'p');
const std::string cut_path(511, 'p');
const std::string signs_and_two_letters = std::string(510, '!') + "ab";

// clang-format off
const std::vector<rule> rules = {
    {"CheckForRoot.LooksAtTheFirstCharacter", check_for_root,
     {{{"/srv"}, 1}, {{"/"}, 1}, {{"srv/"}, 0}, {{" /srv"}, 0}, {{""}, 0}}},
    {"CleanUpRoot.GivesTheFirstSeparatorOrTheEnd", clean_up_root,
     {{{"abc/def/"}, "/def/"}, {{"abc"}, ""}, {{nullptr}, null}}},
    {"RmvEndSep.TakesOneTrailingSeparatorAway", rmv_end_sep,
     {{{"/srv/site/"}, "/srv/site"}, {{"/srv/site"}, "/srv/site"}, {{"/srv/site//"}, "/srv/site/"},
      {{"/"}, ""}, {{""}, ""}, {{nullptr}, ""}}},
    {"AddEndSep.AppendsASeparatorUnlessThereIsOne", add_end_sep,
     {{{"/srv/site"}, "/srv/site/"}, {{"/srv/site/"}, "/srv/site/"}, {{""}, "/"},
      {{nullptr}, "/"}}},
    {"RmvEndSep.IsHeldIn511Characters", rmv_end_sep, {{{long_path.c_str()}, cut_path}}},
    {"AddEndSep.IsHeldIn511Characters", add_end_sep, {{{long_path.c_str()}, cut_path}}},
    {"StripDirectory.GivesWhatFollowsTheLastSeparator", strip_directory,
     {{{"/a/b.tpl"}, "b.tpl"}, {{"b.tpl"}, "b.tpl"}, {{"/a/"}, ""}}},
    {"ValidFile.KeepsLettersDigitsAndNineCharacters", valid_file,
     {{{"aZ09._*-#:/@%"}, "aZ09._*-#:/@%"},
      {{"a!\"$&'()+,;<=>?[\\]^`{|}~\t\n\x80\xff" "b"}, "ab"}}},
    {"ValidFile.ABlankBecomesAnUnderscore", valid_file, {{{" my file "}, "_my_file_"}}},
    {"ValidFile.LooksAtTheFirst511CharactersOnly", valid_file,
     {{{signs_and_two_letters.c_str()}, "a"}, {{nullptr}, ""}}},
    {"AttachPath.JoinsWithExactlyOneSeparator", attach_path,
     {{{"/srv/site", "img"}, "/srv/site/img"}, {{"/srv/site/", "/img"}, "/srv/site/img"},
      {{"/srv/site/", "img"}, "/srv/site/img"}, {{"/srv/site", "/img"}, "/srv/site/img"}}},
    {"AttachPath.ADirectoryAloneGetsItsSeparator", attach_path,
     {{{"/srv/site", ""}, "/srv/site/"}, {{"/srv/site/", nullptr}, "/srv/site/"}}},
    {"AttachPath.AFileAloneIsCleaned", attach_path,
     {{{"", "my file"}, "my_file"}, {{nullptr, "a!b"}, "ab"},
      {{"/srv", "my file"}, "/srv/my_file"}}},
    {"AttachPath.WithoutBothIsEmpty", attach_path, {{{nullptr, nullptr}, ""}, {{"", ""}, ""}}},
    {"AttachPath.AColonInSecondPlaceTakesTheSeparatorAway", attach_path,
     {{{"/srv", "x:name"}, "/srvx:name"}, {{"/srv/", "x:name"}, "/srvx:name"},
      {{"/srv", "x:"}, "/srvx:"}, {{"/srv", "x"}, "/srv/x"}}},
    {"AttachPath.TheDirectoryIsNotCleaned", attach_path, {{{"/my site", "a"}, "/my site/a"}}},
    {"AttachPath.IsCutAt511Characters", attach_path, {{{long_path.c_str(), "file"}, cut_path}}},
    {"AttachExt.AddsTheDotWhenTheExtensionHasNone", attach_ext,
     {{{"index", "tpl"}, "index.tpl"}, {{"index", ".tpl"}, "index.tpl"},
      {{"index", ""}, "index."}}},
    {"AttachExt.BearsNull", attach_ext,
     {{{"index", nullptr}, "index"}, {{nullptr, "tpl"}, ""}, {{nullptr, nullptr}, ""}}},
    {"StripExt.CutsAtTheLastDotDirectoriesIncluded", strip_ext,
     {{{"index.tpl"}, "index"}, {{"a.b.c"}, "a.b"}, {{"dir.d/file"}, "dir"}, {{".profile"}, ""},
      {{"plain"}, "plain"}, {{""}, ""}, {{nullptr}, ""}}},
    {"StripExt.AFinalDotIsCutBehindTwoCharacters", strip_ext,
     {{{"name."}, "name"}, {{"ab."}, "ab"}, {{"."}, "."}, {{".."}, ".."}, {{"a."}, "a."},
      {{"a.."}, "a.."}, {{"abc.."}, "abc.."}}},
    {"StripPath.GivesWhatFollowsTheLastSeparator", strip_path,
     {{{"/a/b/c.tpl", 0}, "c.tpl"}, {{"c.tpl", 0}, "c.tpl"}, {{"/a/b/", 0}, ""},
      {{nullptr, 0}, ""}}},
    {"StripPath.WithoutItsExtensionWhenAsked", strip_path,
     {{{"/a/b/c.tpl", 1}, "c"}, {{"/a.d/c", 1}, "c"}, {{nullptr, 1}, ""}}},
    {"StripFilename.GivesTheDirectoryWithItsSeparator", strip_filename,
     {{{"a/b/c"}, "a/b/"}, {{"/c"}, "/"}, {{"a/"}, "a/"}}},
    {"StripFilename.AnEmptyResultIsNull", strip_filename,
     {{{"c.tpl"}, null}, {{""}, null}, {{nullptr}, null}}},
    {"RemovePath.GivesTheNameOrTheDirectory", remove_path,
     {{{"/a/b/c.tpl", 1}, "c.tpl"}, {{"/a/b/c.tpl", 0}, "/a/b/"}}},
    {"RemovePath.AnEmptyResultIsNull", remove_path,
     {{{"/a/b/", 1}, null}, {{"c.tpl", 0}, null}, {{nullptr, 0}, null}, {{nullptr, 1}, null}}},
};
// clang-format on

const int registered = register_rows(rules);

} // namespace

TEST(OwnBuffers, AreOneForEachFunction) {
    const char *shorter = rmv_end_sep("/none/");
    const char *longer = add_end_sep("/zero");
    const char *file = valid_file("one");
    const char *path = attach_path("/two", nullptr);
    const char *extension = attach_ext("three", nullptr);
    const char *stripped = strip_ext("four.x");
    const char *name = strip_path("a/five", 0);
    const char *directory = strip_filename("six/a");
    const char *part = remove_path("seven", 1);
    EXPECT_STREQ(shorter, "/none");
    EXPECT_STREQ(longer, "/zero/");
    EXPECT_STREQ(file, "one");
    EXPECT_STREQ(path, "/two/");
    EXPECT_STREQ(extension, "three");
    EXPECT_STREQ(stripped, "four");
    EXPECT_STREQ(directory, "six/");
    EXPECT_STREQ(part, "seven");
    EXPECT_STREQ(name, "seven"); // remove_path went through strip_path
}
