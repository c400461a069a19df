#include "templates/header.h"

#include "core/log.h"
#include "core/stream.h"
#include "core/text.h"
#include "templates/checksum.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::string_view header_mark = "||header:";
constexpr std::string_view line_ends("\r\n\0", 3);
constexpr int header_pieces = 5; // the header stands in one of so many

// The fields of one copy in a record.
struct copy_fields {
    std::string &set;
    std::string &version;
};

copy_fields fields_of(TMPLT_INFO &tpl, int is_new) {
    return is_new != 0 ? copy_fields{tpl.new_tmplt_set, tpl.new_tmplt_vers}
                       : copy_fields{tpl.old_tmplt_set, tpl.old_tmplt_vers};
}

// The header line from its mark on, without its line end; empty when there is none.
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

// Takes what stands before the next `separator` off `line`, and the separator with it; all of the
// line when it has none.
std::string_view take_piece(std::string_view &line, char separator) {
    const std::string_view piece = line.substr(0, line.find(separator));
    line.remove_prefix(std::min(piece.size() + 1, line.size()));
    return piece;
}

void take_defaults(TMPLT_INFO &tpl, std::string_view prodname, int is_new) {
    std::string_view family = "plv";
    if (prodname == "kestrel") {
        family = "kst";
    } else if (prodname == "tanager") {
        family = "tan";
    }
    const copy_fields fields = fields_of(tpl, is_new);
    fields.set.assign(family).append(is_new != 0 ? "_s2" : "_s1");
    fields.version = is_new != 0 ? "2.0a" : "1.0a";
}

// Whether the first version is older: by its number, or by its text when the numbers are equal.
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
    const stream_handle stream = open_plain_file(file);
    const std::string header = stream ? find_header(stream.get()) : "";
    if (!stream || std::ferror(stream.get()) != 0) {
        emsg("Can't open %s, header information unobtainable", tpl->name.c_str());
        return 0;
    }
    if (header.empty()) {
        return 0;
    }
    std::string_view line = header;
    take_piece(line, '=');
    const std::string flag(take_piece(line, '='));
    const copy_fields fields = fields_of(*tpl, is_new);
    fields.set = take_piece(line, ' ');
    take_piece(line, '=');
    fields.version = take_piece(line, '|');
    if (is_new == 0) {
        tpl->modified = s_strnicmp(flag.c_str(), "true", 4) == 0 ? 1 : 0;
    }
    return 1;
}

int tpl_load(TMPLT_INFO *tpl, const char *file, const char *prodname, int is_new) {
    if (tpl_get_header_info(tpl, file, is_new) == 1) {
        if (is_new == 0 && tpl->modified == 0 && do_checksum(file, 1) != 0) {
            tpl->modified = 1;
        }
        return 1;
    }
    dmsg(is_new != 0 ? "New header info not found" : "Old header info not found");
    take_defaults(*tpl, prodname != nullptr ? prodname : "", is_new);
    if (is_new == 0) {
        tpl->modified = 1;
    }
    return 0;
}

int tpl_category(const TMPLT_INFO *tpl, const char * /*file*/) {
    constexpr std::size_t family_length = 5;
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
