#include "core/list.h"

#include "support/console_capture.h"
#include "support/rows.h"
#include "unit/call_rows.h"
#include "unit/failing_memory.h"
#include "unit/kept_messages.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace {

char a[] = "a";
char b[] = "b";
char c[] = "c";
char x[] = "x";
char other_c[] = "c";

std::string shown(void *item) {
    return item != nullptr ? static_cast<char *>(item) : "-";
}

std::string shown(int status) {
    return std::to_string(status);
}

// The argument of a call: an item's name, a number, or "-" for null.
struct call_argument {
    std::string text;

    operator void *() const {
        const std::map<std::string, char *> items = {
            {"a", a}, {"c", c}, {"x", x}, {"other_c", other_c}, {"-", nullptr}};
        return items.at(text);
    }
    operator int() const { return std::atoi(text.c_str()); }
};

// clang-format off
const std::map<std::string, std::function<std::string(LINK_LIST *, call_argument)>> calls = {
    {"start", [](auto *list, auto) { return shown(list_start(list)); }},
    {"last", [](auto *list, auto) { return shown(list_last(list)); }},
    {"is_last", [](auto *list, auto item) { return shown(list_is_last(list, item)); }},
    {"is_first", [](auto *list, auto item) { return shown(list_is_first(list, item)); }},
    {"forward", [](auto *list, auto) { return shown(list_forward(list)); }},
    {"back", [](auto *list, auto) { return shown(list_back(list)); }},
    {"forward_num", [](auto *list, auto steps) { return shown(list_forward_num(list, steps)); }},
    {"back_num", [](auto *list, auto steps) { return shown(list_back_num(list, steps)); }},
    {"add", [](auto *list, auto item) { return shown(list_add(list, item)); }},
    {"add_current", [](auto *list, auto item) { return shown(list_add_current(list, item)); }},
    {"get", [](auto *list, auto) { return shown(list_get(list)); }},
    {"get_back", [](auto *list, auto) { return shown(list_get_back(list)); }},
    {"get_num", [](auto *list, auto place) { return shown(list_get_num(list, place)); }},
    {"remove", [](auto *list, auto) { return shown(list_remove(list)); }},
    {"remove_num", [](auto *list, auto place) { return shown(list_remove_num(list, place)); }},
    {"remove_next", [](auto *list, auto) { return shown(list_remove_next(list)); }},
    {"clear", [](auto *list, auto) { return shown(list_clear(list)); }},
    {"clear_dealloc", [](auto *list, auto) { return shown(list_clear_dealloc(list)); }},
    {"num", [](auto *list, auto) { return shown(list_num(list)); }},
    {"list", [](auto *list, auto) { LINK_LIST other; list_init(&other, nullptr);
                                    return shown(list_list(list, &other)); }},
    {"emsg", [](auto *list, auto) { return shown(list_emsg(list, "text")); }},
};
// clang-format on

std::vector<std::string> messages;

// Every test begins with the list a, b, c, its cursor past the end.
class ListOfThree : public testing::Test {
  protected:
    ListOfThree() {
        messages.clear();
        list_init(&list, keep_in<messages>);
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
            text += shown(node->item);
            count++;
        }
        EXPECT_EQ(list.init_value, 32000);
        EXPECT_EQ(list.last, before);
        EXPECT_EQ(list.num, count);
        return text;
    }

    // The item under the cursor.
    std::string at_cursor() const {
        return list.current != nullptr ? shown(list.current->item) : "-";
    }

    // The test of a row of the table below.
    template <typename Row>
    void check(const Row &row) {
        const std::string results = results_of(row.calls, [&](const std::string &call) {
            const std::string name = call.substr(0, call.find(' '));
            return calls.at(name)(&list, {call.substr(std::min(name.size() + 1, call.size()))});
        });
        EXPECT_EQ(results, row.results);
        EXPECT_EQ(items(), row.items);
        EXPECT_EQ(at_cursor(), row.cursor);
        EXPECT_EQ(messages, row.messages);
    }

    LINK_LIST list;
};

class FreshList : public ListOfThree {
  protected:
    FreshList() {
        list_clear(&list);
        list_init(&list, nullptr);
    }
};

using ListInit = ListOfThree;
using ListClearDealloc = ListOfThree;
using ListList = ListOfThree;
using ListEmsg = ListOfThree;

// --- Steps through the list ---

