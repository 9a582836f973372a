// The simulated host that the benchmarks run on, and the object managers on it.
#ifndef TVR_BENCH_SIMULATED_HOST_H
#define TVR_BENCH_SIMULATED_HOST_H

#include "host/object_manager.h"

#include <memory>
#include <string>

namespace tvrbench {

// The directory of the simulated libraries must be known to the loader before the process starts:
// starts this program again with it, and with a private directory before the module's fixed paths.
// Returns in the new process only. The directory is removed at its end.
void enter_simulated_host(char** argv);

// Makes the host show so many ports from now on, each on an adapter of its own, without latency.
void set_ports(long count);

// An object manager with the module loaded from its file, and a computer system of another provider
// that the module finds by up-call.
std::unique_ptr<tvrhost::Object_Manager> module_manager();

// An object manager with the same class model and other factories.
std::unique_ptr<tvrhost::Object_Manager> manager_of(tvrhost::Factory_Lookup factories);

} // namespace tvrbench

#endif
