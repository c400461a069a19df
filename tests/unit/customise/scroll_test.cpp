#include "customise/scroll.h"

#include "customise/text_list.h"
#include "support/applet_model.h"
#include "support/asked_console.h"
#include "support/expected.h"
#include "support/rows.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"

#include <gtest/gtest.h>
#include <random>

namespace {

// The applet's record, cleared when it goes.
struct applet : SCROLLMSG {
    explicit applet(const texts &held_messages = {}, const texts &held_urls = {}) {
        EXPECT_EQ(scroll_init(this), 1);
        hold(held_messages, held_urls);
    }
    ~applet() { scroll_clear(this); }
    applet(const applet &) = delete;
    applet &operator=(const applet &) = delete;

    void hold(const texts &more_messages, const texts &more_urls) {
        for (const std::string &message : more_messages) {
            add_text(&messages, message.c_str());
        }
        for (const std::string &url : more_urls) {
            add_text(&urls, url.c_str());
        }
    }
};

// What the reader takes from a stored HTML.
applet_model read_back(const std::string &html) {
    custom_store store{{"set", "scrollmessage " + html}};
    applet data;
    EXPECT_EQ(scroll_load(&data, store.get()), 1);
    return model_of(&data);
}

applet_model read_backwards(const std::string &html) {
    applet_model model;
    model.read("scrollmessage " + html);
    return model;
}

const std::string tail =
    R"(<param name="3DFrame" value="1"><param name="Shadow" value="1">)"
    R"(<param name="Scrolldirection" value="1"><param name="ScrollDelay" value="250">)"
    R"(<param name="ScrollDelta" value="3"></applet>)";

const std::string sevens_511(511, '7');

// clang-format off
const std::vector<rule> readings = {
    {"ScrollLoad.ReadsAllThatIsStored", read_back,
     {{{R"(scrollmessage <applet code="Scrolltext.class" width = 75% height = 120>)"
        R"(<param name="scrollmessage0" value="Hello, world!">)"
        R"(<param name="scrollurl0" value="a.html">)"
        R"(<param name="scrollmessage1" value="Second">)"
        R"(<param name="scrollmessage2" value="Third">)"
        R"(<param name="scrollurl2" value="c.html">)" + tail},
       {.height = "120", .width = "75%", .messages = {"Hello, world!", "Second", "Third"},
        .urls = {"a.html", "", "c.html"}, .look_3d = 1, .look_shadow = 1, .direction = 1,
        .delay = 250, .delta = 3}}}},
    {"ScrollLoad.AFirstMessageWithoutUrlGetsAnEmptyOne", read_back,
     {{{R"(<param name="scrollmessage0" value="One">)"
        R"(<param name="scrollmessage1" value="Two"><param name="scrollurl1" value="b">)"},
       {.messages = {"One", "Two"}, .urls = {"", "b"}}}}},
    {"ScrollLoad.AMessageEndsAtItsFirstDoubleQuote", read_back,
     {{{R"(<param name="scrollmessage0" value="Say "hello" twice">)"},
       {.messages = {"Say "}, .urls = {""}}}}},
    {"ScrollLoad.AValueBeginsAtItsFirstLetterOrDigit", read_back,
     {{{R"(<param name="scrollmessage0" value="...(new) offers">)"},
       {.messages = {"new) offers"}, .urls = {""}}}}},
    {"ScrollLoad.NamesAreReadIgnoringCase", read_back,
     {{{R"(WIDTH=5 Height=6 <PARAM NAME="SCROLLMESSAGE0" X="y">)"},
       {.height = "6", .width = "5", .messages = {"y"}, .urls = {""}}}}},
    {"ScrollLoad.ANameIsTheWholeWordBeforeTheEqualsSign", read_back,
     {{{"maxwidth = 5 width2 = 6"}, {}}, {{"max-width ... = 5"}, {.width = "5"}}}},
    {"ScrollLoad.AMessageNameBeginsWithItsWordAUrlNameHoldsIt", read_back,
     {{{R"(name="myscrollmessage" v="no" name="scrollmessageX" v="yes" )"
        R"(name="thescrollurl9" v="link" name="xShadow" v="5")"},
       {.messages = {"yes"}, .urls = {"link"}}}}},
    {"ScrollLoad.AnEqualsSignInsideAMessageMakesAnAttributeToo", read_back,
     {{{R"(name="scrollmessage0" value="width = 12%")"},
       {.width = "12%", .messages = {"width = 12%"}, .urls = {""}}}}},
    {"ScrollLoad.AMessageIsReadUpTo510Characters", read_back,
     {{{"name=\"scrollmessage0\" value=\"" + std::string(600, 'x') + "\""},
       {.messages = {std::string(510, 'x')}, .urls = {""}}}}},
    {"ScrollLoad.ASizeIsReadUpTo511Characters", read_back,
     {{{"height = " + sevens_511 + "7%"}, {.height = sevens_511}},
      {{"height = " + sevens_511 + "%"}, {.height = sevens_511 + "%"}}}},
    {"ScrollLoad.WhatIsCutOffCountsForNothing", read_back,
     {{{"width"}, {}}, {{"width ="}, {}}, {{"width = "}, {}}, {{"name"}, {}}, {{"name="}, {}},
      {{"name=\""}, {}}, {{"name=\"scrollmessage0"}, {}},
      {{"name=\"scrollmessage0\" value"}, {}}, {{"name=\"scrollmessage0\" value="}, {}},
      {{"name=\"scrollmessage0\" value=\""}, {}}, {{"="}, {}}, {{"\""}, {}}, {{""}, {}},
      {{"name=\"scrollmessage0\" value=\"Hel"}, {.messages = {"Hel"}, .urls = {""}}}}},
};
// clang-format on

const int registered = register_rows(readings);

TEST(ScrollInit, SetsTheDefaults) {
    applet data;
    EXPECT_EQ(model_of(&data), applet_model());
}

TEST(ScrollClear, FreesTheTextsAndLeavesEmptyLists) {
    applet data({"one"}, {""});
    scroll_clear(&data);
    EXPECT_EQ(data.height + data.width, "");
    EXPECT_EQ(list_num(&data.messages) + list_num(&data.urls), 0);
}

TEST(ScrollLoad, WithoutAStoredAppletLeavesTheDefaults) {
    for (const char *value :
         {"logo a.gif", "scrollmessages width = 5", "Scrollmessage width = 5"}) {
        custom_store store{{"set", value}};
        applet data;
        EXPECT_EQ(scroll_load(&data, store.get()), 1);
        EXPECT_EQ(model_of(&data), applet_model()) << value;
    }
}

TEST(ScrollLoad, TakesTheFirstValueWhoseFirstWordIsScrollmessage) {
    custom_store store{{"set", "logo width = 1"},
                       {"set", " \tscrollmessage\twidth = 2"},
                       {"set", "scrollmessage width = 3"}};
    applet data;
    EXPECT_EQ(scroll_load(&data, store.get()), 1);
    EXPECT_EQ(data.width, "2");
}

// A text made of the pieces that the reader looks at.
std::string hostile_text(std::mt19937 &random) {
    // clang-format off
    const std::vector<std::string> pieces = {
        "=", "==", "\"", " ", "name", "NAME=", "value=\"", "width", "height=", "7", "80%", "%", "x",
        "scrollmessage", "scrollurl", "3DFrame", "shadow\"", "scrolldelay\"", "<param ", "a b",
        "\xe9", "scrolldirection"};
    // clang-format on
    std::string text;
    for (std::size_t count = random() % 60; count > 0; count--) {
        text += pieces[random() % pieces.size()];
    }
    return text;
}

TEST(ScrollLoad, ReadsWhatReadingBackwardsGives) {
    std::mt19937 random(2);
    for (int round = 0; round < 5000; round++) {
        const std::string text = hostile_text(random);
        ASSERT_EQ(read_back(text), read_backwards(text)) << text;
    }
}

std::string repeated(std::string_view piece, std::size_t size) {
    std::string text;
    while (text.size() < size) {
        text += piece;
    }
    return text;
}

TEST(ScrollLoad, ReadsLongHostileValuesAsReadingBackwardsDoes) {
    constexpr std::size_t size = 8192;
    for (const char *piece : {"<param name=\"scrollmessage0\" value=\"one\">", "width=", "a=\"",
                              "name=\"scrollurl\"="}) {
        const std::string text = repeated(piece, size);
        EXPECT_EQ(read_back(text), read_backwards(text)) << piece;
    }
}

// A reader that looks at each character more than a few times would not come to an end.
TEST(ScrollLoad, TakesATimeLinearInTheLength) {
    constexpr std::size_t size = 1000000;
    const std::string equals(size, '=');
    const std::string word(size, 'w');
    const std::string names = repeated("name=", size);
    const std::string widths = repeated("width=", size);
    for (const std::string &text : {
             equals,
             word + equals,
             widths,
             widths + std::string(size, '1'),
             names,
             names + '"' + word,
             names + "\"scrollmessage\"" + equals,
             repeated("name=\"=", size),
         }) {
        EXPECT_EQ(read_back(text).messages, texts{}) << text.substr(0, 6);
    }
}

TEST(ScrollHtml, IsOneLineWithTheWordInFront) {
    applet data({"One", "Two, 50% off"}, {"", "http://example.com/two"});
    data.delay = -1;
    EXPECT_EQ(scroll_html(&data),
              R"(scrollmessage <applet code="Scrolltext.class" width = 80% height = 40>)"
              R"(<param name="scrollmessage0" value="One">)"
              R"(<param name="scrollmessage1" value="Two, 50% off">)"
              R"(<param name="scrollurl1" value="http://example.com/two">)"
              R"(<param name="3DFrame" value="0"><param name="Shadow" value="0">)"
              R"(<param name="Scrolldirection" value="0"><param name="ScrollDelay" value="-1">)"
              R"(<param name="ScrollDelta" value="1"></applet>)");
}

TEST(ScrollHtml, LeavesOutMessagesWithoutAUrlEntry) {
    applet data({"One", "Two"}, {""});
    EXPECT_EQ(scroll_html(&data).find("scrollmessage1"), std::string::npos);
}

TEST(ScrollHtml, LeavesOutUrlsWithoutAMessage) {
    applet data({}, {"a.html"});
    EXPECT_EQ(scroll_html(&data).find("a.html"), std::string::npos);
}

TEST(ScrollHtml, CutsEachPieceAt511Characters) {
    applet data({std::string(600, 'x')}, {"a.html"});
    const std::string begin = R"(<param name="scrollmessage0" value=")";
    EXPECT_NE(scroll_html(&data).find(begin + std::string(511 - begin.size(), 'x') +
                                      R"(<param name="3DFrame")"),
              std::string::npos);
}

