#include "setup/product_ini.h"

#include "core/console.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/program.h"
#include "core/stream.h"
#include "core/text.h"
#include "dialogue/answer_source.h"
#include "dialogue/question.h"
#include "files/operations.h"
#include "products/product.h"
#include "setup/product.h"
#include "setup/questionnaire.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

namespace {

// How lines begin that the sample may hold but this writer writes itself. "imaphos", without the t,
// is required.
constexpr std::array<std::string_view, 9> replaced_keys = {
    "domain",   "pophost", "imaphos",       "smtphost",        "templates",
    "workarea", "vlimg",   "bulletin_path", "allow_host_login"};
constexpr std::string_view sets_key = "tpl_set";

// The rules by which a product's file is written.
struct ini_rules {
    bool is_imap;
    bool replaces_sets; // the sample's template sets give way to the chosen ones
    bool is_wml;
    bool is_later_style; // the distribution is of a product with template sets, or its WML part
    answer_position sets;
};

ini_rules rules_for(const char *prod) {
    const int found = prod_guess();
    const bool is_wml = s_stricmp(prod, wml_product) == 0;
    const bool has_sets = has_template_sets(prod);
    return {.is_imap = is_imap_product(prod),
            .replaces_sets = has_sets || is_wml,
            .is_wml = is_wml,
            .is_later_style =
                found > 0 && products[static_cast<std::size_t>(found) - 1].has_template_sets,
            .sets = has_sets ? D_TPL_SET : D_WML_TPL_SET};
}

bool is_replaced(std::string_view line, const ini_rules &rules) {
    return std::any_of(replaced_keys.begin(), replaced_keys.end(),
                       [line](std::string_view key) { return line.starts_with(key); }) ||
           (rules.replaces_sets && line.starts_with(sets_key));
}

void copy_sample(std::FILE *sample, std::FILE *file, const ini_rules &rules) {
    std::array<char, setting_piece_size> piece{};
    // A line of more than 510 characters is several pieces, each looked at alone (kept).
    for (std::string_view line = read_piece(sample, piece); !line.empty();
         line = read_piece(sample, piece)) {
        if (!is_replaced(line, rules)) {
            std::fwrite(line.data(), 1, line.size(), file);
        }
    }
}

void write_line(std::FILE *file, const char *key, pINI_SETTINGS ini, answer_position position) {
    format_file(file, "%s %s\n", key, ini_value2_num(ini, position));
}

void write_lines(std::FILE *file, const char *key, pINI_SETTINGS ini, answer_position position) {
    for (const std::string &value : answer_values(ini, position)) {
        format_file(file, "%s %s\n", key, value.c_str());
    }
}

void write_answers(std::FILE *file, pINI_SETTINGS ini, const ini_rules &rules) {
    const bool is_later_wml = rules.is_wml && rules.is_later_style;
    write_line(file, "domain", ini, D_DOMAIN);
    if (rules.is_imap) {
        write_line(file, "imaphost", ini, D_IMAPHOST);
    } else {
        write_line(file, "pophost", ini, D_POPHOST);
    }
    write_line(file, "smtphost", ini, D_SMTPHOST);
    write_line(file, "templates", ini, is_later_wml ? D_WAP_TEMPLATES : D_TEMPLATES);
    write_line(file, "workarea", ini, D_WORKAREA);
    write_line(file, "vlimg", ini, is_later_wml ? D_WAP_VLIMG : D_VLIMG);
    if (!rules.is_later_style) {
        format_file(file, "# Never change the next line, even if you change pophost\n");
        write_line(file, "original_pophost", ini, D_POPHOST);
        return;
    }
    write_line(file, "bulletin_path", ini, D_BULLETIN);
    write_lines(file, "tpl_set", ini, rules.sets);
    write_lines(file, "allow_host_login", ini, D_ALLOW_HOST);
}

// Returns "mail." for a domain name, "" for an address of digits and dots.
const char *host_prefix(std::string_view domain) {
    return domain.find_first_not_of("0123456789.") != std::string_view::npos ? "mail." : "";
}

void guess_hosts(pINI_SETTINGS ini) {
    const std::string domain = ini_value2_num(ini, D_DOMAIN);
    const std::string host = host_prefix(domain) + domain;
    set_answer(ini, D_POPHOST, host.c_str());
    set_answer(ini, D_IMAPHOST, host.c_str());
    set_answer(ini, D_SMTPHOST, host.c_str());
}

// Reads the hosts that users may log in to, one a line, until a line is a dot alone.
void read_allowed_hosts(pINI_SETTINGS ini) {
    print("Enter a host and press enter, enter a . to finish\n");
    path_text line;
    while (answers_from().read_item(I_ALLOW_HOST, line.buffer())) {
        line.assign(line.view().substr(0, line.view().find_last_not_of("\r\n\t ") + 1));
        if (line.view() == ".") {
            return;
        }
        if (!line.empty()) {
            set_answer(ini, D_ALLOW_HOST, line.c_str());
        }
    }
}

void print_directories(pINI_SETTINGS ini) {
    print("Directories\n");
    print("webserver directory: %s\n", ini_value_num(ini, D_CGI_PATH));
    print("images directory:    %s\n", ini_value_num(ini, D_VLIMG_DIR));
    print("templates directory: %s\n", ini_value_num(ini, D_TEMPLATES));
    const product *known = find_product(ini_value_num(ini, D_PROD_NAME));
    if (known != nullptr && known->shows_manuals) {
        print("manuals directory:   %s\n\n", ini_value_num(ini, D_MANUAL));
    }
}

// What an upgrade replaces. If that is the .ini its line stays open for print_ini_settings.
void print_rules(pINI_SETTINGS ini) {
    print("Rules\n");
    print(is_true_answer(ini, D_REPLACE_TMPLTS) ? "templates WILL be overwritten\n\n"
                                                : "templates WILL NOT be overwritten\n\n");
    print(is_true_answer(ini, D_REPLACE_INI) ? "ini file WILL be overwritten using the following "
                                             : "ini file WILL NOT be overwritten\n\n");
}

void print_ini_settings(pINI_SETTINGS ini) {
    print("ini file settings\n");
    if (is_imap_product(ini_value_num(ini, D_PROD_NAME))) {
        print("imap host:           %s\n", ini_value_num(ini, D_IMAPHOST));
    } else {
        print("pop host:            %s\n", ini_value_num(ini, D_POPHOST));
    }
    print("smtp host:           %s\n", ini_value_num(ini, D_SMTPHOST));
    print("domain name:         %s\n", ini_value_num(ini, D_DOMAIN));
    print("relative images URL: %s\n\n", ini_value_num(ini, D_VLIMG));
}

} // namespace

