// Prints the checksum of each template named on the command line, for bench/templates.py.
#include "core/console.h"
#include "templates/checksum.h"

int main(int argc, char **argv) {
    for (int at = 1; at < argc; at++) {
        print("%d\n", do_checksum(argv[at], 0));
    }
    return 0;
}
