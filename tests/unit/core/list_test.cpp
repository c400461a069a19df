#include "core/list.h"

#include "support/console_capture.h"
#include "support/rows.h"
#include "unit/failing_memory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

char a[] = "a";
char b[] = "b";
char c[] = "c";
char x[] = "x";

std::string text_of(void *item) {
    return item != nullptr ? static_cast<char *>(item) : "-";
}

std::vector<std::string> messages;

int keep_message(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    bounded_text<4096> message;
    message.vformat(format, arguments);
    va_end(arguments);
    messages.emplace_back(message.c_str());
    return 1;
}

// Every test begins with the list a, b, c, its cursor past the end.
class ListOfThree : public testing::Test {
  protected:
    ListOfThree() {
        messages.clear();
        list_init(&list, keep_message);
        list_add(&list, a);
        list_add(&list, b);
        list_add(&list, c);
    }

    ~ListOfThree() override { list_clear(&list); }

    // The items from first to last, after a look at the header and at the links back.
    std::string items() {
        std::string text;
        int count = 0;
        const list_struct *before = nullptr;
        for (const list_struct *node = list.first; node != nullptr; node = node->post) {
            EXPECT_EQ(node->pre, before);
            before = node;
            text += text_of(node->item);
            count++;
        }
        EXPECT_EQ(list.last, before);
        EXPECT_EQ(list.num, count);
        return text;
    }

    // The item under the cursor.
    std::string at_cursor() const {
        return list.current != nullptr ? text_of(list.current->item) : "-";
    }

    // Makes a call, "NAME" or "NAME:ARGUMENT"; gives its result as a text.
    std::string call(const std::string &text) {
        const std::string name = text.substr(0, text.find(':'));
        const std::string argument = text.substr(std::min(name.size() + 1, text.size()));
        const int number = name.starts_with("add") ? 0 : std::atoi(argument.c_str());
        void *item = argument == "x" ? x : nullptr;
        const bool has_number = !argument.empty();
        const std::map<std::string, std::function<int()>> with_status = {
            {"start", [&] { return list_start(&list); }},
            {"last", [&] { return list_last(&list); }},
            {"forward",
             [&] { return has_number ? list_forward_num(&list, number) : list_forward(&list); }},
            {"back", [&] { return has_number ? list_back_num(&list, number) : list_back(&list); }},
            {"add", [&] { return list_add(&list, item); }},
            {"add_current", [&] { return list_add_current(&list, item); }},
            {"clear", [&] { return list_clear(&list); }},
            {"num", [&] { return list_num(&list); }},
        };
        const std::map<std::string, std::function<void *()>> with_item = {
            {"get", [&] { return list_get(&list); }},
            {"get_back", [&] { return list_get_back(&list); }},
            {"get_num", [&] { return list_get_num(&list, number); }},
            {"remove", [&] { return list_remove(&list); }},
            {"remove_num", [&] { return list_remove_num(&list, number); }},
            {"remove_next", [&] { return list_remove_next(&list); }},
        };
        return with_status.contains(name) ? std::to_string(with_status.at(name)())
                                          : text_of(with_item.at(name)());
    }

    // The test of a row of the table below.
    template <typename Row>
    void check(const Row &row) {
        std::istringstream calls(row.calls);
        std::string results;
        for (std::string text; calls >> text;) {
            results += (results.empty() ? "" : " ") + call(text);
        }
        EXPECT_EQ(results, row.results);
        EXPECT_EQ(items(), row.items);
        EXPECT_EQ(at_cursor(), row.cursor);
    }

    LINK_LIST list;
};

using ListInit = ListOfThree;
using ListIsLast = ListOfThree;
using ListIsFirst = ListOfThree;
using ListAdd = ListOfThree;
using ListAddCurrent = ListOfThree;
using ListClearDealloc = ListOfThree;
using ListList = ListOfThree;
using ListEmsg = ListOfThree;

class FreshList : public testing::Test {
  protected:
    FreshList() { list_init(&list, nullptr); }

    LINK_LIST list;
};