int write_new_gxini(pINI_SETTINGS ini, const char *prod, const char *file) {
    const ini_rules rules = rules_for(prod);
    const std::string sample_name = formatted("%s.ini", prod);
    const place here(".");
    open_file sample_file = here.open_plain(sample_name.c_str(), settings_limit);
    const stream_handle sample = stream_of(sample_file.descriptor.release(), "r");
    if (!sample) {
        print_emsg("Can't open %s", sample_name.c_str());
        return 0;
    }
    const mode_t most = sample_file.is_private ? private_mode : all_mode_bits;
    replacement_file written(file, nullptr, most);
    if (written.stream() == nullptr) {
        print_emsg("Can't open %s", file);
        return 0;
    }
    format_file(written.stream(), "# %s created by %s for %s, version %s\n\n", sample_name.c_str(),
                program_version, prod, ini_value2_num(ini, D_VERSION));
    copy_sample(sample.get(), written.stream(), rules);
    if (std::ferror(sample.get()) != 0) {
        print_emsg("Can't open %s", sample_name.c_str());
        return 0;
    }
    format_file(written.stream(), "\n\n");
    write_answers(written.stream(), ini, rules);
    written.give(gx_user, gx_group); // before it is in place: nobody finds it with another owner
    if (!written.commit()) {
        print_emsg("Can't write %s: %s", file, std::strerror(errno));
        return 0;
    }
    // Required: a failure changes no result.
    do_copy_limited(file, ini_value_num(ini, D_TEMPLATES), 1, most);
    return 1;
}

int do_ini_quest(pINI_SETTINGS ini, int guess) {
    dmsg("ini questions");
    const char *prod_name = ini_value_num(ini, D_PROD_NAME);
    const bool is_imap = is_imap_product(prod_name);
    const bool has_sets = has_template_sets(prod_name);

    ask_answer(ini, D_DOMAIN, I_DOM_Q);
    if (guess != 0) {
        guess_hosts(ini);
    }
    const char *host =
        is_imap ? ask_answer(ini, D_IMAPHOST, I_IMAP_Q) : ask_answer(ini, D_POPHOST, I_POP_Q);
    set_answer(ini, D_SMTPHOST, host); // what the smtp question will suggest
    if (has_sets && is_yes(question(I_ALLOW_HOST, "no", is_imap ? "IMAP" : "POP3"))) {
        read_allowed_hosts(ini);
    }
    return set_answer(ini, D_SMTPHOST, question(I_SMTP_Q, ini_value_num(ini, D_SMTPHOST)));
}

const char *get_URL(pINI_SETTINGS ini, path_text &url) {
    const std::string_view cgi_path = rmv_end_sep(clean_up_root(ini_value2_num(ini, D_CGI_PATH)));
    std::string_view images = clean_up_root(ini_value2_num(ini, D_VLIMG_DIR));

    int common = 1;
    for (std::size_t at = cgi_path.find('/'); at != std::string_view::npos;
         at = cgi_path.find('/', at + 1)) {
        // Required: compares text, not whole components.
        common += images.starts_with(cgi_path.substr(0, at)) ? 1 : 0;
    }
    // Skips the parents that both share, and the directory below them: the document root.
    for (; common > 0; common--) {
        images = text_after(images, '/');
    }
    return url.assign("/").append(images).c_str();
}

int print_gxvalues(pINI_SETTINGS ini) {
    print("\n\n%s\n", dashed_rule);
    print("gxsetup is ready to %s %s, to version %s\nusing the following answers:\n\n",
          ini_value_num(ini, D_ACTION), ini_value_num(ini, D_PROD_NAME),
          ini_value_num(ini, D_VERSION));
    print_directories(ini);
    if (s_stricmp(ini_value_num(ini, D_ACTION), "upgrade") == 0) {
        print_rules(ini);
    }
    if (is_true_answer(ini, D_REPLACE_INI)) {
        print_ini_settings(ini);
    }
    return is_yes(question(YN_CHANS_Q, "NO")) ? 1 : 0;
}
