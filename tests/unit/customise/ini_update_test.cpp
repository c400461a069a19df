#include "customise/ini_update.h"

#include "core/log.h"
#include "core/stream.h"
#include "customise/text_list.h"
#include "support/console_capture.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "support/tree.h"
#include "unit/customise/custom_store.h"
#include "unit/process_limit.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// What write_setting writes.
std::string written(std::string text) {
    const scratch_directory scratch;
    {
        const stream_handle file(std::fopen("written", "w"));
        EXPECT_EQ(write_setting(file.get(), text.c_str()), 1);
    }
    return read_file("written");
}

int is_replaced(const char *line) {
    return is_set(line, custom_store{}.get());
}

int update_with(pINI_SETTINGS settings, const char *label, const char *mode, const texts &added) {
    text_list list;
    for (const std::string &text : added) {
        add_text(&list, text.c_str());
    }
    return update_values(settings, label, mode, &list);
}

// The values of "set" after update_values with these texts for the logo.
texts with_logos(texts sets, texts added) {
    custom_store store{};
    for (const std::string &value : sets) {
        ini_add(store.get(), "set", value.c_str());
    }
    EXPECT_EQ(update_with(store.get(), "set", "logo", added), added.empty() ? 0 : 1);
    return values_of(store.get(), "set");
}

const std::string x_255(255, 'x');
const std::string y_255(255, 'y');

// clang-format off
const std::vector<rule> rules = {
    {"GetSet.GivesWhatFollowsTheLastBlank", get_set,
     {{{"background ksback.jpg"}, "ksback.jpg"}, {{"background old new.jpg"}, "new.jpg"},
      {{"background "}, ""}}},
    {"GetSet.WithoutABlankGivesTheSecondCharacterAndOn", get_set,
     {{{"background"}, "ackground"}, {{"b"}, ""}, {{""}, ""}}},
    {"DfltVal.ReadsTheStoredWordsAndNumbers", dflt_val,
     {{{"TRUE"}, 1}, {{"up"}, 1}, {{"FALSE"}, 0}, {{"left"}, 0}, {{"0"}, 0}, {{"25"}, 25},
      {{"-3"}, -3}, {{"12a5"}, 12}, {{"a5"}, 0}}},
    {"DfltVal.AnythingElseIsMinusOne", dflt_val,
     {{{""}, -1}, {{"UP"}, -1}, {{"true"}, -1}, {{"5px"}, -1}, {{"down"}, -1}, {{"5 "}, -1},
      {{nullptr}, -1}}},
    {"GiveDflt.IsYesForAnyNumberButZero", give_dflt, {{{1}, "YES"}, {{-1}, "YES"}, {{0}, "NO"}}},
    {"FirstWord.StandsBehindLeadingBlanksAndEndsAtABlankOrTab", first_word,
     {{{"logo a.gif"}, "logo"}, {{"\t  logo\ta.gif"}, "logo"}, {{"logo"}, "logo"}, {{"  "}, ""},
      {{""}, ""}}},
    {"IsSet.ComparesOverTheLengthOfTheName", is_replaced,
     {{{"set logo a.gif"}, 1}, {{"set"}, 1}, {{"setx a"}, 1}, {{"settings b"}, 1},
      {{"body_add one"}, 1}, {{"body_adder"}, 1}, {{"  set b"}, 1}, {{"\tset b"}, 1},
      {{"version"}, 1}, {{"prod_name x"}, 1}, {{"se"}, 0}, {{"Set a"}, 0}, {{"domain set"}, 0},
      {{"# set a"}, 0}, {{""}, 0}, {{"\n"}, 0}, {{"body_ad x"}, 0}}},
    {"WriteSetting.WritesUpTo256CharactersInOneLine", written,
     {{{""}, "\n"}, {{"set logo a.gif"}, "set logo a.gif\n"}, {{x_255 + "y"}, x_255 + "y\n"}}},
    {"WriteSetting.BreaksALongerTextBehindEach255Characters", written,
     {{{x_255 + "yz"}, x_255 + " /\nyz\n"},
      {{x_255 + y_255 + "zz"}, x_255 + " /\n" + y_255 + " /\nzz\n"},
      {{x_255 + y_255 + "z"}, x_255 + " /\n" + y_255 + "z\n"}}},
    {"UpdateValues.ReplacesTheValuesOfItsModeBehindTheOthers", with_logos,
     {{{{"logo a.gif", "background b.jpg", "logo c.gif"}, {"new.gif"}},
       {"background b.jpg", "logo new.gif"}}}},
    {"UpdateValues.KeepsTheOtherModesOncePerText", with_logos,
     {{{{"logo a.gif", "background b.jpg"}, {"one", "two"}},
       {"background b.jpg", "logo one", "background b.jpg", "logo two"}}}},
    {"UpdateValues.ComparesTheModeWithTheWholeFirstWord", with_logos,
     {{{{"logos a.gif", " \tlogo b.gif", "logo\tc.gif"}, {"new.gif"}},
       {"logos a.gif", "logo new.gif"}}}},
    {"UpdateValues.TakesATextOfAnyLength", with_logos,
     {{{{}, {std::string(5000, 'x')}}, {"logo " + std::string(5000, 'x')}}}},
    {"UpdateValues.WithoutItemsChangesNothing", with_logos,
     {{{{"logo a.gif"}, {}}, {"logo a.gif"}}}},
};
// clang-format on

