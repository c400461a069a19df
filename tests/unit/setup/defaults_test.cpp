#include "setup/defaults.h"

#include "core/log.h"
#include "setup/answer_store.h"
#include "support/asked_console.h"
#include "support/scratch_test.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

constexpr const char *banner =
    "To create a file of defaults for use in gxsetup, answer the following questions\n"
    "Notes: Suggestions are shown in square brackets [thus]\n"
    "       Just press Enter to accept suggestion.\n"
    "-------------------------------------------------------------------------------\n";
constexpr const char *comment = "# file written by gxsetup, version 3.0h\n"
                                "# library: INI v1.3c\n\n"
                                "# Lines starting with # are comments\n\n";

// The answers that every file needs.
console_script file_of(const std::string &product, const std::string &system,
                       const std::string &file) {
    return {{"Version", "1"},
            {"Product Name", product},
            {"Operating System", system},
            {"Enter file", file}};
}

console_script plover_file(const std::string &file) {
    return file_of("", "UNIX", file);
}

class DefaultsTest : public scratch_test {
  protected:
    DefaultsTest() {
        inilog(".", "gxsetup");
        ini_init(&gxvalues, nullptr, nullptr);
    }

    ~DefaultsTest() override {
        ini_clear(&gxvalues);
        set_loglvl(LOG_ERROR);
        close_log();
    }

    int make(const console_script &answers) {
        int result = -1;
        console = console_of(answers, [&] { result = make_dflt(); });
        return result;
    }

    static std::string settings_of(const std::string &file) {
        const std::string text = read_file(file);
        const std::string expected(comment);
        EXPECT_EQ(text.substr(0, expected.size()), expected);
        return text.substr(std::min(expected.size(), text.size()));
    }

    std::string log() {
        close_log();
        std::string text = read_file("gxsetup.log");
        std::string lines;
        while (text.size() > 12) {
            const std::size_t end = text.find('\n') + 1;
            lines += text.substr(12, end - 12);
            text.erase(0, end);
        }
        return lines;
    }

    std::string console;
};

TEST_F(DefaultsTest, EverySuggestionAcceptedOnUnixForPlover) {
    EXPECT_EQ(make({{"Version", "3.2a"}, {"Operating System", "UNIX"}}), 1);
    EXPECT_EQ(console, std::string(banner) +
                           "\nVersion? "
                           "\nProduct Name [plover]? "
                           "\nOperating System ? "
                           "\nDo you want to change the default suggested directories [NO]? "
                           "\nDo you want to change the default suggested .ini settings [NO]? "
                           "\nDo you want to install/upgrade the <NULL> cgi [NO]? "
                           "\nEnter file to store defaults in [gxdflt_UNIX.dat]? "
                           "gxdflt_UNIX.dat saved\n\n");
    EXPECT_EQ(settings_of("gxdflt_UNIX.dat"), "pophost pop.example.com\n"
                                              "smtphost smtp.example.com\n"
                                              "domain example.com\n"
                                              "version 3.2a\n"
                                              "prod_name plover\n"
                                              "op_system UNIX\n"
                                              "cgi_path /home/httpd/cgi-bin\n"
                                              "vlimg_dir /home/httpd/html/vlimg\n"
                                              "templates /var/spool/plov\n"
                                              "wml FALSE\n");
}

TEST_F(DefaultsTest, EveryQuestionAsked) {
    EXPECT_EQ(make({{"Version", "1.0"},
                    {"Product Name", "kestrel"},
                    {"Operating System", "Linux"},
                    {"default suggested directories", "yes"},
                    {"Suggested templates", "/t"},
                    {"Suggested image", "/i"},
                    {"Suggested cgi", "/c"},
                    {"default suggested .ini", "yes"},
                    {"Suggested domain", "varnel.example"},
                    {"Suggested pop host", "mx.varnel.example"},
                    {"Suggested smtp host", "out.varnel.example"},
                    {"install/upgrade", "yes"},
                    {"Enter file", "mine.dat"}}),
              1);
    EXPECT_EQ(console, std::string(banner) +
                           "\nVersion? "
                           "\nProduct Name [plover]? "
                           "\nOperating System ? "
                           "\nDo you want to change the default suggested directories [NO]? "
                           "\nSuggested templates directory [/var/spool/kestrel]? "
                           "\nSuggested image and wav file directory [/home/httpd/html/vlimg]? "
                           "\nSuggested cgi path [/home/httpd/cgi-bin]? "
                           "\nDo you want to change the default suggested .ini settings [NO]? "
                           "\nSuggested domain name [example.com]? "
                           "\nSuggested pop host [mail.varnel.example]? "
                           "\nSuggested smtp host [mail.varnel.example]? "
                           "\nDo you want to install/upgrade the <NULL> cgi [NO]? "
                           "\nEnter file to store defaults in [gxdflt_Linux.dat]? "
                           "mine.dat saved\n\n");
    EXPECT_EQ(settings_of("mine.dat"), "pophost mx.varnel.example\n"
                                       "smtphost out.varnel.example\n"
                                       "domain varnel.example\n"
                                       "version 1.0\n"
                                       "prod_name kestrel\n"
                                       "op_system Linux\n"
                                       "cgi_path /c\n"
                                       "vlimg_dir /i\n"
                                       "templates /t\n"
                                       "wml TRUE\n");
}

