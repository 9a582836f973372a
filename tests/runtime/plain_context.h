// A thread context behind which there is no object manager.
#pragma once

#include "runtime/thread.h"

namespace cimple {

class Plain_Context : public Thread_Context {
public:
    Thread_Context* thread_create_hook() override { return new Plain_Context; }
    void thread_start_hook() override {}
    void thread_exit_hook() override {}
    Instance_Enumerator_State* instance_enumerator_create(const char*, const Instance*) override {
        return nullptr;
    }
    void instance_enumerator_destroy(Instance_Enumerator_State*) override {}
    bool instance_enumerator_more(Instance_Enumerator_State*) override { return false; }
    void instance_enumerator_next(Instance_Enumerator_State*) override {}
    Instance* instance_enumerator_get(Instance_Enumerator_State*) override { return nullptr; }
    bool get_username(String&) override { return false; }
};

} // namespace cimple
