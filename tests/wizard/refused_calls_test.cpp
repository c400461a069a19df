// The words for what the system refuses, call by call; and what is left in place then. (That every
// flow bears every call's failure is in system_calls_test.cpp.)

#include "support/system_calls.h"
#include "support/tree.h"
#include "wizard/releases.h"
#include "wizard/screens.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

// No answer is an empty line, so that no built-in directory is ever taken; no originals, the
// unpacked files stay.
const session_script flat_install = {
    {},
    "1\n@/cgi-bin\n@/spool/kestrel\n@/html/vlimg\n/vlimg\nexample.com\npop.example.com\n"
    "smtp.example.com\nno\nno\nno\nno\nend\n"};
const session_script upgrade = {
    {},
    "2\nno\n@/cgi-bin\n@/spool/kestrel\n@/html/vlimg\n/vlimg\nno\nno\nno\nno\non\nno\nno\nend\n"};
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

system_call find_call(const std::string &product, host_maker make, const session_script &script,
                      std::string_view name, std::string_view part, int passed_over) {
    const world twin(product);
    make(twin);
    for (const system_call &call : calls_of(twin, script)) {
        if (call.name == name && call.text.find(part) != std::string::npos && passed_over-- == 0) {
            return call;
        }
    }
    ADD_FAILURE() << "no call of " << name << " with " << part;
    return {};
}

class RefusedWords : public testing::Test {
  protected:
    void SetUp() override {
        if (!can_refuse_calls()) {
            GTEST_SKIP() << "calls can be refused only where strace is and may trace";
        }
    }

    // Runs the script; the first call of the name that strace shows with `part` fails, or the one
    // behind so many that are passed over.
    wizard_run refuse(host_maker make, const session_script &script, std::string_view name,
                      std::string_view part, const std::string &error, int passed_over = 0) {
        const system_call call = find_call(host.product(), make, script, name, part, passed_over);
        make(host);
        const refused_run refused = run_with_refused_call(host, script, call, error);
        EXPECT_NE(refused.call, "");
        EXPECT_EQ(refused.run.status, 0);
        return refused.run;
    }

    const world host{"kestrel"};
};

void expect_in(const std::string &text, const std::string &part) {
    EXPECT_NE(text.find(part), std::string::npos) << text;
}

// --- Copies ---

TEST_F(RefusedWords, ASourceThatCannotBeLookedAt) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "newfstatat", "\"./tpl/head.tpl\"", "EIO");
    expect_in(run.transcript, "Error: Can't copy ./tpl/head.tpl: Input/output error\n");
    expect_in(run.transcript, "\nInstallation unsuccessful.\n");
    expect_in(run.transcript, "\ninstall unsuccessful\n");
    EXPECT_FALSE(is_there("spool/kestrel/head.tpl"));
    EXPECT_TRUE(is_there("spool/kestrel/index.tpl"));
}

TEST_F(RefusedWords, ASourceThatCannotBeOpened) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "openat", "\"./tpl/head.tpl\"", "EMFILE");
    expect_in(run.transcript, "Error: Can't copy ./tpl/head.tpl: Too many open files\n");
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: Can't copy ./tpl/head.tpl: Too many open files\n");
    EXPECT_TRUE(is_there("spool/kestrel/index.tpl"));
}

TEST_F(RefusedWords, ASourceThatCannotBeRead) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "read", "<@/dist/menu.js>", "EIO");
    expect_in(run.transcript, "Error: Can't copy menu.js: Input/output error\n");
    expect_in(run.transcript, "\nInstallation unsuccessful.\n");
}

TEST_F(RefusedWords, ADestinationThatCannotBeOpened) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "openat", "\"@/spool/kestrel/head.tpl\"", "EDQUOT");
    expect_in(run.transcript,
              rule + "Error: Can't write to \"@/spool/kestrel/head.tpl\": Disk quota exceeded\n\n");
    expect_in(run.transcript, "\nInstallation unsuccessful.\n");
}

TEST_F(RefusedWords, ADestinationThatCannotBeEmptied) {
    const auto add_old_pictures = [](const world & /*host*/) {
        add_file("html/vlimg/logo.gif", "old picture");
    };
    const wizard_run run =
        refuse(add_old_pictures, flat_install, "ftruncate", "<@/html/vlimg/logo.gif>", "EIO");
    expect_in(run.transcript,
              rule + "Error: Can't write to \"@/html/vlimg/logo.gif\": Input/output error\n\n");
    EXPECT_EQ(read_file("html/vlimg/logo.gif"), "old picture");
}

