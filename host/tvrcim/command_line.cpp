#include "host/tvrcim/command_line.h"

#include "host/object_manager.h"
#include "host/tvrcim/errors.h"
#include "host/tvrcim/near_names.h"

#include <CLI/CLI.hpp>

#include <iostream>

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

} // namespace

void prepare(CLI::App& app) {
    app.require_subcommand(1);
    app.fallthrough();
}

std::optional<int> parse(CLI::App& app, std::vector<std::string> words, std::ostream& out) {
    std::vector<std::string> commands;
    for (const CLI::App* command : app.get_subcommands({})) {
        commands.push_back(command->get_name());
    }
    try {
        app.parse(std::move(words));
        return std::nullopt;
    } catch (const CLI::CallForHelp&) {
        for (const CLI::App* command : app.get_subcommands()) {
            if (command->parsed()) {
                out << command->help();
                return success;
            }
        }
        out << app.help();
        return success;
    } catch (const CLI::CallForAllHelp&) {
        out << app.help("", CLI::AppFormatMode::All);
        return success;
    } catch (const CLI::CallForVersion& version) {
        out << version.what() << '\n';
        return success;
    } catch (const CLI::ParseError& error) {
        const CLI::App* command = nullptr;
        for (const CLI::App* each : app.get_subcommands()) {
            command = each;
        }
        const std::vector<std::string> left = app.remaining(true);
        if (command == nullptr && !left.empty() && !left.front().starts_with('-')) {
            throw Usage_Error("there is no command '" + left.front() + "'" +
                              suggestion(left.front(), commands) + "; --help lists them");
        }
        std::string list;
        if (command == nullptr) {
            for (const std::string& each : commands) {
                list += (list.empty() ? "" : ", ") + each;
            }
        }
        if (command == nullptr && left.empty() &&
            dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
            throw Usage_Error("a command is missing: " + list);
        }
        throw Usage_Error(first_line(error.what()) + "; 'tvrcim " +
                          (command == nullptr ? "" : command->get_name() + " ") +
                          "--help' tells the usage");
    }
}

int guarded(const std::function<int()>& work) noexcept {
    try {
        return work();
    } catch (const Cim_Error& error) {
        return failed(error.what(), cim_error);
    } catch (const std::exception& error) {
        return failed(error.what(), usage_error);
    }
}

} // namespace tvrcim
