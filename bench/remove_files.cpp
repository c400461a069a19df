// Removes all that the directory named first holds.

#include "files/operations.h"
#include "setup/answer_store.h"

int main(int argc, char **argv) {
    if (argc != 2) {
        return 2;
    }
    ini_init(&gxvalues, nullptr, nullptr);
    ini_setup(&gxvalues, ans_values, ans_associations);
    return do_xrmv(&gxvalues, "*", argv[1], 1, 0) == 1 ? 0 : 1;
}
