// The operations of the instance MI.
#include "tests/adapter/fixture.h"
#include "tests/common/session.h"

namespace cimple {
namespace {

class Instance_Entries_Test : public Adapter_Test {
protected:
    Instance_Entries_Test() {
        session.on("status", [this](const auto& words) {
            static const std::map<std::string, int> operations = {
                {"get", OPERATION_GET_INSTANCE},       {"enumerate", OPERATION_ENUM_INSTANCES},
                {"create", OPERATION_CREATE_INSTANCE}, {"delete", OPERATION_DELETE_INSTANCE},
                {"modify", OPERATION_MODIFY_INSTANCE}, {"names", OPERATION_ENUM_INSTANCES}};
            script.status[operations.at(words.at(0))] = std::stoi(words.at(1));
        });
        session.on("has", [](const auto& words) { // what is enumerated and found
            for (const std::string& name : words) {
                Ref<Widget> made = name == "full" ? full_widget() : widget(name.c_str());
                script.got = Ref<>(clone(made.get()));
                script.add(std::move(made));
            }
        });
        session.on("failing", [this](const auto& words) {
            broker.failing = {words.begin(), words.end()};
        });
        for (const char* name : {"get", "enumerate", "names", "create", "delete", "modify"}) {
            session.on(name, [this, name](const auto& words, std::ostream& answer) {
                call(name, words, answer);
            });
        }
    }
    CMPIrc enum_names(CMPIObjectPath* path) {
        return mi->ft->enumerateInstanceNames(mi, context, result, path).rc;
    }
    CMPIrc enum_instances(CMPIObjectPath* path, const char** properties = nullptr) {
        return mi->ft->enumerateInstances(mi, context, result, path, properties).rc;
    }
    fake::Result& answer() { return fake::Broker::of(result); }

    CMPIInstanceMI* mi = instance_mi();
    Text_Session session;

private:
    // CLASS, or one's NAME and INDEX, then PROPERTIES. Tells the code, what came, what the provider
    // got: the model's class and the properties that aren't NULL.
    void call(const std::string& name, const Text_Session::Words& words, std::ostream& told) {
        const bool is_one = words.size() > 1;
        CMPIObjectPath* path =
            words.at(0) == "null" ? nullptr
            : is_one ? widget_path(words[0].c_str(), static_cast<uint32>(std::stoul(words[1])))
                     : class_path(words[0].c_str());
        std::vector<const char*> list;
        for (std::size_t i = 2; i < words.size(); ++i) {
            list.push_back(words[i].c_str());
        }
        list.push_back(nullptr);
        const char** properties = list.size() > 1 ? list.data() : nullptr;
        const fake::Inst content{fake_path("a"),
                                 {{{"Name", fake::string("a")}, {"Text", fake::string("t")}}}};
        CMPIInstance* sent = broker.instance(content);
        const CMPIInstanceMIFT& ft = *mi->ft;
        answer() = fake::Result();
        script.model.reset();
        script.closed = false;
        script.calls.clear();
        told << (name == "get"         ? ft.getInstance(mi, context, result, path, properties).rc
                 : name == "enumerate" ? enum_instances(path, properties)
                 : name == "names"     ? enum_names(path)
                 : name == "create"    ? ft.createInstance(mi, context, result, path, sent).rc
                 : name == "delete"
                     ? ft.deleteInstance(mi, context, result, path).rc
                     : ft.modifyInstance(mi, context, result, path, sent, properties).rc);
        for (const fake::Datum& datum : answer().data) {
            const auto* instance = datum.as<fake::Inst>();
            const fake::Path& out = instance != nullptr ? instance->path : *datum.as<fake::Path>();
            const fake::Datum* key = out.keys.find("Name");
            told << ' ' << out.class_name << ' ' << (key == nullptr ? "" : key->text());
            if (instance != nullptr) {
                told << " of " << instance->properties.size();
            }
        }
        told << (answer().done != 0 ? ", done" : "") << (script.closed ? ", closed" : "")
             << (script.calls.size() > script.calls.count(OPERATION_GET_REPOSITORY) ? ", asked"
                                                                                    : "")
             << '\n';
        if (is_one && script.model) {
            told << class_of(script.model.get())->name << " with";
            for (const Meta_Feature* feature : *class_of(script.model.get())) {
                if (feature->has(FLAG_PROPERTY) &&
                    null_flag(script.model.get(), as_property(*feature)) == 0) {
                    told << ' ' << feature->name;
                }
            }
            told << '\n';
        }
    }
};

TVR_SESSIONS(Instance_Entries_Test, "instance_entries.txt");

TEST_F(Instance_Entries_Test, AModificationNeedsAnInstance) {
    const auto call = mi->ft->modifyInstance;
    EXPECT_EQ(call(mi, context, result, class_path(), nullptr, nullptr).rc, CMPI_RC_ERR_FAILED);
}

TEST_F(Instance_Entries_Test, EnumerationKeepsNoTemporaries) {
    const auto left_by = [&](int count) {
        script.instances.clear();
        for (int i = 0; i < count; ++i) {
            script.add(full_widget());
        }
        broker.end_scope();
        context = broker.context();
        result = broker.result();
        EXPECT_EQ(enum_instances(class_path()), CMPI_RC_OK);
        EXPECT_EQ(enum_names(class_path()), CMPI_RC_OK);
        EXPECT_EQ(answer().data.size(), 2 * static_cast<std::size_t>(count));
        return broker.live();
    };
    EXPECT_EQ(left_by(1), left_by(100));
}

} // namespace
} // namespace cimple