TEST(ScrollHtml, IsReadBackAsItWas) {
    applet data({"One = 1", "Two"}, {"a.html", ""});
    data.width = "300";
    data.look_3d = 1;
    data.delta = 12;
    EXPECT_EQ(read_back(scroll_html(&data)), model_of(&data));
}

// A dialogue of the applet's editor about its messages or links.
struct edit {
    const char *name;
    int (*editor)(SCROLLMSG *);
    texts messages;
    texts urls;
    const char *typed;
    texts messages_then;
    texts urls_then;
};

class ScrollEditor : public scratch_test {
  protected:
    void check(const edit &row) {
        data.hold(row.messages, row.urls);
        int result = -1;
        expect_kept("console", console_of(row.typed, [&] { result = row.editor(&data); }));
        EXPECT_EQ(result, row.editor == get_messages ? list_num(&data.messages) : 1);
        EXPECT_EQ(items_of(&data.messages), row.messages_then);
        EXPECT_EQ(items_of(&data.urls), row.urls_then);
    }

    // Asks for the properties and compares what that shows.
    void ask_properties(const console_script &script) {
        expect_kept("console", console_of(script, [&] { EXPECT_EQ(get_properties(&data), 1); }));
    }

    applet data;
};

// clang-format off
const std::vector<edit> edits = {
    {"ScrollEditor.AsksForMessagesUntilOneIsEmpty", get_messages,
     {}, {}, "One\nTwo\n\n\n", {"One", "Two"}, {}},
    {"ScrollEditor.KeepsChangesAndAddsMessages", get_messages,
     {"One", "Two"}, {"a", "b"}, "\nSecond\nThird\n\nno\n", {"One", "Second", "Third"}, {"a", "b"}},
    {"ScrollEditor.DelDropsTheMessageAndItsLink", get_messages,
     {"One", "Two", "Three"}, {"a", "b", "c"}, "\n[del]\n\n\n\n", {"One", "Three"}, {"a", "c"}},
    {"ScrollEditor.ASecondDelTakesTheLinkAtItsNewPlace", get_messages,
     {"One", "Two", "Three"}, {"a", "b", "c"}, "[del]\n[del]\n\n\n\n", {"Three"}, {"b"}},
    {"ScrollEditor.TwoDelsBehindTheLinksTakeTheLastOnes", get_messages,
     {"One", "Two"}, {"a", "b"}, "[del]\n[del]\n\n\n", {}, {}},
    {"ScrollEditor.ADelBehindTheLinksTakesTheLastOne", get_messages,
     {"One", "Two"}, {"a"}, "\n[del]\n\n\n", {"One"}, {}},
    {"ScrollEditor.AnotherPassOffersTheNewMessages", get_messages,
     {"One"}, {"a"}, "First\nSecond\n\nyes\n\n[del]\n\n\n", {"First"}, {}},
    {"ScrollEditor.AsksForTheLinkOfEachMessage", get_urls,
     {"One", "Two", "Three"}, {"a", "b"}, "\n[del]\n\n\n", {"One", "Two", "Three"}, {"a", "", ""}},
    {"ScrollEditor.AnotherPassOffersTheNewLinks", get_urls,
     {"One", "Two"}, {"a", "b"}, "x\n[del]\nyes\n\ny.html\n\n", {"One", "Two"}, {"x", "y.html"}},
    {"ScrollEditor.LinksOfDroppedMessagesGo", get_urls,
     {"One"}, {"a", "b", "c"}, "\n\n", {"One"}, {"a"}},
};
// clang-format on

