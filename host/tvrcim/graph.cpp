#include "host/tvrcim/graph.h"

#include "host/tvrcim/progress.h"

#include <algorithm>
#include <set>

namespace tvrcim {

using tvrhost::Cim_Instance;
using tvrhost::Cim_Path;

namespace {

// Class names without the prefix that all of them have.
std::string short_name(const std::string& class_name) {
    for (const char* prefix : {"TVRHBA_", "CIM_"}) {
        if (class_name.starts_with(prefix)) {
            return class_name.substr(std::char_traits<char>::length(prefix));
        }
    }
    return class_name;
}

// What tells an instance from others of its class: the values of its own keys.
std::string own_name(const Cim_Path& path) {
    std::string text;
    for (const tvrhost::Named_Value& key : path.keys) {
        const bool is_of_owner = key.name == "SystemCreationClassName" ||
                                 key.name == "SystemName" || key.name == "CreationClassName";
        if (!is_of_owner) {
            text += (text.empty() ? "" : " ") + key.value.plain();
        }
    }
    return text;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        result += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return result + '"';
}

class Graph {
public:
    Graph(Session& session, const Graph_Request& request) : _session(session), _request(request) {}

    void walk() {
        std::vector<Cim_Path> border = {_request.root};
        number_of(_request.root);
        for (unsigned depth = 0; depth < _request.depth && !border.empty(); ++depth) {
            std::vector<Cim_Path> next;
            for (const Cim_Path& path : border) {
                if (depth == 0 || !is_one_of(path, _request.leaves)) {
                    go_on_from(path, next);
                }
            }
            border = std::move(next);
        }
    }

    void print() const {
        std::ostream& out = _session.out;
        out << "digraph associations {\n"
               "  graph [rankdir=LR, nodesep=0.3, ranksep=1.6]\n"
               "  node [shape=box, fontname=\"Helvetica\", fontsize=10]\n"
               "  edge [fontname=\"Helvetica\", fontsize=8]\n";
        for (std::size_t i = 0; i < _nodes.size(); ++i) {
            out << "  n" << i << " [label=" << node_label(_nodes[i])
                << (i == 0 ? ", style=bold" : "") << "]\n";
        }
        for (const Edge& edge : _edges) {
            out << "  n" << edge.from << " -> n" << edge.to << " [label=" << quoted(edge.name)
                << ", taillabel=" << quoted(edge.from_role)
                << ", headlabel=" << quoted(edge.to_role) << "]\n";
        }
        out << "}\n";
    }

private:
    struct Edge {
        std::size_t from;
        std::size_t to;
        std::string name;
        std::string from_role;
        std::string to_role;
    };

    static std::string node_label(const Cim_Path& path) {
        std::string label = quoted(short_name(path.class_name) + "\n" + own_name(path));
        const std::size_t line_end = label.find('\n');
        return label.replace(line_end, 1, "\\n");
    }

    // Ends of associations may lack the namespace that the instance itself has.
    static std::string identity(Cim_Path path) {
        path.name_space.clear();
        return path.text();
    }

    bool is_one_of(const Cim_Path& path, const std::vector<const tvrmof::Class*>& classes) const {
        const tvrmof::Class* model = _session.manager.schema()->find(path.class_name);
        return std::any_of(classes.begin(), classes.end(), [&](const tvrmof::Class* each) {
            return model != nullptr && model->is_a(*each);
        });
    }

    std::size_t number_of(const Cim_Path& path) {
        const auto [found, is_new] = _numbers.emplace(identity(path), _nodes.size());
        if (is_new) {
            _nodes.push_back(path);
        }
        return found->second;
    }

    void go_on_from(const Cim_Path& path, std::vector<Cim_Path>& next) {
        const tvrhost::Answer answer = _session.manager.reference_names(path);
        Session::check(answer, path.text());
        for (const Cim_Path& association : answer.paths) {
            if (_drawn.insert(identity(association)).second) {
                add(association, next);
            }
        }
    }

    void add(const Cim_Path& association, std::vector<Cim_Path>& next) {
        std::vector<std::pair<std::string, std::size_t>> ends;
        for (const tvrhost::Named_Value& key : association.keys) {
            if (key.value.type() != tvrhost::Cim_Type::reference || key.value.is_null() ||
                is_one_of(key.value.as_path(), _request.hidden)) {
                continue;
            }
            const std::size_t known = _nodes.size();
            ends.emplace_back(key.name, number_of(key.value.as_path()));
            if (_nodes.size() > known) {
                next.push_back(key.value.as_path());
            }
        }
        for (std::size_t i = 1; i < ends.size(); ++i) {
            _edges.push_back({ends[0].second, ends[i].second, short_name(association.class_name),
                              ends[0].first, ends[i].first});
        }
    }

    Session& _session;
    const Graph_Request& _request;
    std::vector<Cim_Path> _nodes;
    std::map<std::string, std::size_t> _numbers;
    std::vector<Edge> _edges;
    std::set<std::string> _drawn;
};

} // namespace

void draw_graph(Session& session, const Graph_Request& request) {
    Graph graph(session, request);
    {
        const Progress progress("following associations");
        graph.walk();
    }
    graph.print();
}

} // namespace tvrcim
