#include "host/tvrcim/output.h"

#include "host/tvrcim/value_names.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace tvrcim {

using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;
using tvrhost::Json;
using tvrhost::Named_Value;

namespace {

bool begins_character(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80; // in UTF-8
}

// In characters.
std::size_t width_of(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

// Where the character of that number begins.
std::size_t offset_of(const std::string& text, std::size_t character) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (begins_character(text[i]) && character-- == 0) {
            return i;
        }
    }
    return text.size();
}

} // namespace

void print_json(Session& session, const Json& json) {
    session.out << json.text() << '\n';
}

void print_values(Session& session, const tvrhost::Named_Values& values,
                  const std::function<std::string(const Named_Value&)>& text) {
    std::size_t width = 0;
    for (const Named_Value& value : values) {
        width = std::max(width, value.name.size());
    }
    for (const Named_Value& value : values) {
        const std::string before =
            "  " + value.name + std::string(width - value.name.size(), ' ') + " = ";
        print_wrapped(session, before, std::string(before.size(), ' '), text(value));
    }
}

void print_instance(Session& session, const Cim_Instance& instance) {
    session.out << instance.path.text() << '\n';
    const tvrmof::Schema* const schema = session.manager.schema();
    const tvrmof::Class* const model =
        schema == nullptr ? nullptr : schema->find(instance.path.class_name);
    print_values(session, instance.properties,
                 [model](const Named_Value& value) { return named_literal(model, value); });
}

void print_answer(Session& session, const tvrhost::Answer& answer) {
    if (session.format == Format::json) {
        Json json = Json::array();
        for (const Cim_Path& path : answer.paths) {
            json.push_back(to_json(path));
        }
        for (const Cim_Instance& instance : answer.instances) {
            json.push_back(to_json(instance));
        }
        print_json(session, json);
        return;
    }
    for (const Cim_Path& path : answer.paths) {
        session.out << path.text() << '\n';
    }
    for (const Cim_Instance& instance : answer.instances) {
        if (&instance != answer.instances.data()) {
            session.out << '\n';
        }
        print_instance(session, instance);
    }
}

std::string printable(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            c = '?';
        }
    }
    return text;
}

std::vector<std::string> aligned(const Rows& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], width_of(row[i]));
        }
    }
    std::vector<std::string> lines;
    lines.reserve(rows.size());
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (widths[i] != 0) {
                line += printable(row[i]) + std::string(widths[i] - width_of(row[i]) + 2, ' ');
            }
        }
        lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
    }
    return lines;
}

void print_table(Session& session, const Rows& rows) {
    for (const std::string& line : aligned(rows)) {
        print_wrapped(session, "", "    ", line);
    }
}

std::size_t screen_width() {
    if (isatty(STDOUT_FILENO) == 0) {
        return 0;
    }
    if (const char* const columns = std::getenv("COLUMNS")) {
        if (const unsigned long width = std::strtoul(columns, nullptr, 10); width != 0) {
            return width;
        }
    }
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::vector<std::string> wrapped(const std::string& text, std::size_t first, std::size_t others) {
    constexpr std::size_t readable = 16;
    std::vector<std::string> lines;
    std::string rest = text;
    std::size_t room = first;
    while (std::min(first, others) >= readable && width_of(rest) > room) {
        const std::size_t end = offset_of(rest, room);
        // A word that alone is longer than a line is broken where the line ends.
        const std::size_t blank = rest.find_last_of(' ', end);
        const std::size_t last =
            blank == std::string::npos ? blank : rest.find_last_not_of(' ', blank);
        const std::size_t cut = last == std::string::npos ? end : last + 1;
        lines.push_back(rest.substr(0, cut));
        rest.erase(0, std::min(rest.find_first_not_of(' ', cut), rest.size()));
        room = others;
    }
    lines.push_back(rest);
    return lines;
}

void print_wrapped(Session& session, const std::string& before, const std::string& below,
                   const std::string& text) {
    const std::size_t width = session.width();
    const auto room = [width](const std::string& prefix) {
        const std::size_t taken = width_of(prefix);
        return width == 0 ? SIZE_MAX : width - std::min(width, taken);
    };
    const std::string* prefix = &before;
    for (const std::string& line : wrapped(text, room(before), room(below))) {
        session.out << *prefix << line << '\n';
        prefix = &below;
    }
}

std::string size_text(std::uint64_t bytes) {
    constexpr const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    double value = static_cast<double>(bytes);
    std::size_t unit = 0;
    // What would print as 1024.0 is 1.0 of the next unit.
    while (value >= 1023.95 && unit + 1 < std::size(units)) {
        value /= 1024;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", value, units[unit]);
    return text;
}

} // namespace tvrcim
