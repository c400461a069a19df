#include "support/tree.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <grp.h>
#include <pwd.h>
#include <regex>
#include <sstream>
#include <sys/stat.h>

namespace {

constexpr std::size_t stamp_length = 12;
constexpr std::size_t short_content = 40;

bool is_printable(char character) {
    return std::isprint(static_cast<unsigned char>(character)) != 0 || character == '\n';
}

// ` "content"` of a short text, without its last line feed; nothing for any other.
std::string content_note(std::string content) {
    if (content.ends_with('\n')) {
        content.pop_back();
    }
    const bool is_shown = content.size() <= short_content &&
                          content.find('\n') == std::string::npos &&
                          std::all_of(content.begin(), content.end(), is_printable);
    return is_shown ? " \"" + content + "\"" : "";
}

std::string mode_of(const file_state &entry) {
    std::array<char, 8> mode{};
    std::snprintf(mode.data(), mode.size(), "%04o", entry.permissions());
    return mode.data();
}

std::string describe(const std::string &path, const file_state &entry) {
    const std::string line = mode_of(entry) + " " + path;
    if (S_ISDIR(entry.mode)) {
        return line + "/";
    }
    return line + (S_ISREG(entry.mode) ? content_note(entry.content) : " (special)");
}

bool has_time_stamp(const std::string &line) {
    static const std::regex stamp(R"([ \d]\d \d\d:\d\d:\d\d )");
    return std::regex_search(line, stamp, std::regex_constants::match_continuous);
}

bool follows_a_directory(std::string_view line) {
    return line.starts_with("Info:  Copying ") || line.starts_with("Info:  created directory ") ||
           line.starts_with("Info:  Can't create ");
}

} // namespace

file_state state_of(const std::string &path) {
    struct stat entry {};
    if (::lstat(path.c_str(), &entry) != 0) {
        return {};
    }
    return {entry.st_mode, entry.st_uid, entry.st_gid,
            S_ISREG(entry.st_mode) ? read_file(path) : ""};
}

std::string mode_of(const std::string &path) {
    return mode_of(state_of(path));
}

std::string owner_of(const std::string &path) {
    const file_state entry = state_of(path);
    return std::to_string(entry.user) + ":" + std::to_string(entry.group);
}

tree_state states_of(const std::vector<std::string> &paths) {
    tree_state states;
    for (const std::string &path : paths) {
        states[path] = state_of(path);
        if (S_ISDIR(states[path].mode)) {
            for (const auto &entry : std::filesystem::recursive_directory_iterator(path)) {
                states[entry.path()] = state_of(entry.path());
            }
        }
    }
    return states;
}

std::string tree_of(const std::string &directory) {
    tree_state states = states_of({directory});
    states.erase(directory);
    std::string lines;
    for (const auto &[path, entry] : states) {
        lines += describe(path, entry) + "\n";
    }
    return lines;
}

std::string tree_of(const world &host, const std::string &directory) {
    return host.shown(tree_of(directory));
}

std::string site_tree(const world &host) {
    return tree_of(host, "cgi-bin") + tree_of(host, "html") + tree_of(host, "spool");
}

std::string not_owned(const std::string &directory) {
    const passwd *user = ::getpwnam("nobody");
    const group *override_group = ::getgrnam("nobody");
    if (user == nullptr) {
        return "there is no user nobody";
    }
    const gid_t group_wanted = override_group != nullptr ? override_group->gr_gid : user->pw_gid;
    std::string lines;
    for (const auto &[path, entry] : states_of({directory})) {
        const bool is_owned = entry.user == user->pw_uid && entry.group == group_wanted;
        lines += is_owned ? "" : path + "\n";
    }
    return lines;
}

std::string shown_file(const world &host, const std::string &path) {
    return host.shown(read_file(path));
}

std::string shown_log(const world &host, const std::string &path) {
    std::istringstream text(shown_file(host, path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(has_time_stamp(line) ? line.substr(stamp_length) : "(no stamp)" + line);
    }
    auto from = lines.begin();
    while (from != lines.end()) {
        const auto to = std::find_if_not(from, lines.end(), follows_a_directory);
        std::sort(from, to);
        from = to == lines.end() ? to : to + 1;
    }
    std::string result;
    for (const std::string &line : lines) {
        result += line + "\n";
    }
    return result;
}

std::string shown_log_without(const world &host, const std::string &path,
                              const std::vector<std::string_view> &left_out) {
    std::istringstream text(shown_log(host, path));
    std::string result;
    for (std::string line; std::getline(text, line);) {
        const auto is_in_line = [&line](std::string_view part) {
            return line.find(part) != std::string::npos;
        };
        if (std::none_of(left_out.begin(), left_out.end(), is_in_line)) {
            result += line + "\n";
        }
    }
    return result;
}

std::string set_numbers::named(const std::string &text) const {
    std::istringstream lines(text);
    std::string result;
    for (std::string line; std::getline(lines, line);) {
        for (std::size_t number = 0; number < sets_.size(); number++) {
            const std::string begin = "tpl_set " + std::to_string(number + 1) + " ";
            if (line.starts_with(begin) && line.ends_with(" " + sets_[number] + " Set")) {
                line.replace(0, begin.size(), "tpl_set {" + sets_[number] + "} ");
            }
        }
        result += line + "\n";
    }
    return result;
}
