#include "runtime/instance.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace cimple {

namespace {

// Width of what a property field holds; its null flag stands right behind.
std::size_t value_width(const Meta_Property& property) noexcept {
    return property.is_array() ? sizeof(Array_Base) : type_width(static_cast<Type>(property.type));
}

template <class T> T& field_as(Instance* instance, uint32 offset) noexcept {
    return *static_cast<T*>(field(instance, offset));
}
template <class T> const T& field_as(const Instance* instance, uint32 offset) noexcept {
    return *static_cast<const T*>(field(instance, offset));
}

// Releases what one field owns.
void release_field(Instance* instance, const Meta_Feature& feature) noexcept {
    if (feature.has(FLAG_PROPERTY)) {
        const Meta_Property& property = as_property(feature);
        if (property.is_array()) {
            std::destroy_at(&field_as<Array_Base>(instance, property.offset));
        } else if (property.type == STRING) {
            std::destroy_at(&field_as<String>(instance, property.offset));
        } else if (property.type == DATETIME) {
            std::destroy_at(&field_as<Datetime>(instance, property.offset));
        }
    } else if (feature.has(FLAG_REFERENCE)) {
        const Meta_Reference& reference = as_reference(feature);
        if (reference.is_array()) {
            Array<Instance*>& targets = reference_array(instance, reference);
            for (Instance* target : targets) {
                unref(target);
            }
            std::destroy_at(&targets);
        } else {
            unref(reference_field(instance, reference));
        }
    }
}

// A block with its header while its fields are being built: if one of them throws, those before it
// and the block are released.
class Unfinished {
public:
    explicit Unfinished(const Meta_Structure* structure)
        : _instance(static_cast<Instance*>(::operator new(structure->size))),
          _structure(structure) {
        _instance->__magic = instance_magic;
        ::new (&_instance->__refs) std::atomic<uint32>(1);
        _instance->__meta_class = structure;
        ::new (&_instance->__name_space) String();
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
    ~Unfinished() {
        if (_instance != nullptr) {
            while (_built > 0) {
                release_field(_instance, *_structure->meta_features[--_built]);
            }
            std::destroy_at(&_instance->__name_space);
            ::operator delete(_instance);
        }
    }

    Instance* get() const noexcept { return _instance; }
    void* fields() const noexcept { return field(_instance, sizeof(Instance)); }
    std::size_t fields_size() const noexcept { return _structure->size - sizeof(Instance); }
    void built() noexcept { ++_built; }
    Instance* finish() noexcept { return std::exchange(_instance, nullptr); }

private:
    Instance* _instance;
    const Meta_Structure* _structure;
    uint64 _built = 0;
};

void append_defaults(Array_Base& array, Type type, const Default_Array& defaults) {
    if (type != STRING && type != DATETIME) {
        array.append_elements(defaults.elements, defaults.size);
        return;
    }
    const char* const* texts = static_cast<const char* const*>(defaults.elements);
    for (uint64 i = 0; i < defaults.size; ++i) {
        if (type == STRING) {
            const String text(texts[i]);
            array.append_elements(&text, 1);
        } else {
            Datetime datetime;
            datetime.set(texts[i]);
            array.append_elements(&datetime, 1);
        }
    }
}

void create_array(Instance* instance, const Meta_Property& property, bool defaults) {
    const Type type = static_cast<Type>(property.type);
    Array_Base array(traits_of(type));
    if (defaults && property.value != nullptr) {
        append_defaults(array, type, *static_cast<const Default_Array*>(property.value));
    }
    ::new (field(instance, property.offset)) Array_Base(std::move(array));
}

void create_scalar(Instance* instance, const Meta_Property& property, bool defaults) {
    const void* value = defaults ? property.value : nullptr;
    void* at = field(instance, property.offset);
    const Type type = static_cast<Type>(property.type);
    if (type == STRING) {
        ::new (at) String(value != nullptr ? *static_cast<const char* const*>(value) : nullptr);
    } else if (type == DATETIME) {
        Datetime datetime;
        if (value != nullptr) {
            datetime.set(*static_cast<const char* const*>(value));
        }
        ::new (at) Datetime(datetime);
    } else if (value != nullptr) {
        std::memcpy(at, value, type_width(type));
    }
}

void clone_property(Instance* copy, const Instance* instance, const Meta_Property& property) {
    void* at = field(copy, property.offset);
    if (property.is_array()) {
        ::new (at) Array_Base(field_as<Array_Base>(instance, property.offset));
    } else if (property.type == STRING) {
        ::new (at) String(field_as<String>(instance, property.offset));
    } else if (property.type == DATETIME) {
        ::new (at) Datetime(field_as<Datetime>(instance, property.offset));
    }
}

void clone_reference(Instance* copy, const Instance* instance, const Meta_Reference& reference) {
    if (!reference.is_array()) {
        const Instance* target = reference_field(instance, reference);
        reference_field(copy, reference) = target != nullptr ? clone(target) : nullptr;
        return;
    }
    const Array<Instance*>& targets = reference_array(instance, reference);
    Array<Instance*> clones;
    clones.reserve(targets.size());
    try {
        for (const Instance* target : targets) {
            clones.append(target != nullptr ? clone(target) : nullptr);
        }
    } catch (...) {
        for (Instance* target : clones) {
            unref(target);
        }
        throw;
    }
    ::new (field(copy, reference.offset)) Array<Instance*>(std::move(clones));
}

bool property_equal(const Instance* a, const Meta_Property& in_a, const Instance* b,
                    const Meta_Property& in_b) noexcept {
    if (null_flag(a, in_a) != null_flag(b, in_b)) {
        return false;
    }
    if (in_a.is_array()) {
        return field_as<Array_Base>(a, in_a.offset).equal(field_as<Array_Base>(b, in_b.offset));
    }
    const Type_Traits& traits = traits_of(static_cast<Type>(in_a.type));
    const void* value_a = field(a, in_a.offset);
    const void* value_b = field(b, in_b.offset);
    return traits.equal != nullptr ? traits.equal(value_a, value_b)
                                   : std::memcmp(value_a, value_b, traits.size) == 0;
}

bool key_property_equal(const Instance* a, const Meta_Property& key, const Instance* b) noexcept {
    const Meta_Feature* feature = find_feature(b->__meta_class, key.name, PROPERTIES);
    if (feature == nullptr || !feature->has(FLAG_KEY)) {
        return false;
    }
    const Meta_Property& other = as_property(*feature);
    return other.type == key.type && other.subscript == key.subscript &&
           property_equal(a, key, b, other);
}

bool key_reference_equal(const Instance* a, const Meta_Reference& key, const Instance* b) noexcept {
    if (key.is_array()) {
        return true;
    }
    const Meta_Feature* feature = find_feature(b->__meta_class, key.name, REFERENCES);
    if (feature == nullptr || !feature->has(FLAG_KEY)) {
        return false;
    }
    const Meta_Reference& other = as_reference(*feature);
    if (other.is_array() || !(is_subclass(key.meta_class, other.meta_class) ||
                              is_subclass(other.meta_class, key.meta_class))) {
        return false;
    }
    return key_eq(reference_field(a, key), reference_field(b, other));
}

template <class... Args> void append_format(std::string& out, const char* format, Args... args) {
    char text[512]; // a real64 has up to 309 digits before its point
    const int size = std::snprintf(text, sizeof(text), format, args...);
    if (size > 0) {
        out.append(text, std::min(static_cast<std::size_t>(size), sizeof(text) - 1));
    }
}

void append_scalar(std::string& out, const Instance* instance, const Meta_Property& property) {
    const void* at = field(instance, property.offset);
    const auto value = [at]<class T>(T) { return *static_cast<const T*>(at); };
    switch (static_cast<Type>(property.type)) {
    case BOOLEAN:
        out += value(bool{}) ? "true" : "false";
        break;
    case UINT8:
        append_format(out, "%u", static_cast<unsigned>(value(uint8{})));
        break;
    case SINT8:
        append_format(out, "%d", static_cast<int>(value(sint8{})));
        break;
    case UINT16:
        append_format(out, "%u", static_cast<unsigned>(value(uint16{})));
        break;
    case SINT16:
        append_format(out, "%d", static_cast<int>(value(sint16{})));
        break;
    case UINT32:
        append_format(out, "%u", value(uint32{}));
        break;
    case SINT32:
        append_format(out, "%d", value(sint32{}));
        break;
    case UINT64:
        append_format(out, "%llu", static_cast<unsigned long long>(value(uint64{})));
        break;
    case SINT64:
        append_format(out, "%lld", static_cast<long long>(value(sint64{})));
        break;
    case REAL32:
        append_format(out, "%f", static_cast<double>(value(real32{})));
        break;
    case REAL64:
        append_format(out, "%f", value(real64{}));
        break;
    case CHAR16:
        out += '\'';
        out += static_cast<char>(value(char16{}));
        out += '\'';
        break;
    case STRING:
        out += '"';
        out += static_cast<const String*>(at)->view();
        out += '"';
        break;
    case DATETIME:
        out += static_cast<const Datetime*>(at)->ascii().view();
        break;
    }
}

bool append_model_path(std::string& out, const Instance* instance);

bool append_reference(std::string& out, const Instance* instance, const Meta_Reference& reference) {
    std::string path;
    if (reference.is_array() || !append_model_path(path, reference_field(instance, reference))) {
        return false;
    }
    out += '"';
    for (const char c : path) {
        if (c == '"') {
            out += '\\';
        }
        out += c;
    }
    out += '"';
    return true;
}

bool append_model_path(std::string& out, const Instance* instance) {
    if (instance == nullptr) {
        return false;
    }
    out += instance->__meta_class->name;
    char separator = '.';
    for (const Meta_Feature* feature : *instance->__meta_class) {
        if (!feature->has(FLAG_KEY) || !feature->has(PROPERTIES_AND_REFERENCES)) {
            continue;
        }
        out += separator;
        out += feature->name;
        out += '=';
        separator = ',';
        if (feature->has(FLAG_REFERENCE)) {
            if (!append_reference(out, instance, as_reference(*feature))) {
                return false;
            }
            continue;
        }
        const Meta_Property& property = as_property(*feature);
        if (property.is_array() || null_flag(instance, property) != 0) {
            return false;
        }
        append_scalar(out, instance, property);
    }
    return separator == ',';
}

void set_name_space(Instance* instance, const String& name_space, bool force) noexcept {
    if (instance == nullptr) {
        return;
    }
    if (force || instance->__name_space.empty()) {
        instance->__name_space = name_space;
    }
    for (const Meta_Feature* feature : *instance->__meta_class) {
        if (!feature->has(FLAG_REFERENCE)) {
            continue;
        }
        const Meta_Reference& reference = as_reference(*feature);
        if (reference.is_array()) {
            for (Instance* target : reference_array(instance, reference)) {
                set_name_space(target, name_space, force);
            }
        } else {
            set_name_space(reference_field(instance, reference), name_space, force);
        }
    }
}

} // namespace

const Meta_Class* class_of(const Instance* instance) noexcept {
    if (instance == nullptr || instance->__meta_class->has(FLAG_METHOD)) {
        return nullptr;
    }
    return static_cast<const Meta_Class*>(instance->__meta_class);
}

Instance* create(const Meta_Structure* structure, bool defaults) {
    Unfinished instance(structure);
    std::memset(instance.fields(), 0, instance.fields_size());
    for (const Meta_Feature* feature : *structure) {
        if (feature->has(FLAG_PROPERTY)) {
            const Meta_Property& property = as_property(*feature);
            if (property.is_array()) {
                create_array(instance.get(), property, defaults);
            } else {
                create_scalar(instance.get(), property, defaults);
            }
            null_flag(instance.get(), property) = defaults && property.value == nullptr ? 1 : 0;
        } else if (feature->has(FLAG_REFERENCE) && as_reference(*feature).is_array()) {
            ::new (field(instance.get(), as_reference(*feature).offset)) Array<Instance*>();
        }
        instance.built();
    }
    return instance.finish();
}

void prefetch_texts(const Instance* instance) noexcept {
    for (const Meta_Feature* feature : *instance->__meta_class) {
        if (feature->has(FLAG_PROPERTY)) {
            const Meta_Property& property = as_property(*feature);
            if (property.type == STRING && !property.is_array()) {
                __builtin_prefetch(field_as<String>(instance, property.offset).c_str());
            }
        }
    }
}

Instance* clone(const Instance* instance) {
    const Meta_Structure* structure = instance->__meta_class;
    Unfinished copy(structure);
    copy.get()->__name_space = instance->__name_space;
    // The header stays out of the block copy: another thread may be counting the source.
    std::memcpy(copy.fields(), field(instance, sizeof(Instance)), copy.fields_size());
    for (const Meta_Feature* feature : *structure) {
        if (feature->has(FLAG_PROPERTY)) {
            clone_property(copy.get(), instance, as_property(*feature));
        } else if (feature->has(FLAG_REFERENCE)) {
            clone_reference(copy.get(), instance, as_reference(*feature));
        }
        copy.built();
    }
    return copy.finish();
}

void ref(const Instance* instance) noexcept {
    if (instance != nullptr) {
        const_cast<Instance*>(instance)->__refs.fetch_add(1, std::memory_order_relaxed);
    }
}

void unref(const Instance* instance) noexcept {
    if (instance != nullptr &&
        const_cast<Instance*>(instance)->__refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        destroy(const_cast<Instance*>(instance));
    }
}

void destroy(Instance* instance) noexcept {
    for (const Meta_Feature* feature : *instance->__meta_class) {
        release_field(instance, *feature);
    }
    std::destroy_at(&instance->__name_space);
    ::operator delete(instance);
}

uint8& null_flag(Instance* instance, const Meta_Property& property) noexcept {
    return static_cast<uint8*>(field(instance, property.offset))[value_width(property)];
}

uint8 null_flag(const Instance* instance, const Meta_Property& property) noexcept {
    return static_cast<const uint8*>(field(instance, property.offset))[value_width(property)];
}

uint8& null_flag(Instance* instance, const Meta_Reference& reference) noexcept {
    return static_cast<uint8*>(field(instance, reference.offset))[sizeof(Array_Base)];
}

uint8 null_flag(const Instance* instance, const Meta_Reference& reference) noexcept {
    return static_cast<const uint8*>(field(instance, reference.offset))[sizeof(Array_Base)];
}

void set_null_flags(Instance* instance, bool keys, bool non_keys, uint8 value) noexcept {
    for (const Meta_Feature* feature : *instance->__meta_class) {
        if (feature->has(FLAG_PROPERTY) && (feature->has(FLAG_KEY) ? keys : non_keys)) {
            null_flag(instance, as_property(*feature)) = value;
        }
    }
}

int filter_properties(Instance* instance, const char* const* names, bool keep_keys) {
    if (names == nullptr) {
        set_null_flags(instance, true, true, 0);
        return 0;
    }
    set_null_flags(instance, !keep_keys, true, 1);
    for (; *names != nullptr; ++names) {
        const Meta_Feature* feature = find_feature(instance->__meta_class, *names, ALL_FEATURES);
        if (feature == nullptr || feature->has(FLAG_KEY)) {
            continue;
        }
        if (feature->has(FLAG_PROPERTY)) {
            null_flag(instance, as_property(*feature)) = 0;
        } else if (feature->has(FLAG_REFERENCE)) {
            const Meta_Reference& reference = as_reference(*feature);
            if (reference.is_array()) {
                null_flag(instance, reference) = 0;
            } else if (reference_field(instance, reference) == nullptr) {
                reference_field(instance, reference) = create(reference.meta_class, false);
            }
        } else {
            return -1;
        }
    }
    return 0;
}

void set_name_space_recursive(Instance* instance, const char* name_space, bool force) {
    set_name_space(instance, String(name_space), force);
}

bool key_eq(const Instance* a, const Instance* b) noexcept {
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    for (const Meta_Feature* feature : *a->__meta_class) {
        if (!feature->has(FLAG_KEY)) {
            continue;
        }
        if (feature->has(FLAG_PROPERTY)) {
            if (!key_property_equal(a, as_property(*feature), b)) {
                return false;
            }
        } else if (feature->has(FLAG_REFERENCE)) {
            if (!key_reference_equal(a, as_reference(*feature), b)) {
                return false;
            }
        }
    }
    return true;
}

int instance_to_model_path(const Instance* instance, String& out) {
    std::string path;
    if (!append_model_path(path, instance)) {
        return -1;
    }
    out = path;
    return 0;
}

} // namespace cimple
