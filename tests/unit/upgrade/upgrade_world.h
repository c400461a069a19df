// What the tests of the upgrade's modules share: a distribution in the current directory, an
// installation in another, and a store of answers that names both.
#pragma once

#include "setup/answer_store.h"
#include "unit/files/file_world.h"
#include "unit/templates/templates.h"

class UpgradeWorld : public FileWorld {
  protected:
    UpgradeWorld() {
        set_loglvl(LOG_ERROR);
        ini_init(&ini, emsg, dmsg);
        ini_setup(&ini, ans_values, ans_associations);
        set_answer(&ini, D_PROD_NAME, "kestrel");
        set_answer(&ini, D_INSTALL_DIR, installed().c_str());
        std::filesystem::create_directory("tpl");
    }

    ~UpgradeWorld() override { ini_clear(&ini); }

    // The installation, or the path of NAME in it.
    std::string installed(const std::string &name = "") const {
        return scratch.path(name.empty() ? "there" : "there/" + name);
    }

    static std::string header(const std::string &set, const std::string &version) {
        return "||header: modified=false tpl_set=" + set + " tpl_version=" + version + "||\n";
    }

    // A template as the stamping modes leave it.
    static std::string stamped(const std::string &set, const std::string &version,
                               const std::string &text) {
        const std::string content = header(set, version) + text + "\n";
        return content + formatted("\n||checksum=%d||\n", expected_checksum(content));
    }

    // How often `text` stands in `whole`.
    static int count_of(std::string_view text, std::string_view whole) {
        int count = 0;
        for (std::size_t at = whole.find(text); at != std::string_view::npos;
             at = whole.find(text, at + 1)) {
            count++;
        }
        return count;
    }

    ini_settings ini{};
};
