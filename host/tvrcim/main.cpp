// tvrcim: shows and changes the adapters of a host through the provider module, with an object
// manager of its own.
#include "host/object_manager.h"
#include "host/tvrcim/adapter_check.h"
#include "host/tvrcim/command_line.h"
#include "host/tvrcim/commands.h"
#include "host/tvrcim/ending.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"
#include "host/tvrcim/output.h"
#include "host/tvrcim/places.h"
#include "host/tvrcim/private_run.h"
#include "host/tvrcim/shell.h"

#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>

namespace tvrcim {

namespace {

// A word behind --sim that is no file is a command that was mistyped, unless a command follows.
void check_scenario_word(const std::vector<std::string>& words,
                         const std::vector<std::string>& commands) {
    const auto is_command = [&](const std::string& word) {
        return std::find(commands.begin(), commands.end(), word) != commands.end();
    };
    const auto sim = std::find(words.begin(), words.end(), "--sim");
    if (sim == words.end() || sim + 1 == words.end()) {
        return;
    }
    const std::string& word = sim[1];
    std::error_code error;
    if (!word.empty() && !word.starts_with('-') && std::none_of(sim, words.end(), is_command) &&
        !std::filesystem::exists(word, error)) {
        throw Usage_Error("there is neither a command nor a scenario '" + word + "'" +
                          suggestion(word, commands) + "; --help lists the commands");
    }
}

bool is_log_level(const std::string& word) {
    constexpr const char* levels[] = {"FATAL", "ERR", "WARN", "INFO", "DBG"};
    return std::find(std::begin(levels), std::end(levels), word) != std::end(levels);
}

struct Settings {
    std::string module;
    std::string name_space;
    std::string instances;
    Format format = Format::text;
};

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

int run(const Settings& settings, const Command& command, bool shell) {
    tvrhost::Options options;
    options.module = settings.module.empty() ? module_file().string() : file_name(settings.module);
    options.mof = {mof_file().string()};
    options.instance_file = settings.instances;
    options.on_log = [](const std::string& text) { std::cerr << text << '\n'; };
    const std::string module = options.module;
    Ending ending;
    tvrhost::Object_Manager manager(std::move(options));
    const Ending::Watch watch(ending, manager);
    check_module(manager, module);
    Session session(manager, settings.format, settings.name_space, std::cout);
    session.width = screen_width;
    session.explain_nothing = [&session] {
        check_adapter_library();
        explain_no_ports(session);
    };
    if (shell) {
        return run_shell(session);
    }
    command(session);
    return success;
}

int start(int argc, char** argv) {
    CLI::App app("Shows and changes Fibre Channel adapters through the provider module", "tvrcim");
    Settings settings;
    Private_Run apart;
    Command command;
    app.set_version_flag("--version", "tvrcim " TVR_VERSION);
    app.add_option("--module", settings.module, "the provider module")->type_name("FILE");
    CLI::Option* const sim =
        app.add_option("--sim", apart.scenario, "simulated adapters, perhaps of a scenario's file")
            ->type_name("[SCENARIO]")
            ->expected(0, 1);
    app.add_option("--namespace", settings.name_space,
                   "root/tavrin, or root/pg_interop for profiles, unless given")
        ->type_name("NS");
    app.add_option_function<std::string>(
           "-o,--output",
           [&settings](const std::string& word) {
               if (word != "text" && word != "json") {
                   throw Usage_Error("--output is text or json, not '" + word + "'");
               }
               settings.format = word == "json" ? Format::json : Format::text;
           },
           "text or json")
        ->type_name("FORMAT");
    app.add_flag("--device-log", apart.device_log,
                 "show what the module does with the adapter libraries");
    CLI::Option* const log = app.add_option("--log", apart.log_level,
                                            "show the runtime's log: FATAL, ERR, WARN, INFO or DBG")
                                 ->type_name("[LEVEL]")
                                 ->expected(0, 1);
    app.add_option("--instances", settings.instances, "instances of other providers, as JSON")
        ->type_name("FILE");
    prepare(app);
    add_commands(app, command);
    const CLI::App* const shell =
        app.add_subcommand("shell", "The same commands, one a line, with the module kept loaded");
    add_help(app);

    std::vector<std::string> words(argv + 1, argv + argc);
    check_scenario_word(words, command_names(app));
    std::reverse(words.begin(), words.end());
    if (const std::optional<int> over = parse(app, std::move(words), std::cout)) {
        return *over;
    }
    if (log->count() != 0 && apart.log_level.empty()) {
        apart.log_level = "DBG";
    }
    if (!apart.log_level.empty() && !is_log_level(apart.log_level)) {
        throw Usage_Error("--log is FATAL, ERR, WARN, INFO or DBG, not '" + apart.log_level + "'");
    }
    apart.simulated = sim->count() != 0;
    const bool is_apart = apart.simulated || apart.device_log || !apart.log_level.empty();
    if (is_apart && !is_private_run()) {
        return run_privately(argv, apart);
    }
    return run(settings, command, shell->parsed());
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
