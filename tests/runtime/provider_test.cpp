#include "runtime/provider.h"

#include "tests/runtime/sample_classes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace cimple::sample {
namespace {

using testing::ElementsAre;

// A provider of Devices "host" 1 to 4, with what its statuses should be and what it saw.
struct Script {
    int get_status = GET_INSTANCE_UNSUPPORTED;
    bool get_stores = false;
    int enum_status = ENUM_INSTANCES_OK;
    std::vector<int> operations;
    std::vector<Instance*> delivered;
    std::vector<bool> answers;
    void* words[8] = {};
    int object = 0;
};

Script* script = nullptr;

int dispatch(const Registration* registration, int operation, void* arg0, void* arg1, void* arg2,
             void* arg3, void* arg4, void* arg5, void* arg6, void* arg7) {
    script->operations.push_back(operation);
    void* const words[8] = {arg0, arg1, arg2, arg3, arg4, arg5, arg6, arg7};
    std::copy(words, words + 8, script->words);
    switch (operation) {
    case OPERATION_GET_META_CLASS:
        *static_cast<const Meta_Class**>(arg0) = registration->meta_class;
        return 0;
    case OPERATION_GET_REPOSITORY:
        *static_cast<const Meta_Repository**>(arg0) = registration->meta_class->meta_repository;
        return 0;
    case OPERATION_CREATE_PROVIDER:
        *static_cast<void**>(arg0) = &script->object;
        return 0;
    case OPERATION_DESTROY_PROVIDER:
        return 0;
    case OPERATION_GET_INSTANCE:
        if (script->get_stores) {
            *static_cast<Instance**>(arg2) = make_device("host", 77).release();
        }
        return script->get_status;
    case OPERATION_ENUM_INSTANCES: {
        const auto proc = reinterpret_cast<Instance_Enumerator_Proc>(arg2);
        for (uint32 number = 1; number <= 4; ++number) {
            // Two with the same keys follow each other.
            Instance* instance = make_device("host", (number + 1) / 2).release();
            ref(instance);
            script->delivered.push_back(instance);
            script->answers.push_back(proc(instance, ENUM_INSTANCES_OK, arg3));
        }
        proc(nullptr, script->enum_status, arg3);
        return script->enum_status;
    }
    default:
        return OPERATION_UNKNOWN;
    }
}

const Registration registration = {"module", "Device_Provider", dispatch,
                                   &Device::static_meta_class, nullptr};

class Provider_Handle_Test : public testing::Test {
protected:
    Provider_Handle_Test() { script = &_script; }
    ~Provider_Handle_Test() override {
        for (Instance* instance : _script.delivered) {
            unref(instance);
        }
        script = nullptr;
    }

    // Counts on the delivered instances beside the test's own.
    std::vector<uint32> counts() const {
        std::vector<uint32> result;
        for (const Instance* instance : _script.delivered) {
            result.push_back(instance->__refs - 1);
        }
        return result;
    }

    Script _script;
};

TEST_F(Provider_Handle_Test, makes_and_ends_the_provider) {
    {
        const Provider_Handle handle(&registration);
        EXPECT_EQ(handle.get_meta_class(), &Device::static_meta_class);
        EXPECT_EQ(handle.get_repository(), &repository);
        EXPECT_EQ(handle.registration(), &registration);
        int words[6] = {};
        EXPECT_EQ(handle.call(OPERATION_ENUM_ASSOCIATORS, &words[0], &words[1], &words[2],
                              &words[3], &words[4], &words[5]),
                  OPERATION_UNKNOWN);
        EXPECT_THAT(_script.words, ElementsAre(&_script.object, &words[0], &words[1], &words[2],
                                               &words[3], &words[4], &words[5], nullptr));
    }
    EXPECT_EQ(_script.words[0], &_script.object);
    EXPECT_THAT(_script.operations,
                ElementsAre(OPERATION_CREATE_PROVIDER, OPERATION_GET_META_CLASS,
                            OPERATION_GET_REPOSITORY, OPERATION_ENUM_ASSOCIATORS,
                            OPERATION_DESTROY_PROVIDER));
}

TEST_F(Provider_Handle_Test, get_falls_back_to_the_first_match_of_an_enumeration) {
    const Provider_Handle handle(&registration);
    const Ref<Device> model = make_device("host", 2);
    Instance* found = nullptr;
    EXPECT_EQ(handle.get_instance(model.get(), found), GET_INSTANCE_OK);
    const Ref<Instance> keeper(found);
    ASSERT_EQ(_script.delivered.size(), 4u);
    EXPECT_EQ(found, _script.delivered[2]);
    EXPECT_THAT(counts(), ElementsAre(0, 0, 1, 0)) << "the others are released";
    EXPECT_THAT(_script.answers, ElementsAre(true, true, false, false));
}

TEST_F(Provider_Handle_Test, get_without_a_match_releases_all) {
    const Provider_Handle handle(&registration);
    Instance* found = nullptr;
    EXPECT_EQ(handle.get_instance(make_device("host", 9).get(), found), GET_INSTANCE_NOT_FOUND);
    EXPECT_THAT(counts(), ElementsAre(0, 0, 0, 0));

    // A match of an enumeration that failed is none.
    _script.enum_status = ENUM_INSTANCES_ACCESS_DENIED;
    EXPECT_EQ(handle.get_instance(make_device("host", 1).get(), found), GET_INSTANCE_NOT_FOUND);
    EXPECT_EQ(found, nullptr);
    for (const uint32 count : counts()) {
        EXPECT_EQ(count, 0u);
    }
}

TEST_F(Provider_Handle_Test, other_answers_of_get_stand) {
    const Provider_Handle handle(&registration);
    const Ref<Device> model = make_device("host", 1);
    Instance* found = nullptr;
    for (const int status :
         std::initializer_list<int>{GET_INSTANCE_NOT_FOUND, GET_INSTANCE_ACCESS_DENIED,
                                    GET_INSTANCE_FAILED, OPERATION_UNKNOWN}) {
        _script.get_status = status;
        EXPECT_EQ(handle.get_instance(model.get(), found), status);
        EXPECT_EQ(found, nullptr);
    }
    _script.get_status = GET_INSTANCE_OK;
    EXPECT_EQ(handle.get_instance(model.get(), found), GET_INSTANCE_FAILED)
        << "success without an instance";
    _script.get_stores = true;
    EXPECT_EQ(handle.get_instance(model.get(), found), GET_INSTANCE_OK);
    const Ref<Instance> keeper(found);
    EXPECT_EQ(static_cast<Device*>(found)->Number.value, 77u);
    EXPECT_TRUE(_script.delivered.empty());
}

} // namespace
} // namespace cimple::sample
