// Enumeration through CMPI next to the floor: a bare provider in the same object manager that hands
// out the same instances. The two run in turn, so that the ratio holds when the machine's speed
// drifts.
#ifndef TVR_BENCH_BESIDE_FLOOR_H
#define TVR_BENCH_BESIDE_FLOOR_H

#include "host/object_manager.h"

#include <benchmark/benchmark.h>

namespace tvrbench {

// Enumerates a class of the module, which has so many instances. The time is the module's; the
// counters `floor_us` and `ratio` are medians.
void enumerate_beside_floor(benchmark::State& state, tvrhost::Object_Manager& module,
                            const char* class_name, std::size_t count);

} // namespace tvrbench

#endif