const int edits_registered = register_rows<ScrollEditor>(edits);

TEST_F(ScrollEditor, EnterKeepsAllProperties) {
    ask_properties({});
    EXPECT_EQ(model_of(&data), applet_model());
}

TEST_F(ScrollEditor, TakesOtherProperties) {
    data.look_3d = -1;
    data.look_shadow = data.direction = 1;
    data.delay = 20;
    ask_properties({{"height", "20px"},
                    {"width", "50%"},
                    {"Three dimensional", "no"},
                    {"direction", "left"},
                    {"delay", "fast"},
                    {"speed", "7"}});
    EXPECT_EQ(model_of(&data), (applet_model{.height = "20px",
                                             .width = "50%",
                                             .look_3d = 0,
                                             .look_shadow = 1,
                                             .direction = 0,
                                             .delay = -1,
                                             .delta = 7}));
}

TEST_F(ScrollEditor, AsksAgainForASizeThatHoldsNeitherDigitNorPercentOrIsRefused) {
    ask_properties(in_order({{"height", "abc"},
                             {"height", "5%0"},
                             {"height", "yes"},
                             {"height", "30%"},
                             {"width", "abc"}}));
    EXPECT_EQ(model_of(&data), applet_model{.height = "30%"});
}

TEST_F(ScrollEditor, AsksAgainForADirectionThatIsNone) {
    ask_properties(in_order({{"direction", "down"}, {"direction", "-1"}, {"direction", "up"}}));
    EXPECT_EQ(data.direction, 1);
}

