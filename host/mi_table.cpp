#include "host/mi_table.h"

#include <dlfcn.h>

#include <algorithm>

namespace tvrhost {

namespace {

constexpr Kind kinds[] = {Kind::instance, Kind::method, Kind::association, Kind::indication};

template <class MI>
void* call_factory(Any_Function factory, const CMPIBroker* broker, const CMPIContext* context) {
    CMPIStatus status{};
    return reinterpret_cast<MI* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*)>(factory)(
        broker, context, &status);
}

template <class MI> CMPIStatus call_cleanup(void* mi, const CMPIContext* context, bool end) {
    MI* const typed = static_cast<MI*>(mi);
    return typed->ft->cleanup(typed, context, end ? 1 : 0);
}

} // namespace

const char* kind_name(Kind kind) noexcept {
    switch (kind) {
    case Kind::instance:
        return "Instance";
    case Kind::method:
        return "Method";
    case Kind::association:
        return "Association";
    case Kind::indication:
        return "Indication";
    }
    return "";
}

// ---- Module

Module::Module(const Options& options) : _lookup(options.factories) {
    if (_lookup || options.module.empty()) {
        return;
    }
    _handle = dlopen(options.module.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (_handle == nullptr) {
        throw Start_Error("module " + options.module + ": " + dlerror());
    }
}

Module::~Module() {
    if (_handle != nullptr) {
        dlclose(_handle);
    }
}

Any_Function Module::find(const std::string& name) const {
    if (_lookup) {
        return _lookup(name);
    }
    if (_handle == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<Any_Function>(dlsym(_handle, name.c_str()));
}

Any_Function Module::factory(const std::string& class_name, Kind kind) const {
    const std::string end = std::string("_Create_") + kind_name(kind) + "MI";
    if (const Any_Function found = find(class_name + end)) {
        return found;
    }
    return find(class_name + "_Provider" + end);
}

// ---- Mi_Table

Mi_Table::Mi_Table(const Module& module, const Broker_Side& side)
    : _module(module), _side(side), _books(side.books), _options(side.options) {}

Mi_Table::~Mi_Table() = default;

Mi_Table::Entry::~Entry() {
    if (_table == nullptr) {
        return;
    }
    const std::lock_guard lock(_table->_mutex);
    if (--_state->in_flight == 0) {
        _table->_changed.notify_all();
    }
}

std::size_t Mi_Table::index(Kind kind) noexcept {
    return static_cast<std::size_t>(std::find(std::begin(kinds), std::end(kinds), kind) - kinds);
}

Mi_Table::Class_State& Mi_Table::state_of(const std::string& class_name) {
    std::string name = class_name;
    if (_books.schema != nullptr) {
        if (const tvrmof::Class* model = _books.schema->find(class_name)) {
            name = model->name;
        }
    }
    std::unique_ptr<Class_State>& state = _classes[name];
    if (state == nullptr) {
        state = std::make_unique<Class_State>();
        state->name = name;
        for (const Kind kind : kinds) {
            state->factories[index(kind)] = _module.factory(name, kind);
        }
    }
    return *state;
}

bool Mi_Table::serves(const std::string& class_name, Kind kind) {
    const std::lock_guard lock(_mutex);
    return state_of(class_name).factories[index(kind)] != nullptr;
}

Named_Values Mi_Table::context_entries() const {
    Named_Values entries;
    entries.set(CMPIPrincipal, _options.principal);
    if (!_options.name_spaces.empty()) {
        entries.set(CMPIInitNameSpace, _options.name_spaces.front());
    }
    return entries;
}

void* Mi_Table::create(Class_State& state, Kind kind) {
    const Scope_Frame scope(_books, std::string("Create_") + kind_name(kind) + "MI " + state.name);
    Context_Object* const context = _books.make_context(context_entries());
    context->is_argument = true;
    const Any_Function factory = state.factories[index(kind)];
    const CMPIBroker* const broker = state.broker->cmpi();
    switch (kind) {
    case Kind::instance:
        return call_factory<CMPIInstanceMI>(factory, broker, context);
    case Kind::method:
        return call_factory<CMPIMethodMI>(factory, broker, context);
    case Kind::association:
        return call_factory<CMPIAssociationMI>(factory, broker, context);
    case Kind::indication:
        return call_factory<CMPIIndicationMI>(factory, broker, context);
    }
    return nullptr;
}

CMPIStatus Mi_Table::clean_up_mi(Class_State& state, Kind kind, void* mi, bool terminating) {
    const Scope_Frame scope(_books, "cleanup " + state.name);
    Context_Object* const context = _books.make_context(context_entries());
    context->is_argument = true;
    switch (kind) {
    case Kind::instance:
        return call_cleanup<CMPIInstanceMI>(mi, context, terminating);
    case Kind::method:
        return call_cleanup<CMPIMethodMI>(mi, context, terminating);
    case Kind::association:
        return call_cleanup<CMPIAssociationMI>(mi, context, terminating);
    case Kind::indication:
        return call_cleanup<CMPIIndicationMI>(mi, context, terminating);
    }
    return {};
}

Mi_Table::Entry Mi_Table::enter(const std::string& class_name, Kind kind) {
    const bool nested = Scope_Frame::top(_books) != nullptr;
    std::unique_lock lock(_mutex);
    Class_State& state = state_of(class_name);
    if (state.factories[index(kind)] == nullptr) {
        return {CMPI_RC_ERR_NOT_SUPPORTED,
                state.name + " has no " + kind_name(kind) + " factory in the module"};
    }
    for (;;) {
        void* const mi = state.mis[index(kind)];
        // A class about to be cleaned up still takes what the requests in it ask for.
        const bool open = state.phase != Phase::cleaning || (nested && state.in_flight > 0);
        if (mi != nullptr && open) {
            ++state.in_flight;
            return {*this, state, mi};
        }
        if (_closed) {
            return {CMPI_RC_ERR_FAILED, "the object manager has shut down"};
        }
        if (state.phase == Phase::idle) {
            break;
        }
        if (!nested) {
            _changed.wait(lock);
        } else if (state.phase == Phase::cleaning || state.loader == std::this_thread::get_id() ||
                   _changed.wait_for(lock, patience) == std::cv_status::timeout) {
            return {CMPI_RC_ERR_FAILED, state.name + " is being loaded or cleaned up"};
        }
    }
    state.phase = Phase::loading;
    state.loader = std::this_thread::get_id();
    if (state.broker == nullptr) {
        Broker_Side side = _side;
        side.owner = state.name;
        state.broker = std::make_unique<Broker>(std::move(side));
    }
    lock.unlock();
    void* const mi = create(state, kind);
    lock.lock();
    if (mi == nullptr && state.load_order.empty()) {
        end_broker(state);
    }
    state.phase = Phase::idle;
    _changed.notify_all();
    if (mi == nullptr) {
        return {CMPI_RC_ERR_FAILED,
                state.name + ": the " + kind_name(kind) + " factory made nothing"};
    }
    if (state.load_order.empty()) {
        _load_order.push_back(&state);
    }
    state.mis[index(kind)] = mi;
    state.load_order.push_back(kind);
    ++state.in_flight;
    return {*this, state, mi};
}

// With the lock held.
void Mi_Table::end_broker(Class_State& state) {
    if (state.broker != nullptr) {
        if (_books.has_contexts_of(state.broker->cmpi())) {
            _books.fault(Fault_Kind::ended_broker,
                         "a context that the broker of " + state.name +
                             " prepared is alive after the last cleanup of that class");
        }
        state.broker->end();
        _ended_brokers.push_back(std::move(state.broker));
    }
}

// Cleans up all MIs of a class; false if requests stay in it too long. Patience counts only for the
// end of the object manager.
bool Mi_Table::clean_up(Class_State& state, bool terminating, std::unique_lock<std::mutex>& lock,
                        int& rc) {
    _changed.wait(lock, [&] { return state.phase == Phase::idle; });
    state.phase = Phase::cleaning;
    const auto empty = [&] { return state.in_flight == 0; };
    bool gone = true;
    if (_closed) {
        gone = _changed.wait_for(lock, patience, empty);
    } else {
        _changed.wait(lock, empty);
    }
    std::vector<Kind> kept;
    while (gone && !state.load_order.empty()) {
        const Kind kind = state.load_order.back();
        state.load_order.pop_back();
        void* const mi = std::exchange(state.mis[index(kind)], nullptr);
        lock.unlock();
        const CMPIStatus status = clean_up_mi(state, kind, mi, terminating);
        lock.lock();
        if (status.rc != CMPI_RC_OK) {
            rc = status.rc;
        }
        const bool stays = !terminating && (status.rc == CMPI_RC_DO_NOT_UNLOAD ||
                                            status.rc == CMPI_RC_NEVER_UNLOAD);
        if (stays) {
            state.mis[index(kind)] = mi;
            kept.insert(kept.begin(), kind);
        } else if (status.rc != CMPI_RC_OK) {
            _books.fault(Fault_Kind::missing_cleanup, "cleanup of " + state.name + " (" +
                                                          kind_name(kind) + ") answered " +
                                                          rc_name(status.rc));
        }
    }
    if (gone) {
        state.load_order = std::move(kept);
    }
    if (state.load_order.empty()) {
        std::erase(_load_order, &state);
        end_broker(state);
    }
    state.phase = Phase::idle;
    _changed.notify_all();
    return gone;
}

int Mi_Table::unload(const std::string& class_name, bool terminating) {
    std::unique_lock lock(_mutex);
    int rc = CMPI_RC_OK;
    clean_up(state_of(class_name), terminating, lock, rc);
    return rc;
}

void Mi_Table::shutdown() {
    std::unique_lock lock(_mutex);
    _closed = true;
    _changed.notify_all();
    for (auto& [name, state] : _classes) {
        _changed.wait_for(lock, patience, [&each = *state] { return each.phase == Phase::idle; });
    }
    while (!_load_order.empty()) {
        Class_State& state = *_load_order.back();
        int rc = CMPI_RC_OK;
        if (!clean_up(state, true, lock, rc)) {
            _books.fault(Fault_Kind::missing_cleanup,
                         state.name + " is not cleaned up: requests are still in it");
            std::erase(_load_order, &state);
        }
    }
}

} // namespace tvrhost
