#include "customise/scroll.h"

#include "core/console.h"
#include "core/log.h"
#include "core/text.h"
#include "customise/editing.h"
#include "customise/ini_update.h"
#include "customise/text_list.h"
#include "dialogue/answers.h"
#include "dialogue/question.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <string_view>

namespace {

constexpr const char *scroll_mode = "scrollmessage";

bool is_letter_or_digit(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0;
}

bool is_digit(char character) {
    return std::isdigit(static_cast<unsigned char>(character)) != 0;
}

bool is_quote(char character) {
    return character == '"';
}

bool is_equals(char character) {
    return character == '=';
}

char lower(char character) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
}

bool equals_ignoring_case(std::string_view text, std::string_view lower_case_word) {
    return std::equal(text.begin(), text.end(), lower_case_word.begin(), lower_case_word.end(),
                      [](char one, char other) { return lower(one) == other; });
}

// A search for the next character of a kind. Asked for places that never go back, it passes each
// character once, however often it is asked.
class forward_search {
  public:
    explicit forward_search(bool (*is_kind)(char)) : is_kind_(is_kind) {}

    // The place of the first such character at or behind `place`; the text's length without one.
    std::size_t find(std::string_view text, std::size_t place) {
        place_ = std::max(place_, place);
        while (place_ < text.size() && !is_kind_(text[place_])) {
            place_++;
        }
        return std::min(place_, text.size());
    }

  private:
    bool (*is_kind_)(char);
    std::size_t place_ = 0;
};

struct number_parameter {
    std::string_view name;
    int SCROLLMSG::*number;
};

constexpr std::array<number_parameter, 5> number_parameters = {{
    {"3dframe", &SCROLLMSG::look_3d},
    {"shadow", &SCROLLMSG::look_shadow},
    {"scrolldirection", &SCROLLMSG::direction},
    {"scrolldelay", &SCROLLMSG::delay},
    {"scrolldelta", &SCROLLMSG::delta},
}};

// Reads the attributes of the applet's HTML into a record, in the order of their "=".
class applet_reader {
  public:
    applet_reader(std::string_view html, SCROLLMSG *data) : html_(html), data_(data) {}

    void read() {
        std::size_t begin = 0; // of the last word
        std::size_t end = 0;
        for (std::size_t place = 0; place < html_.size(); place++) {
            if (is_letter_or_digit(html_[place])) {
                begin = end == place ? begin : place;
                end = place + 1;
            } else if (html_[place] == '=') {
                html_[place] = ' ';
                read_attribute(text().substr(begin, end - begin), place);
            }
        }
    }

  private:
    static constexpr std::size_t longest_size = 511;
    static constexpr std::size_t longest_value = 510;

    [[nodiscard]] std::string_view text() const { return html_; }

    // The end of the word at `begin`, or of its first `longest` characters.
    [[nodiscard]] std::size_t word_end(std::size_t begin, std::size_t longest) const {
        const std::string_view rest = text().substr(begin, longest);
        return begin +
               static_cast<std::size_t>(
                   std::find_if_not(rest.begin(), rest.end(), is_letter_or_digit) - rest.begin());
    }

    void read_attribute(std::string_view name, std::size_t place) {
        if (equals_ignoring_case(name, "height")) {
            read_size(place, data_->height);
        } else if (equals_ignoring_case(name, "width")) {
            read_size(place, data_->width);
        } else if (equals_ignoring_case(name, "name")) {
            read_parameter(place);
        }
    }

    void read_size(std::size_t place, std::string &size) {
        const std::size_t begin = digits_.find(html_, place);
        if (begin == html_.size()) {
            return;
        }
        std::size_t end = word_end(begin, longest_size);
        if (end < html_.size() && html_[end] == '%') {
            end++;
        }
        size = html_.substr(begin, end - begin);
    }

    void read_parameter(std::size_t place) {
        read_parameter_name(quotes_.find(html_, place));
        const std::size_t equals = equals_.find(html_, parameter_end_);
        if (equals == html_.size()) {
            return;
        }
        html_[equals] = ' ';
        const std::size_t begin = words_.find(html_, equals);
        if (begin < html_.size()) {
            const std::string_view rest = text().substr(begin, longest_value);
            store_parameter(std::string(rest.substr(0, rest.find('"'))));
        }
    }

