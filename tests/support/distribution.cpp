#include "support/distribution.h"

#include "products/product.h"
#include "support/scratch_directory.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>
#include <vector>

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

const std::vector<std::string> files_of_all = {"menu.js", "menu.vbs", "wap/wml/index.tpl",
                                               "wap/common/words.dat"};
const std::vector<std::string> flat_files = {"tpl/words.dat", "tpl/logo.gif", "tpl/back.jpg",
                                             "tpl/bell.wav"};
const std::vector<std::string> plain_templates = {"tpl/index.tpl", "tpl/head.tpl"};
const std::vector<std::string> set_files = {
    "tpl/marble/index.tpl", "tpl/blue/index.tpl", "tpl/common/head.tpl", "tpl/common/words.dat",
    "img/marble/logo.gif",  "img/blue/logo.gif",  "img/common/bell.wav", "manuals/index.html"};

void add_files(const std::vector<std::string> &paths, const std::string &mark) {
    for (const std::string &path : paths) {
        add_file("dist/" + path, mark + " " + path);
    }
}

} // namespace

std::vector<std::string> product_names() {
    std::vector<std::string> names;
    for (const product &one : products) {
        names.emplace_back(one.name);
    }
    return names;
}

bool has_sets(std::string_view name) {
    return std::any_of(products.begin(), products.end(), [name](const product &one) {
        return one.name == name && one.has_template_sets;
    });
}

void unpack_release(const std::string &product, const sample_release &release) {
    for (const std::string directory : {"tpl", "img", "manuals", "wap"}) {
        std::filesystem::remove_all("dist/" + directory);
    }
    add_program("dist/" + product + ".cgi", "Version: release v" + release.version + "\n");
    add_file("dist/" + product + ".ini", release.settings);
    add_file("dist/merlin.ini", release.merlin_settings);
    add_file("dist/gxsetup", "the setup program");
    add_file("dist/vsetup.hlp", help_texts);
    add_files(files_of_all, release.mark);
    if (has_sets(product)) {
        add_files(set_files, release.mark);
        return;
    }
    add_files(flat_files, release.mark);
    if (release.has_plain_templates) {
        add_files(plain_templates, release.mark);
    }
}

void add_file(const std::string &path, std::string_view content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    write_file(path, content);
    ::chmod(path.c_str(), 0644);
}

void add_script(const std::string &path, std::string_view commands) {
    add_file(path, "#!/bin/sh\n" + std::string(commands));
    ::chmod(path.c_str(), 0755);
}

void add_program(const std::string &path, std::string_view output) {
    add_script(path,
               "[ \"$1\" = -version ] || exit 1\ncat <<'END'\n" + std::string(output) + "END\n");
}
