#include "settings/store.h"

#include "support/console_capture.h"
#include "support/rows.h"
#include "unit/call_rows.h"
#include "unit/failing_memory.h"
#include "unit/settings/recording_store.h"

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr INI_NAMES_INFO names[] = {
    {"cgi_name", nullptr, 0, 0}, {"templates", nullptr, 0, 0}, {"workarea", nullptr, 0, 0},
    {"tpl_set", nullptr, 1, 0},  {"secret", nullptr, 0, 1},    {"secrets", nullptr, 1, 1},
    {nullptr, nullptr, 0, 0},
};
constexpr INI_NAMES_INFO with_defaults[] = {
    {"action", "install", 0, 0}, {"empty", "", 0, 0},      {"none", nullptr, 0, 0},
    {"port", "110", 0, 0},       {nullptr, nullptr, 0, 0},
};
constexpr const char *associations[] = {"workarea", "templates", "wml_tpl", "workarea", "self",
                                        "self",     "ping",      "pong",    "pong",     "ping",
                                        "old_sets", "tpl_set",   nullptr};

std::string shown(int status) {
    return std::to_string(status);
}

std::string shown(const char *text) {
    return text != nullptr ? text : "-";
}

std::string shown(LINK_LIST list) {
    std::string items;
    for (const std::string &item : items_of(&list)) {
        items += "[" + item + "]";
    }
    list_clear(&list);
    return items.empty() ? "-" : items;
}

std::string replaced(pINI_SETTINGS ini, const char *value) {
    return shown(heap_text(ini_update(ini, value)).get());
}

using store_call = std::function<std::string(pINI_SETTINGS, const char *, const char *)>;

// clang-format off
const std::map<std::string, store_call> calls = {
    {"setup", [](auto *ini, auto, auto) { return shown(ini_setup(ini, names, associations)); }},
    {"default", [](auto *ini, auto, auto) { return shown(ini_default(ini)); }},
    {"clear", [](auto *ini, auto, auto) { return shown(ini_clear(ini)); }},
    {"add", [](auto *ini, auto *name, auto *value) { return shown(ini_add(ini, name, value)); }},
    {"remove", [](auto *ini, auto *name, auto) { return shown(ini_remove(ini, name)); }},
    {"remove_all", [](auto *ini, auto *name, auto) { return ini_remove_all(ini, name), ""; }},
    {"number", [](auto *ini, auto, auto) { return shown(ini_number(ini)); }},
    {"start", [](auto *ini, auto, auto) { return shown(ini_start(ini)); }},
    {"get", [](auto *ini, auto, auto) { return shown(ini_get(ini)); }},
    {"update", [](auto *ini, auto *value, auto) { return replaced(ini, value); }},
    {"association", [](auto *ini, auto *name, auto)
     { return shown(ini_get_association(ini, name)); }},
    {"value", [](auto *ini, auto *name, auto) { return shown(ini_value(ini, name, 0)); }},
    {"value+", [](auto *ini, auto *name, auto) { return shown(ini_value(ini, name, 1)); }},
    {"value2", [](auto *ini, auto *name, auto) { return ini_value2(ini, name, 0); }},
    {"value_num", [](auto *ini, auto *id, auto) { return shown(ini_value_num(ini, s_atoi(id))); }},
    {"next", [](auto *ini, auto *name, auto) { return shown(ini_next_value(ini, name)); }},
    {"next_num", [](auto *ini, auto *id, auto)
     { return shown(ini_next_value_num(ini, s_atoi(id))); }},
    {"values", [](auto *ini, auto *name, auto) { return shown(ini_get_multi_value(ini, name)); }},
    {"values_num", [](auto *ini, auto *id, auto)
     { return shown(ini_get_multi_value_num(ini, s_atoi(id))); }},
    {"true", [](auto *ini, auto *name, auto) { return shown(ini_true(ini, name)); }},
    {"true_num", [](auto *ini, auto *id, auto) { return shown(ini_true_num(ini, s_atoi(id))); }},
    {"emsg", [](auto *ini, auto, auto) { return shown(ini_emsg(ini, "text")); }},
    {"dmsg", [](auto *ini, auto, auto) { return shown(ini_dmsg(ini, "text")); }},
};
// clang-format on

class Store : public testing::Test, public recording_store {
  protected:
    Store() {
        ini_setup(&ini, names, associations);
        debug_messages.clear();
    }

