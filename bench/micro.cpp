// The microbenchmarks' times. cksum stands beside do_checksum, with the same file.

#include "work.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <string>

namespace {

void set_speed(benchmark::State &state, std::size_t bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void measure(benchmark::State &state, const work &piece) {
    for ([[maybe_unused]] auto round : state) {
        piece.run();
    }
    if (piece.bytes != 0) {
        set_speed(state, piece.bytes);
    }
}

void measure_cksum(benchmark::State &state, std::size_t bytes) {
    const std::string command = std::string("cksum ") + summed_file + " >/dev/null";
    for ([[maybe_unused]] auto round : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("cksum failed");
        }
    }
    set_speed(state, bytes);
}

} // namespace

int main(int argc, char **argv) {
    const workplace place;
    for (const work &piece : all_work()) {
        benchmark::RegisterBenchmark(piece.name, measure, piece)->UseRealTime();
        if (piece.bytes != 0) {
            benchmark::RegisterBenchmark("cksum", measure_cksum, piece.bytes)->UseRealTime();
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
