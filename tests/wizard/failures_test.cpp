// What the world does to an install: files that are missing, in the way or unreadable, full disks,
// streams that are closed.

#include "support/expected.h"
#include "support/tree.h"
#include "wizard/screens.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock-matchers.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Neither originals nor the removal of temporary files; for tanager and osprey their images, too.
const console_script flat_install = no_to_both;
const console_script set_install = images_here + no_to_both;
const console_script wml_install = no_to_both + console_script{{"merlin cgi", "yes"}};

// The same typed, where the prompts cannot be seen.
const console_script blind_install = typed("1\n\n\n\n\n\n\n\n\n\nno\nno\n\n");

// What is shown from the line after "Please wait" to the outcome.
std::string steps_of(const wizard_run &run) {
    const std::string begin = "\nPlease wait while gxsetup installs ";
    const std::string steps = part_between(run.transcript, begin, rule + "Installation ");
    return steps.substr(steps.find('\n') + 1);
}

// Checks that an install that failed ended so; the two offers were declined.
void expect_unsuccessful(const wizard_run &run) {
    EXPECT_THAT(run.transcript, HasSubstr(rule + "Installation unsuccessful.\n"));
    EXPECT_THAT(run.transcript,
                EndsWith(rule + "install unsuccessful\n\n.\n" + quit_at_a_question));
}

TEST(Failures, MissingSampleIniIsReported) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.ini");
    const wizard_run run = run_wizard(host, {}, flat_install);
    EXPECT_EQ(steps_of(run), "\n"
                             "Copying template files.......................\n"
                             "Copying graphic and wav files...\n"
                             "Copying VBS and JS files..\n"
                             "Copying cgi files.\n"
                             "Creating kestrel.ini file"
                             "Error: Can't open kestrel.ini\n");
    expect_unsuccessful(run);
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.ini"));
    // The next run offers the upgrade all the same.
    EXPECT_THAT(read_file("dist/gxsetup.dat"), HasSubstr("\naction upgrade\n"));
}

TEST(Failures, MissingSampleOfTheWmlPartLeavesTheProductsOwn) {
    const world host("kestrel");
    std::filesystem::remove("dist/merlin.ini");
    const wizard_run run = run_wizard(host, {}, wml_install);
    EXPECT_THAT(steps_of(run), EndsWith("\n"
                                        "Creating kestrel.ini file..\n"
                                        "Creating merlin.ini file"
                                        "Error: Can't open merlin.ini\n"));
    expect_unsuccessful(run);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n"
                                        "0770 cgi-bin/merlin.cgi\n");
}

TEST(Failures, SourceThatCannotBeReadIsReportedAndTheRestCopied) {
    const world host("tanager");
    std::filesystem::remove("dist/manuals/index.html");
    std::filesystem::create_symlink("nowhere", "dist/manuals/index.html");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_EQ(steps_of(run), "\n"
                             "Copying template files.......\n"
                             "Copying graphic and wav files........\n"
                             "Copying cgi files.\n"
                             "Copying manual files"
                             "Error: Can't copy ./manuals/index.html: No such file or directory\n"
                             "\n"
                             "Copying cgi files.\n"
                             "Creating tanager.ini file.");
    expect_unsuccessful(run);
}

TEST(Failures, PipeIsNotWaitedFor) {
    const world host("tanager");
    std::filesystem::remove("dist/manuals/index.html");
    ASSERT_EQ(::mkfifo("dist/manuals/pipe", 0666), 0);
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_THAT(run.transcript, HasSubstr("\nCopying manual files"
                                          "Error: Can't copy ./manuals/pipe: Invalid argument\n"));
    expect_unsuccessful(run);
}

TEST(Failures, ProgramThatIsAPipeIsNotWaitedForEither) {
    const world host("kestrel");
    std::filesystem::remove("dist/kestrel.cgi");
    ASSERT_EQ(::mkfifo("dist/kestrel.cgi", 0777), 0);
    const wizard_run run =
        run_wizard(host, {}, flat_install + console_script{{"What version", "9"}});
    EXPECT_THAT(steps_of(run), EndsWith("\nCopying cgi files"
                                        "Error: Can't copy kestrel.cgi: Invalid argument\n"
                                        "\n"
                                        "Creating kestrel.ini file."));
    expect_unsuccessful(run);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
}

