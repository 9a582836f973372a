// Classes with a feature of every kind, and a provider for them that does what a test scripts.
#ifndef TVR_TESTS_ADAPTER_FIXTURE_H
#define TVR_TESTS_ADAPTER_FIXTURE_H

#include "runtime/cmpi_adapter.h"
#include "runtime/instance.h"
#include "tests/adapter/fake_broker.h"

#include <gtest/gtest.h>

#include <filesystem>
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

struct Widget : Instance {
    static const Meta_Class static_meta_class;

    Property<String> Name;  // key
    Property<uint32> Index; // key
    Property<bool> Flag;
    Property<uint8> U8;
    Property<sint8> S8;
    Property<uint16> U16;
    Property<sint16> S16;
    Property<uint32> U32;
    Property<sint32> S32;
    Property<uint64> U64;
    Property<sint64> S64;
    Property<real32> R32;
    Property<real64> R64;
    Property<char16> C16;
    Property<String> Text;
    Property<Datetime> When;
    Property<Array<bool>> Flags;
    Property<Array<uint8>> U8s;
    Property<Array<sint8>> S8s;
    Property<Array<uint16>> U16s;
    Property<Array<sint16>> S16s;
    Property<Array<uint32>> U32s;
    Property<Array<sint32>> S32s;
    Property<Array<uint64>> U64s;
    Property<Array<sint64>> S64s;
    Property<Array<real32>> R32s;
    Property<Array<real64>> R64s;
    Property<Array<char16>> C16s;
    Property<Array<String>> Texts;
    Property<Array<Datetime>> Whens;
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
    Ref<> model;                  // copies of what came last
    Ref<> instance;
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
class Runtime_Log {
public:
    explicit Runtime_Log(const char* level = "DBG");
    ~Runtime_Log();
    Runtime_Log(const Runtime_Log&) = delete;
    Runtime_Log& operator=(const Runtime_Log&) = delete;

    std::string text() const;
    // The number of lines that have the text.
    int count(const std::string& what) const;
    bool has(const std::string& what) const { return count(what) > 0; }

private:
    std::filesystem::path _home;
};

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
