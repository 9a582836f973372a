#include "runtime/cimom.h"

#include "runtime/cmpi_thread_context.h"

namespace cimple {

namespace {

// Ends the enumeration that `state` stands for. Where no context is left, the object manager's part
// ended with the scope it was made in.
void end(Instance_Enumerator_State*& state) {
    if (state == nullptr) {
        return;
    }
    if (Thread_Context* context = Thread_Context::top()) {
        context->instance_enumerator_destroy(state);
    } else {
        state->abandon();
        delete state;
    }
    state = nullptr;
}

} // namespace

Instance_Enumerator::~Instance_Enumerator() {
    end(_state);
}

bool Instance_Enumerator::more() const {
    Thread_Context* context = Thread_Context::top();
    return _state != nullptr && context != nullptr && context->instance_enumerator_more(_state);
}

void Instance_Enumerator::next() {
    Thread_Context* context = Thread_Context::top();
    if (_state != nullptr && context != nullptr) {
        context->instance_enumerator_next(_state);
    }
}

Ref<Instance> Instance_Enumerator::get() const {
    Thread_Context* context = Thread_Context::top();
    return _state != nullptr && context != nullptr
               ? Ref<Instance>(context->instance_enumerator_get(_state))
               : Ref<Instance>();
}

int cimom::enum_instances(const char* name_space, const Instance* model,
                          Instance_Enumerator& enumerator) {
    Thread_Context* context = Thread_Context::top();
    if (context == nullptr) {
        return -1;
    }
    end(enumerator._state);
    enumerator._state = context->instance_enumerator_create(name_space, model);
    return enumerator._state == nullptr ? -1 : 0;
}

} // namespace cimple
