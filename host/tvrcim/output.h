// How commands print what they have found.
#ifndef TVR_HOST_TVRCIM_OUTPUT_H
#define TVR_HOST_TVRCIM_OUTPUT_H

#include "host/cim_json.h"
#include "host/tvrcim/session.h"

namespace tvrcim {

void print_json(Session& session, const tvrhost::Json& json);

// A line per value: its name, padded, and its literal.
void print_values(Session& session, const tvrhost::Named_Values& values);
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
void print_table(std::ostream& out, const Rows& rows);

// "100.0 GiB" and the like.
std::string size_text(std::uint64_t bytes);

} // namespace tvrcim

#endif
