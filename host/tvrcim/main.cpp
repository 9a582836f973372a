// tvrcim: shows and changes the adapters of a host through the provider module, with an object
// manager of its own.
#include "host/object_manager.h"
#include "host/tvrcim/command_line.h"
#include "host/tvrcim/commands.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/places.h"
#include "host/tvrcim/shell.h"
#include "host/tvrcim/simulation.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>

namespace tvrcim {

namespace {

// The module's runtime log, switched on in a private directory and shown at the end.
class Runtime_Log {
public:
    explicit Runtime_Log(const std::string& level) {
        std::ofstream(_directory.path() / ".cimplerc") << "LOG_LEVEL=" << level << '\n';
        setenv("CIMPLE_HOME", _directory.path().c_str(), 1);
    }
    ~Runtime_Log() {
        std::ifstream messages(_directory.path() / ".cimple" / "messages");
        for (std::string line; std::getline(messages, line);) {
            std::cerr << line << '\n';
        }
    }
    Runtime_Log(const Runtime_Log&) = delete;
    Runtime_Log& operator=(const Runtime_Log&) = delete;

private:
    Private_Directory _directory;
};

bool is_log_level(const std::string& word) {
    constexpr const char* levels[] = {"FATAL", "ERR", "WARN", "INFO", "DBG"};
    return std::find(std::begin(levels), std::end(levels), word) != std::end(levels);
}

struct Settings {
    std::string module;
    std::string name_space;
    std::string instances;
    std::string scenario;
    std::string log_level;
    Format format = Format::text;
};

int run(const Settings& settings, const Command& command, bool shell) {
    std::optional<Runtime_Log> log;
    if (!settings.log_level.empty()) {
        log.emplace(settings.log_level);
    }
    tvrhost::Options options;
    options.module = settings.module.empty() ? module_file().string() : settings.module;
    options.mof = {mof_file().string()};
    options.instance_file = settings.instances;
    options.on_log = [](const std::string& text) { std::cerr << text << '\n'; };
    tvrhost::Object_Manager manager(std::move(options));
    Session session(manager, settings.format, settings.name_space, std::cout);
    if (shell) {
        return run_shell(session, std::cin, isatty(STDIN_FILENO) != 0);
    }
    command(session);
    std::cout << std::flush;
    return success;
}

int start(int argc, char** argv) {
    CLI::App app("Shows and changes Fibre Channel adapters through the provider module", "tvrcim");
    Settings settings;
    Command command;
    app.set_version_flag("--version", "tvrcim " TVR_VERSION);
    app.add_option("--module", settings.module, "the provider module")->type_name("FILE");
    CLI::Option* const sim =
        app.add_option("--sim", settings.scenario,
                       "simulated adapters, perhaps of a scenario (given before the command)")
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
    CLI::Option* const log =
        app.add_option("--log", settings.log_level,
                       "show the module's runtime log at the end: ERR, WARN, INFO or DBG")
            ->type_name("[LEVEL]")
            ->expected(0, 1);
    app.add_option("--instances", settings.instances, "instances of other providers, as JSON")
        ->type_name("FILE");
    prepare(app);
    add_commands(app, command);
    const CLI::App* const shell =
        app.add_subcommand("shell", "The same commands, one a line, with the module kept loaded");

    std::vector<std::string> words(argv + 1, argv + argc);
    std::reverse(words.begin(), words.end());
    if (const std::optional<int> over = parse(app, std::move(words), std::cout)) {
        return *over;
    }
    if (log->count() != 0 && settings.log_level.empty()) {
        settings.log_level = "DBG";
    }
    if (!settings.log_level.empty() && !is_log_level(settings.log_level)) {
        throw Usage_Error("--log is FATAL, ERR, WARN, INFO or DBG, not '" + settings.log_level +
                          "'");
    }
    if (sim->count() != 0 && !is_simulated()) {
        return run_simulated(argv, settings.scenario);
    }
    return run(settings, command, shell->parsed());
}

} // namespace

} // namespace tvrcim

int main(int argc, char** argv) {
    return tvrcim::guarded([&] { return tvrcim::start(argc, argv); });
}
