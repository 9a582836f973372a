// The entries of the association MI.
#include "runtime/association.h"
#include "tests/adapter/fixture.h"
#include "tests/common/session.h"
#include "tests/runtime/sample_classes.h"

#include <future>
#include <set>

namespace cimple::sample {
namespace {

using Texts = std::vector<std::string>;

// Of the same provider as the other entries', for the links of the sample classes.
const Registration registration = {"fixture", "Link_Provider", fixture_registration.proc,
                                   &Link::static_meta_class, nullptr};

Ref<Device> named(const char* name) {
    return make_device(name, 1);
}

class Association_Entries_Test : public Adapter_Test {
protected:
    Association_Entries_Test() {
        script.status = {{OPERATION_ENUM_ASSOCIATOR_NAMES, ENUM_ASSOCIATOR_NAMES_UNSUPPORTED},
                         {OPERATION_ENUM_REFERENCES, ENUM_REFERENCES_UNSUPPORTED},
                         {OPERATION_ENUM_ASSOCIATORS, ENUM_ASSOCIATORS_UNSUPPORTED}};
        const Ref<Device> a = named("a"), b = named("b"), d = named("d"), e = named("e");
        b->__name_space = "root/own";
        link(a.get(), b.get());
        link(a.get(), make_device<Port>("c", 1).get());
        link(d.get(), a.get());
        link(e.get(), e.get());
        link(named("A").get(), d.get());
        link(nullptr, named("f").get());
        void* made = nullptr;
        cimple_cmpi_adapter(block, &registration, broker.get(), context, "Link", 'A', made);
        mi = static_cast<CMPIAssociationMI*>(made);
        broker.get_instance = [this](const fake::Path& path, const char** properties) {
            asked_properties = properties;
            return text(path) == missing ? nullptr
                                         : std::make_shared<fake::Inst>(fake::Inst{path, {}});
        };
        // NAME CLASS [RESULT_CLASS ROLE RESULT_ROLE]: the ends; the links, by name and whole,
        // without and with a selector of the provider's.
        session.on("from", [this](const auto& words, std::ostream& answer) {
            const auto text = [&](std::size_t i) {
                return i >= words.size() || words[i] == "null" ? nullptr : words[i].c_str();
            };
            const CMPIObjectPath* path = source(words.at(0).c_str(), words.at(1).c_str());
            std::set<Texts> told;
            for (const bool use_selector : {false, true}) {
                script.use_selector = use_selector;
                const CMPIrc rc = names(path, text(2), text(3), text(4));
                told.insert({std::to_string(rc), testing::PrintToString(sent())});
            }
            for (const auto call : {&Association_Entries_Test::reference_names,
                                    &Association_Entries_Test::references}) {
                const CMPIrc rc = (this->*call)(path, text(3));
                told.insert({"links " + std::to_string(rc), testing::PrintToString(sent())});
            }
            EXPECT_GT(script.left_out, 0);
            for (const Texts& each : told) { // equal ones once
                answer << each[0] << ' ' << each[1] << '\n';
            }
        });
        // Of names, references, associators and instances; then what the four entries answer.
        session.on("statuses", [this](const auto& words, std::ostream& answer) {
            const int operations[] = {OPERATION_ENUM_ASSOCIATOR_NAMES, OPERATION_ENUM_REFERENCES,
                                      OPERATION_ENUM_ASSOCIATORS, OPERATION_ENUM_INSTANCES};
            for (std::size_t i = 0; i < 4; ++i) {
                script.status[operations[i]] = std::stoi(words.at(i));
            }
            answer << names(source("a")) << ' ' << references(source("a")) << ' '
                   << reference_names(source("a")) << ' ' << instances(source("a")) << '\n';
        });
    }
    ~Association_Entries_Test() override { EXPECT_EQ(broker.of(result).done, 0); }
    static void link(const Element* antecedent, const Device* dependent) {
        script.add(make_link(antecedent, dependent));
    }
    CMPIObjectPath* source(const char* name, const char* class_name = "Device") {
        fake::Path path{"root/test", class_name, {}};
        path.keys.set("SystemName", fake::string(name));
        path.keys.set("Number", fake::uint32(1));
        return broker.path(path);
    }
    // An element as its name, with "!" in its own namespace; a link as its ends.
    static std::string text(const fake::Path& path) {
        std::string names = path.name_space == "root/own" ? "!" : "";
        for (const fake::Entry& key : path.keys) {
            const auto* end = key.datum.as<fake::Path>();
            names += end != nullptr ? text(*end) : key.datum.text();
        }
        return names;
    }
    // What came since the last call.
    Texts sent() {
        Texts texts;
        for (const fake::Datum& datum : broker.of(result).data) {
            const auto* instance = datum.as<fake::Inst>();
            const fake::Path* path = instance != nullptr ? &instance->path : datum.as<fake::Path>();
            texts.push_back(path != nullptr ? text(*path) : "neither instance nor path");
        }
        broker.of(result).data.clear();
        return texts;
    }
    CMPIrc names(const CMPIObjectPath* path, const char* result_class = nullptr,
                 const char* role = nullptr, const char* result_role = nullptr) {
        const auto call = mi->ft->associatorNames;
        return call(mi, context, result, path, "Other", result_class, role, result_role).rc;
    }
    CMPIrc instances(const CMPIObjectPath* path, const char** list = nullptr) {
        return mi->ft->associators(mi, context, result, path, "Other", "", "", "", list).rc;
    }
    CMPIrc references(const CMPIObjectPath* path, const char* role = nullptr) {
        return mi->ft->references(mi, context, result, path, "Other", role, nullptr).rc;
    }
    CMPIrc reference_names(const CMPIObjectPath* path, const char* role = nullptr) {
        return mi->ft->referenceNames(mi, context, result, path, "Other", role).rc;
    }

