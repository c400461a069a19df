#include "core/paths.h"

#include "core/text.h"

#include <cctype>
#include <cerrno>
#include <cstring>

namespace {

bool is_file_character(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
           std::string_view("._*-#:/@%").find(character) != std::string_view::npos;
}

bool has_text(const char *text) {
    return text != nullptr && *text != '\0';
}

} // namespace

std::string path_in(const char *directory, const char *name) {
    return formatted("%s%c%s", directory, '/', name);
}

std::string path_in(const std::string &directory, const char *name) {
    return path_in(directory.c_str(), name);
}

std::string shown_path(const char *path, int error) {
    constexpr std::size_t shown_length = 400;
    const std::string_view whole = path;
    if (error != ENAMETOOLONG || whole.size() <= shown_length) {
        return path;
    }
    return std::string(whole.substr(0, shown_length)).append("...");
}

bool is_dot_entry(std::string_view name) {
    return name == "." || name == "..";
}

int check_for_root(const char *path) {
    return path != nullptr && *path == '/' ? 1 : 0;
}

const char *clean_up_root(const char *text) {
    return text != nullptr ? text + std::strcspn(text, "/") : nullptr;
}

const char *strip_directory(const char *path) {
    const char *separator = std::strrchr(path, '/');
    return separator != nullptr ? separator + 1 : path;
}

char *rmv_end_sep(const char *path) {
    static path_text result;
    result.assign(path);
    if (result.view().ends_with('/')) {
        result.assign(result.view().substr(0, result.view().size() - 1));
    }
    return result.data();
}

char *add_end_sep(const char *path) {
    static path_text result;
    result.assign(path);
    if (!result.view().ends_with('/')) {
        result.append("/");
    }
    return result.data();
}

char *valid_file(const char *file) {
    static path_text result;
    const std::string_view text = file != nullptr ? file : "";
    std::string kept;
    // Required: the bound is on what is read, not on what is kept.
    for (const char character : text.substr(0, path_text::capacity)) {
        if (character == ' ') {
            kept.push_back('_');
        } else if (is_file_character(character)) {
            kept.push_back(character);
        }
    }
    result.assign(kept);
    return result.data();
}

char *attach_path(const char *work_path, const char *file) {
    static path_text result;
    const std::string_view name = has_text(file) ? valid_file(file) : "";
    if (!has_text(work_path)) {
        result.assign(name);
        return result.data();
    }
    path_text directory(work_path);
    // One "/" at the seam, wherever it comes from.
    if (!directory.view().ends_with('/')) {
        if (!name.starts_with('/')) {
            directory.append("/");
        }
    } else if (name.starts_with('/')) {
        directory.assign(directory.view().substr(0, directory.view().size() - 1));
    }
    // Required: a name like x:name follows the directory without a "/".
    if (name.size() > 1 && name[1] == ':') {
        directory.assign(directory.view().substr(0, directory.view().size() - 1));
    }
    result.assign(directory.view()).append(name);
    return result.data();
}

char *attach_ext(const char *path_file, const char *ext) {
    static path_text result;
    result.assign(path_file);
    if (path_file != nullptr && ext != nullptr) {
        if (*ext != '.') {
            result.append(".");
        }
        result.append(ext);
    }
    return result.data();
}

char *strip_ext(const char *in) {
    static path_text result;
    result.assign(in);
    const std::string_view text = result.view();
    const std::size_t dot = text.rfind('.');
    // Required: the dot of a directory counts too, and "..", "a." and "a.." keep theirs.
    if (dot != std::string_view::npos) {
        const bool is_final = dot + 1 == text.size();
        if (!is_final || (dot > 1 && text[dot - 1] != '.')) {
            result.assign(text.substr(0, dot));
        }
    }
    return result.data();
}

char *strip_path(const char *in, int rm_extend) {
    static path_text result;
    const std::string_view path = in != nullptr ? in : "";
    result.assign(path.substr(path.rfind('/') + 1));
    if (rm_extend != 0) {
        result.assign(strip_ext(result.c_str()));
    }
    return result.data();
}

char *strip_filename(const char *in) {
    static path_text result;
    const std::string_view path = in != nullptr ? in : "";
    result.assign(path.substr(0, path.rfind('/') + 1));
    return result.empty() ? nullptr : result.data();
}

char *remove_path(const char *path, int want_remove) {
    static path_text result;
    result.assign(want_remove != 0 ? strip_path(path, 0) : strip_filename(path));
    return result.empty() ? nullptr : result.data();
}
