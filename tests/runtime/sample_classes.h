// A small class model, written by hand, that has every shape the metadata can describe.
//
//   Element                 abstract, no keys
//     Device                keys SystemName, Number; defaults; references; the method Reset
//       Port                one key more
//       Odd                 Number is no key any more: a class that breaks the rule of its parent
//     Values                a scalar and an array of each type, no keys
//     Keys                  a key of each type
//     Codes                 a key array
//     Link                  association: keys to an Element, to a Device, and to an array of
//     Devices
//   Stranger                another hierarchy with the keys of Device
#ifndef TVR_TESTS_RUNTIME_SAMPLE_CLASSES_H
#define TVR_TESTS_RUNTIME_SAMPLE_CLASSES_H

#include "runtime/instance.h"

// Every type: code, C++ type, a sample value, another value.
#define SAMPLE_TYPES(X)                                                                            \
    X(BOOLEAN, bool, true, false)                                                                  \
    X(UINT8, uint8, uint8{200}, uint8{201})                                                        \
    X(SINT8, sint8, sint8{-100}, sint8{100})                                                       \
    X(UINT16, uint16, uint16{60000}, uint16{60001})                                                \
    X(SINT16, sint16, sint16{-30000}, sint16{30000})                                               \
    X(UINT32, uint32, 4000000000u, 4000000001u)                                                    \
    X(SINT32, sint32, -2000000000, 2000000000)                                                     \
    X(UINT64, uint64, 18000000000000000000u, 18000000000000000001u)                                \
    X(SINT64, sint64, -9000000000000000000, 9000000000000000000)                                   \
    X(REAL32, real32, 1.5f, -2.25f)                                                                \
    X(REAL64, real64, -0.125, 1e300)                                                               \
    X(CHAR16, char16, char16{'x'}, char16{'y'})                                                    \
    X(STRING, String, String("one"), String("two"))                                                \
    X(DATETIME, Datetime, Datetime::interval(90061000005u), Datetime::interval(1u))

namespace cimple::sample {

struct Element : Instance {
    Property<String> Caption;

    static const Meta_Class static_meta_class;
};

struct Device : Element {
    Property<String> SystemName;
    Property<uint32> Number;
    Property<uint16> EnabledState;    // 5
    Property<String> Label;           // "unnamed"
    Property<Datetime> Window;        // 1 day, 2 hours, 3 minutes, 4 seconds
    Property<Array<uint16>> Speeds;   // 1, 2, 4
    Property<Array<String>> Names;    // "a", "b"
    Property<Array<Datetime>> Delays; // 1 s
    Device* Peer;
    Property<Array<Instance*>> Members; // of Device
    Instance* Anything;

    static const Meta_Class static_meta_class;
};

// A call of Device::Reset.
struct Reset : Instance {
    Property<uint32> return_value;

    static const Meta_Method static_meta_class;
};

struct Port : Device {
    Property<uint8> Slot;

    static const Meta_Class static_meta_class;
};

struct Odd : Device {
    static const Meta_Class static_meta_class;
};

struct Values : Element {
// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a type
#define X(code, type, value, other)                                                                \
    Property<type> scalar_##code;                                                                  \
    Property<Array<type>> array_##code;
    SAMPLE_TYPES(X)
#undef X
    // NOLINTEND(bugprone-macro-parentheses)

    static const Meta_Class static_meta_class;
};

struct Keys : Element {
#define X(code, type, value, other) Property<type> key_##code;
    SAMPLE_TYPES(X)
#undef X

    static const Meta_Class static_meta_class;
};

struct Codes : Element {
    Property<Array<real32>> Code;

    static const Meta_Class static_meta_class;
};

struct Link : Element {
    Element* Antecedent;
    Device* Dependent;
    Property<Array<Instance*>> Others;

    static const Meta_Class static_meta_class;
};

struct Stranger : Instance {
    Property<String> SystemName;
    Property<uint32> Number;

    static const Meta_Class static_meta_class;
};

extern const Meta_Repository repository;

template <class C> Ref<C> make(bool defaults = true) {
    return Ref<C>(static_cast<C*>(create(&C::static_meta_class, defaults)));
}

// A Device, or one of a class below it, with its keys.
template <class C = Device> Ref<C> make_device(const char* system_name, uint32 number) {
    Ref<C> device = make<C>();
    device->SystemName.set(system_name);
    device->Number.set(number);
    return device;
}

// A Link with clones of its ends; null leaves an end out.
Ref<Link> make_link(const Element* antecedent, const Device* dependent);

} // namespace cimple::sample

#endif
