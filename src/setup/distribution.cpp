#include "setup/distribution.h"

#include "core/format.h"

std::string product_program(pINI_SETTINGS ini) {
    return formatted("%s.cgi", ini_value_num(ini, D_PROD_NAME));
}