// Calls, beginning with the list a, b, c and the cursor past its end, and what each gives; then the
// items, the one under the cursor, and the messages. "-" is null.
struct list_steps {
    const char *name;
    const char *calls;
    const char *results;
    const char *items;
    const char *cursor;
    std::vector<std::string> messages = {};
};

// clang-format off
const std::vector<list_steps> steps = {
    {"ListStart.PutsTheCursorOnTheFirstNode", "start", "1", "abc", "a"},
    {"ListLast.FromThereBackReachesTheLastNode", "start; last; back", "1 1 1", "abc", "c"},
    {"ListLast.IsPastTheEnd", "start; last", "1 1", "abc", "-"},
    {"ListForward.FromPastTheEndGoesToTheFirstNode", "last; forward", "1 1", "abc", "a"},
    {"ListForward.StepsOn", "start; forward", "1 1", "abc", "b"},
    {"ListForward.PastTheLastNodeGivesMinusOne",
     "start; forward; forward; forward", "1 1 1 -1", "abc", "-"},
    {"ListBack.PastTheFirstNodeGivesMinusOne", "start; back", "1 -1", "abc", "-"},
    {"ListBack.StepsBack", "start; back; back; back", "1 -1 1 1", "abc", "b"},
    {"ListForwardNum.StepsAsOften", "start; forward_num 2", "1 1", "abc", "c"},
    {"ListForwardNum.StopsPastTheLastNode",
     "start; forward_num 2; forward_num 5", "1 1 -1", "abc", "-"},
    {"ListForwardNum.NoStepsGiveOneAndLeaveTheCursor",
     "start; forward_num 0; forward_num -3", "1 1 1", "abc", "a"},
    {"ListBackNum.StepsAsOften", "last; back_num 3", "1 1", "abc", "a"},
    {"ListBackNum.StopsPastTheFirstNode", "last; back_num 3; back_num 2", "1 1 -1", "abc", "-"},
    {"ListBackNum.NoStepsGiveOneAndLeaveTheCursor",
     "start; back_num 0; back_num -1", "1 1 1", "abc", "a"},
    {"ListAdd.AppendsAndLeavesTheCursor", "start; forward; add x", "1 1 1", "abcx", "b"},
    {"ListAdd.PastTheEndTheCursorStaysThere", "last; add x", "1 1", "abcx", "-"},
    {"ListAdd.WithoutMemoryChangesNothing",
     "only nodes 0; add x", "0", "abc", "-", {"LIST: Error - add item to list failed\n"}},
    {"ListAdd.RefusesANullItem", "add -", "0", "abc", "-"},
    {"ListAddCurrent.InsertsBeforeTheCursorWhichStays",
     "start; forward; add_current x", "1 1 1", "axbc", "b"},
    {"ListAddCurrent.WithoutMemoryChangesNothing",
     "start; forward; only nodes 0; add_current x", "1 1 0", "abc", "b",
     {"LIST: Error - add item to list failed\n"}},
    {"ListAddCurrent.BeforeTheFirstNodeMakesANewFirst", "start; add_current x", "1 1", "xabc", "a"},
    {"ListAddCurrent.PastTheEndAppendsAndRefusesANullItem",
     "last; add_current x; add_current -", "1 1 0", "abcx", "-"},
    {"ListAddCurrent.OnANodeTakesANullItem", "start; add_current -", "1 1", "-abc", "a"},
    {"ListAddCurrent.RemoveTakesTheNewItemNext",
     "start; get; add_current x; remove", "1 a 1 x", "abc", "b"},
    {"ListGet.GivesEachItemThenNull", "start; get; get; get; get; get", "1 a b c - -", "abc", "-"},
    {"ListGetBack.GivesEachItemFromTheLast",
     "last; get_back; back; get_back; get_back; get_back; get_back", "1 - 1 c b a -", "abc", "-"},
    {"ListGetNum.CountsFromZeroAndGivesNullBehindTheLast",
     "get_num 0; get_num 2; get_num 3; get_num 4; get_num 1000", "a c - - -", "abc", "-"},
    {"ListGetNum.NegativePositionGivesTheFirstItem", "get_num -1", "a", "abc", "b"},
    {"ListGetNum.LeavesTheCursorBehindTheItem", "get_num 1", "b", "abc", "c"},
    {"ListRemove.TakesTheItemThatGetGaveLast",
     "start; get; get; remove; get", "1 a b b c", "ac", "-"},
    {"ListRemove.RightAfterStartTakesTheLastItem", "start; remove", "1 c", "ab", "-"},
    {"ListRemove.PastTheEndTakesTheLastItem",
     "last; remove; remove; remove; remove", "1 c b a -", "", "-"},
    {"ListRemove.OfTheFirstNodeMovesFirst", "start; get; remove", "1 a a", "bc", "b"},
    {"ListRemoveNum.TakesTheItemAtThePosition", "remove_num 1; remove_num 0", "b a", "c", "c"},
    {"ListRemoveNum.AnyPositionOutsideTakesTheLastItem",
     "remove_num 3; remove_num -1; add x; remove_num 2147483647", "c b 1 x", "a", "-"},
    {"ListRemoveNext.TakesTheItemUnderTheCursor",
     "start; forward; remove_next; start", "1 1 b 1", "ac", "a"},
    {"ListRemoveNext.PastTheEndTakesTheLastItem", "last; remove_next; start", "1 c 1", "ab", "a"},
    {"ListClear.LeavesAListThatCanBeFilledAgain", "start; get; clear; add x", "1 a 1 1", "x", "-"},
    {"ListClear.AlsoWithANullItem", "start; forward; add_current -; clear", "1 1 1 1", "", "-"},
    {"ListNum.CountsAndLeavesTheCursor", "start; num", "1 3", "abc", "a"},
    {"ListIsLast.ComparesTheItemNotItsText",
     "is_last c; is_last a; is_last other_c", "1 0 0", "abc", "-"},
    {"ListIsFirst.ComparesTheItemNotItsText",
     "is_first a; is_first c; remove_num 0; remove_num 0; is_first c; is_first other_c",
     "1 0 a b 1 0", "c", "c"},
    {"ListList.AnEmptyListAddsNothing", "list", "3", "abc", "-"},
};
const std::vector<list_steps> steps_of_fresh_list = {
    {"FreshList.HasNoItems",
     "get; get_back; get_num 0; num; remove; remove_num 0; remove_next; num",
     "- - - 0 - - - 0", "", "-"},
    {"FreshList.HasNoFirstOrLastItem",
     "is_first a; is_last a; is_first -; is_last -", "0 0 0 0", "", "-"},
    {"FreshList.StepsNowhere",
     "start; last; forward; back; forward_num 1; back_num 1; forward_num 0; back_num 0",
     "1 1 -1 -1 -1 -1 1 1", "", "-"},
    {"FreshList.ClearsToAnEmptyList", "clear; clear_dealloc", "1 1", "", "-"},
    {"FreshList.TakesNothingFromAnEmptyList", "list", "0", "", "-"},
};
// clang-format on

