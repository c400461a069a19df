#include "customise/ini_update.h"

#include "core/log.h"
#include "core/stream.h"
#include "customise/text_list.h"
#include "support/console_capture.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

TEST(GetSet, GivesWhatFollowsTheLastBlank) {
    EXPECT_STREQ(get_set("background ksback.jpg"), "ksback.jpg");
    EXPECT_STREQ(get_set("background old new.jpg"), "new.jpg");
    EXPECT_STREQ(get_set("background "), "");
}

TEST(GetSet, WithoutABlankGivesTheSecondCharacterAndOn) {
    EXPECT_STREQ(get_set("background"), "ackground");
    EXPECT_STREQ(get_set("b"), "");
    EXPECT_STREQ(get_set(""), "");
}

TEST(DfltVal, ReadsTheStoredWordsAndNumbers) {
    const std::pair<const char *, int> words[] = {
        {"TRUE", 1}, {"up", 1},    {"FALSE", 0}, {"left", 0},  {"0", 0},
        {"25", 25},  {"-3", -3},   {"12a5", 12}, {"a5", 0},    {"", -1},
        {"UP", -1},  {"true", -1}, {"5px", -1},  {"down", -1}, {"5 ", -1},
    };
    for (const auto &[word, value] : words) {
        EXPECT_EQ(dflt_val(word), value) << word;
    }
    EXPECT_EQ(dflt_val(nullptr), -1);
}

TEST(GiveDflt, IsYesForAnyNumberButZero) {
    EXPECT_STREQ(give_dflt(1), "YES");
    EXPECT_STREQ(give_dflt(-1), "YES");
    EXPECT_STREQ(give_dflt(0), "NO");
}

TEST(FirstWord, StandsBehindLeadingBlanksAndEndsAtABlankOrTab) {
    EXPECT_EQ(first_word("logo a.gif"), "logo");
    EXPECT_EQ(first_word("\t  logo\ta.gif"), "logo");
    EXPECT_EQ(first_word("logo"), "logo");
    EXPECT_EQ(first_word("  "), "");
    EXPECT_EQ(first_word(""), "");
}

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

// update_values with the texts of a new list.
int update_with(pINI_SETTINGS settings, const char *label, const char *mode,
                std::initializer_list<const char *> added) {
    text_list list;
    for (const char *text : added) {
        add_text(&list, text);
    }
    return update_values(settings, label, mode, &list);
}

TEST(UpdateValues, WithoutLabelTextOrItemsChangesNothing) {
    custom_store store{{"set", "logo a.gif"}};

    EXPECT_EQ(update_with(store.get(), nullptr, "logo", {"b.gif"}), 0);
    EXPECT_EQ(update_values(store.get(), "set", "logo", nullptr), 0);
    EXPECT_EQ(update_with(store.get(), "set", "logo", {}), 0);

    EXPECT_EQ(values_of(store.get(), "set"), texts{"logo a.gif"});
}

TEST(UpdateValues, ReplacesTheValuesOfItsModeBehindTheOthers) {
    custom_store store{{"set", "logo a.gif"}, {"set", "background b.jpg"}, {"set", "logo c.gif"}};

    EXPECT_EQ(update_with(store.get(), "set", "logo", {"new.gif"}), 1);

    EXPECT_EQ(values_of(store.get(), "set"), (texts{"background b.jpg", "logo new.gif"}));
}

TEST(UpdateValues, KeepsTheOtherModesOncePerText) {
    custom_store store{{"set", "logo a.gif"}, {"set", "background b.jpg"}};

    EXPECT_EQ(update_with(store.get(), "set", "logo", {"one", "two"}), 1);

    EXPECT_EQ(values_of(store.get(), "set"),
              (texts{"background b.jpg", "logo one", "background b.jpg", "logo two"}));
}

TEST(UpdateValues, ComparesTheModeWithTheWholeFirstWord) {
    custom_store store{{"set", "logos a.gif"}, {"set", " \tlogo b.gif"}, {"set", "logo\tc.gif"}};

    EXPECT_EQ(update_with(store.get(), "set", "logo", {"new.gif"}), 1);

    EXPECT_EQ(values_of(store.get(), "set"), (texts{"logos a.gif", "logo new.gif"}));
}

