#include "bench/simulated_host.h"

#include <benchmark/benchmark.h>

#include <limits>
#include <malloc.h>

int main(int argc, char** argv) {
    tvrbench::enter_simulated_host(argv);
    // Memory stays with the process between rounds: what giving it back and faulting it in again
    // costs is the system's, and would hide how the measured code grows.
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_MAX, 0);
    // One heap for all threads, whose size can be asked for.
    mallopt(M_ARENA_MAX, 1);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    tvrbench::leave_simulated_host();
}
