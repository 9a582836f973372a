// The operations of the instance MI.
#include "tests/adapter/fixture.h"

namespace cimple {
namespace {

class Instance_Entries_Test : public Adapter_Test {
protected:
    CMPIrc enum_names(CMPIObjectPath* path) {
        return mi->ft->enumerateInstanceNames(mi, context, result, path).rc;
    }
    CMPIrc enum_instances(CMPIObjectPath* path, const char** properties = nullptr) {
        return mi->ft->enumerateInstances(mi, context, result, path, properties).rc;
    }
    CMPIrc get(CMPIObjectPath* path, const char** properties = nullptr) {
        return mi->ft->getInstance(mi, context, result, path, properties).rc;
    }
    CMPIrc create(CMPIObjectPath* path, CMPIInstance* instance) {
        return mi->ft->createInstance(mi, context, result, path, instance).rc;
    }
    CMPIrc modify(CMPIObjectPath* path, CMPIInstance* instance, const char** properties = nullptr) {
        return mi->ft->modifyInstance(mi, context, result, path, instance, properties).rc;
    }
    CMPIrc remove(CMPIObjectPath* path) {
        return mi->ft->deleteInstance(mi, context, result, path).rc;
    }

    fake::Result& answer() { return fake::Broker::of(result); }
    const Widget& model() const { return *static_cast<Widget*>(script.model.get()); }

