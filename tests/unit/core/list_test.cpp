#include "core/list.h"

#include "support/console_capture.h"
#include "unit/failing_memory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

char a[] = "a";
char b[] = "b";
char c[] = "c";
char x[] = "x";

std::string text_of(void *item) {
    return item != nullptr ? static_cast<char *>(item) : "(null)";
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
        return list.current != nullptr ? text_of(list.current->item) : "(end)";
    }

    void *get() { return list_get(&list); }

    LINK_LIST list;
};

using ListInit = ListOfThree;
using ListStart = ListOfThree;
using ListLast = ListOfThree;
using ListIsLast = ListOfThree;
using ListIsFirst = ListOfThree;
using ListForward = ListOfThree;
using ListBack = ListOfThree;
using ListForwardNum = ListOfThree;
using ListBackNum = ListOfThree;
using ListAdd = ListOfThree;
using ListAddCurrent = ListOfThree;
using ListGet = ListOfThree;
using ListGetBack = ListOfThree;
using ListGetNum = ListOfThree;
using ListRemove = ListOfThree;
using ListRemoveNum = ListOfThree;
using ListRemoveNext = ListOfThree;
using ListClear = ListOfThree;
using ListClearDealloc = ListOfThree;
using ListNum = ListOfThree;
using ListList = ListOfThree;
using ListEmsg = ListOfThree;

class FreshList : public testing::Test {
  protected:
    FreshList() { list_init(&list, nullptr); }

    LINK_LIST list;
};

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

TEST_F(ListStart, PutsTheCursorOnTheFirstNode) {
    EXPECT_EQ(list_start(&list), 1);
    EXPECT_EQ(at_cursor(), "a");
}

