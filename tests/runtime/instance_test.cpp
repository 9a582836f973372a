#include "runtime/instance.h"

#include "tests/runtime/sample_classes.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace cimple::sample {
namespace {

const Meta_Class& device_class = Device::static_meta_class;

std::string model_path(const Instance* instance) {
    String path("unchanged");
    const int result = instance_to_model_path(instance, path);
    EXPECT_TRUE(result == 0 || path == "unchanged");
    return result == 0 ? path.c_str() : "";
}

TEST(Meta, lookups_fold_case_and_subclasses_go_by_address_or_name) {
    EXPECT_EQ(find_meta_class(&repository, "dEVICE"), &device_class);
    EXPECT_EQ(find_feature(&device_class, "NUMBER", METHODS | REFERENCES), nullptr);
    EXPECT_NE(find_feature(&device_class, "NUMBER", PROPERTIES), nullptr);
    EXPECT_TRUE(is_subclass(&Element::static_meta_class, &Port::static_meta_class));
    EXPECT_FALSE(is_subclass(&Port::static_meta_class, &device_class));
    EXPECT_TRUE(is_subclass(&Instance::static_meta_class, &Stranger::static_meta_class));

    Meta_Class same_name = Stranger::static_meta_class;
    same_name.name = "DEVICE";
    EXPECT_TRUE(is_subclass(&device_class, &same_name));
    EXPECT_FALSE(is_subclass(&device_class, nullptr));
    EXPECT_FALSE(is_a<Device>(nullptr));
}

TEST(Instance, with_defaults_holds_them_and_is_null_elsewhere) {
    const Ref<Device> device = make<Device>();
    EXPECT_EQ(device->EnabledState.value, 5u);
    EXPECT_EQ(device->Label.value, "unnamed");
    EXPECT_EQ(device->Window.value.ascii(), "00000001020304.000000:000");
    EXPECT_TRUE((device->Speeds.value == Array<uint16>{1, 2, 4}));
    EXPECT_TRUE((device->Names.value == Array<String>{"a", "b"}));
    EXPECT_TRUE((device->Delays.value == Array<Datetime>{Datetime::interval(1000000)}));

    EXPECT_TRUE(device->SystemName.is_null() && device->Number.is_null());
    EXPECT_EQ(device->Peer, nullptr);
    EXPECT_FALSE(device->Members.is_null()) << "a reference array starts empty, not null";
    EXPECT_TRUE(device->Members.value.empty());

    // Without defaults all reads as zero and not null.
    const Ref<Values> values = make<Values>(false);
    const Ref<Values> nulls = make<Values>(true);
// NOLINTBEGIN(bugprone-macro-parentheses): a type can't stand in parentheses
#define X(code, type, value_, other)                                                               \
    EXPECT_FALSE(values->scalar_##code.is_null() || values->array_##code.is_null());               \
    EXPECT_TRUE(nulls->scalar_##code.is_null() && nulls->array_##code.is_null());                  \
    EXPECT_TRUE(values->scalar_##code.value == (type{}) && values->array_##code.value.empty());
    SAMPLE_TYPES(X)
#undef X
    // NOLINTEND(bugprone-macro-parentheses)
}

TEST(Instance, a_clone_shares_texts_and_nothing_else) {
    Ref<Device> device = make_device("host", 1);
    device->__name_space = "root/a";
    device->Peer = make_device("peer", 2).release();
    device->Members.value.append(make_device("member", 3).release());
    device->Members.value.append(nullptr);
    ref(device.get());

    const Ref<Device> copy(clone_of(device.get()));
    unref(device.get());
    EXPECT_EQ(copy->__refs, 1u);
    EXPECT_TRUE(copy->SystemName.value.same_block(device->SystemName.value));
    copy->Peer->SystemName.set("changed");
    copy->Speeds.value.append(8);
    static_cast<Device*>(copy->Members.value[0])->Number.set(30);
    EXPECT_EQ(device->Peer->SystemName.value, "peer");
    EXPECT_EQ(device->Speeds.value.size(), 3u);
    EXPECT_EQ(static_cast<Device*>(device->Members.value[0])->Number.value, 3u);
    ASSERT_EQ(copy->Members.value.size(), 2u);
    EXPECT_EQ(copy->Members.value[1], nullptr);
}

TEST(Instance, lives_until_its_last_count) {
    // An instance that a field holds outlives its holder as long as somebody counts it.
    Ref<Device> peer = make_device("peer", 1);
    Ref<Device> holder = make_device("holder", 1);
    ref(peer.get());
    holder->Peer = peer.get();
    destroy(holder.release());
    EXPECT_EQ(peer->__refs, 1u);
    EXPECT_EQ(peer->SystemName.value, "peer");

    Ref<Device> second(peer);
    Ref<Device> third(std::move(second));
    second = third;
    ref(peer.get());
    third.reset(peer.get());
    EXPECT_EQ(peer->__refs, 3u);
}

TEST(Instance, property_list_becomes_null_flags) {
    const Ref<Device> device = make_device("host", 1);
    const char* none[] = {nullptr};
    EXPECT_EQ(filter_properties(device.get(), none, true), 0);
    EXPECT_FALSE(device->SystemName.is_null());
    EXPECT_TRUE(device->EnabledState.is_null() && device->Speeds.is_null());
    EXPECT_FALSE(device->Members.is_null()) << "references keep their flags";
    EXPECT_EQ(filter_properties(device.get(), none, false), 0);
    EXPECT_TRUE(device->SystemName.is_null());

    device->Members.null = 1;
    const char* some[] = {"SYSTEMNAME", "unknown", "label", "Peer", "members", nullptr};
    EXPECT_EQ(filter_properties(device.get(), some, false), 0);
    EXPECT_TRUE(device->SystemName.is_null()) << "a key's flag isn't the list's to change";
    EXPECT_FALSE(device->Label.is_null() || device->Members.is_null());
    EXPECT_TRUE(device->EnabledState.is_null());
    ASSERT_NE(device->Peer, nullptr) << "a wanted reference gets a placeholder";
    const Device* placeholder = device->Peer;
    EXPECT_EQ(filter_properties(device.get(), some, false), 0);
    EXPECT_EQ(device->Peer, placeholder);

    const char* with_method[] = {"Label", "Reset", "EnabledState", nullptr};
    EXPECT_EQ(filter_properties(device.get(), with_method, true), -1);
    EXPECT_TRUE(device->EnabledState.is_null()) << "the walk ends at the method";
    EXPECT_EQ(filter_properties(device.get(), nullptr, true), 0);
    EXPECT_FALSE(device->SystemName.is_null() || device->EnabledState.is_null());
}

TEST(Instance, name_space_reaches_all_that_is_referred_to) {
    const Ref<Device> device = make_device("host", 1);
    device->Peer = make_device("peer", 2).release();
    device->Peer->__name_space = "root/own";
    device->Peer->Members.value.append(nullptr);
    device->Peer->Members.value.append(make_device("member", 3).release());
    const Instance* member = device->Peer->Members.value[1];

    set_name_space_recursive(device.get(), "root/a", false);
    EXPECT_EQ(device->Peer->__name_space, "root/own");
    EXPECT_EQ(member->__name_space, "root/a");

    set_name_space_recursive(device.get(), "root/b", true);
    EXPECT_EQ(device->Peer->__name_space, "root/b");
    EXPECT_EQ(member->__name_space, "root/b");
}

TEST(Key_Equality, is_by_keys_alone_and_to_the_letter) {
    const Ref<Device> a = make_device("host", 1);
    const Ref<Device> b(clone_of(a.get()));
    b->__name_space = "root/other";
    b->Label.set("another label");
    EXPECT_TRUE(key_eq(a.get(), b.get()));
    b->SystemName.set("HOST");
    EXPECT_FALSE(key_eq(a.get(), b.get()));

    EXPECT_TRUE(key_eq(make<Device>().get(), make<Device>().get())) << "untouched NULL keys";
    const Ref<Device> null_key(clone_of(a.get()));
    null_key->Number.null = 1;
    EXPECT_FALSE(key_eq(a.get(), null_key.get()));
    const Ref<Device> other_null(clone_of(null_key.get()));
    other_null->Number.value = 99;
    EXPECT_FALSE(key_eq(null_key.get(), other_null.get())) << "values count under a null flag";

    EXPECT_TRUE(key_eq(make<Values>().get(), a.get())) << "a class without keys equals anything";

    // In a hierarchy the first one's class decides.
    const Ref<Port> port = make_device<Port>("host", 1);
    EXPECT_TRUE(key_eq(a.get(), port.get()));
    EXPECT_FALSE(key_eq(port.get(), a.get())) << "a Device has no Slot";
    const Ref<Odd> odd = make_device<Odd>("host", 2);
    EXPECT_TRUE(key_eq(odd.get(), a.get())) << "Number is no key of Odd";
    EXPECT_FALSE(key_eq(a.get(), odd.get()));
}

TEST(Key_Equality, covers_every_type) {
    const auto fresh = [] {
        Ref<Keys> keys = make<Keys>();
#define X(code, type, sample, other) keys->key_##code.set(sample);
        SAMPLE_TYPES(X)
#undef X
        return keys;
    };
    const Ref<Keys> a = fresh();
    EXPECT_TRUE(key_eq(a.get(), fresh().get()));
#define X(code, type, sample, other)                                                               \
    {                                                                                              \
        const Ref<Keys> b = fresh();                                                               \
        b->key_##code.set(other);                                                                  \
        EXPECT_FALSE(key_eq(a.get(), b.get())) << #code;                                           \
    }
    SAMPLE_TYPES(X)
#undef X
    const Ref<Keys> zero = fresh();
    const Ref<Keys> minus_zero = fresh();
    zero->key_REAL64.set(0.0);
    minus_zero->key_REAL64.set(-0.0);
    EXPECT_TRUE(key_eq(zero.get(), minus_zero.get()));
    zero->key_REAL64.set(std::numeric_limits<real64>::quiet_NaN());
    EXPECT_FALSE(key_eq(zero.get(), zero.get()));

    const Ref<Codes> codes = make<Codes>();
    const Ref<Codes> other_codes = make<Codes>();
    codes->Code.set(Array<real32>{1, 0});
    other_codes->Code.set(Array<real32>{1, -0.0f});
    EXPECT_TRUE(key_eq(codes.get(), other_codes.get()));
    other_codes->Code.value.append(2);
    EXPECT_FALSE(key_eq(codes.get(), other_codes.get()));
}

TEST(Key_Equality, follows_references) {
    const Ref<Device> one = make_device("host", 1);
    const Ref<Device> two = make_device("host", 2);
    const Ref<Port> port = make_device<Port>("host", 1);
    const Ref<Link> link = make_link(one.get(), two.get());
    EXPECT_TRUE(key_eq(link.get(), make_link(one.get(), two.get()).get()));
    EXPECT_FALSE(key_eq(link.get(), make_link(one.get(), nullptr).get()));
    EXPECT_TRUE(key_eq(link.get(), make_link(port.get(), two.get()).get()));
    EXPECT_FALSE(key_eq(make_link(port.get(), two.get()).get(), link.get()));

    const Ref<Link> with_others = make_link(one.get(), two.get());
    with_others->Others.value.append(make_device("x", 1).release());
    EXPECT_TRUE(key_eq(link.get(), with_others.get())) << "arrays of references are passed over";
}

TEST(Model_Path, writes_each_type_in_its_form) {
    const Ref<Keys> keys = make<Keys>();
#define X(code, type, sample, other) keys->key_##code.set(sample);
    SAMPLE_TYPES(X)
#undef X
    keys->key_STRING.set("a\"b,c");
    EXPECT_EQ(model_path(keys.get()),
              "Keys.key_BOOLEAN=true,key_UINT8=200,key_SINT8=-100,key_UINT16=60000,"
              "key_SINT16=-30000,key_UINT32=4000000000,key_SINT32=-2000000000,"
              "key_UINT64=18000000000000000000,key_SINT64=-9000000000000000000,"
              "key_REAL32=1.500000,key_REAL64=-0.125000,key_CHAR16='x',key_STRING=\"a\"b,c\","
              "key_DATETIME=00000001010101.000005:000");
    keys->key_REAL64.set(-std::numeric_limits<real64>::max());
    EXPECT_NE(model_path(keys.get()).find("858368.000000,key_CHAR16"), std::string::npos);
}

TEST(Model_Path, quotes_nested_paths) {
    const Ref<Device> one = make_device("h", 1);
    const Ref<Device> two = make_device("i", 2);
    const Ref<Link> link = make_link(one.get(), two.get());
    EXPECT_EQ(model_path(one.get()), "Device.SystemName=\"h\",Number=1");
    EXPECT_EQ(model_path(make<Values>().get()), "") << "no keys";
    EXPECT_EQ(model_path(link.get()), "") << "Others is an array";

    Meta_Class without_array = Link::static_meta_class;
    without_array.num_meta_features = 3;
    link->__meta_class = &without_array;
    EXPECT_EQ(model_path(link.get()), "Link.Antecedent=\"Device.SystemName=\\\"h\\\",Number=1\","
                                      "Dependent=\"Device.SystemName=\\\"i\\\",Number=2\"");
    link->Dependent->Number.null = 1;
    EXPECT_EQ(model_path(link.get()), "");
    link->__meta_class = &Link::static_meta_class;
}

} // namespace
} // namespace cimple::sample
