// The scrolling-message applet read back the plain way, for comparison with the program's reader:
// each "=" is looked for from the beginning and its attribute's name is read backwards from there,
// letter by letter. It takes a time that grows with the square of the text.
#pragma once

#include "core/text.h"
#include "customise/scroll.h"
#include "support/store_texts.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

struct applet_model {
    std::string height = "40";
    std::string width = "80%";
    texts messages{};
    texts urls{};
    int look_3d = 0;
    int look_shadow = 0;
    int direction = 0;
    int delay = 0;
    int delta = 1;

    bool operator==(const applet_model &) const = default;

    // Takes over what `text` tells.
    void read(std::string text) {
        for (;;) {
            const std::size_t equals = text.find('=');
            if (equals == std::string::npos) {
                break;
            }
            text[equals] = ' ';
            const std::string name = name_before(text, equals);
            if (name == "thgieh") {
                read_size(text, equals, height);
            } else if (name == "htdiw") {
                read_size(text, equals, width);
            } else if (name == "eman") {
                read_parameter(text, equals);
            }
        }
        urls.resize(std::max(urls.size(), messages.size()));
    }

  private:
    static bool is_word(char character) {
        return std::isalnum(static_cast<unsigned char>(character)) != 0;
    }

    // The first place from `at` on whose character is part of a word, or is none.
    static std::size_t next(const std::string &text, std::size_t at, bool in_word) {
        while (at < text.size() && is_word(text[at]) != in_word) {
            at++;
        }
        return at;
    }

    static std::string lower_word(const std::string &text, std::size_t from) {
        std::string word = text.substr(from, next(text, from, false) - from);
        s_strlwr(word.data());
        return word;
    }

    // The reversed name, in lower case.
    static std::string name_before(const std::string &text, std::size_t place) {
        const std::string reversed(text.rend() - static_cast<std::ptrdiff_t>(place), text.rend());
        return lower_word(reversed, next(reversed, 0, true));
    }

    static void read_size(const std::string &text, std::size_t place, std::string &size) {
        place = text.find_first_of("0123456789", place);
        if (place != std::string::npos) {
            size = text.substr(place, std::min<std::size_t>(next(text, place, false) - place, 511));
            size += text.substr(place + size.size()).starts_with('%') ? "%" : "";
        }
    }

    void read_parameter(std::string &text, std::size_t place) {
        const std::size_t quote = text.find('"', place);
        const std::size_t equals = text.find('=', quote);
        if (quote == std::string::npos || equals == std::string::npos) {
            return;
        }
        const std::string name = lower_word(text, quote + 1);
        text[equals] = ' ';
        const std::size_t value = next(text, equals, true);
        if (value < text.size()) {
            take_parameter(name, text.substr(value, std::min<std::size_t>(
                                                        text.find('"', value) - value, 510)));
        }
    }

    void take_parameter(const std::string &name, const std::string &value) {
        const int number = s_atoi(value.c_str());
        if (name.find("scrollurl") != std::string::npos) {
            while (urls.size() + 1 < messages.size()) {
                urls.emplace_back();
            }
            urls.push_back(value);
        } else if (name.starts_with("scrollmessage")) {
            messages.push_back(value);
        } else if (name == "3dframe") {
            look_3d = number;
        } else if (name == "shadow") {
            look_shadow = number;
        } else if (name == "scrolldirection") {
            direction = number;
        } else if (name == "scrolldelay") {
            delay = number;
        } else if (name == "scrolldelta") {
            delta = number;
        }
    }
};

// What the program's reader has read.
inline applet_model model_of(SCROLLMSG *data) {
    return {.height = data->height,
            .width = data->width,
            .messages = items_of(&data->messages),
            .urls = items_of(&data->urls),
            .look_3d = data->look_3d,
            .look_shadow = data->look_shadow,
            .direction = data->direction,
            .delay = data->delay,
            .delta = data->delta};
}
