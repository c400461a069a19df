// The words for what the system refuses, call by call; and what is left in place then. (That every
// flow bears every call's failure is in system_calls_test.cpp.)

#include "support/rows.h"
#include "support/system_calls.h"
#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// No answer is an empty line, so that no built-in directory is ever taken; no originals, the
// unpacked files stay.
const session_script flat_install = {
    {},
    "1\n@/cgi-bin\n@/spool/kestrel\n@/html/vlimg\n/vlimg\nexample.com\npop.example.com\n"
    "smtp.example.com\nno\nno\nno\nno\nend\n"};
const session_script upgrade = {
    {},
    "2\nno\n@/cgi-bin\n@/spool/kestrel\n@/html/vlimg\n/vlimg\nno\nno\nno\nno\non\nno\nno\nend\n"};
const session_script removal = {
    {},
    "3\n@/cgi-bin\nyes\nno\n@/html/vlimg\nyes\n@/spool/kestrel\nno\n@/spool/kestrel\nyes\nend\n"};
const session_script stamping = {{"-checksum"}, "@/dist/tpl\nend\n"};
const std::string log_start = "Info:  * gxsetup, version 3.0h started *\n";

// A host with what a test's run finds there. Calls are looked up in a twin of it.
using host_maker = void (*)(const world &host);

void leave_as_unpacked(const world & /*host*/) {}

void leave_one_template(const world & /*host*/) {
    std::filesystem::remove_all("dist/tpl");
    add_file("dist/tpl/index.tpl", "abc\n");
    ::chmod("dist/tpl/index.tpl", 0640);
}

void install(const world &host) {
    EXPECT_EQ(run_wizard(host, flat_install.arguments, typed(flat_install.answers)).status, 0);
}

void upgrade_host(const world &host) {
    install_31_and_unpack_32(host);
}

// All calls that the script makes on such a host.
const std::vector<system_call> &calls_on_twin(host_maker make, const session_script &script) {
    static std::map<std::tuple<host_maker, std::string, bool>, std::vector<system_call>> known;
    auto [found, is_new] = known.try_emplace({make, script.answers, script.is_without_copying});
    if (is_new) {
        const world twin("kestrel");
        make(twin);
        found->second = calls_of(twin, script);
    }
    return found->second;
}

system_call find_call(host_maker make, const session_script &script, std::string_view name,
                      std::string_view part, int passed_over) {
    for (const system_call &call : calls_on_twin(make, script)) {
        if (call.name == name && call.text.find(part) != std::string::npos && passed_over-- == 0) {
            return call;
        }
    }
    ADD_FAILURE() << "no call of " << name << " with " << part;
    return {};
}

struct refusal;
struct stamping_refusal;

class RefusedWords : public testing::Test {
  protected:
    void SetUp() override {
        static const bool can_refuse = can_refuse_calls();
        if (!can_refuse) {
            GTEST_SKIP() << "calls can be refused only where strace is and may trace";
        }
    }

    // Runs the script; the first call of the name that strace shows with `part` fails, or the one
    // behind so many that are passed over. For a read or a write, copies are read and written too.
    wizard_run refuse(host_maker make, session_script script, std::string_view name,
                      std::string_view part, const std::string &error, int passed_over = 0) {
        script.is_without_copying = name == "read" || name == "write";
        const system_call call = find_call(make, script, name, part, passed_over);
        make(host);
        const refused_run refused = run_with_refused_call(host, script, call, error);
        EXPECT_NE(refused.call, "");
        EXPECT_EQ(refused.run.status, 0);
        return refused.run;
    }

    // The tests of the rows below.
    void check(const refusal &one);
    void check(const stamping_refusal &one);

    const world host{"kestrel"};
};

// A call that is refused, what the console or the log shows then, and what is left.
struct refusal {
    const char *name;
    const char *call;
    std::string part; // of the call as strace shows it
    const char *error;
    std::string shown;
    std::string outcome = "Installation unsuccessful";
    std::string left = ""; // in the tree
    std::string gone = "";
    host_maker make = leave_as_unpacked;
    const session_script &script = flat_install;
    int passed_over = 0;   // such calls before it
    bool is_roots = false; // only root makes the call for this
};