    void add(const char *name, const char *value) { EXPECT_EQ(ini_add(&ini, name, value), 1); }

    // Makes a call, "NAME ARGUMENT VALUE"; gives its result as a text, nothing
    // for one without.
    std::string call(const std::string &text) {
        std::istringstream words(text);
        std::string name;
        std::string argument;
        std::string value;
        words >> name >> argument;
        std::getline(words.ignore(), value);
        errors.clear();
        debug_messages.clear();
        return calls.at(name)(&ini, argument == "-" ? nullptr : argument.c_str(),
                              value == "-" ? nullptr : value.c_str());
    }

    // The test of a row of the table below.
    template <typename Row>
    void check(const Row &row) {
        EXPECT_EQ(results_of(row.calls, [&](const std::string &text) { return call(text); }),
                  row.results);
        texts told = debug_messages;
        for (const std::string &error : errors) {
            told.push_back("error: " + error);
        }
        EXPECT_TRUE(row.told.empty() || told == row.told) << testing::PrintToString(told);
        EXPECT_EQ(joined(settings_of(&ini)), row.settings);
    }

    static std::string joined(const texts &all) {
        std::string text;
        for (const std::string &one : all) {
            text += (text.empty() ? "" : " ") + one;
        }
        return text;
    }
};

using IniInit = Store;
using IniSetup = Store;
using IniDefault = Store;
using IniAdd = Store;
using IniValue = Store;
using IniMultiValue = Store;
using IniNum = Store;
using IniTrue = Store;
using IniMessages = Store;

// --- Calls ---

// Calls on an empty store, divided by "; ", and what each gives; then the
// settings and what the last call told. "-" is null, a "+" takes associations,
// and from "only texts 1" on there is memory for one text more.
struct store_calls {
    const char *name;
    const char *calls;
    const char *results;
    const char *settings;
    texts told = {};
};