    CMPIInstanceMI* mi = instance_mi();
};

TEST_F(Instance_Entries_Test, StatusesBecomeReturnCodes) {
    script.add(widget("a"));
    script.find(widget("a"));
    CMPIObjectPath* path = widget_path("a");
    CMPIInstance* sent = broker.instance({fake_path("a"), {}});
    const auto names = [&] { return enum_names(path); };
    const auto instances = [&] { return enum_instances(path); };
    const CMPIrc ok = CMPI_RC_OK, failed = CMPI_RC_ERR_FAILED, missing = CMPI_RC_ERR_NOT_FOUND,
                 unsupported = CMPI_RC_ERR_NOT_SUPPORTED, denied = CMPI_RC_ERR_ACCESS_DENIED,
                 invalid = CMPI_RC_ERR_INVALID_PARAMETER, there = CMPI_RC_ERR_ALREADY_EXISTS;
    struct Case {
        int status;
        CMPIrc rc;
        std::size_t data; // what the client gets of the one instance
        int done;
    };
    const struct {
        int operation;
        std::function<CMPIrc()> call;
        std::vector<std::pair<int, CMPIrc>> failures;
        Case unknown; // a status without a meaning
    } operations[] = {
        {OPERATION_GET_INSTANCE,
         [&] { return get(path); },
         {{60, missing}, {62, invalid}, {63, denied}, {64, failed}},
         {65, ok, 1, 1}},
        {OPERATION_ENUM_INSTANCES, instances, {{70, failed}, {71, denied}}, {72, ok, 1, 1}},
        {OPERATION_ENUM_INSTANCES, names, {{70, failed}, {71, denied}}, {72, ok, 1, 0}},
        {OPERATION_CREATE_INSTANCE,
         [&] { return create(path, sent); },
         {{80, there}, {81, unsupported}, {82, invalid}, {83, denied}, {84, failed}},
         {85, ok, 0, 0}},
        {OPERATION_DELETE_INSTANCE,
         [&] { return remove(path); },
         {{90, missing}, {91, unsupported}, {92, denied}, {93, failed}},
         {94, ok, 0, 1}},
        {OPERATION_MODIFY_INSTANCE,
         [&] { return modify(path, sent); },
         {{100, missing}, {101, unsupported}, {102, invalid}, {103, denied}, {104, failed}},
         {105, ok, 0, 0}},
    };
    for (const auto& [operation, call, failures, unknown] : operations) {
        const std::size_t given = operation == OPERATION_DELETE_INSTANCE ? 0 : 1;
        const std::size_t left = operation == OPERATION_ENUM_INSTANCES ? 1 : 0;
        std::vector<Case> cases = {{0, ok, given, 1}, unknown};
        for (const auto& [status, rc] : failures) {
            cases.push_back({status, rc, left, 0});
        }
        for (const Case& c : cases) {
            SCOPED_TRACE(c.status);
            script.status[operation] = c.status;
            answer() = fake::Result();
            EXPECT_EQ(call(), c.rc);
            EXPECT_EQ(answer().data.size(), c.data);
            EXPECT_EQ(answer().done, c.done);
        }
    }
}

TEST_F(Instance_Entries_Test, UnknownClassesAndMissingInstancesFailWithoutTheProvider) {
    CMPIInstance* some = broker.instance({fake_path("a"), {}});
    script.calls.clear();
    for (CMPIObjectPath* path :
         {class_path("Nobody"), class_path(""), static_cast<CMPIObjectPath*>(nullptr)}) {
        for (const CMPIrc rc : {enum_names(path), enum_instances(path), get(path),
                                create(path, some), modify(path, some), remove(path)}) {
            EXPECT_EQ(rc, CMPI_RC_ERR_FAILED);
        }
    }
    EXPECT_EQ(modify(class_path(), nullptr), CMPI_RC_ERR_FAILED);
    script.calls.erase(OPERATION_GET_REPOSITORY);
    EXPECT_TRUE(script.calls.empty());
    EXPECT_EQ(answer().done, 0);

    EXPECT_EQ(get(widget_path("a")), CMPI_RC_ERR_FAILED); // success without an instance
    EXPECT_EQ(enum_instances(class_path("sPECIAL_pART")), CMPI_RC_OK); // any class of the module
    EXPECT_EQ(class_of(script.model.get()), &Special_Part::static_meta_class);
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

TEST_F(Instance_Entries_Test, ModelsTellWhatIsWantedAndListsFilterWhatGoesOut) {
    script.add(full_widget());
    script.find(full_widget());
    const char* some[] = {"Flag", "tEXT", "Name", "Nonsense", "U8", nullptr};
    enum_instances(class_path());
    EXPECT_EQ(model().Flag.null, 1); // nothing restricted: as built
    for (const bool gets : {false, true}) {
        answer() = fake::Result();
        EXPECT_EQ(gets ? get(widget_path("a", 7), some) : enum_instances(widget_path("a", 7), some),
                  CMPI_RC_OK);
        EXPECT_TRUE(model().Text.null == 0 && model().U16.null == 1 && model().Texts.null == 1);
        EXPECT_EQ(model().Index.value, 7u);
        const fake::Inst& out = *answer().data[0].as<fake::Inst>();
        EXPECT_EQ(out.properties.size(), 4u);
        EXPECT_NE(out.properties.find("Index"), nullptr) << "a key stays";
    }
    get(widget_path("a", 7));
    EXPECT_EQ(model().Texts.null, 0) << "all is wanted";
}

TEST_F(Instance_Entries_Test, ModifyTellsWhichPropertiesChange) {
    fake::Inst sent{fake_path("a"), {}};
    sent.properties.set("Name", fake::string("a"));
    sent.properties.set("Text", fake::string("t"));
    CMPIObjectPath* path = widget_path("requested", 3);
    EXPECT_EQ(modify(path, broker.instance(sent)), CMPI_RC_OK);
    EXPECT_EQ(model().Flag.null, 0); // no list: all read as set
    EXPECT_TRUE(model().Text.value.equal("t"));
    EXPECT_EQ(answer().data[0].as<fake::Path>()->keys.find("Name")->text(), "requested");

    const char* some[] = {"Text", nullptr};
    modify(path, broker.instance(sent), some);
    EXPECT_EQ(model().Text.null, 0);
    EXPECT_EQ(model().Name.null, 0); // keys stay
    EXPECT_EQ(model().Flag.null, 1);
    EXPECT_EQ(static_cast<Widget*>(script.instance.get())->Text.null, 0);
}

TEST_F(Instance_Entries_Test, AFailureOnTheWayOutEndsTheDeliveryUnseen) {
    const char* some[] = {"Text", nullptr};
    script.add(widget("a"));
    script.add(widget("b"));
    script.find(widget("a"));
    for (const char* call : {"newObjectPath", "newInstance", "setPropertyFilter"}) {
        answer() = fake::Result();
        script.closed = false;
        broker.failing = {call};
        EXPECT_EQ(enum_instances(class_path(), some), CMPI_RC_OK);
        EXPECT_EQ(answer().data.size(), 0u);
        EXPECT_EQ(answer().done, 1);
        EXPECT_TRUE(script.closed);
    }
    EXPECT_EQ(get(widget_path("a"), some), CMPI_RC_ERR_FAILED);
}

} // namespace
} // namespace cimple
