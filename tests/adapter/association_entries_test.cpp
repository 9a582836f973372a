// The entries of the association MI.
#include "runtime/association.h"
#include "tests/adapter/fixture.h"
#include "tests/runtime/sample_classes.h"

#include <future>

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

    CMPIAssociationMI* mi = nullptr;
    std::string missing;
    const char** asked_properties = nullptr;
};

TEST_F(Association_Entries_Test, EndsAreChosenByClassRoleAndKeys) {
    const struct {
        const char *name, *class_name, *result_class, *role, *result_role;
        Texts ends, links;
    } cases[] = {
        {"a", "device", "", "ANTECEDENT", "", {"!b", "c"}, {"a!b", "ac"}},
        {"a", "Device", nullptr, "Others", nullptr, {}, {}},
        {"a", "Device", "ELEMENT", "", "dependent", {"!b", "c"}, {"a!b", "ac", "da"}},
        {"a", "Device", "Port", "", "", {"c"}, {"a!b", "ac", "da"}},
        {"A", "Device", "", "", "", {"d"}, {"Ad"}},
        {"c", "Port", "", "", "", {"a"}, {"ac"}},
        {"a", "Port", "", "", "", {}, {}}, // a port has one key more
        {"e", "Device", "", "", "", {}, {"ee"}},
        {"f", "Device", "", "", "", {}, {"f"}}, // the other end is null
        {"a", "Stranger", "", "", "", {}, {}},
        // Without keys it equals every antecedent; for a dependent its class isn't near enough.
        {"a", "Element", "", "", "", {"!b", "c", "a", "e", "d"}, {"a!b", "ac", "da", "ee", "Ad"}},
    };
    for (const bool use_selector : {false, true}) {
        script.use_selector = use_selector;
        for (const auto& row : cases) {
            SCOPED_TRACE(std::string(row.name) + " " + row.class_name);
            const CMPIObjectPath* path = source(row.name, row.class_name);
            EXPECT_EQ(names(path, row.result_class, row.role, row.result_role), 0);
            EXPECT_EQ(sent(), row.ends);
            EXPECT_EQ(reference_names(path, row.role), 0);
            EXPECT_EQ(sent(), row.links);
            EXPECT_EQ(references(path, row.role), 0);
            EXPECT_EQ(sent(), row.links);
        }
    }
    EXPECT_GT(script.left_out, 0);
}

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

TEST_F(Association_Entries_Test, StatusesBecomeAnswers) {
    const CMPIrc done = CMPI_RC_OK, failed = CMPI_RC_ERR_FAILED, denied = CMPI_RC_ERR_ACCESS_DENIED;
    const struct {
        int names, references, associators, instances;
        CMPIrc for_names, for_references, for_associators;
    } cases[] = {
        {110, 120, 170, 0, failed, failed, failed},  {112, 122, 172, 0, failed, denied, denied},
        {112, 0, 171, 0, failed, done, failed},      {111, 121, 171, 70, failed, failed, failed},
        {111, 121, 171, 71, denied, denied, denied}, {-1, -1, -1, 77, done, done, done},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.names + row.instances);
        script.status = {{OPERATION_ENUM_ASSOCIATOR_NAMES, row.names},
                         {OPERATION_ENUM_REFERENCES, row.references},
                         {OPERATION_ENUM_ASSOCIATORS, row.associators},
                         {OPERATION_ENUM_INSTANCES, row.instances}};
        EXPECT_EQ(names(source("a")), row.for_names);
        EXPECT_EQ(references(source("a")), row.for_references);
        EXPECT_EQ(reference_names(source("a")), row.for_references);
        EXPECT_EQ(instances(source("a")), row.for_associators);
    }
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
