// Enumeration of ports through CMPI, next to the floor: a bare provider in the same object manager
// that hands out the same instances. The two run in turn, so that the ratio holds when the
// machine's speed drifts.
#include "bench/bare_provider.h"
#include "bench/simulated_host.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::duration time) {
    return std::chrono::duration<double>(time).count();
}

double median(std::vector<double>& values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

void enumerate_ports(benchmark::State& state) {
    const auto ports = static_cast<std::size_t>(state.range(0));
    tvrbench::set_host(state.range(0));
    const std::unique_ptr<tvrhost::Object_Manager> module = tvrbench::module_manager();
    const tvrhost::Answer first = module->enumerate_instances("root/tavrin", "TVRHBA_FCPort");
    if (first.instances.size() != ports) {
        state.SkipWithError("the module doesn't show all ports");
        return;
    }
    const tvrbench::Bare_Provider provider("TVRHBA_FCPort", first.instances);
    const std::unique_ptr<tvrhost::Object_Manager> bare =
        tvrbench::manager_of(provider.factories());
    if (bare->enumerate_instances("root/tavrin", "TVRHBA_FCPort").instances != first.instances) {
        state.SkipWithError("the bare provider hands out other instances");
        return;
    }

    // Neither is always the first, and the end of an answer is nobody's time.
    tvrhost::Answer ours;
    tvrhost::Answer floor;
    const auto time_of = [](tvrhost::Object_Manager& manager, tvrhost::Answer& answer) {
        answer = {};
        const Clock::time_point begin = Clock::now();
        answer = manager.enumerate_instances("root/tavrin", "TVRHBA_FCPort");
        return seconds(Clock::now() - begin);
    };
    std::vector<double> ratios;
    std::vector<double> floors;
    bool ours_first = true;
    for ([[maybe_unused]] auto _ : state) {
        double our_time = 0;
        double floor_time = 0;
        if (ours_first) {
            our_time = time_of(*module, ours);
            floor_time = time_of(*bare, floor);
        } else {
            floor_time = time_of(*bare, floor);
            our_time = time_of(*module, ours);
        }
        ours_first = !ours_first;
        state.SetIterationTime(our_time);
        floors.push_back(floor_time);
        ratios.push_back(our_time / floor_time);
        if (ours.instances.size() != ports || floor.instances.size() != ports) {
            state.SkipWithError("not all ports");
        }
    }
    state.counters["ports"] = static_cast<double>(ports);
    state.counters["floor_us"] = median(floors) * 1e6;
    state.counters["ratio"] = median(ratios);
}
BENCHMARK(enumerate_ports)
    ->Arg(4)
    ->Arg(64)
    ->Arg(512)
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime();

} // namespace
