// Requests that find few instances among many: a get by key, and the associated names of a port, of
// one of many volumes and of one of many initiators. Their time must not follow the number of
// volumes; next to each stands what handing out the whole class costs.
#include "bench/simulated_host.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <optional>

namespace {

using tvrhost::Cim_Path;
using tvrhost::Object_Manager;

constexpr const char* name_space = "root/tavrin";
constexpr const char* volume_class = "TVRHBA_StorageVolume";
constexpr const char* path_class = "TVRHBA_SCSIInitiatorTargetStorageVolumePath";
constexpr long ports = 16;

Object_Manager& manager_of(long volumes) {
    return tvrbench::kept_manager(ports, volumes / ports);
}

std::vector<Cim_Path> names(Object_Manager& manager, const std::string& class_name) {
    return manager.enumerate_instance_names(name_space, class_name).paths;
}

// Times `find`, and once the enumeration of which it finds a part. `expected` results are right.
void compare(benchmark::State& state, const std::function<std::size_t()>& find,
             std::size_t expected, const std::function<std::size_t()>& hand_out_all,
             std::size_t all) {
    for ([[maybe_unused]] auto _ : state) {
        if (find() != expected) {
            state.SkipWithError("another number of results");
            return;
        }
    }
    const auto begin = std::chrono::steady_clock::now();
    if (hand_out_all() != all) {
        state.SkipWithError("not all instances");
    }
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
    state.counters["found"] = static_cast<double>(expected);
    state.counters["all_us"] = time.count();
}

// One from the middle of a class that has `count` instances; null, with the reason told, otherwise.
std::optional<Cim_Path> middle(benchmark::State& state, const std::vector<Cim_Path>& paths,
                               long count) {
    if (paths.size() != static_cast<std::size_t>(count)) {
        state.SkipWithError("the module doesn't show all instances");
        return std::nullopt;
    }
    return paths[paths.size() / 2];
}

void get_volume(benchmark::State& state) {
    const long count = state.range(0);
    Object_Manager& manager = manager_of(count);
    const auto path = middle(state, names(manager, volume_class), count);
    if (!path) {
        return;
    }
    compare(
        state, [&] { return manager.get_instance(*path).instances.size(); }, 1,
        [&] { return manager.enumerate_instances(name_space, volume_class).instances.size(); },
        static_cast<std::size_t>(count));
}

// Names at the other ends of associations of one class, or of all for an empty name.
void associated_names(benchmark::State& state, const char* source_class, long sources,
                      const std::string& association_class, std::size_t expected) {
    const long count = state.range(0);
    Object_Manager& manager = manager_of(count);
    const auto source = middle(state, names(manager, source_class), sources);
    if (!source) {
        return;
    }
    tvrhost::Association_Filter filter;
    filter.association_class = association_class;
    const auto find = [&] { return manager.associator_names(*source, filter).paths.size(); };
    if (expected == 0) {
        expected = find();
    }
    compare(
        state, find, expected, [&] { return names(manager, path_class).size(); },
        static_cast<std::size_t>(count));
}

void associators_of_port(benchmark::State& state) {
    associated_names(state, "TVRHBA_FCPort", ports, "", 0);
}
void associators_of_volume(benchmark::State& state) {
    associated_names(state, volume_class, state.range(0), path_class, 2);
}
void associators_of_initiator(benchmark::State& state) {
    associated_names(state, "TVRHBA_SCSIProtocolInitiatorEndpoint", ports, path_class,
                     2 * static_cast<std::size_t>(state.range(0) / ports));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(160)->Arg(1600)->Arg(16000)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(get_volume)->Apply(sizes);
BENCHMARK(associators_of_port)->Apply(sizes);
BENCHMARK(associators_of_volume)->Apply(sizes);
BENCHMARK(associators_of_initiator)->Apply(sizes);

} // namespace
