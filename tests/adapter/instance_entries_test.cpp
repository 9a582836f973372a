// The operations of the instance MI.
#include "tests/adapter/fixture.h"

namespace cimple {
namespace {

class Instance_Entries_Test : public Adapter_Test {
protected:
    CMPIStatus enum_names(CMPIObjectPath* path) {
        return mi->ft->enumerateInstanceNames(mi, context, result, path);
    }
    CMPIStatus enum_instances(CMPIObjectPath* path, const char** properties = nullptr) {
        return mi->ft->enumerateInstances(mi, context, result, path, properties);
    }
    CMPIStatus get(CMPIObjectPath* path, const char** properties = nullptr) {
        return mi->ft->getInstance(mi, context, result, path, properties);
    }
    CMPIStatus create(CMPIObjectPath* path, CMPIInstance* instance) {
        return mi->ft->createInstance(mi, context, result, path, instance);
    }
    CMPIStatus modify(CMPIObjectPath* path, CMPIInstance* instance,
                      const char** properties = nullptr) {
        return mi->ft->modifyInstance(mi, context, result, path, instance, properties);
    }
    CMPIStatus remove(CMPIObjectPath* path) {
        return mi->ft->deleteInstance(mi, context, result, path);
    }

    // The call that ends in an operation of the provider.
    CMPIStatus run(int operation) {
        CMPIObjectPath* path = widget_path("a");
        CMPIInstance* instance = broker.instance({fake_path("a"), {}});
        switch (operation) {
        case OPERATION_GET_INSTANCE:
            return get(path);
        case OPERATION_ENUM_INSTANCES:
            return enum_instances(path);
        case OPERATION_CREATE_INSTANCE:
            return create(path, instance);
        case OPERATION_MODIFY_INSTANCE:
            return modify(path, instance);
        default:
            return remove(path);
        }
    }

    fake::Result& answer() { return fake::Broker::of(result); }
    const Widget& model() const { return *static_cast<Widget*>(script.model.get()); }
    const Widget& instance() const { return *static_cast<Widget*>(script.instance.get()); }

