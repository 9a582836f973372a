#include "bench/simulated_host.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    tvrbench::enter_simulated_host(argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
