#include "host/tvrcim/output.h"

#include <algorithm>

namespace tvrcim {

using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;
using tvrhost::Json;
using tvrhost::Named_Value;

namespace {

// In characters of UTF-8.
std::size_t width_of(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

} // namespace

void print_json(Session& session, const Json& json) {
    session.out << json.text() << '\n';
}

void print_values(Session& session, const tvrhost::Named_Values& values) {
    std::size_t width = 0;
    for (const Named_Value& value : values) {
        width = std::max(width, value.name.size());
    }
    for (const Named_Value& value : values) {
        session.out << "  " << value.name << std::string(width - value.name.size(), ' ') << " = "
                    << value.value.literal() << '\n';
    }
}

void print_instance(Session& session, const Cim_Instance& instance) {
    session.out << instance.path.text() << '\n';
    print_values(session, instance.properties);
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

void print_table(std::ostream& out, const Rows& rows) {
    for (const std::string& line : aligned(rows)) {
        out << line << '\n';
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