    // Takes the name behind a quote; many attributes in a row may lead to the same one.
    void read_parameter_name(std::size_t quote) {
        const std::size_t begin = std::min(quote + 1, html_.size());
        if (parameter_begin_ == begin) {
            return;
        }
        parameter_begin_ = begin;
        parameter_end_ = word_end(begin, html_.size());
        std::string name = html_.substr(begin, parameter_end_ - begin);
        std::transform(name.begin(), name.end(), name.begin(), lower);
        is_url_ = name.find("scrollurl") != std::string::npos;
        is_message_ = name.starts_with(scroll_mode);
        number_ = nullptr;
        for (const auto &[number_name, number] : number_parameters) {
            if (name == number_name) {
                number_ = number;
            }
        }
    }

    void store_parameter(const std::string &value) {
        if (is_url_) {
            // A link belongs to the message read last: those before without one get "".
            while (list_num(&data_->urls) + 1 < list_num(&data_->messages)) {
                add_text(&data_->urls, "");
            }
            add_text(&data_->urls, value.c_str());
        } else if (is_message_) {
            add_text(&data_->messages, value.c_str());
        } else if (number_ != nullptr) {
            data_->*number_ = s_atoi(value.c_str());
        }
    }

    std::string html_; // each "=" becomes a blank once it is used
    SCROLLMSG *data_;

    forward_search digits_{is_digit};
    forward_search quotes_{is_quote};
    forward_search equals_{is_equals};
    forward_search words_{is_letter_or_digit};

    // The parameter name read last: where it stands and what it means.
    std::size_t parameter_begin_ = 0;
    std::size_t parameter_end_ = 0;
    bool is_url_ = false;
    bool is_message_ = false;
    int SCROLLMSG::*number_ = nullptr;
};

// The stored applet, or null.
const char *find_applet(pINI_SETTINGS settings) {
    const char *value = ini_value(settings, "set", 1);
    while (value != nullptr && first_word(value) != scroll_mode) {
        value = ini_next_value(settings, "set");
    }
    return value;
}

const char *next_text(LINK_LIST *texts) {
    return static_cast<const char *>(list_get(texts));
}

bool is_delete(const char *answer) {
    return s_strcmp(answer, delete_answer) == 0;
}

void edit_messages(SCROLLMSG *data, LINK_LIST *edited) {
    list_start(&data->messages);
    for (int position = 0;; position++) {
        const char *answer = question(C_SCRMESS_Q, next_text(&data->messages), position);
        if (*answer == '\0') {
            return;
        }
        if (is_delete(answer)) {
            const heap_text url(static_cast<char *>(list_remove_num(&data->urls, position)));
        } else {
            add_text(edited, answer);
        }
    }
}

void edit_urls(SCROLLMSG *data, LINK_LIST *edited) {
    list_start(&data->messages);
    list_start(&data->urls);
    while (const char *message = next_text(&data->messages)) {
        const char *answer = question(C_SCRURL_Q, next_text(&data->urls), message);
        add_text(edited, is_delete(answer) ? "" : answer);
    }
}

// Whether the answer says a size: not only may it be a number or a percentage, there is one in it.
bool is_box_size(const char *answer) {
    return num_perc(answer) == 1 && std::strpbrk(answer, "0123456789%") != nullptr;
}

std::string ask_box_size(const std::string &size, const char *what) {
    return ask_until([&] { return question(C_SCRBOX1_Q, size.c_str(), what); }, is_box_size,
                     [](const char *) {});
}

int ask_direction(int direction) {
    const std::string answer =
        ask_until([&] { return question(C_SCRTXT2_Q, direction != 0 ? "up" : "left"); },
                  [](const char *reply) { return dflt_val(reply) != -1; },
                  [](const char *) { print("\nMust be either \"left\" or \"up\""); });
    return dflt_val(answer.c_str());
}

int ask_yes_or_no(question_number quest_num, int value) {
    return dflt_val(question(quest_num, give_dflt(value)));
}

int ask_number(question_number quest_num, int value) {
    return dflt_val(question(quest_num, formatted("%d", value).c_str()));
}