TEST_F(ScrollEditor, TakesANumberAsDirection) {
    ask_properties({{"direction", "5"}});
    EXPECT_EQ(data.direction, 5);
}

class DoScrollmsg : public scratch_test {
  protected:
    // Runs the dialogue about the store's applet; compares what it shows, and the values of "set"
    // then.
    template <typename Input>
    void run(const Input &input) {
        expect_kept("console", console_of(input, [&] { EXPECT_EQ(do_scrollmsg(store.get()), 1); }));
        std::string sets;
        for (const std::string &value : values_of(store.get(), "set")) {
            sets += value + "\n";
        }
        expect_kept("set", sets);
    }

    custom_store store{};
};

TEST_F(DoScrollmsg, StoresANewAppletUnderTheDoubledWord) {
    ini_add(store.get(), "set", "logo a.gif");
    run(console_script{{"Enter message0", "Welcome"},
                       {"url for message Welcome", "news.html"},
                       {"Three dimensional", "yes"},
                       {"direction", "up"},
                       {"delay", "100"},
                       {"speed", "2"}});
}

TEST_F(DoScrollmsg, ConversionsInMessagesAndLinksAreText) {
    run(console_script{{"Enter message0", "%s%n%d%%"}, {"url for message", "%n%s%d%%"}});
}

TEST_F(DoScrollmsg, EditsTheStoredApplet) {
    const std::string stored =
        R"(scrollmessage scrollmessage <applet code="Scrolltext.class" width = 75% height = 30>)"
        R"(<param name="scrollmessage0" value="One"><param name="scrollmessage1" value="Two">)"
        R"(<param name="scrollurl1" value="b.html">)" +
        tail;
    ini_add(store.get(), "set", stored.c_str());
    ini_add(store.get(), "set", "logo a.gif");
    run(console_script{{"Enter message0", "[del]"}});
}

TEST_F(DoScrollmsg, TheRemovalKeepsTheStoredApplet) {
    ini_add(store.get(), "set",
            R"(scrollmessage scrollmessage <param name="scrollmessage0" value="One">)");
    run("[del]\n\n\nyes\n");
}

TEST_F(DoScrollmsg, AnEmptyFirstMessageLeadsToTheRemovalAndBackToTheMessages) {
    run(in_order({{"Remove scrollmessages", ""}, {"Remove scrollmessages", "yes"}}));
}

} // namespace