TEST_F(RefusedWords, ADestinationThatCannotBeWritten) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "write", "<@/cgi-bin/kestrel.cgi>", "EDQUOT");
    expect_in(run.transcript, "\nCopying cgi files" + rule +
                                  "Error: Problem writing \"@/cgi-bin/kestrel.cgi\": Disk quota "
                                  "exceeded\n\n");
    expect_in(run.transcript, "\nInstallation unsuccessful.\n");
}

TEST_F(RefusedWords, ADestinationThatCannotBeClosed) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "close", "<@/cgi-bin/kestrel.cgi>", "EIO");
    expect_in(run.transcript,
              "\nCopying cgi files" + rule +
                  "Error: Problem writing \"@/cgi-bin/kestrel.cgi\": Input/output error\n\n");
    expect_in(run.transcript, "\nInstallation unsuccessful.\n");
}

TEST_F(RefusedWords, AModeThatCannotBeGivenToAProgramFailsNothing) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "chmod", "\"@/cgi-bin/kestrel.cgi\"", "EPERM");
    expect_in(run.transcript,
              "Error: @/cgi-bin/kestrel.cgi mode not changed, Operation not permitted\n");
    expect_in(run.transcript, "\nInstallation successful.\n");
}

TEST_F(RefusedWords, AnOwnerThatCannotBeGivenIsNotToldAndFailsNothing) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "chown", "\"@/cgi-bin/kestrel.cgi\"", "EPERM");
    EXPECT_EQ(run.transcript.find("Error"), std::string::npos) << run.transcript;
    expect_in(run.transcript, "\nInstallation successful.\n");
}

TEST_F(RefusedWords, ADirectoryThatCannotBeMadeFailsTheCopiesIntoIt) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "mkdir", "\"@/html/vlimg\"", "EROFS");
    for (const std::string name : {"back.jpg", "bell.wav", "logo.gif", "menu.vbs", "menu.js"}) {
        expect_in(run.transcript, rule + "Error: Can't write to \"@/html/vlimg/" + name +
                                      "\": No such file or directory\n\n");
    }
    expect_in(run.transcript, "\nInstallation unsuccessful.\n");
    EXPECT_TRUE(is_there("spool/kestrel/index.tpl"));
}

TEST_F(RefusedWords, ADirectoryThatCannotBeOpened) {
    const wizard_run run = refuse(leave_as_unpacked, flat_install, "openat", "\"./tpl\"", "EMFILE");
    EXPECT_EQ(run.errors, "Could not read directory file: Too many open files\n");
    expect_in(shown_log(host, "dist/gxsetup.log"), "Info:  No files found in *\n");
}

TEST_F(RefusedWords, ADirectoryThatCannotBeReadToItsEnd) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "getdents64", "<@/dist/tpl>", "EIO");
    EXPECT_EQ(run.errors, "Could not read directory file: Input/output error\n");
}

TEST_F(RefusedWords, AWorkingDirectoryThatCannotBeReadToItsEnd) {
    refuse(leave_as_unpacked, flat_install, "getdents64", "<@/dist>", "EIO");
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: Could not read directory file: Input/output error\n");
}

// --- The version ---

// The call that starts a process has a name of its own on each machine.
std::string starting_call() {
    const world twin("kestrel");
    for (const system_call &call : calls_of(twin, {{}, "4\nend\n"})) {
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
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: Cannot obtain version information: Resource temporarily unavailable\n");
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
    EXPECT_TRUE(run.transcript.starts_with(
        "Error: Can't open file \"gxsetup.dat\": Input/output error\n" + welcome))
        << run.transcript;
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: INI: file {gxsetup.dat} could not be read: Input/output error\n");
}

// --- Files that are replaced ---

TEST_F(RefusedWords, AnswersThatCannotBePutInPlace) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "rename", "\"gxsetup.dat\"", "EROFS");
    expect_in(run.transcript, "Error: Can't write \"gxsetup.dat\": Read-only file system\n");
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: INI: file {gxsetup.dat} could not be written: Read-only file system\n"
              "Error: Can't write \"gxsetup.dat\": Read-only file system\n");
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

