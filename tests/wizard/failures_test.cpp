// What the world does to an install: files that are missing, in the way or unreadable, full disks,
// streams that are closed.

#include "support/expected.h"
#include "support/rows.h"
#include "support/tree.h"
#include "wizard/fixtures.h"
#include "wizard/screens.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Neither originals nor the removal of temporary files; for tanager and osprey their images, too.
const console_script flat_install = no_to_both;
const console_script set_install = images_here + no_to_both;
const console_script wml_install = no_to_both + answering("merlin cgi", "yes");

// The same typed, where the prompts cannot be seen.
const console_script blind_install = typed("1\n\n\n\n\n\n\n\n\n\nno\nno\n\n");

// What is shown from the line after "Please wait" to the outcome.
std::string steps_of(const wizard_run &run) {
    const std::string begin = "\nPlease wait while gxsetup installs ";
    const std::string steps = part_between(run.transcript, begin, rule + "Installation ");
    return steps.substr(steps.find('\n') + 1);
}

// An install that fails: commands of the shell that prepare it, and words of its steps. Steps and
// programs directory are kept whole.
struct failing_install {
    const char *name;
    const char *product;
    const console_script &answers;
    const char *preparation;
    const char *words;
    bool is_by_ordinary_user = false;
};

// Checks that an install failed and ended so; the two offers were declined.
void expect_unsuccessful(const wizard_run &run) {
    EXPECT_THAT(run.transcript, HasSubstr(rule + "Installation unsuccessful.\n"));
    EXPECT_THAT(run.transcript,
                EndsWith(rule + "install unsuccessful\n\n.\n" + quit_at_a_question));
    // The next run offers the upgrade all the same.
    EXPECT_THAT(read_file("dist/gxsetup.dat"), HasSubstr("\naction upgrade\n"));
}

class FailingInstall : public testing::Test {
  protected:
    static void check(const failing_install &row) {
        const world host(row.product);
        shell(row.preparation);
        const wizard_run run = run_wizard(
            host, {}, row.answers, row.is_by_ordinary_user ? as_ordinary_user(host) : run_place{});
        EXPECT_THAT(steps_of(run), HasSubstr(row.words));
        expect_kept("steps", steps_of(run));
        expect_kept("tree", tree_of("cgi-bin"));
        expect_unsuccessful(run);
    }
};

const std::vector<failing_install> failing_installs = {
    {"FailingInstall.MissingSampleIniIsReported", "kestrel", flat_install, "rm dist/kestrel.ini",
     "Error: Can't open kestrel.ini\n"},
    {"FailingInstall.MissingSampleOfTheWmlPartLeavesTheProductsOwn", "kestrel", wml_install,
     "rm dist/merlin.ini", "Error: Can't open merlin.ini\n"},
    {"FailingInstall.SourceThatCannotBeReadIsReportedAndTheRestCopied", "tanager", set_install,
     "ln -sf nowhere dist/manuals/index.html",
     "Error: Can't copy ./manuals/index.html: No such file or directory\n"},
    {"FailingInstall.PipeIsNotWaitedFor", "tanager", set_install,
     "rm dist/manuals/index.html; mkfifo dist/manuals/pipe",
     "Error: Can't copy ./manuals/pipe: Invalid argument\n"},
    {"FailingInstall.FileWhereTheImagesDirectoryShouldBeIsReportedForEachPicture", "kestrel",
     flat_install, "echo in the way >html/vlimg",
     "Error: Can't write to \"@/html/vlimg/logo.gif\": Not a directory\n"},
    {"FailingInstall.DirectoryWhereTheProgramShouldBeIsReported", "kestrel", wml_install,
     "mkdir cgi-bin/merlin.cgi",
     "Error: Can't write to \"@/cgi-bin/merlin.cgi\": Is a directory\n"},
    {"FailingInstall.DirectoryWhereTheIniShouldBeIsReported", "kestrel", flat_install,
     "mkdir cgi-bin/kestrel.ini; touch cgi-bin/kestrel.ini/full",
     "Error: Can't open @/cgi-bin/kestrel.ini\n"},
    {"FailingInstall.UnreadableSourceIsReportedAndTheRestCopied", "tanager", set_install,
     "chmod 0 dist/manuals/index.html",
     "Error: Can't copy ./manuals/index.html: Permission denied\n", true},
    {"FailingInstall.ProgramsDirectoryThatMayNotBeWrittenFailsTheInstall", "kestrel", flat_install,
     "chmod 555 cgi-bin", "Error: Can't write to \"@/cgi-bin/kestrel.cgi\": Permission denied\n",
     true},
    {"FailingInstall.IniThatMayNotBeWrittenStaysAsItWas", "kestrel", flat_install,
     "echo old 1 >cgi-bin/kestrel.ini; chmod 444 cgi-bin/kestrel.ini",
     "Error: Can't open @/cgi-bin/kestrel.ini\n", true},
};

