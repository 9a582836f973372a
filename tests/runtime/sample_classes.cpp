#include "tests/runtime/sample_classes.h"

#include <iterator>

// Fields of structures with a base lie where the compiler says, whatever the standard promises.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace cimple::sample {

namespace {

constexpr uint32 key = FLAG_KEY;

constexpr Meta_Property property(const char* name, Type type, std::size_t offset,
                                 uint32 flags = FLAG_READ, const void* value = nullptr) {
    return {
        {0, FLAG_PROPERTY | flags, name, nullptr, 0}, type, 0, static_cast<uint32>(offset), value};
}

constexpr Meta_Property array(const char* name, Type type, std::size_t offset,
                              uint32 flags = FLAG_READ, const void* value = nullptr) {
    Meta_Property record = property(name, type, offset, flags, value);
    record.subscript = -1;
    return record;
}

constexpr Meta_Reference reference(const char* name, const Meta_Class& target, std::size_t offset,
                                   uint32 flags = FLAG_READ, sint16 subscript = 0) {
    return {{0, FLAG_REFERENCE | flags, name, nullptr, 0},
            subscript,
            &target,
            static_cast<uint32>(offset)};
}

#define CLASS(Class, flag, super, keys)                                                            \
    const Meta_Class Class::static_meta_class = {{{0, flag, #Class, nullptr, 0},                   \
                                                  Class##_features,                                \
                                                  std::size(Class##_features),                     \
                                                  sizeof(Class)},                                  \
                                                 Class##_locals,                                   \
                                                 super,                                            \
                                                 keys,                                             \
                                                 &repository}

// Element
constexpr Meta_Property caption = property("Caption", STRING, offsetof(Element, Caption));
constexpr const Meta_Feature* Element_features[] = {&caption};
constexpr uint8 Element_locals[] = {1};

// Reset
constexpr Meta_Property force = property("Force", BOOLEAN, offsetof(Reset, Force), FLAG_IN);
constexpr Meta_Reference reset_target =
    reference("Target", Device::static_meta_class, offsetof(Reset, Target), FLAG_IN);
constexpr Meta_Property lines = array("Lines", STRING, offsetof(Reset, Lines), FLAG_OUT);
constexpr Meta_Property return_value =
    property("return_value", UINT32, offsetof(Reset, return_value), FLAG_OUT);
constexpr const Meta_Feature* Reset_features[] = {&force, &reset_target, &lines, &return_value};

// Device
constexpr uint16 enabled_state_value = 5;
constexpr const char* label_value = "unnamed";
constexpr const char* window_value = "00000001020304.000000:000";
constexpr uint16 speed_values[] = {1, 2, 4};
constexpr Default_Array speeds_value = {speed_values, std::size(speed_values)};
constexpr const char* name_values[] = {"a", "b"};
constexpr Default_Array names_value = {name_values, std::size(name_values)};
constexpr const char* delay_values[] = {"00000000000001.000000:000"};
constexpr Default_Array delays_value = {delay_values, std::size(delay_values)};

constexpr Meta_Property system_name =
    property("SystemName", STRING, offsetof(Device, SystemName), key);
constexpr Meta_Property number = property("Number", UINT32, offsetof(Device, Number), key);
constexpr Meta_Property enabled_state = property(
    "EnabledState", UINT16, offsetof(Device, EnabledState), FLAG_READ, &enabled_state_value);
constexpr Meta_Property label =
    property("Label", STRING, offsetof(Device, Label), FLAG_READ, &label_value);
constexpr Meta_Property window =
    property("Window", DATETIME, offsetof(Device, Window), FLAG_READ, &window_value);
constexpr Meta_Property speeds =
    array("Speeds", UINT16, offsetof(Device, Speeds), FLAG_READ, &speeds_value);
constexpr Meta_Property names =
    array("Names", STRING, offsetof(Device, Names), FLAG_READ, &names_value);
constexpr Meta_Property delays =
    array("Delays", DATETIME, offsetof(Device, Delays), FLAG_READ, &delays_value);
constexpr Meta_Reference peer =
    reference("Peer", Device::static_meta_class, offsetof(Device, Peer));
constexpr Meta_Reference members =
    reference("Members", Device::static_meta_class, offsetof(Device, Members), FLAG_READ, -1);
constexpr Meta_Reference anything =
    reference("Anything", Instance::static_meta_class, offsetof(Device, Anything));

#define DEVICE_FEATURES(number_record)                                                             \
    &caption, &system_name, &number_record, &enabled_state, &label, &window, &speeds, &names,      \
        &delays, &peer, &members, &anything, &Reset::static_meta_class

constexpr const Meta_Feature* Device_features[] = {DEVICE_FEATURES(number)};
constexpr uint8 Device_locals[] = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

// Port
constexpr Meta_Property slot = property("Slot", UINT8, offsetof(Port, Slot), key);
constexpr const Meta_Feature* Port_features[] = {DEVICE_FEATURES(number), &slot};
constexpr uint8 Port_locals[std::size(Port_features)] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

// Odd
constexpr Meta_Property odd_number = property("Number", UINT32, offsetof(Device, Number));
constexpr const Meta_Feature* Odd_features[] = {DEVICE_FEATURES(odd_number)};
constexpr uint8 Odd_locals[std::size(Odd_features)] = {0, 0, 1};

// Values
#define X(code, type, value, other)                                                                \
    constexpr Meta_Property scalar_##code =                                                        \
        property("scalar_" #code, code, offsetof(Values, scalar_##code));                          \
    constexpr Meta_Property array_##code =                                                         \
        array("array_" #code, code, offsetof(Values, array_##code));
SAMPLE_TYPES(X)
#undef X
constexpr const Meta_Feature* Values_features[] = {&caption,
#define X(code, type, value, other) &scalar_##code, &array_##code,
                                                   SAMPLE_TYPES(X)
#undef X
};
constexpr uint8 Values_locals[std::size(Values_features)] = {};

// Keys
#define X(code, type, value, other)                                                                \
    constexpr Meta_Property key_##code =                                                           \
        property("key_" #code, code, offsetof(Keys, key_##code), key);
SAMPLE_TYPES(X)
#undef X
constexpr const Meta_Feature* Keys_features[] = {&caption,
#define X(code, type, value, other) &key_##code,
                                                 SAMPLE_TYPES(X)
#undef X
};
constexpr uint8 Keys_locals[std::size(Keys_features)] = {};

// Codes
constexpr Meta_Property code = array("Code", REAL32, offsetof(Codes, Code), key);
constexpr const Meta_Feature* Codes_features[] = {&caption, &code};
constexpr uint8 Codes_locals[] = {0, 1};

// Link
constexpr Meta_Reference antecedent =
    reference("Antecedent", Element::static_meta_class, offsetof(Link, Antecedent), key);
constexpr Meta_Reference dependent =
    reference("Dependent", Device::static_meta_class, offsetof(Link, Dependent), key);
constexpr Meta_Reference others =
    reference("Others", Device::static_meta_class, offsetof(Link, Others), key, -1);
constexpr const Meta_Feature* Link_features[] = {&caption, &antecedent, &dependent, &others};
constexpr uint8 Link_locals[] = {0, 1, 1, 1};

// Stranger
constexpr Meta_Property stranger_system_name =
    property("SystemName", STRING, offsetof(Stranger, SystemName), key);
constexpr Meta_Property stranger_number =
    property("Number", UINT32, offsetof(Stranger, Number), key);
constexpr const Meta_Feature* Stranger_features[] = {&stranger_system_name, &stranger_number};
constexpr uint8 Stranger_locals[] = {1, 1};

constexpr const Meta_Class* classes[] = {
    &Element::static_meta_class, &Device::static_meta_class, &Port::static_meta_class,
    &Odd::static_meta_class,     &Values::static_meta_class, &Keys::static_meta_class,
    &Codes::static_meta_class,   &Link::static_meta_class,   &Stranger::static_meta_class,
};

template <class C> C* copy_or_null(const C* instance) {
    return instance != nullptr ? clone_of(instance) : nullptr;
}

} // namespace

constinit const Meta_Repository repository = {classes, std::size(classes)};

constinit const Meta_Method Reset::static_meta_class = {{{0, FLAG_METHOD, "Reset", nullptr, 0},
                                                         Reset_features,
                                                         std::size(Reset_features),
                                                         sizeof(Reset)},
                                                        UINT32};

constinit CLASS(Element, FLAG_CLASS | FLAG_ABSTRACT, nullptr, 0);
constinit CLASS(Device, FLAG_CLASS, &Element::static_meta_class, 2);
constinit CLASS(Port, FLAG_CLASS, &Device::static_meta_class, 3);
constinit CLASS(Odd, FLAG_CLASS, &Device::static_meta_class, 1);
constinit CLASS(Values, FLAG_CLASS, &Element::static_meta_class, 0);
constinit CLASS(Keys, FLAG_CLASS, &Element::static_meta_class, 14);
constinit CLASS(Codes, FLAG_CLASS, &Element::static_meta_class, 1);
constinit CLASS(Link, FLAG_ASSOCIATION, &Element::static_meta_class, 3);
constinit CLASS(Stranger, FLAG_CLASS, nullptr, 2);

Ref<Link> make_link(const Element* antecedent_end, const Device* dependent_end) {
    Ref<Link> link = make<Link>();
    link->Antecedent = copy_or_null(antecedent_end);
    link->Dependent = copy_or_null(dependent_end);
    return link;
}

} // namespace cimple::sample
