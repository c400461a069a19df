// A system that refuses a call: each flow with one call after the other made to fail. Whatever it
// is, the program goes on to an orderly end, leaves alone what is not its own, replaces files whole
// or not at all, and tells what failed.

#include "support/system_calls.h"
#include "support/tree.h"
#include "wizard/releases.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

// A flow of the program. No answer is an empty line: where a call that fails leads to another
// question, the answers behind it are refused there, and no built-in directory is ever taken.
struct flow {
    const char *name;
    const char *product;
    void (*prepare)(const world &host);
    session_script script;
    std::vector<std::string> replaced;      // files that are replaced whole or not at all
    std::vector<session_script> parts = {}; // what the flow has done when a part of it failed
};

void leave_as_unpacked(const world & /*host*/) {}

void prepare_upgrade(const world &host) {
    install_31_and_unpack_32(host, "yes");
}

void prepare_removal(const world &host) {
    install_31_and_unpack_32(host, "yes");
    add_file("spool/kestrel/u_ann/mail", "mail\n");
}

void prepare_stamping(const world & /*host*/) {
    fs::remove_all("dist/tpl");
    add_file("dist/tpl/index.tpl", "<html>\n");
    add_file("dist/tpl/head.tpl", "||header: modified=false tpl_set=old tpl_version=1||\n<head>\n");
}

void PrintTo(const flow &shown, std::ostream *stream) {
    *stream << shown.name;
}

const std::vector<flow> flows = {
    {"InstallFlat",
     "kestrel",
     leave_as_unpacked,
     {{},
      "9\n1\n@/cgi-bin\n@/spool/kestrel\n@/html/vlimg\n/vlimg\nexample.com\npop.example.com\n"
      "smtp.example.com\nyes\nno\nyes\nyes\nend\n"},
     {"cgi-bin/kestrel.ini", "cgi-bin/merlin.ini", "dist/gxsetup.dat"}},
    {"InstallSets",
     "tanager",
     leave_as_unpacked,
     {{},
      "9\n1\n@/cgi-bin\n@/spool/tanager\n@/spool/tanager/manuals\n@/spool/tanager/bulletins\n"
      "@/html/vlimg\n/vlimg\nexample.com\nimap.example.com\nno\nsmtp.example.com\nyes\nno\nyes\n"
      "no\nend\n"},
     {"cgi-bin/tanager.ini", "cgi-bin/merlin.ini", "dist/gxsetup.dat"}},
    {"UpgradeKeepingTemplates",
     "kestrel",
     prepare_upgrade,
     {{},
      "9\n2\nno\n@/cgi-bin\n@/spool/kestrel\n@/html/vlimg\n/vlimg\nyes\nno\nyes\nyes\non\nyes\n"
      "no\nend\n"},
     {"cgi-bin/kestrel.ini", "cgi-bin/kestrel.new", "cgi-bin/merlin.ini", "dist/gxsetup.dat",
      "dist/tmptlist.txt"}},
    {"UpgradeReplacingSets",
     "osprey",
     prepare_upgrade,
     {{}, "9\n2\nyes\n@/cgi-bin\n@/spool/osprey\n@/html/vlimg\n/vlimg\nyes\nno\nyes\nno\nend\n"},
     {"cgi-bin/osprey.ini", "cgi-bin/osprey.new", "cgi-bin/merlin.ini", "dist/gxsetup.dat"}},
    {"Remove",
     "kestrel",
     prepare_removal,
     {{},
      "9\n3\n@/cgi-bin\nyes\nyes\n@/html/vlimg\nyes\n@/spool/kestrel\nyes\n@/spool/kestrel\nyes\n"
      "end\n"},
     {"dist/gxsetup.dat"}},
    {"StampHeaders",
     "kestrel",
     prepare_stamping,
     {{"-header"}, "@/dist/tpl\nkst_s2\n2.0a\n@/dist/tpl\nend\n"},
     {"dist/tpl/index.tpl", "dist/tpl/head.tpl"},
     {{{"-header"}, "@/dist/tpl\nkst_s2\n2.0a\nq\n"}, {{"-checksum"}, "@/dist/tpl\nend\n"}}},
    {"StampChecksums",
     "kestrel",
     prepare_stamping,
     {{"-checksum"}, "@/dist/tpl\nend\n"},
     {"dist/tpl/index.tpl", "dist/tpl/head.tpl"}},
    {"MakeDefaults",
     "kestrel",
     leave_as_unpacked,
     {{"-make"},
      "3.2a\nkestrel\nUNIX\nyes\n@/spool\n@/html/vlimg\n@/cgi-bin\nyes\nexample.com\n"
      "pop.example.com\nsmtp.example.com\nno\ngxdflt\nend\n"},
     {"dist/gxdflt.dat"}},
};