const int registered = register_rows<FailingInstall>(failing_installs);

using Failures = unpacked_test<kestrel>;
using Permissions = Failures;
using Places = Failures;

TEST_F(Failures, ProgramThatIsAPipeIsNotWaitedForEither) {
    shell("rm dist/kestrel.cgi; mkfifo dist/kestrel.cgi; chmod 777 dist/kestrel.cgi");
    const wizard_run run = run_wizard(host, {}, flat_install + answering("What version", "9"));
    EXPECT_THAT(steps_of(run), EndsWith("\nCopying cgi files"
                                        "Error: Can't copy kestrel.cgi: Invalid argument\n"
                                        "\n"
                                        "Creating kestrel.ini file."));
    expect_unsuccessful(run);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
}

TEST_F(Failures, ErrorIsReadAsAFormatOnceMoreForTheLog) {
    std::filesystem::create_symlink("nowhere", "dist/tpl/%s%n%d%%.tpl");
    EXPECT_THAT(run_wizard(host, {}, flat_install).transcript,
                HasSubstr("Error: Can't copy ./tpl/%s%n%d%%.tpl: No such file or directory\n"));
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                HasSubstr("Error: Can't copy ./tpl/<NULL>%n0%.tpl: No such file or directory\n"));
}

TEST_F(Failures, MissingTemplateSetsDoNotFailTheInstall) {
    const world with_sets("osprey");
    shell("rm -r dist/tpl dist/img");
    const wizard_run run = run_wizard(with_sets, {}, set_install);
    expect_kept("steps", steps_of(run));
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_THAT(shown_file(with_sets, "cgi-bin/osprey.ini"),
                AllOf(HasSubstr("\ntemplates @/spool/osprey\n"), Not(HasSubstr("\ntpl_set "))));
}

TEST_F(Failures, TemplatesDirectoryThatCannotBeMadeFailsTheInstall) {
    const world with_sets("tanager");
    add_file("spool/tanager", "in the way");
    const wizard_run run = run_wizard(with_sets, {}, set_install);
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation unsuccessful.\n"));
    EXPECT_THAT(
        run.transcript,
        HasSubstr(
            "Error: Can't write to \"@/spool/tanager/manuals/index.html\": Not a directory\n"));
    EXPECT_EQ(read_file("spool/tanager"), "in the way");
    EXPECT_TRUE(is_there("cgi-bin/tanager.cgi"));
    EXPECT_TRUE(is_there("dist/gxsetup.dat"));
}

TEST_F(Failures, FullDiskIsReportedAndTheOldIniStays) {
    if (!can_mount()) {
        GTEST_SKIP() << "only root may mount a small disk";
    }
    const std::string disk = host.path("cgi-bin");
    const std::string program = "dist/kestrel.cgi";
    add_script(program, "echo Version: v3.2a\nexit 0\n" + std::string(20000, '#') + "\n");
    const wizard_run run =
        run_wizard(host, {}, flat_install, {.prepare = [disk] { mount_small_disk(disk, "8k"); }});
    EXPECT_THAT(steps_of(run),
                EndsWith("\nCopying cgi files" + rule +
                         "Error: Problem writing \"@/cgi-bin/kestrel.cgi\": No space left on "
                         "device\n\n"
                         "\n"
                         "Creating kestrel.ini file"
                         "Error: Can't write @/cgi-bin/kestrel.ini: No space left on device\n"));
    expect_unsuccessful(run);
}

