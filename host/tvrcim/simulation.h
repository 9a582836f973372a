// Running with simulated adapters, and the private directories of a run.
#ifndef TVR_HOST_TVRCIM_SIMULATION_H
#define TVR_HOST_TVRCIM_SIMULATION_H

#include <filesystem>
#include <string>

namespace tvrcim {

// A directory below the system's for temporary files that nobody else may read; removed with all
// that is in it at the end.
class Private_Directory {
public:
    Private_Directory();
    ~Private_Directory();
    Private_Directory(const Private_Directory&) = delete;
    Private_Directory& operator=(const Private_Directory&) = delete;

    const std::filesystem::path& path() const noexcept { return _path; }

private:
    std::filesystem::path _path;
};

// True in the process that `run_simulated` starts.
bool is_simulated() noexcept;

// Starts this program again with the same arguments, on simulated adapters and with a private
// directory in place of the machine's configuration; `scenario` is a file, or empty for the
// built-in one. Returns the exit status of that process. Throws Usage_Error.
int run_simulated(char** arguments, const std::string& scenario);

} // namespace tvrcim

#endif
