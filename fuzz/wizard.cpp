// The whole program at its console. The first byte of the input chooses the world: bits 0 and 1 the
// product, bit 2 whether an older version is installed, bit 3 whether answers of an earlier run lie
// there, bits 4 to 6 the command line. What follows is typed. Promised: the program ends, with
// status 0 or 1, and leaves no probe file behind.
//
// Each input is run in a process of its own, in a mount namespace of its own in which everything
// but a new file system in memory is read-only: what is typed may name any directory. Without the
// right to such a namespace nothing is run, and the status is 77.
#include "counters.h"
#include "products/product.h"
#include "support.h"
#include "support/distribution.h"
#include "support/private_mounts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// The program's main, under another name.
int gxsetup_program(int argc, char **argv);

namespace {

namespace fs = std::filesystem;

constexpr const char *world = "/tmp/gxsetup-fuzz-world";
constexpr const char *arguments[] = {nullptr,   nullptr,     nullptr,  nullptr,
                                     "-header", "-checksum", "-debug", "-make"};
constexpr int skipped = 77;

// What a run tells the process that started it.
struct report {
    bool has_ended;
    int status;
    bool is_clean;
    std::uint8_t counters[1 << 20];
};

report *shared = nullptr;

// --- The world ---

struct world_file {
    const char *path; // PRODUCT stands for the product's name, WORLD for the world's folder
    const char *content;
};

constexpr world_file defaults_and_site[] = {
    {"dist/gxdflt.dat", "cgi_path WORLD/site/cgi-bin\nvlimg_dir WORLD/site/html/vlimg\n"
                        "templates WORLD/site/spool/PRODUCT\ndomain example.com\n"},
    {"dist/tpl/index.tpl", "||header: modified=false tpl_set=kst_s2 tpl_version=2.0b||\n<p>\n"},
    {"site/cgi-bin/other.cgi", "other"},
    {"site/html/index.html", "html"},
    {"site/spool/kept", "kept"},
};

constexpr world_file old_installation[] = {
    {"site/cgi-bin/PRODUCT.cgi", "old"},
    {"site/cgi-bin/PRODUCT.ini", "templates WORLD/site/spool/PRODUCT\nvlimg /vlimg\nset b\n"},
    {"site/html/vlimg/logo.gif", "GIF87a"},
    {"site/spool/PRODUCT/index.tpl",
     "||header: modified=false tpl_set=kst_s1 tpl_version=1.0a||\n\n||checksum=7||\n"},
    {"site/spool/PRODUCT/edited.tpl", "edited\n"},
    {"site/spool/PRODUCT/u_user/mail", "mail"},
    {"site/spool/PRODUCT/gxsetup.dat", "domain old.example.com\naction upgrade\n"},
};

constexpr world_file saved_answers[] = {
    {"dist/gxsetup.dat", "cgi_path WORLD/site/cgi-bin\nvlimg_dir WORLD/site/html/vlimg\n"
                         "templates WORLD/site/spool/PRODUCT\naction upgrade\nwml TRUE\n"},
};

std::string filled(std::string text, std::string_view mark, std::string_view value) {
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
        text.replace(at, mark.size(), value);
    }
    return text;
}

void lay_down(std::span<const world_file> files, std::string_view product) {
    for (const world_file &file : files) {
        const fs::path path = fs::path(world) / filled(file.path, "PRODUCT", product);
        fs::create_directories(path.parent_path());
        std::ofstream(path) << filled(filled(file.content, "PRODUCT", product), "WORLD", world);
    }
}

void make_world(unsigned choice) {
    constexpr std::string_view products[] = {"kestrel", "plover", "tanager", "osprey"};
    const std::string_view product = products[choice & 3];
    fs::current_path(world);
    unpack_release(std::string(product), {.version = "3.2",
                                          .mark = "new",
                                          .settings = "# sample\ntemplates x\nvlimg y\nset a\n",
                                          .merlin_settings = "# sample\ntemplates x\n"});
    lay_down(defaults_and_site, product);
    if ((choice & 4) != 0) {
        lay_down(old_installation, product);
    }
    if ((choice & 8) != 0) {
        lay_down(saved_answers, product);
    }
    fs::current_path(fs::path(world) / "dist");
}

