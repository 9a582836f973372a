#include "host/tvrcim/graph.h"

#include "host/tvrcim/output.h"
#include "host/tvrcim/progress.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <span>
#include <sstream>

namespace tvrcim {

using tvrhost::Cim_Path;
using tvrhost::Json;

namespace {

constexpr char before_dot[] = R"(digraph associations {
  graph [rankdir=LR, nodesep=0.25, ranksep=0.6]
  node [shape=box, fontname="Helvetica", fontsize=10, height=0.3]
  edge [fontname="Helvetica", fontsize=8, color="#808080"]
)";

// Class names without the prefix that all of them have.
std::string short_name(const std::string& class_name) {
    for (const std::string_view prefix : {"TVRHBA_", "CIM_"}) {
        if (class_name.starts_with(prefix)) {
            return class_name.substr(prefix.size());
        }
    }
    return class_name;
}

// In lines of a length that fits a box, broken where the parts of names end.
std::string wrapped(const std::string& text) {
    constexpr std::size_t width = 34;
    constexpr char separators[] = " :_";
    std::string result;
    std::size_t begin = 0;
    while (text.size() - begin > width) {
        std::size_t end = text.find_last_of(separators, begin + width - 1);
        if (end == std::string::npos || end < begin) {
            end = text.find_first_of(separators, begin);
        }
        if (end == std::string::npos || end + 1 == text.size()) {
            break;
        }
        result += text.substr(begin, end + 1 - begin) + '\n';
        begin = end + 1;
    }
    return result + text.substr(begin);
}

// What tells an instance from others of its class: the values of its own keys.
std::string own_name(const Cim_Path& path) {
    constexpr std::string_view owners[] = {"SystemCreationClassName", "SystemName",
                                           "CreationClassName"};
    std::string text;
    for (const tvrhost::Named_Value& key : path.keys) {
        if (std::find(std::begin(owners), std::end(owners), key.name) == std::end(owners)) {
            text += (text.empty() ? "" : " ") + key.value.plain();
        }
    }
    return text;
}

// A label in quotes. Of the escapes of JSON only those of quotation mark, backslash and new line
// are left, which Graphviz takes alike.
std::string quoted(const std::string& text) {
    std::string label;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        label += (label.empty() ? "" : "\n") + printable(std::move(line));
    }
    return Json(label).text(-1);
}

class Graph {
public:
    Graph(Session& session, const Graph_Request& request) : _session(session), _request(request) {}

    void walk() {
        std::vector<std::size_t> border = {node_of(_request.root)};
        for (unsigned depth = 0; depth < _request.depth && !border.empty(); ++depth) {
            const std::size_t known = _nodes.size();
            for (const std::size_t node : border) {
                const Node& from = _nodes[node];
                if (from.folded == 0 && (node == 0 || !is_one_of(from.path, _request.leaves))) {
                    go_on_from(node);
                }
            }
            border.resize(_nodes.size() - known);
            std::iota(border.begin(), border.end(), known);
        }
    }

    bool is_empty() const noexcept { return _links.empty(); }

    void print_dot() const {
        std::ostream& out = _session.out;
        out << before_dot;
        for (std::size_t i = 0; i < _nodes.size(); ++i) {
            out << "  n" << i << " [label=" << quoted(_nodes[i].label)
                << (i == 0                  ? ", style=bold"
                    : _nodes[i].folded != 0 ? ", style=dashed"
                                            : "")
                << "]\n";
        }
        for (std::size_t i = 0; i < _links.size(); ++i) {
            const auto& ends = _links[i].ends;
            const std::string name = short_name(_links[i].class_name);
            if (ends.size() == 2) {
                out << "  n" << ends[0].node << " -> n" << ends[1].node
                    << " [label=" << quoted(name + '\n' + ends[0].role + " \u2192 " + ends[1].role)
                    << "]\n";
                continue;
            }
            out << "  a" << i << " [label=" << quoted(name) << ", shape=plaintext, fontsize=8]\n"
                << "  n" << ends[0].node << " -> a" << i << " [label=" << quoted(ends[0].role)
                << ", arrowhead=none]\n";
            for (std::size_t end = 1; end < ends.size(); ++end) {
                out << "  a" << i << " -> n" << ends[end].node
                    << " [label=" << quoted(ends[end].role) << "]\n";
            }
        }
        out << "}\n";
    }