const std::vector<std::string> all_directories = {"dist", "cgi-bin", "html", "spool", "elsewhere"};

// What is none of the program's business, beside the site and in the middle of it.
const std::vector<std::string> bystanders = {"elsewhere", "spool/mail", "cgi-bin/counter.cgi",
                                             "html/index.html"};

void add_bystanders() {
    add_file("elsewhere/letter", "dear reader\n");
    add_file("elsewhere/deep/down/notes", "notes\n");
    add_file("cgi-bin/counter.cgi", "a program\n");
    add_file("html/index.html", "a page\n");
    add_file("spool/mail/ann", "mail\n");
    ::chmod("elsewhere/deep", 0711);
    ::chmod("spool/mail/ann", 0600);
}

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// The system's text for the error, from strace's line of the call.
std::string error_of(const std::string &call) {
    const std::size_t from = call.find('(', call.rfind(" = -1 ")) + 1;
    return call.substr(from, call.find(')', from) - from);
}

// Files that only help another one into being.
bool is_scratch(std::string_view name) {
    constexpr std::string_view pattern = "gxsetup.XXXXXX";
    return (name.starts_with("gxsetup.") && name.size() == pattern.size()) || name == "temp.tpl" ||
           name == "ver.txt" || name.ends_with(".tmp");
}

// Whether no file can be made beside another one: that one is written itself then.
bool leads_to_the_file_itself(const std::string &call) {
    return call.starts_with("openat(") && holds(call, "\"gxsetup.") && holds(call, "O_EXCL") &&
           holds(call, " EACCES ");
}

// The name of the file that a call is about: the path it is given, or the descriptor's.
std::string file_of(const std::string &call) {
    const std::size_t quote = call.find('"');
    const bool has_path =
        quote != std::string::npos && !call.starts_with("write") && call.at(quote + 1) != '"';
    const std::size_t from = has_path ? quote + 1 : call.find('<') + 1;
    return fs::path(call.substr(from, call.find(has_path ? '"' : '>', from) - from)).filename();
}

bool is_one_of(std::string_view text, std::initializer_list<std::string_view> beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [text](std::string_view one) { return text.starts_with(one); });
}

// Words of which a message must hold one when this call fails; none where the failure loses nothing
// or is passed over on purpose (owners, modes of copies, directories, existence tests).
std::vector<std::string> words_for(const system_call &call, const std::string &refused) {
    const std::string file = file_of(refused);
    const bool is_log = file.ends_with(".log");
    if (is_one_of(call.name, {"clone", "vfork"})) {
        return {error_of(refused)};
    }
    if (call.name == "write" && is_log) {
        return {"Error printing to log file"};
    }
    // What was replaced was never written.
    const bool is_loss = (call.is_on_written && !holds(refused, ">(deleted)")) ||
                         is_one_of(call.name + "(", {"write", "ftruncate", "rename", "unlinkat",
                                                     "rmdir", "getdents", "read("});
    // Nothing is lost where a left-over stays.
    const bool is_left_over = is_scratch(file) && call.name == "unlinkat";
    if (!is_loss || is_log || is_left_over || file.ends_with(".tmp") || file == "ver.txt" ||
        holds(refused, "<pipe:")) {
        return {};
    }
    // Some messages have no room for the system's text.
    return {error_of(refused), "Can't open " + file, "Can't open @/cgi-bin/",
            "cannot write to gxdflt.dat"};
}

