#include "tests/adapter/fixture.h"

#include "runtime/association.h"
#include "runtime/value.h"
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

fake::Datum datum(const std::string& text) {
    const std::size_t colon = text.find(':');
    const std::string kind = text.substr(0, colon);
    const std::string value = text.substr(colon + 1);
    const auto part = [&](std::size_t i) { // of three between exclamation marks
        std::istringstream parts(value);
        std::string one;
        for (std::size_t n = 0; n <= i; ++n) {
            std::getline(parts, one, '!');
        }
        return one;
    };
    const auto code = [](const std::string& hex) {
        return static_cast<CMPIType>(std::stoul(hex, nullptr, 16));
    };
    const auto number = [&] { return std::stoull(value, nullptr, 0); };
    const std::map<std::string, std::function<fake::Datum()>> kinds = {
        {"uint16", [&] { return fake::uint16(static_cast<CMPIUint16>(number())); }},
        {"uint32", [&] { return fake::uint32(static_cast<CMPIUint32>(number())); }},
        {"uint64", [&] { return fake::uint64(number()); }},
        {"sint64", [&] { return fake::sint64(std::stoll(value)); }},
        {"boolean",
         [&] {
             fake::Datum made = fake::boolean(true);
             made.scalar.boolean = static_cast<CMPIBoolean>(number());
             return made;
         }},
        {"string", [&] { return fake::string(value); }},
        {"datetime", [&] { return fake::datetime(value); }},
        {"null", [&] { return fake::null_of(code(value)); }},
        {"pointer",
         [&] {
             return fake::Datum{code(value), CMPI_goodValue, {}, {}};
         }},
        {"ref",
         [&] {
             return fake::reference({part(0), part(1), {{{"Id", fake::string(part(2))}}}});
         }},
        {"inst",
         [&] {
             const auto slot = static_cast<CMPIUint32>(std::stoul(part(2)));
             return fake::instance({{part(0), part(1), {}}, {{{"Slot", fake::uint32(slot)}}}});
         }},
        {"list", [&] {
             std::istringstream parts(value);
             std::string one;
             std::getline(parts, one, ',');
             const CMPIType type = code(one);
             std::vector<fake::Datum> elements;
             while (std::getline(parts, one, ',')) {
                 elements.push_back(datum(one));
             }
             return fake::list(type, std::move(elements));
         }}};
    return kinds.at(kind)();
}

std::string told(const Instance* instance) {
    std::string text;
    for (const Meta_Feature* feature : *instance->__meta_class) {
        Value value;
        const bool plain = feature->has(FLAG_PROPERTY | FLAG_REFERENCE);
        if (!plain || Value::get(value, instance, feature) != 0 || value.null()) {
            continue;
        }
        const Instance* target = value.type() == Value::INSTANCE ? value.instance() : nullptr;
        if (value.type() == Value::INSTANCE && target == nullptr) {
            continue;
        }
        text += (text.empty() ? "" : " ") + std::string(feature->name);
        if (const auto* string = value.get<String>()) {
            text += std::string("=") + string->c_str();
        } else if (const auto* angle = value.get<uint16>()) {
            text += "=" + std::to_string(*angle);
        } else if (const auto* index = value.get<uint32>()) {
            text += "=" + std::to_string(*index);
        } else if (const auto* flag = value.get<bool>()) {
            text += *flag ? "=true" : "=false";
        } else if (const auto* texts = value.get<Array<String>>()) {
            for (std::size_t i = 0; i < texts->size(); ++i) {
                text += std::string(i == 0 ? "=" : ",") + (*texts)[i].c_str();
            }
        } else if (const auto* targets = value.get<Array<Instance*>>()) {
            for (std::size_t i = 0; i < targets->size(); ++i) {
                text += (*targets)[i] == nullptr ? " null" : " one";
            }
        } else if (target != nullptr) {
            text += std::string("(") + class_of(target)->name + " in " +
                    target->__name_space.c_str() + ": " + told(target) + ")";
        }
    }
    return text.empty() ? "nothing" : text;
}

std::string told(const Runtime_Log& log, std::size_t& position) {
    std::string text;
    const std::vector<std::string> lines = log.lines();
    for (; position < lines.size(); ++position) {
        const std::string line = lines[position].substr(lines[position].find("): ") + 3);
        if (!line.starts_with("enter: ") && !line.starts_with("return: ")) {
            text += "| " + line + "\n";
        }
    }
    return text;
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