// --- A run ---

bool is_probe_file(const fs::directory_entry &entry) {
    const std::string name = entry.path().filename();
    return entry.is_regular_file() && entry.path().extension() == ".tmp" &&
           name.find_first_not_of("-0123456789") == name.size() - std::strlen(".tmp");
}

// Called when the program ends by itself.
void end_run(int status, void * /*unused*/) {
    std::fflush(stdout);
    std::error_code none;
    const fs::directory_iterator here(fs::path(world) / "dist", none);
    shared->is_clean = std::none_of(begin(here), end(here), is_probe_file);
    const std::span<std::uint8_t> counted = counters();
    std::copy(counted.begin(), counted.end(), shared->counters);
    shared->status = status;
    shared->has_ended = true;
    ::_exit(0);
}

void connect_streams(const std::string &typed) {
    const int input = ::memfd_create("typed", 0);
    require(::write(input, typed.data(), typed.size()) == static_cast<ssize_t>(typed.size()),
            "what is typed can be prepared");
    ::lseek(input, 0, SEEK_SET);
    ::dup2(input, STDIN_FILENO);
    const fs::path nowhere = "/dev/null";
    require(std::freopen(nowhere.c_str(), "w", stdout) != nullptr, "the output can be dropped");
}

// A run that goes on for seconds, or fills the disk, is ended by a signal.
void limit_run() {
    constexpr rlim_t seconds = 5;
    std::signal(SIGALRM, SIG_DFL);
    std::signal(SIGXCPU, SIG_DFL);
    ::alarm(2 * seconds);
    const rlimit processor{seconds, seconds};
    ::setrlimit(RLIMIT_CPU, &processor);
}

[[noreturn]] void run_program(unsigned choice, const std::string &typed) {
    if (!shut_in() || ::mount("gxsetup-fuzz", world, "tmpfs", 0, "size=16m") != 0) {
        ::_exit(skipped);
    }
    make_world(choice);
    connect_streams(typed);
    limit_run();
    ::on_exit(end_run, nullptr);
    std::string name = "gxsetup";
    const char *argument = arguments[choice >> 4 & 7];
    std::string given = argument != nullptr ? argument : "";
    std::array<char *, 3> list = {name.data(), argument != nullptr ? given.data() : nullptr,
                                  nullptr};
    std::exit(gxsetup_program(argument != nullptr ? 2 : 1, list.data()));
}

void prepare() {
    if (shared != nullptr) {
        return;
    }
    void *memory =
        ::mmap(nullptr, sizeof(report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    require(memory != MAP_FAILED, "memory can be shared");
    shared = static_cast<report *>(memory);
    require(counters().size() <= sizeof(shared->counters), "the counters have room");
    std::error_code none;
    fs::create_directory(world, none);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    prepare();
    fuzz_input input(data, size);
    const unsigned choice = input.byte();
    const std::string typed = input.rest();
    shared->has_ended = false;
    const ::pid_t child = ::fork();
    require(child >= 0, "a process can be had");
    if (child == 0) {
        run_program(choice, typed);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == skipped) {
        std::fprintf(stderr, "skipped: a mount namespace of one's own needs root\n");
        std::exit(skipped);
    }
    require(shared->has_ended, "the program ends by itself");
    require(shared->status == 0 || shared->status == 1, "the status is 0 or 1");
    require(shared->is_clean, "no probe file stays behind");
    const std::span<std::uint8_t> counted = counters();
    std::transform(counted.begin(), counted.end(), shared->counters, counted.begin(),
                   [](std::uint8_t one, std::uint8_t other) {
                       return static_cast<std::uint8_t>(std::min(one + other, 255));
                   });
    return 0;
}
