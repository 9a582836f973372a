#include "tests/adapter/fixture.h"

#include <cstddef>

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
#define X(name, type, code, sample, other)                                                         \
    SCALAR(Widget, name, 0, code);                                                                 \
    ARRAY_OF(Widget, name##s, code);
WIDGET_TYPES(X)
#undef X
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
const Meta_Feature* const widget_features[] = {&Widget_Name,
                                               &Widget_Index,
                                               &Widget_Owner,
                                               &Widget_Inner,
                                               &Widget_Owners,
                                               &Widget_Inners,
                                               &Widget_Turn::static_meta_class,
#define X(name, type, code, sample, other) &Widget_##name, &Widget_##name##s,
                                               WIDGET_TYPES(X)
#undef X
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
    case OPERATION_INVOKE_METHOD:
        keep(script.model, arg1);
        keep(script.instance, arg2);
        if (operation == OPERATION_INVOKE_METHOD && script.turn) {
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
#define X(name, type, code, sample, other)                                                         \
    w->name.set(sample);                                                                           \
    w->name##s.set(Array<type>{sample, other});
    WIDGET_TYPES(X)
#undef X
    w->Owner = part("owner", 1).release();
    w->Inner = part("inner", 2).release();
    w->Owners.value.append(part("o1").release());
    w->Owners.value.append(part("o2").release());
    w->Owners.null = 0;
    w->Inners.value.append(part("i1", 11).release());
    w->Inners.null = 0;
    return w;
}

int Runtime_Log::count(const std::string& what) const {
    int found = 0;
    for (const std::string& line : lines()) {
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