TEST(Failures, ErrorIsReadAsAFormatOnceMoreForTheLog) {
    const world host("tanager");
    std::filesystem::create_symlink("nowhere", "dist/manuals/%s%n%d%%");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_THAT(run.transcript,
                HasSubstr("Error: Can't copy ./manuals/%s%n%d%%: No such file or directory\n"));
    const std::string log = shown_log(host, "dist/gxsetup.log");
    EXPECT_THAT(log,
                HasSubstr("Error: Can't copy ./manuals/<NULL>%n0%: No such file or directory\n"));
}

TEST(Failures, MissingTemplateSetsDoNotFailTheInstall) {
    const world host("osprey");
    std::filesystem::remove_all("dist/tpl");
    std::filesystem::remove_all("dist/img");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_EQ(steps_of(run), "\n"
                             "Copying template files\n"
                             "Copying graphic and wav files\n"
                             "Copying cgi files.\n"
                             "Copying manual files.\n"
                             "Copying cgi files.\n"
                             "Creating osprey.ini file.");
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_THAT(shown_file(host, "cgi-bin/osprey.ini"), HasSubstr("\ntemplates @/spool/osprey\n"));
    EXPECT_THAT(read_file("cgi-bin/osprey.ini"), Not(HasSubstr("\ntpl_set ")));
}

TEST(Failures, FileWhereTheImagesDirectoryShouldBeIsReportedForEachPicture) {
    const world host("kestrel");
    add_file("html/vlimg", "in the way");
    const wizard_run run = run_wizard(host, {}, flat_install);
    const auto refused = [](const std::string &name) {
        return rule + "Error: Can't write to \"@/html/vlimg/" + name + "\": Not a directory\n\n";
    };
    EXPECT_EQ(steps_of(run), "\n"
                             "Copying template files........................\n"
                             "Copying graphic and wav files" +
                                 refused("back.jpg") + refused("bell.wav") + refused("logo.gif") +
                                 "\n"
                                 "Copying VBS and JS files" +
                                 refused("menu.vbs") + refused("menu.js") +
                                 "\n"
                                 "Copying cgi files.\n"
                                 "Creating kestrel.ini file.");
    expect_unsuccessful(run);
    EXPECT_EQ(read_file("html/vlimg"), "in the way");
}

TEST(Failures, DirectoryWhereTheProgramShouldBeIsReported) {
    const world host("kestrel");
    std::filesystem::create_directory("cgi-bin/merlin.cgi");
    const wizard_run run = run_wizard(host, {}, wml_install);
    EXPECT_THAT(steps_of(run),
                EndsWith("\nCreating kestrel.ini file." + rule +
                         "Error: Can't write to \"@/cgi-bin/merlin.cgi\": Is a directory\n\n"
                         "\n"
                         "Creating merlin.ini file."));
    expect_unsuccessful(run);
}

TEST(Failures, DirectoryWhereTheIniShouldBeIsReported) {
    const world host("kestrel");
    add_file("cgi-bin/kestrel.ini/full", "");
    const wizard_run run = run_wizard(host, {}, flat_install);
    EXPECT_THAT(steps_of(run), EndsWith("\nCreating kestrel.ini file"
                                        "Error: Can't open @/cgi-bin/kestrel.ini\n"));
    expect_unsuccessful(run);
}

TEST(Failures, TemplatesDirectoryThatCannotBeMadeFailsTheInstall) {
    const world host("tanager");
    add_file("spool/tanager", "in the way");
    const wizard_run run = run_wizard(host, {}, set_install);
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation unsuccessful.\n"));
    EXPECT_THAT(
        run.transcript,
        HasSubstr(
            "Error: Can't write to \"@/spool/tanager/manuals/index.html\": Not a directory\n"));
    EXPECT_EQ(read_file("spool/tanager"), "in the way");
    EXPECT_TRUE(is_there("cgi-bin/tanager.cgi"));
    EXPECT_TRUE(is_there("dist/gxsetup.dat"));
    EXPECT_EQ(run.status, 0);
}