// clang-format off
const std::vector<store_calls> rows = {
    {"IniAdd.ASingleValuedNameKeepsItsPlaceWithTheSecondValue",
     "add cgi_name kestrel; add templates /tpl; add cgi_name plover; number", "1 1 1 4",
     "cgi_name=plover templates=/tpl"},
    {"IniAdd.TellsOfAChange", "add cgi_name kestrel; add cgi_name plover", "1 1",
     "cgi_name=plover", {"INI: ini settings changed {cgi_name=plover}"}},
    {"IniAdd.TheLastSettingIsReplacedInPlaceToo",
     "add templates /tpl; add cgi_name kestrel; add cgi_name plover", "1 1 1",
     "templates=/tpl cgi_name=plover"},
    {"IniAdd.AMultiValuedNameGainsAFurtherEntry",
     "add tpl_set a; add cgi_name kestrel; add tpl_set a; add tpl_set b", "1 1 1 1",
     "tpl_set=a cgi_name=kestrel tpl_set=a tpl_set=b", {"INI: ini settings changed {tpl_set=b}"}},
    {"IniAdd.AnEmptyValueChangesNothingAndCountsAsDone",
     "add cgi_name kestrel; add cgi_name", "1 1", "cgi_name=kestrel",
     {"INI: Blank INI Setting for {cgi_name} not added"}},
    {"IniAdd.ANullValueChangesNothingAndCountsAsDone", "add templates -", "1", "",
     {"INI: Blank INI Setting for {templates} not added"}},
    {"IniAdd.ANullNameGivesZero", "add - value; number", "0 0", ""},
    {"IniAdd.UnknownNamesAreAcceptedAsSingleValued",
     "add unheard_of 1; add unheard_of 2", "1 1", "unheard_of=2"},
    {"IniAdd.NamesMatchCaseSensitively", "add cgi_name kestrel; add Cgi_name plover", "1 1",
     "cgi_name=kestrel Cgi_name=plover"},
    {"IniAdd.AnAssociatedNameIsNotReplaced", "add templates /tpl; add workarea /work", "1 1",
     "templates=/tpl workarea=/work"},
    {"IniAdd.MasksAPassword", "add secret one", "1", "secret=one",
     {"INI: ini settings changed {secret=xxxxx}"}},
    {"IniAdd.MasksAnotherPassword", "add secret one; add secret two", "1 1",
     "secret=two", {"INI: ini settings changed {secret=xxxxx}"}},
    {"IniAdd.WithoutMemoryForTheNameIsAnError", "only texts 0; add cgi_name kestrel", "0", "",
     {"error: INI: Memory Allocation Error -- for name in ini_add {cgi_name}"}},
    {"IniAdd.WithoutMemoryForTheValueAddsNoName", "only texts 1; add cgi_name kestrel", "0", "",
     {"error: INI: Memory Allocation Error -- for name in ini_add {cgi_name}"}},
    {"IniAdd.WithoutMemoryForANewValueKeepsTheOldOne",
     "add cgi_name kestrel; only texts 0; add cgi_name plover", "1 0", "cgi_name=kestrel",
     {"error: INI: Memory Allocation Error -- for name in ini_add {cgi_name}"}},
    {"IniAdd.ANameThatCannotBeAppendedIsAnError", "only nodes 0; add cgi_name kestrel", "0", "",
     {"error: LIST: Error - add item to list failed\n",
      "error: INI: 'name' failed to be added to ini settings {cgi_name}"}},
    {"IniAdd.AFailedValueTakesItsNameAlong",
     "add templates /tpl; only nodes 1; add cgi_name kestrel", "1 0", "templates=/tpl",
     {"error: LIST: Error - add item to list failed\n",
      "error: INI: 'cgi_name' value failed to be added to ini settings {kestrel}"}},
    {"IniAdd.AddsTheValueOnceThereIsMemory",
     "only nodes 1; add cgi_name kestrel; only nodes 9; value cgi_name; add cgi_name plover",
     "0 - 1", "cgi_name=plover"},
    {"IniAdd.MasksAPasswordThatCannotBeAppended", "only nodes 1; add secret word", "0", "",
     {"error: LIST: Error - add item to list failed\n",
      "error: INI: 'secret' value failed to be added to ini settings {xxxxxx}"}},
    {"IniAdd.AFailedReplacementRemovesTheSetting",
     "add templates /tpl; add cgi_name kestrel; add other 1; only nodes 0; add cgi_name plover",
     "1 1 1 0", "templates=/tpl other=1",
     {"error: LIST: Error - add item to list failed\n",
      "error: INI: Adding {cgi_name=plover} to settings failed removed setting."}},
    {"IniAdd.WhatWasRemovedIsNotFound",
     "add cgi_name kestrel; only nodes 0; add cgi_name plover; value cgi_name", "1 0 -", ""},
    {"IniAdd.MasksAPasswordThatCannotBeInserted",
     "add secret old; only nodes 0; add secret new", "1 0", "",
     {"error: LIST: Error - add item to list failed\n",
      "error: INI: Adding {secret=xxxxx} to settings failed removed setting."}},
    {"IniAdd.MovesTheIterationPointToTheEnd",
     "add cgi_name kestrel; start; add templates /tpl; get", "1 1 1 -",
     "cgi_name=kestrel templates=/tpl"},
    {"IniRemove.TakesTheFirstSettingOfTheName",
     "add tpl_set a; add cgi_name kestrel; add tpl_set b; remove tpl_set; value tpl_set",
     "1 1 1 1 b", "cgi_name=kestrel tpl_set=b"},
    {"IniRemove.TakesTheLastSettingOfTheName",
     "add cgi_name kestrel; add tpl_set b; remove tpl_set; remove tpl_set", "1 1 1 0",
     "cgi_name=kestrel"},
    {"IniRemove.WithoutSuchANameGivesZero",
     "add cgi_name kestrel; remove Cgi_name; remove -", "1 0 0", "cgi_name=kestrel"},
    {"IniRemove.UsesNoAssociations", "add templates /tpl; remove workarea", "1 0",
     "templates=/tpl"},
    // The reverse of every other masked message.
    {"IniRemove.TheMessageShowsAPassword", "add secret word; remove secret", "1 1", "",
     {"INI: ini setting removed {secret=word}"}},
    {"IniRemove.TheMessageMasksEverythingElse", "add cgi_name kestrel; remove cgi_name", "1 1", "",
     {"INI: ini setting removed {cgi_name=xxxxx}"}},
    {"IniRemove.AllTakesEverySettingOfTheName",
     "add tpl_set a; add cgi_name kestrel; add tpl_set b; remove_all tpl_set; remove_all missing",
     "1 1 1", "cgi_name=kestrel"},
    {"IniGet.GivesNamesAndValuesInTurnAndNullAtTheEnd",
     "add cgi_name kestrel; add templates /tpl; start; get; get; get; get; get",
     "1 1 1 cgi_name kestrel templates /tpl -", "cgi_name=kestrel templates=/tpl"},
    {"IniUpdate.ReplacesTheValueThatTheIterationGaveLast",
     "add cgi_name kestrel; add templates /tpl; value cgi_name; update plover; value templates; "
     "update /spool",
     "1 1 kestrel kestrel /tpl /tpl", "cgi_name=plover templates=/spool"},
    {"IniUpdate.GoesOnWithTheIteration",
     "add tpl_set a; add tpl_set b; value tpl_set; update c; next tpl_set; value tpl_set",
     "1 1 a a b c", "tpl_set=c tpl_set=b"},
    {"IniUpdate.WithoutAValueChangesNothing",
     "update x; add cgi_name kestrel; start; update x; get; update x; get; update -",
     "- 1 1 - cgi_name - kestrel -", "cgi_name=kestrel"},
    {"IniUpdate.WithoutMemoryKeepsTheValueAndLogsTheName",
     "add cgi_name kestrel; value cgi_name; only texts 0; update plover", "1 kestrel -",
     "cgi_name=kestrel", {"error: INI: Memory Allocation Error -- for name in ini_add {cgi_name}"}},
    {"IniValue.GivesTheFirstValueOfTheExactName",
     "add tpl_set a; add tpl_set b; value tpl_set; value Tpl_set; value+ -", "1 1 a - -",
     "tpl_set=a tpl_set=b"},
    {"IniValue.LeavesTheIterationJustBehindTheValue",
     "add cgi_name kestrel; add templates /tpl; value cgi_name; get", "1 1 kestrel templates",
     "cgi_name=kestrel templates=/tpl"},
    {"IniValue.WithoutAMatchLeavesTheIterationAtTheEnd",
     "add cgi_name kestrel; start; value missing; get", "1 1 - -", "cgi_name=kestrel"},
    {"IniValue.AnAssociationReplacesAMissingName", "add templates /tpl; value+ workarea", "1 /tpl",
     "templates=/tpl", {"INI: replace located {workarea}={templates}"}},
    {"IniValue.AnAssociationDoesNotReplaceAnOwnValue",
     "add templates /tpl; value workarea; add workarea /work; value+ workarea", "1 - 1 /work",
     "templates=/tpl workarea=/work"},
    {"IniValue.AssociationsChain", "add templates /tpl; value+ wml_tpl", "1 /tpl", "templates=/tpl",
     {"INI: replace located {wml_tpl}={workarea}", "INI: replace located {workarea}={templates}"}},
    {"IniValue.AssociationsThatGoInACircleEnd",
     "value+ self; value+ ping; add self 1; value+ self", "- - 1 1", "self=1"},
    {"IniNextValue.GoesOnFromTheIterationPoint",
     "add tpl_set a; add cgi_name kestrel; add tpl_set b; value tpl_set; next tpl_set; "
     "next tpl_set; start; next cgi_name; next cgi_name",
     "1 1 1 a b - 1 kestrel -", "tpl_set=a cgi_name=kestrel tpl_set=b"},
    {"IniNextValue.UsesNoAssociations", "add templates /tpl; start; next workarea", "1 1 -",
     "templates=/tpl"},
    {"IniValue.GetAssociationGivesTheFirstSubstitute",
     "association workarea; association templates; association -", "templates - -", ""},
    {"IniMultiValue.OfAnAssociationGivesOnlyItsFirstValue",
     "add tpl_set a; add tpl_set b; values old_sets", "1 1 [a]", "tpl_set=a tpl_set=b"},
    // 0 is cgi_name, 1 templates, 2 workarea, which has an association, 3 tpl_set.
    {"IniNum.TakesTheNameFromTheTable",
     "add templates /tpl; add tpl_set a; add tpl_set b; value_num 1; value_num 2; value_num 0; "
     "values_num 3; value_num 3; next_num 3",
     "1 1 1 /tpl /tpl - [a][b] a b", "templates=/tpl tpl_set=a tpl_set=b"},
    {"IniTrue.UsesAssociations", "add templates yes; true workarea", "1 1", "templates=yes"},
    {"IniClear.EmptiesTheStoreWhichCanBeFilledAgain",
     "add cgi_name kestrel; clear; number; value cgi_name; add cgi_name plover", "1 1 0 - 1",
     "cgi_name=plover"},
    {"IniMessages.APercentInAValueReachesTheReceiverAsItIs", "add cgi_name 100% %s %n", "1",
     "cgi_name=100% %s %n", {"INI: ini settings changed {cgi_name=100% %s %n}"}},
};
// clang-format on

