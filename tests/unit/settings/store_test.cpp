#include "settings/store.h"

#include "support/console_capture.h"
#include "unit/failing_memory.h"
#include "unit/settings/recording_store.h"

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

constexpr INI_NAMES_INFO names[] = {
    {"cgi_name", nullptr, 0, 0}, {"templates", nullptr, 0, 0}, {"workarea", nullptr, 0, 0},
    {"tpl_set", nullptr, 1, 0},  {"secret", nullptr, 0, 1},    {"secrets", nullptr, 1, 1},
    {nullptr, nullptr, 0, 0},
};
constexpr const char *associations[] = {"workarea", "templates", "wml_tpl", "workarea",
                                        "self",     "self",      "ping",    "pong",
                                        "pong",     "ping",      nullptr};

class Store : public testing::Test, public recording_store {
  protected:
    Store() {
        ini_setup(&ini, names, associations);
        debug_messages.clear();
    }

    void add(const char *name, const char *value) {
        EXPECT_EQ(ini_add(&ini, name, value), 1);
        debug_messages.clear();
    }

    std::string value(const char *name, int with_associations = 0) {
        const char *found = ini_value(&ini, name, with_associations);
        return found != nullptr ? found : "(none)";
    }

    std::string next_value(const char *name) {
        const char *found = ini_next_value(&ini, name);
        return found != nullptr ? found : "(none)";
    }

    static texts items(LINK_LIST list) {
        texts all;
        list_start(&list);
        while (const auto *item = static_cast<const char *>(list_get(&list))) {
            all.emplace_back(item);
        }
        list_clear(&list);
        return all;
    }
};

using IniInit = Store;
using IniSetup = Store;
using IniDefault = Store;
using IniClear = Store;
using IniAdd = Store;
using IniRemove = Store;
using IniUpdate = Store;
using IniGet = Store;
using IniValue = Store;
using IniNextValue = Store;
using IniMultiValue = Store;
using IniNum = Store;
using IniTrue = Store;
using IniMessages = Store;

} // namespace

// --- Life ---

TEST_F(IniInit, MakesAnEmptyStore) {
    ini_settings fresh{};
    fresh.ini_names = names;
    fresh.associations = associations;
    EXPECT_EQ(ini_init(&fresh, keep_error, keep_debug_message), 1);
    EXPECT_EQ(fresh.init_value, 32000);
    EXPECT_EQ(fresh.emsg, &keep_error);
    EXPECT_EQ(fresh.dmsg, &keep_debug_message);
    EXPECT_EQ(fresh.ini_names, nullptr);
    EXPECT_EQ(fresh.associations, nullptr);
    EXPECT_EQ(fresh.settings.init_value, 32000);
    EXPECT_EQ(fresh.settings.emsg, &keep_error);
    EXPECT_EQ(ini_number(&fresh), 0);
}

TEST(IniLibrary, CallsItselfByNameAndVersion) {
    EXPECT_STREQ(ini_library, "INI v1.3c");
}

