// Classifies the templates installed in the directory named first against ./tpl.

#include "setup/answer_store.h"
#include "upgrade/classify.h"

int main(int argc, char **argv) {
    if (argc != 2) {
        return 2;
    }
    ini_init(&gxvalues, nullptr, nullptr);
    ini_setup(&gxvalues, ans_values, ans_associations);
    set_answer(&gxvalues, D_PROD_NAME, "kestrel");
    set_answer(&gxvalues, D_INSTALL_DIR, argv[1]);
    return do_upgrade_list(&gxvalues);
}