std::string write_refused(const std::string &path, const std::string &reason) {
    return rule + "Error: Can't write to \"" + path + "\": " + reason + "\n\n";
}

std::string program_failed(const std::string &reason) {
    return "\nCopying cgi files" + rule +
           "Error: Problem writing \"@/cgi-bin/kestrel.cgi\": " + reason + "\n\n";
}

void add_old_pictures(const world & /*host*/) {
    add_file("html/vlimg/logo.gif", "old picture");
}

void add_old_ini(const world & /*host*/) {
    add_file("cgi-bin/kestrel.ini", "old 1\n");
    ::chmod("cgi-bin/kestrel.ini", 0600);
}

void upgrade_host_with_new_ini(const world &host) {
    upgrade_host(host);
    add_file("cgi-bin/kestrel.new", "old 1\n");
}

void install_with_link(const world &host) {
    install(host);
    add_file("elsewhere/letter", "dear reader\n");
    std::filesystem::create_directory_symlink("../../elsewhere", "spool/kestrel/link");
}

// All that is said on standard error, between the screen and the log.
const std::string unreadable_directory =
    quit_at_a_question + "Could not read directory file: Input/output error\n" + log_start;
const std::string index_template = "0660 ./spool/kestrel/index.tpl \"new tpl/index.tpl\"\n";