struct product_templates {
    const char *product;
    const char *unix_templates;
    const char *windows_templates;
};

TEST_F(DefaultsTest, DirectoriesByProductAndSystem) {
    const product_templates rows[] = {
        {"kestrel", "/var/spool/kestrel", R"(\kestrel)"},
        {"KESTREL", "/var/spool/kestrel", R"(\kestrel)"},
        {"Plover", "/var/spool/plov", R"(\plov)"},
        {"Tanager", "/var/spool/tanager", R"(\tanager)"},
        {"osprey", "/var/spool/osprey", R"(\osprey)"},
        {"another", "/var/spool/osprey", R"(\osprey)"},
    };
    for (const product_templates &row : rows) {
        SCOPED_TRACE(row.product);
        ASSERT_EQ(make(file_of(row.product, "Solaris", "u.dat")), 1);
        std::string text = read_file("u.dat");
        EXPECT_NE(text.find("\ncgi_path /home/httpd/cgi-bin\nvlimg_dir /home/httpd/html/vlimg\n"
                            "templates " +
                            std::string(row.unix_templates) + "\n"),
                  std::string::npos);
        for (const char *system : {"nt", "NT", "Nt"}) {
            ASSERT_EQ(make(file_of(row.product, system, "w.dat")), 1);
            text = read_file("w.dat");
            EXPECT_NE(text.find("\ncgi_path \\inetpub\\scripts\nvlimg_dir "
                                "\\inetpub\\wwwroot\\vlimg\ntemplates " +
                                std::string(row.windows_templates) + "\n"),
                      std::string::npos);
        }
    }
}

TEST_F(DefaultsTest, OnlyWindowsMakesTanagersFileOneForImap) {
    ASSERT_EQ(make(file_of("tanager", "NT", "w.dat")), 1);
    EXPECT_EQ(settings_of("w.dat").substr(0, 74),
              "imaphost imap.example.com\nsmtphost smtp.example.com\ndomain example.com\nver");
    ASSERT_EQ(make(file_of("tanager", "UNIX", "u.dat")), 1);
    EXPECT_EQ(settings_of("u.dat").substr(0, 72),
              "pophost pop.example.com\nsmtphost smtp.example.com\ndomain example.com\nver");
    ASSERT_EQ(make(file_of("osprey", "NT", "o.dat")), 1);
    EXPECT_EQ(settings_of("o.dat").substr(0, 7), "pophost");
}

TEST_F(DefaultsTest, AnImapFileAsksForTheImapHost) {
    ASSERT_EQ(make(file_of("tanager", "nt", "w.dat") +
                   console_script{{"default suggested .ini", "y"},
                                  {"Suggested domain", "varnel.example"},
                                  {"Suggested imap host", "IMAP.varnel.example"}}),
              1);
    EXPECT_NE(console.find("\nSuggested imap host[mail.varnel.example]? "
                           // The placeholder of the POP host begins with "pop".
                           "\nSuggested smtp host [smtp.varnel.example]? "),
              std::string::npos);
    EXPECT_EQ(settings_of("w.dat").substr(0, 78), "imaphost IMAP.varnel.example\n"
                                                  "smtphost smtp.varnel.example\n"
                                                  "domain varnel.exampl");
}

TEST_F(DefaultsTest, APopHostOfThatNameSuggestsAnSmtpHost) {
    ASSERT_EQ(make(plover_file("u.dat") + console_script{{"default suggested .ini", "yes"},
                                                         {"Suggested domain", "varnel.example"},
                                                         {"Suggested pop host", "POP.example"}}),
              1);
    EXPECT_NE(console.find("\nSuggested pop host [mail.varnel.example]? "
                           "\nSuggested smtp host [smtp.varnel.example]? "),
              std::string::npos);
    EXPECT_EQ(settings_of("u.dat").substr(0, 49),
              "pophost pop.example\nsmtphost smtp.varnel.example\n");
}

