#include "support/world.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>

world::world(std::string product) : product_(std::move(product)) {
    ::umask(022);
    for (const char *directory : {"dist", "cgi-bin", "html", "spool"}) {
        std::filesystem::create_directory(directory);
        ::chmod(directory, 0755);
    }
    unpack_release(product_, {.version = "3.2a",
                              .mark = "new",
                              .settings = "# sample of " + product_ +
                                          "\n"
                                          "domain sample.example\n"
                                          "timeout 30\n"
                                          "tpl_set 7 of the sample\n",
                              .merlin_settings = "# sample of merlin\n"
                                                 "templates /sample\n"
                                                 "deck 12\n"
                                                 "tpl_set 8 of the sample\n"});
    if (has_sets(product_)) {
        add_file("dist/tpl/marble/head.tpl", "replaced by the common one");
    }
    add_answers(*this, "dist/gxdflt.dat",
                "cgi_path @/cgi-bin\n"
                "vlimg_dir @/html/vlimg\n"
                "templates @/spool/" +
                    product_ + "\n");
}

std::string world::shown(std::string_view text) const {
    return replaced(std::string(text), root(), "@");
}

std::string world::meant(std::string_view text) const {
    return replaced(std::string(text), "@", root());
}

void shell(const std::string &commands) {
    EXPECT_EQ(std::system(("set -e\n" + commands).c_str()), 0) << commands;
}

void add_answers(const world &host, const std::string &path, std::string_view lines) {
    add_file(path, host.meant(lines));
}

std::vector<std::string> listed_names(const std::string &directory) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR *)> handle(::opendir(directory.c_str()), &::closedir);
    if (!handle) {
        throw std::runtime_error("cannot list " + directory);
    }
    while (const dirent *entry = ::readdir(handle.get())) {
        const std::string name = &entry->d_name[0];
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    return names;
}

std::vector<std::string> set_names(const std::string &directory) {
    std::vector<std::string> names = listed_names(directory);
    std::erase_if(names, [&](const std::string &name) {
        return name == "common" || !std::filesystem::is_directory(directory + "/" + name);
    });
    return names;
}

std::string set_number(const std::string &directory, std::string_view set) {
    const std::vector<std::string> names = set_names(directory);
    const auto found = std::find(names.begin(), names.end(), set);
    return std::to_string(found - names.begin() + 1);
}
