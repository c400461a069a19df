#include "dialogue/answers.h"

#include "core/format.h"
#include "core/text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

char *clean_up_answer(char *answer) {
    std::replace_if(
        answer, answer + std::strlen(answer),
        [](char character) { return character == '\r' || character == '\n'; }, '\0');
    return answer;
}

bool says_yes(const char *reply) {
    return s_stricmp(reply, "yes") == 0 || s_stricmp(reply, "y") == 0;
}

bool says_no(const char *reply) {
    // Required: "N" alone is an ordinary answer, "Y" a yes.
    return s_stricmp(reply, "no") == 0 || s_strcmp(reply, "n") == 0;
}

const char *strip_leading_spaces(const char *text) {
    return text + std::strspn(text, " \t");
}

int valid_dir_name(char *name) {
    char *word = name + std::strspn(name, " ");
    word[std::strcspn(word, " ")] = '\0';
    return *word == '\0' ? 1 : 0;
}

int num_perc(const char *text) {
    const char *percent = std::strchr(text + std::strspn(text, "0123456789"), '%');
    return percent == nullptr || percent[1] == '\0' ? 1 : 0;
}

char *clean_up_name(char *name) {
    name[std::strcspn(name, ".")] = '\0';
    return name;
}

char *get_label(const char *line) {
    path_text label;
    label.assign(std::string_view(line, std::strcspn(line, " ")));
    return maistrdup(label.c_str());
}

char *clean_up_set(char *line) {
    const char *from = line + std::strcspn(line, " ");
    if (*from == ' ') {
        from++;
    }
    char *to = line;
    while (*from != '\0') {
        if (from[0] == ' ' && from[1] == '/') {
            from += 2;
        } else if (*from == '\r' || *from == '\n') {
            from++;
        } else {
            *to++ = *from++;
        }
    }
    *to = '\0';
    return line;
}
