#include "host/filters.h"

#include <algorithm>
#include <utility>

namespace tvrhost {

std::optional<std::string> selected_class(std::string_view query) {
    std::vector<std::string> words;
    for (std::size_t at = 0;
         (at = query.find_first_not_of(" \t\n", at)) != std::string_view::npos;) {
        const std::size_t end = std::min(query.find_first_of(" \t\n", at), query.size());
        words.emplace_back(query.substr(at, end - at));
        at = end;
    }
    if (words.size() == 4 && same_name(words[0], "select") && words[1] == "*" &&
        same_name(words[2], "from")) {
        return words[3];
    }
    return std::nullopt;
}

Filters::Turn::Turn(Filters& filters, std::string served)
    : _filters(filters), _served(std::move(served)) {
    std::unique_lock lock(_filters._mutex);
    _filters._changed.wait(lock, [this] { return _filters._turns.insert(_served).second; });
}

Filters::Turn::~Turn() {
    const std::lock_guard lock(_filters._mutex);
    _filters._turns.erase(_served);
    _filters._changed.notify_all();
}

Filters::~Filters() {
    remove_all({});
}

void Filters::prepare(Filter& filter) {
    filter.expression = _books.make(Select_Content{filter.query, "WQL"}, true);
    filter.expression->is_argument = true; // no module may release it
}

void Filters::add(const std::shared_ptr<Filter>& filter) {
    filter->is_active = true;
    const std::lock_guard lock(_mutex);
    _active.push_back(filter);
}

void Filters::remove(Filter& filter) {
    Select_Object* expression = nullptr;
    {
        std::unique_lock lock(_mutex);
        std::erase_if(_active, [&](const auto& each) { return each.get() == &filter; });
        filter.is_active = false;
        _changed.wait(lock, [&] { return filter.calls == 0; });
        expression = std::exchange(filter.expression, nullptr);
    }
    if (expression != nullptr) {
        _books.end_clone(*expression);
    }
}

void Filters::remove_all(const std::string& served) {
    std::vector<std::shared_ptr<Filter>> all;
    {
        const std::lock_guard lock(_mutex);
        std::copy_if(_active.begin(), _active.end(), std::back_inserter(all),
                     [&](const auto& each) { return served.empty() || each->served == served; });
    }
    for (const std::shared_ptr<Filter>& each : all) {
        remove(*each);
    }
}

std::shared_ptr<Filter> Filters::find(const Filter& like) const {
    const std::lock_guard lock(_mutex);
    const auto found = std::find_if(_active.begin(), _active.end(), [&](const auto& each) {
        return !each->is_subscription() && each->served == like.served &&
               same_name(each->name_space, like.name_space) &&
               same_name(each->class_name, like.class_name) && each->query == like.query;
    });
    return found == _active.end() ? nullptr : *found;
}

std::size_t Filters::count(const std::string& served) const {
    const std::lock_guard lock(_mutex);
    return static_cast<std::size_t>(std::count_if(
        _active.begin(), _active.end(), [&](const auto& each) { return each->served == served; }));
}

std::vector<std::shared_ptr<Filter>> Filters::subscriptions(const std::string& served) const {
    const std::lock_guard lock(_mutex);
    std::vector<std::shared_ptr<Filter>> all;
    std::copy_if(_active.rbegin(), _active.rend(), std::back_inserter(all), [&](const auto& each) {
        return each->is_subscription() && (served.empty() || each->served == served);
    });
    return all;
}

// A condition in a query lets everything through.
bool Filters::passes(const Filter& filter, const Indication& indication) const {
    const std::string wanted = selected_class(filter.query).value_or(filter.class_name);
    const std::string& found = indication.instance.class_name();
    return same_name(filter.name_space, indication.name_space) &&
           (same_name(found, wanted) ||
            (_books.schema != nullptr && _books.schema->is_a(found, wanted)));
}

bool Filters::deliver(const Indication& indication, const std::function<void()>& accept) {
    std::vector<std::shared_ptr<Filter>> taking;
    {
        const std::lock_guard lock(_mutex);
        std::copy_if(_active.begin(), _active.end(), std::back_inserter(taking),
                     [&](const auto& each) { return passes(*each, indication); });
        for (const std::shared_ptr<Filter>& each : taking) {
            ++each->calls;
        }
    }
    if (taking.empty()) {
        return false;
    }
    accept();
    for (const std::shared_ptr<Filter>& each : taking) {
        if (each->is_subscription()) {
            each->callback(indication);
        }
        const std::lock_guard lock(_mutex);
        --each->calls;
        _changed.notify_all();
    }
    return true;
}

} // namespace tvrhost
