// Runs gxsetup-unattended in a world, beside the wizard that wizard_run.h runs.
#pragma once

#include "support/tree.h"
#include "support/wizard_run.h"

#include <string>
#include <vector>

// Runs the program in dist/ with `arguments`, in which "@" is the root. `starter` is a command put
// before the program, behind the shell, which puts SIGCHLD back to its default.
inline wizard_run run_unattended(const world &host, const std::vector<std::string> &arguments,
                                 run_place place = {}, const std::string &starter = "") {
    // The wizard's path, which is the first word, gives way to the other program's.
    place.wrapper = {"/bin/sh", "-c", "shift; exec " + starter + " " UNATTENDED_PROGRAM " \"$@\"",
                     "sh"};
    std::vector<std::string> meant;
    for (const std::string &argument : arguments) {
        meant.push_back(host.meant(argument));
    }
    return run_wizard(host, meant, typed(""), place);
}

// All that the world holds: the path, mode, owner and content of each entry, logs without time
// stamps.
inline std::string state_of(const world &host) {
    std::string text;
    for (const auto &[path, entry] : states_of({host.root()})) {
        text += host.shown(path) + " " + std::to_string(entry.mode) + " " +
                std::to_string(entry.user) + " " + std::to_string(entry.group) + "\n" +
                (path.ends_with(".log") ? shown_log(host, path) : host.shown(entry.content) + "\n");
    }
    return text;
}
