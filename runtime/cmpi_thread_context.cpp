#include "runtime/cmpi_thread_context.h"

#include "runtime/cmpi_conversion.h"
#include "runtime/log.h"

#include <cmpimacs.h>

#include <memory>

namespace cimple {

// Instance_Enumerator_State

Instance_Enumerator_State::Instance_Enumerator_State(const CMPIBroker* broker,
                                                     CMPIEnumeration* enumeration,
                                                     const Meta_Class* meta_class)
    : _broker(broker), _enumeration(enumeration), _meta_class(meta_class) {
    next();
}

Instance_Enumerator_State::~Instance_Enumerator_State() {
    if (_enumeration != nullptr) {
        CMRelease(_enumeration);
    }
}

void Instance_Enumerator_State::next() {
    _current.reset(_enumeration == nullptr ? nullptr : read());
    if (!_current && _enumeration != nullptr) {
        CMRelease(_enumeration);
        _enumeration = nullptr;
    }
}

// The next instance, or null at the end of the data or at a failure.
Instance* Instance_Enumerator_State::read() {
    if (!CMHasNext(_enumeration, nullptr)) {
        return nullptr;
    }
    CMPIStatus status{CMPI_RC_OK, nullptr};
    const CMPIData data = CMGetNext(_enumeration, &status);
    if (status.rc != CMPI_RC_OK || data.type != CMPI_instance || !has_value(data) ||
        data.value.inst == nullptr) {
        return nullptr;
    }
    const CMPIObjectPath* path = CMGetObjectPath(data.value.inst, nullptr);
    Instance* instance = nullptr;
    make_cimple_instance(_broker, _meta_class, path, data.value.inst, instance);
    return instance;
}

// CMPI_Thread_Context

CMPI_Thread_Context::~CMPI_Thread_Context() {
    if (_prepared != nullptr) {
        CMRelease(_prepared);
    }
}

CMPI_Thread_Context* CMPI_Thread_Context::top() noexcept {
    return dynamic_cast<CMPI_Thread_Context*>(Thread_Context::top());
}

Thread_Context* CMPI_Thread_Context::thread_create_hook() {
    auto context = std::make_unique<CMPI_Thread_Context>(_broker, nullptr);
    context->_prepared = CBPrepareAttachThread(_broker, _context);
    context->_context = context->_prepared;
    return context->_prepared == nullptr ? nullptr : context.release();
}

void CMPI_Thread_Context::thread_start_hook() {
    _attached = CBAttachThread(_broker, _context).rc == CMPI_RC_OK;
    if (!_attached) {
        TVR_RUNTIME_LOG(LL_WARN, "CBAttachThread() failed");
    }
}

void CMPI_Thread_Context::thread_exit_hook() {
    if (_attached) {
        CBDetachThread(_broker, _context);
        _attached = false;
        _prepared = nullptr;
    }
}

Instance_Enumerator_State* CMPI_Thread_Context::instance_enumerator_create(const char* name_space,
                                                                           const Instance* model) {
    const CMPI_Thread_Context* current = top();
    if (name_space == nullptr || model == nullptr || current == nullptr) {
        return nullptr;
    }
    CMPI_Made made(current->broker());
    CMPIObjectPath* path = nullptr;
    if (make_CMPI_object_path(current->broker(), model, name_space, path, &made) != CMPI_RC_OK) {
        return nullptr;
    }
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIEnumeration* enumeration =
        CBEnumInstances(current->broker(), current->context(), path, nullptr, &status);
    if (status.rc != CMPI_RC_OK || enumeration == nullptr) {
        return nullptr;
    }
    return new Instance_Enumerator_State(current->broker(), enumeration, class_of(model));
}

void CMPI_Thread_Context::instance_enumerator_destroy(Instance_Enumerator_State* state) {
    delete state;
}

bool CMPI_Thread_Context::instance_enumerator_more(Instance_Enumerator_State* state) {
    return static_cast<bool>(state->current());
}

void CMPI_Thread_Context::instance_enumerator_next(Instance_Enumerator_State* state) {
    state->next();
}

Instance* CMPI_Thread_Context::instance_enumerator_get(Instance_Enumerator_State* state) {
    return Ref<>(state->current()).release();
}

bool CMPI_Thread_Context::get_username(String& user_name) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    const CMPIData data = CMGetContextEntry(_context, "CMPIPrincipal", &status);
    if (status.rc != CMPI_RC_OK) {
        TVR_RUNTIME_LOG(LL_WARN, "username not OK cmpirc=%d", static_cast<int>(status.rc));
        return false;
    }
    if (data.type != CMPI_string || !has_value(data) || data.value.string == nullptr) {
        return false;
    }
    const char* name = CMGetCharsPtr(data.value.string, nullptr);
    if (name == nullptr) {
        return false;
    }
    user_name = name;
    return true;
}

} // namespace cimple
