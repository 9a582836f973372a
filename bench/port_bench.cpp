// Enumeration of ports through CMPI, next to the floor.
#include "bench/beside_floor.h"
#include "bench/simulated_host.h"

namespace {

void enumerate_ports(benchmark::State& state) {
    tvrbench::set_host(state.range(0));
    const std::unique_ptr<tvrhost::Object_Manager> module = tvrbench::module_manager();
    tvrbench::enumerate_beside_floor(state, *module, "TVRHBA_FCPort",
                                     static_cast<std::size_t>(state.range(0)));
}
BENCHMARK(enumerate_ports)
    ->Arg(4)
    ->Arg(64)
    ->Arg(512)
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime()
    ->MinTime(2); // the ratio settles slowly

} // namespace
