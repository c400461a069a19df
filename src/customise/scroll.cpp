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
#include <cctype>
#include <cstring>
#include <deque>
#include <string_view>
#include <vector>

namespace {

constexpr const char *scroll_mode = "scrollmessage";

bool is_letter_or_digit(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0;
}

// The letters and digits that `text` begins with.
std::string_view leading_word(std::string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), is_letter_or_digit);
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

// Reads the applet's HTML into a record, in one pass. A "=" makes an attribute, which then awaits
// what follows: a size awaits its first digit; a parameter awaits the quote before its name, then
// the "=" of its value, then the word that begins the value.
class applet_reader {
  public:
    explicit applet_reader(SCROLLMSG *data) : data_(data) {}

    void read(std::string_view html) {
        while (!html.empty()) {
            const std::string_view word = leading_word(html);
            if (!word.empty()) {
                read_word(word, html);
            } else if (html.front() == '"') {
                read_parameter_names(leading_word(html.substr(1)));
            } else if (html.front() == '=') {
                read_equals();
            }
            html.remove_prefix(std::max<std::size_t>(word.size(), 1));
        }
    }

  private:
    static constexpr std::size_t longest_size = 511;
    static constexpr std::size_t longest_value = 510;

    // Where the value of a parameter is stored; nowhere for an unknown name.
    struct parameter {
        LINK_LIST *texts = nullptr;
        int *number = nullptr;
    };

    [[nodiscard]] parameter parameter_of(const std::string &name) const {
        if (name.find("scrollurl") != std::string::npos) {
            return {.texts = &data_->urls};
        }
        if (name.starts_with(scroll_mode)) {
            return {.texts = &data_->messages};
        }
        if (name == "3dframe") {
            return {.number = &data_->look_3d};
        }
        if (name == "shadow") {
            return {.number = &data_->look_shadow};
        }
        if (name == "scrolldirection") {
            return {.number = &data_->direction};
        }
        if (name == "scrolldelay") {
            return {.number = &data_->delay};
        }
        if (name == "scrolldelta") {
            return {.number = &data_->delta};
        }
        return {};
    }

    // All awaited values begin at this word, all awaited sizes at its first digit. `html` begins
    // with the word.
    void read_word(std::string_view word, std::string_view html) {
        const std::string_view value = html.substr(0, longest_value);
        for (const parameter &target : awaiting_value_) {
            store(target, std::string(value.substr(0, value.find('"'))));
        }
        awaiting_value_.clear();
        const std::size_t digit = word.find_first_of("0123456789");
        if (digit != std::string_view::npos) {
            read_sizes(html.substr(digit));
        }
        last_word_ = lower_case(word);
    }

    void read_sizes(std::string_view html) {
        std::string_view size = leading_word(html).substr(0, longest_size);
        if (html.substr(size.size()).starts_with('%')) {
            size = html.substr(0, size.size() + 1);
        }
        for (std::string *target : awaiting_digit_) {
            *target = size;
        }
        awaiting_digit_.clear();
    }

    // All parameters that await a name get the one after this quote.
    void read_parameter_names(std::string_view name) {
        if (awaiting_name_ > 0) {
            awaiting_equals_.insert(awaiting_equals_.end(), awaiting_name_,
                                    parameter_of(lower_case(name)));
            awaiting_name_ = 0;
        }
    }

    void read_equals() {
        if (!awaiting_equals_.empty()) {
            awaiting_value_.push_back(awaiting_equals_.front());
            awaiting_equals_.pop_front();
        } else if (last_word_ == "height") {
            awaiting_digit_.push_back(&data_->height);
        } else if (last_word_ == "width") {
            awaiting_digit_.push_back(&data_->width);
        } else if (last_word_ == "name") {
            awaiting_name_++;
        }
    }

    void store(const parameter &target, const std::string &value) {
        if (target.texts == &data_->urls) {
            // A link belongs to the message read last: earlier messages without one get "".
            while (list_num(&data_->urls) + 1 < list_num(&data_->messages)) {
                add_text(&data_->urls, "");
            }
        }
        if (target.texts != nullptr) {
            add_text(target.texts, value.c_str());
        }
        if (target.number != nullptr) {
            *target.number = s_atoi(value.c_str());
        }
    }

    SCROLLMSG *data_;
    std::string last_word_; // in lower case

    // Each in the order of the text.
    std::vector<std::string *> awaiting_digit_; // heights and widths
    std::size_t awaiting_name_ = 0;             // a parameter without a name is only counted
    std::deque<parameter> awaiting_equals_;
    std::vector<parameter> awaiting_value_;
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
            remove_text(&data->urls, position);
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

// num_perc accepts a word without a "%"; a size needs a digit or a "%" as well.
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

// A record that is cleared at the end of its scope.
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
        applet_reader(data).read(applet);
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