    CMPIInstanceMI* mi = instance_mi();
};

TEST_F(Instance_Entries_Test, StatusesBecomeReturnCodes) {
    struct Case {
        int operation;
        int status;
        CMPIrc rc;
        std::size_t data; // what the client gets of one instance that the provider has
        int done;
    };
    constexpr Case cases[] = {
        {OPERATION_GET_INSTANCE, 0, CMPI_RC_OK, 1, 1},
        {OPERATION_GET_INSTANCE, 60, CMPI_RC_ERR_NOT_FOUND, 0, 0},
        {OPERATION_GET_INSTANCE, 62, CMPI_RC_ERR_INVALID_PARAMETER, 0, 0},
        {OPERATION_GET_INSTANCE, 63, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
        {OPERATION_GET_INSTANCE, 64, CMPI_RC_ERR_FAILED, 0, 0},
        {OPERATION_GET_INSTANCE, 65, CMPI_RC_OK, 1, 1},
        {OPERATION_ENUM_INSTANCES, 0, CMPI_RC_OK, 1, 1},
        {OPERATION_ENUM_INSTANCES, 70, CMPI_RC_ERR_FAILED, 1, 0},
        {OPERATION_ENUM_INSTANCES, 71, CMPI_RC_ERR_ACCESS_DENIED, 1, 0},
        {OPERATION_ENUM_INSTANCES, 72, CMPI_RC_OK, 1, 1},
        {OPERATION_CREATE_INSTANCE, 0, CMPI_RC_OK, 1, 1},
        {OPERATION_CREATE_INSTANCE, 80, CMPI_RC_ERR_ALREADY_EXISTS, 0, 0},
        {OPERATION_CREATE_INSTANCE, 81, CMPI_RC_ERR_NOT_SUPPORTED, 0, 0},
        {OPERATION_CREATE_INSTANCE, 82, CMPI_RC_ERR_INVALID_PARAMETER, 0, 0},
        {OPERATION_CREATE_INSTANCE, 83, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
        {OPERATION_CREATE_INSTANCE, 84, CMPI_RC_ERR_FAILED, 0, 0},
        {OPERATION_CREATE_INSTANCE, 85, CMPI_RC_OK, 0, 0},
        {OPERATION_DELETE_INSTANCE, 0, CMPI_RC_OK, 0, 1},
        {OPERATION_DELETE_INSTANCE, 90, CMPI_RC_ERR_NOT_FOUND, 0, 0},
        {OPERATION_DELETE_INSTANCE, 91, CMPI_RC_ERR_NOT_SUPPORTED, 0, 0},
        {OPERATION_DELETE_INSTANCE, 92, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
        {OPERATION_DELETE_INSTANCE, 93, CMPI_RC_ERR_FAILED, 0, 0},
        {OPERATION_DELETE_INSTANCE, 94, CMPI_RC_OK, 0, 1},
        {OPERATION_MODIFY_INSTANCE, 0, CMPI_RC_OK, 1, 1},
        {OPERATION_MODIFY_INSTANCE, 100, CMPI_RC_ERR_NOT_FOUND, 0, 0},
        {OPERATION_MODIFY_INSTANCE, 101, CMPI_RC_ERR_NOT_SUPPORTED, 0, 0},
        {OPERATION_MODIFY_INSTANCE, 102, CMPI_RC_ERR_INVALID_PARAMETER, 0, 0},
        {OPERATION_MODIFY_INSTANCE, 103, CMPI_RC_ERR_ACCESS_DENIED, 0, 0},
        {OPERATION_MODIFY_INSTANCE, 104, CMPI_RC_ERR_FAILED, 0, 0},
        {OPERATION_MODIFY_INSTANCE, 105, CMPI_RC_OK, 0, 0},
    };
    script.add(widget("a"));
    script.find(widget("a"));
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.operation) + " answers " + std::to_string(c.status));
        script.status[c.operation] = c.status;
        answer() = fake::Result();
        const CMPIStatus status = run(c.operation);
        EXPECT_EQ(status.rc, c.rc);
        EXPECT_EQ(status.msg, nullptr);
        EXPECT_EQ(answer().data.size(), c.data);
        EXPECT_EQ(answer().done, c.done);
    }
}

TEST_F(Instance_Entries_Test, NamesDifferFromInstancesInUnknownStatuses) {
    script.add(widget("a"));
    const int done[] = {1, 0, 0, 0};
    const CMPIrc rcs[] = {CMPI_RC_OK, CMPI_RC_ERR_FAILED, CMPI_RC_ERR_ACCESS_DENIED, CMPI_RC_OK};
    const int statuses[] = {0, 70, 71, 72};
    for (std::size_t i = 0; i < 4; ++i) {
        script.status[OPERATION_ENUM_INSTANCES] = statuses[i];
        answer() = fake::Result();
        EXPECT_EQ(enum_names(class_path()).rc, rcs[i]);
        EXPECT_EQ(answer().data.size(), 1u);
        EXPECT_EQ(answer().done, done[i]);
    }
}

TEST_F(Instance_Entries_Test, UnknownClassesFailWithoutTheProvider) {
    CMPIInstance* some = broker.instance({fake_path("a"), {}});
    script.calls.clear();
    for (CMPIObjectPath* path :
         {class_path("Nobody"), class_path(""), broker.path({"", "", {}, true}),
          static_cast<CMPIObjectPath*>(nullptr)}) {
        EXPECT_EQ(enum_names(path).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(enum_instances(path).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(get(path).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(create(path, some).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(modify(path, some).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(remove(path).rc, CMPI_RC_ERR_FAILED);
    }
    script.calls.erase(OPERATION_GET_REPOSITORY);
    EXPECT_TRUE(script.calls.empty());
    EXPECT_EQ(answer().done, 0);
}

TEST_F(Instance_Entries_Test, AnyClassOfTheModuleIsServed) {
    EXPECT_EQ(enum_instances(class_path("sPECIAL_pART")).rc, CMPI_RC_OK);
    EXPECT_EQ(class_of(script.model.get()), &Special_Part::static_meta_class);
}

TEST_F(Instance_Entries_Test, EnumeratesNamesInTheRequestsNamespace) {
    script.add(widget("a", 1));
    script.add(widget("b", 2));
    script.instances[1]->__name_space = "root/elsewhere";
    const std::size_t before = broker.live();
    EXPECT_EQ(enum_names(class_path()).rc, CMPI_RC_OK);
    EXPECT_EQ(answer().data.size(), 2u);
    const fake::Path& path = *answer().data[1].as<fake::Path>();
    EXPECT_EQ(path.name_space, "root/test");
    EXPECT_EQ(path.class_name, "Widget");
    ASSERT_EQ(path.keys.size(), 2u);
    EXPECT_EQ(path.keys.find("Name")->text(), "b");
    EXPECT_EQ(path.keys.find("Index")->scalar.uint32, 2u);
    EXPECT_LT(broker.live(), before + 16); // nothing is left per instance

    EXPECT_EQ(model().Flag.null, 1);
    EXPECT_TRUE(model().__name_space.equal("root/test"));
}

TEST_F(Instance_Entries_Test, EnumerationKeepsNoTemporaries) {
    const auto left_by = [&](int count) {
        script.instances.clear();
        for (int i = 0; i < count; ++i) {
            Ref<Widget> one = widget("a", static_cast<uint32>(i));
            one->Text.set("some text");
            one->Texts.set(Array<String>{"x", "y"});
            one->When.set(Datetime::interval(5));
            one->Owner = part("owner").release();
            one->Inner = part("inner").release();
            script.add(std::move(one));
        }
        broker.end_scope();
        context = broker.context();
        result = broker.result();
        EXPECT_EQ(enum_instances(class_path()).rc, CMPI_RC_OK);
        EXPECT_EQ(answer().data.size(), static_cast<std::size_t>(count));
        return broker.live();
    };
    EXPECT_EQ(left_by(1), left_by(100));
}

TEST_F(Instance_Entries_Test, EnumerationModelTellsTheRestriction) {
    enum_instances(class_path());
    EXPECT_EQ(model().Flag.null, 1); // nothing restricted: as built
    EXPECT_EQ(model().Name.null, 1);

    const char* some[] = {"Flag", "tEXT", "Name", "Nonsense", nullptr};
    enum_instances(widget_path("a"), some);
    EXPECT_EQ(model().Flag.null, 0);
    EXPECT_EQ(model().Text.null, 0);
    EXPECT_EQ(model().U8.null, 1);
    EXPECT_EQ(model().Name.null, 0);
    EXPECT_TRUE(model().Name.value.equal("a"));
}

TEST_F(Instance_Entries_Test, PropertyListsFilterWhatGoesOut) {
    Ref<Widget> one = widget("a");
    one->Text.set("text");
    one->U8.set(uint8{3});
    script.add(one);
    const char* some[] = {"U8", nullptr};
    EXPECT_EQ(enum_instances(class_path(), some).rc, CMPI_RC_OK);
    const fake::Inst& out = *answer().data[0].as<fake::Inst>();
    EXPECT_EQ(out.properties.size(), 3u);
    EXPECT_NE(out.properties.find("U8"), nullptr);
    EXPECT_NE(out.properties.find("Name"), nullptr);
    EXPECT_EQ(out.properties.find("Text"), nullptr);
}

TEST_F(Instance_Entries_Test, GetModelWantsAllOrWhatIsListed) {
    script.find(widget("a"));
    get(widget_path("a", 7));
    EXPECT_EQ(model().Flag.null, 0);
    EXPECT_EQ(model().Texts.null, 0);
    EXPECT_EQ(model().Index.value, 7u);

    const char* some[] = {"Flag", "Name", nullptr};
    answer() = fake::Result();
    get(widget_path("a", 7), some);
    EXPECT_EQ(model().Flag.null, 0);
    EXPECT_EQ(model().Texts.null, 1);
    EXPECT_EQ(model().Name.null, 0);
    EXPECT_EQ(answer().data[0].as<fake::Inst>()->properties.size(), 2u); // the keys
}

TEST_F(Instance_Entries_Test, GetFallsBackToEnumeration) {
    script.status[OPERATION_GET_INSTANCE] = GET_INSTANCE_UNSUPPORTED;
    for (const char* name : {"a", "b", "c"}) {
        script.add(widget(name));
    }
    EXPECT_EQ(get(widget_path("b")).rc, CMPI_RC_OK);
    ASSERT_EQ(answer().data.size(), 1u);
    const fake::Inst& found = *answer().data[0].as<fake::Inst>();
    EXPECT_EQ(found.properties.find("Name")->text(), "b");
    EXPECT_EQ(found.path.keys.find("Name")->text(), "b"); // the request's own path

    EXPECT_EQ(get(widget_path("B")).rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(get(widget_path("b", 2)).rc, CMPI_RC_ERR_NOT_FOUND);
    script.status[OPERATION_ENUM_INSTANCES] = ENUM_INSTANCES_FAILED;
    EXPECT_EQ(get(widget_path("b")).rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(Instance_Entries_Test, GetWithoutAnInstanceFails) {
    EXPECT_EQ(get(widget_path("a")).rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(answer().done, 0);
}

TEST_F(Instance_Entries_Test, CreateAnswersThePathOfWhatTheProviderMade) {
    script.created = [](Instance& made) { static_cast<Widget&>(made).Index.set(99u); };
    fake::Inst sent{fake_path("sent"), {}};
    sent.properties.set("Name", fake::string("new"));
    sent.properties.set("Text", fake::string("t"));
    EXPECT_EQ(create(class_path(), broker.instance(sent)).rc, CMPI_RC_OK);
    EXPECT_TRUE(instance().Text.value.equal("t"));
    EXPECT_EQ(instance().Index.null, 1);
    ASSERT_EQ(answer().data.size(), 1u);
    const fake::Path& path = *answer().data[0].as<fake::Path>();
    EXPECT_EQ(path.name_space, "root/test");
    EXPECT_EQ(path.keys.find("Name")->text(), "new");
    EXPECT_EQ(path.keys.find("Index")->scalar.uint32, 99u);
}

TEST_F(Instance_Entries_Test, ModifyTellsWhichPropertiesChange) {
    fake::Inst sent{fake_path("a"), {}};
    sent.properties.set("Name", fake::string("a"));
    sent.properties.set("Text", fake::string("t"));
    sent.properties.set("U8", fake::null_of(CMPI_uint8));
    CMPIObjectPath* path = widget_path("requested", 3);
    EXPECT_EQ(modify(path, broker.instance(sent)).rc, CMPI_RC_OK);
    EXPECT_EQ(model().Flag.null, 0); // no list: all read as set
    EXPECT_EQ(model().U8.null, 0);
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

TEST_F(Instance_Entries_Test, MissingInstancesFail) {
    EXPECT_EQ(create(class_path(), nullptr).rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(modify(class_path(), nullptr).rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(script.calls[OPERATION_CREATE_INSTANCE], 0);
    EXPECT_EQ(script.calls[OPERATION_MODIFY_INSTANCE], 0);
}

TEST_F(Instance_Entries_Test, QueriesAreNotSupported) {
    EXPECT_EQ(mi->ft->execQuery(mi, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
              CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(Instance_Entries_Test, AFailureOnTheWayOutEndsTheDeliveryUnseen) {
    for (const char* name : {"a", "b", "c"}) {
        script.add(widget(name));
    }
    for (const char* call : {"newObjectPath", "newInstance"}) {
        answer() = fake::Result();
        script.closed = false;
        broker.failing = {call};
        EXPECT_EQ(enum_instances(class_path()).rc, CMPI_RC_OK);
        EXPECT_EQ(answer().data.size(), 0u);
        EXPECT_EQ(answer().done, 1);
        EXPECT_TRUE(script.closed);
    }
    broker.failing = {"setPropertyFilter"};
    const char* some[] = {"Text", nullptr};
    answer() = fake::Result();
    EXPECT_EQ(enum_instances(class_path(), some).rc, CMPI_RC_OK);
    EXPECT_EQ(answer().data.size(), 0u);
    script.find(widget("a"));
    EXPECT_EQ(get(widget_path("a"), some).rc, CMPI_RC_ERR_FAILED);
}

} // namespace
} // namespace cimple
