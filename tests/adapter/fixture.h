// Classes with a feature of every kind, and a provider for them that does what a test scripts.
#ifndef TVR_TESTS_ADAPTER_FIXTURE_H
#define TVR_TESTS_ADAPTER_FIXTURE_H

#include "runtime/cmpi_adapter.h"
#include "runtime/instance.h"
#include "tests/adapter/fake_broker.h"
#include "tests/runtime/test_log.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace cimple {

struct Part : Instance {
    static const Meta_Class static_meta_class;

    Property<String> Id; // key
    Property<uint32> Slot;
};

// A class below Part.
struct Special_Part : Part {
    static const Meta_Class static_meta_class;

    Property<String> Extra;
};

// The features of a Widget, one scalar and one array of each type: name, type, code, two values.
#define WIDGET_TYPES(X)                                                                            \
    X(Flag, bool, BOOLEAN, true, false)                                                            \
    X(U8, uint8, UINT8, 200, 255)                                                                  \
    X(S8, sint8, SINT8, -100, 127)                                                                 \
    X(U16, uint16, UINT16, 60000, 65535)                                                           \
    X(S16, sint16, SINT16, -30000, 32767)                                                          \
    X(U32, uint32, UINT32, 4000000001u, 4294967295u)                                               \
    X(S32, sint32, SINT32, -2000000000, 2147483647)                                                \
    X(U64, uint64, UINT64, 18000000000000000000u, 18446744073709551615u)                           \
    X(S64, sint64, SINT64, -9000000000000000000, 9223372036854775807)                              \
    X(R32, real32, REAL32, 1.5f, -0.5f)                                                            \
    X(R64, real64, REAL64, -2.25, 0.25)                                                            \
    X(C16, char16, CHAR16, char16{0x20AC}, char16{0xFFFF})                                         \
    X(Text, String, STRING, "text", "")                                                            \
    X(When, Datetime, DATETIME, Datetime(1704110400000005u, 60), Datetime::interval(5))

struct Widget : Instance {
    static const Meta_Class static_meta_class;

    Property<String> Name;  // key
    Property<uint32> Index; // key
#define X(name, type, code, sample, other)                                                         \
    Property<type> name;                                                                           \
    Property<Array<type>> name##s;
    WIDGET_TYPES(X)
#undef X
    Part* Owner;
    Part* Inner; // embedded
    Property<Array<Instance*>> Owners;
    Property<Array<Instance*>> Inners; // embedded
};

// Refers to others of its kind by its key.
struct Link : Instance {
    static const Meta_Class static_meta_class;

    Link* Next; // key
};

struct Widget_Turn : Instance {
    static const Meta_Method static_meta_class;

    Property<uint16> Angle;             // in
    Property<String> Mode;              // in, out
    Property<uint32> Turned;            // out
    Part* Target;                       // in
    Property<bool> Fast;                // in
    Property<uint64> Wide;              // in
    Property<Datetime> Start;           // in
    Part* Detail;                       // in, out, embedded
    Property<Array<Instance*>> Details; // in, embedded
    Property<uint32> return_value;
};

extern const Meta_Repository fixture_repository;
extern const Registration fixture_registration;
inline constexpr const char* provider_name = "Widget_Provider";

template <class C> Ref<C> make(bool defaults = true) {
    return Ref<C>(static_cast<C*>(create(&C::static_meta_class, defaults)));
}
Ref<Part> part(const char* id, uint32 slot = 0);
Ref<Widget> widget(const char* name, uint32 index = 1);
Ref<Widget> full_widget(); // a value in every feature

// What the provider does and what was asked of it.
struct Script {
    int alive = 0;                // provider objects
    std::map<int, int> calls;     // by operation
    std::map<int, int> status;    // answers by operation, 0 if not named
    std::vector<Ref<>> instances; // clones of these are enumerated
    Ref<> got;                    // a clone of this is what get_instance finds
    Ref<> direct;                 // a clone of this comes from all traversals of its own
    Ref<> model;                  // copies of what came last
    Ref<> instance;
    Indication_Proc indicate = nullptr; // what enable_indications got
    void* indication_data = nullptr;
    bool use_selector = false;
    int left_out = 0;    // instances, by the selector
    bool closed = false; // the enumeration's closing call was made
    // Called in each operation but 0, 1, 2 and 13 before anything else.
    std::function<void(int operation)> hook;
    std::function<void(Instance&)> created; // what create_instance fills in
    std::function<void(Widget_Turn&)> turn;

    template <class C> void add(Ref<C> added) { instances.emplace_back(added.release()); }
    template <class C> void find(Ref<C> found) { got.reset(found.release()); }
};
extern Script script;

// The runtime's log, switched on for a test.
class Runtime_Log : public Test_Log {
public:
    Runtime_Log() : Test_Log("LOG_LEVEL=DBG\n") {}

    // The number of lines that have the text.
    int count(const std::string& what) const;
    bool has(const std::string& what) const { return count(what) > 0; }
};

// "uint16:5", "string:text", "datetime:...", "boolean:1"; of a type's code "null:A0" and a pointer
// to nothing, "pointer:1600"; "list:A0,uint32:1,uint32:2"; and "ref:root/test!Part!id" and
// "inst:root/test!Part!slot" of a part.
fake::Datum datum(const std::string& text);
// The features that have values, and what the runtime logged beside its entries.
std::string told(const Instance* instance);
std::string told(const Runtime_Log& log, std::size_t& position);

// A broker, a static block and a script, all fresh. At the end the MIs that the test loaded are
// cleaned up, and no provider is left.
class Adapter_Test : public ::testing::Test {
protected:
    Adapter_Test();
    ~Adapter_Test() override;

    void* load(char kind);
    CMPIInstanceMI* instance_mi() { return static_cast<CMPIInstanceMI*>(load('I')); }
    CMPIMethodMI* method_mi() { return static_cast<CMPIMethodMI*>(load('M')); }

    CMPIObjectPath* class_path(const char* class_name = "Widget") {
        return broker.path({"root/test", class_name, {}});
    }
    CMPIObjectPath* widget_path(const char* name, uint32 index = 1) {
        return broker.path(fake_path(name, index));
    }
    static fake::Path fake_path(const char* name, uint32 index = 1) {
        fake::Path path{"root/test", "Widget", {}};
        path.keys.set("Name", fake::string(name));
        path.keys.set("Index", fake::uint32(index));
        return path;
    }

    fake::Broker broker;
    CMPIContext* context = broker.context();
    CMPIResult* result = broker.result();
    CMPI_Static_Data block{};
};

} // namespace cimple

#endif