TEST(UpdateValues, WithoutAModeReplacesAllValues) {
    custom_store store{{"body_add", "old"}, {"set", "logo a.gif"}, {"body_add", "older"}};

    EXPECT_EQ(update_with(store.get(), "body_add", nullptr, {"one", "two"}), 1);

    EXPECT_EQ(values_of(store.get(), "body_add"), (texts{"one", "two"}));
    EXPECT_EQ(values_of(store.get(), "set"), texts{"logo a.gif"});
}

TEST(UpdateValues, TakesATextOfAnyLength) {
    custom_store store{};
    const std::string text(5000, 'x');

    EXPECT_EQ(update_with(store.get(), "set", "scrollmessage", {text.c_str()}), 1);

    EXPECT_EQ(values_of(store.get(), "set"), texts{"scrollmessage " + text});
}

TEST(IsSet, ComparesOverTheLengthOfTheName) {
    custom_store store{};

    for (const char *line : {"set logo a.gif", "set", "setx a", "settings b", "body_add one",
                             "body_adder", "  set b", "\tset b", "version", "prod_name x"}) {
        EXPECT_EQ(is_set(line, store.get()), 1) << line;
    }
    for (const char *line : {"se", "Set a", "domain set", "# set a", "", "\n", "body_ad x"}) {
        EXPECT_EQ(is_set(line, store.get()), 0) << line;
    }
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

std::string written(const std::string &text) {
    const scratch_directory scratch;
    {
        const stream_handle file(std::fopen("written", "w"));
        EXPECT_EQ(write_setting(file.get(), text.c_str()), 1);
    }
    return read_file("written");
}

TEST(WriteSetting, WritesUpTo256CharactersInOneLine) {
    EXPECT_EQ(written(""), "\n");
    EXPECT_EQ(written("set logo a.gif"), "set logo a.gif\n");
    EXPECT_EQ(written(std::string(256, 'x')), std::string(256, 'x') + "\n");
}

TEST(WriteSetting, BreaksALongerTextBehindEach255Characters) {
    EXPECT_EQ(written(std::string(255, 'x') + "yz"), std::string(255, 'x') + " /\nyz\n");
    EXPECT_EQ(written(std::string(255, 'x') + std::string(255, 'y') + "zz"),
              std::string(255, 'x') + " /\n" + std::string(255, 'y') + " /\nzz\n");
    EXPECT_EQ(written(std::string(255, 'x') + std::string(256, 'y')),
              std::string(255, 'x') + " /\n" + std::string(256, 'y') + "\n");
}

// The directory that the missing value names.
class UpdateIni : public scratch_test {
  protected:
    UpdateIni() { std::filesystem::create_directory("(null)"); }

    static constexpr const char *ini_path = "(null)/kestrel.ini";
    static constexpr const char *new_path = "(null)/kestrel.new";

    // Rewrites an .ini that holds `before`; gives what it holds then.
    static std::string rewritten(std::string_view before, pINI_SETTINGS settings) {
        write_file(ini_path, before);
        EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(settings), 1); }), "");
        EXPECT_FALSE(is_there(new_path));
        return read_file(ini_path);
    }

    // Expects the rewriting to fail, the old file to stay and the new one to be gone.
    static void expect_failure(pINI_SETTINGS settings, const char *message) {
        const std::string before = read_file(ini_path);
        EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(settings), 0); }), message);
        EXPECT_EQ(read_file(ini_path), before);
        EXPECT_FALSE(std::filesystem::is_regular_file(new_path));
    }

    custom_store store{{"prod_name", "kestrel"},
                       {"body_add", "Goodbye"},
                       {"set", "logo a.gif"},
                       {"vlimg_dir", "/img"}};
};

TEST_F(UpdateIni, ReplacesTheSettingsAndKeepsEveryOtherLine) {
    EXPECT_EQ(rewritten("# kestrel.ini\n"
                        "\n"
                        "domain  example.com \r\n"
                        "set background old.jpg\n"
                        "\ttemplates /var/spool\n"
                        "body_add one\n"
                        "body_add two\n"
                        "# set aside\n"
                        "workarea\t/srv\n",
                        store.get()),
              "# kestrel.ini\n"
              "\n"
              "domain  example.com \r\n"
              "\ttemplates /var/spool\n"
              "# set aside\n"
              "workarea\t/srv\n"
              "set logo a.gif\n"
              "body_add Goodbye\n");
}

