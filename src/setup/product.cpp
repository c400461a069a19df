#include "setup/product.h"

#include "core/format.h"
#include "files/search.h"
#include "products/product.h"

int prod_guess() {
    for (std::size_t number = 0; number < products.size(); number++) {
        const std::string program = formatted("%s.cgi", products[number].name);
        if (file_exists(program.c_str()) == 1) {
            return static_cast<int>(number) + 1; // 0 means none
        }
    }
    return 0;
}