// --- Steps through the list ---

// Calls, beginning with the list a, b, c and the cursor past its end, and what each gives; then the
// items and the one under the cursor. Behind a ":" stands an argument, "-" is null.
struct list_steps {
    const char *name;
    const char *calls;
    const char *results;
    const char *items;
    const char *cursor;
};

// clang-format off
const std::vector<list_steps> steps = {
    {"ListStart.PutsTheCursorOnTheFirstNode", "start", "1", "abc", "a"},
    {"ListLast.PutsTheCursorPastTheEndFromWhereBackReachesTheLastNode",
     "start last back", "1 1 1", "abc", "c"},
    {"ListLast.IsPastTheEnd", "start last", "1 1", "abc", "-"},
    {"ListForward.FromPastTheEndGoesToTheFirstNode", "last forward", "1 1", "abc", "a"},
    {"ListForward.StepsOn", "start forward", "1 1", "abc", "b"},
    {"ListForward.FromTheLastNodeGoesPastTheEndAndGivesMinusOne",
     "start forward forward forward", "1 1 1 -1", "abc", "-"},
    {"ListBack.FromTheFirstNodeGoesPastTheEndAndGivesMinusOne", "start back", "1 -1", "abc", "-"},
    {"ListBack.StepsBack", "start back back back", "1 -1 1 1", "abc", "b"},
    {"ListForwardNum.StepsAsOften", "start forward:2", "1 1", "abc", "c"},
    {"ListForwardNum.StopsAtTheFirstStepThatGivesMinusOne",
     "start forward:2 forward:5", "1 1 -1", "abc", "-"},
    {"ListForwardNum.NoStepsGiveOneAndLeaveTheCursor",
     "start forward:0 forward:-3", "1 1 1", "abc", "a"},
    {"ListBackNum.StepsAsOften", "last back:3", "1 1", "abc", "a"},
    {"ListBackNum.StopsAtTheFirstStepThatGivesMinusOne",
     "last back:3 back:2", "1 1 -1", "abc", "-"},
    {"ListBackNum.NoStepsGiveOneAndLeaveTheCursor", "start back:0 back:-1", "1 1 1", "abc", "a"},
    {"ListAdd.AppendsAndLeavesTheCursor", "start forward add:x", "1 1 1", "abcx", "b"},
    {"ListAdd.PastTheEndTheCursorStaysThere", "last add:x", "1 1", "abcx", "-"},
    {"ListAdd.RefusesANullItem", "add:-", "0", "abc", "-"},
    {"ListAddCurrent.InsertsBeforeTheCursorWhichStays",
     "start forward add_current:x", "1 1 1", "axbc", "b"},
    {"ListAddCurrent.BeforeTheFirstNodeMakesANewFirst",
     "start add_current:x", "1 1", "xabc", "a"},
    {"ListAddCurrent.PastTheEndAppendsAndRefusesANullItem",
     "last add_current:x add_current:-", "1 1 0", "abcx", "-"},
    {"ListAddCurrent.OnANodeTakesANullItem", "start add_current:-", "1 1", "-abc", "a"},
    {"ListAddCurrent.WhatWasInsertedIsWhatRemoveTakesNext",
     "start get add_current:x remove", "1 a 1 x", "abc", "b"},
    {"ListGet.GivesEachItemThenNull", "start get get get get get", "1 a b c - -", "abc", "-"},
    {"ListGetBack.GivesTheItemUnderTheCursorAndStepsBack",
     "last get_back back get_back get_back get_back get_back", "1 - 1 c b a -", "abc", "-"},
    {"ListGetNum.CountsFromZeroAndGivesNullBehindTheLast",
     "get_num:0 get_num:2 get_num:3 get_num:4 get_num:1000", "a c - - -", "abc", "-"},
    {"ListGetNum.NegativePositionGivesTheFirstItem", "get_num:-1", "a", "abc", "b"},
    {"ListGetNum.LeavesTheCursorBehindTheItem", "get_num:1", "b", "abc", "c"},
    {"ListRemove.TakesTheItemThatGetGaveLast", "start get get remove get", "1 a b b c", "ac", "-"},
    {"ListRemove.RightAfterStartTakesTheLastItem", "start remove", "1 c", "ab", "-"},
    {"ListRemove.PastTheEndTakesTheLastItem",
     "last remove remove remove remove", "1 c b a -", "", "-"},
    {"ListRemove.OfTheFirstNodeMovesFirst", "start get remove", "1 a a", "bc", "b"},
    {"ListRemoveNum.TakesTheItemAtThePosition", "remove_num:1 remove_num:0", "b a", "c", "c"},
    {"ListRemoveNum.AnyPositionOutsideTakesTheLastItem",
     "remove_num:3 remove_num:-1 add:x remove_num:2147483647", "c b 1 x", "a", "-"},
    {"ListRemoveNext.TakesTheItemUnderTheCursor",
     "start forward remove_next start", "1 1 b 1", "ac", "a"},
    {"ListRemoveNext.PastTheEndTakesTheLastItem", "last remove_next start", "1 c 1", "ab", "a"},
    {"ListClear.LeavesTheItemsAndAListThatCanBeFilledAgain",
     "start get clear add:x", "1 a 1 1", "x", "-"},
    {"ListClear.ANullItemDoesNotKeepTheHeaderFromBeingEmptied",
     "start forward add_current:- clear", "1 1 1 1", "", "-"},
    {"ListNum.CountsAndLeavesTheCursor", "start num", "1 3", "abc", "a"},
};
// clang-format on

