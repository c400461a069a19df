#include "setup/product_ini.h"

#include "support/answers_test.h"
#include "support/console_capture.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

class ProductIni : public answers_test {
  protected:
    ProductIni() {
        std::filesystem::create_directory("templates");
        std::filesystem::create_directory("cgi");
        answer(D_VERSION, "1.2");
        answer(D_DOMAIN, "d.test");
        answer(D_POPHOST, "pop.test");
        answer(D_IMAPHOST, "imap.test");
        answer(D_SMTPHOST, "smtp.test");
        answer(D_TEMPLATES, scratch.path("templates"));
        answer(D_WORKAREA, "/work");
        answer(D_VLIMG, "/img");
        answer(D_BULLETIN, "/bulletins");
        answer(D_WAP_TEMPLATES, "/wap");
        answer(D_WAP_VLIMG, "/wapimg");
        answer(D_TPL_SET, "2 two");
        answer(D_TPL_SET, "1 one");
        answer(D_TPL_SET, "3 three");
        answer(D_WML_TPL_SET, "1 wml");
        answer(D_ALLOW_HOST, "a.test");
        answer(D_ALLOW_HOST, "b.test");
    }

    // Writes the product's file from `sample`; gives what was written, behind its first lines.
    std::string written(const std::string &product, std::string_view sample) {
        write_file(product + ".ini", sample);
        const std::string path = scratch.path("cgi/" + product + ".ini");
        int result = 0;
        EXPECT_EQ(console_of([&] { result = write_new_gxini(ini, product.c_str(), path.c_str()); }),
                  ".");
        EXPECT_EQ(result, 1);
        EXPECT_EQ(read_file("templates/" + product + ".ini"), read_file(path));
        return read_file(path);
    }
};

TEST_F(ProductIni, FlatProductEndsWithItsOriginalPopHost) {
    write_file("kestrel.cgi", "");
    EXPECT_EQ(written("kestrel", "a 1\n"),
              "# kestrel.ini created by gxsetup, version 3.0h for kestrel, version 1.2\n"
              "\n"
              "a 1\n"
              "\n"
              "\n"
              "domain d.test\n"
              "pophost pop.test\n"
              "smtphost smtp.test\n"
              "templates " +
                  scratch.path("templates") +
                  "\n"
                  "workarea /work\n"
                  "vlimg /img\n"
                  "# Never change the next line, even if you change pophost\n"
                  "original_pophost pop.test\n");
}

TEST_F(ProductIni, SetProductsListTheirSetsAndHosts) {
    write_file("tanager.cgi", "");
    const std::string tail = "smtphost smtp.test\n"
                             "templates " +
                             scratch.path("templates") +
                             "\n"
                             "workarea /work\n"
                             "vlimg /img\n"
                             "bulletin_path /bulletins\n"
                             "tpl_set 2 two\n"
                             "tpl_set 1 one\n"
                             "tpl_set 3 three\n"
                             "allow_host_login a.test\n"
                             "allow_host_login b.test\n";
    EXPECT_EQ(written("tanager", ""),
              "# tanager.ini created by gxsetup, version 3.0h for tanager, version 1.2\n"
              "\n"
              "\n"
              "\n"
              "domain d.test\n"
              "imaphost imap.test\n" +
                  tail);
    EXPECT_EQ(written("osprey", ""),
              "# osprey.ini created by gxsetup, version 3.0h for osprey, version 1.2\n"
              "\n"
              "\n"
              "\n"
              "domain d.test\n"
              "pophost pop.test\n" +
                  tail);
}

TEST_F(ProductIni, WmlPartOfASetProductHasItsOwnPlaces) {
    write_file("osprey.cgi", "");
    const std::string file = written("merlin", "");
    EXPECT_EQ(file.substr(file.find("domain ")), "domain d.test\n"
                                                 "pophost pop.test\n"
                                                 "smtphost smtp.test\n"
                                                 "templates /wap\n"
                                                 "workarea /work\n"
                                                 "vlimg /wapimg\n"
                                                 "bulletin_path /bulletins\n"
                                                 "tpl_set 1 wml\n"
                                                 "allow_host_login a.test\n"
                                                 "allow_host_login b.test\n");
}

