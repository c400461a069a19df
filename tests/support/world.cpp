#include "support/world.h"

#include <algorithm>
#include <dirent.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr std::string_view help_texts = "# help of the tests\n"
                                        "[ARG_HELP]\n"
                                        "Start gxsetup without an argument.\n"
                                        "\n"
                                        "[I_CGI_HELP]\n"
                                        "\tThe directory of the web server's programs.\n"
                                        "\n"
                                        "[NO_HELP]\n"
                                        "There is nothing to say about this question.\n"
                                        "\n";

bool has_sets(std::string_view product) {
    return product == "tanager" || product == "osprey";
}

void replace_all(std::string &text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

void add_flat_product() {
    add_file("dist/tpl/index.tpl", "index template\n");
    add_file("dist/tpl/head.tpl", "head template\n");
    add_file("dist/tpl/words.dat", "words\n");
    add_file("dist/tpl/logo.gif", "logo picture");
    add_file("dist/tpl/back.jpg", "back picture");
    add_file("dist/tpl/bell.wav", "bell sound");
}

void add_set_product() {
    add_file("dist/tpl/marble/index.tpl", "marble index\n");
    add_file("dist/tpl/marble/head.tpl", "marble head\n");
    add_file("dist/tpl/blue/index.tpl", "blue index\n");
    add_file("dist/tpl/common/head.tpl", "common head\n");
    add_file("dist/tpl/common/words.dat", "words\n");
    add_file("dist/img/marble/logo.gif", "marble logo");
    add_file("dist/img/blue/logo.gif", "blue logo");
    add_file("dist/img/common/bell.wav", "bell sound");
    add_file("dist/manuals/index.html", "manual\n");
}

} // namespace

world::world(std::string product) : product_(std::move(product)) {
    ::umask(022);
    for (const char *directory : {"dist", "cgi-bin", "html", "spool"}) {
        std::filesystem::create_directory(directory);
        ::chmod(directory, 0755);
    }
    add_program("dist/" + product_ + ".cgi", "Version: release v3.2a\n");
    add_file("dist/" + product_ + ".ini", "# sample of " + product_ +
                                              "\n"
                                              "domain sample.example\n"
                                              "timeout 30\n"
                                              "tpl_set 7 of the sample\n");
    add_file("dist/merlin.ini", "# sample of merlin\n"
                                "templates /sample\n"
                                "deck 12\n"
                                "tpl_set 8 of the sample\n");
    add_file("dist/gxsetup", "the setup program");
    add_file("dist/vsetup.hlp", help_texts);
    add_file("dist/menu.js", "menu script\n");
    add_file("dist/menu.vbs", "menu script too\n");
    add_file("dist/gxdflt.dat", meant("cgi_path @/cgi-bin\n"
                                      "vlimg_dir @/html/vlimg\n"
                                      "templates @/spool/") +
                                    product_ + "\n");
    add_file("dist/wap/wml/index.tpl", "deck\n");
    add_file("dist/wap/common/words.dat", "deck words\n");
    if (has_sets(product_)) {
        add_set_product();
    } else {
        add_flat_product();
    }
}

std::string world::shown(std::string_view text) const {
    std::string result(text);
    replace_all(result, root(), "@");
    return result;
}

std::string world::meant(std::string_view text) const {
    std::string result(text);
    replace_all(result, "@", root());
    return result;
}

void add_file(const std::string &path, std::string_view content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    write_file(path, content);
    ::chmod(path.c_str(), 0644);
}

void add_answers(const world &host, const std::string &path, std::string_view lines) {
    add_file(path, host.meant(lines));
}

void add_script(const std::string &path, std::string_view commands) {
    add_file(path, "#!/bin/sh\n" + std::string(commands));
    ::chmod(path.c_str(), 0755);
}

void add_program(const std::string &path, std::string_view output) {
    add_script(path,
               "[ \"$1\" = -version ] || exit 1\ncat <<'END'\n" + std::string(output) + "END\n");
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
