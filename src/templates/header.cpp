#include "templates/header.h"

#include "core/log.h"
#include "core/stream.h"
#include "core/text.h"
#include "products/product.h"
#include "templates/checksum.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::string_view header_mark = "||header:";
constexpr std::string_view line_ends("\r\n\0", 3);
constexpr int header_pieces = 5; // the header is looked for in the first five pieces

void set_fields(TMPLT_INFO &tpl, int is_new, std::string_view set, std::string_view version) {
    if (is_new != 0) {
        tpl.new_tmplt_set = set;
        tpl.new_tmplt_vers = version;
    } else {
        tpl.old_tmplt_set = set;
        tpl.old_tmplt_vers = version;
    }
}

// Returns the header line from its mark on, without its line end; empty if there is none.
std::string find_header(std::FILE *file) {
    std::array<char, piece_limit + 1> buffer{};
    for (int count = 0; count < header_pieces; count++) {
        std::string_view piece = read_piece(file, buffer);
        const std::size_t mark = piece.find(header_mark);
        if (mark != std::string_view::npos) {
            piece.remove_prefix(mark);
            return std::string(piece.substr(0, piece.find_first_of(line_ends)));
        }
    }
    return {};
}

// Cuts the text before the first `separator` off `line`, and the separator with it; all of the line
// if it has none. Returns the text.
std::string_view cut_field(std::string_view &line, char separator) {
    const std::string_view field = line.substr(0, line.find(separator));
    line.remove_prefix(std::min(field.size() + 1, line.size()));
    return field;
}

// Fills the fields from the header line of an open template; null is one that could not be opened.
bool read_header(TMPLT_INFO &tpl, std::FILE *file, int is_new) {
    const std::string header = file != nullptr ? find_header(file) : "";
    if (file == nullptr || std::ferror(file) != 0) {
        emsg("Can't open %s, header information unobtainable", tpl.name.c_str());
        return false;
    }
    if (header.empty()) {
        return false;
    }
    // ||header: modified=FLAG tpl_set=SET tpl_version=VERSION||; the names are not looked at.
    std::string_view line = header;
    cut_field(line, '=');
    const std::string flag(cut_field(line, '='));
    const std::string_view set = cut_field(line, ' ');
    cut_field(line, '=');
    const std::string_view version = cut_field(line, '|');
    set_fields(tpl, is_new, set, version);
    if (is_new == 0) {
        tpl.modified = s_strnicmp(flag.c_str(), "true", 4) == 0 ? 1 : 0;
    }
    return true;
}

void set_defaults(TMPLT_INFO &tpl, std::string_view prodname, int is_new) {
    const std::string family(set_family(prodname));
    if (is_new != 0) {
        set_fields(tpl, is_new, family + "_s2", "2.0a");
    } else {
        set_fields(tpl, is_new, family + "_s1", "1.0a");
    }
}

// Compares the leading numbers, and the whole texts if these are equal (2.0a is older than 2.0b).
bool is_older(const std::string &version, const std::string &than) {
    const double number = std::strtod(version.c_str(), nullptr);
    const double than_number = std::strtod(than.c_str(), nullptr);
    if (number < than_number || number > than_number) {
        return number < than_number;
    }
    return version < than;
}

} // namespace

int tpl_get_header_info(TMPLT_INFO *tpl, const char *file, int is_new) {
    const stream_handle stream = open_plain_file(file, template_limit);
    return read_header(*tpl, stream.get(), is_new) ? 1 : 0;
}
int tpl_load(TMPLT_INFO *tpl, const char *file, const char *prodname, int is_new) {
    const stream_handle stream = open_plain_file(file, template_limit);
    if (read_header(*tpl, stream.get(), is_new)) {
        // A copy whose header says that it was edited needs no sum.
        if (is_new == 0 && tpl->modified == 0) {
            std::rewind(stream.get());
            tpl->modified = checksum_of(stream.get(), file, 1) != 0 ? 1 : 0;
        }
        return 1;
    }
    dmsg(is_new != 0 ? "New header info not found" : "Old header info not found");
    set_defaults(*tpl, prodname != nullptr ? prodname : "", is_new);
    if (is_new == 0) {
        tpl->modified = 1; // nothing proves that it was not edited
    }
    return 0;
}

int tpl_category(const TMPLT_INFO *tpl, const char * /*file*/) {
    constexpr std::size_t family_length = 5; // "kst_s" of "kst_s2"
    const std::string_view old_set = tpl->old_tmplt_set;
    const std::string_view new_set = tpl->new_tmplt_set;
    if (old_set.substr(0, family_length) != new_set.substr(0, family_length)) {
        return 3;
    }
    const bool has_newer =
        old_set != new_set ? old_set < new_set : is_older(tpl->old_tmplt_vers, tpl->new_tmplt_vers);
    if (!has_newer) {
        return 0;
    }
    return tpl->modified == 0 ? 1 : 2;
}

int tpl_free(TMPLT_INFO *tpl) {
    for (std::string *text : {&tpl->name, &tpl->old_tmplt_vers, &tpl->new_tmplt_vers,
                              &tpl->old_tmplt_set, &tpl->new_tmplt_set}) {
        *text = std::string();
    }
    return 1;
}