    Text_Session session;
    CMPIAssociationMI* mi = nullptr;
    std::string missing;
    const char** asked_properties = nullptr;
};

TVR_SESSIONS(Association_Entries_Test, "association_entries.txt");

TEST_F(Association_Entries_Test, AssociatorsComeFromTheirOwnProviders) {
    const char* list[] = {"Label", nullptr};
    const auto get = broker.get_instance;
    broker.get_instance = [&](const fake::Path& path, const char** properties) {
        Mutex& mutex = block.adapter.load()->mutex();
        EXPECT_FALSE(std::async(std::launch::async, [&] { return mutex.try_lock(); }).get());
        return get(path, properties);
    };
    EXPECT_EQ(instances(source("a"), list), 0);
    EXPECT_EQ(asked_properties, list);
    EXPECT_EQ(sent(), (Texts{"!b", "c", "d"}));
    missing = "c";
    broker.asked.clear();
    EXPECT_EQ(instances(source("a")), 0) << "the client isn't told";
    EXPECT_EQ(sent(), Texts{"!b"});
    EXPECT_EQ(broker.asked.size(), 2u);
}

TEST_F(Association_Entries_Test, AProviderMayTraverseByItself) {
    script.status.clear();
    script.direct.reset(named("own").release());
    script.direct->__name_space = "root/own";
    EXPECT_EQ(instances(source("z")) + names(source("z")), 0);
    script.direct = script.instances[0];
    EXPECT_EQ(references(source("z")) + reference_names(source("z")), 0);
    EXPECT_EQ(sent(), (Texts{"!own", "!own", "a!b", "a!b"}));
    EXPECT_EQ(script.calls[OPERATION_ENUM_INSTANCES], 0);
    EXPECT_TRUE(static_cast<Link*>(script.model.get())->Caption.is_null());
    EXPECT_TRUE(broker.asked.empty());
}

TEST_F(Association_Entries_Test, AFailureOnTheWayOutEndsTheDeliveryUnseen) {
    std::size_t kept = 0; // objects that the calls leave to the end of the scope
    const auto requests = [&](const CMPIObjectPath* path) {
        kept = broker.live();
        EXPECT_EQ(names(path) + reference_names(path) + references(path) + instances(path), 0);
        kept = broker.live() - kept;
        return sent().size();
    };
    EXPECT_EQ(requests(source("z")), 0u);
    const std::size_t kept_of_none = kept;
    EXPECT_EQ(requests(source("a")), 12u);
    EXPECT_EQ(kept, kept_of_none) << "each result is released when it is sent";
    for (const char* call : {"newObjectPath", "newInstance"}) {
        broker.failing = {call};
        EXPECT_LT(requests(source("a")), 12u) << call;
        EXPECT_EQ(kept, kept_of_none) << call;
    }
}

TEST_F(Association_Entries_Test, AnUnknownClassHasNoAssociations) {
    const Runtime_Log log;
    const CMPIObjectPath* path = source("a", "Unheard_Of");
    EXPECT_EQ(instances(path) + names(path) + references(path) + reference_names(path), 0);
    EXPECT_TRUE(sent().empty());
    EXPECT_EQ(script.calls[OPERATION_ENUM_INSTANCES], 0);
    EXPECT_EQ(log.count("return: associators(): CMPI_RC_OK"), 1);
    EXPECT_EQ(log.count("(): CMPI_RC_ERR_INVALID_CLASS"), 3);
}

} // namespace
} // namespace cimple::sample