TEST_F(ProductIni, StyleFollowsTheProgramThatIsHere) {
    // No program at all counts as the early style, whatever the product.
    const std::string file = written("Tanager", "");
    EXPECT_NE(file.find("\nimaphost imap.test\n"), std::string::npos);
    EXPECT_NE(file.find("\noriginal_pophost pop.test\n"), std::string::npos);
    EXPECT_EQ(file.find("tpl_set"), std::string::npos);
    EXPECT_EQ(file.find("allow_host_login"), std::string::npos);
    EXPECT_EQ(file.find("bulletin_path"), std::string::npos);
}

TEST_F(ProductIni, LinesThatAreWrittenAnewLeaveTheSample) {
    write_file("osprey.cgi", "");
    const std::string sample = "# comment domain\n"
                               "domain x\n"
                               "domains x\n"
                               " domain kept\n"
                               "Domain kept\n"
                               "domai kept\n"
                               "pophost x\n"
                               "pophosts x\n"
                               "imaphost x\n"
                               "imaphosts x\n"
                               "imaphos x\n"
                               "imapho kept\n"
                               "smtphost x\n"
                               "smtphos kept\n"
                               "templates x\n"
                               "template kept\n"
                               "workarea x\n"
                               "vlimg x\n"
                               "vlimg_dir x\n"
                               "bulletin_path x\n"
                               "bulletin kept\n"
                               "allow_host_login x\n"
                               "tpl_set x\n"
                               "tpl_sets x\n"
                               "original_pophost kept\n"
                               "\r\n"
                               "last kept";
    const auto body = [](const std::string &file) {
        const std::size_t from = file.find("\n\n") + 2;
        return file.substr(from, file.find("\n\ndomain ") - from);
    };
    const std::string kept = "# comment domain\n"
                             " domain kept\n"
                             "Domain kept\n"
                             "domai kept\n"
                             "imapho kept\n"
                             "smtphos kept\n"
                             "template kept\n"
                             "bulletin kept\n";
    const std::string rest = "original_pophost kept\n"
                             "\r\n"
                             "last kept";
    EXPECT_EQ(body(written("osprey", sample)), kept + rest);
    EXPECT_EQ(body(written("tanager", sample)), kept + rest);
    EXPECT_EQ(body(written("merlin", sample)), kept + rest);
    EXPECT_EQ(body(written("kestrel", sample)), kept + "tpl_set x\ntpl_sets x\n" + rest);
}

TEST_F(ProductIni, LongSampleLineIsLookedAtInPieces) {
    write_file("kestrel.cgi", "");
    const std::string file =
        written("kestrel", "x " + std::string(508, 'a') + "domain of a piece\nnext 1\n");
    EXPECT_NE(file.find("\nx " + std::string(508, 'a') + "next 1\n"), std::string::npos);
}

TEST_F(ProductIni, MissingAnswersAreEmptyValues) {
    write_file("kestrel.cgi", "");
    ini_clear(ini);
    answer(D_TEMPLATES, scratch.path("templates"));
    const std::string file = written("kestrel", "");
    EXPECT_EQ(file.substr(0, file.find("templates ")),
              "# kestrel.ini created by gxsetup, version 3.0h for kestrel, version \n"
              "\n"
              "\n"
              "\n"
              "domain \n"
              "pophost \n"
              "smtphost \n");
    EXPECT_TRUE(file.ends_with("\nvlimg \n"
                               "# Never change the next line, even if you change pophost\n"
                               "original_pophost \n"));
}

TEST_F(ProductIni, SampleThatCannotBeOpenedIsReportedAndNothingWritten) {
    EXPECT_EQ(console_of([&] { EXPECT_EQ(write_new_gxini(ini, "plover", "cgi/plover.ini"), 0); }),
              "Error: Can't open plover.ini\n");
    EXPECT_FALSE(is_there("cgi/plover.ini"));
}