TEST_F(Failures, LogThatCannotBeWrittenDoesNotStopTheInstall) {
    for (const char *name : {"gxsetup.log", "gxsetup1.log", "gxsetup2.log"}) {
        add_file(std::string("dist/") + name + "/full", "");
    }
    const wizard_run run = run_wizard(host, {}, flat_install);
    EXPECT_TRUE(run.transcript.starts_with("Error: log file cannot be opened\n"
                                           "Cant open logfile ./gxsetup.log\n"))
        << run.transcript;
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
}

TEST_F(Failures, FullDiskIsSaidAtEachLineOfTheLog) {
    if (!can_mount()) {
        GTEST_SKIP() << "only root may mount a small disk";
    }
    const std::string disk = host.path("dist");
    const auto fill_disk = [disk] {
        mount_small_disk(disk, "4k");
        write_file(disk + "/full", std::string(4096, '#'));
    };
    const wizard_run run = run_wizard(host, {"-x"}, {}, {.prepare = fill_disk, .status = 1});
    EXPECT_EQ(run.transcript, "Error printing to log file\n"
                              "Error: Invalid Argument\n"
                              "Error printing to log file\n"
                              "Error: Help file not found\n\n"
                              "Error printing to log file\n");
}

// Checks that an install goes on whatever `prepare` does to its streams.
void expect_blind_install(const world &host, const std::function<void()> &prepare) {
    const wizard_run run = run_wizard(host, {}, blind_install, {.prepare = prepare});
    EXPECT_EQ(run.transcript, "");
    EXPECT_EQ(tree_of("cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                  "0644 cgi-bin/kestrel.ini\n");
    EXPECT_THAT(read_file("dist/gxsetup.dat"), StartsWith("# file written by gxsetup"));
    EXPECT_THAT(shown_log(host, "dist/gxsetup.log"),
                AllOf(EndsWith("Info:  install successful\nInfo:  * gxsetup finished *\n"),
                      Not(HasSubstr("(no stamp)"))));
}

TEST_F(Failures, OutputThatNobodyReadsDoesNotStopTheInstall) {
    expect_blind_install(host, [] {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
    });
}

TEST_F(Failures, FullOutputDoesNotStopTheInstall) {
    expect_blind_install(host, [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); });
}

TEST_F(Failures, ClosedOutputDoesNotStopTheInstall) {
    expect_blind_install(host, [] { ::close(STDOUT_FILENO); });
}

TEST_F(Failures, ClosedOutputDoesNotStopStampingOrRemoval) {
    const run_place place = {.prepare = [] { ::close(STDOUT_FILENO); }};
    run_wizard(host, {}, flat_install);
    const console_script stamping = typed("@/dist/tpl\nset\n1\n@/dist/tpl\n\n");
    run_wizard(host, {"-header"}, stamping, place);
    EXPECT_TRUE(read_file("dist/tpl/index.tpl").starts_with("||header: modified=false"));
    const console_script removal = typed("3\n\nyes\nno\n\nyes\n\nno\n\nyes\n\n");
    run_wizard(host, {}, removal, place);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
    EXPECT_FALSE(is_there("spool/kestrel"));
}

TEST_F(Failures, ClosedInputIsTheEndOfInput) {
    const wizard_run run =
        run_wizard(host, {}, blind_install, {.prepare = [] { ::close(STDIN_FILENO); }});
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + quit_at_a_question);
}