const int registered = register_rows<ListOfThree>(steps);

} // namespace

TEST_F(FreshList, HasNoItems) {
    EXPECT_EQ(list_get(&list), nullptr);
    EXPECT_EQ(list_get_back(&list), nullptr);
    EXPECT_EQ(list_get_num(&list, 0), nullptr);
    EXPECT_EQ(list_num(&list), 0);
    EXPECT_EQ(list_remove(&list), nullptr);
    EXPECT_EQ(list_remove_num(&list, 0), nullptr);
    EXPECT_EQ(list_remove_next(&list), nullptr);
    EXPECT_EQ(list_num(&list), 0);
}

TEST_F(FreshList, HasNoFirstOrLastItem) {
    EXPECT_EQ(list_is_first(&list, a), 0);
    EXPECT_EQ(list_is_last(&list, a), 0);
    EXPECT_EQ(list_is_first(&list, nullptr), 0);
    EXPECT_EQ(list_is_last(&list, nullptr), 0);
}

TEST_F(FreshList, StepsNowhere) {
    EXPECT_EQ(list_start(&list), 1);
    EXPECT_EQ(list_last(&list), 1);
    EXPECT_EQ(list_forward(&list), -1);
    EXPECT_EQ(list_back(&list), -1);
    EXPECT_EQ(list_forward_num(&list, 1), -1);
    EXPECT_EQ(list_back_num(&list, 1), -1);
    EXPECT_EQ(list_forward_num(&list, 0), 1);
    EXPECT_EQ(list_back_num(&list, 0), 1);
}

TEST_F(FreshList, ClearsToAnEmptyList) {
    EXPECT_EQ(list_clear(&list), 1);
    EXPECT_EQ(list_clear_dealloc(&list), 1);
    EXPECT_EQ(list.init_value, 32000);
}

TEST_F(ListInit, EmptiesTheHeaderAndKeepsTheReceiver) {
    LINK_LIST other;
    other.num = 7;
    other.first = other.current = other.last = list.first;
    EXPECT_EQ(list_init(&other, keep_message), 1);
    EXPECT_EQ(other.init_value, 32000);
    EXPECT_EQ(other.num, 0);
    EXPECT_EQ(other.emsg, &keep_message);
    EXPECT_EQ(other.first, nullptr);
    EXPECT_EQ(other.current, nullptr);
    EXPECT_EQ(other.last, nullptr);
}