TEST_F(ProductIni, FileThatCannotBeOpenedIsReported) {
    write_file("plover.ini", "");
    EXPECT_EQ(console_of([&] { EXPECT_EQ(write_new_gxini(ini, "plover", "none/x.ini"), 0); }),
              "Error: Can't open none/x.ini\n");
}

TEST_F(ProductIni, CopyAmongTheTemplatesMayFail) {
    write_file("plover.ini", "");
    answer(D_TEMPLATES, "/dev/null");
    console_of([&] { EXPECT_EQ(write_new_gxini(ini, "plover", "cgi/plover.ini"), 1); });
    EXPECT_TRUE(is_there("cgi/plover.ini"));
}

// --- Questions ---

TEST_F(ProductIni, FlatProductsAreAskedForThreeHosts) {
    answer(D_PROD_NAME, "kestrel");
    EXPECT_EQ(console_of("\n\n\n", [&] { do_ini_quest(ini, 1); }),
              "\n\nWhat is your domain name [d.test]? "
              "\nWhat is the name of your pop host [mail.d.test]? "
              "\nWhat is the name of your smtp host [mail.d.test]? ");
    EXPECT_EQ(answer(D_POPHOST), "mail.d.test");
    EXPECT_EQ(answer(D_IMAPHOST), "mail.d.test");
    EXPECT_EQ(answer(D_SMTPHOST), "mail.d.test");
}

TEST_F(ProductIni, AddressIsItsOwnHost) {
    answer(D_PROD_NAME, "plover");
    for (const std::string domain : {"192.0.2.1", "...", "7"}) {
        console_of(domain + "\n\n\n", [&] { do_ini_quest(ini, 1); });
        EXPECT_EQ(answer(D_POPHOST), domain);
    }
    for (const std::string domain : {"192.0.2.1a", "1-2", " 1"}) {
        console_of(domain + "\n\n\n", [&] { do_ini_quest(ini, 1); });
        EXPECT_EQ(answer(D_POPHOST), "mail." + domain);
    }
}

TEST_F(ProductIni, WithoutGuessTheStoredHostsAreOffered) {
    answer(D_PROD_NAME, "tanager");
    EXPECT_EQ(console_of("x.test\n\n\n\n", [&] { do_ini_quest(ini, 0); }),
              "\n\nWhat is your domain name [d.test]? "
              "\nWhat is the name of your imap host [imap.test]? "
              "\nDo you want to restrict the IMAP hosts users can login to?[no]? "
              "\nWhat is the name of your smtp host [imap.test]? ");
    EXPECT_EQ(answer(D_DOMAIN), "x.test");
    EXPECT_EQ(answer(D_POPHOST), "pop.test");
    EXPECT_EQ(answer(D_SMTPHOST), "imap.test");
}

TEST_F(ProductIni, AllowedHostsEndAtAPointOrAtTheEndOfInput) {
    answer(D_PROD_NAME, "Osprey");
    EXPECT_EQ(console_of("\n\nyes\n  two.blanks\t \r\n\n \t\n . \nlast\n. \t\nsmtp.x\n",
                         [&] { do_ini_quest(ini, 0); }),
              "\n\nWhat is your domain name [d.test]? "
              "\nWhat is the name of your pop host [pop.test]? "
              "\nDo you want to restrict the POP3 hosts users can login to?[no]? "
              "Enter a host and press enter, enter a . to finish\n"
              "\nWhat is the name of your smtp host [pop.test]? ");
    EXPECT_EQ(values(D_ALLOW_HOST), "a.test\nb.test\n  two.blanks\n .\nlast\n");
    EXPECT_EQ(answer(D_SMTPHOST), "smtp.x");
    EXPECT_EXIT(
        {
            feed_console("\n\nyes\nunfinished");
            do_ini_quest(ini, 0);
        },
        testing::ExitedWithCode(0), "");
}

// --- URL of the images ---

