#include "tests/runtime/sample_classes.h"

#include "tests/runtime/meta_records.h"

namespace cimple::sample {

namespace {

constexpr uint16 enabled_state = 5;
constexpr const char* label = "unnamed";
constexpr const char* window = "00000001020304.000000:000";
constexpr uint16 speed_values[] = {1, 2, 4};
constexpr Default_Array speeds = {speed_values, std::size(speed_values)};
constexpr const char* name_values[] = {"a", "b"};
constexpr Default_Array names = {name_values, std::size(name_values)};
constexpr const char* delay_values[] = {"00000000000001.000000:000"};
constexpr Default_Array delays = {delay_values, std::size(delay_values)};

SCALAR(Element, Caption, STRING, 0);
SCALAR(Reset, return_value, UINT32, FLAG_OUT);
SCALAR(Device, SystemName, STRING, FLAG_KEY);
SCALAR(Device, Number, UINT32, FLAG_KEY);
SCALAR(Device, EnabledState, UINT16, 0, &enabled_state);
SCALAR(Device, Label, STRING, 0, &label);
SCALAR(Device, Window, DATETIME, 0, &window);
ARRAY_OF(Device, Speeds, UINT16, 0, &speeds);
ARRAY_OF(Device, Names, STRING, 0, &names);
ARRAY_OF(Device, Delays, DATETIME, 0, &delays);
REFERENCE(Device, Peer, Device, 0, 0);
REFERENCE(Device, Members, Device, 0, -1);
REFERENCE(Device, Anything, Instance, 0, 0);
SCALAR(Port, Slot, UINT8, FLAG_KEY);
SCALAR(Odd, Number, UINT32, 0);
ARRAY_OF(Codes, Code, REAL32, FLAG_KEY);
REFERENCE(Link, Antecedent, Element, FLAG_KEY, 0);
REFERENCE(Link, Dependent, Device, FLAG_KEY, 0);
REFERENCE(Link, Others, Device, FLAG_KEY, -1);
SCALAR(Stranger, SystemName, STRING, FLAG_KEY);
SCALAR(Stranger, Number, UINT32, FLAG_KEY);
#define X(code, type, value, other)                                                                \
    SCALAR(Values, scalar_##code, code, 0);                                                        \
    ARRAY_OF(Values, array_##code, code, 0);                                                       \
    SCALAR(Keys, key_##code, code, FLAG_KEY);
SAMPLE_TYPES(X)
#undef X

using Features = const Meta_Feature* const[];
// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a name whose address is taken
#define DEVICE_FEATURES(number)                                                                    \
    &Element_Caption, &Device_SystemName, &number, &Device_EnabledState, &Device_Label,            \
        &Device_Window, &Device_Speeds, &Device_Names, &Device_Delays, &Device_Peer,               \
        &Device_Members, &Device_Anything, &Reset::static_meta_class
// NOLINTEND(bugprone-macro-parentheses)

constexpr Features Element_features = {&Element_Caption};
constexpr Features Reset_features = {&Reset_return_value};
constexpr Features Device_features = {DEVICE_FEATURES(Device_Number)};
constexpr Features Port_features = {DEVICE_FEATURES(Device_Number), &Port_Slot};
constexpr Features Odd_features = {DEVICE_FEATURES(Odd_Number)};
#define X(code, type, value, other) , &Values_scalar_##code, &Values_array_##code
constexpr Features Values_features = {&Element_Caption SAMPLE_TYPES(X)};
#undef X
#define X(code, type, value, other) , &Keys_key_##code
constexpr Features Keys_features = {&Element_Caption SAMPLE_TYPES(X)};
#undef X
constexpr Features Codes_features = {&Element_Caption, &Codes_Code};
constexpr Features Link_features = {&Element_Caption, &Link_Antecedent, &Link_Dependent,
                                    &Link_Others};
constexpr Features Stranger_features = {&Stranger_SystemName, &Stranger_Number};

constexpr const Meta_Class* classes[] = {
    &Element::static_meta_class, &Device::static_meta_class, &Port::static_meta_class,
    &Odd::static_meta_class,     &Values::static_meta_class, &Keys::static_meta_class,
    &Codes::static_meta_class,   &Link::static_meta_class,   &Stranger::static_meta_class,
};

} // namespace

constinit const Meta_Repository repository = {classes, std::size(classes)};
constinit const Meta_Method Reset::static_meta_class =
    method_record<Reset>("Reset", Reset_features);

#define CLASS(Class, flags, parent, keys)                                                          \
    constinit const Meta_Class Class::static_meta_class =                                          \
        class_record<Class>(#Class, flags, Class##_features, parent, keys, repository)
CLASS(Element, FLAG_CLASS | FLAG_ABSTRACT, nullptr, 0);
CLASS(Device, FLAG_CLASS, &Element::static_meta_class, 2);
CLASS(Port, FLAG_CLASS, &Device::static_meta_class, 3);
CLASS(Odd, FLAG_CLASS, &Device::static_meta_class, 1);
CLASS(Values, FLAG_CLASS, &Element::static_meta_class, 0);
CLASS(Keys, FLAG_CLASS, &Element::static_meta_class, 14);
CLASS(Codes, FLAG_CLASS, &Element::static_meta_class, 1);
CLASS(Link, FLAG_ASSOCIATION, &Element::static_meta_class, 3);
CLASS(Stranger, FLAG_CLASS, nullptr, 2);

Ref<Link> make_link(const Element* antecedent, const Device* dependent) {
    Ref<Link> link = make<Link>();
    link->Antecedent = antecedent != nullptr ? clone_of(antecedent) : nullptr;
    link->Dependent = dependent != nullptr ? clone_of(dependent) : nullptr;
    return link;
}

} // namespace cimple::sample
