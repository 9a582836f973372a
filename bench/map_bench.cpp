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

void map_insert(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<TVRHBA_FCPort*> ports;
        for (long i = 0; i < state.range(0); ++i) {
            ports.push_back(port(i));
        }
        {
            cimple::Class_Map<TVRHBA_FCPort> map;
            state.ResumeTiming();
            for (TVRHBA_FCPort* instance : ports) {
                if (map.insert(instance) < 0) {
                    state.SkipWithError("a key came twice");
                }
            }
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(map_insert)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond)->Complexity();

void map_copy(benchmark::State& state) {
    cimple::Class_Map<TVRHBA_FCPort> source;
    for (long i = 0; i < state.range(0); ++i) {
        source.insert(port(i));
    }
    for (auto _ : state) {
        cimple::Class_Map<TVRHBA_FCPort> copy;
        std::size_t position = 0;
        if (copy.append_clones(source, position) != state.range(0)) {
            state.SkipWithError("not all members were copied");
        }
        benchmark::DoNotOptimize(copy.get(0));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(map_copy)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond)->Complexity();

} // namespace