TEST(Failures, FullDiskIsReportedAndTheOldIniStays) {
    if (!can_mount()) {
        GTEST_SKIP() << "only root may mount a small disk";
    }
    const world host("kestrel");
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
    EXPECT_EQ(run.status, 0);
}

TEST(Failures, LogThatCannotBeWrittenDoesNotStopTheInstall) {
    const world host("kestrel");
    for (const char *name : {"gxsetup.log", "gxsetup1.log", "gxsetup2.log"}) {
        add_file(std::string("dist/") + name + "/full", "");
    }
    const wizard_run run = run_wizard(host, {}, flat_install);
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.transcript.starts_with("Error: log file cannot be opened\n"
                                           "Cant open logfile ./gxsetup.log\n"))
        << run.transcript;
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
}

TEST(Failures, FullDiskIsSaidAtEachLineOfTheLog) {
    if (!can_mount()) {
        GTEST_SKIP() << "only root may mount a small disk";
    }
    const world host("kestrel");
    const std::string disk = host.path("dist");
    const wizard_run run = run_wizard(host, {"-x"}, {}, {.prepare = [disk] {
                                          mount_small_disk(disk, "4k");
                                          write_file(disk + "/full", std::string(4096, '#'));
                                      }});
    EXPECT_EQ(run.transcript, "Error printing to log file\n"
                              "Error: Invalid Argument\n"
                              "Error printing to log file\n"
                              "Error: Help file not found\n\n"
                              "Error printing to log file\n");
    EXPECT_EQ(run.status, 1);
}

TEST(Failures, FileThatMayNotGrowIsReportedAndTheInstallGoesOn) {
    const world host("kestrel");
    const std::string program = "dist/kestrel.cgi";
    add_script(program, "echo Version: v3.2a\nexit 0\n" + std::string(100'000, '#') + "\n");
    const wizard_run run = run_wizard(host, {}, flat_install, {.prepare = [] {
                                          const ::rlimit limit = {65536, 65536};
                                          ::setrlimit(RLIMIT_FSIZE, &limit);
                                      }});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(steps_of(run),
                EndsWith("\nCopying cgi files" + rule +
                         "Error: Problem writing \"@/cgi-bin/kestrel.cgi\": File too large\n\n"
                         "\n"
                         "Creating kestrel.ini file."));
    EXPECT_EQ(std::filesystem::file_size("cgi-bin/kestrel.cgi"), 65536U);
    expect_unsuccessful(run);
}

TEST(Failures, OutputThatNobodyReadsDoesNotStopTheInstall) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, blind_install, {.prepare = [] {
                                          std::array<int, 2> ends{};
                                          ASSERT_EQ(::pipe(ends.data()), 0);
                                          ::dup2(ends[1], STDOUT_FILENO);
                                          ::close(ends[0]);
                                          ::close(ends[1]);
                                      }});
    EXPECT_EQ(run.transcript, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
    EXPECT_TRUE(shown_log(host, "dist/gxsetup.log")
                    .ends_with("Info:  install successful\nInfo:  * gxsetup finished *\n"));
}

TEST(Failures, FullOutputDoesNotStopTheInstall) {
    const world host("kestrel");
    const wizard_run run =
        run_wizard(host, {}, blind_install,
                   {.prepare = [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); }});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(is_there("cgi-bin/kestrel.ini"));
    EXPECT_TRUE(shown_log(host, "dist/gxsetup.log").ends_with("* gxsetup finished *\n"));
}

TEST(Failures, ClosedOutputDoesNotStopStampingOrRemoval) {
    const world host("kestrel");
    const run_place place = {.prepare = [] { ::close(STDOUT_FILENO); }};
    run_wizard(host, {}, flat_install);
    const console_script stamping = typed("@/dist/tpl\nset\n1\n@/dist/tpl\n\n");
    EXPECT_EQ(run_wizard(host, {"-header"}, stamping, place).status, 0);
    EXPECT_TRUE(read_file("dist/tpl/index.tpl").starts_with("||header: modified=false"));
    const console_script removal = typed("3\n\nyes\nno\n\nyes\n\nno\n\nyes\n\n");
    EXPECT_EQ(run_wizard(host, {}, removal, place).status, 0);
    EXPECT_FALSE(is_there("cgi-bin/kestrel.cgi"));
    EXPECT_FALSE(is_there("spool/kestrel"));
}

