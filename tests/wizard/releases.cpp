#include "wizard/releases.h"

#include "wizard/screens.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The release of this number, whose .ini files tell it, too.
sample_release release_of(const std::string &number, const std::string &version) {
    return {.version = version,
            .mark = number,
            .settings = "timeout " + number + "\n",
            .merlin_settings = "deck " + number + "\n",
            .has_plain_templates = false};
}

std::string family(const world &host) {
    return host.product() == "kestrel" ? "kst_s2" : "plv_s2";
}

} // namespace

void add_templates(const world &host, const std::string &directory,
                   const std::vector<stamped_template> &templates) {
    std::filesystem::create_directories(directory);
    for (const stamped_template &one : templates) {
        add_file("stamps/" + one.name, one.text + "\n");
        const wizard_run run = run_wizard(host, {"-header"},
                                          in_order({{"templates [", "@/stamps"},
                                                    {"templates set[", one.set},
                                                    {"templates version[", one.version},
                                                    {"templates [", "@/stamps"}}),
                                          {.directory = "stamps"});
        std::filesystem::rename("stamps/" + one.name, directory + "/" + one.name);
        std::filesystem::remove_all("stamps");
    }
}

std::string template_text(const std::string &path) {
    const std::string content = read_file(path);
    const std::size_t from = content.find('\n') + 1;
    return content.substr(from, content.find('\n', from) - from);
}

void edit_by_hand(const std::string &path, std::string_view line) {
    std::ofstream(path, std::ios::app | std::ios::binary) << line << '\n';
}

void make_own(const std::string &path) {
    EXPECT_EQ(::chown(path.c_str(), ::geteuid(), ::getegid()), 0);
    EXPECT_EQ(::chmod(path.c_str(), 0644), 0);
}

void unpack_31(const world &host) {
    unpack_release(host.product(), release_of("31", "3.1a"));
    if (!has_sets(host.product())) {
        const std::string set = family(host);
        add_templates(host, "dist/tpl",
                      {{"clean.tpl", set, "2.0a", "old clean"},
                       {"edited.tpl", set, "2.0a", "old edited"},
                       {"moved.tpl", set, "2.0a", "old moved"},
                       {"same.tpl", set, "2.1", "old same"},
                       {"dropped.tpl", set, "2.5", "old dropped"}});
    }
}

void unpack_32(const world &host) {
    unpack_release(host.product(), release_of("32", "3.2a"));
    if (has_sets(host.product())) {
        add_file("dist/tpl/slate/index.tpl", "32 tpl/slate/index.tpl");
        add_file("dist/img/slate/logo.gif", "32 img/slate/logo.gif");
        add_file("dist/img/common/words.dat", "32 img/common/words.dat");
        return;
    }
    const std::string set = family(host);
    add_templates(host, "dist/tpl",
                  {{"clean.tpl", set, "2.1", "new clean"},
                   {"edited.tpl", set, "2.1", "new edited"},
                   {"moved.tpl", "pad_s1", "1.0", "new moved"},
                   {"same.tpl", set, "2.1", "new same"},
                   {"brandnew.tpl", set, "2.1", "brand new"}});
    add_file("dist/tpl/extra.gif", "32 tpl/extra.gif");
}

void install_31_and_unpack_32(const world &host, const std::string &wml) {
    unpack_31(host);
    const console_script answers = {{"merlin cgi", wml}, {"original templates", "no"}};
    const wizard_run run =
        run_wizard(host, {}, has_sets(host.product()) ? images_here + answers : answers);
    EXPECT_TRUE(
        run.transcript.ends_with("install successful\n\n.\nPlease press enter to quit...\n"))
        << run.transcript;
    edit_by_hand("spool/" + host.product() +
                     (has_sets(host.product()) ? "/marble/index.tpl" : "/edited.tpl"),
                 " by hand");
    unpack_32(host);
}
