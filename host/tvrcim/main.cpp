// tvrcim: shows and changes the adapters of a host through the provider module, with an object
// manager of its own.
#include "host/object_manager.h"
#include "host/tvrcim/adapter_check.h"
#include "host/tvrcim/command_line.h"
#include "host/tvrcim/ending.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/places.h"
#include "host/tvrcim/shell.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>

namespace tvrcim {

namespace {

// A file here goes before one of the loader's places.
std::string file_name(const std::string& module) {
    std::error_code error;
    const bool is_here =
        module.find('/') == std::string::npos && std::filesystem::exists(module, error);
    return is_here ? "./" + module : module;
}

// Of a file that has no factory of any class nothing would be answered.
void check_module(tvrhost::Object_Manager& manager, const std::string& module) {
    const auto& classes = manager.schema()->classes();
    if (std::none_of(classes.begin(), classes.end(), [&](const auto& each) {
            return manager.serves(each->name, tvrhost::Kind::instance);
        })) {
        throw Usage_Error("module " + module + ": serves none of the classes");
    }
}

int run(const Program& program) {
    tvrhost::Options options;
    options.module = program.module.empty() ? module_file().string() : file_name(program.module);
    options.mof = {mof_file().string()};
    options.instance_file = program.instances;
    options.on_log = [](const std::string& text) { std::cerr << text << '\n'; };
    const std::string module = options.module;
    Ending ending;
    tvrhost::Object_Manager manager(std::move(options));
    const Ending::Watch watch(ending, manager);
    check_module(manager, module);
    Session session(manager, program.format, program.name_space, std::cout);
    session.width = screen_width;
    session.explain_nothing = [&session] {
        check_adapter_library();
        explain_no_ports(session);
    };
    if (program.shell) {
        return run_shell(session);
    }
    program.command(session);
    return session.status;
}

int start(int argc, char** argv) {
    Program program;
    if (const std::optional<int> over = read_program_line(
            std::vector<std::string>(argv + 1, argv + argc), program, std::cout)) {
        return *over;
    }
    const Private_Run& apart = program.apart;
    const bool is_apart = apart.simulated || apart.device_log || !apart.log_level.empty();
    if (is_apart && !is_private_run()) {
        return run_privately(argv, apart);
    }
    return run(program);
}

// A closed standard stream stays closed, rather than to become a file that the module opens.
void hold_standard_streams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0) {
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

// Ends the process as a closed pipe ends others where a reader has gone away: that is no error.
int checked_output(int status) {
    const bool is_written = std::cout.flush().good();
    if (is_pipe_closed() && !(is_written && std::cerr.good())) {
        end_by_signal(SIGPIPE);
    }
    if (status == success && !is_written) {
        throw Cim_Error("standard output cannot be written");
    }
    return status;
}

} // namespace

} // namespace tvrcim

int main(int argc, char** argv) {
    tvrcim::hold_standard_streams();
    tvrcim::survive_closed_pipes();
    const int status = tvrcim::guarded([&] { return tvrcim::start(argc, argv); });
    return tvrcim::guarded([&] { return tvrcim::checked_output(status); });
}
