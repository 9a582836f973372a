// The syntax of command lines and of the shell's lines, and turning what goes wrong into one line
// and a status. The library that reads command lines is compiled in command_line.cpp and nowhere
// else.
#ifndef TVR_HOST_TVRCIM_COMMAND_LINE_H
#define TVR_HOST_TVRCIM_COMMAND_LINE_H

#include "host/tvrcim/private_run.h"
#include "host/tvrcim/session.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tvrcim {

// What a line asks for, to be run with a session.
using Command = std::function<void(Session&)>;

// What the program was started for.
struct Program {
    std::string module;
    std::string name_space;
    std::string instances;
    Format format = Format::text;
    Private_Run apart;
    Command command;
    bool shell = false; // instead of a command
};

// Both read words into their last argument but one and return a status if there is nothing left to
// do, as after --help and help, which are written to `out`. Both throw Usage_Error.
std::optional<int> read_program_line(std::vector<std::string> words, Program& program,
                                     std::ostream& out);
std::optional<int> read_shell_line(std::vector<std::string> words, Command& command,
                                   std::ostream& out);

// The commands of the shell, in order, and the options of one of them, as "--names" and "-p".
std::vector<std::string> shell_commands();
std::vector<std::string> options_of(const std::string& shell_command);

// Runs `work` and returns its status; an error is told in one line on standard error, behind
// `place`.
int guarded(const std::function<int()>& work, const std::string& place = {}) noexcept;

} // namespace tvrcim

#endif