TEST_F(RefusedWords, AnswersThatCannotBeWrittenOut) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "write", "\"# file written by gxsetup", "ENOSPC");
    expect_in(run.transcript, "Error: Can't write \"gxsetup.dat\": No space left on device\n");
    EXPECT_FALSE(is_there("dist/gxsetup.dat"));
}

TEST_F(RefusedWords, AnIniThatCannotBeClosed) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "close", "<@/cgi-bin/gxsetup.", "EDQUOT");
    expect_in(run.transcript, "\nCreating kestrel.ini file"
                              "Error: Can't write @/cgi-bin/kestrel.ini: Disk quota exceeded\n");
    expect_in(run.transcript, "\nInstallation unsuccessful.\n");
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n");
}

TEST_F(RefusedWords, ASampleThatCannotBeReadLeavesTheOldIni) {
    const auto make = [](const world &where) {
        install_31_and_unpack_32(where);
        add_file("cgi-bin/kestrel.new", "old 1\n");
    };
    const wizard_run run = refuse(make, upgrade, "read", "<@/dist/kestrel.ini>", "EIO");
    expect_in(run.transcript, "Error: Can't open kestrel.ini\n");
    EXPECT_EQ(read_file("cgi-bin/kestrel.new"), "old 1\n");
}

TEST_F(RefusedWords, AnIniWhoseModeCannotBeFoundOutStays) {
    const auto add_old_ini = [](const world & /*host*/) {
        add_file("cgi-bin/kestrel.ini", "old 1\n");
        ::chmod("cgi-bin/kestrel.ini", 0600);
    };
    const wizard_run run =
        refuse(add_old_ini, flat_install, "newfstatat", "\"@/cgi-bin/kestrel.ini\"", "EIO");
    expect_in(run.transcript, "\nCreating kestrel.ini file"
                              "Error: Can't open @/cgi-bin/kestrel.ini\n");
    expect_in(tree_of(host, "cgi-bin"), "0600 cgi-bin/kestrel.ini \"old 1\"\n");
}

// --- Stamping ---

// The log of a stamping that failed; the template is as it was.
void expect_template_as_it_was(const world &host, const wizard_run &run, const std::string &lines) {
    EXPECT_EQ(run.transcript, "\nDirectory for templates [./tpl]? "
                              "\nUpdating checksumsx"
                              "\nUpdate complete.\n"
                              "\nPlease press enter to quit...\n");
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"), log_start + lines);
    EXPECT_EQ(tree_of(host, "dist/tpl"), "0640 dist/tpl/index.tpl \"abc\"\n");
}

TEST_F(RefusedWords, ATemplateThatCannotBeOpened) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "openat", "\"@/dist/tpl/index.tpl\"", "EMFILE");
    expect_template_as_it_was(host, run,
                              "Error: can't open @/dist/tpl/index.tpl, Too many open files\n"
                              "Error: Can't open @/dist/tpl/index.tpl, Too many open files\n");
}

TEST_F(RefusedWords, ATemplateThatCannotBeRead) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "read", "<@/dist/tpl/index.tpl>", "EIO");
    expect_template_as_it_was(host, run,
                              "Error: Can't open @/dist/tpl/index.tpl, Input/output error\n"
                              "Error: can't remove @/dist/tpl/temp.tpl, Input/output error\n");
}

TEST_F(RefusedWords, AStampedTemplateThatCannotBeMade) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "openat", "\"@/dist/tpl/temp.tpl\"", "EROFS");
    expect_template_as_it_was(host, run,
                              "Error: Can't open @/dist/tpl/temp.tpl, Read-only file system\n");
}

TEST_F(RefusedWords, AStampedTemplateThatCannotBeWritten) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "write", "<@/dist/tpl/temp.tpl>", "EDQUOT");
    expect_template_as_it_was(host, run,
                              "Error: Can't write @/dist/tpl/temp.tpl, Disk quota exceeded\n"
                              "Error: can't remove @/dist/tpl/temp.tpl, Disk quota exceeded\n");
}

