#include "unattended/unattended_run.h"

#include "support/tree.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

std::string state_of(const world &host) {
    std::vector<std::string> paths;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(host.root())) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::string text;
    for (const std::string &path : paths) {
        struct stat entry {};
        ::lstat(path.c_str(), &entry);
        text += host.shown(path) + " " + std::to_string(entry.st_mode) + " " +
                std::to_string(entry.st_uid) + " " + std::to_string(entry.st_gid) + "\n";
        if (path.ends_with(".log")) {
            text += shown_log(host, path);
        } else if (S_ISREG(entry.st_mode)) {
            text += shown_file(host, path) + "\n";
        }
    }
    return text;
}
