// tvrcim: shows and changes the adapters of a host through the provider module, with an object
// manager of its own.
#include "host/object_manager.h"
#include "host/tvrcim/command_line.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/places.h"
#include "host/tvrcim/shell.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
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
    tvrhost::Object_Manager manager(std::move(options));
    check_module(manager, module);
    Session session(manager, program.format, program.name_space, std::cout);
    session.explain_nothing = check_adapter_library;
    if (program.shell) {
        return run_shell(session, std::cin, isatty(STDIN_FILENO) != 0);
    }
    program.command(session);
    return success;
}

int start(int argc, char** argv) {
    Program program;
    if (const std::optional<int> over = read_program_line(
            std::vector<std::string>(argv + 1, argv + argc), program, std::cout)) {
        return *over;
    }
    const Private_Run& apart = program.apart;
    if ((apart.simulated || !apart.log_level.empty()) && !is_private_run()) {
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

void check_output() {
    if (!std::cout.flush()) {
        throw Cim_Error("standard output cannot be written");
    }
}

} // namespace

} // namespace tvrcim

int main(int argc, char** argv) {
    tvrcim::hold_standard_streams();
    return tvrcim::guarded([&] {
        const int status = tvrcim::start(argc, argv);
        tvrcim::check_output();
        return status;
    });
}
