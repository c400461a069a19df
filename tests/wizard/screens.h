// Parts of the dialogue that many transcripts begin or end with. What a test is about stands in the
// test itself.
#pragma once

#include <string>

inline const std::string welcome =
    "\n"
    "==============================================================================="
    "\n"
    "                        Welcome to gxsetup, version 3.0h                      \n"
    "                 Setup wizard for kestrel, plover, tanager and osprey        \n"
    "===============================================================================\n"
    "\n";

// The main menu up to its prompt; `action` is what it offers and `digit` how.
inline std::string menu(const std::string &product, const std::string &version = "3.2a",
                        const std::string &action = "install", const std::string &digit = "1") {
    return "Options:\n"
           " 1 Install " +
           product + ", version " + version +
           "\n"
           " 2 Upgrade from earlier version of " +
           product + " to " + product + ", version " + version +
           "\n"
           " 3 Remove " +
           product +
           " and associated files\n"
           " 4 Quit without " +
           action +
           "\n"
           "\n"
           "What do you want to do [" +
           digit + "]? ";
}

// What quitting at a question, and quitting from the menu, ends with.
inline const std::string quit_at_a_question = "Please press enter to quit...\n";
inline const std::string goodbye = "\n"
                                   "----------------------------------------------------------\n"
                                   "Goodbye\n"
                                   "\n"
                                   "\n"
                                   "Please press enter to quit...\n";

// The banner of a questionnaire; `verb` says what for.
inline std::string questions_banner(const std::string &product, const std::string &verb) {
    return "-------------------------------------------------------------------------------\n"
           "Please answer the following questions so I can " +
           verb + " " + product +
           "\n"
           "correctly on your system\n"
           "Notes: Defaults are shown [thus], just press enter to accept default\n"
           "       Type 'q' then press enter to quit at anytime\n"
           "       Type '?' then press enter at any time for help on a particular question\n"
           "       All directory names must be entered from the root\n"
           "       There will be the option to change any answers at the end\n"
           "-------------------------------------------------------------------------------\n";
}

inline std::string install_questions(const std::string &product) {
    return questions_banner(product, "setup");
}

// How an install whose answers are given begins, up to its first step.
inline std::string first_question(const std::string &product) {
    return welcome + menu(product) + "Installing " + product + ", version 3.2a\n\n" +
           install_questions(product) +
           "\n"
           "Webserver directory for cgi-files (This must be a valid script directory)\n"
           "[@/cgi-bin]? ";
}

// What is said once the files are in place; `directory` is the templates directory.
inline std::string outcome(const std::string &directory, const std::string &how = "successful") {
    return "\n"
           "-------------------------------------------------------------------------------\n"
           "Installation " +
           how +
           ".\n"
           "\n"
           "A log of the installation can be found \"" +
           directory +
           "/gxsetup.log\".\n"
           "All setup information has been written to gxsetup.dat which has been saved in\n"
           "\"" +
           directory +
           "\" for use in future upgrades.\n"
           "\n"
           "You may wish to customize the template and .ini files.  If you do, it is\n"
           "advisable to keep a copy of the original templates.\n"
           "\n"
           "Make a copy of the original templates to \"" +
           directory + "/originals\" [YES]? ";
}

// The end of a session that installed or upgraded (`doing`), from the thanks on. The dots stand for
// the copies of the log and of the answers.
inline std::string farewell(const std::string &product, const std::string &url,
                            const std::string &how = "install successful",
                            const std::string &doing = "installing") {
    return "\n"
           "\n"
           "Thank-you for " +
           doing + " " + product +
           "\n"
           "\n"
           "To connect to " +
           product +
           " enter the following URL on your web browser\n"
           "\n"
           "    " +
           url +
           ".\n"
           "\n"
           "-------------------------------------------------------------------------------\n" +
           how +
           "\n\n.\n"
           "Please press enter to quit...\n";
}

// How an upgrade of release 3.1 begins, up to the question for the program's directory.
inline std::string first_upgrade_questions(const std::string &product) {
    return welcome + menu(product, "3.2a", "upgrade", "2") + "Upgrading " + product +
           " to version 3.2a\n\n" + questions_banner(product, "upgrade") +
           "\n"
           "Would you like to replace the old templates [NO]? "
           "\n"
           "Where are the cgi files\n"
           "(this will be a scripts or cgi directory setup for the webserver)\n"
           "[@/cgi-bin]? ";
}

// What is said once the upgraded files are in place, up to the offer of a copy. `note` is what that
// says when templates are not replaced.
inline constexpr const char *kept_note =
    "\n(This will not overwrite any templates already in this directory) ";

inline std::string upgrade_outcome(const std::string &directory, const std::string &note = "",
                                   const std::string &how = "successful") {
    return "\n"
           "-------------------------------------------------------------------------------\n"
           "Upgrade " +
           how +
           ".\n"
           "\n"
           "A log of the upgrade can be found \"" +
           directory +
           "/gxsetup.log\".\n"
           "All setup information has been written to gxsetup.dat which has been saved in\n"
           "\"" +
           directory +
           "\" for use in future upgrades.\n"
           "\n"
           "You may wish to make changes to any of the template files.  If you do, it is\n"
           "advisable to keep a copy of the unchanged templates (ie. those in the \n"
           "distribution set).\n"
           "\n"
           "Make a copy of the original templates to \"" +
           directory + "/originals\" " + note + "[YES]? ";
}

inline std::string upgrade_farewell(const std::string &product,
                                    const std::string &how = "upgrade successful") {
    return farewell(product, "http://example.com/cgi-bin/" + product + ".cgi", how, "upgrading");
}