const std::vector<refusal> refusals = {
    {"RefusedWords.ASourceThatCannotBeLookedAt", "newfstatat", "<@/dist/tpl/head.tpl>", "EIO",
     "Error: Can't copy ./tpl/head.tpl: Input/output error\n", "Installation unsuccessful",
     index_template, "spool/kestrel/head.tpl", leave_as_unpacked, flat_install, 1},
    {"RefusedWords.ASourceThatCannotBeOpened", "openat", "<@/dist/tpl>, \"head.tpl\"", "EMFILE",
     "Error: Can't copy ./tpl/head.tpl: Too many open files\n", "Installation unsuccessful",
     index_template, "", leave_as_unpacked, flat_install, 1},
    {"RefusedWords.ASourceThatCannotBeRead", "read", "<@/dist/menu.js>", "EIO",
     "Error: Can't copy menu.js: Input/output error\n"},
    {"RefusedWords.ADestinationThatCannotBeOpened", "openat", "<@/spool/kestrel>, \"head.tpl\"",
     "EDQUOT", write_refused("@/spool/kestrel/head.tpl", "Disk quota exceeded")},
    {"RefusedWords.ADestinationThatNothingCanBeMadeBeside", "openat", "<@/html/vlimg>, \"gxsetup.",
     "EIO", write_refused("@/html/vlimg/logo.gif", "Input/output error"),
     "Installation unsuccessful", "html/vlimg/logo.gif \"old picture\"", "", add_old_pictures},
    {"RefusedWords.ADestinationThatCannotBeClosed", "close", "<@/cgi-bin/kestrel.cgi>", "EIO",
     program_failed("Input/output error")},
    {"RefusedWords.AModeThatCannotBeGivenToAProgramFailsNothing", "fchmod",
     "<@/cgi-bin/kestrel.cgi>", "EPERM",
     "Error: @/cgi-bin/kestrel.cgi mode not changed, Operation not permitted\n",
     "Installation successful"},
    {"RefusedWords.ADirectoryThatCannotBeMadeFailsTheCopiesIntoIt", "mkdirat",
     "<@/html>, \"vlimg\"", "EROFS",
     "\nCopying VBS and JS files" +
         write_refused("@/html/vlimg/menu.vbs", "No such file or directory") +
         write_refused("@/html/vlimg/menu.js", "No such file or directory"),
     "Installation unsuccessful", index_template},
    {"RefusedWords.AWorkingDirectoryThatCannotBeReadToItsEnd", "getdents64", "<@/dist>", "EIO",
     "Could not read directory file: Input/output error\n", ""},
    {"RefusedWords.ADirectoryThatCannotBeReadToItsEnd", "getdents64", "<@/dist/tpl>", "EIO",
     unreadable_directory, ""},
    {"RefusedWords.AnswersThatCannotBeWrittenOut", "write", "\"# file written by gxsetup", "ENOSPC",
     "Error: Can't write \"gxsetup.dat\": No space left on device\n", "", "", "dist/gxsetup.dat"},
    {"RefusedWords.AnswersThatCannotBePutInPlace", "renameat", "\"gxsetup.dat\"", "EROFS",
     "Error: INI: file {gxsetup.dat} could not be written: Read-only file system\n"
     "Error: Can't write \"gxsetup.dat\": Read-only file system\n",
     "", "", "dist/gxsetup.dat"},
    {"RefusedWords.AnIniThatCannotBeClosed", "close", "<@/cgi-bin/gxsetup.", "EDQUOT",
     "\nCreating kestrel.ini fileError: Can't write @/cgi-bin/kestrel.ini: Disk quota exceeded\n",
     "Installation unsuccessful", "", "cgi-bin/kestrel.ini"},
    {"RefusedWords.AnIniWhoseModeCannotBeFoundOutStays", "newfstatat",
     "<@/cgi-bin>, \"kestrel.ini\"", "EIO",
     "\nCreating kestrel.ini fileError: Can't open @/cgi-bin/kestrel.ini\n",
     "Installation unsuccessful", "0600 ./cgi-bin/kestrel.ini \"old 1\"\n", "", add_old_ini,
     flat_install, 0, true},
    {"RefusedWords.ASampleThatCannotBeReadLeavesTheOldIni", "read", "<@/dist/kestrel.ini>", "EIO",
     "Error: Can't open kestrel.ini\n", "Upgrade unsuccessful",
     "0644 ./cgi-bin/kestrel.new \"old 1\"\n", "", upgrade_host_with_new_ini, upgrade},
    {"RefusedWords.AFileThatCannotBeRemoved", "unlinkat", "\"kestrel.cgi\"", "EROFS",
     "Error: \nCannot remove @/cgi-bin/kestrel.cgi: Read-only file system\n", "remove unsuccessful",
     "0755 ./cgi-bin/\n0770 ./cgi-bin/kestrel.cgi\n0755 ./dist/\n", "", install, removal},
    {"RefusedWords.ATemplatesDirectoryThatCannotBeRemoved", "unlinkat", "<@/spool>, \"kestrel\"",
     "EBUSY", "Error: Cannot remove @/spool/kestrel: Device or resource busy\n",
     "remove successful", "0755 ./spool/\n0770 ./spool/kestrel/\n(end)", "", install, removal},
    {"RefusedWords.ADirectoryThatMayBeALinkIsNotEntered", "newfstatat",
     "<@/spool/kestrel>, \"link\"", "EIO",
     "Error: \nCannot remove @/spool/kestrel/link: Not a directory\n", "",
     "elsewhere/letter \"dear reader\"", "", install_with_link, removal, 1},
};

void RefusedWords::check(const refusal &one) {
    if (one.is_roots && ::geteuid() != 0) {
        GTEST_SKIP() << "only root looks at a file before it is replaced";
    }
    const wizard_run run =
        refuse(one.make, one.script, one.call, one.part, one.error, one.passed_over);
    EXPECT_THAT(run.transcript + run.errors + shown_log(host, "dist/gxsetup.log"),
                HasSubstr(one.shown));
    EXPECT_THAT(run.transcript, HasSubstr("\n" + one.outcome));
    EXPECT_THAT(tree_of(host, ".") + "(end)", HasSubstr(one.left));
    EXPECT_TRUE(one.gone.empty() || !is_there(one.gone)) << one.gone;
}

const int refusals_registered = register_rows<RefusedWords>(refusals);

