// The help file. The input is a topic's name, a line feed, and the file. Promised: there is always
// a text, never longer than the file (or the fallback), and the same one when asked again.
#include "support.h"

#include "dialogue/help.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    constexpr std::string_view fallback = "No specific help is available for this question.";
    enter_scratch_folder();
    fuzz_input input(data, size);
    const std::string topic = input.line();
    const std::string content = input.rest();
    write_scratch_file("help.hlp", content);

    HELP topics;
    require(help_init(&topics, "help.hlp") == 1, "an existing file opens");
    const std::string text = help_get(&topics, topic.c_str());
    require(!text.empty(), "there is always a text");
    require(text.size() <= std::max(content.size(), fallback.size()), "no text is made up");
    require(text == help_get(&topics, topic.c_str()), "a kept topic stays as it is");
    require(fallback == help_get(&topics, "no line\nholds this"), "an unknown topic has no text");
    require(text == help_get(&topics, topic.c_str()), "a topic is found again");
    require(help_clear(&topics) == 1, "the file closes");
    return 0;
}