TEST_F(UpdateIni, ConversionsInLinesAndSettingsAreText) {
    custom_store odd{
        {"prod_name", "kestrel"}, {"set", "background %s%n%d%%"}, {"body_add", "%s%n%d%%"}};
    EXPECT_EQ(rewritten("%s%n%d%% %s%n%d%%\nset %s\n", odd.get()),
              "%s%n%d%% %s%n%d%%\nset background %s%n%d%%\nbody_add %s%n%d%%\n");
}

TEST_F(UpdateIni, OnlyALineThatEndsInABlankAndASlashGoesOn) {
    EXPECT_EQ(rewritten("set a~ /\nmore of it\nset b /~\ndomain c\n", store.get()),
              "domain c\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, DropsALineWhoseFirstWordOnlyBeginsWithAName) {
    EXPECT_EQ(rewritten("setx a\nsettings b\ndomain c\n", store.get()),
              "domain c\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, FindsFirstWordsBehindLeadingBlanks) {
    EXPECT_EQ(rewritten("  set a\n\tbody_add b\ndomain c\n", store.get()),
              "domain c\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, EndsALastLineWithoutLineEnd) {
    EXPECT_EQ(rewritten("set a\ndomain b", store.get()),
              "domain b\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, LeavesALastLineAsItIsWhenThereIsNothingToWrite) {
    custom_store empty{{"prod_name", "kestrel"}};

    EXPECT_EQ(rewritten("set a\ndomain b", empty.get()), "domain b");
}

TEST_F(UpdateIni, DropsAllLinesOfALongSetting) {
    EXPECT_EQ(rewritten("set scrollmessage one /\n"
                        "   two / \t\r\n"
                        "domain of the message /\n"
                        "end\n"
                        "domain b\n",
                        store.get()),
              "domain b\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, StartsWithNoSettingBeingSkipped) {
    ASSERT_EQ(match_setting("set a /\n", store.get()), 1);

    EXPECT_EQ(rewritten("domain a\n", store.get()), "domain a\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, KeepsTheContinuationOfAKeptSettingWhateverItBeginsWith) {
    EXPECT_EQ(rewritten("hosts a /\n  settler b /\nset c\n# note /\nset d\n", store.get()),
              "hosts a /\n  settler b /\nset c\n# note /\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, KeepsTheFirstSettingApartFromALastLineThatGoesOn) {
    EXPECT_EQ(rewritten("set a\nhosts b /", store.get()),
              "hosts b /\n\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, KeepsItApartWhereOnlyTheLineEndMakesTheLastLineGoOn) {
    EXPECT_EQ(rewritten("hosts a /\n /", store.get()),
              "hosts a /\n /\n\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, ASettingBeginsBehindALineThatHoldsOnlyTheMark) {
    EXPECT_EQ(rewritten("  /\nset a\ndomain b\n", store.get()),
              "  /\ndomain b\nset logo a.gif\nbody_add Goodbye\n");
    EXPECT_EQ(rewritten("hosts a /\n  /\nset b\n", store.get()),
              "hosts a /\n  /\nset b\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, TakesALineInPiecesOf510Characters) {
    const std::string piece(510, 'x');
    EXPECT_EQ(rewritten(piece + "set a\ndomain b\n" + piece + "rest\n", store.get()),
              piece + "\ndomain b\n" + piece + "rest\nset logo a.gif\nbody_add Goodbye\n");
}

TEST_F(UpdateIni, KeepsBytesBehindANul) {
    const std::string line("domain a\0b set\n", 15);
    EXPECT_EQ(rewritten(line, store.get()), line + "set logo a.gif\nbody_add Goodbye\n");
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

TEST_F(UpdateIni, WithoutTheOldFileSaysSo) {
    EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(store.get()), 0); }),
              "Error: Cannot find file (null)/kestrel.ini, No such file or directory\n");
    EXPECT_FALSE(is_there(new_path));
}

TEST_F(UpdateIni, LogsTheFailure) {
    ASSERT_EQ(inilog(".", "gxsetup"), 1);
    console_of([&] { update_ini(store.get()); });
    close_log();

    EXPECT_TRUE(read_file("gxsetup.log")
                    .ends_with(" Error: Cannot find file (null)/kestrel.ini, No such file or "
                               "directory\n"));
}

TEST_F(UpdateIni, WhereTheNewFileCannotBeOpenedTheOldOneStays) {
    write_file(ini_path, "set a\n");
    std::filesystem::create_directory(new_path);

    expect_failure(store.get(), "Error: Cannot find file (null)/kestrel.new, Is a directory\n");
}

TEST_F(UpdateIni, WhereTheNewFileCannotBeWrittenTheOldOneStays) {
    write_file(ini_path, "set a\ndomain " + std::string(20000, 'x') + "\n");
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{8192, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);

    expect_failure(store.get(), "Error: Cannot write file (null)/kestrel.new, File too large\n");

    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_DFL);
}

TEST_F(UpdateIni, WhereTheOldFileCannotBeReadItStays) {
    std::filesystem::create_symlink("/proc/self/mem", ini_path);
    EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(store.get()), 0); }),
              "Error: Cannot read file (null)/kestrel.ini, Input/output error\n");
    EXPECT_FALSE(is_there(new_path));
}

TEST_F(UpdateIni, RefusesWhatIsNoPlainFile) {
    std::filesystem::create_directory(ini_path);
    EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(store.get()), 0); }),
              "Error: Cannot find file (null)/kestrel.ini, Is a directory\n");
    std::filesystem::remove(ini_path);
    ASSERT_EQ(::mkfifo(ini_path, 0600), 0);
    EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(store.get()), 0); }),
              "Error: Cannot find file (null)/kestrel.ini, Invalid argument\n");
    EXPECT_TRUE(std::filesystem::is_fifo(ini_path));
}

