#include "products/product.h"

#include "core/text.h"

#include <algorithm>
#include <string>

namespace {

constexpr std::string_view wizard_program = "gxsetup";
// The products that others fall back on.
constexpr const product &plover = products[1];
constexpr const product &osprey = products[3];
static_assert(std::string_view(plover.name) == "plover");
static_assert(std::string_view(osprey.name) == "osprey");

// Case counts: it does in file names.
const product *owner_of_program(std::string_view file) {
    const auto found = std::find_if(products.begin(), products.end(), [file](const product &one) {
        return file == std::string(one.name).append(".cgi");
    });
    return found != products.end() ? &*found : nullptr;
}

} // namespace

const product *find_product(const char *name) {
    const auto found = std::find_if(products.begin(), products.end(), [name](const product &one) {
        return s_stricmp(one.name, name) == 0;
    });
    return found != products.end() ? &*found : nullptr;
}

const product &product_or_osprey(const char *name) {
    const product *found = find_product(name);
    return found != nullptr ? *found : osprey;
}

bool has_template_sets(const char *name) {
    const product *found = find_product(name);
    return found != nullptr && found->has_template_sets;
}

bool is_imap_product(const char *name) {
    const product *found = find_product(name);
    return found != nullptr && found->protocol == mail_protocol::imap;
}

std::string_view set_family(std::string_view name) {
    const auto found = std::find_if(products.begin(), products.end(),
                                    [name](const product &one) { return name == one.name; });
    return found != products.end() ? found->set_family : plover.set_family;
}

bool is_program(std::string_view file) {
    return file == wizard_program || owner_of_program(file) != nullptr;
}

bool is_program_here(std::string_view file) {
    const product *owner = owner_of_program(file);
    return file == wizard_program || (owner != nullptr && owner->is_program_here);
}