TEST_F(DefaultsTest, AnyOtherPopHostIsLowerCasedToo) {
    ASSERT_EQ(
        make(plover_file("u.dat") + console_script{{"default suggested .ini", "yes"},
                                                   {"Suggested domain", "varnel.example"},
                                                   {"Suggested pop host", "Mail.POP.Example"}}),
        1);
    EXPECT_NE(console.find("\nSuggested smtp host [mail.varnel.example]? "), std::string::npos);
    EXPECT_EQ(settings_of("u.dat").substr(0, 54),
              "pophost mail.pop.example\nsmtphost mail.varnel.example\n");
}

TEST_F(DefaultsTest, ANameWithoutEndingGetsOne) {
    EXPECT_EQ(make(plover_file("mydefaults")), 1);
    EXPECT_TRUE(is_there("mydefaults.dat"));
    EXPECT_FALSE(is_there("mydefaults"));
    EXPECT_NE(console.find("mydefaults.dat saved\n\n"), std::string::npos);
    EXPECT_EQ(log(), "");
}

TEST_F(DefaultsTest, TheEndingIsJudgedIgnoringCase) {
    EXPECT_EQ(make(plover_file("mine.DAT")), 1);
    EXPECT_TRUE(is_there("mine.DAT"));
}

TEST_F(DefaultsTest, AnyOtherEndingIsRefused) {
    set_loglvl(LOG_INFO);
    for (const char *name : {"mydefaults.txt", "a.b.dat", "./mine.dat", "mine.", "mine.datx"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(make(plover_file(name)), 0);
        const std::string message =
            std::string(name) + " not valid: gxsetup will only read .dat files\n";
        EXPECT_EQ(console.substr(console.size() - message.size()), message);
        EXPECT_FALSE(is_there(name));
        EXPECT_STREQ(ini_value(&gxvalues, "prod_name", 0), "plover");
        ini_clear(&gxvalues);
    }
    EXPECT_EQ(log().substr(0, 67),
              "Info:  mydefaults.txt not valid: gxsetup will only read .dat files\n");
}

TEST_F(DefaultsTest, AFileThatCannotBeWrittenIsReported) {
    EXPECT_EQ(make(plover_file("missing/mine")), 0);
    const std::string message = "Error: cannot write to missing/mine.dat\n\n";
    EXPECT_EQ(console.substr(console.size() - message.size()), message);
    EXPECT_STREQ(ini_value(&gxvalues, "prod_name", 0), "plover");
    EXPECT_NE(log().find("Error: cannot write to missing/mine.dat\n"), std::string::npos);
}

TEST_F(DefaultsTest, ANameThatTheEndingDoesNotFitIsNotWritten) {
    EXPECT_EQ(make(plover_file(std::string(509, 'a'))), 0);
    EXPECT_NE(console.find("Error: cannot write to aaaa"), std::string::npos);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."),
                            std::filesystem::directory_iterator()),
              1); // the log
}

TEST_F(DefaultsTest, TheStoreIsClearedWhenTheFileIsSaved) {
    set_loglvl(LOG_DEBUG);
    ASSERT_EQ(make(plover_file("mine")), 1);
    EXPECT_EQ(ini_number(&gxvalues), 0);
    EXPECT_NE(log().find("Info:  mine.dat saved\nDebug: Clear gxvalues\n"), std::string::npos);
}

TEST_F(DefaultsTest, AssociationsAreNotUsed) {
    make(plover_file("mine.txt"));
    EXPECT_EQ(ini_value(&gxvalues, "workarea", 1), nullptr);
}

TEST_F(DefaultsTest, TheFileLoadsAsAStore) {
    ASSERT_EQ(make(file_of("tanager", "nt", "gxdflt")), 1);
    INI_SETTINGS ini{};
    ini_init(&ini, nullptr, nullptr);
    ini_setup(&ini, ans_values, ans_associations);
    EXPECT_EQ(ini_load(&ini, "gxdflt.dat"), 11);
    EXPECT_STREQ(ini_value_num(&ini, D_TEMPLATES), R"(\tanager)");
    EXPECT_STREQ(ini_value_num(&ini, D_WORKAREA), R"(\tanager)");
    EXPECT_STREQ(ini_value_num(&ini, D_IMAPHOST), "imap.example.com");
    EXPECT_EQ(ini_value_num(&ini, D_POPHOST), nullptr);
    ini_clear(&ini);
}

TEST_F(DefaultsTest, QuittingSavesNothing) {
    feed_console("1\nq\n\n");
    EXPECT_EXIT(make_dflt(), testing::ExitedWithCode(0), "");
    EXPECT_FALSE(is_there("gxdflt_UNIX.dat"));
}

} // namespace
