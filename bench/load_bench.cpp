// From the file of the module to the first answer: opening it, loading the class, discovery, the
// up-call for the computer system, the first enumeration.
#include "bench/simulated_host.h"

#include <benchmark/benchmark.h>

namespace {

void load_to_first_answer(benchmark::State& state) {
    tvrbench::set_host(4);
    for ([[maybe_unused]] auto _ : state) {
        std::unique_ptr<tvrhost::Object_Manager> manager = tvrbench::module_manager();
        const tvrhost::Answer answer = manager->enumerate_instances("root/tavrin", "TVRHBA_FCPort");
        state.PauseTiming();
        if (answer.instances.size() != 4 ||
            answer.instances[0]["SystemName"].as_string() != "bench-host") {
            state.SkipWithError("not the four ports of the simulated host");
        }
        manager.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(load_to_first_answer)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
