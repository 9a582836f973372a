// What the object manager is made of, for the sources that implement it.
#ifndef TVR_HOST_OBJECT_MANAGER_REP_H
#define TVR_HOST_OBJECT_MANAGER_REP_H

#include "host/broker.h"
#include "host/filters.h"
#include "host/mi_table.h"

namespace tvrhost {

inline Answer refusal(int rc, std::string message) {
    Answer answer;
    answer.rc = rc;
    answer.message = std::move(message);
    return answer;
}

struct Object_Manager::Rep {
    Rep(Object_Manager& manager, Options given);

    // Makes one call of an MI. `invoke` gets the MI, the context and the result of the call.
    template <class MI, class Invoke>
    Answer call(const std::string& class_name, Kind kind, const char* operation, const Call& how,
                Invoke invoke);

    // Makes a call that answers with instances or paths for each class that serves part of it.
    template <class Ask>
    Answer each_class(const std::string& name_space, const std::string& class_name, const Call& how,
                      bool names, const Properties& properties, Ask ask);

    // Makes a call for each served association class that can answer it, or the one that the call
    // names.
    template <class Ask>
    Answer each_association(const Cim_Path& path, const Association_Filter& filter, const Call& how,
                            Ask ask);
    bool joins(const tvrmof::Class& association, const Cim_Path& path,
               const Association_Filter& filter) const;
    bool are_related(const std::string& a, const std::string& b) const;

    bool is_a(const std::string& descendant, const std::string& ancestor) const {
        return same_name(descendant, ancestor) ||
               (schema != nullptr && schema->is_a(descendant, ancestor));
    }
    // The name of a class as the schema has it.
    std::string declared_name(const std::string& class_name) const {
        const tvrmof::Class* const model = schema == nullptr ? nullptr : schema->find(class_name);
        return model == nullptr ? class_name : model->name;
    }
    bool registered_in(const std::string& name_space) const;
    Answer unknown(const std::string& class_name, const char* kind) const;

    // The given instance at that path, or null; with the lock held.
    Cim_Instance* given(const Cim_Path& path);
    Cim_Instance filtered(const Cim_Instance& instance, const Properties& properties) const;

    void check_method(const Cim_Path& path, const std::string& method, const Answer& answer);

    // Not active yet.
    std::shared_ptr<Filter> make_filter(const std::string& name_space,
                                        const std::string& class_name, const std::string& query,
                                        const Call& how) const;
    // False if no filter is active that takes it.
    bool deliver(Indication indication);
    // Calls a member of the indication table that comes with a filter.
    template <class Invoke>
    Answer with_filter(const Filter& filter, const Call& how, const char* operation, Invoke invoke);
    Answer authorize(const Filter& filter, const Call& how);
    Answer must_poll(const Filter& filter, const Call& how);
    Answer activate(const Filter& filter, bool is_first, const Call& how);
    Answer deactivate(const Filter& filter, bool is_last, const Call& how);
    Answer switch_indications(const std::string& served, bool on, const Call& how);
    Answer subscribe(const std::shared_ptr<Filter>& filter, const Call& how);
    Answer unsubscribe(Filter& filter, const Call& how);
    void unsubscribe_all(const std::string& served); // empty for all classes

    Options options;
    std::shared_ptr<const tvrmof::Schema> schema;
    Module module;
    Books books;
    Broker_Side side;
    Broker broker; // of no class
    Mi_Table mis;

    std::mutex instances_mutex;
    std::vector<Cim_Instance> instances;

    std::mutex indications_mutex;
    std::condition_variable indication_came;
    std::deque<Indication> indications;
    Filters filters;

    std::atomic<bool> is_shut_down{false};
};

template <class MI, class Invoke>
Answer Object_Manager::Rep::call(const std::string& class_name, Kind kind, const char* operation,
                                 const Call& how, Invoke invoke) {
    Mi_Table::Entry entry = mis.enter(class_name, kind);
    if (entry.mi == nullptr) {
        return refusal(entry.rc, std::move(entry.message));
    }
    Answer answer;
    const Scope_Frame scope(books, std::string(operation) + " " + class_name);
    Named_Values entries;
    entries.set(CMPIPrincipal, how.principal.value_or(options.principal));
    entries.set(CMPIInvocationFlags, how.flags);
    Context_Object* const context = books.make_context(std::move(entries));
    Result_Object* const result = books.make(Result_Content{&answer});
    context->is_argument = result->is_argument = true;
    const CMPIStatus status = invoke(static_cast<MI*>(entry.mi), context, result, answer);
    answer.rc = status.rc;
    if (const auto* text = argument<String_Object>(books, status.msg, "a status's message")) {
        answer.message = *text->content;
    }
    return answer;
}

} // namespace tvrhost

#endif
