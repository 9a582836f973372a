#include "host/tvrcim/command_line.h"

#include "host/tvrcim/commands.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>

namespace tvrcim {

namespace {

std::string first_line(std::string text) {
    text.erase(std::min(text.find('\n'), text.size()));
    return text;
}

int failed(const std::string& text, int status) {
    std::cerr << "tvrcim: " << first_line(text) << std::endl;
    return status;
}

std::vector<std::string> option_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

// Throws Usage_Error for the first word that looks like an option and is none.
void check_options(const CLI::App& app, const CLI::App* command,
                   const std::vector<std::string>& left) {
    const auto unknown = std::find_if(left.begin(), left.end(), [](const std::string& word) {
        return word.size() > 1 && word.starts_with('-');
    });
    if (unknown == left.end()) {
        return;
    }
    std::vector<std::string> names = option_names(app);
    if (command != nullptr) {
        const std::vector<std::string> own = option_names(*command);
        names.insert(names.end(), own.begin(), own.end());
    }
    const std::string name = unknown->substr(0, unknown->find('='));
    throw Usage_Error("there is no option " + name + suggestion(name, names) +
                      "; --help lists them");
}

Usage_Error no_command(const std::string& name, const std::vector<std::string>& commands) {
    return Usage_Error("there is no command '" + name + "'" + suggestion(name, commands) +
                       "; --help lists them");
}

// Of the command, or of all.
void show_help(const CLI::App& app, const CLI::App* command, std::ostream& out) {
    if (command == nullptr) {
        // Not app.help(), which goes on to a command that was read.
        out << app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
        return;
    }
    std::string before;
    for (const CLI::App* each = command->get_parent(); each != nullptr; each = each->get_parent()) {
        before = each->get_name() + (before.empty() ? "" : " ") + before;
    }
    out << command->help(before);
    if (!app.get_name().empty()) {
        out << "'tvrcim --help' shows the options that may stand before the command.\n";
    }
}

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

// One command is wanted, and no more.
void prepare(CLI::App& app) {
    constexpr std::size_t names = 22; // columns; with the text behind them on a line of 80
    app.get_formatter()->column_width(names);
    app.require_subcommand(1);
    app.fallthrough();
}

// The command `help`, which `parse` carries out; the last of all commands.
void add_help(CLI::App& app) {
    app.add_subcommand("help", "The commands; what one of them does")
        ->add_option("COMMAND", "command name");
}

std::vector<std::string> command_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

// The innermost command that was read, or null.
const CLI::App* parsed_command(const CLI::App& app) {
    const CLI::App* command = nullptr;
    for (std::vector<CLI::App*> parsed = app.get_subcommands(); !parsed.empty();
         parsed = command->get_subcommands()) {
        command = parsed.back();
    }
    return command;
}

// Returns a status if there is nothing left to do.
std::optional<int> parse(CLI::App& app, std::vector<std::string> words, std::ostream& out) {
    std::reverse(words.begin(), words.end()); // the parser takes the last word first
    const std::vector<std::string> commands = command_names(app);
    try {
        app.parse(std::move(words));
        if (!app.got_subcommand("help")) {
            return std::nullopt;
        }
        const auto named = app.get_subcommand("help")->get_option("COMMAND")->results();
        if (!named.empty() &&
            std::find(commands.begin(), commands.end(), named.front()) == commands.end()) {
            throw no_command(named.front(), commands);
        }
        show_help(app, named.empty() ? nullptr : app.get_subcommand(named.front()), out);
        return success;
    } catch (const CLI::CallForHelp&) {
        show_help(app, parsed_command(app), out);
        return success;
    } catch (const CLI::CallForVersion& version) {
        out << version.what() << '\n';
        return success;
    } catch (const CLI::ParseError& error) {
        const CLI::App* const command = parsed_command(app);
        const std::vector<std::string> left = app.remaining(true);
        check_options(app, command, left);
        if (command == nullptr && !left.empty() && !left.front().starts_with('-')) {
            throw no_command(left.front(), commands);
        }
        const std::vector<std::string> below =
            command == nullptr ? commands : command_names(*command);
        if (!below.empty() && left.empty() &&
            dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
            std::string list;
            for (const std::string& each : below) {
                list += (list.empty() ? "" : ", ") + each;
            }
            throw Usage_Error((command == nullptr ? "a command is missing: "
                                                  : command->get_name() + " lacks a word: ") +
                              list);
        }
        if (command != nullptr && !below.empty() && !left.empty()) {
            throw no_command(command->get_name() + " " + left.front(), below);
        }
        throw Usage_Error(first_line(error.what()) + "; 'tvrcim " +
                          (command == nullptr ? "" : command->get_name() + " ") +
                          "--help' tells the usage");
    }
}

// What `assoc` and `refs` take alike.
void add_common_options(CLI::App& command, Traversal& read) {
    command.add_option("PATH", read.path, "CLASS.KEY=VALUE,..., or fewer keys")->required();
    command.add_option("--class", read.filter.association_class, "only associations of this class")
        ->type_name("CLASS");
    command.add_option("--role", read.filter.role, "only where the instance has this role")
        ->type_name("ROLE");
    command.add_option("-p,--property", read.properties, "only this property and the keys")
        ->delimiter(',')
        ->type_name("PROP")
        ->allow_extra_args(false);
    command.add_flag("--names", read.names, "paths alone");
}

void add_association_commands(CLI::App& app, Command& chosen) {
    {
        auto* const command =
            app.add_subcommand("assoc", "The instances that are associated with one");
        const auto read = std::make_shared<Traversal>();
        add_common_options(*command, *read);
        command
            ->add_option("--result-class", read->filter.result_class,
                         "only instances of this class or below it")
            ->type_name("CLASS");
        command
            ->add_option("--result-role", read->filter.result_role,
                         "only instances that have this role")
            ->type_name("ROLE");
        command->callback([&chosen, read] {
            chosen = [read](Session& session) { show_associators(session, *read); };
        });
    }
    {
        auto* const command = app.add_subcommand("refs", "The associations of an instance");
        const auto read = std::make_shared<Traversal>();
        add_common_options(*command, *read);
        command->callback([&chosen, read] {
            chosen = [read](Session& session) { show_references(session, *read); };
        });
    }
    {
        auto* const command =
            app.add_subcommand("graph", "The associations around an instance, for Graphviz");
        const auto read = std::make_shared<Graph_Words>();
        command->add_option("PATH", read->path, "CLASS.KEY=VALUE,..., or fewer keys")->required();
        command->add_option("--depth", read->depth, "associations to follow, 1 unless given")
            ->check(CLI::Range(1u, 100u))
            ->type_name("N");
        command
            ->add_option("--fold", read->fold,
                         "draw more than N alike as one box, 5 unless given; 0: never")
            ->type_name("N");
        command->add_option("--leaf", read->leaves, "don't go on from instances of this class")
            ->delimiter(',')
            ->type_name("CLASS")
            ->allow_extra_args(false);
        command->add_option("--hide", read->hidden, "leave out instances of this class")
            ->delimiter(',')
            ->type_name("CLASS")
            ->allow_extra_args(false);
        command->callback(
            [&chosen, read] { chosen = [read](Session& session) { show_graph(session, *read); }; });
    }
}

void add_diagnostic_commands(CLI::App& app, Command& chosen) {
    auto* const diag = app.add_subcommand("diag", "Tests that the adapters carry out");
    diag->require_subcommand(1);
    diag->fallthrough();
    struct Words {
        std::string port;
        std::string test;
        std::vector<std::string> settings;
    };
    const auto read = std::make_shared<Words>();
    auto* const list = diag->add_subcommand("list", "The tests; of a port with their last results");
    list->add_option("PORT", read->port, "a port's WWPN, or its beginning");
    list->callback([&chosen, read] {
        chosen = [read](Session& session) { list_diagnostics(session, read->port); };
    });
    auto* const run = diag->add_subcommand("run", "Runs a test on a port, to its end");
    run->add_option("PORT", read->port, "a port's WWPN, or its beginning")->required();
    run->add_option("TEST", read->test, "a test's name in the list, or its beginning")->required();
    run->add_option("--set", read->settings, "a setting for this run and later ones")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    run->callback([&chosen, read] {
        chosen = [read](Session& session) {
            run_diagnostic(session, read->port, read->test, read->settings);
        };
    });
}

// What is read for a command lives as long as the parser's callback.
void add_commands(CLI::App& app, Command& chosen) {
    struct Words {
        std::string first;
        std::string second;
        std::vector<std::string> list;
        bool flag = false;
    };
    const auto words = [] { return std::make_shared<Words>(); };

    const auto add_host_command = [&](const char* name, const char* help,
                                      void (*run)(Session&, const std::string&)) {
        auto* const command = app.add_subcommand(name, help);
        const auto read = words();
        command->add_option("PORT", read->first, "a port's WWPN, or its beginning");
        command->callback([&chosen, read, run] {
            chosen = [read, run](Session& session) { run(session, read->first); };
        });
    };
    add_host_command("list", "A line per port of the host", list_ports);
    add_host_command("tree", "Host, adapters, ports, targets and units as a tree", show_tree);
    {
        auto* const command =
            app.add_subcommand("classes", "The classes and what each offers; one class in full");
        const auto read = words();
        command->add_option("GLOB", read->first, "class name, or a pattern with * and ?");
        command->add_flag("--all", read->flag, "also classes that the module doesn't serve");
        command->callback([&chosen, read] {
            chosen = [read](Session& session) { show_classes(session, read->first, read->flag); };
        });
    }
    {
        auto* const command = app.add_subcommand("enum", "The instances of a class");
        const auto read = words();
        command->add_option("CLASS", read->first, "class name")->required();
        command->add_option("-p,--property", read->list, "only this property and the keys")
            ->delimiter(',')
            ->type_name("PROP")
            ->allow_extra_args(false);
        command->add_flag("--names", read->flag, "paths alone");
        command->callback([&chosen, read] {
            chosen = [read](Session& session) {
                show_instances(session, read->first, read->list, read->flag);
            };
        });
    }
    {
        auto* const command = app.add_subcommand("get", "One instance");
        const auto read = words();
        command->add_option("PATH", read->first, "CLASS.KEY=VALUE,..., or fewer keys")->required();
        command->add_option("-p,--property", read->list, "only this property and the keys")
            ->delimiter(',')
            ->type_name("PROP")
            ->allow_extra_args(false);
        command->callback([&chosen, read] {
            chosen = [read](Session& session) { show_instance(session, read->first, read->list); };
        });
    }
    {
        auto* const command = app.add_subcommand("set", "Changes properties of an instance");
        const auto read = words();
        command->add_option("PATH", read->first, "CLASS.KEY=VALUE,..., or fewer keys")->required();
        command->add_option("PROP=VALUE", read->list, "what to change")->required();
        command->callback([&chosen, read] {
            chosen = [read](Session& session) {
                change_instance(session, read->first, read->list);
            };
        });
    }
    {
        auto* const command = app.add_subcommand("call", "Calls a method of an instance");
        const auto read = words();
        command->add_option("PATH", read->first, "CLASS.KEY=VALUE,..., or fewer keys")->required();
        command->add_option("METHOD", read->second, "method name")->required();
        command->add_option("ARG=VALUE", read->list, "arguments");
        command->callback([&chosen, read] {
            chosen = [read](Session& session) {
                call_method(session, read->first, read->second, read->list);
            };
        });
    }
    {
        auto* const command = app.add_subcommand("watch", "Alerts as they arrive");
        const auto read = words();
        read->first = "TVRHBA_AlertIndication";
        const auto count = std::make_shared<unsigned>(0);
        command->add_option("CLASS", read->first,
                            "indication class, TVRHBA_AlertIndication unless given");
        command->add_option("--count", *count, "end after N alerts")
            ->check(CLI::Range(1u, 1000000u))
            ->type_name("N");
        command->callback([&chosen, read, count] {
            chosen = [read, count](Session& session) {
                watch_alerts(session, read->first, *count);
            };
        });
    }
    add_association_commands(app, chosen);
    add_diagnostic_commands(app, chosen);
}

} // namespace

std::optional<int> read_program_line(std::vector<std::string> words, Program& program,
                                     std::ostream& out) {
    CLI::App app("Shows and changes Fibre Channel adapters through the provider module", "tvrcim");
    Private_Run& apart = program.apart;
    app.set_version_flag("--version", "tvrcim " TVR_VERSION);
    app.add_option("--module", program.module, "the provider module")->type_name("FILE");
    CLI::Option* const sim =
        app.add_option("--sim", apart.scenario, "simulated adapters, perhaps of a scenario's file")
            ->type_name("[SCENARIO]")
            ->expected(0, 1);
    app.add_option("--namespace", program.name_space,
                   "root/tavrin, or root/pg_interop for profiles, unless given")
        ->type_name("NS");
    app.add_option_function<std::string>(
           "-o,--output",
           [&program](const std::string& word) {
               if (word != "text" && word != "json") {
                   throw Usage_Error("--output is text or json, not '" + word + "'");
               }
               program.format = word == "json" ? Format::json : Format::text;
           },
           "text or json")
        ->type_name("FORMAT");
    app.add_flag("--device-log", apart.device_log,
                 "show what the module does with the adapter libraries");
    CLI::Option* const log = app.add_option("--log", apart.log_level,
                                            "show the runtime's log: FATAL, ERR, WARN, INFO or DBG")
                                 ->type_name("[LEVEL]")
                                 ->expected(0, 1);
    app.add_option("--instances", program.instances, "instances of other providers, as JSON")
        ->type_name("FILE");
    prepare(app);
    add_commands(app, program.command);
    const CLI::App* const shell =
        app.add_subcommand("shell", "The same commands, one a line, with the module kept loaded");
    add_help(app);
    check_scenario_word(words, command_names(app));
    std::optional<int> over = parse(app, std::move(words), out);
    if (over) {
        return over;
    }
    if (log->count() != 0 && apart.log_level.empty()) {
        apart.log_level = "DBG";
    }
    if (!apart.log_level.empty() && !is_log_level(apart.log_level)) {
        throw Usage_Error("--log is FATAL, ERR, WARN, INFO or DBG, not '" + apart.log_level + "'");
    }
    apart.simulated = sim->count() != 0;
    program.shell = shell->parsed();
    return std::nullopt;
}

namespace {

// The parser of the shell's lines.
struct Shell_Parser {
    explicit Shell_Parser(Command& command)
        : app("The commands of tvrcim, one a line; 'exit' ends", "") {
        prepare(app);
        add_commands(app, command);
        add_help(app);
    }
    CLI::App app;
};

} // namespace

std::optional<int> read_shell_line(std::vector<std::string> words, Command& command,
                                   std::ostream& out) {
    Shell_Parser parser(command);
    return parse(parser.app, std::move(words), out);
}

std::vector<std::string> shell_commands() {
    Command command;
    return command_names(Shell_Parser(command).app);
}

std::vector<std::string> options_of(const std::string& shell_command) {
    Command command;
    const Shell_Parser parser(command);
    std::vector<std::string> words;
    for (const CLI::Option* option : parser.app.get_subcommand(shell_command)->get_options()) {
        for (const std::string& name : option->get_lnames()) {
            words.push_back("--" + name);
        }
        for (const std::string& name : option->get_snames()) {
            words.push_back("-" + name);
        }
    }
    return words;
}

int guarded(const std::function<int()>& work, const std::string& place) noexcept {
    try {
        return work();
    } catch (const Cim_Error& error) {
        return failed(place + error.what(), cim_error);
    } catch (const std::exception& error) {
        return failed(place + error.what(), usage_error);
    }
}

} // namespace tvrcim