    void print_json() const {
        Json nodes = Json::array();
        for (const Node& node : _nodes) {
            nodes.push_back(
                node.folded != 0
                    ? Json{{"folded", node.folded}, {"class", node.path.class_name}}
                    : Json{{"class", node.path.class_name}, {"path", node.path.text()}});
        }
        Json edges = Json::array();
        for (const Link& link : _links) {
            Json ends = Json::object();
            for (const End& end : link.ends) {
                ends[end.role] = end.node;
            }
            edges.push_back({{"class", link.class_name}, {"ends", std::move(ends)}});
        }
        tvrcim::print_json(_session, {{"nodes", std::move(nodes)}, {"edges", std::move(edges)}});
    }

private:
    struct Node {
        Cim_Path path; // of a box for many, that of one of them
        std::string label;
        std::size_t folded = 0; // instances that the box stands for, if it stands for many
    };
    struct End {
        std::string role;
        std::size_t node;
    };
    struct Link {
        std::string class_name;
        std::vector<End> ends; // at least two
    };

    bool is_one_of(const Cim_Path& path, const std::vector<const tvrmof::Class*>& classes) const {
        const tvrmof::Class* const model = _session.manager.schema()->find(path.class_name);
        return std::any_of(classes.begin(), classes.end(), [&](const tvrmof::Class* each) {
            return model != nullptr && model->is_a(*each);
        });
    }

    // The ends of an association that are to be seen; none unless they are two.
    std::vector<const tvrhost::Named_Value*> ends_of(const Cim_Path& association) const {
        std::vector<const tvrhost::Named_Value*> ends;
        for (const tvrhost::Named_Value& key : association.keys) {
            if (key.value.type() == tvrhost::Cim_Type::reference && !key.value.is_null() &&
                !is_one_of(key.value.as_path(), _request.hidden)) {
                ends.push_back(&key);
            }
        }
        if (ends.size() < 2) {
            ends.clear();
        }
        return ends;
    }

    bool is_drawn(const Cim_Path& path) const { return _numbers.contains(identity(path)); }

    std::size_t node_of(const Cim_Path& path) {
        const auto [found, is_new] = _numbers.emplace(identity(path), _nodes.size());
        if (is_new) {
            _nodes.push_back(
                {path, short_name(path.class_name) + '\n' + wrapped(own_name(path)), 0});
        }
        return found->second;
    }

    void go_on_from(std::size_t node) {
        const Cim_Path path = _nodes[node].path;
        const tvrhost::Answer answer = _session.manager.reference_names(path);
        Session::check(answer, path.text());
        // The associations of a class stand together.
        for (auto first = answer.paths.begin(); first != answer.paths.end();) {
            const auto last = std::find_if(first, answer.paths.end(), [&](const Cim_Path& each) {
                return each.class_name != first->class_name;
            });
            add(path, {first, last});
            first = last;
        }
    }

    void add(const Cim_Path& from, std::span<const Cim_Path> associations) {
        std::vector<const Cim_Path*> new_ones;
        for (const Cim_Path& association : associations) {
            const auto ends = ends_of(association);
            if (std::any_of(ends.begin(), ends.end(), [&](const tvrhost::Named_Value* end) {
                    return !is_drawn(end->value.as_path());
                })) {
                new_ones.push_back(&association);
            } else if (!ends.empty()) {
                draw(association);
            }
        }
        if (_request.fold == 0 || new_ones.size() <= _request.fold) {
            for (const Cim_Path* association : new_ones) {
                draw(*association);
            }
        } else {
            draw_folded(from, *new_ones.front(), new_ones.size());
        }
    }

    void draw(const Cim_Path& association) {
        if (!_drawn.insert(identity(association)).second) {
            return;
        }
        Link link{association.class_name, {}};
        for (const tvrhost::Named_Value* end : ends_of(association)) {
            link.ends.push_back({end->name, node_of(end->value.as_path())});
        }
        _links.push_back(std::move(link));
    }

    // A box for each end of `association` but the one that `count` like it lead from.
    void draw_folded(const Cim_Path& from, const Cim_Path& association, std::size_t count) {
        Link link{association.class_name, {}};
        for (const tvrhost::Named_Value* end : ends_of(association)) {
            const Cim_Path& path = end->value.as_path();
            if (identity(path) == identity(from)) {
                link.ends.push_back({end->name, node_of(path)});
                continue;
            }
            link.ends.push_back({end->name, _nodes.size()});
            _nodes.push_back(
                {path, std::to_string(count) + ' ' + short_name(path.class_name), count});
        }
        _links.push_back(std::move(link));
    }

    Session& _session;
    const Graph_Request& _request;
    std::vector<Node> _nodes;
    std::map<std::string, std::size_t> _numbers;
    std::vector<Link> _links;
    std::set<std::string> _drawn;
};

} // namespace

void draw_graph(Session& session, const Graph_Request& request) {
    Graph graph(session, request);
    {
        const Progress progress("following associations");
        graph.walk();
    }
    if (graph.is_empty()) {
        session.check_exists(request.root);
    }
    if (session.format == Format::json) {
        graph.print_json();
    } else {
        graph.print_dot();
    }
}

} // namespace tvrcim
