// Insertion into an instance map and the copy of one, which must grow linearly with the size.
#include "runtime/instance_map.h"
#include "schema/classes.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using cimple::TVRHBA_FCPort;

// The keys that name the system are shared by all instances of a host.
TVRHBA_FCPort* port(long number) {
    static const cimple::String system_class("CIM_ComputerSystem");
    static const cimple::String system_name("bench-host");
    static const cimple::String port_class("TVRHBA_FCPort");
    TVRHBA_FCPort* instance = TVRHBA_FCPort::create(true);
    char id[24];
    std::snprintf(id, sizeof id, "%016lX", 0x1000000000000000L + number);
    instance->SystemCreationClassName.set(system_class);
    instance->SystemName.set(system_name);
    instance->CreationClassName.set(port_class);
    instance->DeviceID.set(id);
    return instance;
}

// Each round works on as many members in all, in one map or in many small ones: what a cache holds
// is the same for every size, and linear growth shows as equal times a member.
constexpr long members = 10'000;

void report(benchmark::State& state) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * members);
    state.counters["per_member"] = benchmark::Counter(
        members, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void map_insert(benchmark::State& state) {
    const long size = state.range(0);
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        std::vector<TVRHBA_FCPort*> ports;
        for (long i = 0; i < members; ++i) {
            ports.push_back(port(i));
        }
        {
            std::vector<cimple::Class_Map<TVRHBA_FCPort>> maps(
                static_cast<std::size_t>(members / size));
            state.ResumeTiming();
            for (long i = 0; i < members; ++i) {
                if (maps[static_cast<std::size_t>(i / size)].insert(
                        ports[static_cast<std::size_t>(i)]) < 0) {
                    state.SkipWithError("a key came twice");
                }
            }
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    report(state);
}
BENCHMARK(map_insert)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

void map_copy(benchmark::State& state) {
    const long size = state.range(0);
    std::vector<cimple::Class_Map<TVRHBA_FCPort>> sources(static_cast<std::size_t>(members / size));
    for (long i = 0; i < members; ++i) {
        sources[static_cast<std::size_t>(i / size)].insert(port(i));
    }
    for ([[maybe_unused]] auto _ : state) {
        std::vector<cimple::Class_Map<TVRHBA_FCPort>> copies(sources.size());
        for (std::size_t i = 0; i < sources.size(); ++i) {
            std::size_t position = 0;
            if (copies[i].append_clones(sources[i], position) != size) {
                state.SkipWithError("not all members were copied");
            }
        }
        benchmark::DoNotOptimize(copies[0].get(0));
    }
    report(state);
}
BENCHMARK(map_copy)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

} // namespace