TEST(Failures, ClosedOutputDoesNotStopTheInstall) {
    const world host("kestrel");
    const wizard_run run =
        run_wizard(host, {}, blind_install, {.prepare = [] { ::close(STDOUT_FILENO); }});
    EXPECT_EQ(run.transcript, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(tree_of(host, "cgi-bin"), "0770 cgi-bin/kestrel.cgi\n"
                                        "0644 cgi-bin/kestrel.ini\n");
    EXPECT_TRUE(read_file("dist/gxsetup.dat").starts_with("# file written by gxsetup"));
    EXPECT_TRUE(shown_log(host, "dist/gxsetup.log")
                    .ends_with("Info:  install successful\nInfo:  * gxsetup finished *\n"));
}

TEST(Failures, ClosedInputIsTheEndOfInput) {
    const world host("kestrel");
    const wizard_run run =
        run_wizard(host, {}, blind_install, {.prepare = [] { ::close(STDIN_FILENO); }});
    EXPECT_EQ(run.transcript, welcome + menu("kestrel") + quit_at_a_question);
    EXPECT_EQ(run.status, 0);
}

TEST(Failures, AllStreamsClosedLeavesEveryFileAsItShouldBe) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, typed(""), {.prepare = [] {
                                          for (int stream = 0; stream <= 2; stream++) {
                                              ::close(stream);
                                          }
                                      }});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(shown_log(host, "dist/gxsetup.log"),
              "Info:  * gxsetup, version 3.0h started *\n"
              "Error: INI: file {@/spool/kestrel/gxsetup.dat} could not be opened for ini "
              "settings\n");
}

// --- Permissions ---

void set_mode(const std::string &path, unsigned mode) {
    std::filesystem::permissions(path, std::filesystem::perms(mode));
}

TEST(Permissions, UnreadableSourceIsReportedAndTheRestCopied) {
    const world host("tanager");
    set_mode("dist/manuals/index.html", 0);
    const wizard_run run = run_wizard(host, {}, set_install, as_ordinary_user(host));
    EXPECT_EQ(steps_of(run), "\n"
                             "Copying template files.......\n"
                             "Copying graphic and wav files........\n"
                             "Copying cgi files.\n"
                             "Copying manual files"
                             "Error: Can't copy ./manuals/index.html: Permission denied\n"
                             "\n"
                             "Copying cgi files.\n"
                             "Creating tanager.ini file.");
    expect_unsuccessful(run);
}

TEST(Permissions, ProgramsDirectoryThatMayNotBeWrittenFailsTheInstall) {
    const world host("kestrel");
    set_mode("cgi-bin", 0555);
    const wizard_run run = run_wizard(host, {}, flat_install, as_ordinary_user(host));
    EXPECT_THAT(steps_of(run),
                EndsWith("\nCopying cgi files" + rule +
                         "Error: Can't write to \"@/cgi-bin/kestrel.cgi\": Permission denied\n\n"
                         "\n"
                         "Creating kestrel.ini file"
                         "Error: Can't open @/cgi-bin/kestrel.ini\n"));
    expect_unsuccessful(run);
    EXPECT_EQ(run.status, 0);
}

TEST(Permissions, IniThatMayNotBeWrittenStaysAsItWas) {
    const world host("kestrel");
    add_file("cgi-bin/kestrel.ini", "old 1\n");
    set_mode("cgi-bin/kestrel.ini", 0444);
    const wizard_run run = run_wizard(host, {}, flat_install, as_ordinary_user(host));
    EXPECT_THAT(steps_of(run), EndsWith("\nCreating kestrel.ini file"
                                        "Error: Can't open @/cgi-bin/kestrel.ini\n"));
    EXPECT_EQ(read_file("cgi-bin/kestrel.ini"), "old 1\n");
}

TEST(Permissions, DistributionThatMayNotBeWrittenHasNoLogAndNoVersion) {
    const world host("kestrel");
    set_mode("dist", 0555);
    const wizard_run run = run_wizard(
        host, {}, quit_at_the_menu + console_script{{"What version", "7"}}, as_ordinary_user(host));
    EXPECT_EQ(run.transcript, "Error: log file cannot be opened\n"
                              "Cant open logfile ./gxsetup.log\n"
                              "Cant open logfile ./gxsetup.log\n"
                              "\nWhat version of kestrel is it? " +
                                  welcome + menu("kestrel", "7") + goodbye);
    EXPECT_EQ(run.status, 0);
}

