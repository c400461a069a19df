// The reader of the scrolling-message applet. The input is the HTML as it is stored. Promised: what
// reading each attribute's name backwards gives (asked of short inputs only, as that takes long);
// that everything read is bounded; and that an applet whose texts hold no "=", written anew, is
// read as it was.
#include "support.h"

#include "customise/ini_update.h"
#include "customise/scroll.h"
#include "support/applet_model.h"

#include <algorithm>

namespace {

constexpr std::size_t longest_for_model = 4096;
constexpr std::size_t longest_text = 510;
constexpr std::size_t longest_size = 512;

// What is read from a `set` value, and that applet written anew.
struct reading {
    applet_model model;
    std::string html;
};

reading read_stored(const std::string &value) {
    scoped_store store(custom_values);
    ini_add(store.get(), "set", value.c_str());
    SCROLLMSG data;
    scroll_init(&data);
    scroll_load(&data, store.get());
    reading result{model_of(&data), scroll_html(&data)};
    scroll_clear(&data);
    return result;
}

void check_bounds(const applet_model &model) {
    require(model.height.size() <= longest_size, "the height is bounded");
    require(model.width.size() <= longest_size, "the width is bounded");
    require(model.urls.size() >= model.messages.size(),
            "every message has a link, if an empty one");
    for (const auto *texts : {&model.messages, &model.urls}) {
        for (const std::string &text : *texts) {
            require(text.size() <= longest_text, "every text is bounded");
        }
    }
}

// Whether a message or link can be written so that it is read back: its piece of the HTML holds it
// whole, and it makes no attribute of its own.
bool is_faithful(const std::string &text) {
    constexpr std::size_t surely_whole = 200;
    return text.size() <= surely_whole && text.find('=') == std::string::npos;
}

bool is_faithful(const applet_model &model) {
    const auto all = [](const std::vector<std::string> &texts) {
        return std::all_of(texts.begin(), texts.end(),
                           [](const std::string &text) { return is_faithful(text); });
    };
    return model.messages.size() == model.urls.size() && all(model.messages) && all(model.urls) &&
           is_faithful(model.height) && is_faithful(model.width);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz_input input(data, size);
    const std::string value = "scrollmessage " + input.text();
    const auto [model, html] = read_stored(value);
    check_bounds(model);
    if (value.size() <= longest_for_model) {
        applet_model expected;
        expected.read(value);
        require(model == expected, "read as by going backwards");
    }
    if (is_faithful(model)) {
        require(read_stored(html).model == model, "written anew it is read as it was");
    }
    return 0;
}
