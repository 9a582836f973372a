#include "host/tvrcim/near_names.h"

#include <algorithm>
#include <cctype>

namespace tvrcim {

namespace {

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

// Edits (insert, drop, change a character) from one to the other.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row[b.size()];
}

} // namespace

std::vector<std::string> near_names(std::string_view name, const std::vector<std::string>& names) {
    constexpr std::size_t most = 3;
    const std::string wanted = lower(name);
    const std::size_t limit = std::max<std::size_t>(2, wanted.size() / 5);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& each : names) {
        const std::string candidate = lower(each);
        const std::size_t edits = distance(wanted, candidate);
        const std::size_t at = candidate.find(wanted);
        if (edits <= limit)
            found.emplace_back(edits, each);
        else if (wanted.size() > 2 && at != std::string::npos)
            found.emplace_back(limit + candidate.size() - wanted.size(), each);
    }
    std::sort(found.begin(), found.end());
    found.resize(std::min(found.size(), most));
    std::vector<std::string> result;
    for (auto& [edits, each] : found)
        result.push_back(std::move(each));
    return result;
}

std::string suggestion(std::string_view name, const std::vector<std::string>& names) {
    const std::vector<std::string> near = near_names(name, names);
    if (near.empty())
        return {};
    std::string text = "; did you mean " + near.front();
    for (std::size_t i = 1; i < near.size(); ++i)
        text += (i + 1 == near.size() ? " or " : ", ") + near[i];
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
