#include "host/tvrcim/near_names.h"

#include <algorithm>
#include <cctype>

namespace tvrcim {

namespace {

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return result;
}

// Edits from one to the other: a character added, dropped or changed, or two neighbours swapped.
std::size_t distance(const std::string& a, const std::string& b) {
    using Row = std::vector<std::size_t>;
    std::vector<Row> edits(a.size() + 1, Row(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                edits[i][j] = i + j;
                continue;
            }
            const std::size_t changed = edits[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            edits[i][j] = std::min({edits[i - 1][j] + 1, edits[i][j - 1] + 1, changed});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
            }
        }
    }
    return edits[a.size()][b.size()];
}

} // namespace

std::vector<std::string> near_names(std::string_view name, const std::vector<std::string>& names) {
    constexpr std::size_t most = 3;
    const std::string wanted = lower(name);
    const std::size_t limit = std::max<std::size_t>(1, wanted.size() / 4);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& each : names) {
        const std::string candidate = lower(each);
        const std::size_t edits = distance(wanted, candidate);
        const std::size_t at = candidate.find(wanted);
        if (edits <= limit) {
            found.emplace_back(edits, each);
        } else if (wanted.size() > 2 && at != std::string::npos) {
            found.emplace_back(limit + candidate.size() - wanted.size(), each);
        }
    }
    std::sort(found.begin(), found.end());
    found.resize(std::min(found.size(), most));
    std::vector<std::string> result;
    result.reserve(found.size());
    for (auto& [edits, each] : found) {
        result.push_back(std::move(each));
    }
    return result;
}

std::string suggestion(std::string_view name, const std::vector<std::string>& names) {
    const std::vector<std::string> near = near_names(name, names);
    if (near.empty()) {
        return {};
    }
    std::string text = "; did you mean " + near.front();
    for (std::size_t i = 1; i < near.size(); ++i) {
        text += (i + 1 == near.size() ? " or " : ", ") + near[i];
    }
    return text + "?";
}

bool matches(std::string_view pattern, std::string_view name) {
    const std::string wanted = lower(pattern);
    const std::string text = lower(name);
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string::npos; // after the last `*` seen
    std::size_t resume = 0;
    while (t < text.size()) {
        if (p < wanted.size() && wanted[p] == '*') {
            star = ++p;
            resume = t;
        } else if (p < wanted.size() && (wanted[p] == '?' || wanted[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != std::string::npos) {
            p = star;
            t = ++resume;
        } else {
            return false;
        }
    }
    return wanted.find_first_not_of('*', p) == std::string::npos;
}

} // namespace tvrcim
