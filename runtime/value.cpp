#include "runtime/value.h"

#include "runtime/log.h"

#include <utility>

namespace cimple {

namespace {

constexpr const char* scalar_kind_names[] = {
    "boolean", "uint8",  "sint8",  "uint16", "sint16", "uint32",   "sint32",   "uint64",
    "sint64",  "real32", "real64", "char16", "string", "datetime", "instance",
};
constexpr const char* array_kind_names[] = {
    "boolean_array", "uint8_array",  "sint8_array",  "uint16_array",   "sint16_array",
    "uint32_array",  "sint32_array", "uint64_array", "sint64_array",   "real32_array",
    "real64_array",  "char16_array", "string_array", "datetime_array", "instance_array",
};

bool accepts(const Meta_Reference& reference, const Instance* target) noexcept {
    return target == nullptr || is_subclass(reference.meta_class, class_of(target));
}

// Takes a target that the reference's class accepts; else logs which it doesn't.
bool check_target(const Meta_Reference& reference, const Instance* target,
                  const Instance* owner) noexcept {
    if (accepts(reference, target)) {
        return true;
    }
    TVR_RUNTIME_LOG(LL_WARN, "failed to assign instance of %s to %s.%s", target->__meta_class->name,
                    owner->__meta_class->name, reference.name);
    return false;
}

} // namespace

const char* Value::kind_name(sint32 kind) noexcept {
    if (kind == NONE) {
        return "none";
    }
    if (kind >= 0 && kind <= INSTANCE) {
        return scalar_kind_names[kind];
    }
    if (kind >= ARRAY && kind <= INSTANCE_ARRAY) {
        return array_kind_names[kind - ARRAY];
    }
    return "unknown";
}

sint32 Value::kind_of(const Meta_Feature& feature) noexcept {
    if (feature.has(FLAG_PROPERTY)) {
        const Meta_Property& property = as_property(feature);
        return property.is_array() ? ARRAY + property.type : property.type;
    }
    if (feature.has(FLAG_REFERENCE)) {
        return as_reference(feature).is_array() ? INSTANCE_ARRAY : INSTANCE;
    }
    return NONE;
}

Value::Value(const Value& other) : _null(other._null), _payload(other._payload) {
    count(true);
}

Value::Value(Value&& other) noexcept
    : _null(std::exchange(other._null, uint8{1})), _payload(std::move(other._payload)) {
    other._payload.emplace<std::monostate>(); // its counts are here now
}

Value& Value::operator=(Value other) noexcept {
    count(false);
    take(std::move(other._payload), other._null);
    other._payload.emplace<std::monostate>();
    return *this;
}

Value::~Value() {
    count(false);
}

void Value::count(bool add) const noexcept {
    const auto change = add ? ref : unref;
    if (Instance* const* held = std::get_if<Instance*>(&_payload)) {
        change(*held);
    } else if (const auto* array = std::get_if<Array<Instance*>>(&_payload)) {
        for (const Instance* element : *array) {
            change(element);
        }
    }
}

void Value::replace(Payload&& payload, uint8 null) noexcept {
    count(false);
    take(std::move(payload), null);
}

void Value::take(Payload&& payload, uint8 null) noexcept {
    std::destroy_at(&_payload);
    std::construct_at(&_payload, std::move(payload));
    _null = null;
}

void Value::clear() noexcept {
    replace(Payload(), 1);
}

void Value::set(Instance* instance) {
    replace(Payload(instance), 0);
}

void Value::set(const Array<Instance*>& instances) {
    replace(Payload(instances), 0);
}

void Value::set_null_of(sint32 kind) {
    replace(make_payload(kind), 1);
}

template <std::size_t... Index>
Value::Payload Value::make_indexed(std::size_t index, std::index_sequence<Index...>) {
    static constexpr Payload (*makers[])() = {
        [] { return Payload(std::in_place_index<Index>); }...};
    return makers[index]();
}

Value::Payload Value::make_payload(sint32 kind) {
    std::size_t index = 0;
    if (kind >= 0 && kind <= INSTANCE) {
        index = first_scalar + static_cast<std::size_t>(kind);
    } else if (kind >= ARRAY && kind <= INSTANCE_ARRAY) {
        index = first_array + static_cast<std::size_t>(kind - ARRAY);
    }
    return make_indexed(index, std::make_index_sequence<std::variant_size_v<Payload>>());
}

Instance* Value::instance() const noexcept {
    Instance* const* held = std::get_if<Instance*>(&_payload);
    return held != nullptr ? *held : nullptr;
}

int Value::get(Value& value, const Instance* instance, const Meta_Feature* feature) {
    const sint32 kind = kind_of(*feature);
    if (instance == nullptr || kind == NONE) {
        return -1;
    }
    Value result;
    if (feature->has(FLAG_PROPERTY)) {
        const Meta_Property& property = as_property(*feature);
        result._payload = make_payload(kind);
        result._null = null_flag(instance, property) != 0;
        const void* from = field(instance, property.offset);
        std::visit(
            [from]<class T>(T& payload) {
                if constexpr (!std::is_same_v<T, std::monostate>) {
                    payload = *static_cast<const T*>(from);
                }
            },
            result._payload);
    } else {
        const Meta_Reference& reference = as_reference(*feature);
        if (reference.is_array()) {
            result._payload = reference_array(instance, reference);
            result._null = null_flag(instance, reference) != 0;
        } else {
            result._payload = reference_field(instance, reference);
            result._null = result.instance() == nullptr;
        }
        result.count(true);
    }
    value = std::move(result);
    return 0;
}

int Value::set(const Value& value, Instance* instance, const Meta_Feature* feature) {
    if (instance == nullptr) {
        TVR_RUNTIME_LOG(LL_WARN, "null instance argument");
        return -1;
    }
    if (kind_of(*feature) != value.type()) {
        TVR_RUNTIME_LOG(LL_WARN, "type mismatch: %s.%s", instance->__meta_class->name,
                        feature->name);
        return -1;
    }
    if (value.type() == NONE) {
        return -1;
    }
    if (feature->has(FLAG_PROPERTY)) {
        const Meta_Property& property = as_property(*feature);
        void* to = field(instance, property.offset);
        std::visit(
            [to]<class T>(const T& payload) {
                if constexpr (!std::is_same_v<T, std::monostate>) {
                    *static_cast<T*>(to) = payload;
                }
            },
            value._payload);
        null_flag(instance, property) = value._null;
        return 0;
    }

    const Meta_Reference& reference = as_reference(*feature);
    if (!reference.is_array()) {
        Instance* target = value.instance();
        if (!check_target(reference, target, instance)) {
            return -1;
        }
        ref(target);
        unref(std::exchange(reference_field(instance, reference), target));
        return 0;
    }
    const Array<Instance*>& targets = *value.get<Array<Instance*>>();
    for (const Instance* target : targets) {
        if (!check_target(reference, target, instance)) {
            return -1;
        }
    }
    // What the field held ends with this copy, after the new targets have their counts.
    Value counted(value);
    std::swap(reference_array(instance, reference), std::get<Array<Instance*>>(counted._payload));
    null_flag(instance, reference) = value._null;
    return 0;
}

} // namespace cimple