const int registered = register_rows<Store>(rows);

} // namespace

// --- Life ---

TEST_F(IniInit, MakesAnEmptyStore) {
    ini_settings fresh{};
    fresh.ini_names = names;
    fresh.associations = associations;
    EXPECT_EQ(ini_init(&fresh, keep_in<errors>, keep_in<debug_messages>), 1);
    EXPECT_EQ(fresh.init_value, 32000);
    EXPECT_EQ(fresh.emsg, &keep_in<errors>);
    EXPECT_EQ(fresh.dmsg, &keep_in<debug_messages>);
    EXPECT_EQ(fresh.ini_names, nullptr);
    EXPECT_EQ(fresh.associations, nullptr);
    EXPECT_EQ(fresh.settings.init_value, 32000);
    EXPECT_EQ(fresh.settings.emsg, &keep_in<errors>);
    EXPECT_EQ(ini_number(&fresh), 0);
}

TEST(IniLibrary, CallsItselfByNameAndVersion) {
    EXPECT_STREQ(ini_library, "INI v1.3c");
}

TEST(Ini, NullStoreGivesNothing) {
    EXPECT_EQ(ini_init(nullptr, nullptr, nullptr), 0);
    for (const auto &[name, call] : calls) {
        const std::string result = call(nullptr, "0", "b");
        EXPECT_TRUE(result == "0" || result == "-" || result.empty()) << name << result;
    }
}