TEST(List, NullListGivesNothing) {
    EXPECT_EQ(list_init(nullptr, nullptr), 0);
    EXPECT_EQ(list_start(nullptr), 0);
    EXPECT_EQ(list_last(nullptr), 0);
    EXPECT_EQ(list_is_last(nullptr, a), 0);
    EXPECT_EQ(list_is_first(nullptr, a), 0);
    EXPECT_EQ(list_forward(nullptr), 0);
    EXPECT_EQ(list_back(nullptr), 0);
    EXPECT_EQ(list_forward_num(nullptr, 1), 0);
    EXPECT_EQ(list_back_num(nullptr, 1), 0);
    EXPECT_EQ(list_add(nullptr, a), 0);
    EXPECT_EQ(list_add_current(nullptr, a), 0);
    EXPECT_EQ(list_get(nullptr), nullptr);
    EXPECT_EQ(list_get_back(nullptr), nullptr);
    EXPECT_EQ(list_get_num(nullptr, 0), nullptr);
    EXPECT_EQ(list_remove(nullptr), nullptr);
    EXPECT_EQ(list_remove_num(nullptr, 0), nullptr);
    EXPECT_EQ(list_remove_next(nullptr), nullptr);
    EXPECT_EQ(list_clear(nullptr), 0);
    EXPECT_EQ(list_clear_dealloc(nullptr), 0);
    EXPECT_EQ(list_num(nullptr), 0);
    EXPECT_EQ(list_list(nullptr, nullptr), 0);
    EXPECT_EQ(list_emsg(nullptr, "text"), 0);
}

TEST(List, UseBeforeInitEndsTheProgramWithStatus1) {
    const std::vector<std::function<void(LINK_LIST *)>> uses = {
        [](LINK_LIST *list) { list_start(list); },
        [](LINK_LIST *list) { list_last(list); },
        [](LINK_LIST *list) { list_is_last(list, a); },
        [](LINK_LIST *list) { list_is_first(list, a); },
        [](LINK_LIST *list) { list_forward(list); },
        [](LINK_LIST *list) { list_back(list); },
        [](LINK_LIST *list) { list_forward_num(list, 0); },
        [](LINK_LIST *list) { list_back_num(list, 0); },
        [](LINK_LIST *list) { list_add(list, a); },
        [](LINK_LIST *list) { list_add_current(list, a); },
        [](LINK_LIST *list) { list_get(list); },
        [](LINK_LIST *list) { list_get_back(list); },
        [](LINK_LIST *list) { list_get_num(list, 0); },
        [](LINK_LIST *list) { list_remove(list); },
        [](LINK_LIST *list) { list_remove_num(list, 0); },
        [](LINK_LIST *list) { list_remove_next(list); },
        [](LINK_LIST *list) { list_clear(list); },
        [](LINK_LIST *list) { list_clear_dealloc(list); },
        [](LINK_LIST *list) { list_num(list); },
        [](LINK_LIST *list) {
            LINK_LIST ready;
            list_init(&ready, nullptr);
            list_list(&ready, list);
        },
        [](LINK_LIST *list) { list_emsg(list, "text"); },
    };
    for (const auto &use : uses) {
        LINK_LIST raw;
        EXPECT_EXIT((errno = ENOENT, use(&raw)), testing::ExitedWithCode(1),
                    testing::Eq(std::string("Error Using Link List before Init\n: "
                                            "No such file or directory\n")));
        raw.init_value = 31999;
        EXPECT_EXIT(use(&raw), testing::ExitedWithCode(1), "before Init");
    }
}

TEST_F(ListIsLast, ComparesTheItemNotItsText) {
    char other_c[] = "c";
    EXPECT_NE(list_is_last(&list, c), 0);
    EXPECT_EQ(list_is_last(&list, a), 0);
    EXPECT_EQ(list_is_last(&list, other_c), 0);
}

TEST_F(ListIsFirst, ComparesTheItemNotItsText) {
    char other_a[] = "a";
    EXPECT_NE(list_is_first(&list, a), 0);
    EXPECT_EQ(list_is_first(&list, c), 0);
    EXPECT_EQ(list_is_first(&list, other_a), 0);
}

