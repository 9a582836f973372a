// What targets cost: a whole refresh from nothing, in time and in memory, and handing them out. A
// logical unit must cost the same whether there are few or many of them.
#include "bench/beside_floor.h"
#include "bench/simulated_host.h"

#include <chrono>
#include <malloc.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* name_space = "root/tavrin";
constexpr const char* volume_class = "TVRHBA_StorageVolume";

struct Cost {
    double seconds = 0;
    double bytes = 0; // that stay allocated
};

// Loads the module and waits until its maps stand, with nothing handed out: no volume has that key.
Cost refresh_once() {
    tvrhost::Named_Values key;
    key.set("DeviceID", "none");
    const tvrhost::Cim_Path nowhere(name_space, volume_class, key);
    const std::unique_ptr<tvrhost::Object_Manager> manager = tvrbench::module_manager();
    const std::size_t before = mallinfo2().uordblks;
    const Clock::time_point begin = Clock::now();
    benchmark::DoNotOptimize(manager->get_instance(nowhere));
    const std::chrono::duration<double> time = Clock::now() - begin;
    return {time.count(), static_cast<double>(mallinfo2().uordblks) - static_cast<double>(before)};
}

void refresh(benchmark::State& state) {
    const long ports = state.range(0);
    const long units = ports * state.range(1);
    tvrbench::set_host(ports);
    const Cost bare = refresh_once();
    tvrbench::set_host(ports, state.range(1));
    Cost sum;
    for ([[maybe_unused]] auto _ : state) {
        const Cost cost = refresh_once();
        state.SetIterationTime(cost.seconds);
        sum.seconds += cost.seconds;
        sum.bytes += cost.bytes;
    }
    if (units > 0) {
        const double all = static_cast<double>(units);
        const double rounds = static_cast<double>(state.iterations());
        state.counters["us_per_unit"] = (sum.seconds / rounds - bare.seconds) / all * 1e6;
        state.counters["bytes_per_unit"] = (sum.bytes / rounds - bare.bytes) / all;
    }
}
BENCHMARK(refresh)
    ->ArgNames({"ports", "units"})
    ->ArgsProduct({{1, 4, 16}, {0, 100, 1000}})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

void enumerate_volumes(benchmark::State& state) {
    constexpr long ports = 16;
    tvrbench::enumerate_beside_floor(state, tvrbench::kept_manager(ports, state.range(0) / ports),
                                     volume_class, static_cast<std::size_t>(state.range(0)));
}
BENCHMARK(enumerate_volumes)
    ->Arg(1600)
    ->Arg(16000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->MinTime(5); // the ratio settles slowly

} // namespace