TEST(Ini, UseBeforeInitEndsTheProgramWithStatus1) {
    auto uses = calls;
    uses["load"] = [](auto *ini, auto, auto) { return shown(ini_load(ini, "file")); };
    uses["save"] = [](auto *ini, auto, auto) { return shown(ini_save(ini, "file", "test")); };
    for (const char *without_table :
         {"value_num", "next_num", "values_num", "true_num", "update"}) {
        uses.erase(without_table);
    }
    for (const auto &[name, use] : uses) {
        ini_settings raw{};
        EXPECT_EXIT((errno = ENOENT, use(&raw, "a", "b")), testing::ExitedWithCode(1),
                    testing::Eq(std::string("Error Using ini before Init\n: "
                                            "No such file or directory\n")))
            << name;
    }
}

TEST_F(IniSetup, StoresBothTablesAndAddsTheDefaults) {
    EXPECT_EQ(ini_setup(&ini, with_defaults, nullptr), 1);
    EXPECT_EQ(ini.ini_names, with_defaults);
    EXPECT_EQ(ini.associations, nullptr);
    EXPECT_EQ(settings_of(&ini), (texts{"action=install", "port=110"}));
}

TEST_F(IniDefault, WithoutATableGivesOne) {
    ini.ini_names = nullptr;
    EXPECT_EQ(ini_default(&ini), 1);
    EXPECT_EQ(ini_number(&ini), 0);
}

TEST_F(IniDefault, AFailedAddIsAnErrorAndTheOthersAreStillAdded) {
    ini.ini_names = with_defaults;
    add("port", "995");
    const failing_memory none(memory_of::nodes, 0);
    EXPECT_EQ(ini_default(&ini), 0);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors[2], "INI: Setting up ini Defaults failed {action=install}");
    EXPECT_EQ(errors.back(), "INI: Setting up ini Defaults failed {port=110}");
}

// --- Adding ---

TEST_F(IniAdd, KeepsCopies) {
    char name[] = "cgi_name";
    char text[] = "kestrel";
    add(name, text);
    name[0] = text[0] = 'X';
    EXPECT_EQ(settings_of(&ini), texts{"cgi_name=kestrel"});
}

TEST_F(IniAdd, TakesAValueOfTheStoreItself) {
    add("cgi_name", "kestrel");
    EXPECT_EQ(ini_add(&ini, "cgi_name", ini_value(&ini, "cgi_name", 0)), 1);
    EXPECT_EQ(settings_of(&ini), texts{"cgi_name=kestrel"});
}

