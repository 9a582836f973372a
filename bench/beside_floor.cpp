#include "bench/beside_floor.h"

#include "bench/bare_provider.h"
#include "bench/simulated_host.h"

#include <algorithm>
#include <chrono>

namespace tvrbench {

namespace {

constexpr const char* name_space = "root/tavrin";

using Clock = std::chrono::steady_clock;

double seconds(Clock::duration time) {
    return std::chrono::duration<double>(time).count();
}

double median(std::vector<double>& values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

// The end of an answer is nobody's time.
double time_of(tvrhost::Object_Manager& manager, const char* class_name, tvrhost::Answer& answer) {
    answer = {};
    const Clock::time_point begin = Clock::now();
    answer = manager.enumerate_instances(name_space, class_name);
    return seconds(Clock::now() - begin);
}

} // namespace

void enumerate_beside_floor(benchmark::State& state, tvrhost::Object_Manager& module,
                            const char* class_name, std::size_t count) {
    const tvrhost::Answer first = module.enumerate_instances(name_space, class_name);
    if (first.instances.size() != count) {
        state.SkipWithError("the module doesn't show all instances");
        return;
    }
    const Bare_Provider provider(class_name, first.instances);
    const std::unique_ptr<tvrhost::Object_Manager> bare = manager_of(provider.factories());
    if (bare->enumerate_instances(name_space, class_name).instances != first.instances) {
        state.SkipWithError("the bare provider hands out other instances");
        return;
    }
    tvrhost::Answer ours;
    tvrhost::Answer floor;
    std::vector<double> ratios;
    std::vector<double> floors;
    bool ours_first = true; // neither is always
    for ([[maybe_unused]] auto _ : state) {
        double our_time = ours_first ? time_of(module, class_name, ours) : 0;
        const double floor_time = time_of(*bare, class_name, floor);
        if (!ours_first) {
            our_time = time_of(module, class_name, ours);
        }
        ours_first = !ours_first;
        state.SetIterationTime(our_time);
        floors.push_back(floor_time);
        ratios.push_back(our_time / floor_time);
        if (ours.instances.size() != count || floor.instances.size() != count) {
            state.SkipWithError("not all instances");
        }
    }
    state.counters["floor_us"] = median(floors) * 1e6;
    state.counters["ratio"] = median(ratios);
}

} // namespace tvrbench