const int registered = register_rows(rules);

TEST(LoadValues, CopiesEveryValueOfTheNamesOfTheDestination) {
    scoped_store answers(nullptr);
    for (const auto &[name, value] : std::initializer_list<setting>{
             {"prod_name", "plover"}, {"body_add", "one"}, {"templates", "/tpl"}}) {
        ini_add(answers.get(), name, value.c_str());
    }
    custom_store more{{"set", "logo a.gif"}, {"set", "background b.jpg"}};
    custom_store store{};

    load_values(answers.get(), store.get());
    load_values(more.get(), store.get());

    EXPECT_EQ(values_of(store.get(), "prod_name"), texts{"plover"});
    EXPECT_EQ(values_of(store.get(), "body_add"), texts{"one"});
    EXPECT_EQ(values_of(store.get(), "set"), (texts{"logo a.gif", "background b.jpg"}));
    EXPECT_EQ(values_of(store.get(), "templates"), texts{});
}

TEST(CustomStore, GivesItsOwnNamesAtThePositionsOfTheAnswerStore) {
    custom_store store{{"vlimg_dir", "/img"}, {"version", "3.0h"}, {"prod_name", "kestrel"}};

    EXPECT_STREQ(ini_value_num(store.get(), 5), "3.0h");
    EXPECT_STREQ(ini_value_num(store.get(), 6), "kestrel");
    EXPECT_EQ(ini_value_num(store.get(), 7), nullptr);
}

TEST(UpdateValues, WithoutLabelOrListChangesNothing) {
    custom_store store{{"set", "logo a.gif"}};
    EXPECT_EQ(update_with(store.get(), nullptr, "logo", {"b.gif"}), 0);
    EXPECT_EQ(update_values(store.get(), "set", "logo", nullptr), 0);
    EXPECT_EQ(values_of(store.get(), "set"), texts{"logo a.gif"});
}

TEST(UpdateValues, WithoutAModeReplacesAllValues) {
    custom_store store{{"body_add", "old"}, {"set", "logo a.gif"}, {"body_add", "older"}};
    EXPECT_EQ(update_with(store.get(), "body_add", nullptr, {"one", "two"}), 1);
    EXPECT_EQ(values_of(store.get(), "body_add"), (texts{"one", "two"}));
    EXPECT_EQ(values_of(store.get(), "set"), texts{"logo a.gif"});
}

TEST(MatchSetting, DropsTheLinesThatContinueADroppedOne) {
    custom_store store{};
    const std::pair<const char *, int> lines[] = {
        {"domain a /\n", 0},       {"more\n", 0},      {"set logo /\n", 1},
        {"second /  \t\r\n", 1},   {"third /\r\n", 1}, {"last/\n", 1},
        {"domain again\n", 0},     {"set a \t/\n", 1}, {"domain\n", 0},
        {"set a / x\n", 1},        {"domain\n", 0},    {"set b /", 1},
        {"the end, no mark\n", 1}, {"domain\n", 0},
    };
    for (const auto &[line, is_dropped] : lines) {
        EXPECT_EQ(match_setting(line, store.get()), is_dropped) << line;
    }
}

// An .ini, and what stands in it when it was rewritten before the settings of the store.
struct rewriting {
    const char *name;
    std::string before;
    std::string kept;
};

// The directory that the missing value names.
class UpdateIni : public scratch_test {
  protected:
    UpdateIni() { std::filesystem::create_directory("(null)"); }

    static constexpr const char *ini_path = "(null)/kestrel.ini";
    static constexpr const char *new_path = "(null)/kestrel.new";
    static constexpr const char *settings = "set logo a.gif\nbody_add Goodbye\n";

    void check(const rewriting &row) {
        EXPECT_EQ(rewritten(row.before, store.get()), row.kept + settings);
    }