const int registered = register_rows<ListOfThree>(steps);
const int registered_too = register_rows<FreshList>(steps_of_fresh_list);

} // namespace

TEST_F(ListInit, EmptiesTheHeaderAndKeepsTheReceiver) {
    LINK_LIST other;
    other.num = 7;
    other.first = other.current = other.last = list.first;
    EXPECT_EQ(list_init(&other, keep_in<messages>), 1);
    EXPECT_EQ(other.init_value, 32000);
    EXPECT_EQ(other.num, 0);
    EXPECT_EQ(other.emsg, &keep_in<messages>);
    EXPECT_EQ(other.first, nullptr);
    EXPECT_EQ(other.current, nullptr);
    EXPECT_EQ(other.last, nullptr);
}

TEST(List, NullListGivesNothing) {
    EXPECT_EQ(list_init(nullptr, nullptr), 0);
    EXPECT_EQ(list_list(nullptr, nullptr), 0);
    for (const auto &[name, call] : calls) {
        const bool gives_an_item = name.starts_with("get") || name.starts_with("remove");
        EXPECT_EQ(call(nullptr, {"a"}), gives_an_item ? "-" : "0") << name;
    }
}

TEST(List, UseBeforeInitEndsTheProgramWithStatus1) {
    for (const auto &[name, call] : calls) {
        LINK_LIST raw;
        EXPECT_EXIT((errno = ENOENT, call(&raw, {"a"})), testing::ExitedWithCode(1),
                    testing::Eq(std::string("Error Using Link List before Init\n: "
                                            "No such file or directory\n")))
            << name;
        raw.init_value = 31999;
        EXPECT_EXIT(call(&raw, {"a"}), testing::ExitedWithCode(1), "before Init") << name;
    }
}

TEST_F(ListList, FromAListBeforeInitEndsTheProgramToo) {
    LINK_LIST raw;
    EXPECT_EXIT(list_list(&list, &raw), testing::ExitedWithCode(1), "before Init");
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