TEST(Permissions, FilesOfAnInstallWithoutRootStayTheUsersOwn) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, flat_install, as_ordinary_user(host));
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    struct stat templates {};
    struct stat distribution {};
    ASSERT_EQ(::stat("spool/kestrel/index.tpl", &templates), 0);
    ASSERT_EQ(::stat("dist", &distribution), 0);
    EXPECT_EQ(templates.st_uid, distribution.st_uid);
    EXPECT_EQ(templates.st_mode & 07777U, 0660U);
}

// --- Places that are one ---

// There is nothing to clean up then.
const console_script into_the_distribution = {{"Directory for templates", "@/dist"},
                                              {"original templates", "no"}};

TEST(Places, InstallingWhereTheDistributionLiesDeletesNothing) {
    const world host("kestrel");
    const wizard_run run = run_wizard(host, {}, into_the_distribution);
    // The log and the answers lie in place already: no dots stand for their copies.
    expect_kept("screen", run.transcript);
    EXPECT_TRUE(is_there("dist/tpl/index.tpl"));
    EXPECT_EQ(read_file("dist/index.tpl"), "new tpl/index.tpl");
    EXPECT_EQ(read_file("dist/kestrel.ini"), read_file("cgi-bin/kestrel.ini"));
    EXPECT_FALSE(read_file("dist/gxsetup.dat").empty());
}

TEST(Places, TheRunningSetupInTheDistributionIsInPlaceAlready) {
    const world host("kestrel");
    // A program that runs cannot be opened to be written.
    const run_place own_program = {
        .wrapper = {"/bin/sh", "-c",
                    "cp -f \"$0\" gxsetup && chmod 755 gxsetup && exec ./gxsetup"}};
    const wizard_run run = run_wizard(host, {}, into_the_distribution, own_program);
    EXPECT_TRUE(steps_of(run).starts_with("\nCopying template files......\n")) << run.transcript;
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
}

TEST(Places, ProgramsDirectoryThatIsTheDistributionKeepsItsProgram) {
    const world host("kestrel");
    const std::string program = read_file("dist/kestrel.cgi");
    const wizard_run run = run_wizard(host, {},
                                      no_to_both + console_script{{"Webserver directory", "@/dist"},
                                                                  {"upgrade questions", "no"}});
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_EQ(read_file("dist/kestrel.cgi"), program);
    EXPECT_EQ(read_file("dist/kestrel.ini").substr(0, 32), "# kestrel.ini created by gxsetup");
    EXPECT_THAT(read_file("dist/kestrel.ini"), HasSubstr("timeout 30\n"));
}

TEST(Places, UsersDirectoriesAndTheSetupsOwnFilesOutliveTheTemporaryFiles) {
    const world host("kestrel");
    add_file("dist/u_carol/mail", "mail\n");
    add_file("dist/gxsetup-notes.txt", "notes\n");
    add_file("dist/tpl/u_dave/mail", "mail\n");
    const wizard_run run = run_wizard(host, {}, {{"original templates", "no"}});
    EXPECT_THAT(run.transcript, HasSubstr("Error: \nCannot remove tpl: Directory not empty\n"));
    EXPECT_EQ(tree_of(host, "dist"), "0644 dist/gxsetup \"the setup program\"\n"
                                     "0644 dist/gxsetup-notes.txt \"notes\"\n"
                                     "0644 dist/gxsetup.dat\n"
                                     "0644 dist/gxsetup.log\n"
                                     "0644 dist/gxsetup1.log \"\"\n"
                                     "0755 dist/tpl/\n"
                                     "0755 dist/tpl/u_dave/\n"
                                     "0644 dist/tpl/u_dave/mail \"mail\"\n"
                                     "0755 dist/u_carol/\n"
                                     "0644 dist/u_carol/mail \"mail\"\n");
    // The outcome was shown before; the end tells.
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_THAT(run.transcript, HasSubstr("\ninstall unsuccessful\n"));
}

} // namespace