TEST_F(ListLast, PutsTheCursorPastTheEndFromWhereBackReachesTheLastNode) {
    list_start(&list);
    EXPECT_EQ(list_last(&list), 1);
    EXPECT_EQ(at_cursor(), "(end)");
    EXPECT_EQ(list_back(&list), 1);
    EXPECT_EQ(at_cursor(), "c");
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

TEST_F(ListForward, FromPastTheEndGoesToTheFirstNode) {
    list_last(&list);
    EXPECT_EQ(list_forward(&list), 1);
    EXPECT_EQ(at_cursor(), "a");
}

TEST_F(ListForward, FromTheLastNodeGoesPastTheEndAndGivesMinusOne) {
    list_start(&list);
    EXPECT_EQ(list_forward(&list), 1);
    EXPECT_EQ(at_cursor(), "b");
    EXPECT_EQ(list_forward(&list), 1);
    EXPECT_EQ(list_forward(&list), -1);
    EXPECT_EQ(at_cursor(), "(end)");
}

TEST_F(ListBack, FromTheFirstNodeGoesPastTheEndAndGivesMinusOne) {
    list_start(&list);
    EXPECT_EQ(list_back(&list), -1);
    EXPECT_EQ(at_cursor(), "(end)");
    EXPECT_EQ(list_back(&list), 1);
    EXPECT_EQ(at_cursor(), "c");
    EXPECT_EQ(list_back(&list), 1);
    EXPECT_EQ(at_cursor(), "b");
}

TEST_F(ListForwardNum, StopsAtTheFirstStepThatGivesMinusOne) {
    list_start(&list);
    EXPECT_EQ(list_forward_num(&list, 2), 1);
    EXPECT_EQ(at_cursor(), "c");
    EXPECT_EQ(list_forward_num(&list, 5), -1);
    EXPECT_EQ(at_cursor(), "(end)");
}

TEST_F(ListForwardNum, NoStepsGiveOneAndLeaveTheCursor) {
    list_start(&list);
    EXPECT_EQ(list_forward_num(&list, 0), 1);
    EXPECT_EQ(list_forward_num(&list, -3), 1);
    EXPECT_EQ(at_cursor(), "a");
}

TEST_F(ListBackNum, StopsAtTheFirstStepThatGivesMinusOne) {
    list_last(&list);
    EXPECT_EQ(list_back_num(&list, 3), 1);
    EXPECT_EQ(at_cursor(), "a");
    EXPECT_EQ(list_back_num(&list, 2), -1);
    EXPECT_EQ(at_cursor(), "(end)");
}

TEST_F(ListBackNum, NoStepsGiveOneAndLeaveTheCursor) {
    list_start(&list);
    EXPECT_EQ(list_back_num(&list, 0), 1);
    EXPECT_EQ(list_back_num(&list, -1), 1);
    EXPECT_EQ(at_cursor(), "a");
}

TEST_F(ListAdd, AppendsAndLeavesTheCursor) {
    list_start(&list);
    list_forward(&list);
    EXPECT_EQ(list_add(&list, x), 1);
    EXPECT_EQ(items(), "abcx");
    EXPECT_EQ(at_cursor(), "b");
}

TEST_F(ListAdd, PastTheEndTheCursorStaysThere) {
    list_last(&list);
    list_add(&list, x);
    EXPECT_EQ(at_cursor(), "(end)");
}

TEST_F(ListAdd, RefusesANullItem) {
    EXPECT_EQ(list_add(&list, nullptr), 0);
    EXPECT_EQ(items(), "abc");
    EXPECT_TRUE(messages.empty());
}

TEST_F(ListAdd, WithoutMemoryReportsTheErrorAndChangesNothing) {
    const failing_memory none(memory_of::nodes, 0);
    EXPECT_EQ(list_add(&list, x), 0);
    EXPECT_EQ(items(), "abc");
    EXPECT_EQ(messages, std::vector<std::string>{"LIST: Error - add item to list failed\n"});
}

TEST_F(ListAddCurrent, InsertsBeforeTheCursorWhichStays) {
    list_start(&list);
    list_forward(&list);
    EXPECT_EQ(list_add_current(&list, x), 1);
    EXPECT_EQ(items(), "axbc");
    EXPECT_EQ(text_of(get()), "b");
}

TEST_F(ListAddCurrent, BeforeTheFirstNodeMakesANewFirst) {
    list_start(&list);
    EXPECT_EQ(list_add_current(&list, x), 1);
    EXPECT_EQ(items(), "xabc");
    EXPECT_EQ(at_cursor(), "a");
}

TEST_F(ListAddCurrent, PastTheEndAppendsAndRefusesANullItem) {
    list_last(&list);
    EXPECT_EQ(list_add_current(&list, x), 1);
    EXPECT_EQ(list_add_current(&list, nullptr), 0);
    EXPECT_EQ(items(), "abcx");
    EXPECT_EQ(at_cursor(), "(end)");
}

TEST_F(ListAddCurrent, OnANodeTakesANullItem) {
    list_start(&list);
    EXPECT_EQ(list_add_current(&list, nullptr), 1);
    EXPECT_EQ(items(), "(null)abc");
}

TEST_F(ListAddCurrent, WhatWasInsertedIsWhatRemoveTakesNext) {
    list_start(&list);
    get();
    list_add_current(&list, x);
    EXPECT_EQ(list_remove(&list), x);
    EXPECT_EQ(items(), "abc");
    EXPECT_EQ(at_cursor(), "b");
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

TEST_F(ListGet, GivesEachItemThenNull) {
    list_start(&list);
    EXPECT_EQ(get(), a);
    EXPECT_EQ(get(), b);
    EXPECT_EQ(get(), c);
    EXPECT_EQ(get(), nullptr);
    EXPECT_EQ(get(), nullptr);
}

TEST_F(ListGetBack, GivesTheItemUnderTheCursorAndStepsBack) {
    list_last(&list);
    EXPECT_EQ(list_get_back(&list), nullptr);
    list_back(&list);
    EXPECT_EQ(list_get_back(&list), c);
    EXPECT_EQ(list_get_back(&list), b);
    EXPECT_EQ(list_get_back(&list), a);
    EXPECT_EQ(list_get_back(&list), nullptr);
}

TEST_F(ListGetNum, CountsFromZeroAndGivesNullBehindTheLast) {
    EXPECT_EQ(list_get_num(&list, 0), a);
    EXPECT_EQ(list_get_num(&list, 2), c);
    EXPECT_EQ(list_get_num(&list, 3), nullptr);
    EXPECT_EQ(list_get_num(&list, 4), nullptr);
    EXPECT_EQ(list_get_num(&list, 1000), nullptr);
}

TEST_F(ListGetNum, NegativePositionGivesTheFirstItem) {
    EXPECT_EQ(list_get_num(&list, -1), a);
}

TEST_F(ListGetNum, LeavesTheCursorBehindTheItem) {
    list_get_num(&list, 1);
    EXPECT_EQ(at_cursor(), "c");
}

TEST_F(ListRemove, TakesTheItemThatGetGaveLast) {
    list_start(&list);
    EXPECT_EQ(get(), a);
    EXPECT_EQ(get(), b);
    EXPECT_EQ(list_remove(&list), b);
    EXPECT_EQ(items(), "ac");
    EXPECT_EQ(get(), c);
}

TEST_F(ListRemove, RightAfterStartTakesTheLastItem) {
    list_start(&list);
    EXPECT_EQ(list_remove(&list), c);
    EXPECT_EQ(items(), "ab");
    EXPECT_EQ(at_cursor(), "(end)");
}

TEST_F(ListRemove, PastTheEndTakesTheLastItem) {
    list_last(&list);
    EXPECT_EQ(list_remove(&list), c);
    EXPECT_EQ(list_remove(&list), b);
    EXPECT_EQ(list_remove(&list), a);
    EXPECT_EQ(list_remove(&list), nullptr);
    EXPECT_EQ(items(), "");
}

TEST_F(ListRemove, OfTheFirstNodeMovesFirst) {
    list_start(&list);
    get();
    EXPECT_EQ(list_remove(&list), a);
    EXPECT_EQ(items(), "bc");
    EXPECT_EQ(at_cursor(), "b");
}

TEST_F(ListRemoveNum, TakesTheItemAtThePosition) {
    EXPECT_EQ(list_remove_num(&list, 1), b);
    EXPECT_EQ(items(), "ac");
    EXPECT_EQ(list_remove_num(&list, 0), a);
    EXPECT_EQ(items(), "c");
}

TEST_F(ListRemoveNum, AnyPositionOutsideTakesTheLastItem) {
    EXPECT_EQ(list_remove_num(&list, 3), c);
    EXPECT_EQ(list_remove_num(&list, -1), b);
    list_add(&list, x);
    EXPECT_EQ(list_remove_num(&list, 2147483647), x);
    EXPECT_EQ(items(), "a");
}

TEST_F(ListRemoveNext, TakesTheItemUnderTheCursor) {
    list_start(&list);
    list_forward(&list);
    EXPECT_EQ(list_remove_next(&list), b);
    list_start(&list);
    EXPECT_EQ(items(), "ac");
}

TEST_F(ListRemoveNext, PastTheEndTakesTheLastItem) {
    list_last(&list);
    EXPECT_EQ(list_remove_next(&list), c);
    list_start(&list);
    EXPECT_EQ(items(), "ab");
}

TEST_F(ListClear, LeavesTheItemsAndAListThatCanBeFilledAgain) {
    list_start(&list);
    get();
    EXPECT_EQ(list_clear(&list), 1);
    EXPECT_EQ(items(), "");
    EXPECT_EQ(at_cursor(), "(end)");
    EXPECT_STREQ(a, "a");
    EXPECT_EQ(list_add(&list, x), 1);
    EXPECT_EQ(items(), "x");
}

TEST_F(ListClear, ANullItemDoesNotKeepTheHeaderFromBeingEmptied) {
    list_start(&list);
    list_forward(&list);
    list_add_current(&list, nullptr);
    EXPECT_EQ(list_clear(&list), 1);
    EXPECT_EQ(items(), "");
}

// Under the leak sanitizer an item that is not freed fails the test.
TEST_F(ListClearDealloc, FreesEveryItem) {
    list_clear(&list);
    for (int item = 0; item < 3; item++) {
        list_add(&list, ::strdup("item"));
    }
    list_start(&list);
    get();
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

TEST_F(ListNum, CountsAndLeavesTheCursor) {
    list_start(&list);
    EXPECT_EQ(list_num(&list), 3);
    EXPECT_EQ(at_cursor(), "a");
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