// The applet's record, cleared when it goes.
struct scoped_applet {
    SCROLLMSG data;

    scoped_applet() { scroll_init(&data); }
    ~scoped_applet() { scroll_clear(&data); }
    scoped_applet(const scoped_applet &) = delete;
    scoped_applet &operator=(const scoped_applet &) = delete;
};

} // namespace

int scroll_init(SCROLLMSG *data) {
    *data = {};
    data->height = "40";
    data->width = "80%";
    data->delta = 1;
    return list_init(&data->messages, emsg) == 1 && list_init(&data->urls, emsg) == 1 ? 1 : 0;
}

void scroll_clear(SCROLLMSG *data) {
    data->height = {};
    data->width = {};
    list_clear_dealloc(&data->messages);
    list_clear_dealloc(&data->urls);
}

int scroll_load(SCROLLMSG *data, pINI_SETTINGS settings) {
    if (const char *applet = find_applet(settings)) {
        applet_reader(applet, data).read();
    }
    while (list_num(&data->urls) < list_num(&data->messages)) {
        add_text(&data->urls, "");
    }
    return 1;
}

std::string scroll_html(SCROLLMSG *data) {
    path_text piece;
    piece.format("%s <applet code=\"Scrolltext.class\" width = %s height = %s>", scroll_mode,
                 data->width.c_str(), data->height.c_str());
    std::string html(piece.view());
    list_start(&data->messages);
    list_start(&data->urls);
    for (int i = 0; i < list_num(&data->messages) && i < list_num(&data->urls); i++) {
        const char *message = next_text(&data->messages);
        const char *url = next_text(&data->urls);
        if (*url == '\0') {
            piece.format("<param name=\"scrollmessage%d\" value=\"%s\">", i, message);
        } else {
            piece.format("<param name=\"scrollmessage%d\" value=\"%s\">"
                         "<param name=\"scrollurl%d\" value=\"%s\">",
                         i, message, i, url);
        }
        html.append(piece.view());
    }
    piece.format("<param name=\"3DFrame\" value=\"%d\"><param name=\"Shadow\" value=\"%d\">"
                 "<param name=\"Scrolldirection\" value=\"%d\">"
                 "<param name=\"ScrollDelay\" value=\"%d\">"
                 "<param name=\"ScrollDelta\" value=\"%d\"></applet>",
                 data->look_3d, data->look_shadow, data->direction, data->delay, data->delta);
    return html.append(piece.view());
}

int get_messages(SCROLLMSG *data) {
    print("\n(Press enter to continue, or \"%s\" to delete a message.)", delete_answer);
    edit_in_passes(&data->messages, [data](LINK_LIST *edited) { edit_messages(data, edited); });
    return list_num(&data->messages);
}

int get_urls(SCROLLMSG *data) {
    print("\n(Press enter to continue, or \"%s\" to delete a url.)", delete_answer);
    edit_in_passes(&data->urls, [data](LINK_LIST *edited) { edit_urls(data, edited); });
    return 1;
}

int get_properties(SCROLLMSG *data) {
    data->height = ask_box_size(data->height, "height");
    data->width = ask_box_size(data->width, "width");
    data->look_3d = ask_yes_or_no(C_SCRBOX2_Q, data->look_3d);
    data->look_shadow = ask_yes_or_no(C_SCRTXT1_Q, data->look_shadow);
    data->direction = ask_direction(data->direction);
    data->delay = ask_number(C_SCRTXT3_Q, data->delay);
    data->delta = ask_number(C_SCRTXT4_Q, data->delta);
    return 1;
}

int do_scrollmsg(pINI_SETTINGS settings) {
    scoped_applet applet;
    scroll_load(&applet.data, settings);
    while (get_messages(&applet.data) == 0) {
        if (wants_removal(scroll_mode)) {
            // No setting has this name (the applet is a value of `set`), so the applet stays.
            ini_remove(settings, scroll_mode);
            return 1;
        }
    }
    get_urls(&applet.data);
    get_properties(&applet.data);
    text_list html;
    add_text(&html, scroll_html(&applet.data).c_str());
    return update_values(settings, "set", scroll_mode, &html);
}