    // Rewrites an .ini that holds `before`; gives what it holds then.
    static std::string rewritten(std::string_view before, pINI_SETTINGS values) {
        write_file(ini_path, before);
        EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(values), 1); }), "");
        EXPECT_FALSE(is_there(new_path));
        return read_file(ini_path);
    }

    // Expects the rewriting to fail and to leave no new file.
    static void expect_failure(pINI_SETTINGS values, const std::string &message) {
        EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(values), 0); }),
                  "Error: Cannot " + message + "\n");
        EXPECT_FALSE(std::filesystem::is_regular_file(new_path));
    }

    custom_store store{{"prod_name", "kestrel"},
                       {"body_add", "Goodbye"},
                       {"set", "logo a.gif"},
                       {"vlimg_dir", "/img"}};
};

const std::string piece_of_510(510, 'x');

// clang-format off
const std::vector<rewriting> rewritings = {
    {"UpdateIni.ReplacesTheSettingsAndKeepsEveryOtherLine",
     "# kestrel.ini\n\ndomain  example.com \r\nset background old.jpg\n\ttemplates /var/spool\n"
     "body_add one\nbody_add two\n# set aside\nworkarea\t/srv\n",
     "# kestrel.ini\n\ndomain  example.com \r\n\ttemplates /var/spool\n# set aside\n"
     "workarea\t/srv\n"},
    {"UpdateIni.OnlyALineThatEndsInABlankAndASlashGoesOn",
     "set a~ /\nmore of it\nset b /~\ndomain c\n", "domain c\n"},
    {"UpdateIni.DropsALineWhoseFirstWordOnlyBeginsWithAName",
     "setx a\nsettings b\ndomain c\n", "domain c\n"},
    {"UpdateIni.FindsFirstWordsBehindLeadingBlanks",
     "  set a\n\tbody_add b\ndomain c\n", "domain c\n"},
    {"UpdateIni.EndsALastLineWithoutLineEnd", "set a\ndomain b", "domain b\n"},
    {"UpdateIni.DropsAllLinesOfALongSetting",
     "set scrollmessage one /\n   two / \t\r\ndomain of the message /\nend\ndomain b\n",
     "domain b\n"},
    {"UpdateIni.KeepsTheContinuationOfAKeptSetting",
     "hosts a /\n  settler b /\nset c\n# note /\nset d\n",
     "hosts a /\n  settler b /\nset c\n# note /\n"},
    {"UpdateIni.KeepsTheFirstSettingApartFromALastLineThatGoesOn",
     "set a\nhosts b /", "hosts b /\n\n"},
    {"UpdateIni.KeepsItApartAlsoWithoutALineEnd", "hosts a /\n /", "hosts a /\n /\n\n"},
    {"UpdateIni.ASettingBeginsBehindALineThatHoldsOnlyTheMark",
     "  /\nset a\ndomain b\n", "  /\ndomain b\n"},
    {"UpdateIni.AContinuedLineThatHoldsOnlyTheMarkGoesOn",
     "hosts a /\n  /\nset b\n", "hosts a /\n  /\nset b\n"},
    {"UpdateIni.TakesALineInPiecesOf510Characters",
     piece_of_510 + "set a\ndomain b\n" + piece_of_510 + "rest\n",
     piece_of_510 + "\ndomain b\n" + piece_of_510 + "rest\n"},
    {"UpdateIni.KeepsBytesBehindANul",
     std::string("domain a\0b set\n", 15), std::string("domain a\0b set\n", 15)},
};
// clang-format on

const int rewritings_registered = register_rows<UpdateIni>(rewritings);

TEST_F(UpdateIni, ConversionsInLinesAndSettingsAreText) {
    custom_store odd{
        {"prod_name", "kestrel"}, {"set", "background %s%n%d%%"}, {"body_add", "%s%n%d%%"}};
    EXPECT_EQ(rewritten("%s%n%d%% %s%n%d%%\nset %s\n", odd.get()),
              "%s%n%d%% %s%n%d%%\nset background %s%n%d%%\nbody_add %s%n%d%%\n");
}

TEST_F(UpdateIni, LeavesALastLineAsItIsWhenThereIsNothingToWrite) {
    custom_store empty{{"prod_name", "kestrel"}};
    EXPECT_EQ(rewritten("set a\ndomain b", empty.get()), "domain b");
}

TEST_F(UpdateIni, StartsWithNoSettingBeingSkipped) {
    ASSERT_EQ(match_setting("set a /\n", store.get()), 1);
    check({"", "domain a\n", "domain a\n"});
}