// --- Lookups ---

TEST_F(IniValue, AChainAsLongAsTheTableIsFollowedToItsEnd) {
    constexpr const char *chain[] = {"c", "d", "b", "c", "a", "b", nullptr};
    ini.associations = chain;
    add("d", "found");
    EXPECT_STREQ(ini_value(&ini, "a", 1), "found");
}

TEST_F(IniValue, WithoutTablesFindsOnlyTheName) {
    ini_settings bare{};
    ini_init(&bare, nullptr, nullptr);
    ini_add(&bare, "templates", "/tpl");
    EXPECT_EQ(ini_value(&bare, "workarea", 1), nullptr);
    EXPECT_STREQ(ini_value(&bare, "templates", 1), "/tpl");
    ini_clear(&bare);
}

TEST_F(IniValue, TheFormsEndingInTwoGiveAnEmptyTextForNull) {
    EXPECT_STREQ(ini_value2(&ini, "missing", 1), "");
    EXPECT_STREQ(ini_next_value2(&ini, "missing"), "");
    EXPECT_STREQ(ini_value2_num(&ini, 0), "");
    EXPECT_STREQ(ini_next_value2_num(&ini, 0), "");
    add("cgi_name", "kestrel");
    EXPECT_STREQ(ini_value2(&ini, "cgi_name", 0), "kestrel");
    EXPECT_STREQ(ini_value2_num(&ini, 0), "kestrel");
}

TEST_F(IniMultiValue, GivesAllValuesInOrderAsTheStoresOwnTexts) {
    add("tpl_set", "a");
    add("cgi_name", "kestrel");
    add("tpl_set", "b");
    LINK_LIST values = ini_get_multi_value(&ini, "tpl_set");
    EXPECT_EQ(values.emsg, &keep_in<errors>);
    EXPECT_EQ(list_get_num(&values, 0), ini_value(&ini, "tpl_set", 0));
    EXPECT_EQ(shown(values), "[a][b]");
    EXPECT_EQ(call("values missing"), "-");
}

TEST_F(IniNum, WithoutATableGivesNothing) {
    add("templates", "/tpl");
    ini.ini_names = nullptr;
    EXPECT_EQ(call("value_num 1") + call("next_num 1") + call("values_num 1"), "---");
    EXPECT_EQ(call("true_num 1"), "-1");
}

TEST_F(IniTrue, IsOneForAValueThatBeginsWithYesOrOn) {
    for (const char *text : {"Yes", "YES", "yes, please", "ON", "on", "once"}) {
        add("cgi_name", text);
        EXPECT_EQ(ini_true(&ini, "cgi_name"), 1) << text;
        EXPECT_EQ(ini_true_num(&ini, 0), 1) << text;
    }
}

TEST_F(IniTrue, IsMinusOneForAnythingElseAndForNothing) {
    for (const char *text : {"no", "TRUE", "1", "ye", "o", " yes"}) {
        add("cgi_name", text);
        EXPECT_EQ(ini_true(&ini, "cgi_name"), -1) << text;
    }
    EXPECT_EQ(call("true missing") + call("true -"), "-1-1");
}

// --- Messages ---

TEST_F(IniMessages, BeginWithIni) {
    EXPECT_EQ(ini_emsg(&ini, "file {%s}", "a"), 1);
    EXPECT_EQ(ini_dmsg(&ini, "%d of %d", 1, 2), 1);
    EXPECT_EQ(errors, texts{"INI: file {a}"});
    EXPECT_EQ(debug_messages, texts{"INI: 1 of 2"});
}

TEST_F(IniMessages, WithoutReceiversAreSilent) {
    ini.emsg = nullptr;
    ini.dmsg = nullptr;
    EXPECT_EQ(ini_emsg(&ini, "text"), 1);
    EXPECT_EQ(ini_dmsg(&ini, "text"), 1);
    EXPECT_EQ(ini_add(&ini, "cgi_name", "kestrel"), 1);
}

TEST_F(IniMessages, AreCutAt1023Characters) {
    ini_emsg(&ini, "%s", std::string(5000, 'v').c_str());
    EXPECT_EQ(errors, texts{"INI: " + std::string(1018, 'v')});
}
