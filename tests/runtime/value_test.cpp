#include "runtime/value.h"

#include "tests/runtime/sample_classes.h"
#include "tests/runtime/test_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace cimple::sample {
namespace {

using testing::EndsWith;

// Of the class Device.
const Meta_Feature* feature(const char* name) {
    const Meta_Feature* found = find_feature(&Device::static_meta_class, name, ALL_FEATURES);
    EXPECT_NE(found, nullptr) << name;
    return found;
}

TEST(Value, kinds_have_codes_and_names) {
    Value value;
// NOLINTBEGIN(bugprone-macro-parentheses): a type can't stand in parentheses
#define X(code, type_, sample, other)                                                              \
    value.set(sample);                                                                             \
    EXPECT_EQ(value.type(), code);                                                                 \
    EXPECT_TRUE(*value.get<type_>() == (sample));                                                  \
    EXPECT_EQ(value.get<Array<type_>>(), nullptr);                                                 \
    value.set(Array<type_>{(sample), (other)});                                                    \
    EXPECT_EQ(value.type(), 128 + (code));                                                         \
    EXPECT_EQ(Value::kind_name(128 + (code)), std::string(type_name(code)) + "_array");            \
    value.set_null_of(code);                                                                       \
    EXPECT_TRUE(value.null() && *value.get<type_>() == type_{});
    SAMPLE_TYPES(X)
#undef X
    // NOLINTEND(bugprone-macro-parentheses)
    for (const sint32 kind : {-2, 15, 127, 143, 100000}) {
        EXPECT_STREQ(Value::kind_name(kind), "unknown");
        value.set_null_of(kind);
        EXPECT_EQ(value.type(), Value::NONE);
    }
}

TEST(Value, holds_a_count_on_each_instance) {
    const Ref<Device> device = make_device("host", 1);
    {
        ref(device.get());
        Value value;
        value.set(device.get());
        EXPECT_EQ(value.type(), Value::INSTANCE);
        EXPECT_EQ(device->__refs, 2u);
        const Value copy(value);
        EXPECT_EQ(device->__refs, 3u);
        Value moved(std::move(value));
        EXPECT_EQ(device->__refs, 3u);
        EXPECT_EQ(value.type(), Value::NONE); // NOLINT: a moved-from value is a cleared one
        moved.set(uint8{1});
        EXPECT_EQ(device->__refs, 2u);
        EXPECT_EQ(moved.instance(), nullptr);

        ref(device.get());
        ref(device.get());
        moved.set(Array<Instance*>{device.get(), nullptr, device.get()});
        EXPECT_EQ(device->__refs, 4u);
    }
    EXPECT_EQ(device->__refs, 1u);
}

TEST(Value, references_get_counts_of_their_own) {
    const Ref<Device> device = make_device("host", 1);
    const Ref<Port> port = make_device<Port>("host", 2);
    const Meta_Feature* peer = feature("Peer");
    const Meta_Feature* members = feature("Members");

    Value value;
    ref(port.get());
    value.set(port.get());
    EXPECT_EQ(Value::set(value, device.get(), peer), 0);
    EXPECT_EQ(Value::set(value, device.get(), peer), 0) << "the same target again";
    EXPECT_EQ(port->__refs, 3u);

    Value read;
    EXPECT_EQ(Value::get(read, device.get(), peer), 0);
    EXPECT_EQ(port->__refs, 4u);
    value.set_null_of(Value::INSTANCE);
    EXPECT_EQ(Value::set(value, device.get(), peer), 0);
    EXPECT_EQ(device->Peer, nullptr);
    read.clear();
    EXPECT_EQ(port->__refs, 1u);

    ref(port.get());
    value.set(Array<Instance*>{port.get(), nullptr});
    EXPECT_EQ(Value::set(value, device.get(), members), 0);
    EXPECT_EQ(Value::get(read, device.get(), members), 0);
    EXPECT_EQ(Value::set(read, device.get(), members), 0);
    EXPECT_EQ(port->__refs, 4u) << "the counts of the old elements are dropped";
    read.set_null_of(Value::INSTANCE_ARRAY);
    EXPECT_EQ(Value::set(read, device.get(), members), 0);
    EXPECT_EQ(port->__refs, 2u);
}

TEST(Value, refusals_are_logged_and_change_nothing) {
    Test_Log log("LOG_LEVEL=WARN\n");
    const Ref<Device> device = make_device("host", 1);
    device->Members.value.append(make_device("m", 1).release());
    const Instance* member = device->Members.value[0];

    Value text;
    text.set(String("text"));
    const auto set = [&](const Value& value, const Meta_Feature* to) {
        return Value::set(value, device.get(), to);
    };
    EXPECT_EQ(Value::set(text, nullptr, feature("Label")), -1);
    EXPECT_EQ(set(text, feature("number")), -1);
    EXPECT_EQ(set(text, feature("Peer")), -1);
    EXPECT_EQ(set(text, &Reset::static_meta_class), -1);
    Value stranger;
    stranger.set(make<Stranger>().release());
    EXPECT_EQ(set(stranger, feature("Peer")), -1);
    EXPECT_EQ(set(stranger, feature("Anything")), 0);
    Value strangers;
    strangers.set(Array<Instance*>{nullptr, make<Stranger>().release()});
    EXPECT_EQ(set(strangers, feature("Members")), -1);
    EXPECT_EQ(device->Number.value, 1u);
    EXPECT_EQ(device->Peer, nullptr);
    ASSERT_EQ(device->Members.value.size(), 1u);
    EXPECT_EQ(device->Members.value[0], member);
    EXPECT_THAT(
        log.lines(),
        testing::ElementsAre(
            EndsWith("): null instance argument"), EndsWith("): type mismatch: Device.Number"),
            EndsWith("): type mismatch: Device.Peer"), EndsWith("): type mismatch: Device.Reset"),
            EndsWith("): failed to assign instance of Stranger to Device.Peer"),
            EndsWith("): failed to assign instance of Stranger to Device.Members")));
}

} // namespace
} // namespace cimple::sample
