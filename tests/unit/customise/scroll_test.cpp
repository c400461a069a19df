#include "customise/scroll.h"

#include "customise/text_list.h"
#include "support/applet_model.h"
#include "support/asked_console.h"
#include "support/scratch_test.h"
#include "unit/customise/custom_store.h"

#include <array>
#include <gtest/gtest.h>
#include <random>

namespace {

// The applet's record, cleared when it goes.
struct applet : SCROLLMSG {
    applet() { EXPECT_EQ(scroll_init(this), 1); }
    ~applet() { scroll_clear(this); }
    applet(const applet &) = delete;
    applet &operator=(const applet &) = delete;
};

applet_model model_of(SCROLLMSG *data) {
    applet_model model;
    model.height = data->height;
    model.width = data->width;
    model.messages = items_of(&data->messages);
    model.urls = items_of(&data->urls);
    model.look_3d = data->look_3d;
    model.look_shadow = data->look_shadow;
    model.direction = data->direction;
    model.delay = data->delay;
    model.delta = data->delta;
    return model;
}

// What the reader takes from a stored HTML.
applet_model read_back(const std::string &html) {
    custom_store store{{"set", "scrollmessage " + html}};
    applet data;
    EXPECT_EQ(scroll_load(&data, store.get()), 1);
    return model_of(&data);
}

constexpr const char *tail =
    R"(<param name="3DFrame" value="1"><param name="Shadow" value="1">)"
    R"(<param name="Scrolldirection" value="1"><param name="ScrollDelay" value="250">)"
    R"(<param name="ScrollDelta" value="3"></applet>)";

TEST(ScrollInit, SetsTheDefaults) {
    applet data;

    EXPECT_EQ(data.height, "40");
    EXPECT_EQ(data.width, "80%");
    EXPECT_EQ(list_num(&data.messages), 0);
    EXPECT_EQ(list_num(&data.urls), 0);
    EXPECT_EQ(data.look_3d, 0);
    EXPECT_EQ(data.look_shadow, 0);
    EXPECT_EQ(data.direction, 0);
    EXPECT_EQ(data.delay, 0);
    EXPECT_EQ(data.delta, 1);
}

TEST(ScrollClear, FreesTheTextsAndLeavesEmptyLists) {
    applet data;
    add_text(&data.messages, "one");
    add_text(&data.urls, "");

    scroll_clear(&data);

    EXPECT_EQ(data.height, "");
    EXPECT_EQ(data.width, "");
    EXPECT_EQ(list_num(&data.messages), 0);
    EXPECT_EQ(list_num(&data.urls), 0);
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

TEST(ScrollLoad, ReadsAllThatIsStored) {
    const applet_model model = read_back(
        R"(scrollmessage <applet code="Scrolltext.class" width = 75% height = 120>)"
        R"(<param name="scrollmessage0" value="Hello, world!"><param name="scrollurl0" value="a.html">)"
        R"(<param name="scrollmessage1" value="Second">)"
        R"(<param name="scrollmessage2" value="Third"><param name="scrollurl2" value="c.html">)" +
        std::string(tail));

    EXPECT_EQ(model.width, "75%");
    EXPECT_EQ(model.height, "120");
    EXPECT_EQ(model.messages, (texts{"Hello, world!", "Second", "Third"}));
    EXPECT_EQ(model.urls, (texts{"a.html", "", "c.html"}));
    EXPECT_EQ(model.look_3d, 1);
    EXPECT_EQ(model.look_shadow, 1);
    EXPECT_EQ(model.direction, 1);
    EXPECT_EQ(model.delay, 250);
    EXPECT_EQ(model.delta, 3);
}

TEST(ScrollLoad, AFirstMessageWithoutUrlGetsAnEmptyOne) {
    const applet_model model = read_back(
        R"(<param name="scrollmessage0" value="One">)"
        R"(<param name="scrollmessage1" value="Two"><param name="scrollurl1" value="b">)");

    EXPECT_EQ(model.messages, (texts{"One", "Two"}));
    EXPECT_EQ(model.urls, (texts{"", "b"}));
}

TEST(ScrollLoad, AMessageEndsAtItsFirstDoubleQuote) {
    EXPECT_EQ(read_back(R"(<param name="scrollmessage0" value="Say "hello" twice">)").messages,
              texts{"Say "});
}

TEST(ScrollLoad, WhatStandsBeforeTheFirstLetterOrDigitOfAValueIsLost) {
    EXPECT_EQ(read_back(R"(<param name="scrollmessage0" value="...(new) offers">)").messages,
              texts{"new) offers"});
}

TEST(ScrollLoad, NamesAreReadIgnoringCase) {
    const applet_model model = read_back(R"(WIDTH=5 Height=6 <PARAM NAME="SCROLLMESSAGE0" X="y">)");

    EXPECT_EQ(model.width, "5");
    EXPECT_EQ(model.height, "6");
    EXPECT_EQ(model.messages, texts{"y"});
}

TEST(ScrollLoad, ANameIsTheWholeWordBeforeTheEqualsSign) {
    EXPECT_EQ(read_back("maxwidth = 5 width2 = 6"), applet_model());
    EXPECT_EQ(read_back("max-width ... = 5").width, "5");
}

TEST(ScrollLoad, AUrlNameMayContainTheWordAMessageNameMustBeginWithIt) {
    const applet_model model =
        read_back(R"(name="myscrollmessage" v="no" name="scrollmessageX" v="yes" )"
                  R"(name="thescrollurl9" v="link" name="xShadow" v="5")");

    EXPECT_EQ(model.messages, texts{"yes"});
    EXPECT_EQ(model.urls, texts{"link"});
    EXPECT_EQ(model.look_shadow, 0);
}

TEST(ScrollLoad, AnEqualsSignInsideAMessageMakesAnAttributeToo) {
    const applet_model model = read_back(R"(name="scrollmessage0" value="width = 12%")");

    EXPECT_EQ(model.messages, texts{"width = 12%"});
    EXPECT_EQ(model.width, "12%");
}

TEST(ScrollLoad, AMessageIsReadUpTo510CharactersASizeUpTo511) {
    const std::string text(600, 'x');
    const std::string digits(600, '7');

    EXPECT_EQ(read_back("name=\"scrollmessage0\" value=\"" + text + "\"").messages,
              texts{text.substr(0, 510)});
    EXPECT_EQ(read_back("height = " + digits + "%").height, digits.substr(0, 511));
    EXPECT_EQ(read_back("height = " + digits.substr(0, 511) + "%").height,
              digits.substr(0, 511) + "%");
}

TEST(ScrollLoad, WhatIsCutOffCountsForNothing) {
    for (const char *html :
         {"width", "width =", "width = ", "name", "name=", "name=\"", "name=\"scrollmessage0",
          "name=\"scrollmessage0\" value",
          "name=\"scrollmessage0\" value=", "name=\"scrollmessage0\" value=\"", "=", "\"", ""}) {
        EXPECT_EQ(read_back(html), applet_model()) << html;
    }
    EXPECT_EQ(read_back("name=\"scrollmessage0\" value=\"Hel").messages, texts{"Hel"});
}

// A text made of the pieces that the reader looks at.
std::string hostile_text(std::mt19937 &random) {
    constexpr std::array<const char *, 22> pieces = {"=",         "==",
                                                     "\"",        " ",
                                                     "name",      "NAME=",
                                                     "value=\"",  "width",
                                                     "height=",   "7",
                                                     "80%",       "%",
                                                     "x",         "scrollmessage",
                                                     "scrollurl", "3DFrame",
                                                     "shadow\"",  "scrolldelay\"",
                                                     "<param ",   "a b",
                                                     "\xe9",      "scrolldirection"};
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
        applet_model expected;
        expected.read("scrollmessage " + text);
        ASSERT_EQ(read_back(text), expected) << text;
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
        applet_model expected;
        expected.read("scrollmessage " + text);
        EXPECT_EQ(read_back(text), expected) << piece;
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
    applet data;
    add_text(&data.messages, "One");
    add_text(&data.messages, "Two, 50% off");
    add_text(&data.urls, "");
    add_text(&data.urls, "http://example.com/two");
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
    applet data;
    add_text(&data.messages, "One");
    add_text(&data.messages, "Two");
    add_text(&data.urls, "");

    EXPECT_EQ(scroll_html(&data).find("scrollmessage1"), std::string::npos);
}

TEST(ScrollHtml, LeavesOutUrlsWithoutAMessage) {
    applet data;
    add_text(&data.urls, "a.html");

    EXPECT_EQ(scroll_html(&data).find("a.html"), std::string::npos);
}

TEST(ScrollHtml, CutsEachPieceAt511Characters) {
    applet data;
    add_text(&data.messages, std::string(600, 'x').c_str());
    add_text(&data.urls, "a.html");

    const std::string html = scroll_html(&data);

    const std::string begin = R"(<param name="scrollmessage0" value=")";
    EXPECT_NE(html.find(begin + std::string(511 - begin.size(), 'x') + R"(<param name="3DFrame")"),
              std::string::npos);
}

TEST(ScrollHtml, IsReadBackAsItWas) {
    applet data;
    add_text(&data.messages, "One = 1");
    add_text(&data.messages, "Two");
    add_text(&data.urls, "a.html");
    add_text(&data.urls, "");
    data.width = "300";
    data.look_3d = 1;
    data.delta = 12;

    EXPECT_EQ(read_back(scroll_html(&data)), model_of(&data));
}

constexpr const char *messages_help =
    "\n(Press enter to continue, or \"[del]\" to delete a message.)";
constexpr const char *urls_help = "\n(Press enter to continue, or \"[del]\" to delete a url.)";
constexpr const char *no_changes = "\nDo you want to change any of your answers [NO]? ";

// A dialogue of the applet's editor about these messages and links.
class ScrollEditor : public scratch_test {
  protected:
    void hold(const texts &messages, const texts &urls) {
        for (const std::string &message : messages) {
            add_text(&data.messages, message.c_str());
        }
        for (const std::string &url : urls) {
            add_text(&data.urls, url.c_str());
        }
    }