// All of the calls, or so many from the beginning, the middle and the end.
std::vector<system_call> chosen(const std::vector<system_call> &calls, std::ptrdiff_t part) {
    if (std::ssize(calls) <= 3 * part) {
        return calls;
    }
    std::mt19937 random(20);
    std::vector<system_call> result(calls.begin(), calls.begin() + part);
    std::sample(calls.begin() + part, calls.end() - part, std::back_inserter(result), part, random);
    result.insert(result.end(), calls.end() - part, calls.end());
    return result;
}

// What the call may fail with.
std::vector<std::string> errors_of(const std::string &name) {
    static const std::map<std::string, std::vector<std::string>> errors = {
        {"openat", {"EACCES", "EMFILE", "ENOSPC", "EIO"}},
        {"write", {"ENOSPC", "EIO", "EDQUOT"}},
        {"close", {"EIO", "ENOSPC", "EDQUOT"}},
        {"mkdir", {"ENOSPC", "EROFS", "EACCES"}},
        {"rename", {"EIO", "EXDEV", "EROFS"}},
        {"clone3", {"EAGAIN", "ENOMEM"}},
        {"clone", {"EAGAIN", "ENOMEM"}},
        {"vfork", {"EAGAIN", "ENOMEM"}},
        {"wait4", {"EINTR"}}, // there is a child to wait for
        {"chown", {"EPERM", "EROFS"}},
        {"fchown", {"EPERM", "EDQUOT"}},
    };
    const auto found = errors.find(name);
    return found == errors.end() ? std::vector<std::string>{"EIO", "EACCES"} : found->second;
}

class RefusedCall : public testing::TestWithParam<flow> {
  protected:
    RefusedCall() : host_(GetParam().product) {}

    void SetUp() override {
        if (!can_refuse_calls()) {
            GTEST_SKIP() << "calls can be refused only where strace is and may trace";
        }
        GetParam().prepare(host_);
        // The same version as typed where the program does not tell.
        add_program("dist/" + host_.product() + ".cgi", "Version: release v9\n");
        add_bystanders();
        fs::create_directory("before");
        for (const std::string &directory : all_directories) {
            ASSERT_EQ(std::system(("cp -a " + directory + " before").c_str()), 0);
        }
        restore();
        before_ = states_of(all_directories);
        for (const system_call &call : calls_of(host_, GetParam().script)) {
            kinds_[call.name].push_back(call);
        }
        whole_ = {before_, states_of(all_directories)};
        for (const session_script &part : GetParam().parts) {
            restore();
            run_wizard(host_, part.arguments, typed(part.answers));
            whole_.push_back(states_of(all_directories));
        }
    }

    void restore() {
        for (const std::string &directory : all_directories) {
            fs::remove_all(directory);
        }
        ASSERT_EQ(std::system("cp -a before/. ."), 0);
    }

    // Makes the call fail, which must be told.
    void refuse(const system_call &call, const std::string &error) {
        restore();
        const refused_run refused = run_with_refused_call(host_, GetParam().script, call, error);
        SCOPED_TRACE(refused.call);
        ASSERT_NE(refused.call, "") << call.text;
        const std::string told = expect_order(refused);
        const std::vector<std::string> words = words_for(call, refused.call);
        const tree_state now = states_of(all_directories);
        EXPECT_TRUE(words.empty() ||
                    std::any_of(words.begin(), words.end(),
                                [&](const std::string &word) { return holds(told, word); }) ||
                    (leads_to_the_file_itself(refused.call) && has_lost_nothing(now)))
            << told;
        expect_bystanders(now);
        expect_whole_files(now, refused.call);
        expect_no_scratch(now, refused.call);
    }

    // Makes the call and all of its name behind it fail.
    void refuse_from(const system_call &call, const std::string &error) {
        restore();
        const refused_run refused = run_with_refused_calls(host_, GetParam().script, call, error);
        SCOPED_TRACE("from there on: " + refused.call);
        ASSERT_NE(refused.call, "") << call.text;
        expect_order(refused);
        const tree_state now = states_of(all_directories);
        expect_bystanders(now);
        expect_whole_files(now, refused.call);
    }

