// Filters, subscriptions and delivery: that part of the object manager.
#include "host/object_manager_rep.h"

#include <utility>

namespace tvrhost {

namespace {

constexpr std::size_t indication_limit = 10000; // the oldest go first

// Calls a member of the indication table; with the older argument list if that is asked for, in
// which a result stands behind the context.
template <class... Arguments>
CMPIStatus call_with_filter(bool older,
                            CMPIStatus (*member)(CMPIIndicationMI*, const CMPIContext*,
                                                 Arguments...),
                            CMPIIndicationMI* mi, const CMPIContext* context,
                            const CMPIResult* result, Arguments... arguments) {
    if (!older) {
        return member(mi, context, arguments...);
    }
    using Older =
        CMPIStatus (*)(CMPIIndicationMI*, const CMPIContext*, const CMPIResult*, Arguments...);
    return reinterpret_cast<Older>(reinterpret_cast<void (*)()>(member))(mi, context, result,
                                                                         arguments...);
}

} // namespace

std::shared_ptr<Filter> Object_Manager::Rep::make_filter(const std::string& name_space,
                                                         const std::string& class_name,
                                                         const std::string& query,
                                                         const Call& how) const {
    auto filter = std::make_shared<Filter>();
    filter->served = declared_name(how.through.empty() ? class_name : how.through);
    filter->name_space = name_space;
    filter->class_name = class_name;
    filter->query = query.empty() ? "SELECT * FROM " + class_name : query;
    return filter;
}

// ---- calls of the MI

template <class Invoke>
Answer Object_Manager::Rep::with_filter(const Filter& filter, const Call& how,
                                        const char* operation, Invoke invoke) {
    if (!mis.serves(filter.served, Kind::indication)) {
        return unknown(filter.served, "indications");
    }
    return call<CMPIIndicationMI>(
        filter.served, Kind::indication, operation, how,
        [&](CMPIIndicationMI* mi, const CMPIContext* context, const CMPIResult* result, Answer&) {
            const CMPISelectExp* const expression =
                filter.expression != nullptr ? filter.expression
                                             : books.make(Select_Content{filter.query, "WQL"});
            return invoke(mi, context, result, expression,
                          books.make(Cim_Path(filter.name_space, filter.class_name)));
        });
}

Answer Object_Manager::Rep::authorize(const Filter& filter, const Call& how) {
    const std::string owner = how.principal.value_or(options.principal);
    return with_filter(
        filter, how, "authorizeFilter",
        [&](auto* mi, auto* context, auto* result, auto* expression, const CMPIObjectPath* path) {
            return call_with_filter(options.older_indication_arguments, mi->ft->authorizeFilter, mi,
                                    context, result, expression, filter.class_name.c_str(), path,
                                    owner.c_str());
        });
}

Answer Object_Manager::Rep::must_poll(const Filter& filter, const Call& how) {
    return with_filter(
        filter, how, "mustPoll",
        [&](auto* mi, auto* context, auto* result, auto* expression, const CMPIObjectPath* path) {
            using Older = CMPIStatus (*)(CMPIIndicationMI*, const CMPIContext*,
                                         const CMPISelectExp*, const char*, const CMPIObjectPath*);
            if (options.older_indication_arguments) {
                return reinterpret_cast<Older>(reinterpret_cast<void (*)()>(mi->ft->mustPoll))(
                    mi, context, expression, filter.class_name.c_str(), path);
            }
            return mi->ft->mustPoll(mi, context, result, expression, filter.class_name.c_str(),
                                    path);
        });
}

Answer Object_Manager::Rep::activate(const Filter& filter, bool is_first, const Call& how) {
    return with_filter(
        filter, how, "activateFilter",
        [&](auto* mi, auto* context, auto* result, auto* expression, const CMPIObjectPath* path) {
            return call_with_filter(options.older_indication_arguments, mi->ft->activateFilter, mi,
                                    context, result, expression, filter.class_name.c_str(), path,
                                    CMPIBoolean{is_first});
        });
}

Answer Object_Manager::Rep::deactivate(const Filter& filter, bool is_last, const Call& how) {
    return with_filter(
        filter, how, "deActivateFilter",
        [&](auto* mi, auto* context, auto* result, auto* expression, const CMPIObjectPath* path) {
            return call_with_filter(options.older_indication_arguments, mi->ft->deActivateFilter,
                                    mi, context, result, expression, filter.class_name.c_str(),
                                    path, CMPIBoolean{is_last});
        });
}

Answer Object_Manager::Rep::switch_indications(const std::string& served, bool on,
                                               const Call& how) {
    if (!mis.serves(served, Kind::indication)) {
        return unknown(served, "indications");
    }
    return call<CMPIIndicationMI>(
        served, Kind::indication, on ? "enableIndications" : "disableIndications", how,
        [on](CMPIIndicationMI* mi, const CMPIContext* context, const CMPIResult*, Answer&) {
            return on ? mi->ft->enableIndications(mi, context)
                      : mi->ft->disableIndications(mi, context);
        });
}

// ---- by a client, one by one

Answer Object_Manager::activate_filter(const std::string& name_space, const std::string& class_name,
                                       const std::string& query, const Call& how) {
    const std::shared_ptr<Filter> filter = _rep->make_filter(name_space, class_name, query, how);
    const Filters::Turn turn(_rep->filters, filter->served);
    const bool is_first = _rep->filters.count(filter->served) == 0;
    _rep->filters.prepare(*filter);
    _rep->filters.add(filter);
    Answer answer = _rep->activate(*filter, is_first, how);
    if (!answer.ok()) {
        _rep->filters.remove(*filter);
    }
    return answer;
}

Answer Object_Manager::deactivate_filter(const std::string& name_space,
                                         const std::string& class_name, const std::string& query,
                                         const Call& how) {
    const std::shared_ptr<Filter> named = _rep->make_filter(name_space, class_name, query, how);
    const Filters::Turn turn(_rep->filters, named->served);
    const std::shared_ptr<Filter> active = _rep->filters.find(*named);
    const bool is_last = active != nullptr && _rep->filters.count(named->served) == 1;
    Answer answer = _rep->deactivate(active != nullptr ? *active : *named, is_last, how);
    if (active != nullptr) {
        _rep->filters.remove(*active);
    }
    return answer;
}

Answer Object_Manager::authorize_filter(const std::string& name_space,
                                        const std::string& class_name, const std::string& query,
                                        const Call& how) {
    return _rep->authorize(*_rep->make_filter(name_space, class_name, query, how), how);
}

Answer Object_Manager::must_poll(const std::string& name_space, const std::string& class_name,
                                 const std::string& query, const Call& how) {
    return _rep->must_poll(*_rep->make_filter(name_space, class_name, query, how), how);
}

Answer Object_Manager::enable_indications(const std::string& class_name, const Call& how) {
    return _rep->switch_indications(class_name, true, how);
}

Answer Object_Manager::disable_indications(const std::string& class_name, const Call& how) {
    return _rep->switch_indications(class_name, false, how);
}

// ---- subscriptions

Subscription Object_Manager::subscribe(const std::string& name_space, const std::string& class_name,
                                       std::function<void(const Indication&)> callback,
                                       const std::string& query, const Call& how) {
    const std::shared_ptr<Filter> filter = _rep->make_filter(name_space, class_name, query, how);
    filter->callback = std::move(callback);
    Rep& rep = *_rep;
    const auto refused = [](Answer answer) {
        Subscription none;
        none._answer = std::move(answer);
        return none;
    };
    if (!filter->is_subscription()) {
        return refused(refusal(CMPI_RC_ERR_INVALID_PARAMETER, "a subscription wants a callback"));
    }
    const std::optional<std::string> selected = selected_class(filter->query);
    if (!selected || !rep.is_a(*selected, class_name)) {
        return refused(refusal(CMPI_RC_ERR_INVALID_QUERY,
                               "a query is SELECT * FROM " + class_name + " or a class below it"));
    }
    const Filters::Turn turn(rep.filters, filter->served);
    if (rep.is_shut_down) {
        return refused(refusal(CMPI_RC_ERR_FAILED, "the object manager has shut down"));
    }
    rep.filters.prepare(*filter);
    Answer answer = rep.subscribe(filter, how);
    if (!answer.ok()) {
        rep.filters.remove(*filter);
        return refused(std::move(answer));
    }
    Subscription made;
    made._answer = std::move(answer);
    made._manager = this;
    made._call = how;
    made._filter = filter;
    return made;
}

Answer Object_Manager::Rep::subscribe(const std::shared_ptr<Filter>& filter, const Call& how) {
    if (Answer answer = authorize(*filter, how); !answer.ok()) {
        return answer;
    }
    must_poll(*filter, how); // nobody would poll: what comes by itself is taken
    const bool is_first = filters.count(filter->served) == 0;
    filters.add(filter);
    Answer answer = activate(*filter, is_first, how);
    if (!answer.ok() || !is_first) {
        return answer;
    }
    answer = switch_indications(filter->served, true, how);
    if (!answer.ok()) {
        switch_indications(filter->served, false, how);
        deactivate(*filter, true, how);
    }
    return answer;
}

Answer Object_Manager::Rep::unsubscribe(Filter& filter, const Call& how) {
    const Filters::Turn turn(filters, filter.served);
    if (!filter.is_active) {
        return refusal(CMPI_RC_ERR_FAILED, "the subscription has ended already");
    }
    const bool is_last = filters.count(filter.served) == 1;
    Answer answer;
    if (is_last) {
        answer = switch_indications(filter.served, false, how);
    }
    Answer second = deactivate(filter, is_last, how);
    filters.remove(filter);
    return answer.ok() ? second : answer;
}

void Object_Manager::Rep::unsubscribe_all(const std::string& served) {
    for (const std::shared_ptr<Filter>& each : filters.subscriptions(served)) {
        unsubscribe(*each, {});
    }
}

Subscription::~Subscription() {
    end();
}

Subscription& Subscription::operator=(Subscription&& other) noexcept {
    if (this != &other) {
        end();
        _answer = std::move(other._answer);
        _manager = std::exchange(other._manager, nullptr);
        _call = std::move(other._call);
        _filter = std::move(other._filter);
    }
    return *this;
}

bool Subscription::is_active() const noexcept {
    return _filter != nullptr && _filter->is_active;
}

Answer Subscription::end() {
    // What has ended may have outlived the object manager.
    if (!is_active()) {
        return refusal(CMPI_RC_ERR_FAILED, "the subscription has ended already");
    }
    return _manager->_rep->unsubscribe(*_filter, _call);
}

// ---- delivery

bool Object_Manager::Rep::deliver(Indication indication) {
    return filters.deliver(indication, [&] {
        if (options.on_indication) {
            options.on_indication(indication);
        }
        const std::lock_guard lock(indications_mutex);
        indications.push_back(indication);
        if (indications.size() > indication_limit) {
            indications.pop_front();
        }
        indication_came.notify_all();
    });
}

std::optional<Indication> Object_Manager::next_indication(std::chrono::milliseconds wait) {
    std::unique_lock lock(_rep->indications_mutex);
    if (!_rep->indication_came.wait_for(lock, wait, [&] { return !_rep->indications.empty(); })) {
        return std::nullopt;
    }
    Indication indication = std::move(_rep->indications.front());
    _rep->indications.pop_front();
    return indication;
}

std::vector<Indication> Object_Manager::take_indications() {
    const std::lock_guard lock(_rep->indications_mutex);
    std::vector<Indication> all(std::make_move_iterator(_rep->indications.begin()),
                                std::make_move_iterator(_rep->indications.end()));
    _rep->indications.clear();
    return all;
}

} // namespace tvrhost
