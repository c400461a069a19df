// What unattended runs do, and the status that tells it.

#include "support/expected.h"
#include "support/tree.h"
#include "unattended/unattended_run.h"
#include "wizard/fixtures.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr int done_whole = 0;
constexpr int step_failed = 1;
constexpr int not_begun = 2;
constexpr int nothing_to_do = 3;

// The images directory of the template-set products is the one thing that no defaults file can say.
std::vector<std::string> with_images(const world &host, std::vector<std::string> arguments) {
    if (has_sets(host.product())) {
        arguments.emplace_back("vlimg_dir=@/html/vlimg");
    }
    return arguments;
}

int status_of(const world &host, const std::vector<std::string> &arguments) {
    return run_unattended(host, arguments, {.status = std::nullopt}).status;
}

} // namespace

class EachProduct : public testing::TestWithParam<std::string> {
  protected:
    world host{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Unattended, EachProduct, testing::ValuesIn(product_names()));

TEST_P(EachProduct, IsInstalledAndThenLeftAlone) {
    const std::vector<std::string> install = with_images(host, {"install", "domain=example.org"});
    const wizard_run run = run_unattended(host, install);
    EXPECT_THAT(run.transcript, HasSubstr("\nInstallation successful.\n"));
    EXPECT_THAT(run.transcript, EndsWith("gxsetup-unattended: install of " + host.product() +
                                         " 3.2a in @/spool/" + host.product() + ": done\n"));
    EXPECT_TRUE(is_there("cgi-bin/" + host.product() + ".cgi"));
    EXPECT_TRUE(is_there("dist/tpl"));

    const std::string before = state_of(host);
    EXPECT_EQ(status_of(host, install), nothing_to_do);
    EXPECT_EQ(state_of(host), before);
    const wizard_run other = run_unattended(
        host, with_images(host, {"install", "domain=a.example"}), {.status = not_begun});
    EXPECT_EQ(other.errors,
              "gxsetup-unattended: " + host.product() + " is in @/cgi-bin already: upgrade it\n");
    EXPECT_EQ(state_of(host), before);
}

TEST_P(EachProduct, IsRehearsedAndNothingIsChanged) {
    const std::string before = state_of(host);
    const wizard_run run = run_unattended(host, with_images(host, {"--rehearse", "install"}));
    EXPECT_THAT(run.transcript,
                HasSubstr("gxsetup is ready to install " + host.product() + ", to version 3.2a\n"));
    EXPECT_THAT(run.transcript, EndsWith(": rehearsed, nothing was changed\n"));
    EXPECT_EQ(state_of(host), before);
}

TEST_P(EachProduct, IsListedAsAFileThatDoesTheSame) {
    const wizard_run list = run_unattended(host, with_images(host, {"--list", "install"}));
    EXPECT_THAT(list.transcript,
                HasSubstr("# Directory for templates\ntemplates @/spool/" + host.product() + "\n"));
    write_file("answers", host.meant(list.transcript));
    const wizard_run plain = run_unattended(host, with_images(host, {"-n", "install"}));
    const wizard_run from_list = run_unattended(host, {"-n", "install", "@/answers"});
    const auto summary = [](const wizard_run &run) {
        return run.transcript.substr(run.transcript.find("gxsetup is ready"));
    };
    EXPECT_EQ(summary(from_list), summary(plain));
}

TEST_P(EachProduct, IsUpgradedAndThenLeftAlone) {
    install_31_and_unpack_32(host);
    const std::vector<std::string> upgrade = with_images(host, {"upgrade"});
    const std::string before = state_of(host);
    EXPECT_EQ(status_of(host, with_images(host, {"upgrade", "-n"})), done_whole);
    EXPECT_EQ(state_of(host), before);

    const wizard_run run = run_unattended(host, upgrade);
    EXPECT_THAT(run.transcript, HasSubstr("\nUpgrade successful.\n"));
    const std::string after = state_of(host);
    EXPECT_NE(after, before);
    EXPECT_EQ(status_of(host, upgrade), nothing_to_do);
    EXPECT_EQ(state_of(host), after);
}

TEST_P(EachProduct, KeepsAllThatNoAnswerSaysToRemove) {
    ASSERT_EQ(status_of(host, with_images(host, {"install"})), done_whole);
    const wizard_run run = run_unattended(host, with_images(host, {"remove"}));
    EXPECT_TRUE(is_there("cgi-bin/" + host.product() + ".cgi"));
    EXPECT_TRUE(is_there("spool/" + host.product() + "/gxsetup.dat"));
    EXPECT_EQ(status_of(host, with_images(host, {"install"})), nothing_to_do);
}

TEST_P(EachProduct, IsRemovedPartByPart) {
    ASSERT_EQ(status_of(host, with_images(host, {"install", "wml=yes"})), done_whole);
    const std::string templates = "spool/" + host.product();
    add_file(templates + "/u_ann/mail", "mail");
    add_file(templates + "/below/file", "");
    const std::string before = state_of(host);
    const std::vector<std::string> removal =
        with_images(host, {"remove", "remove_programs=yes", "remove_templates=yes"});
    const wizard_run rehearsed = run_unattended(
        host,
        with_images(host, {"--rehearse", "remove", "remove_programs=yes", "remove_templates=yes"}));
    EXPECT_THAT(rehearsed.transcript,
                AllOf(HasSubstr("\nWould remove @/cgi-bin/" + host.product() + ".cgi."),
                      HasSubstr("\nWould remove @/" + templates + "/gxsetup.dat."),
                      HasSubstr("\nWould remove @/" + templates + "/below/ if it is empty then."),
                      Not(HasSubstr("u_ann"))));
    EXPECT_EQ(state_of(host), before);

    const wizard_run run = run_unattended(host, removal);
    EXPECT_EQ(listed_names("cgi-bin"), std::vector<std::string>{});
    EXPECT_EQ(tree_of(host, templates),
              "0755 " + templates + "/u_ann/\n0644 " + templates + "/u_ann/mail \"mail\"\n");
}

using Unattended = unpacked_test<kestrel>;
using UnattendedOsprey = unpacked_test<osprey>;

TEST_F(Unattended, UpgradeTreatsEachTemplateAsItsCategorySays) {
    install_31_and_unpack_32(host);
    add_templates(host, "spool/kestrel", {{"gone.tpl", "kst_s2", "1.0", "text"}});
    const std::string edited = read_file("spool/kestrel/edited.tpl");
    const std::string moved = read_file("spool/kestrel/moved.tpl");
    const wizard_run run = run_unattended(host, {"upgrade"});
    EXPECT_THAT(run.transcript, HasSubstr("Error: Can't copy ./tpl/gone.tpl\n"));
    EXPECT_EQ(read_file("spool/kestrel/clean.tpl"), read_file("dist/tpl/clean.tpl"));
    EXPECT_EQ(read_file("spool/kestrel/edited.tpl"), edited);
    EXPECT_EQ(read_file("spool/kestrel/moved.tpl"), moved);
    EXPECT_EQ(read_file("spool/kestrel/brandnew.tpl"), read_file("dist/tpl/brandnew.tpl"));
}

TEST_F(Unattended, ATemplateThatCouldBeReplacedSafelyIsSomethingToDo) {
    install_31_and_unpack_32(host);
    ASSERT_EQ(status_of(host, {"upgrade", "replace_safe=no"}), done_whole);
    EXPECT_EQ(status_of(host, {"upgrade", "replace_safe=no"}), nothing_to_do);
    EXPECT_EQ(status_of(host, {"upgrade"}), done_whole);
    EXPECT_EQ(status_of(host, {"upgrade"}), nothing_to_do);
}

TEST_F(Unattended, AnotherAnswerIsSomethingToDo) {
    ASSERT_EQ(status_of(host, {"install", "wml=yes"}), done_whole);
    for (const char *same : {"wml=yes", "vlimg=/vlimg", "templates=@/spool/kestrel",
                             "prod_name=kestrel", "--expect-product=kestrel",
                             "--expect-version=3.2a", "replace_templates=no", "owner=nobody"}) {
        EXPECT_EQ(status_of(host, {"-n", "upgrade", same}), nothing_to_do) << same;
    }
    for (const char *other : {"wml=no", "vlimg=/pictures", "vlimg=/vlimg/s1"}) {
        EXPECT_EQ(status_of(host, {"-n", "upgrade", other}), done_whole) << other;
    }
}

TEST_F(Unattended, AFileThatIsMissingOrAnotherProgramIsSomethingToDo) {
    ASSERT_EQ(status_of(host, {"install", "wml=yes"}), done_whole);
    for (const std::string file :
         {"html/vlimg/logo.gif", "spool/kestrel/logo.gif", "spool/kestrel/gxsetup.dat",
          "cgi-bin/kestrel.ini", "cgi-bin/merlin.cgi"}) {
        const std::string content = read_file(file);
        std::filesystem::remove(file);
        EXPECT_EQ(status_of(host, {"-n", "upgrade"}), done_whole) << file;
        add_file(file, content);
        EXPECT_EQ(status_of(host, {"-n", "upgrade"}), nothing_to_do) << file;
    }
    add_file("html/vlimg/logo.gif", "own picture");
    EXPECT_EQ(status_of(host, {"-n", "upgrade"}), nothing_to_do);
    for (const char *program : {"cgi-bin/merlin.cgi", "cgi-bin/kestrel.cgi"}) {
        add_file(program, "another program");
        EXPECT_EQ(status_of(host, {"-n", "upgrade"}), done_whole) << program;
    }
}

TEST_F(Unattended, AListGoesOnWhereARunWouldEnd) {
    add_program("dist/kestrel.cgi", "no version\n");
    EXPECT_THAT(run_unattended(host, {"--list", "upgrade"}).transcript,
                HasSubstr("\ntemplates @/spool/kestrel\n"));
    std::filesystem::remove_all("cgi-bin");
    EXPECT_THAT(run_unattended(host, {"--list", "install"}).transcript,
                AllOf(HasSubstr("\n# version\n"), HasSubstr("\ncgi_path @/cgi-bin\n")));
}

TEST_F(Unattended, AStepThatFailsIsToldByTheStatusWhateverTheLastLineSays) {
    ASSERT_EQ(status_of(host, {"install"}), done_whole);
    add_program("dist/kestrel.cgi", "Version: release v3.3\n");
    std::filesystem::create_directories("cgi-bin/kestrel.new/own");
    const wizard_run run = run_unattended(host, {"upgrade"}, {.status = step_failed});
    EXPECT_THAT(run.transcript, HasSubstr("\nupgrade successful\n"));
    EXPECT_THAT(run.errors,
                HasSubstr("gxsetup-unattended: upgrade of kestrel 3.3 in @/spool/kestrel: "
                          "begun, but 2 steps failed; see gxsetup.log\n"));
}

TEST_F(Unattended, QuietRunsShowProblemsOnly) {
    const wizard_run install = run_unattended(host, {"-q", "install"});
    EXPECT_EQ(install.transcript + install.errors, "");
    const wizard_run none = run_unattended(host, {"--quiet", "install"}, {.status = nothing_to_do});
    EXPECT_EQ(none.transcript + none.errors, "");
    add_program("dist/kestrel.cgi", "Version: release v3.3\n");
    std::filesystem::create_directories("cgi-bin/kestrel.new/own");
    const wizard_run failed = run_unattended(host, {"-q", "upgrade"}, {.status = step_failed});
    EXPECT_EQ(failed.transcript, "");
    EXPECT_THAT(failed.errors, HasSubstr("gxsetup-unattended: Can't open @/cgi-bin/kestrel.new\n"));
}

TEST_F(Unattended, AnAnswerThatTheSavedOnesLackIsAChange) {
    ASSERT_EQ(status_of(host, {"install"}), done_whole);
    shell("sed -i '/^vlimg /d' spool/kestrel/gxsetup.dat");
    const wizard_run run = run_unattended(host, {"install", "vlimg=/vlimg"}, {.status = not_begun});
    EXPECT_THAT(run.errors, EndsWith(": kestrel is in @/cgi-bin already: upgrade it\n"));
}

TEST_F(Unattended, DeletesTheDistributionOnlyWhereItIsTold) {
    ASSERT_EQ(status_of(host, {"install", "delete_temporary=yes"}), done_whole);
    EXPECT_FALSE(is_there("dist/tpl"));
    EXPECT_TRUE(is_there("dist/gxsetup.log"));
}

TEST_F(Unattended, WorksInTheDirectoryNamed) {
    write_file("answers", "domain example.net\n");
    const wizard_run run =
        run_unattended(host, {"-C", "dist", "install", "answers"}, {.directory = "."});
    EXPECT_THAT(read_file("cgi-bin/kestrel.ini"), HasSubstr("\ndomain example.net\n"));
}

TEST_F(Unattended, LogsDetailsWhereTheyAreAskedFor) {
    ASSERT_EQ(status_of(host, {"--debug", "install"}), done_whole);
    EXPECT_THAT(read_file("dist/gxsetup.log"), HasSubstr("Info:  Logging set to DEBUG.\n"));
    EXPECT_THAT(read_file("dist/gxsetup.log"), HasSubstr("Debug: install questions\n"));
}

TEST_F(Unattended, TellsItsHelpAndItsVersion) {
    expect_kept("help", run_unattended(host, {"--help"}).transcript);
    const wizard_run version = run_unattended(host, {"--version"});
    EXPECT_EQ(version.transcript, "gxsetup-unattended of gxsetup, version 3.0h\n");
}

TEST_F(UnattendedOsprey, HoldsTheHostsThatUsersMayLogInTo) {
    write_file("answers", "restrict_hosts yes\nallow_host_login one.example\n"
                          "allow_host_login two.example\nvlimg_dir " +
                              host.path("html/vlimg") + "\n");
    const wizard_run run = run_unattended(host, {"install", "@/answers"});
    EXPECT_THAT(run.transcript, HasSubstr("[no]? yes\nEnter a host and press enter, enter a . to "
                                          "finish\none.example\ntwo.example\n.\n"));
    EXPECT_THAT(read_file("cgi-bin/osprey.ini"),
                HasSubstr("allow_host_login one.example\nallow_host_login two.example\n"));
}