TEST_F(UpdateIni, WritesALongValueThatIsReadBackWhole) {
    std::string applet = "scrollmessage";
    for (int word = 0; word < 300; word++) {
        applet += "-word" + std::to_string(word);
    }
    custom_store long_store{{"prod_name", "kestrel"}, {"set", applet}, {"set", "logo a.gif"}};

    const std::string once = rewritten("domain a\nset old\n", long_store.get());
    custom_store loaded{};
    EXPECT_EQ(ini_load(loaded.get(), ini_path), 1 + 3);

    EXPECT_EQ(values_of(loaded.get(), "set"), (texts{applet, "logo a.gif"}));
    EXPECT_EQ(values_of(loaded.get(), "domain"), texts{"a"});
    EXPECT_EQ(once.substr(0, 30), "domain a\nset scrollmessage-wor");
    EXPECT_EQ(rewritten(once, long_store.get()), once);
}

TEST_F(UpdateIni, NamesTheFileAfterTheProductInADirectoryOfNoName) {
    custom_store plover{{"prod_name", "plover"}, {"cgi_name", "bird"}, {"cgi_path", "/nowhere"}};
    write_file("(null)/plover.ini", "set a\ndomain b\n");
    EXPECT_EQ(update_ini(plover.get()), 1);
    EXPECT_EQ(read_file("(null)/plover.ini"), "domain b\n");
}

TEST_F(UpdateIni, WithoutTheOldFileConsoleAndLogSaySo) {
    const std::string message = "find file (null)/kestrel.ini, No such file or directory";
    const test_log log(".");
    expect_failure(store.get(), message);
    EXPECT_EQ(log.text(), "Error: Cannot " + message + "\n");
}

TEST_F(UpdateIni, WhereTheNewFileCannotBeOpenedTheOldOneStays) {
    write_file(ini_path, "set a\n");
    std::filesystem::create_directory(new_path);
    expect_failure(store.get(), "find file (null)/kestrel.new, Is a directory");
    EXPECT_EQ(read_file(ini_path), "set a\n");
}

TEST_F(UpdateIni, WhereTheNewFileCannotBeWrittenTheOldOneStays) {
    const std::string before = "set a\ndomain " + std::string(20000, 'x') + "\n";
    write_file(ini_path, before);
    const process_limit small(RLIMIT_FSIZE, 8192);
    expect_failure(store.get(), "write file (null)/kestrel.new, File too large");
    EXPECT_EQ(read_file(ini_path), before);
}

TEST_F(UpdateIni, WhereTheOldFileCannotBeReadItStays) {
    std::filesystem::create_symlink("/proc/self/mem", ini_path);
    expect_failure(store.get(), "read file (null)/kestrel.ini, Input/output error");
    EXPECT_TRUE(is_there(ini_path));
}

TEST_F(UpdateIni, RefusesWhatIsNoPlainFile) {
    std::filesystem::create_directory(ini_path);
    expect_failure(store.get(), "find file (null)/kestrel.ini, Is a directory");
    std::filesystem::remove(ini_path);
    ASSERT_EQ(::mkfifo(ini_path, 0600), 0);
    expect_failure(store.get(), "find file (null)/kestrel.ini, Invalid argument");
    EXPECT_TRUE(std::filesystem::is_fifo(ini_path));
}

TEST_F(UpdateIni, RefusesAPathThatIsTooLong) {
    std::string name;
    for (int part = 0; part < 10; part++) {
        name += std::string(50, 'd') + "/";
    }
    const std::string directory = "(null)/" + name;
    std::filesystem::create_directories(directory);
    write_file(directory + "x.ini", "set a\n");
    custom_store deep{{"prod_name", name + "x"}};
    expect_failure(deep.get(), "find file " + directory.substr(0, 400) + "..., File name too long");
    EXPECT_EQ(read_file(directory + "x.ini"), "set a\n");
}

TEST_F(UpdateIni, ReplacesALeftOverNewFileWhateverItLeadsTo) {
    write_file("elsewhere", "as it was");
    std::filesystem::create_symlink("../elsewhere", new_path);
    check({"", "domain a\n", "domain a\n"});
    std::filesystem::create_hard_link(ini_path, new_path);
    check({"", "domain b\n", "domain b\n"});
    EXPECT_EQ(read_file("elsewhere"), "as it was");
}

TEST_F(UpdateIni, KeepsTheModeOfTheOldFile) {
    write_file(ini_path, "domain a\n");
    ASSERT_EQ(::chmod(ini_path, 0604), 0);
    ASSERT_EQ(update_ini(store.get()), 1);
    EXPECT_EQ(mode_of(ini_path), "0604");
}

TEST_F(UpdateIni, KeepsTheOwnerOfTheOldFile) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    write_file(ini_path, "domain a\n");
    ASSERT_EQ(::chown(ini_path, 12, 34), 0);
    ASSERT_EQ(update_ini(store.get()), 1);
    EXPECT_EQ(owner_of(ini_path), "12:34");
}

} // namespace