TEST(Ini, NullStoreGivesNothing) {
    EXPECT_EQ(ini_init(nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(ini_setup(nullptr, names, associations), 0);
    EXPECT_EQ(ini_default(nullptr), 0);
    EXPECT_EQ(ini_clear(nullptr), 0);
    EXPECT_EQ(ini_add(nullptr, "a", "b"), 0);
    EXPECT_EQ(ini_remove(nullptr, "a"), 0);
    EXPECT_EQ(ini_number(nullptr), 0);
    EXPECT_EQ(ini_start(nullptr), 0);
    EXPECT_EQ(ini_get(nullptr), nullptr);
    EXPECT_EQ(ini_update(nullptr, "a"), nullptr);
    EXPECT_EQ(ini_get_association(nullptr, "a"), nullptr);
    EXPECT_EQ(ini_value(nullptr, "a", 1), nullptr);
    EXPECT_EQ(ini_next_value(nullptr, "a"), nullptr);
    EXPECT_EQ(ini_value_num(nullptr, 0), nullptr);
    EXPECT_EQ(ini_next_value_num(nullptr, 0), nullptr);
    EXPECT_EQ(ini_true(nullptr, "a"), 0);
    EXPECT_EQ(ini_true_num(nullptr, 0), 0);
    EXPECT_EQ(ini_emsg(nullptr, "text"), 0);
    EXPECT_EQ(ini_dmsg(nullptr, "text"), 0);
    LINK_LIST values = ini_get_multi_value(nullptr, "a");
    EXPECT_EQ(list_num(&values), 0);
    values = ini_get_multi_value_num(nullptr, 0);
    EXPECT_EQ(list_num(&values), 0);
}

TEST(Ini, UseBeforeInitEndsTheProgramWithStatus1) {
    const std::vector<std::function<void(pINI_SETTINGS)>> uses = {
        [](pINI_SETTINGS ini) { ini_setup(ini, nullptr, nullptr); },
        [](pINI_SETTINGS ini) { ini_default(ini); },
        [](pINI_SETTINGS ini) { ini_clear(ini); },
        [](pINI_SETTINGS ini) { ini_add(ini, "a", "b"); },
        [](pINI_SETTINGS ini) { ini_remove(ini, "a"); },
        [](pINI_SETTINGS ini) { ini_number(ini); },
        [](pINI_SETTINGS ini) { ini_start(ini); },
        [](pINI_SETTINGS ini) { ini_get(ini); },
        [](pINI_SETTINGS ini) { ini_get_association(ini, "a"); },
        [](pINI_SETTINGS ini) { ini_value(ini, "a", 0); },
        [](pINI_SETTINGS ini) { ini_next_value(ini, "a"); },
        [](pINI_SETTINGS ini) { ini_get_multi_value(ini, "a"); },
        [](pINI_SETTINGS ini) { ini_value2(ini, "a", 0); },
        [](pINI_SETTINGS ini) { ini_true(ini, "a"); },
        [](pINI_SETTINGS ini) { ini_emsg(ini, "text"); },
        [](pINI_SETTINGS ini) { ini_dmsg(ini, "text"); },
        [](pINI_SETTINGS ini) { ini_load(ini, "file"); },
        [](pINI_SETTINGS ini) { ini_save(ini, "file", "test"); },
    };
    for (const auto &use : uses) {
        ini_settings raw{};
        EXPECT_EXIT((errno = ENOENT, use(&raw)), testing::ExitedWithCode(1),
                    testing::Eq(std::string("Error Using ini before Init\n: "
                                            "No such file or directory\n")));
    }
}

TEST_F(IniSetup, StoresBothTablesAndAddsTheDefaults) {
    constexpr INI_NAMES_INFO with_defaults[] = {
        {"action", "install", 0, 0}, {"empty", "", 0, 0},      {"none", nullptr, 0, 0},
        {"port", "110", 0, 0},       {nullptr, nullptr, 0, 0},
    };
    EXPECT_EQ(ini_setup(&ini, with_defaults, nullptr), 1);
    EXPECT_EQ(ini.ini_names, with_defaults);
    EXPECT_EQ(ini.associations, nullptr);
    EXPECT_EQ(settings(), (texts{"action=install", "port=110"}));
}

TEST_F(IniDefault, WithoutATableGivesOne) {
    ini.ini_names = nullptr;
    EXPECT_EQ(ini_default(&ini), 1);
    EXPECT_EQ(ini_number(&ini), 0);
}

TEST_F(IniDefault, AFailedAddIsAnErrorAndTheOthersAreStillAdded) {
    constexpr INI_NAMES_INFO with_defaults[] = {
        {"action", "install", 0, 0}, {"port", "110", 0, 0}, {nullptr, nullptr, 0, 0}};
    ini.ini_names = with_defaults;
    add("port", "995");
    const failing_memory none(memory_of::nodes, 0);
    EXPECT_EQ(ini_default(&ini), 0);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors[2], "INI: Setting up ini Defaults failed {action=install}");
    EXPECT_EQ(errors.back(), "INI: Setting up ini Defaults failed {port=110}");
}

TEST_F(IniClear, EmptiesTheStoreWhichCanBeFilledAgain) {
    add("cgi_name", "kestrel");
    EXPECT_EQ(ini_clear(&ini), 1);
    EXPECT_EQ(ini_number(&ini), 0);
    EXPECT_EQ(value("cgi_name"), "(none)");
    add("cgi_name", "plover");
    EXPECT_EQ(settings(), texts{"cgi_name=plover"});
}

// --- Adding ---

TEST_F(IniAdd, ASingleValuedNameKeepsItsPlaceWithTheSecondValue) {
    add("cgi_name", "kestrel");
    add("templates", "/tpl");
    EXPECT_EQ(ini_add(&ini, "cgi_name", "plover"), 1);
    EXPECT_EQ(settings(), (texts{"cgi_name=plover", "templates=/tpl"}));
    EXPECT_EQ(ini_number(&ini), 4);
    EXPECT_EQ(debug_messages, texts{"INI: ini settings changed {cgi_name=plover}"});
}

TEST_F(IniAdd, TheLastSettingIsReplacedInPlaceToo) {
    add("templates", "/tpl");
    add("cgi_name", "kestrel");
    add("cgi_name", "plover");
    EXPECT_EQ(settings(), (texts{"templates=/tpl", "cgi_name=plover"}));
}

TEST_F(IniAdd, AMultiValuedNameGainsAFurtherEntry) {
    add("tpl_set", "a");
    add("cgi_name", "kestrel");
    EXPECT_EQ(ini_add(&ini, "tpl_set", "b"), 1);
    EXPECT_EQ(ini_add(&ini, "tpl_set", "a"), 1);
    EXPECT_EQ(settings(), (texts{"tpl_set=a", "cgi_name=kestrel", "tpl_set=b", "tpl_set=a"}));
    EXPECT_EQ(debug_messages.front(), "INI: ini settings changed {tpl_set=b}");
}

TEST_F(IniAdd, AnEmptyValueChangesNothingAndCountsAsDone) {
    add("cgi_name", "kestrel");
    EXPECT_EQ(ini_add(&ini, "cgi_name", ""), 1);
    EXPECT_EQ(ini_add(&ini, "templates", nullptr), 1);
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
    EXPECT_EQ(debug_messages, (texts{"INI: Blank INI Setting for {cgi_name} not added",
                                     "INI: Blank INI Setting for {templates} not added"}));
}

TEST_F(IniAdd, ANullNameGivesZero) {
    EXPECT_EQ(ini_add(&ini, nullptr, "value"), 0);
    EXPECT_EQ(ini_number(&ini), 0);
}

TEST_F(IniAdd, UnknownNamesAreAcceptedAsSingleValued) {
    add("unheard_of", "1");
    add("unheard_of", "2");
    EXPECT_EQ(settings(), texts{"unheard_of=2"});
}

TEST_F(IniAdd, NamesMatchCaseSensitively) {
    add("cgi_name", "kestrel");
    add("Cgi_name", "plover");
    EXPECT_EQ(settings(), (texts{"cgi_name=kestrel", "Cgi_name=plover"}));
}

TEST_F(IniAdd, AnAssociatedNameIsNotReplaced) {
    add("templates", "/tpl");
    add("workarea", "/work");
    EXPECT_EQ(settings(), (texts{"templates=/tpl", "workarea=/work"}));
}

TEST_F(IniAdd, KeepsCopies) {
    char name[] = "cgi_name";
    char text[] = "kestrel";
    add(name, text);
    name[0] = text[0] = 'X';
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

TEST_F(IniAdd, TakesAValueOfTheStoreItself) {
    add("cgi_name", "kestrel");
    EXPECT_EQ(ini_add(&ini, "cgi_name", ini_value(&ini, "cgi_name", 0)), 1);
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

TEST_F(IniAdd, APasswordIsMaskedWithFiveLetters) {
    ini_add(&ini, "secret", "one");
    ini_add(&ini, "secret", "two");
    EXPECT_EQ(debug_messages, texts(2, "INI: ini settings changed {secret=xxxxx}"));
    EXPECT_EQ(settings(), texts{"secret=two"});
}

TEST_F(IniAdd, WithoutMemoryForTheNameIsAnError) {
    const failing_memory none(memory_of::texts, 0);
    EXPECT_EQ(ini_add(&ini, "cgi_name", "kestrel"), 0);
    EXPECT_EQ(errors, texts{"INI: Memory Allocation Error -- for name in ini_add {cgi_name}"});
    EXPECT_EQ(ini_number(&ini), 0);
}

TEST_F(IniAdd, WithoutMemoryForTheValueLeavesNoLoneName) {
    const failing_memory one(memory_of::texts, 1);
    EXPECT_EQ(ini_add(&ini, "cgi_name", "kestrel"), 0);
    EXPECT_EQ(errors, texts{"INI: Memory Allocation Error -- for name in ini_add {cgi_name}"});
    EXPECT_EQ(ini_number(&ini), 0);
}

TEST_F(IniAdd, WithoutMemoryForANewValueKeepsTheOldOne) {
    add("cgi_name", "kestrel");
    const failing_memory none(memory_of::texts, 0);
    EXPECT_EQ(ini_add(&ini, "cgi_name", "plover"), 0);
    EXPECT_EQ(errors, texts{"INI: Memory Allocation Error -- for name in ini_add {cgi_name}"});
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

TEST_F(IniAdd, ANameThatCannotBeAppendedIsAnError) {
    const failing_memory none(memory_of::nodes, 0);
    EXPECT_EQ(ini_add(&ini, "cgi_name", "kestrel"), 0);
    EXPECT_EQ(errors, (texts{"LIST: Error - add item to list failed\n",
                             "INI: 'name' failed to be added to ini settings {cgi_name}"}));
    EXPECT_EQ(ini_number(&ini), 0);
}

TEST_F(IniAdd, AValueThatCannotBeAppendedTakesItsNameAlong) {
    add("templates", "/tpl");
    {
        const failing_memory one(memory_of::nodes, 1);
        EXPECT_EQ(ini_add(&ini, "cgi_name", "kestrel"), 0);
    }
    EXPECT_EQ(errors,
              (texts{"LIST: Error - add item to list failed\n",
                     "INI: 'cgi_name' value failed to be added to ini settings {kestrel}"}));
    EXPECT_EQ(settings(), texts{"templates=/tpl"});
    EXPECT_EQ(value("cgi_name"), "(none)");
    add("cgi_name", "plover");
    EXPECT_EQ(settings(), (texts{"templates=/tpl", "cgi_name=plover"}));
}

TEST_F(IniAdd, APasswordThatCannotBeAppendedIsMaskedWithSixLetters) {
    const failing_memory one(memory_of::nodes, 1);
    EXPECT_EQ(ini_add(&ini, "secret", "word"), 0);
    EXPECT_EQ(errors.back(), "INI: 'secret' value failed to be added to ini settings {xxxxxx}");
}

TEST_F(IniAdd, AReplacementThatCannotBeInsertedRemovesTheSetting) {
    add("templates", "/tpl");
    add("cgi_name", "kestrel");
    add("other", "1");
    {
        const failing_memory none(memory_of::nodes, 0);
        EXPECT_EQ(ini_add(&ini, "cgi_name", "plover"), 0);
    }
    EXPECT_EQ(errors, (texts{"LIST: Error - add item to list failed\n",
                             "INI: Adding {cgi_name=plover} to settings failed removed setting."}));
    EXPECT_EQ(settings(), (texts{"templates=/tpl", "other=1"}));
    EXPECT_EQ(value("cgi_name"), "(none)");
}

TEST_F(IniAdd, APasswordThatCannotBeInsertedIsMaskedWithFiveLetters) {
    add("secret", "old");
    const failing_memory none(memory_of::nodes, 0);
    EXPECT_EQ(ini_add(&ini, "secret", "new"), 0);
    EXPECT_EQ(errors.back(), "INI: Adding {secret=xxxxx} to settings failed removed setting.");
    EXPECT_EQ(ini_number(&ini), 0);
}

TEST_F(IniAdd, MovesTheIterationPointToTheEnd) {
    add("cgi_name", "kestrel");
    ini_start(&ini);
    add("templates", "/tpl");
    EXPECT_EQ(ini_get(&ini), nullptr);
}

TEST_F(IniAdd, ManySettingsStayQuick) {
    for (int number = 0; number < 100000; number++) {
        ini_add(&ini, std::to_string(number).c_str(), "value");
    }
    debug_messages.clear();
    EXPECT_EQ(ini_number(&ini), 200000);
    EXPECT_EQ(value("99999"), "value");
}

// --- Removing ---

TEST_F(IniRemove, TakesTheFirstSettingOfTheName) {
    add("tpl_set", "a");
    add("cgi_name", "kestrel");
    add("tpl_set", "b");
    EXPECT_EQ(ini_remove(&ini, "tpl_set"), 1);
    EXPECT_EQ(settings(), (texts{"cgi_name=kestrel", "tpl_set=b"}));
    EXPECT_EQ(value("tpl_set"), "b");
    EXPECT_EQ(ini_remove(&ini, "tpl_set"), 1);
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
    EXPECT_EQ(ini_remove(&ini, "tpl_set"), 0);
}

TEST_F(IniRemove, WithoutSuchANameGivesZero) {
    add("cgi_name", "kestrel");
    EXPECT_EQ(ini_remove(&ini, "Cgi_name"), 0);
    EXPECT_EQ(ini_remove(&ini, nullptr), 0);
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

TEST_F(IniRemove, UsesNoAssociations) {
    add("templates", "/tpl");
    EXPECT_EQ(ini_remove(&ini, "workarea"), 0);
    EXPECT_EQ(settings(), texts{"templates=/tpl"});
}

// The reverse of every other masked message.
TEST_F(IniRemove, TheMessageShowsAPasswordAndMasksEverythingElse) {
    add("secret", "word");
    add("cgi_name", "kestrel");
    ini_remove(&ini, "secret");
    ini_remove(&ini, "cgi_name");
    EXPECT_EQ(debug_messages, (texts{"INI: ini setting removed {secret=word}",
                                     "INI: ini setting removed {cgi_name=xxxxx}"}));
}

TEST_F(IniRemove, AllTakesEverySettingOfTheName) {
    add("tpl_set", "a");
    add("cgi_name", "kestrel");
    add("tpl_set", "b");
    ini_remove_all(&ini, "tpl_set");
    ini_remove_all(&ini, "missing");
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

// --- Iteration ---

TEST_F(IniGet, GivesNamesAndValuesInTurnAndNullAtTheEnd) {
    add("cgi_name", "kestrel");
    add("templates", "/tpl");
    EXPECT_EQ(ini_start(&ini), 1);
    EXPECT_STREQ(ini_get(&ini), "cgi_name");
    EXPECT_STREQ(ini_get(&ini), "kestrel");
    EXPECT_STREQ(ini_get(&ini), "templates");
    EXPECT_STREQ(ini_get(&ini), "/tpl");
    EXPECT_EQ(ini_get(&ini), nullptr);
}

TEST_F(IniUpdate, ReplacesTheValueThatTheIterationGaveLast) {
    add("cgi_name", "kestrel");
    add("templates", "/tpl");
    ini_value(&ini, "cgi_name", 0);
    heap_text old = ini_update(&ini, "plover");
    EXPECT_STREQ(old.get(), "kestrel");
    EXPECT_EQ(settings(), (texts{"cgi_name=plover", "templates=/tpl"}));
    ini_value(&ini, "templates", 0);
    old = ini_update(&ini, "/spool");
    EXPECT_STREQ(old.get(), "/tpl");
    EXPECT_EQ(settings(), (texts{"cgi_name=plover", "templates=/spool"}));
}

TEST_F(IniUpdate, GoesOnWithTheIteration) {
    add("tpl_set", "a");
    add("tpl_set", "b");
    ini_value(&ini, "tpl_set", 0);
    ini_update(&ini, "c");
    EXPECT_EQ(next_value("tpl_set"), "b");
    EXPECT_EQ(value("tpl_set"), "c");
}

TEST_F(IniUpdate, ANullValueOrNoValueGivenLastChangesNothing) {
    EXPECT_EQ(ini_update(&ini, "x"), nullptr);
    add("cgi_name", "kestrel");
    ini_start(&ini);
    EXPECT_EQ(ini_update(&ini, "x"), nullptr);
    ini_get(&ini); // a name
    EXPECT_EQ(ini_update(&ini, "x"), nullptr);
    ini_get(&ini);
    EXPECT_EQ(ini_update(&ini, nullptr), nullptr);
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

TEST_F(IniUpdate, WithoutMemoryKeepsTheValueAndLogsTheName) {
    add("cgi_name", "kestrel");
    ini_value(&ini, "cgi_name", 0);
    const failing_memory none(memory_of::texts, 0);
    EXPECT_EQ(ini_update(&ini, "plover"), nullptr);
    EXPECT_EQ(errors, texts{"INI: Memory Allocation Error -- for name in ini_add {cgi_name}"});
    EXPECT_EQ(settings(), texts{"cgi_name=kestrel"});
}

// --- Lookups ---

TEST_F(IniValue, GivesTheFirstValueOfTheExactName) {
    add("tpl_set", "a");
    add("tpl_set", "b");
    EXPECT_EQ(value("tpl_set"), "a");
    EXPECT_EQ(value("Tpl_set"), "(none)");
    EXPECT_EQ(value(nullptr, 1), "(none)");
}

TEST_F(IniValue, LeavesTheIterationJustBehindTheValue) {
    add("cgi_name", "kestrel");
    add("templates", "/tpl");
    value("cgi_name");
    EXPECT_STREQ(ini_get(&ini), "templates");
}

TEST_F(IniValue, WithoutAMatchLeavesTheIterationAtTheEnd) {
    add("cgi_name", "kestrel");
    value("missing");
    EXPECT_EQ(ini_get(&ini), nullptr);
}

TEST_F(IniValue, AnAssociationReplacesAMissingName) {
    add("templates", "/tpl");
    EXPECT_EQ(value("workarea", 1), "/tpl");
    EXPECT_EQ(debug_messages, texts{"INI: replace located {workarea}={templates}"});
    EXPECT_EQ(value("workarea", 0), "(none)");
    add("workarea", "/work");
    EXPECT_EQ(value("workarea", 1), "/work");
}

TEST_F(IniValue, AssociationsChain) {
    add("templates", "/tpl");
    EXPECT_EQ(value("wml_tpl", 1), "/tpl");
    EXPECT_EQ(debug_messages, (texts{"INI: replace located {wml_tpl}={workarea}",
                                     "INI: replace located {workarea}={templates}"}));
}

TEST_F(IniValue, AssociationsThatGoInACircleEnd) {
    EXPECT_EQ(value("self", 1), "(none)");
    EXPECT_EQ(value("ping", 1), "(none)");
    add("self", "1");
    EXPECT_EQ(value("self", 1), "1");
}

TEST_F(IniValue, AChainAsLongAsTheTableIsFollowedToItsEnd) {
    constexpr const char *chain[] = {"c", "d", "b", "c", "a", "b", nullptr};
    ini.associations = chain;
    add("d", "found");
    EXPECT_EQ(value("a", 1), "found");
}

TEST_F(IniValue, WithoutTablesFindsOnlyTheName) {
    ini_settings bare{};
    ini_init(&bare, nullptr, nullptr);
    ini_add(&bare, "templates", "/tpl");
    EXPECT_EQ(ini_value(&bare, "workarea", 1), nullptr);
    EXPECT_STREQ(ini_value(&bare, "templates", 1), "/tpl");
    ini_clear(&bare);
}

TEST_F(IniValue, GetAssociationGivesTheFirstSubstitute) {
    EXPECT_STREQ(ini_get_association(&ini, "workarea"), "templates");
    EXPECT_EQ(ini_get_association(&ini, "templates"), nullptr);
    EXPECT_EQ(ini_get_association(&ini, nullptr), nullptr);
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

TEST_F(IniNextValue, GoesOnFromTheIterationPoint) {
    add("tpl_set", "a");
    add("cgi_name", "kestrel");
    add("tpl_set", "b");
    EXPECT_EQ(value("tpl_set"), "a");
    EXPECT_EQ(next_value("tpl_set"), "b");
    EXPECT_EQ(next_value("tpl_set"), "(none)");
    ini_start(&ini);
    EXPECT_EQ(next_value("cgi_name"), "kestrel");
    EXPECT_EQ(next_value("cgi_name"), "(none)");
}

TEST_F(IniNextValue, UsesNoAssociations) {
    add("templates", "/tpl");
    ini_start(&ini);
    EXPECT_EQ(next_value("workarea"), "(none)");
}

TEST_F(IniMultiValue, GivesAllValuesInOrderAsTheStoresOwnTexts) {
    add("tpl_set", "a");
    add("cgi_name", "kestrel");
    add("tpl_set", "b");
    LINK_LIST values = ini_get_multi_value(&ini, "tpl_set");
    EXPECT_EQ(values.emsg, &keep_error);
    list_start(&values);
    EXPECT_EQ(list_get(&values), ini_value(&ini, "tpl_set", 0));
    EXPECT_EQ(items(values), (texts{"a", "b"}));
    EXPECT_EQ(items(ini_get_multi_value(&ini, "missing")), texts{});
}

TEST_F(IniMultiValue, OfAnAssociationGivesOnlyItsFirstValue) {
    constexpr const char *to_sets[] = {"old_sets", "tpl_set", nullptr};
    ini.associations = to_sets;
    add("tpl_set", "a");
    add("tpl_set", "b");
    EXPECT_EQ(items(ini_get_multi_value(&ini, "old_sets")), texts{"a"});
}

TEST_F(IniNum, TakesTheNameFromTheTable) {
    add("templates", "/tpl");
    add("tpl_set", "a");
    add("tpl_set", "b");
    EXPECT_STREQ(ini_value_num(&ini, 1), "/tpl");
    EXPECT_STREQ(ini_value_num(&ini, 2), "/tpl"); // workarea, by its association
    EXPECT_EQ(ini_value_num(&ini, 0), nullptr);
    EXPECT_EQ(items(ini_get_multi_value_num(&ini, 3)), (texts{"a", "b"}));
    EXPECT_STREQ(ini_value_num(&ini, 3), "a");
    EXPECT_STREQ(ini_next_value_num(&ini, 3), "b");
}

TEST_F(IniNum, WithoutATableGivesNothing) {
    add("templates", "/tpl");
    ini.ini_names = nullptr;
    EXPECT_EQ(ini_value_num(&ini, 1), nullptr);
    EXPECT_EQ(ini_next_value_num(&ini, 1), nullptr);
    EXPECT_EQ(items(ini_get_multi_value_num(&ini, 1)), texts{});
    EXPECT_EQ(ini_true_num(&ini, 1), -1);
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
    EXPECT_EQ(ini_true(&ini, "missing"), -1);
    EXPECT_EQ(ini_true(&ini, nullptr), -1);
}

TEST_F(IniTrue, UsesAssociations) {
    add("templates", "yes");
    EXPECT_EQ(ini_true(&ini, "workarea"), 1);
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

TEST_F(IniMessages, APercentInAValueReachesTheReceiverAsItIs) {
    ini_add(&ini, "cgi_name", "100% %s %n");
    EXPECT_EQ(debug_messages, texts{"INI: ini settings changed {cgi_name=100% %s %n}"});
}

TEST_F(IniMessages, AreCutAt1023Characters) {
    ini_emsg(&ini, "%s", std::string(5000, 'v').c_str());
    EXPECT_EQ(errors, texts{"INI: " + std::string(1018, 'v')});
}