TEST_F(ListAdd, WithoutMemoryReportsTheErrorAndChangesNothing) {
    const failing_memory none(memory_of::nodes, 0);
    EXPECT_EQ(list_add(&list, x), 0);
    EXPECT_EQ(items(), "abc");
    EXPECT_EQ(messages, std::vector<std::string>{"LIST: Error - add item to list failed\n"});
}

TEST_F(ListAddCurrent, WithoutMemoryReportsTheErrorAndChangesNothing) {
    list_start(&list);
    list_forward(&list);
    const failing_memory none(memory_of::nodes, 0);
    EXPECT_EQ(list_add_current(&list, x), 0);
    EXPECT_EQ(items(), "abc");
    EXPECT_EQ(at_cursor(), "b");
    EXPECT_EQ(messages, std::vector<std::string>{"LIST: Error - add item to list failed\n"});
}

// Under the leak sanitizer an item that is not freed fails the test.
TEST_F(ListClearDealloc, FreesEveryItem) {
    list_clear(&list);
    for (int item = 0; item < 3; item++) {
        list_add(&list, ::strdup("item"));
    }
    list_start(&list);
    list_get(&list);
    EXPECT_EQ(list_clear_dealloc(&list), 1);
    EXPECT_EQ(items(), "");
    EXPECT_EQ(list.init_value, 32000);
}

TEST_F(ListClearDealloc, StopsAtANullItemAndEmptiesTheHeaderAllTheSame) {
    list_clear(&list);
    char stays[] = "stays";
    list_add(&list, ::strdup("freed"));
    list_start(&list);
    list_add_current(&list, nullptr);
    list_start(&list);
    list_add_current(&list, stays);
    EXPECT_EQ(list_clear_dealloc(&list), 1);
    EXPECT_EQ(items(), "");
    EXPECT_STREQ(stays, "stays");
}

TEST_F(ListList, AppendsTheSamePointersAndGivesTheNewNumber) {
    LINK_LIST other;
    list_init(&other, nullptr);
    list_add(&other, x);
    list_add(&other, a);
    EXPECT_EQ(list_list(&list, &other), 5);
    EXPECT_EQ(items(), "abcxa");
    EXPECT_EQ(list.last->item, a);
    EXPECT_EQ(list_num(&other), 2);
    list_clear(&other);
}

TEST_F(ListList, AnAppendThatFailsGivesZero) {
    LINK_LIST other;
    list_init(&other, nullptr);
    list_add(&other, x);
    list_add(&other, x);
    {
        const failing_memory one(memory_of::nodes, 1);
        EXPECT_EQ(list_list(&list, &other), 0);
    }
    EXPECT_EQ(items(), "abcx");
    list_clear(&other);
}

TEST_F(ListList, AnEmptyListAddsNothing) {
    LINK_LIST other;
    list_init(&other, nullptr);
    EXPECT_EQ(list_list(&list, &other), 3);
    EXPECT_EQ(list_list(&other, &other), 0);
}

TEST_F(ListEmsg, BeginsEveryMessageWithList) {
    EXPECT_EQ(list_emsg(&list, "item %d of %s", 3, "b"), 1);
    EXPECT_EQ(messages, std::vector<std::string>{"LIST: item 3 of b"});
}

TEST_F(ListEmsg, WithoutAReceiverIsSilent) {
    list.emsg = nullptr;
    EXPECT_EQ(list_emsg(&list, "text"), 1);
    EXPECT_TRUE(messages.empty());
}

TEST_F(ListEmsg, APercentInAnArgumentReachesTheReceiverAsItIs) {
    list_emsg(&list, "%s", "100% %s %n");
    EXPECT_EQ(messages, std::vector<std::string>{"LIST: 100% %s %n"});
}

TEST_F(ListEmsg, AMessageIsCutAt1023Characters) {
    const std::string text(3000, 'm');
    list_emsg(&list, "%s", text.c_str());
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages.front(), "LIST: " + std::string(1017, 'm'));
}
