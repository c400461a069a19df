// What the questions of the customise menu show.
#pragma once

#include <string>
#include <vector>

inline const std::string dashes = std::string(79, '-') + "\n";

// Questions one behind the other, each with what it offers, as "Scroll speed (pixels) [1]".
inline std::string asked(const std::vector<std::string> &questions) {
    std::string shown;
    for (const std::string &question : questions) {
        shown += "\n" + question + "? ";
    }
    return shown;
}

inline const std::string changes = "Do you want to change any of your answers [NO]";

// The question for a file, "background" or "logo".
inline std::string image_question(const std::string &kind, const std::string &offered) {
    return asked({"Please enter the full path to the file you want as a " + kind +
                  "\n(this image will be copied to the images directory)\n[" + offered + "]"});
}

inline const std::string messages_help =
    "\n(Press enter to continue, or \"[del]\" to delete a message.)";
inline const std::string urls_help = "\n(Press enter to continue, or \"[del]\" to delete a url.)";

// What an applet offers for each of its properties.
inline const std::vector<std::string> new_applet = {"40", "80%", "NO", "NO", "left", "0", "1"};

inline std::string property_questions(const std::vector<std::string> &offered = new_applet) {
    return asked({"Enter height of scrollbox (value or percentage) [" + offered[0] + "]",
                  "Enter width of scrollbox (value or percentage) [" + offered[1] + "]",
                  "Three dimensional [" + offered[2] + "]",
                  "Add shadow to text [" + offered[3] + "]",
                  "Scroll direction (up or left) [" + offered[4] + "]",
                  "Scroll delay (between messages) [" + offered[5] + "]",
                  "Scroll speed (pixels) [" + offered[6] + "]"});
}

inline const std::string footer_help = R"(


NOTE : This footer will be added to the end of every message sent.
->Defaults are shown [thus], if no default is given a <return> will
  insert a blank line.
->Otherwise type [ins] to insert a blank line, [del] to remove a line,
  type [save] to save & exit, type [remove] to remove all Email footers.
)";
