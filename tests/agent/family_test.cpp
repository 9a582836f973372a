// All class providers through their dispatchers, as the module registers them.
#include "tests/agent/agent_session.h"

#include "runtime/provider.h"

#include <set>

namespace cimple {
namespace {

class Family : public With_Session {
protected:
    Family() {
        session.on("provider", [this](const auto& words, std::ostream& answer) {
            for (const Registration* at = cimple_module(); at != nullptr; at = at->next) {
                if (at->meta_class->name == "TVRHBA_" + words.at(0)) {
                    go_through(*at, answer);
                    _asked.insert(at);
                }
            }
        });
        // What the others tell, which are of the family that is generated.
        session.on("others", [this](const auto&, std::ostream& answer) {
            std::map<std::string, int> times;
            for (const Registration* at = cimple_module(); at != nullptr; at = at->next) {
                if (!_asked.contains(at)) {
                    SCOPED_TRACE(at->provider_name);
                    std::ostringstream told;
                    go_through(*at, told);
                    ++times[told.str()];
                }
            }
            for (const auto& [told, count] : times) {
                answer << count << " times\n" << told;
            }
        });
        // Each unload has taken what its load added.
        session.on("agent", [] { return ProviderAgent::instance() == nullptr ? "none" : "one"; });
        load();
        refresh();
    }

private:
    // The calls that `file` logs.
    void tell_logged(const Registration& at, std::string& told) {
        const std::string own = std::string(at.provider_name) + "::";
        for (const LogCapture::Line& line : log.lines()) {
            const bool by_hand = line.file == "providers/" + std::string(at.provider_name) + ".cpp";
            if (by_hand ||
                line.file == "derivedObjects/" + std::string(at.provider_name) + ".cpp") {
                if (line.text.starts_with(own) && line.level == TVR_DBG) {
                    told += (by_hand ? " " : " derived ") + line.text.substr(own.size());
                }
            }
        }
        log.take();
    }
    void go_through(const Registration& at, std::ostream& answer) {
        const Provider_Handle provider(&at);
        log.take();
        EXPECT_EQ(provider.call(OPERATION_LOAD), 0);
        for (const Ref<Instance>& instance : all(at.meta_class->name)._instances) {
            EXPECT_EQ(class_of(instance.get()), at.meta_class);
        }
        std::string told;
        tell_logged(at, told);

        Instance* instance = nullptr;
        const Ref<Instance> model(create(at.meta_class, true));
        EXPECT_EQ(provider.call(OPERATION_GET_INSTANCE, model.get(), &instance),
                  GET_INSTANCE_UNSUPPORTED);
        EXPECT_EQ(provider.call(OPERATION_CREATE_INSTANCE, model.get()),
                  CREATE_INSTANCE_UNSUPPORTED);
        EXPECT_EQ(provider.call(OPERATION_DELETE_INSTANCE, model.get()),
                  DELETE_INSTANCE_UNSUPPORTED);
        told += " modify " +
                std::to_string(provider.call(OPERATION_MODIFY_INSTANCE, model.get(), model.get()));
        for (const Meta_Feature* feature : *at.meta_class) {
            if (feature->has(FLAG_METHOD)) {
                const Ref<Instance> call(create(&as_method(*feature), true));
                const int status = provider.call(OPERATION_INVOKE_METHOD, model.get(), call.get());
                if (status != INVOKE_METHOD_UNSUPPORTED) {
                    told += std::string(" ") + feature->name + ' ' + std::to_string(status);
                }
            }
        }
        if (at.meta_class->has(FLAG_ASSOCIATION)) {
            const String text;
            EXPECT_EQ(provider.call(OPERATION_ENUM_ASSOCIATOR_NAMES, model.get(), &text, &text,
                                    &text, nullptr, nullptr),
                      ENUM_ASSOCIATOR_NAMES_UNSUPPORTED);
            EXPECT_EQ(provider.call(OPERATION_ENUM_REFERENCES, model.get(), model.get(), &text),
                      ENUM_REFERENCES_UNSUPPORTED);
            EXPECT_EQ(provider.call(OPERATION_ENUM_ASSOCIATORS, model.get(), &text, &text, &text),
                      ENUM_ASSOCIATORS_UNSUPPORTED);
        }
        log.take();
        EXPECT_EQ(provider.call(OPERATION_UNLOAD), 0);
        tell_logged(at, told);
        answer << told.substr(1) << '\n';
    }

    std::set<const Registration*> _asked;
};

TVR_SESSIONS(Family, "family.txt");

} // namespace
} // namespace cimple