TEST_F(RefusedWords, AStampedTemplateThatCannotBeClosed) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "close", "<@/dist/tpl/temp.tpl>", "EIO");
    expect_template_as_it_was(host, run,
                              "Error: Can't write @/dist/tpl/temp.tpl, Input/output error\n"
                              "Error: can't remove @/dist/tpl/temp.tpl, Input/output error\n");
}

TEST_F(RefusedWords, AStampedTemplateThatCannotBePutInPlace) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "rename", "\"@/dist/tpl/temp.tpl\"", "EIO");
    expect_template_as_it_was(host, run,
                              "Error: can't remove @/dist/tpl/index.tpl, Input/output error\n"
                              "Error: can't remove @/dist/tpl/temp.tpl, Input/output error\n");
}

TEST_F(RefusedWords, ATemplateWhoseModeCannotBeFoundOut) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "newfstatat", "<@/dist/tpl/index.tpl>", "EIO", 1);
    expect_template_as_it_was(host, run,
                              "Error: Can't write @/dist/tpl/temp.tpl, Input/output error\n"
                              "Error: can't remove @/dist/tpl/temp.tpl, Input/output error\n");
}

TEST_F(RefusedWords, AStampedTemplateThatCannotHaveItsMode) {
    const wizard_run run =
        refuse(leave_one_template, stamping, "fchmod", "<@/dist/tpl/temp.tpl>", "EPERM");
    expect_template_as_it_was(host, run,
                              "Error: Can't write @/dist/tpl/temp.tpl, Operation not permitted\n"
                              "Error: can't remove @/dist/tpl/temp.tpl, Operation not permitted\n");
}

// --- Classifying ---

TEST_F(RefusedWords, AnInstalledTemplateThatCannotBeReadIsKept) {
    const auto make = [](const world &where) { install_31_and_unpack_32(where); };
    refuse(make, upgrade, "read", "<@/spool/kestrel/clean.tpl>", "EIO");
    expect_in(shown_log(host, "dist/gxsetup.log"),
              "Error: Can't open clean.tpl, header information unobtainable\n");
    EXPECT_EQ(template_text("spool/kestrel/clean.tpl"), "old clean");
}

// --- Removal ---

const session_script removal = {
    {},
    "3\n@/cgi-bin\nyes\nno\n@/html/vlimg\nyes\n@/spool/kestrel\nno\n@/spool/kestrel\nyes\nend\n"};

TEST_F(RefusedWords, AFileThatCannotBeRemoved) {
    const wizard_run run = refuse(install, removal, "unlinkat", "\"kestrel.cgi\"", "EROFS");
    expect_in(run.transcript,
              "Error: \nCannot remove @/cgi-bin/kestrel.cgi: Read-only file system\n");
    expect_in(run.transcript, "\nremove unsuccessful\n");
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n");
}

TEST_F(RefusedWords, ATemplatesDirectoryThatCannotBeRemoved) {
    const wizard_run run = refuse(install, removal, "rmdir", "\"@/spool/kestrel\"", "EBUSY");
    expect_in(run.transcript, "Error: Cannot remove @/spool/kestrel: Device or resource busy\n");
    expect_in(run.transcript, "\nremove successful\n");
    EXPECT_EQ(tree_of(host, "spool"), "0770 spool/kestrel/\n");
}

TEST_F(RefusedWords, ADirectoryThatMayBeALinkIsNotEntered) {
    const auto add_link = [](const world &where) {
        install(where);
        add_file("elsewhere/letter", "dear reader\n");
        std::filesystem::create_directory_symlink("../../elsewhere", "spool/kestrel/link");
    };
    const wizard_run run =
        refuse(add_link, removal, "newfstatat", "\"@/spool/kestrel/link\"", "EIO");
    expect_in(run.transcript, "Error: \nCannot remove @/spool/kestrel/link: Not a directory\n");
    EXPECT_EQ(read_file("elsewhere/letter"), "dear reader\n");
}

// --- Streams ---

TEST_F(RefusedWords, AConsoleThatCannotBeWrittenFailsNothing) {
    const wizard_run run =
        refuse(leave_as_unpacked, flat_install, "write", "What is your domain name", "EIO");
    EXPECT_EQ(run.transcript.find("What is your domain name"), std::string::npos);
    expect_in(run.transcript, "\nInstallation successful.\n");
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
