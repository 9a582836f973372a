#include "tests/adapter/fixture.h"

#include "runtime/log.h"

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <strings.h>
#include <unistd.h>

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace cimple {

namespace {

constexpr Meta_Property property(const char* name, uint32 flags, Type type, sint16 subscript,
                                 std::size_t offset) {
    return {{0, FLAG_PROPERTY | FLAG_READ | flags, name, nullptr, 0},
            static_cast<uint16>(type),
            subscript,
            static_cast<uint32>(offset),
            nullptr};
}
constexpr Meta_Reference reference(const char* name, uint32 flags, sint16 subscript,
                                   const Meta_Class* meta_class, std::size_t offset) {
    return {{0, FLAG_REFERENCE | flags, name, nullptr, 0},
            subscript,
            meta_class,
            static_cast<uint32>(offset)};
}

#define SCALAR(structure, name, flags, type)                                                       \
    const Meta_Property structure##_##name =                                                       \
        property(#name, flags, type, 0, offsetof(structure, name))
#define ARRAY_OF(structure, name, type)                                                            \
    const Meta_Property structure##_##name = property(#name, 0, type, -1, offsetof(structure, name))
#define REFERENCE(structure, name, flags, target, subscript)                                       \
    const Meta_Reference structure##_##name =                                                      \
        reference(#name, flags, subscript, &target::static_meta_class, offsetof(structure, name))

SCALAR(Part, Id, FLAG_KEY, STRING);
SCALAR(Part, Slot, 0, UINT32);
SCALAR(Special_Part, Extra, 0, STRING);
REFERENCE(Link, Next, FLAG_KEY, Link, 0);

SCALAR(Widget, Name, FLAG_KEY, STRING);
SCALAR(Widget, Index, FLAG_KEY, UINT32);
SCALAR(Widget, Flag, 0, BOOLEAN);
SCALAR(Widget, U8, 0, UINT8);
SCALAR(Widget, S8, 0, SINT8);
SCALAR(Widget, U16, 0, UINT16);
SCALAR(Widget, S16, 0, SINT16);
SCALAR(Widget, U32, 0, UINT32);
SCALAR(Widget, S32, 0, SINT32);
SCALAR(Widget, U64, 0, UINT64);
SCALAR(Widget, S64, 0, SINT64);
SCALAR(Widget, R32, 0, REAL32);
SCALAR(Widget, R64, 0, REAL64);
SCALAR(Widget, C16, 0, CHAR16);
SCALAR(Widget, Text, 0, STRING);
SCALAR(Widget, When, 0, DATETIME);
ARRAY_OF(Widget, Flags, BOOLEAN);
ARRAY_OF(Widget, U8s, UINT8);
ARRAY_OF(Widget, S8s, SINT8);
ARRAY_OF(Widget, U16s, UINT16);
ARRAY_OF(Widget, S16s, SINT16);
ARRAY_OF(Widget, U32s, UINT32);
ARRAY_OF(Widget, S32s, SINT32);
ARRAY_OF(Widget, U64s, UINT64);
ARRAY_OF(Widget, S64s, SINT64);
ARRAY_OF(Widget, R32s, REAL32);
ARRAY_OF(Widget, R64s, REAL64);
ARRAY_OF(Widget, C16s, CHAR16);
ARRAY_OF(Widget, Texts, STRING);
ARRAY_OF(Widget, Whens, DATETIME);
REFERENCE(Widget, Owner, 0, Part, 0);
REFERENCE(Widget, Inner, FLAG_EMBEDDED_INSTANCE, Part, 0);
REFERENCE(Widget, Owners, 0, Part, -1);
REFERENCE(Widget, Inners, FLAG_EMBEDDED_OBJECT, Part, -1);

SCALAR(Widget_Turn, Angle, FLAG_IN, UINT16);
SCALAR(Widget_Turn, Mode, FLAG_IN | FLAG_OUT, STRING);
SCALAR(Widget_Turn, Turned, FLAG_OUT, UINT32);
REFERENCE(Widget_Turn, Target, FLAG_IN, Part, 0);
SCALAR(Widget_Turn, Fast, FLAG_IN, BOOLEAN);
SCALAR(Widget_Turn, Wide, FLAG_IN, UINT64);
SCALAR(Widget_Turn, Start, FLAG_IN, DATETIME);
REFERENCE(Widget_Turn, Detail, FLAG_IN | FLAG_OUT | FLAG_EMBEDDED_INSTANCE, Part, 0);
REFERENCE(Widget_Turn, Details, FLAG_IN | FLAG_EMBEDDED_INSTANCE, Part, -1);
SCALAR(Widget_Turn, return_value, FLAG_OUT, UINT32);

const Meta_Feature* const turn_features[] = {
    &Widget_Turn_Angle,   &Widget_Turn_Mode,         &Widget_Turn_Turned, &Widget_Turn_Target,
    &Widget_Turn_Fast,    &Widget_Turn_Wide,         &Widget_Turn_Start,  &Widget_Turn_Detail,
    &Widget_Turn_Details, &Widget_Turn_return_value,
};
const Meta_Feature* const part_features[] = {&Part_Id, &Part_Slot};
const Meta_Feature* const special_part_features[] = {&Part_Id, &Part_Slot, &Special_Part_Extra};
const Meta_Feature* const link_features[] = {&Link_Next};
const Meta_Feature* const widget_features[] = {
    &Widget_Name,  &Widget_Index, &Widget_Flag,   &Widget_U8,     &Widget_S8,
    &Widget_U16,   &Widget_S16,   &Widget_U32,    &Widget_S32,    &Widget_U64,
    &Widget_S64,   &Widget_R32,   &Widget_R64,    &Widget_C16,    &Widget_Text,
    &Widget_When,  &Widget_Flags, &Widget_U8s,    &Widget_S8s,    &Widget_U16s,
    &Widget_S16s,  &Widget_U32s,  &Widget_S32s,   &Widget_U64s,   &Widget_S64s,
    &Widget_R32s,  &Widget_R64s,  &Widget_C16s,   &Widget_Texts,  &Widget_Whens,
    &Widget_Owner, &Widget_Inner, &Widget_Owners, &Widget_Inners, &Widget_Turn::static_meta_class,
};
const uint8 widget_locals[std::size(widget_features)] = {};

template <std::size_t size>
constexpr Meta_Class meta_class(const char* name, const Meta_Feature* const (&features)[size],
                                std::size_t bytes, const Meta_Class* parent, uint64 keys) {
    return {{{0, FLAG_CLASS, name, nullptr, 0}, features, size, bytes},
            widget_locals,
            parent,
            keys,
            &fixture_repository};
}

// What an operation gets, kept for the test.
void keep(Ref<>& to, void* instance) {
    to.reset(clone(static_cast<Instance*>(instance)));
}

int provider(const Registration*, int operation, void* arg0, void* arg1, void* arg2, void* arg3,
             void*, void*, void*, void*) {
    ++script.calls[operation];
    const auto found = script.status.find(operation);
    const int status = found == script.status.end() ? 0 : found->second;
    switch (operation) {
    case OPERATION_GET_META_CLASS:
        *static_cast<const Meta_Class**>(arg0) = &Widget::static_meta_class;
        return 0;
    case OPERATION_GET_REPOSITORY:
        *static_cast<const Meta_Repository**>(arg0) = &fixture_repository;
        return 0;
    case OPERATION_CREATE_PROVIDER:
        ++script.alive;
        *static_cast<void**>(arg0) = &script;
        return 0;
    case OPERATION_DESTROY_PROVIDER:
        --script.alive;
        return 0;
    default:
        break;
    }
    if (script.hook) {
        script.hook(operation);
    }
    switch (operation) {
    case OPERATION_GET_INSTANCE:
        keep(script.model, arg1);
        if (script.got) {
            *static_cast<Instance**>(arg2) = clone(script.got.get());
        }
        return status;
    case OPERATION_ENUM_INSTANCES: {
        keep(script.model, arg1);
        const auto proc = reinterpret_cast<Instance_Enumerator_Proc>(arg2);
        for (const Ref<>& instance : script.instances) {
            proc(clone(instance.get()), 0, arg3);
        }
        proc(nullptr, status, arg3);
        script.closed = true;
        return status;
    }
    case OPERATION_CREATE_INSTANCE:
        keep(script.instance, arg1);
        if (script.created) {
            script.created(*static_cast<Instance*>(arg1));
        }
        return status;
    case OPERATION_DELETE_INSTANCE:
        keep(script.model, arg1);
        return status;
    case OPERATION_MODIFY_INSTANCE:
        keep(script.model, arg1);
        keep(script.instance, arg2);
        return status;
    case OPERATION_INVOKE_METHOD:
        keep(script.model, arg1);
        keep(script.instance, arg2);
        if (script.turn) {
            script.turn(*static_cast<Widget_Turn*>(static_cast<Instance*>(arg2)));
        }
        return status;
    default:
        return status;
    }
}

} // namespace

const Meta_Class Part::static_meta_class =
    meta_class("Part", part_features, sizeof(Part), nullptr, 1);
const Meta_Class Special_Part::static_meta_class = meta_class(
    "Special_Part", special_part_features, sizeof(Special_Part), &Part::static_meta_class, 1);
const Meta_Class Link::static_meta_class =
    meta_class("Link", link_features, sizeof(Link), nullptr, 1);
const Meta_Class Widget::static_meta_class =
    meta_class("Widget", widget_features, sizeof(Widget), nullptr, 2);
const Meta_Method Widget_Turn::static_meta_class = {{{0, FLAG_METHOD, "Turn", nullptr, 0},
                                                     turn_features,
                                                     std::size(turn_features),
                                                     sizeof(Widget_Turn)},
                                                    UINT32};

namespace {
const Meta_Class* const classes[] = {&Part::static_meta_class, &Special_Part::static_meta_class,
                                     &Link::static_meta_class, &Widget::static_meta_class};
} // namespace
const Meta_Repository fixture_repository = {classes, std::size(classes)};
const Registration fixture_registration = {"fixture", provider_name, provider,
                                           &Widget::static_meta_class, nullptr};

Script script;

Ref<Part> part(const char* id, uint32 slot) {
    Ref<Part> made = make<Part>();
    made->Id.set(id);
    made->Slot.set(slot);
    return made;
}

Ref<Widget> widget(const char* name, uint32 index) {
    Ref<Widget> made = make<Widget>();
    made->Name.set(name);
    made->Index.set(index);
    return made;
}

Ref<Widget> full_widget() {
    Ref<Widget> w = widget("full", 4000000000u);
    w->Flag.set(true);
    w->U8.set(uint8{200});
    w->S8.set(sint8{-100});
    w->U16.set(uint16{60000});
    w->S16.set(sint16{-30000});
    w->U32.set(uint32{4000000001});
    w->S32.set(sint32{-2000000000});
    w->U64.set(uint64{18000000000000000000u});
    w->S64.set(sint64{-9000000000000000000});
    w->R32.set(1.5f);
    w->R64.set(-2.25);
    w->C16.set(char16{0x20AC});
    w->Text.set("text");
    Datetime when;
    EXPECT_TRUE(when.set("20240101120000.000005+060"));
    w->When.set(when);
    w->Flags.set(Array<bool>{true, false, true});
    w->U8s.set(Array<uint8>{1, 255});
    w->S8s.set(Array<sint8>{-1, 127});
    w->U16s.set(Array<uint16>{1, 65535});
    w->S16s.set(Array<sint16>{-1, 32767});
    w->U32s.set(Array<uint32>{1, 4294967295u});
    w->S32s.set(Array<sint32>{-1, 2147483647});
    w->U64s.set(Array<uint64>{1, 18446744073709551615u});
    w->S64s.set(Array<sint64>{-1, 9223372036854775807});
    w->R32s.set(Array<real32>{0.5f, -0.5f});
    w->R64s.set(Array<real64>{0.25, -0.25});
    w->C16s.set(Array<char16>{char16{65}, char16{0xFFFF}});
    w->Texts.set(Array<String>{"", "two"});
    w->Whens.set(Array<Datetime>{when, Datetime::interval(5)});
    w->Owner = part("owner", 1).release();
    w->Inner = part("inner", 2).release();
    w->Owners.value.append(part("o1").release());
    w->Owners.value.append(part("o2").release());
    w->Owners.null = 0;
    w->Inners.value.append(part("i1", 11).release());
    w->Inners.null = 0;
    return w;
}

Runtime_Log::Runtime_Log(const char* level) {
    std::string name = (std::filesystem::temp_directory_path() / "adapter_log_XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        ADD_FAILURE() << "no directory for the log";
    }
    _home = name;
    std::ofstream(_home / ".cimplerc") << "LOG_LEVEL=" << level << "\n";
    ::setenv("CIMPLE_HOME", _home.c_str(), 1);
    close_log();
}

Runtime_Log::~Runtime_Log() {
    ::unsetenv("CIMPLE_HOME");
    close_log();
    std::error_code ignored;
    std::filesystem::remove_all(_home, ignored);
}

std::string Runtime_Log::text() const {
    std::ostringstream out;
    out << std::ifstream(_home / ".cimple" / "messages").rdbuf();
    return out.str();
}

int Runtime_Log::count(const std::string& what) const {
    std::istringstream lines(text());
    int found = 0;
    for (std::string line; std::getline(lines, line);) {
        found += line.find(what) != std::string::npos;
    }
    return found;
}

Adapter_Test::Adapter_Test() {
    script = Script();
}

Adapter_Test::~Adapter_Test() {
    broker.failing.clear();
    broker.fail_at = 0;
    script.hook = nullptr;
    while (CMPI_Adapter* adapter = block.adapter) {
        adapter->cleanup(true);
    }
    EXPECT_EQ(script.alive, 0);
    script = Script();
}

void* Adapter_Test::load(char kind) {
    void* mi = nullptr;
    EXPECT_EQ(cimple_cmpi_adapter(block, &fixture_registration, broker.get(), context,
                                  provider_name, kind, mi),
              0);
    return mi;
}

} // namespace cimple
