#include "unattended/replies.h"

#include "core/console.h"
#include "core/failures.h"
#include "core/log.h"
#include "dialogue/answer_source.h"
#include "dialogue/answers.h"
#include "files/accounts.h"
#include "setup/answer_store.h"
#include "unattended/installed_state.h"
#include "unattended/transcript.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <unistd.h>

namespace {

// What a run knows of itself. Set by reply_with, and by the questions as they come.
struct run_state {
    run_kind kind = run_kind::rehearsal;
    const named_answers *answers = nullptr;
    const run_options *options = nullptr;
    std::string product;
    std::string version;
    std::string directory;                    // where the product is, or is to be
    bool has_begun = false;                   // to change something
    bool is_there_already = false;            // an installation found the product's program
    std::set<std::string, std::less<>> asked; // names
    std::string last_question;                // the text
    int times_refused = 0;                    // how often the last question did not take its reply
    std::size_t next_host = 0;
    std::string listing; // what --list will print
};
run_state run;

// Answers that are asked for only in some runs of an action.
struct sometimes_asked {
    const char *name;
    std::string_view actions;
    const char *taken; // a yes or no where it is not named; null for any other kind of answer
    const char *meaning;
};

constexpr auto sometimes = std::to_array<sometimes_asked>({
    {"prod_name", "install upgrade remove", nullptr,
     "The product, where neither its program nor saved answers tell it"},
    {"version", "install upgrade remove", nullptr,
     "The version, where the program does not tell it"},
    {"cgi_name", "remove", nullptr, "The name of the installed program, where it was changed"},
    {"owner", "install upgrade", nullptr,
     "The owner of all that is made, where there is no user nobody"},
    {"view_list", "upgrade", "yes", "Show which templates have a newer one"},
    {"replace_safe", "upgrade", "yes", "Replace the templates that were never edited"},
    {"keep_originals", "install upgrade", "yes",
     "Keep a copy of the original templates in the templates directory"},
    {"delete_temporary", "install upgrade", "no",
     "Delete all that is in the directory of the distribution"},
});

const char *stored(answer_position position) {
    return ini_value2_num(&gxvalues, position);
}

// "upgrade of kestrel 3.2 in /var/spool/kestrel", as far as it is known.
std::string what_and_where() {
    std::string text = run.options->action;
    if (!run.product.empty()) {
        text += " of " + run.product + " " + run.version;
    }
    return run.directory.empty() ? text : text + " in " + run.directory;
}

// Names and values come from outside: they may not rewrite what a terminal shows.
void show_message(std::FILE *stream, const std::string &message) {
    std::fflush(stdout);
    const bool is_terminal = ::isatty(::fileno(stream)) == 1;
    std::fprintf(stream, "%s: %s\n", program_name,
                 is_terminal ? without_controls(message).c_str() : message.c_str());
}

[[noreturn]] void end_run(run_status status, const std::string &message) {
    const bool is_problem = status == step_failed || status == not_begun;
    if (!run.asked.empty()) {
        print("\n"); // the dialogue ends in a prompt or in dots
    }
    end_transcript(run.options->rehearses && !run.options->is_quiet);
    if (is_problem || (!message.empty() && !run.options->is_quiet)) {
        show_message(is_problem ? stderr : stdout, message);
    }
    close_log();
    std::exit(status);
}

// --- Checks ---

// The prompt of a question, as the engine shows it.
std::string prompt_of(const asked_question &asked) {
    return *asked.offered == '\0' ? formatted("\n%s? ", asked.text)
                                  : formatted("\n%s[%s]? ", asked.text, asked.offered);
}

const std::string *named(std::string_view name) {
    return answer_named(*run.answers, name);
}

// Where an answer is not asked for, the run takes something by itself: the answer must be that.
void check_agreement(std::string_view name, std::string_view taken) {
    const std::string *value = named(name);
    if (value != nullptr && !run.asked.contains(name) && *value != taken) {
        refuse(std::string(name) + ": " + *value + " is not asked for here: it is " +
               std::string(taken));
    }
}

void check_expectations() {
    const run_options &options = *run.options;
    if (!options.expected_product.empty() && options.expected_product != run.product) {
        refuse(options.expected_product + " was expected, but this is " + run.product);
    }
    if (!options.expected_version.empty() && options.expected_version != run.version) {
        refuse("version " + options.expected_version + " was expected, but this is " + run.version);
    }
    check_agreement("prod_name", run.product);
    check_agreement("version", run.version);
}

bool is_sometimes_asked(std::string_view name) {
    return std::any_of(sometimes.begin(), sometimes.end(), [name](const sometimes_asked &one) {
        return one.name == name && one.actions.find(run.options->action) != std::string_view::npos;
    });
}

void check_all_can_be_asked() {
    for (const auto &[name, values] : *run.answers) {
        if (!run.asked.contains(name) && !is_sometimes_asked(name)) {
            refuse(name + ": nothing asks for it in this " + what_and_where());
        }
    }
}

// The answers that come after the summary: they must be good before the work begins.
void check_late_answers() {
    for (const sometimes_asked &one : sometimes) {
        const std::string *value = one.taken != nullptr ? named(one.name) : nullptr;
        if (value != nullptr && !says_yes(value->c_str()) && !says_no(value->c_str())) {
            refuse(formatted("%s: %s is refused: Please enter either \"YES\" or \"NO\"", one.name,
                             value->c_str()));
        }
    }
    if (find_user("nobody", system_accounts) != nullptr) {
        check_agreement("owner", "nobody");
        return;
    }
    const std::string *owner = named("owner");
    if (owner == nullptr || find_user(owner->c_str(), system_accounts) == nullptr) {
        refuse(formatted("owner: User %s is not in the passwd file.",
                         owner != nullptr ? owner->c_str() : "nobody"));
    }
}

// --- The list of names ---

// What a list goes on with where nothing is offered.
constexpr const char *placeholder = "0";

void list_answer(std::string_view name, std::string_view value, std::string_view meaning) {
    run.listing += "# " + in_one_line(meaning) + "\n";
    run.listing +=
        (value.empty() ? "# " + std::string(name) : std::string(name) + " " + std::string(value)) +
        "\n\n";
}

void list_question(const asked_question &asked, const std::string &reply) {
    std::string value = !reply.empty() && reply != placeholder ? reply : asked.offered;
    if (asked.wants_yes_or_no) {
        value = says_yes(value.c_str()) ? "yes" : "no";
    }
    list_answer(asked.row.name, value, asked.text);
    if (asked.row.quest_num == I_ALLOW_HOST) {
        list_answer(list_of_hosts, "", "Hosts that users may log in to, a line each, after a yes");
    }
}

[[noreturn]] void end_listing() {
    for (const sometimes_asked &one : sometimes) {
        if (is_sometimes_asked(one.name) && !run.asked.contains(one.name)) {
            const std::string *value = named(one.name);
            const char *taken = one.taken != nullptr ? one.taken : "";
            list_answer(one.name, value != nullptr ? *value : taken, one.meaning);
        }
    }
    end_transcript(false);
    print("%s", run.listing.c_str());
    std::exit(std::fflush(stdout) == 0 ? done_whole : not_begun);
}

// --- The questions ---

bool deletes(const QUESTIONS &row) {
    constexpr std::array deleting = {YN_DELTEMP_Q, YN_RCGI_Q, YN_RVLIMG_Q, YN_RUINFO_Q,
                                     YN_RTMPLTS_Q};
    return std::find(deleting.begin(), deleting.end(), row.quest_num) != deleting.end();
}

void begin_work() {
    run.has_begun = true;
    forget_failures();
}

// The value that is named, or "" for what is offered.
std::string named_or_offered(const asked_question &asked) {
    const char *name = asked.row.name;
    const std::string *value = named(name);
    if (value == nullptr) {
        if (deletes(asked.row)) {
            return "no";
        }
        if (*asked.offered != '\0') {
            return {};
        }
        if (run.kind == run_kind::listing) {
            return placeholder;
        }
        refuse(formatted("%s is missing, and nothing is offered for it: %s", name,
                         in_one_line(asked.text).c_str()));
    }
    if (!asked.wants_yes_or_no && (says_yes(value->c_str()) || says_no(value->c_str()))) {
        refuse(formatted("%s: %s is a yes or a no, which is not asked for: %s", name,
                         value->c_str(), in_one_line(asked.text).c_str()));
    }
    return *value;
}

std::string choose_action(const asked_question & /*asked*/) {
    run.product = stored(D_PROD_NAME);
    run.version = stored(D_VERSION);
    check_expectations();
    switch (run.options->flow) {
    case flow_install:
        return "1";
    case flow_upgrade:
        return "2";
    default:
        return "3";
    }
}

// The rest of the questions tells whether it is there with the same answers.
std::string find_it_there(const asked_question & /*asked*/) {
    run.is_there_already = true;
    return "no";
}

std::string miss_the_program(const asked_question & /*asked*/) {
    if (run.kind == run_kind::listing) {
        return "no";
    }
    refuse(run.product + " is not in " + stored(D_CGI_PATH) +
           ", where the last run has put it: copy gxsetup.dat here from its templates directory");
}

std::string name_the_program(const asked_question &asked) {
    if (named("cgi_name") == nullptr) {
        refuse(run.product + " is not in " + stored(D_CGI_PATH) +
               ", and cgi_name names no other program");
    }
    return named_or_offered(asked);
}

std::string name_the_product(const asked_question &asked) {
    if (named("prod_name") == nullptr) {
        refuse("there is no distribution of a product here");
    }
    return named_or_offered(asked);
}

std::string accept_summary(const asked_question & /*asked*/) {
    run.directory = stored(D_INSTALL_DIR);
    switch (run.kind) {
    case run_kind::listing:
        end_listing();
    case run_kind::rehearsal:
        check_late_answers();
        end_rehearsal();
    case run_kind::work:
        begin_work();
    }
    return "no";
}

std::string begin_removal(const asked_question &asked) {
    check_agreement("cgi_name", stored(D_CGI_NAME));
    if (run.kind == run_kind::work && !run.has_begun) {
        begin_work();
    }
    return named_or_offered(asked);
}

std::string end_removal(const asked_question &asked) {
    run.directory = stored(D_TEMPLATES);
    return named_or_offered(asked);
}

// The questions that mean more than their answer.
struct special_question {
    question_number number;
    std::string (*reply)(const asked_question &);
};

constexpr special_question special_questions[] = {
    {I_PROD2_Q, name_the_product},   {I_MENU_Q, choose_action},   {YN_SWITCHU_Q, find_it_there},
    {I_SWITCHI_Q, miss_the_program}, {BLANK, name_the_program},   {YN_CHANS_Q, accept_summary},
    {YN_RCGI_Q, begin_removal},      {YN_RTMPLTS_Q, end_removal},
};

// The question refused its reply. A list goes on with a directory that exists.
std::string reply_again(const asked_question &asked) {
    const bool wants_directory = (asked.row.dir_action & dir_must_exist) != 0;
    if (run.kind == run_kind::listing && wants_directory && ++run.times_refused == 1) {
        path_text here;
        return ::getcwd(here.data(), here.buffer().size()) != nullptr ? here.c_str() : placeholder;
    }
    const std::string words = said_since_mark(prompt_of(asked));
    if (asked.row.quest_num == I_MENU_Q) {
        refuse(words);
    }
    const std::string *value = named(asked.row.name);
    const std::string given =
        value != nullptr ? *value : "what is offered, " + std::string(asked.offered) + ",";
    refuse(std::string(asked.row.name) + ": " + given + " is refused" +
           (words.empty() ? "" : ": " + words));
}

std::string reply_to(const asked_question &asked) {
    if (run.last_question == asked.text && run.asked.contains(asked.row.name)) {
        return reply_again(asked);
    }
    const bool is_new = run.asked.insert(asked.row.name).second;
    run.last_question = asked.text;
    run.times_refused = 0;
    const auto *const special = std::find_if(
        std::begin(special_questions), std::end(special_questions),
        [&](const special_question &one) { return one.number == asked.row.quest_num; });
    std::string reply =
        special != std::end(special_questions) ? special->reply(asked) : named_or_offered(asked);
    if (run.kind == run_kind::listing && is_new && !is_answered_by_action(asked.row)) {
        list_question(asked, reply);
    }
    return reply;
}

// Types a line where a person would.
void type_line(const std::string &text, std::span<char> line) {
    print("%s\n", text.c_str());
    line[text.copy(line.data(), line.size() - 1)] = '\0';
}

bool read_reply(const asked_question &asked, std::span<char> reply) {
    type_line(reply_to(asked), reply);
    mark_transcript();
    return true;
}

bool read_host(question_number /*quest_num*/, std::span<char> item) {
    run.asked.emplace(list_of_hosts);
    const auto hosts = run.answers->find(list_of_hosts);
    if (hosts == run.answers->end()) {
        if (run.kind == run_kind::rehearsal) {
            refuse(std::string(list_of_hosts) + " is missing: restrict_hosts is yes");
        }
        return false;
    }
    const bool has_more = run.next_host < hosts->second.size();
    type_line(has_more ? hosts->second[run.next_host++] : ".", item);
    return true;
}

constexpr answer_source named_source = {
    .read_reply = read_reply,
    .read_item = read_host,
    .pause = [] { print("\n"); },
    .quit = [] { refuse("an answer that is offered is q, which ends the wizard"); },
};

} // namespace