TEST_F(ProductIni, UrlIsTheImagesPathBelowTheCommonTree) {
    struct places {
        const char *cgi_path;
        const char *images;
        const char *url;
    };
    for (const places &one : {places{"/home/httpd/cgi-bin", "/home/httpd/html/vlimg", "/vlimg"},
                              places{"/home/httpd/cgi-bin/", "/home/httpd/html/vlimg", "/vlimg"},
                              places{"/home/httpd/cgi-bin", "/home/httpd/html/vlimg/", "/vlimg/"},
                              places{"/cgi-bin", "/html/a/b", "/a/b"},
                              places{"/srv/a/cgi", "/var/html/img", "/html/img"},
                              places{"/home/httpd/cgi-bin", "/home/httpd", "/"},
                              // A prefix of text, not of components.
                              places{"/a/b/cgi", "/a/bc/d/e", "/e"},
                              places{"no root/x/cgi", "stray/x/html/img", "/img"},
                              places{"", "/html/img", "/html/img"}, places{"/a/cgi", "", "/"}}) {
        ini_clear(ini);
        answer(D_CGI_PATH, one.cgi_path);
        answer(D_VLIMG_DIR, one.images);
        path_text url;
        EXPECT_STREQ(get_URL(ini, url), one.url) << one.cgi_path << " " << one.images;
        EXPECT_STREQ(url.c_str(), one.url);
    }
}

// --- Summary ---

class Summary : public ProductIni {
  protected:
    Summary() {
        answer(D_CGI_PATH, "/cgi");
        answer(D_VLIMG_DIR, "/html");
        answer(D_TEMPLATES, "/spool");
        answer(D_MANUAL, "/manuals");
    }

    static constexpr const char *heading =
        "\n\n"
        "-------------------------------------------------------------------------------\n"
        "gxsetup is ready to ";
    static constexpr const char *directories = ", to version 1.2\n"
                                               "using the following answers:\n"
                                               "\n"
                                               "Directories\n"
                                               "webserver directory: /cgi\n"
                                               "images directory:    /html\n"
                                               "templates directory: /spool\n";
    static constexpr const char *prompt = "\nDo you want to change any of your answers [NO]? ";
};

TEST_F(Summary, UpgradeTellsItsRules) {
    answer(D_PROD_NAME, "plover");
    answer(D_ACTION, "upgrade");
    EXPECT_EQ(console_of("\n", [&] { EXPECT_EQ(print_gxvalues(ini), 0); }),
              std::string(heading) + "upgrade plover" + directories +
                  "Rules\n"
                  "templates WILL NOT be overwritten\n"
                  "\n"
                  "ini file WILL NOT be overwritten\n"
                  "\n" +
                  prompt);
    answer(D_REPLACE_TMPLTS, "TRUE");
    answer(D_REPLACE_INI, "TRUE");
    EXPECT_EQ(console_of("yes\n", [&] { EXPECT_EQ(print_gxvalues(ini), 1); }),
              std::string(heading) + "upgrade plover" + directories +
                  "Rules\n"
                  "templates WILL be overwritten\n"
                  "\n"
                  "ini file WILL be overwritten using the following "
                  "ini file settings\n"
                  "pop host:            pop.test\n"
                  "smtp host:           smtp.test\n"
                  "domain name:         d.test\n"
                  "relative images URL: /img\n"
                  "\n" +
                  prompt);
}

TEST_F(Summary, TanagerHasManualsAndAnImapHost) {
    answer(D_PROD_NAME, "tanager");
    answer(D_ACTION, "install");
    answer(D_REPLACE_INI, "TRUE");
    EXPECT_EQ(console_of("no\n", [&] { EXPECT_EQ(print_gxvalues(ini), 0); }),
              std::string(heading) + "install tanager" + directories +
                  "manuals directory:   /manuals\n"
                  "\n"
                  "ini file settings\n"
                  "imap host:           imap.test\n"
                  "smtp host:           smtp.test\n"
                  "domain name:         d.test\n"
                  "relative images URL: /img\n"
                  "\n" +
                  prompt);
}

} // namespace
