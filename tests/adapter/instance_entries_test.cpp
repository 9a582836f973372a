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
    const Widget& instance() const { return *static_cast<Widget*>(script.instance.get()); }

    CMPIInstanceMI* mi = instance_mi();
};

TEST_F(Instance_Entries_Test, StatusesBecomeReturnCodes) {
    struct Case {
        int status;
        CMPIrc rc;
        std::size_t data; // what the client gets of one instance that the provider has
        int done;
    };
    const auto run = [this](int operation, std::initializer_list<Case> cases, auto call) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::to_string(operation) + " answers " + std::to_string(c.status));
            script.status[operation] = c.status;
            answer() = fake::Result();
            EXPECT_EQ(call(), c.rc);
            EXPECT_EQ(answer().data.size(), c.data);
            EXPECT_EQ(answer().done, c.done);
        }
    };
    script.add(widget("a"));
    script.find(widget("a"));
    CMPIObjectPath* path = widget_path("a");
    CMPIInstance* sent = broker.instance({fake_path("a"), {}});
    run(OPERATION_GET_INSTANCE,
        {{0, CMPI_RC_OK, 1, 1},
         {60, CMPI_RC_ERR_NOT_FOUND, 0, 0},
         {62, CMPI_RC_ERR_INVALID_PARAMETER, 0, 0},
         {63, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
         {64, CMPI_RC_ERR_FAILED, 0, 0},
         {65, CMPI_RC_OK, 1, 1}},
        [&] { return get(path); });
    const std::initializer_list<Case> enumerations = {{0, CMPI_RC_OK, 1, 1},
                                                      {70, CMPI_RC_ERR_FAILED, 1, 0},
                                                      {71, CMPI_RC_ERR_ACCESS_DENIED, 1, 0}};
    run(OPERATION_ENUM_INSTANCES, enumerations, [&] { return enum_instances(path); });
    run(OPERATION_ENUM_INSTANCES, enumerations, [&] { return enum_names(path); });
    run(OPERATION_ENUM_INSTANCES, {{72, CMPI_RC_OK, 1, 1}}, [&] { return enum_instances(path); });
    run(OPERATION_ENUM_INSTANCES, {{72, CMPI_RC_OK, 1, 0}}, [&] { return enum_names(path); });
    run(OPERATION_CREATE_INSTANCE,
        {{0, CMPI_RC_OK, 1, 1},
         {80, CMPI_RC_ERR_ALREADY_EXISTS, 0, 0},
         {81, CMPI_RC_ERR_NOT_SUPPORTED, 0, 0},
         {82, CMPI_RC_ERR_INVALID_PARAMETER, 0, 0},
         {83, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
         {84, CMPI_RC_ERR_FAILED, 0, 0},
         {85, CMPI_RC_OK, 0, 0}},
        [&] { return create(path, sent); });
    run(OPERATION_DELETE_INSTANCE,
        {{0, CMPI_RC_OK, 0, 1},
         {90, CMPI_RC_ERR_NOT_FOUND, 0, 0},
         {91, CMPI_RC_ERR_NOT_SUPPORTED, 0, 0},
         {92, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
         {93, CMPI_RC_ERR_FAILED, 0, 0},
         {94, CMPI_RC_OK, 0, 1}},
        [&] { return remove(path); });
    run(OPERATION_MODIFY_INSTANCE,
        {{0, CMPI_RC_OK, 1, 1},
         {100, CMPI_RC_ERR_NOT_FOUND, 0, 0},
         {101, CMPI_RC_ERR_NOT_SUPPORTED, 0, 0},
         {102, CMPI_RC_ERR_INVALID_PARAMETER, 0, 0},
         {103, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
         {104, CMPI_RC_ERR_FAILED, 0, 0},
         {105, CMPI_RC_OK, 0, 0}},
        [&] { return modify(path, sent); });
    EXPECT_EQ(mi->ft->execQuery(mi, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
              CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(Instance_Entries_Test, UnknownClassesAndMissingInstancesFailWithoutTheProvider) {
    CMPIInstance* some = broker.instance({fake_path("a"), {}});
    script.calls.clear();
    for (CMPIObjectPath* path :
         {class_path("Nobody"), class_path(""), broker.path({"", "", {}, true}),
          static_cast<CMPIObjectPath*>(nullptr)}) {
        for (const CMPIrc rc : {enum_names(path), enum_instances(path), get(path),
                                create(path, some), modify(path, some), remove(path)}) {
            EXPECT_EQ(rc, CMPI_RC_ERR_FAILED);
        }
    }
    EXPECT_EQ(create(class_path(), nullptr), CMPI_RC_ERR_FAILED);
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
    EXPECT_EQ(model().Name.null, 1);

    for (const bool gets : {false, true}) {
        answer() = fake::Result();
        EXPECT_EQ(gets ? get(widget_path("a", 7), some) : enum_instances(widget_path("a", 7), some),
                  CMPI_RC_OK);
        EXPECT_EQ(model().Flag.null, 0);
        EXPECT_EQ(model().Text.null, 0);
        EXPECT_EQ(model().U16.null, 1);
        EXPECT_EQ(model().Texts.null, 1);
        EXPECT_TRUE(model().Name.value.equal("a"));
        EXPECT_EQ(model().Index.value, 7u);
        const fake::Inst& out = *answer().data[0].as<fake::Inst>();
        EXPECT_EQ(out.properties.size(), 4u);
        EXPECT_NE(out.properties.find("U8"), nullptr);
        EXPECT_NE(out.properties.find("Index"), nullptr) << "a key stays";
        EXPECT_EQ(out.properties.find("U16"), nullptr);
    }
    get(widget_path("a", 7));
    EXPECT_EQ(model().Texts.null, 0) << "all is wanted";
}

TEST_F(Instance_Entries_Test, GetFallsBackToEnumeration) {
    script.status[OPERATION_GET_INSTANCE] = GET_INSTANCE_UNSUPPORTED;
    for (const char* name : {"a", "b", "c"}) {
        script.add(widget(name));
    }
    EXPECT_EQ(get(widget_path("b")), CMPI_RC_OK);
    ASSERT_EQ(answer().data.size(), 1u);
    const fake::Inst& found = *answer().data[0].as<fake::Inst>();
    EXPECT_EQ(found.properties.find("Name")->text(), "b");
    EXPECT_EQ(found.path.keys.find("Name")->text(), "b"); // the request's own path

    EXPECT_EQ(get(widget_path("B")), CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(get(widget_path("b", 2)), CMPI_RC_ERR_NOT_FOUND);
    script.status[OPERATION_ENUM_INSTANCES] = ENUM_INSTANCES_FAILED;
    EXPECT_EQ(get(widget_path("b")), CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(Instance_Entries_Test, ModifyTellsWhichPropertiesChange) {
    fake::Inst sent{fake_path("a"), {}};
    sent.properties.set("Name", fake::string("a"));
    sent.properties.set("Text", fake::string("t"));
    sent.properties.set("U8", fake::null_of(CMPI_uint8));
    CMPIObjectPath* path = widget_path("requested", 3);
    EXPECT_EQ(modify(path, broker.instance(sent)), CMPI_RC_OK);
    EXPECT_EQ(model().Flag.null, 0); // no list: all read as set
    EXPECT_TRUE(model().Text.value.equal("t"));
    EXPECT_EQ(instance().U8.null, 1);
    EXPECT_EQ(instance().Text.null, 0);
    ASSERT_EQ(answer().data.size(), 1u);
    EXPECT_EQ(answer().data[0].as<fake::Path>()->keys.find("Name")->text(), "requested");

    const char* some[] = {"Text", nullptr};
    modify(path, broker.instance(sent), some);
    EXPECT_EQ(model().Text.null, 0);
    EXPECT_EQ(model().Name.null, 0); // keys stay
    EXPECT_EQ(model().Flag.null, 1);
    EXPECT_EQ(instance().Text.null, 0);
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
