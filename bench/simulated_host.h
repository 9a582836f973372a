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

// A function of the simulated libraries, and a request to their control (sim/tvrsim.h). What isn't
// there or fails ends the program.
void* simulated(const char* function);
void control(const std::string& request);

// Makes the host show so many ports from now on, each on an adapter of its own and with so many
// disks, of one target, behind it; without latency. Ends a kept object manager.
void set_host(long ports, long disks = 0);

// An object manager with the module loaded from its file, and a computer system of another provider
// that the module finds by up-call.
std::unique_ptr<tvrhost::Object_Manager> module_manager();

// Such an object manager on a host of its own, kept for the benchmarks that come next: until
// another host is asked for, or until `leave_simulated_host`, which `main` calls while the module's
// own variables still stand.
tvrhost::Object_Manager& kept_manager(long ports, long disks);
void leave_simulated_host();

// An object manager with the same class model and other factories.
std::unique_ptr<tvrhost::Object_Manager> manager_of(tvrhost::Factory_Lookup factories);

} // namespace tvrbench

#endif
