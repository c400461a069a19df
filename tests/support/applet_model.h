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

    static char lower(char character) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }

    // The reversed name, in lower case.
    static std::string name_before(const std::string &text, std::size_t place) {
        std::string name;
        while (place > 0 && !is_word(text[place - 1])) {
            place--;
        }
        while (place > 0 && is_word(text[place - 1])) {
            name.push_back(lower(text[--place]));
        }
        return name;
    }

    static void read_size(const std::string &text, std::size_t place, std::string &size) {
        while (place < text.size() && std::isdigit(static_cast<unsigned char>(text[place])) == 0) {
            place++;
        }
        if (place == text.size()) {
            return;
        }
        size.clear();
        while (place < text.size() && is_word(text[place]) && size.size() < 511) {
            size.push_back(text[place++]);
        }
        if (place < text.size() && text[place] == '%') {
            size.push_back('%');
        }
    }

    void read_parameter(std::string &text, std::size_t place) {
        place = text.find('"', place);
        if (place == std::string::npos) {
            return;
        }
        std::string name;
        for (place++; place < text.size() && is_word(text[place]); place++) {
            name.push_back(lower(text[place]));
        }
        place = text.find('=', place);
        if (place == std::string::npos) {
            return;
        }
        text[place] = ' ';
        while (place < text.size() && !is_word(text[place])) {
            place++;
        }
        if (place == text.size()) {
            return;
        }
        std::string value;
        while (place < text.size() && text[place] != '"' && value.size() < 510) {
            value.push_back(text[place++]);
        }
        take_parameter(name, value);
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
