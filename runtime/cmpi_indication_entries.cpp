// The entries of the indication MI, and the way of an indication to the object manager.
#include "runtime/cmpi_conversion.h"
#include "runtime/cmpi_entry.h"

#include <cmpimacs.h>

namespace cimple {

namespace {

constexpr Status_Answer enable_answers[] = {{ENABLE_INDICATIONS_FAILED, CMPI_RC_ERR_FAILED}};
constexpr Status_Answer disable_answers[] = {{DISABLE_INDICATIONS_FAILED, CMPI_RC_ERR_FAILED}};

// Makes the CMPI form of the indication in that namespace and hands it over. An indication has no
// keys to find it by, so that its path is built with what it has.
void deliver(const CMPI_Adapter& adapter, const CMPI_Thread_Context& context,
             const Instance* indication, const char* name_space) {
    CMPI_Made made(adapter.broker());
    CMPIInstance* cmpi_instance = nullptr;
    if (make_CMPI_instance(adapter.broker(), indication, name_space, nullptr, nullptr,
                           cmpi_instance, &made) == CMPI_RC_OK) {
        CBDeliverIndication(context.broker(), context.context(), name_space, cmpi_instance);
    }
}

// Called by a provider on a thread of its own. Without an active filter the indication is dropped,
// and so it is on a thread whose context the object manager could not make: there is no way to
// deliver from there.
bool _indication_proc(Instance* instance, void* client_data) {
    const Ref<> owned(instance);
    auto& adapter = *static_cast<CMPI_Adapter*>(client_data);
    if (instance == nullptr) {
        return false;
    }
    adapter.filters().for_each([&](const char* name_space) {
        if (const CMPI_Thread_Context* context = CMPI_Thread_Context::top()) {
            deliver(adapter, *context, instance, name_space);
        } else {
            TVR_RUNTIME_LOG(LL_FATAL, "%s", "thread_context != 0");
        }
    });
    return true;
}

CMPIStatus indicationCleanup(CMPIIndicationMI* mi, const CMPIContext* context,
                             CMPIBoolean terminating) {
    return clean_up("indicationCleanup", mi, context, terminating);
}

CMPIStatus enableIndications(CMPIIndicationMI* mi, const CMPIContext* context) {
    return in_frame("enableIndications", mi, context, [](CMPI_Adapter& adapter) {
        if (adapter.indications_enabled) {
            return CMPI_RC_OK;
        }
        adapter.indications_enabled = true;
        return answer_to(enable_answers,
                         adapter.call(OPERATION_ENABLE_INDICATIONS,
                                      reinterpret_cast<const void*>(&_indication_proc), &adapter));
    });
}

CMPIStatus disableIndications(CMPIIndicationMI* mi, const CMPIContext* context) {
    return in_frame("disableIndications", mi, context, [](CMPI_Adapter& adapter) {
        if (!adapter.indications_enabled) {
            return CMPI_RC_OK;
        }
        const int status = adapter.call(OPERATION_DISABLE_INDICATIONS);
        adapter.indications_enabled = false;
        return answer_to(disable_answers, status);
    });
}

// The argument lists of these differ between the editions of the headers: they take whatever theirs
// asks for.
constexpr auto authorizeFilter = [](CMPIIndicationMI*, auto...) {
    return reply("authorizeFilter", CMPI_RC_OK);
};
constexpr auto mustPoll = [](CMPIIndicationMI*, auto...) { return reply("mustPoll", CMPI_RC_OK); };

// What of an argument list tells the namespace: its one path.
const CMPIObjectPath* as_path(const CMPIObjectPath* path) {
    return path;
}
template <class Other> const CMPIObjectPath* as_path(Other) {
    return nullptr;
}
template <class... Arguments> const char* name_space_among(Arguments... arguments) {
    const CMPIObjectPath* path = nullptr;
    ((path = path == nullptr ? as_path(arguments) : path), ...);
    return name_space_of(path);
}

// Neither waits for the adapter's mutex: whoever ends a subscription while a provider stops is not
// to wait for that.
template <class Change>
CMPIStatus change_filters(const char* function, CMPIIndicationMI* mi, Change change) {
    CMPI_Adapter* adapter = CMPI_Adapter::of(mi);
    if (adapter == nullptr) {
        return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
    }
    const Cancel_Later until_changed;
    return answer(function, [&] {
        change(adapter->filters());
        return Outcome(CMPI_RC_OK);
    });
}
constexpr auto activateFilter = [](CMPIIndicationMI* mi, auto... arguments) {
    return change_filters("activateFilter", mi, [&](CMPI_Filters& filters) {
        filters.add(name_space_among(arguments...));
    });
};
constexpr auto deactivateFilter = [](CMPIIndicationMI* mi, auto... arguments) {
    return change_filters("deactivateFilter", mi, [&](CMPI_Filters& filters) {
        filters.remove(name_space_among(arguments...));
    });
};

} // namespace

// Later editions have members behind these, which a table of this version doesn't reach.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

CMPIIndicationMIFT indication_table(const char* name) noexcept {
    return {table_version,     table_version,     name,           indicationCleanup,
            authorizeFilter,   mustPoll,          activateFilter, deactivateFilter,
            enableIndications, disableIndications};
}

} // namespace cimple