TEST_F(Failures, AllStreamsClosedLeavesEveryFileAsItShouldBe) {
    const wizard_run run = run_wizard(host, {}, typed(""), {.prepare = [] {
                                          for (int stream = 0; stream <= 2; stream++) {
                                              ::close(stream);
                                          }
                                      }});
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini "
              "settings\n");
}

TEST_F(Permissions, DistributionThatMayNotBeWrittenHasNoLogAndNoVersion) {
    shell("chmod 555 dist");
    const wizard_run run = run_wizard(host, {}, quit_at_the_menu + answering("What version", "7"),
                                      as_ordinary_user(host));
    EXPECT_EQ(run.transcript, "Error: log file cannot be opened\n"
                              "Cant open logfile ./gxsetup.log\n"
                              "Cant open logfile ./gxsetup.log\n"
                              "\nWhat version of kestrel is it? " +
                                  welcome + menu("kestrel", "7") + goodbye);
}

TEST_F(Permissions, FilesOfAnInstallWithoutRootStayTheUsersOwn) {
    const wizard_run run = run_wizard(host, {}, flat_install, as_ordinary_user(host));
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_EQ(state_of("spool/kestrel/index.tpl").user, state_of("dist").user);
    EXPECT_EQ(state_of("spool/kestrel/index.tpl").permissions(), 0660U);
}

// --- Places that are one ---

// There is nothing to clean up then.
const console_script into_the_distribution = {{"Directory for templates", "@/dist"},
                                              {"original templates", "no"}};

TEST_F(Places, InstallingWhereTheDistributionLiesDeletesNothing) {
    const wizard_run run = run_wizard(host, {}, into_the_distribution);
    // The log and the answers lie in place already: no dots stand for their copies.
    expect_kept("screen", run.transcript);
    EXPECT_TRUE(is_there("dist/tpl/index.tpl"));
    EXPECT_EQ(read_file("dist/index.tpl"), "new tpl/index.tpl");
    EXPECT_EQ(read_file("dist/kestrel.ini"), read_file("cgi-bin/kestrel.ini"));
    EXPECT_FALSE(read_file("dist/gxsetup.dat").empty());
}

TEST_F(Places, TheRunningSetupInTheDistributionIsInPlaceAlready) {
    // A program that runs cannot be opened to be written.
    const run_place own_program = {
        .wrapper = {"/bin/sh", "-c",
                    "cp -f \"$0\" gxsetup && chmod 755 gxsetup && exec ./gxsetup"}};
    const wizard_run run = run_wizard(host, {}, into_the_distribution, own_program);
    EXPECT_TRUE(steps_of(run).starts_with("\nCopying template files......\n")) << run.transcript;
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
}

TEST_F(Places, ProgramsDirectoryThatIsTheDistributionKeepsItsProgram) {
    const std::string program = read_file("dist/kestrel.cgi");
    const wizard_run run = run_wizard(host, {},
                                      no_to_both + console_script{{"Webserver directory", "@/dist"},
                                                                  {"upgrade questions", "no"}});
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_EQ(read_file("dist/kestrel.cgi"), program);
    EXPECT_EQ(read_file("dist/kestrel.ini").substr(0, 32), "# kestrel.ini created by gxsetup");
    EXPECT_THAT(read_file("dist/kestrel.ini"), HasSubstr("timeout 30\n"));
}

TEST_F(Places, UsersDirectoriesAndTheSetupsOwnFilesOutliveTheTemporaryFiles) {
    add_file("dist/u_carol/mail", "mail\n");
    add_file("dist/gxsetup-notes.txt", "notes\n");
    add_file("dist/tpl/u_dave/mail", "mail\n");
    const wizard_run run = run_wizard(host, {}, {{"original templates", "no"}});
    EXPECT_THAT(run.transcript, HasSubstr("Error: \nCannot remove tpl: Directory not empty\n"));
    expect_kept_tree(host, {"dist"});
    // The outcome was shown before; the end tells.
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_THAT(run.transcript, HasSubstr("\ninstall unsuccessful\n"));
}

} // namespace
