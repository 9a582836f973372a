// What a host is published as before any adapter: its computer system, the profiles, the provider
// itself.
#include "tests/agent/agent_session.h"

#include "tests/runtime/plain_context.h"

namespace cimple {
namespace {

// Stands for the object manager: the instances that up-calls find, by namespace.
class Fake_Manager final : public Plain_Context {
public:
    using Instances = std::multimap<std::string, Ref<Instance>>;
    explicit Fake_Manager(const Instances& instances) : _instances(instances) {}

    Thread_Context* thread_create_hook() override {
        return std::make_unique<Fake_Manager>(_instances).release();
    }

    Instance_Enumerator_State* instance_enumerator_create(const char* name_space,
                                                          const Instance* model) override {
        auto state = std::make_unique<State>();
        for (auto [at, end] = _instances.equal_range(name_space); at != end; ++at) {
            if (is_subclass(class_of(model), class_of(at->second.get()))) {
                state->push_back(at->second);
            }
        }
        return reinterpret_cast<Instance_Enumerator_State*>(state.release());
    }
    void instance_enumerator_destroy(Instance_Enumerator_State* state) override {
        delete &of(state);
    }
    bool instance_enumerator_more(Instance_Enumerator_State* state) override {
        return !of(state).empty();
    }
    void instance_enumerator_next(Instance_Enumerator_State* state) override {
        of(state).erase(of(state).begin());
    }
    Instance* instance_enumerator_get(Instance_Enumerator_State* state) override {
        return Ref<Instance>(of(state).front()).release();
    }

private:
    using State = std::vector<Ref<Instance>>;
    static State& of(Instance_Enumerator_State* state) { return *reinterpret_cast<State*>(state); }

    const Instances& _instances;
};

class Host : public With_Session {
protected:
    Host() : _manager(at_manager) {
        Thread_Context::push(&_manager);
        session.on("no", [](const auto& words) {
            (words.at(0) == "name" ? host_has_name : host_is_resolved) = false;
        });
        session.on("manager-has", [this](const auto& words) {
            at_manager.clear();
            for (const std::string& name : words) {
                Ref<CIM_RegisteredProfile> profile(CIM_RegisteredProfile::create(true));
                profile->InstanceID.set("OM:" + name);
                profile->RegisteredName.set(name);
                at_manager.emplace("root/pg_interop", Ref<Instance>(profile.release()));
            }
        });
        load();
    }
    ~Host() override {
        unload();
        Thread_Context::pop();
    }

    Fake_Manager::Instances at_manager;

private:
    Fake_Manager _manager;
};

TVR_SESSIONS(Host, "host_instances.txt");

} // namespace
} // namespace cimple
