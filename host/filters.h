// The filters that are active on indications: those of subscriptions, and those that a client
// activates by itself. Any member may be called from any thread.
#ifndef TVR_HOST_FILTERS_H
#define TVR_HOST_FILTERS_H

#include "host/objects.h"

#include <condition_variable>
#include <functional>
#include <set>

namespace tvrhost {

struct Filter {
    std::string served; // the class whose indication MI has it, as declared
    std::string name_space;
    std::string class_name;
    std::string query;
    std::function<void(const Indication&)> callback{}; // of a subscription; else empty

    Select_Object* expression = nullptr; // from `prepare` to `remove`
    std::atomic<bool> is_active{false};
    std::size_t calls = 0; // of the callback, that are going on

    bool is_subscription() const noexcept { return static_cast<bool>(callback); }
};

// The class that `SELECT * FROM C` asks for; nothing for any other query.
std::optional<std::string> selected_class(std::string_view query);

class Filters {
public:
    explicit Filters(Books& books) : _books(books) {}
    ~Filters();
    Filters(const Filters&) = delete;
    Filters& operator=(const Filters&) = delete;

    // The time in which one thread changes the filters of a class; others wait.
    class Turn {
    public:
        Turn(Filters& filters, std::string served);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        Filters& _filters;
        std::string _served;
    };

    // Makes the filter's expression, and makes the filter active.
    void prepare(Filter& filter);
    void add(const std::shared_ptr<Filter>& filter);
    // The opposite of both. Returns when no callback of the filter goes on.
    void remove(Filter& filter);
    void remove_all(const std::string& served);

    // The active one of a client, not of a subscription, with that content; null if there is none.
    std::shared_ptr<Filter> find(const Filter& like) const;
    std::size_t count(const std::string& served) const;
    // Subscriptions to a class, or to all where `served` is empty; the last one first.
    std::vector<std::shared_ptr<Filter>> subscriptions(const std::string& served) const;

    // Calls the callbacks of the filters that let it through, with no lock held, and `accept`
    // before. False if there is no such filter.
    bool deliver(const Indication& indication, const std::function<void()>& accept);

private:
    bool passes(const Filter& filter, const Indication& indication) const;

    Books& _books;
    mutable std::mutex _mutex; // guards all below, and `calls` of the filters
    std::condition_variable _changed;
    std::vector<std::shared_ptr<Filter>> _active; // in order of activation
    std::set<std::string> _turns;
};

} // namespace tvrhost

#endif