  private:
    // Gives all that the run told.
    std::string expect_order(const refused_run &refused) const {
        const std::string log = shown_log(host_, "dist/gxsetup.log");
        std::string told = refused.run.transcript + refused.run.errors + log;
        EXPECT_EQ(refused.run.status, 0) << told;
        EXPECT_FALSE(holds(told, "Sanitizer") || holds(told, "runtime error")) << told;
        return told;
    }

    void expect_bystanders(const tree_state &now) const {
        for (const std::string &path : bystanders) {
            for (auto was = before_.lower_bound(path);
                 was != before_.end() && was->first.starts_with(path); was++) {
                const auto is = now.find(was->first);
                EXPECT_TRUE(is != now.end() && is->second == was->second) << was->first;
            }
        }
    }

    // Whether every file but the logs is as an undisturbed run leaves it.
    bool has_lost_nothing(const tree_state &now) const {
        const tree_state &undisturbed = whole_.at(1);
        return std::all_of(undisturbed.begin(), undisturbed.end(), [&](const auto &entry) {
            return entry.first.ends_with(".log") || is_like(now, undisturbed, entry.first);
        });
    }

    // Files that are replaced: each as it was, or as a run leaves it that is not disturbed. (A call
    // on another file may change what is to be written into them.)
    void expect_whole_files(const tree_state &now, const std::string &call) const {
        const std::string file = file_of(call);
        for (const std::string &path : GetParam().replaced) {
            const std::string directory = fs::path(path).parent_path();
            if (file == fs::path(path).filename() ||
                (is_scratch(file) && holds(call, "<@/" + directory + ">"))) {
                EXPECT_TRUE(std::any_of(whole_.begin(), whole_.end(), [&](const tree_state &state) {
                    return is_like(now, state, path);
                })) << path;
            }
        }
    }

    // The owner may be another one: whether it can be changed is not asked.
    static bool is_like(const tree_state &now, const tree_state &then, const std::string &path) {
        const auto is = now.find(path);
        const auto was = then.find(path);
        if (is == now.end() || was == then.end()) {
            return is == now.end() && was == then.end();
        }
        return is->second.mode == was->second.mode && is->second.content == was->second.content;
    }

    static void expect_no_scratch(const tree_state &now, const std::string &call) {
        // What cannot be removed stays; what cannot be opened is left alone.
        if (is_one_of(call, {"unlink", "openat"}) && is_scratch(file_of(call))) {
            return;
        }
        for (const auto &[path, state] : now) {
            EXPECT_FALSE(is_scratch(fs::path(path).filename().native())) << path;
        }
    }

  protected:
    world host_;
    std::map<std::string, std::vector<system_call>> kinds_; // by name
    tree_state before_;
    std::vector<tree_state> whole_; // before a run, after an undisturbed one, after a part of it
};

// A disk that is full from then on, a table of open files that stays full.
TEST_P(RefusedCall, AndAllOfItsKindBehindItEndInOrderToo) {
    for (const char *name : {"openat", "write", "read"}) {
        const std::vector<std::string> errors = errors_of(name);
        for (const system_call &call : chosen(kinds_[name], 1)) {
            refuse_from(call, errors.front());
        }
    }
}

TEST_P(RefusedCall, IsToldAndLosesNothingElse) {
    for (const auto &[name, calls] : kinds_) {
        const std::vector<std::string> errors = errors_of(name);
        // Little can come of what is passed over on purpose.
        const bool is_passed_over = is_one_of(
            name, {"chmod", "fchmod", "chown", "fchown", "mkdir", "readlink", "newfstatat"});
        std::size_t turn = 0;
        for (const system_call &call : chosen(calls, is_passed_over ? 1 : 2)) {
            refuse(call, errors[turn++ % errors.size()]);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Flows, RefusedCall, testing::ValuesIn(flows),
                         [](const testing::TestParamInfo<flow> &one) { return one.param.name; });

} // namespace
