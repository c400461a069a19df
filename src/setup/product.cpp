#include "setup/product.h"

#include "core/format.h"
#include "core/text.h"
#include "files/search.h"

#include <algorithm>

const product *find_product(const char *name) {
    const auto found = std::find_if(products.begin(), products.end(), [name](const product &one) {
        return s_stricmp(one.name, name) == 0;
    });
    return found != products.end() ? &*found : nullptr;
}

bool has_template_sets(const char *name) {
    const product *found = find_product(name);
    return found != nullptr && found->has_template_sets;
}

bool is_imap_product(const char *name) {
    const product *found = find_product(name);
    return found != nullptr && found->is_imap;
}

int prod_guess() {
    for (std::size_t number = 0; number < products.size(); number++) {
        const std::string program = formatted("%s.%s", products[number].name, "cgi");
        if (file_exists(program.c_str()) == 1) {
            return static_cast<int>(number) + 1;
        }
    }
    return 0;
}
