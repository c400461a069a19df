#include "dialogue/help.h"

#include "core/console.h"
#include "core/log.h"

#include <algorithm>
#include <array>
#include <string_view>

path_text support_email;

namespace {

constexpr std::size_t piece_size = 256; // 255 characters and a NUL
constexpr const char *help_file = "vsetup.hlp";
constexpr const char *fallback_text = "No specific help is available for this question.";

// Looks one character ahead. ungetc returns EOF for EOF and pushes nothing back (ISO C 7.21.7.10).
bool is_at_end(std::FILE *file) {
    return std::ungetc(std::getc(file), file) == EOF;
}

// The lines of a help file, which may grow while it is read: what is past the limit is not read.
class help_lines {
  public:
    explicit help_lines(std::FILE *file) : file_(file) { std::rewind(file); }

    // Reads the next line, or piece of a line. Returns false at the end of the file. An unfinished
    // last line is not read, even if it fills the buffer.
    bool read(std::string &line) {
        std::array<char, piece_size> piece{};
        const std::string_view bytes = read_piece(file_, piece);
        size_ += static_cast<off_t>(bytes.size());
        if (size_ > settings_limit.bytes || (!bytes.ends_with('\n') && is_at_end(file_))) {
            return false;
        }
        line = piece.data();
        return true;
    }

  private:
    std::FILE *file_;
    off_t size_ = 0;
};

// The first header that begins with the name counts, whatever follows the name.
bool find_topic(help_lines &lines, std::string_view id) {
    std::string line;
    while (lines.read(line)) {
        if (line.starts_with('[') && std::string_view(line).substr(1).starts_with(id)) {
            return true;
        }
    }
    return false;
}

std::string read_topic(help_lines &lines) {
    std::string text;
    std::string line;
    while (lines.read(line)) {
        if (line.starts_with('#')) {
            continue;
        }
        if (line.starts_with('[')) {
            // Headers in a row share the text that follows them.
            if (!text.empty()) {
                break;
            }
            continue;
        }
        if (const std::size_t carriage_return = line.find('\r');
            carriage_return != std::string::npos) {
            line.erase(carriage_return, 1);
        }
        text.append(line, std::min(line.find_first_not_of('\t'), line.size()));
    }
    // An empty last line only sets the next header apart.
    if (text.size() >= 2 && text[text.size() - 2] == '\n') {
        text.pop_back();
    }
    return text;
}

} // namespace

int help_init(HELP *hlp, const char *filename) {
    hlp->ref.reset();
    hlp->last_help.reset();
    hlp->hfile = open_plain_file(filename, settings_limit);
    return hlp->hfile ? 1 : 0;
}

const char *help_get(HELP *hlp, const char *id) {
    if (hlp->ref != id) {
        hlp->ref = id;
        hlp->last_help.reset();
        help_lines lines(hlp->hfile.get());
        std::string text;
        // Every header would match a topic without a name.
        if (!hlp->ref->empty() && find_topic(lines, *hlp->ref)) {
            text = read_topic(lines);
        }
        hlp->last_help = text.empty() ? fallback_text : std::move(text);
    }
    return hlp->last_help->c_str();
}

int help_clear(HELP *hlp) {
    hlp->ref.reset();
    hlp->last_help.reset();
    return close_file(std::move(hlp->hfile)) ? 1 : 0;
}

int help(const char *label) {
    HELP topics;
    if (help_init(&topics, help_file) == 0) {
        print_emsg("Help file not found\n");
        return 0;
    }
    print("\n");
    print_lines(help_get(&topics, label));
    print("\n");
    print("For more information, e-mail: %s\n", support_email.c_str());
    help_clear(&topics);
    return 1;
}
