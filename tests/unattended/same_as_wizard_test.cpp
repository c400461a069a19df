// An unattended run and the wizard, fed with the same answers in their order, leave the same files,
// modes, owners and logs. Worlds and answers are random, from a fixed seed, and each run may write
// in its world only.

#include "support/private_mounts.h"
#include "unattended/unattended_run.h"
#include "wizard/releases.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <unistd.h>

namespace {

// For run_place::prepare: leaves the world as the one place that may be written to.
std::function<void()> shut_in_world(const world &host) {
    return [root = host.root()] {
        if (!shut_in(root)) {
            ::_exit(126);
        }
    };
}

// A random choice of what is there and what is answered.
class scenario {
  public:
    explicit scenario(unsigned seed) : random_(seed) {
        product = pick(product_names());
        is_installed = chance();
        if (!is_installed || chance(4)) {
            choose_installation();
        } else if (chance()) {
            choose_upgrade();
        } else {
            choose_removal();
        }
        add("vlimg_dir", std::array{"@/html/vlimg", "@/html/vlimg", "@/html/new/pictures"}, true);
    }

    std::string product;
    bool is_installed;
    std::vector<std::string> arguments;

  private:
    bool chance(unsigned of = 2) { return random_() % of == 0; }

    template <class Texts>
    std::string pick(const Texts &texts) {
        return texts[random_() % texts.size()];
    }

    // Names an answer, in every other scenario unless it always must be.
    template <class Texts>
    void add(const std::string &name, const Texts &values, bool always = false) {
        if (always || chance()) {
            arguments.push_back(name + "=" + pick(values));
        }
    }

    void choose_installation() {
        arguments.emplace_back("install");
        add("cgi_path", std::array{"@/cgi-bin", "@/html", "@/none"});
        add("templates", std::array{"@/spool/new/tpl", "@/spool/", "spool"});
        add("domain", std::array{"example.org", "10.0.0.1", "%s%n"});
        add("vlimg", std::array{"/pictures", "relative", " /blank"});
        add(product == "tanager" ? "imaphost" : "pophost", std::array{"a.example", "b.example"});
        add("wml", words);
        add("keep_originals", words);
        add("delete_temporary", words);
        if (has_sets(product) && chance()) {
            arguments.insert(arguments.end(), {"restrict_hosts=yes", "allow_host_login=a.example",
                                               "allow_host_login= b.example "});
        }
    }

    void choose_upgrade() {
        arguments.emplace_back("upgrade");
        for (const char *name : {"replace_templates", "wml", "view_list", "replace_safe",
                                 "keep_originals", "delete_temporary"}) {
            add(name, words);
        }
        add("templates", std::array{"@/spool/none", "@/spool"});
    }

    void choose_removal() {
        arguments.emplace_back("remove");
        for (const char *name :
             {"remove_programs", "remove_images", "remove_users", "remove_templates"}) {
            add(name, words);
        }
        add("workarea", std::array{"@/spool/area", "@/spool/none"});
    }

    static constexpr std::array words = {"yes", "no", "Y", "n", "NO"};

    std::mt19937 random_;
};

std::unique_ptr<world> world_of(const scenario &chosen) {
    auto host = std::make_unique<world>(chosen.product);
    if (chosen.is_installed) {
        install_31_and_unpack_32(*host);
        add_file("spool/" + chosen.product + "/u_ann/mail", "mail");
        add_file("spool/area/u_bob/mail", "mail");
    }
    return host;
}

// What was typed at a terminal that shows the transcript: what follows the last "? " of a line that
// has one, the lines of a list of hosts, enter at a pause.
std::string typed_in(const std::string &transcript) {
    std::string answers;
    std::istringstream lines(transcript);
    std::string line;
    bool is_list = false;
    while (std::getline(lines, line)) {
        const std::size_t prompt = line.rfind("? ");
        if (is_list) {
            answers += line + "\n";
            is_list = line != ".";
        } else if (line.starts_with("Enter a host and press enter")) {
            is_list = true;
        } else if (line.starts_with("Please press enter to continue")) {
            answers += "\n";
        } else if (prompt != std::string::npos) {
            answers += line.substr(prompt + 2) + "\n";
        }
    }
    return answers;
}

} // namespace

class SameAsWizard : public testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Unattended, SameAsWizard, testing::Range(1U, 41U));

TEST_P(SameAsWizard, LeavesTheSameFilesAndLog) {
    if (!can_mount()) {
        GTEST_SKIP() << "a mount namespace of one's own needs root";
    }
    const scenario chosen(GetParam());
    SCOPED_TRACE(chosen.product + " " + testing::PrintToString(chosen.arguments));
    std::string unattended_state;
    wizard_run unattended;
    {
        const auto host = world_of(chosen);
        const std::string before = state_of(*host);
        unattended = run_unattended(*host, chosen.arguments,
                                    {.prepare = shut_in_world(*host), .status = std::nullopt});
        unattended_state = state_of(*host);
        ASSERT_LE(unattended.status, 3);
        if (unattended.status > 1) {
            EXPECT_EQ(unattended_state, before);
            return;
        }
    }
    const auto host = world_of(chosen);
    const wizard_run wizard = run_wizard(*host, {}, typed(typed_in(unattended.transcript) + "\n"),
                                         {.prepare = shut_in_world(*host)});
    EXPECT_EQ(state_of(*host), unattended_state)
        << wizard.transcript << "\ntyped:\n"
        << typed_in(unattended.transcript) << unattended.transcript;
}
