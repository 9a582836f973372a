// Runs that need a private directory: with simulated adapters, or with a log of the module. A
// second process does the work, so that the directory goes however that one ends.
#ifndef TVR_HOST_TVRCIM_PRIVATE_RUN_H
#define TVR_HOST_TVRCIM_PRIVATE_RUN_H

#include <string>

namespace tvrcim {

struct Private_Run {
    bool simulated = false;
    std::string scenario;  // a file, or empty for that of the environment or the built-in one
    std::string log_level; // empty: without the runtime log
    bool device_log = false;
};

// True in the process that `run_privately` starts.
bool is_private_run() noexcept;

// Starts this program again with the same arguments. Simulated, it has simulated adapters and the
// private directory in place of the machine's configuration; for the device log of a machine's
// adapters only the log's own settings are replaced. The logs are shown on standard error as they
// grow. Returns the exit status; does not return where a signal ended the process, but ends this
// one by the same signal. Throws Usage_Error.
int run_privately(char** arguments, const Private_Run& run);

} // namespace tvrcim

#endif