TEST_F(UpdateIni, RefusesAPathThatIsTooLong) {
    std::string name;
    for (int part = 0; part < 10; part++) {
        name += std::string(50, 'd') + "/";
    }
    std::filesystem::create_directories("(null)/" + name);
    write_file("(null)/" + name + "x.ini", "set a\n");
    custom_store deep{{"prod_name", name + "x"}};

    EXPECT_EQ(console_of([&] { EXPECT_EQ(update_ini(deep.get()), 0); }),
              "Error: Cannot find file " + ("(null)/" + name).substr(0, 400) +
                  "..., File name too long\n");
    EXPECT_EQ(read_file("(null)/" + name + "x.ini"), "set a\n");
}

TEST_F(UpdateIni, ReplacesALeftOverNewFileWhateverItLeadsTo) {
    write_file("elsewhere", "as it was");
    std::filesystem::create_symlink("../elsewhere", new_path);
    EXPECT_EQ(rewritten("domain a\n", store.get()), "domain a\nset logo a.gif\nbody_add Goodbye\n");
    std::filesystem::create_hard_link(ini_path, new_path);
    EXPECT_EQ(rewritten("domain b\n", store.get()), "domain b\nset logo a.gif\nbody_add Goodbye\n");
    EXPECT_EQ(read_file("elsewhere"), "as it was");
}

TEST_F(UpdateIni, KeepsTheModeOfTheOldFile) {
    write_file(ini_path, "domain a\n");
    ASSERT_EQ(::chmod(ini_path, 0604), 0);

    ASSERT_EQ(update_ini(store.get()), 1);

    struct stat status {};
    ASSERT_EQ(::stat(ini_path, &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0604U);
}

TEST_F(UpdateIni, KeepsTheOwnerOfTheOldFile) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    constexpr uid_t user = 12;
    constexpr gid_t group = 34;
    write_file(ini_path, "domain a\n");
    ASSERT_EQ(::chown(ini_path, user, group), 0);

    ASSERT_EQ(update_ini(store.get()), 1);

    struct stat status {};
    ASSERT_EQ(::stat(ini_path, &status), 0);
    EXPECT_EQ(status.st_uid, user);
    EXPECT_EQ(status.st_gid, group);
}

} // namespace
