// The thread context of calls that come through CMPI: broker and context of the object manager.
#ifndef TVR_RUNTIME_CMPI_THREAD_CONTEXT_H
#define TVR_RUNTIME_CMPI_THREAD_CONTEXT_H

#include "runtime/instance.h"
#include "runtime/thread.h"

#include <cmpidt.h>
#include <cmpift.h>

namespace cimple {

// An enumeration at the object manager. Ends, with its CMPI object, in the scope that made it.
class Instance_Enumerator_State {
public:
    // Takes over `enumeration` and reads the first instance.
    Instance_Enumerator_State(const CMPIBroker* broker, CMPIEnumeration* enumeration,
                              const Meta_Class* meta_class);
    ~Instance_Enumerator_State();
    Instance_Enumerator_State(const Instance_Enumerator_State&) = delete;
    Instance_Enumerator_State& operator=(const Instance_Enumerator_State&) = delete;

    const Ref<>& current() const noexcept { return _current; }
    void next();
    // Leaves the CMPI object to the scope that it was made in.
    void abandon() noexcept { _enumeration = nullptr; }

private:
    Instance* read();

    const CMPIBroker* _broker;
    CMPIEnumeration* _enumeration; // null once the walk has ended
    const Meta_Class* _meta_class; // of the results
    Ref<> _current;
};

// Broker and context for the calls of one thread. It refers to no adapter: a thread may outlive the
// adapter under which it was started, and what it calls up goes to the object manager.
//
// The context of an entry is borrowed for the duration of the call. That of a thread is made by
// `thread_create_hook`, ends with `thread_exit_hook`, and is released by the destructor if the
// thread never ran or could not be attached.
class CMPI_Thread_Context final : public Thread_Context {
public:
    CMPI_Thread_Context(const CMPIBroker* broker, const CMPIContext* context) noexcept
        : _broker(broker), _context(context) {}
    ~CMPI_Thread_Context() override;
    CMPI_Thread_Context(const CMPI_Thread_Context&) = delete;
    CMPI_Thread_Context& operator=(const CMPI_Thread_Context&) = delete;

    const CMPIBroker* broker() const noexcept { return _broker; }
    const CMPIContext* context() const noexcept { return _context; }

    // The context on top of the thread's stack, if it is one of these.
    static CMPI_Thread_Context* top() noexcept;

    Thread_Context* thread_create_hook() override;
    void thread_start_hook() override;
    void thread_exit_hook() override;

    // Goes to broker and context of the top of the stack, whichever context it is called on.
    Instance_Enumerator_State* instance_enumerator_create(const char* name_space,
                                                          const Instance* model) override;
    void instance_enumerator_destroy(Instance_Enumerator_State* state) override;
    bool instance_enumerator_more(Instance_Enumerator_State* state) override;
    void instance_enumerator_next(Instance_Enumerator_State* state) override;
    Instance* instance_enumerator_get(Instance_Enumerator_State* state) override;

    bool get_username(String& user_name) override;
    const void* origin() const noexcept override { return _broker; }

private:
    const CMPIBroker* _broker;
    const CMPIContext* _context;
    CMPIContext* _prepared = nullptr; // ours to release until a detach has ended it
    bool _attached = false;
};

// Puts a context on top of the thread's stack for a scope.
class CMPI_Context_Scope {
public:
    CMPI_Context_Scope(const CMPIBroker* broker, const CMPIContext* context) noexcept
        : _context(broker, context) {
        Thread_Context::push(&_context);
    }
    ~CMPI_Context_Scope() { Thread_Context::pop(); }
    CMPI_Context_Scope(const CMPI_Context_Scope&) = delete;
    CMPI_Context_Scope& operator=(const CMPI_Context_Scope&) = delete;

private:
    CMPI_Thread_Context _context;
};

} // namespace cimple

#endif
