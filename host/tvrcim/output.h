// How commands print what they have found.
#ifndef TVR_HOST_TVRCIM_OUTPUT_H
#define TVR_HOST_TVRCIM_OUTPUT_H

#include "host/cim_json.h"
#include "host/tvrcim/session.h"

namespace tvrcim {

void print_json(Session& session, const tvrhost::Json& json);

// A line per value: its name, padded, and what `text` makes of it.
void print_values(Session& session, const tvrhost::Named_Values& values,
                  const std::function<std::string(const tvrhost::Named_Value&)>& text);
void print_instance(Session& session, const tvrhost::Cim_Instance& instance);

// The paths and instances of an answer: a JSON array, or paths a line each and instances with an
// empty line between.
void print_answer(Session& session, const tvrhost::Answer& answer);

// A text from hardware with a question mark for each control character, so that it can't break
// lines or command the terminal.
std::string printable(std::string text);

// The rows, made printable, in columns, each as wide as its widest cell.
using Rows = std::vector<std::vector<std::string>>;
std::vector<std::string> aligned(const Rows& rows);
// Those as lines; the first row is the heading.
void print_table(Session& session, const Rows& rows);

// The characters of a line of standard output if it is a terminal, else 0.
std::size_t screen_width();

// A text in lines: `first` characters at most in the first one and `others` in those behind it,
// broken between words where that can be. One line if `first` or `others` is too little to read.
std::vector<std::string> wrapped(const std::string& text, std::size_t first, std::size_t others);

// Prints `text` behind `before`, and what the screen has no room for in lines behind `below`.
void print_wrapped(Session& session, const std::string& before, const std::string& below,
                   const std::string& text);

// "100.0 GiB" and the like.
std::string size_text(std::uint64_t bytes);

} // namespace tvrcim

#endif