// Whichever call the bytes are moved with.
TEST_F(RefusedWords, ADestinationThatCannotBeWritten) {
    const run_place place =
        under_strace({"-o", "/dev/null", "-P", host.path("cgi-bin/kestrel.cgi"), "-e",
                      "inject=write,?copy_file_range,ioctl:error=EDQUOT"});
    const wizard_run run =
        run_wizard(host, flat_install.arguments, typed(flat_install.answers), place);
    EXPECT_THAT(run.transcript, HasSubstr(program_failed("Disk quota exceeded")));
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation unsuccessful"));
}

TEST_F(RefusedWords, AnOwnerThatCannotBeGivenIsNotToldAndFailsNothing) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "fchown", "<@/cgi-bin/kestrel.cgi>", "EPERM");
    EXPECT_THAT(run.transcript, Not(HasSubstr("Error")));
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
}

TEST_F(RefusedWords, ADirectoryThatCannotBeOpened) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "openat", "<@/dist/tpl>, \".\"", "EMFILE", 1);
    EXPECT_EQ(run.errors, "Could not read directory file: Too many open files\n");
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"), HasSubstr("Info:  No files found in *\n"));
}

// --- The version ---

// The call that starts a process has a name of its own on each machine.
std::string starting_call() {
    for (const system_call &call : calls_on_twin(leave_as_unpacked, {{}, "4\nend\n"})) {
        if (call.name.starts_with("clone") || call.name == "vfork") {
            return call.name;
        }
    }
    return "clone";
}

TEST_F(RefusedWords, AVersionThatNoProcessCanBeHadFor) {
    const wizard_run run =
        refuse(leave_as_unpacked, {{}, "9\n4\nend\n"}, starting_call(), "", "EAGAIN");
    EXPECT_EQ(run.transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "9") + goodbye);
    EXPECT_THAT(
        shown_log(host, "dist/gxsetup.log"),
        HasSubstr("Error: Cannot obtain version information: Resource temporarily unavailable\n"));
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

TEST_F(RefusedWords, AVersionThatCannotBeReadToTheEndOfItsLine) {
    const auto make = [](const world & /*host*/) {
        // The system hands out 4096 bytes at once: the second part of the line cannot be read.
        add_file("dist/noise", std::string(4083, '-') + "\nVersion: v3.1\n");
        add_script("dist/kestrel.cgi", "cat noise\n");
    };
    const session_script quit = {{}, "6\n4\nend\n"};
    const wizard_run run = refuse(make, quit, "read", "<@/dist/ver.txt>", "EIO", 1);
    EXPECT_EQ(run.transcript,
              "\nWhat version of kestrel is it? " + welcome + menu("kestrel", "6") + goodbye);
    EXPECT_FALSE(is_there("dist/ver.txt"));
}

// --- Files that are loaded ---

TEST_F(RefusedWords, AnswersThatCannotBeRead) {
    const wizard_run run = refuse(install, {{}, "4\nend\n"}, "read", "<@/dist/gxsetup.dat>", "EIO");
    EXPECT_THAT(
        run.transcript,
        StartsWith("Error: Can't open file \"gxsetup.dat\": Input/output error\n" + welcome));
    EXPECT_THAT(
        shown_log(host, "dist/gxsetup.log"),
        HasSubstr("Error: INI: file {gxsetup.dat} could not be read: Input/output error\n"));
}

// --- Stamping ---

// A call of a stamping that is refused, and the lines of the log.
struct stamping_refusal {
    const char *name;
    const char *call;
    const char *part;
    const char *error;
    std::string logged;
    int passed_over = 0;
};

// What the log says when one step of stamping failed, and when its scratch file went then.
std::string stamping_failed(const std::string &what, const std::string &reason) {
    return "Error: " + what + ", " + reason + "\nError: can't remove @/dist/tpl/temp.tpl, " +
           reason + "\n";
}

