// Runs that need a private directory: with simulated adapters, or with the module's runtime log. A
// second process does the work, so that the directory goes however that one ends.
#ifndef TVR_HOST_TVRCIM_PRIVATE_RUN_H
#define TVR_HOST_TVRCIM_PRIVATE_RUN_H

#include <string>

namespace tvrcim {

struct Private_Run {
    bool simulated = false;
    std::string scenario;  // a file, or empty for that of the environment or the built-in one
    std::string log_level; // empty: without the runtime log
};

// True in the process that `run_privately` starts.
bool is_private_run() noexcept;

// Starts this program again with the same arguments. Simulated, it has simulated adapters and the
// private directory in place of the machine's configuration; the runtime log is shown on standard
// error when it has ended. Returns the exit status, that of a shell where a signal ended the
// process. Throws Usage_Error.
int run_privately(char** arguments, const Private_Run& run);

} // namespace tvrcim

#endif