    void expect_texts(const texts &messages, const texts &urls) {
        EXPECT_EQ(items_of(&data.messages), messages);
        EXPECT_EQ(items_of(&data.urls), urls);
    }

    applet data;
};

TEST_F(ScrollEditor, AsksForMessagesUntilOneIsEmpty) {
    EXPECT_EQ(console_of("One\nTwo\n\n\n", [&] { EXPECT_EQ(get_messages(&data), 2); }),
              messages_help +
                  std::string("\nEnter message0 ? "
                              "\nEnter message1 ? "
                              "\nEnter message2 ? ") +
                  no_changes);
    expect_texts({"One", "Two"}, {});
}

TEST_F(ScrollEditor, KeepsChangesAndAddsMessages) {
    hold({"One", "Two"}, {"a", "b"});
    EXPECT_EQ(console_of("\nSecond\nThird\n\nno\n", [&] { EXPECT_EQ(get_messages(&data), 3); }),
              messages_help +
                  std::string("\nEnter message0 [One]? "
                              "\nEnter message1 [Two]? "
                              "\nEnter message2 ? "
                              "\nEnter message3 ? ") +
                  no_changes);
    expect_texts({"One", "Second", "Third"}, {"a", "b"});
}

TEST_F(ScrollEditor, DelDropsTheMessageAndItsLink) {
    hold({"One", "Two", "Three"}, {"a", "b", "c"});
    EXPECT_EQ(console_of("\n[del]\n\n\n\n", [&] { EXPECT_EQ(get_messages(&data), 2); }),
              messages_help +
                  std::string("\nEnter message0 [One]? "
                              "\nEnter message1 [Two]? "
                              "\nEnter message2 [Three]? "
                              "\nEnter message3 ? ") +
                  no_changes);
    expect_texts({"One", "Three"}, {"a", "c"});
}

TEST_F(ScrollEditor, ASecondDelTakesTheLinkAtItsPositionInTheShortenedList) {
    hold({"One", "Two", "Three"}, {"a", "b", "c"});
    console_of("[del]\n[del]\n\n\n\n", [&] { EXPECT_EQ(get_messages(&data), 1); });
    expect_texts({"Three"}, {"b"});
}

TEST_F(ScrollEditor, ADelBehindTheLinksTakesTheLastOne) {
    hold({"One", "Two"}, {"a", "b"});
    console_of("[del]\n[del]\n\n\n", [&] { EXPECT_EQ(get_messages(&data), 0); });
    expect_texts({}, {});
    hold({"One", "Two"}, {"a"});
    console_of("\n[del]\n\n\n", [&] { EXPECT_EQ(get_messages(&data), 1); });
    expect_texts({"One"}, {});
}

TEST_F(ScrollEditor, AnotherPassOffersTheNewMessages) {
    hold({"One"}, {"a"});
    EXPECT_EQ(console_of("First\nSecond\n\nyes\n\n[del]\n\n\n",
                         [&] { EXPECT_EQ(get_messages(&data), 1); }),
              messages_help +
                  std::string("\nEnter message0 [One]? "
                              "\nEnter message1 ? "
                              "\nEnter message2 ? ") +
                  no_changes +
                  "\nEnter message0 [First]? "
                  "\nEnter message1 [Second]? "
                  "\nEnter message2 ? " +
                  no_changes);
    expect_texts({"First"}, {});
}

TEST_F(ScrollEditor, AsksForTheLinkOfEachMessage) {
    hold({"One", "Two", "Three"}, {"a", "b"});
    EXPECT_EQ(console_of("\n[del]\n\n\n", [&] { EXPECT_EQ(get_urls(&data), 1); }),
              urls_help +
                  std::string("\nEnter url for message One [a]? "
                              "\nEnter url for message Two [b]? "
                              "\nEnter url for message Three ? ") +
                  no_changes);
    expect_texts({"One", "Two", "Three"}, {"a", "", ""});
}

TEST_F(ScrollEditor, AnotherPassOffersTheNewLinks) {
    hold({"One", "Two"}, {"a", "b"});
    EXPECT_EQ(console_of("x\n[del]\nyes\n\ny.html\n\n", [&] { EXPECT_EQ(get_urls(&data), 1); }),
              urls_help +
                  std::string("\nEnter url for message One [a]? "
                              "\nEnter url for message Two [b]? ") +
                  no_changes +
                  "\nEnter url for message One [x]? "
                  "\nEnter url for message Two ? " +
                  no_changes);
    expect_texts({"One", "Two"}, {"x", "y.html"});
}

TEST_F(ScrollEditor, LinksOfDroppedMessagesGo) {
    hold({"One"}, {"a", "b", "c"});
    console_of("\n\n", [&] { EXPECT_EQ(get_urls(&data), 1); });
    expect_texts({"One"}, {"a"});
}

constexpr const char *height_question = "\nEnter height of scrollbox (value or percentage) [40]? ";
constexpr const char *width_question = "\nEnter width of scrollbox (value or percentage) [80%]? ";

TEST_F(ScrollEditor, EnterKeepsAllProperties) {
    EXPECT_EQ(console_of(console_script{}, [&] { EXPECT_EQ(get_properties(&data), 1); }),
              height_question + std::string(width_question) +
                  "\nThree dimensional [NO]? "
                  "\nAdd shadow to text [NO]? "
                  "\nScroll direction (up or left) [left]? "
                  "\nScroll delay (between messages) [0]? "
                  "\nScroll speed (pixels) [1]? ");
    EXPECT_EQ(model_of(&data), applet_model());
}

TEST_F(ScrollEditor, TakesOtherProperties) {
    data.look_3d = -1;
    data.look_shadow = 1;
    data.direction = 1;
    data.delay = 20;
    EXPECT_EQ(console_of(console_script{{"height", "20px"},
                                        {"width", "50%"},
                                        {"Three dimensional", "no"},
                                        {"direction", "left"},
                                        {"delay", "fast"},
                                        {"speed", "7"}},
                         [&] { EXPECT_EQ(get_properties(&data), 1); }),
              height_question + std::string(width_question) +
                  "\nThree dimensional [YES]? "
                  "\nAdd shadow to text [YES]? "
                  "\nScroll direction (up or left) [up]? "
                  "\nScroll delay (between messages) [20]? "
                  "\nScroll speed (pixels) [1]? ");
    EXPECT_EQ(data.height, "20px");
    EXPECT_EQ(data.width, "50%");
    EXPECT_EQ(data.look_3d, 0);
    EXPECT_EQ(data.look_shadow, 1);
    EXPECT_EQ(data.direction, 0);
    EXPECT_EQ(data.delay, -1);
    EXPECT_EQ(data.delta, 7);
}

TEST_F(ScrollEditor, AsksAgainForASizeThatHoldsNeitherDigitNorPercentOrIsRefused) {
    EXPECT_EQ(console_of(in_order({{"height", "abc"},
                                   {"height", "5%0"},
                                   {"height", "yes"},
                                   {"height", "30%"},
                                   {"width", "abc"}}),
                         [&] { EXPECT_EQ(get_properties(&data), 1); }),
              height_question + std::string(height_question) + height_question + height_question +
                  width_question + width_question +
                  "\nThree dimensional [NO]? "
                  "\nAdd shadow to text [NO]? "
                  "\nScroll direction (up or left) [left]? "
                  "\nScroll delay (between messages) [0]? "
                  "\nScroll speed (pixels) [1]? ");
    EXPECT_EQ(data.height, "30%");
    EXPECT_EQ(data.width, "80%");
}

TEST_F(ScrollEditor, AsksAgainForADirectionThatIsNone) {
    EXPECT_EQ(
        console_of(in_order({{"direction", "down"}, {"direction", "-1"}, {"direction", "up"}}),
                   [&] { EXPECT_EQ(get_properties(&data), 1); }),
        height_question + std::string(width_question) +
            "\nThree dimensional [NO]? "
            "\nAdd shadow to text [NO]? "
            "\nScroll direction (up or left) [left]? "
            "\nMust be either \"left\" or \"up\""
            "\nScroll direction (up or left) [left]? "
            "\nMust be either \"left\" or \"up\""
            "\nScroll direction (up or left) [left]? "
            "\nScroll delay (between messages) [0]? "
            "\nScroll speed (pixels) [1]? ");
    EXPECT_EQ(data.direction, 1);
}

TEST_F(ScrollEditor, TakesANumberAsDirection) {
    console_of(console_script{{"direction", "5"}}, [&] { EXPECT_EQ(get_properties(&data), 1); });
    EXPECT_EQ(data.direction, 5);
}

class DoScrollmsg : public scratch_test {};

TEST_F(DoScrollmsg, StoresANewAppletUnderTheDoubledWord) {
    custom_store store{{"set", "logo a.gif"}};

    EXPECT_EQ(console_of(console_script{{"Enter message0", "Welcome"},
                                        {"url for message Welcome", "news.html"},
                                        {"Three dimensional", "yes"},
                                        {"direction", "up"},
                                        {"delay", "100"},
                                        {"speed", "2"}},
                         [&] { EXPECT_EQ(do_scrollmsg(store.get()), 1); }),
              messages_help +
                  std::string("\nEnter message0 ? "
                              "\nEnter message1 ? ") +
                  no_changes + urls_help + "\nEnter url for message Welcome ? " + no_changes +
                  height_question + width_question +
                  "\nThree dimensional [NO]? "
                  "\nAdd shadow to text [NO]? "
                  "\nScroll direction (up or left) [left]? "
                  "\nScroll delay (between messages) [0]? "
                  "\nScroll speed (pixels) [1]? ");
    EXPECT_EQ(
        values_of(store.get(), "set"),
        (texts{"logo a.gif",
               "scrollmessage scrollmessage "
               R"(<applet code="Scrolltext.class" width = 80% height = 40>)"
               R"(<param name="scrollmessage0" value="Welcome">)"
               R"(<param name="scrollurl0" value="news.html">)"
               R"(<param name="3DFrame" value="1"><param name="Shadow" value="0">)"
               R"(<param name="Scrolldirection" value="1"><param name="ScrollDelay" value="100">)"
               R"(<param name="ScrollDelta" value="2"></applet>)"}));
}

TEST_F(DoScrollmsg, ConversionsInMessagesAndLinksAreText) {
    custom_store store{{"set", "logo a.gif"}};
    const std::string console =
        console_of(console_script{{"Enter message0", "%s%n%d%%"}, {"url for message", "%n%s%d%%"}},
                   [&] { EXPECT_EQ(do_scrollmsg(store.get()), 1); });
    EXPECT_NE(console.find("\nEnter url for message %s%n%d%% ? "), std::string::npos) << console;
    const texts sets = values_of(store.get(), "set");
    ASSERT_EQ(sets.size(), 2U);
    EXPECT_NE(sets[1].find(R"(<param name="scrollmessage0" value="%s%n%d%%">)"
                           R"(<param name="scrollurl0" value="%n%s%d%%">)"),
              std::string::npos)
        << sets[1];
}

TEST_F(DoScrollmsg, EditsTheStoredApplet) {
    custom_store store{
        {"set", "scrollmessage scrollmessage <applet code=\"Scrolltext.class\" width = 75% height "
                "= 30><param name=\"scrollmessage0\" value=\"One\"><param name=\"scrollmessage1\" "
                "value=\"Two\"><param name=\"scrollurl1\" value=\"b.html\">" +
                    std::string(tail)},
        {"set", "logo a.gif"}};

    EXPECT_EQ(console_of(console_script{{"Enter message0", "[del]"}},
                         [&] { EXPECT_EQ(do_scrollmsg(store.get()), 1); }),
              messages_help +
                  std::string("\nEnter message0 [One]? "
                              "\nEnter message1 [Two]? "
                              "\nEnter message2 ? ") +
                  no_changes + urls_help + "\nEnter url for message Two [b.html]? " + no_changes +
                  "\nEnter height of scrollbox (value or percentage) [30]? "
                  "\nEnter width of scrollbox (value or percentage) [75%]? "
                  "\nThree dimensional [YES]? "
                  "\nAdd shadow to text [YES]? "
                  "\nScroll direction (up or left) [up]? "
                  "\nScroll delay (between messages) [250]? "
                  "\nScroll speed (pixels) [3]? ");
    EXPECT_EQ(values_of(store.get(), "set"),
              (texts{"logo a.gif", "scrollmessage scrollmessage <applet code=\"Scrolltext.class\" "
                                   "width = 75% height = 30><param name=\"scrollmessage0\" "
                                   "value=\"Two\"><param name=\"scrollurl0\" value=\"b.html\">" +
                                       std::string(tail)}));
}

TEST_F(DoScrollmsg, WithoutMessagesOffersTheRemovalWhichKeepsTheStoredApplet) {
    const std::string stored =
        R"(scrollmessage scrollmessage <param name="scrollmessage0" value="One">)";
    custom_store store{{"set", stored}};

    EXPECT_EQ(console_of("[del]\n\n\nyes\n", [&] { EXPECT_EQ(do_scrollmsg(store.get()), 1); }),
              messages_help +
                  std::string("\nEnter message0 [One]? "
                              "\nEnter message1 ? ") +
                  no_changes + "\nRemove scrollmessages [NO]? ");
    EXPECT_EQ(values_of(store.get(), "set"), texts{stored});
}

TEST_F(DoScrollmsg, AnEmptyFirstMessageLeadsToTheRemovalAndBackToTheMessages) {
    custom_store store{};

    EXPECT_EQ(
        console_of(in_order({{"Remove scrollmessages", ""}, {"Remove scrollmessages", "yes"}}),
                   [&] { EXPECT_EQ(do_scrollmsg(store.get()), 1); }),
        messages_help + std::string("\nEnter message0 ? ") + no_changes +
            "\nRemove scrollmessages [NO]? " + messages_help + "\nEnter message0 ? " + no_changes +
            "\nRemove scrollmessages [NO]? ");
    EXPECT_EQ(values_of(store.get(), "set"), texts{});
}

} // namespace
