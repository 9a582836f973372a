#include "tests/adapter/fixture.h"

#include "runtime/association.h"
#include "tests/runtime/meta_records.h"

namespace cimple {

namespace {

SCALAR(Part, Id, STRING, FLAG_KEY);
SCALAR(Part, Slot, UINT32, 0);
SCALAR(Special_Part, Extra, STRING, 0);
REFERENCE(Link, Next, Link, FLAG_KEY, 0);

SCALAR(Widget, Name, STRING, FLAG_KEY);
SCALAR(Widget, Index, UINT32, FLAG_KEY);
#define X(name, type, code, sample, other)                                                         \
    SCALAR(Widget, name, code, 0);                                                                 \
    ARRAY_OF(Widget, name##s, code, 0);
WIDGET_TYPES(X)
#undef X
REFERENCE(Widget, Owner, Part, 0, 0);
REFERENCE(Widget, Inner, Part, FLAG_EMBEDDED_INSTANCE, 0);
REFERENCE(Widget, Owners, Part, 0, -1);
REFERENCE(Widget, Inners, Part, FLAG_EMBEDDED_OBJECT, -1);

SCALAR(Widget_Turn, Angle, UINT16, FLAG_IN);
SCALAR(Widget_Turn, Mode, STRING, FLAG_IN | FLAG_OUT);
SCALAR(Widget_Turn, Turned, UINT32, FLAG_OUT);
REFERENCE(Widget_Turn, Target, Part, FLAG_IN, 0);
SCALAR(Widget_Turn, Fast, BOOLEAN, FLAG_IN);
SCALAR(Widget_Turn, Wide, UINT64, FLAG_IN);
SCALAR(Widget_Turn, Start, DATETIME, FLAG_IN);
REFERENCE(Widget_Turn, Detail, Part, FLAG_IN | FLAG_OUT | FLAG_EMBEDDED_INSTANCE, 0);
REFERENCE(Widget_Turn, Details, Part, FLAG_IN | FLAG_EMBEDDED_INSTANCE, -1);
SCALAR(Widget_Turn, return_value, UINT32, FLAG_OUT);

using Features = const Meta_Feature* const[];
constexpr Features turn_features = {
    &Widget_Turn_Angle,   &Widget_Turn_Mode,         &Widget_Turn_Turned, &Widget_Turn_Target,
    &Widget_Turn_Fast,    &Widget_Turn_Wide,         &Widget_Turn_Start,  &Widget_Turn_Detail,
    &Widget_Turn_Details, &Widget_Turn_return_value,
};
constexpr Features part_features = {&Part_Id, &Part_Slot};
constexpr Features special_part_features = {&Part_Id, &Part_Slot, &Special_Part_Extra};
constexpr Features link_features = {&Link_Next};
#define X(name, type, code, sample, other) , &Widget_##name, &Widget_##name##s
constexpr Features widget_features = {&Widget_Name,
                                      &Widget_Index,
                                      &Widget_Owner,
                                      &Widget_Inner,
                                      &Widget_Owners,
                                      &Widget_Inners,
                                      &Widget_Turn::static_meta_class WIDGET_TYPES(X)};
#undef X

// What an operation gets, kept for the test.
void keep(Ref<>& to, void* instance) {
    to.reset(clone(static_cast<Instance*>(instance)));
}

void pass(const Ref<>& instance, void* proc, void* client_data) {
    reinterpret_cast<Instance_Enumerator_Proc>(proc)(clone(instance.get()), 0, client_data);
}

int provider(const Registration* registration, int operation, void* arg0, void* arg1, void* arg2,
             void* arg3, void* arg4, void* arg5, void* arg6, void*) {
    ++script.calls[operation];
    const int status = script.status[operation];
    switch (operation) {
    case OPERATION_GET_META_CLASS:
        *static_cast<const Meta_Class**>(arg0) = registration->meta_class;
        return 0;
    case OPERATION_GET_REPOSITORY:
        *static_cast<const Meta_Repository**>(arg0) = registration->meta_class->meta_repository;
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
    const bool sends =
        operation == OPERATION_MODIFY_INSTANCE || operation == OPERATION_INVOKE_METHOD;
    if (operation == OPERATION_CREATE_INSTANCE) {
        keep(script.instance, arg1);
        if (script.created) {
            script.created(*static_cast<Instance*>(arg1));
        }
    } else if (operation == OPERATION_ENUM_REFERENCES) {
        keep(script.model, arg2);
        if (script.direct) {
            pass(script.direct, arg4, arg5);
        }
    } else if (operation == OPERATION_ENABLE_INDICATIONS) {
        script.indicate = reinterpret_cast<Indication_Proc>(arg1);
        script.indication_data = arg2;
    } else if (operation == OPERATION_ENUM_ASSOCIATOR_NAMES ||
               operation == OPERATION_ENUM_ASSOCIATORS) {
        if (script.direct) {
            pass(script.direct, arg5, arg6);
        }
    } else if (operation == OPERATION_GET_INSTANCE || operation == OPERATION_ENUM_INSTANCES ||
               operation == OPERATION_DELETE_INSTANCE || sends) {
        keep(script.model, arg1);
    }
    if (sends) {
        keep(script.instance, arg2);
    }
    if (operation == OPERATION_GET_INSTANCE && script.got) {
        *static_cast<Instance**>(arg2) = clone(script.got.get());
    } else if (operation == OPERATION_INVOKE_METHOD && script.turn) {
        script.turn(*static_cast<Widget_Turn*>(static_cast<Instance*>(arg2)));
    } else if (operation == OPERATION_ENUM_INSTANCES) {
        for (const Ref<>& instance : script.instances) {
            if (script.use_selector &&
                !static_cast<Instance_Selector*>(arg4)->accepts(instance.get())) {
                ++script.left_out;
            } else {
                pass(instance, arg2, arg3);
            }
        }
        reinterpret_cast<Instance_Enumerator_Proc>(arg2)(nullptr, status, arg3);
        script.closed = true;
    }
    return status;
}

} // namespace

#define CLASS(Class, features, parent, keys)                                                       \
    const Meta_Class Class::static_meta_class =                                                    \
        class_record<Class>(#Class, FLAG_CLASS, features, parent, keys, fixture_repository)
CLASS(Part, part_features, nullptr, 1);
CLASS(Special_Part, special_part_features, &Part::static_meta_class, 1);
CLASS(Link, link_features, nullptr, 1);
CLASS(Widget, widget_features, nullptr, 2);
const Meta_Method Widget_Turn::static_meta_class =
    method_record<Widget_Turn>("Turn", turn_features);

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
