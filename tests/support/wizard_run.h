// Runs the real program through pipes or at a pseudo-terminal and answers its prompts. Whatever
// hangs is killed and counts as a failure.
#pragma once

#include "support/console_script.h"
#include "support/world.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

// How a run ended, where it was not by an exit: the number of the signal is added to the first.
inline constexpr int killed_by_signal = 128;
inline constexpr int timed_out = -1;

struct wizard_run {
    std::string transcript; // standard output, with "@" for the root of the world
    std::string errors;     // standard error, likewise
    int status;             // the exit status, killed_by_signal + its number, or timed_out
};

// Where a run differs from the common one.
struct run_place {
    std::string directory = "dist";     // the working directory, below the root
    std::function<void()> prepare = {}; // called in the new process just before the program starts
    // A command that starts the program; it gets the program's path and arguments as its last
    // words.
    std::vector<std::string> wrapper = {};
    // What its environment holds besides the common one, or in its place. The sanitizers' options
    // are added to those that there are.
    std::map<std::string, std::string> settings = {};
    std::optional<int> status = 0; // what it ends with, or nothing where the test looks itself
};

// Runs the program in dist/ with `arguments` and types what `script` says, in which "@" is the
// root. The environment is the same everywhere. The test fails when the status is not that of the
// place.
wizard_run run_wizard(const world &host, const std::vector<std::string> &arguments,
                      const console_script &script, const run_place &place = {});

// The program at a terminal; `prepare` as in run_place.
class terminal_session {
  public:
    explicit terminal_session(const world &host, const std::vector<std::string> &arguments = {},
                              const std::function<void()> &prepare = {});
    ~terminal_session();
    terminal_session(const terminal_session &) = delete;
    terminal_session &operator=(const terminal_session &) = delete;

    // Waits until `text` stands at the end of the screen: the program has shown all of it and
    // waits. False, and a failure of the test, when it does not come.
    bool wait_for(std::string_view text);

    // The same, with enter at every prompt that comes before.
    bool press_enter_until(std::string_view text);

    // Types keys; "@" is typed as the root.
    void type(std::string_view keys);

    // Answers the prompts until the program ends; gives its status as in wizard_run.
    int hold(const console_script &script);

    // Takes the terminal away.
    void hang_up();

    // Waits for the end of the program; gives its status as in wizard_run.
    int wait_for_end();

    // All that was shown up to now, typed keys included, with "@" for the root and plain line
    // feeds.
    [[nodiscard]] std::string screen() const;

  private:
    bool read_more();
    bool read_more_for(std::string_view text);

    const world &host_;
    ::pid_t child_ = -1;
    int terminal_ = -1;
    std::string shown_;
    std::chrono::steady_clock::time_point deadline_;
};

// Sends standard output through a pipe to where it went before. For `prepare` at a terminal.
void print_through_pipe();

// Makes the mounts of this process its own and puts an empty file system of `size` bytes (with the
// suffixes of mount) at `path`. For run_place::prepare; ends the process when it is not allowed.
void mount_small_disk(const std::string &path, const std::string &size);

// The same, but the file at `path` reads as the file `other`.
void mount_over_file(const std::string &path, const std::string &other);

// Whether this process may mount: it is root, and no container forbids it.
bool can_mount();

// Makes the program run as someone to whom permissions apply: where the test itself is root's, the
// world is given to the user nobody, who runs it. To be asked for when the world is complete.
run_place as_ordinary_user(const world &host);