const std::vector<stamping_refusal> stamping_refusals = {
    {"RefusedWords.ATemplateThatCannotBeOpened", "openat", "<@/dist/tpl>, \"index.tpl\"", "EMFILE",
     "Error: can't open @/dist/tpl/index.tpl, Too many open files\n"
     "Error: Can't open @/dist/tpl/index.tpl, Too many open files\n"},
    {"RefusedWords.ATemplateThatCannotBeRead", "read", "<@/dist/tpl/index.tpl>", "EIO",
     stamping_failed("Can't open @/dist/tpl/index.tpl", "Input/output error")},
    {"RefusedWords.AStampedTemplateThatCannotBeMade", "openat", "<@/dist/tpl>, \"temp.tpl\"",
     "EROFS", "Error: Can't open @/dist/tpl/temp.tpl, Read-only file system\n"},
    {"RefusedWords.AStampedTemplateThatCannotBeWritten", "write", "<@/dist/tpl/temp.tpl>", "EDQUOT",
     stamping_failed("Can't write @/dist/tpl/temp.tpl", "Disk quota exceeded")},
    {"RefusedWords.AStampedTemplateThatCannotBeClosed", "close", "<@/dist/tpl/temp.tpl>", "EIO",
     stamping_failed("Can't write @/dist/tpl/temp.tpl", "Input/output error")},
    {"RefusedWords.AStampedTemplateThatCannotBePutInPlace", "renameat", "\"temp.tpl\"", "EIO",
     stamping_failed("can't remove @/dist/tpl/index.tpl", "Input/output error")},
    {"RefusedWords.ATemplateWhoseModeCannotBeFoundOut", "newfstatat", "<@/dist/tpl/index.tpl>",
     "EIO", stamping_failed("Can't write @/dist/tpl/temp.tpl", "Input/output error"), 1},
    {"RefusedWords.AStampedTemplateThatCannotHaveItsMode", "fchmod", "<@/dist/tpl/temp.tpl>",
     "EPERM", stamping_failed("Can't write @/dist/tpl/temp.tpl", "Operation not permitted")},
};

void RefusedWords::check(const stamping_refusal &one) {
    const wizard_run run =
        refuse(leave_one_template, stamping, one.call, one.part, one.error, one.passed_over);
    EXPECT_EQ(run.transcript, "\nDirectory for templates [./tpl]? "
                              "\nUpdating checksumsx"
                              "\nUpdate complete.\n"
                              "\nPlease press enter to quit...\n");
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), log_start + one.logged);
    EXPECT_EQ(tree_of(host, "dist/tpl"), "0640 dist/tpl/index.tpl \"abc\"\n");
}

const int stampings_registered = register_rows<RefusedWords>(stamping_refusals);

// --- Classifying ---

TEST_F(RefusedWords, AnInstalledTemplateThatCannotBeReadIsKept) {
    refuse(upgrade_host, upgrade, "read", "<@/spool/kestrel/clean.tpl>", "EIO");
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                HasSubstr("Error: Can't open clean.tpl, header information unobtainable\n"));
    EXPECT_EQ(template_text("spool/kestrel/clean.tpl"), "old clean");
}

// --- Streams ---

TEST_F(RefusedWords, AConsoleThatCannotBeWrittenFailsNothing) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "write", "What is your domain name", "EIO");
    EXPECT_THAT(run.transcript, Not(HasSubstr("What is your domain name")));
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
}

TEST_F(RefusedWords, AnInputThatCannotBeReadQuits) {
    const wizard_run run = refuse(leave_as_unpacked, flat_install, "read", "<pipe:", "EIO");
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + quit_at_a_question);
}

TEST_F(RefusedWords, ALogLineThatCannotBeWrittenIsToldAndTheNextOneIsThere) {
    const wizard_run run =
        refuse(leave_as_unpacked, {{}, "4\nend\n"}, "write", "INI: file", "ENOSPC");
    EXPECT_EQ(run.transcript, "Error printing to log file\n" + welcome + menu("kestrel") + goodbye);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), log_start);
}

} // namespace
