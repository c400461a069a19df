// Does one microbenchmark's work, for bench/instructions, or names them all:   count_work [NAME]
//
// The instructions inside `repeat` are counted. The work is done once before, so that what only the
// first time needs is not.

#include "work.h"

#include <cstdio>
#include <string_view>

[[gnu::noinline]] void repeat(const work &piece) {
    for (int times = piece.times; times > 0; times--) {
        piece.run();
    }
}

int main(int argc, char **argv) {
    if (argc < 2) {
        for (const work &piece : all_work()) {
            std::puts(piece.name);
        }
        return 0;
    }
    const workplace place;
    for (const work &piece : all_work()) {
        if (std::string_view(argv[1]) == piece.name) {
            piece.run();
            repeat(piece);
            return 0;
        }
    }
    return 2;
}