void reply_with(const named_answers &answers, const run_options &options, run_kind kind) {
    run = {};
    run.kind = kind;
    run.answers = &answers;
    run.options = &options;
    set_answer_source(named_source);
}

void end_rehearsal() {
    if (run.kind == run_kind::listing) {
        end_listing();
    }
    check_all_can_be_asked();
    const bool may_be_there = run.is_there_already || run.options->flow == flow_upgrade;
    if (may_be_there && is_installed_with(&gxvalues, *run.answers)) {
        end_run(nothing_to_do, what_and_where() + ": nothing to do, this version is installed "
                                                  "with these answers");
    }
    if (run.is_there_already) {
        refuse(run.product + " is in " + stored(D_CGI_PATH) + " already: upgrade it");
    }
    end_run(done_whole,
            run.options->rehearses ? what_and_where() + ": rehearsed, nothing was changed" : "");
}

void end_work() {
    const std::size_t count = failures().size();
    if (count == 0) {
        end_run(done_whole, what_and_where() + ": done");
    }
    if (run.options->is_quiet) {
        for (const std::string &failure : failures()) {
            show_message(stderr, in_one_line(failure));
        }
    }
    end_run(step_failed, what_and_where() + ": begun, but " + std::to_string(count) +
                             " steps failed; see gxsetup.log");
}

void refuse(const std::string &message) {
    end_run(run.has_begun ? step_failed : not_begun,
            run.has_begun ? what_and_where() + ": ended early: " + message : message);
}
