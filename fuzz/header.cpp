// The header reader. The input is a template, read as an installed and as a new copy. Promised:
// what is read of a header comes from the file's first five pieces and holds neither line end nor
// NUL; without a header the product's defaults stand; the category is one of the four.
#include "support.h"

#include "templates/checksum.h"
#include "templates/header.h"

#include <algorithm>

namespace {

// The end of the first five pieces: lines of at most 511 characters.
std::size_t header_area(std::string_view content) {
    std::size_t end = 0;
    for (int piece = 0; piece < 5; piece++) {
        const std::string_view rest = content.substr(end, 511);
        end += std::min(rest.find('\n'), rest.size() - (rest.empty() ? 0 : 1)) +
               (rest.empty() ? 0 : 1);
    }
    return end;
}

void require_from(std::string_view area, const std::string &text) {
    require(area.find(text) != std::string_view::npos, "no text is made up");
    require(text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos,
            "a text is one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    enter_scratch_folder();
    const std::string content = fuzz_input(data, size).rest();
    const std::string_view area = std::string_view(content).substr(0, header_area(content));
    write_scratch_file("a.tpl", content);

    TMPLT_INFO tpl;
    tpl.name = "a.tpl";
    const int old_found = tpl_load(&tpl, "a.tpl", "tanager", 0);
    const int new_found = tpl_load(&tpl, "a.tpl", "tanager", 1);
    require(old_found == new_found, "both copies have a header or none");
    if (old_found == 1) {
        require(area.find("||header:") != std::string_view::npos, "a header stands in its place");
        require(tpl.old_tmplt_set == tpl.new_tmplt_set, "one file has one set");
        require(tpl.old_tmplt_vers == tpl.new_tmplt_vers, "one file has one version");
        require_from(area, tpl.old_tmplt_set);
        require_from(area, tpl.old_tmplt_vers);
        require(tpl.modified == 1 || do_checksum("a.tpl", 1) == 0,
                "what does not agree is modified");
        require(tpl_category(&tpl, "a.tpl") == 0, "a file is not newer than itself");
    } else {
        require(tpl.old_tmplt_set == "tan_s1" && tpl.old_tmplt_vers == "1.0a", "old defaults");
        require(tpl.new_tmplt_set == "tan_s2" && tpl.new_tmplt_vers == "2.0a", "new defaults");
        require(tpl.modified == 1, "without header it counts as modified");
        require(tpl_category(&tpl, "a.tpl") == 2, "newer, but edited");
    }
    require(tpl_free(&tpl) == 1, "the record is emptied");
    return 0;
}
