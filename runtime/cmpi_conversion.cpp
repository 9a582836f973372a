#include "runtime/cmpi_conversion.h"

#include "runtime/cmpi_container.h"
#include "runtime/log.h"

#include <cmpimacs.h>

#include <iterator>

namespace cimple {

namespace {

constexpr const char* source = "Converter";

// The CMPI type of each scalar type, by type code. An array has the array bit besides.
constexpr CMPIType scalar_types[] = {
    CMPI_boolean, CMPI_uint8,  CMPI_sint8,  CMPI_uint16, CMPI_sint16, CMPI_uint32, CMPI_sint32,
    CMPI_uint64,  CMPI_sint64, CMPI_real32, CMPI_real64, CMPI_char16, CMPI_string, CMPI_dateTime,
};
static_assert(std::size(scalar_types) == type_count);

constexpr CMPIType element_type(CMPIType type) noexcept {
    return static_cast<CMPIType>(type & ~CMPI_ARRAY);
}
constexpr CMPIType array_type(CMPIType type) noexcept {
    return static_cast<CMPIType>(type | CMPI_ARRAY);
}

// The kind that a CMPI type corresponds to, `NONE` for one without.
sint32 kind_of(CMPIType type) noexcept {
    const sint32 array = (type & CMPI_ARRAY) != 0 ? Value::ARRAY : 0;
    const CMPIType element = element_type(type);
    if (element == CMPI_instance || element == CMPI_ref) {
        return array + Value::INSTANCE;
    }
    for (std::size_t i = 0; i < type_count; ++i) {
        if (scalar_types[i] == element) {
            return array + static_cast<sint32>(i);
        }
    }
    return Value::NONE;
}

// A type of the runtime and the member of CMPI's union that holds it.
template <class T, auto Member> struct Scalar {
    using type = T;
    static T get(const CMPIValue& value) noexcept { return static_cast<T>(value.*Member); }
    static void put(CMPIValue& value, const void* scalar) noexcept {
        using Target = std::remove_reference_t<decltype(value.*Member)>;
        value.*Member = static_cast<Target>(*static_cast<const T*>(scalar));
    }
};
template <> bool Scalar<bool, &CMPIValue::boolean>::get(const CMPIValue& value) noexcept {
    return value.boolean != 0;
}

// Calls `action` with the `Scalar` of a numeric, boolean or character type.
template <class Action> auto with_scalar(sint32 type, Action&& action) {
    switch (type) {
    case BOOLEAN:
        return action(Scalar<bool, &CMPIValue::boolean>());
    case UINT8:
        return action(Scalar<uint8, &CMPIValue::uint8>());
    case SINT8:
        return action(Scalar<sint8, &CMPIValue::sint8>());
    case UINT16:
        return action(Scalar<uint16, &CMPIValue::uint16>());
    case SINT16:
        return action(Scalar<sint16, &CMPIValue::sint16>());
    case UINT32:
        return action(Scalar<uint32, &CMPIValue::uint32>());
    case SINT32:
        return action(Scalar<sint32, &CMPIValue::sint32>());
    case UINT64:
        return action(Scalar<uint64, &CMPIValue::uint64>());
    case SINT64:
        return action(Scalar<sint64, &CMPIValue::sint64>());
    case REAL32:
        return action(Scalar<real32, &CMPIValue::real32>());
    case REAL64:
        return action(Scalar<real64, &CMPIValue::real64>());
    default:
        return action(Scalar<char16, &CMPIValue::char16>());
    }
}

const char* text_of(const CMPIString* string) {
    const char* text = string == nullptr ? nullptr : CMGetCharsPtr(string, nullptr);
    return text == nullptr ? "" : text;
}

// What comes in.

// One conversion's surroundings.
struct Source {
    const Meta_Repository* repository;
    const CMPIBroker* broker;
    const char* name_space;
    int depth;
};

String string_of(const CMPIString* string) {
    if (string == nullptr) {
        log(LL_INFO, source, __LINE__, "ignored null CMPI string");
        return String();
    }
    const char* text = CMGetCharsPtr(string, nullptr);
    if (text == nullptr) {
        log(LL_WARN, source, __LINE__, "CMGetCharsPtr() failed");
        return String();
    }
    return String(text);
}

bool datetime_of(const CMPIDateTime* cmpi_datetime, Datetime& datetime) {
    CMPIStatus status{CMPI_RC_ERR_FAILED, nullptr};
    const CMPIString* string =
        cmpi_datetime == nullptr ? nullptr : CMGetStringFormat(cmpi_datetime, &status);
    if (status.rc != CMPI_RC_OK) {
        log(LL_WARN, source, __LINE__, "CMGetStringFormat() failed");
        return false;
    }
    if (!datetime.set(text_of(string))) {
        log(LL_WARN, source, __LINE__, "conversion error");
        return false;
    }
    return true;
}

// The class that a nested object's path names.
const Meta_Class* class_of_path(const Source& from, const CMPIObjectPath* path) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    const CMPIString* string = CMGetClassName(path, &status);
    if (status.rc != CMPI_RC_OK || string == nullptr) {
        log(LL_WARN, source, __LINE__, "CMGetClassName() failed");
        return nullptr;
    }
    const char* name = text_of(string);
    const Meta_Class* meta_class = find_meta_class(from.repository, name);
    if (meta_class == nullptr) {
        log(LL_WARN, source, __LINE__, "failed to find meta class: %s", name);
    }
    return meta_class;
}

Ref<> nested(const Container& container, const Meta_Class* meta_class, uint32 flags,
             const CMPIObjectPath* path) {
    Ref<> result(create(meta_class, false));
    Instance* instance = result.get();
    if (convert(container, meta_class, flags, instance) != 0) {
        return Ref<>();
    }
    instance->__name_space = name_space_of(path);
    return result;
}

Ref<> instance_of(const Source& from, const CMPIInstance* cmpi_instance) {
    if (cmpi_instance == nullptr || from.depth >= max_nesting) {
        log(LL_WARN, source, __LINE__, "null instance");
        return Ref<>();
    }
    CMPIStatus status{CMPI_RC_OK, nullptr};
    const CMPIObjectPath* path = CMGetObjectPath(cmpi_instance, &status);
    if (status.rc != CMPI_RC_OK || path == nullptr) {
        log(LL_WARN, source, __LINE__, "CMGetObjectPath() failed");
        return Ref<>();
    }
    const Meta_Class* meta_class = class_of_path(from, path);
    if (meta_class == nullptr) {
        return Ref<>();
    }
    return nested(CMPIInstance_Container(from.repository, from.broker, from.name_space,
                                         cmpi_instance, from.depth + 1),
                  meta_class, 0, path);
}

Ref<> reference_of(const Source& from, const CMPIObjectPath* path) {
    if (path == nullptr || from.depth >= max_nesting) {
        log(LL_WARN, source, __LINE__, "null instance");
        return Ref<>();
    }
    const Meta_Class* meta_class = class_of_path(from, path);
    if (meta_class == nullptr) {
        return Ref<>();
    }
    return nested(CMPIObjectPath_Container(from.repository, from.broker, from.name_space, path,
                                           from.depth + 1),
                  meta_class, FLAG_KEY, path);
}

Ref<> object_of(const Source& from, const CMPIData& data) {
    Ref<> object = element_type(data.type) == CMPI_instance ? instance_of(from, data.value.inst)
                                                            : reference_of(from, data.value.ref);
    if (!object) {
        log(LL_WARN, source, __LINE__, "failed to create CIMPLE instance");
    }
    return object;
}

bool is_null(const CMPIData& data) noexcept {
    return (data.state & CMPI_nullValue) != 0;
}

// Hands the elements of a CMPI array in turn to `take`, which answers whether to go on. False if
// the array can't be read or `take` refuses an element.
template <class Take> bool each_element(const CMPIArray* array, Take&& take) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    const CMPICount size = CMGetArrayCount(array, &status);
    for (CMPICount i = 0; status.rc == CMPI_RC_OK && i < size; ++i) {
        const CMPIData element = CMGetArrayElementAt(array, i, &status);
        if (status.rc != CMPI_RC_OK) {
            break;
        }
        if (!is_null(element) && !has_value(element)) {
            log(LL_WARN, source, __LINE__, "bad value");
            return false;
        }
        if (!take(element)) {
            return false;
        }
    }
    if (status.rc != CMPI_RC_OK) {
        log(LL_WARN, source, __LINE__, "CMGetArrayElementAt() failed");
    }
    return status.rc == CMPI_RC_OK;
}

// `assign(element, out)` makes one element; false if it can't.
template <class T, class Assign> int scalars_of(const CMPIData& data, Value& value, Assign assign) {
    Array<T> result;
    const bool complete = each_element(data.value.array, [&](const CMPIData& element) {
        if (element.type != element_type(data.type)) {
            log(LL_WARN, source, __LINE__, "type mismatch");
            return false;
        }
        if (is_null(element)) {
            log(LL_WARN, source, __LINE__, "encountered null array element");
            return false;
        }
        T scalar{};
        if (!assign(element, scalar)) {
            return false;
        }
        result.append_elements(&scalar, 1);
        return true;
    });
    if (!complete) {
        return -1;
    }
    value.set(result);
    return 0;
}

int scalar_array_of(const CMPIData& data, Value& value) {
    const sint32 type = kind_of(element_type(data.type));
    if (type == STRING) {
        return scalars_of<String>(data, value, [](const CMPIData& element, String& out) {
            out = string_of(element.value.string);
            return true;
        });
    }
    if (type == DATETIME) {
        return scalars_of<Datetime>(data, value, [](const CMPIData& element, Datetime& out) {
            return datetime_of(element.value.dateTime, out);
        });
    }
    return with_scalar(type, [&](auto scalar) {
        using T = typename decltype(scalar)::type;
        return scalars_of<T>(data, value, [scalar](const CMPIData& element, T& out) {
            out = scalar.get(element.value);
            return true;
        });
    });
}

// An array that holds one count on each instance until these are handed on.
struct Counted_Array {
    Array<Instance*> instances;

    ~Counted_Array() {
        for (const Instance* instance : instances) {
            unref(instance);
        }
    }
};

int instance_array_of(const Source& from, const CMPIData& data, Value& value) {
    Counted_Array result;
    const bool complete = each_element(data.value.array, [&](const CMPIData& element) {
        if (element.type != element_type(data.type)) {
            log(LL_WARN, source, __LINE__, "array element type mismatch");
            return false;
        }
        Ref<> object;
        if (!is_null(element)) {
            if (element.value.inst == nullptr) {
                log(LL_WARN, source, __LINE__, "encountered null instance element");
                return false;
            }
            object = object_of(from, element);
            if (!object) {
                return false;
            }
        }
        result.instances.append(object.get());
        object.release();
        return true;
    });
    if (!complete) {
        return -1;
    }
    value.set(result.instances);
    result.instances.clear();
    return 0;
}

// What goes out.

// Where objects are made, and whose they are then: the scope's if there is no owner.
struct Maker {
    const CMPIBroker* broker;
    const char* name_space;
    CMPI_Made* made;

    template <class Object> Object* own(Object* object) const {
        if (made != nullptr && object != nullptr) {
            made->keep(object);
        }
        return object;
    }
    CMPIString* string(const String& text) const {
        CMPIStatus status{CMPI_RC_OK, nullptr};
        return made != nullptr ? made->string(text) : CMNewString(broker, text.c_str(), &status);
    }
    CMPIInstance* instance(const CMPIObjectPath* path) const {
        CMPIStatus status{CMPI_RC_OK, nullptr};
        CMPIInstance* const result = CMNewInstance(broker, path, &status);
        if (made != nullptr && result != nullptr) {
            made->keep(result, path);
        }
        return result;
    }
};

int object_to_cmpi_data(const Maker& maker, const Instance* instance, CMPIType type,
                        CMPIData& data);

// The CMPI type that instances of a feature travel as.
CMPIType object_type(uint32 flags) noexcept {
    return (flags & (FLAG_EMBEDDED_OBJECT | FLAG_EMBEDDED_INSTANCE)) != 0 ? CMPI_instance
                                                                          : CMPI_ref;
}

// The CMPI form of one value that is no array.
int element_to_cmpi_data(const Maker& maker, sint32 type, const void* payload, uint32 flags,
                         CMPIData& data) {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    switch (type) {
    case STRING:
        data.value.string = maker.string(*static_cast<const String*>(payload));
        if (data.value.string == nullptr) {
            return -1;
        }
        break;
    case DATETIME: {
        char text[Datetime::ascii_size];
        static_cast<const Datetime*>(payload)->ascii(text);
        data.value.dateTime = maker.own(CMNewDateTimeFromChars(maker.broker, text, &status));
        if (data.value.dateTime == nullptr) {
            return -1;
        }
        break;
    }
    case Value::INSTANCE:
        return object_to_cmpi_data(maker, *static_cast<Instance* const*>(payload),
                                   object_type(flags), data);
    default:
        with_scalar(type, [&](auto scalar) { scalar.put(data.value, payload); });
    }
    data.type = scalar_types[type];
    return 0;
}

// Strings go into an array as characters, which every object manager copies.
int array_to_cmpi_data(const Maker& maker, const Value_View& value, uint32 flags, CMPIData& data) {
    const sint32 type = value.kind - Value::ARRAY;
    const CMPIType cmpi_type = type == Value::INSTANCE ? object_type(flags) : scalar_types[type];
    const Array_Base& array = *static_cast<const Array_Base*>(value.payload);
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIArray* const result = maker.own(
        CMNewArray(maker.broker, static_cast<CMPICount>(array.size()), cmpi_type, &status));
    if (result == nullptr) {
        return -1;
    }
    for (std::size_t i = 0; i < array.size(); ++i) {
        const auto index = static_cast<CMPICount>(i);
        if (type == STRING) {
            const char* const chars = static_cast<const String*>(array.at(i))->c_str();
            status = CMSetArrayElementAt(result, index, chars, CMPI_chars);
        } else {
            CMPIData element{};
            if (element_to_cmpi_data(maker, type, array.at(i), flags, element) != 0) {
                log(LL_WARN, source, __LINE__,
                    type == Value::INSTANCE ? "element conversion failed"
                                            : "CMSetArrayElementAt() failed");
                return -1;
            }
            status = CMSetArrayElementAt(result, index, &element.value, cmpi_type);
        }
        if (status.rc != CMPI_RC_OK) {
            log(LL_WARN, source, __LINE__, "CMSetArrayElementAt() failed");
            return -1;
        }
    }
    data.type = array_type(cmpi_type);
    data.value.array = result;
    return 0;
}

int object_to_cmpi_data(const Maker& maker, const Instance* instance, CMPIType type,
                        CMPIData& data) {
    if (instance == nullptr) {
        log(LL_WARN, source, __LINE__, "null instance argument");
        return -1;
    }
    const char* own =
        instance->__name_space.empty() ? maker.name_space : instance->__name_space.c_str();
    if (own == nullptr || *own == '\0') {
        log(LL_WARN, source, __LINE__, "null namespace");
        return -1;
    }
    const char* class_name = instance->__meta_class->name;
    if (class_name == nullptr || *class_name == '\0') {
        log(LL_WARN, source, __LINE__, "null classname");
        return -1;
    }
    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIObjectPath* const path = maker.own(CMNewObjectPath(maker.broker, own, class_name, &status));
    if (path == nullptr) {
        log(LL_WARN, source, __LINE__, "CMNewObjectPath() failed");
        return -1;
    }
    CMPIObjectPath_Container keys(nullptr, maker.broker, own, path, 0, maker.made);
    if (convert(keys, instance, FLAG_KEY) != 0) {
        log(LL_WARN, source, __LINE__, "Container::convert() failed");
        return -1;
    }
    if (type == CMPI_ref) {
        data.type = CMPI_ref;
        data.value.ref = path;
        return 0;
    }
    CMPIInstance* const result = maker.instance(path);
    if (result == nullptr) {
        log(LL_WARN, source, __LINE__, "CMNewInstance() failed");
        return -1;
    }
    CMPIInstance_Container features(nullptr, maker.broker, own, result, 0, maker.made);
    if (convert(features, instance, 0) != 0) {
        log(LL_WARN, source, __LINE__, "Container::convert() failed");
        return -1;
    }
    data.type = CMPI_instance;
    data.value.inst = result;
    return 0;
}

// Reads a container into a new instance that lies in the namespace of `path`.
CMPIrc make_instance(const Container& container, const Meta_Structure* structure, uint32 flags,
                     const char* name_space, Instance*& instance) {
    Ref<> result(create(structure, false));
    Instance* made = result.get();
    if (convert(container, structure, flags, made) != 0) {
        return CMPI_RC_ERR_FAILED;
    }
    set_name_space_recursive(made, name_space, false);
    instance = result.release();
    return CMPI_RC_OK;
}

} // namespace

int cmpi_to_cimple_value(const Meta_Repository* repository, const CMPIBroker* broker,
                         const char* name_space, const CMPIData& data, Value& value, int depth) {
    const sint32 kind = kind_of(data.type);
    if (is_null(data)) {
        if (kind == Value::NONE) {
            log(LL_WARN, source, __LINE__, "unknown type");
            return -1;
        }
        value.set_null_of(kind);
        return 0;
    }
    if (!has_value(data)) {
        log(LL_WARN, source, __LINE__, "bad value");
        return -1;
    }
    const Source from{repository, broker, name_space, depth};
    switch (kind) {
    case Value::NONE:
        log(LL_WARN, source, __LINE__, "unreachable");
        return -1;
    case STRING:
        value.set(string_of(data.value.string));
        return 0;
    case DATETIME: {
        Datetime datetime;
        if (!datetime_of(data.value.dateTime, datetime)) {
            return -1;
        }
        value.set(datetime);
        return 0;
    }
    case Value::INSTANCE: {
        if (data.value.inst == nullptr) {
            value.set_null_of(Value::INSTANCE);
            return 0;
        }
        Ref<> object = object_of(from, data);
        if (!object) {
            return -1;
        }
        value.set(object.release());
        return 0;
    }
    case Value::INSTANCE_ARRAY:
        return data.value.array == nullptr ? -1 : instance_array_of(from, data, value);
    default:
        if (kind >= Value::ARRAY) {
            return data.value.array == nullptr ? -1 : scalar_array_of(data, value);
        }
        with_scalar(kind, [&](auto scalar) { value.set(scalar.get(data.value)); });
        return 0;
    }
}

int _to_cmpi_data(const CMPIBroker* broker, const char* name_space, const Value_View& value,
                  uint32 flags, CMPIData& data, CMPI_Made* made) {
    data = CMPIData{};
    if (value.kind == Value::NONE) {
        log(LL_WARN, source, __LINE__, "missing type");
        return -1;
    }
    const Maker maker{broker, name_space, made};
    return value.kind >= Value::ARRAY
               ? array_to_cmpi_data(maker, value, flags, data)
               : element_to_cmpi_data(maker, value.kind, value.payload, flags, data);
}

const char* name_space_of(const CMPIObjectPath* path) {
    return path == nullptr ? "" : text_of(CMGetNameSpace(path, nullptr));
}

const char* class_name_of(const CMPIObjectPath* path) {
    return path == nullptr ? "" : text_of(CMGetClassName(path, nullptr));
}

CMPIrc make_cimple_reference(const CMPIBroker* broker, const Meta_Class* meta_class,
                             const CMPIObjectPath* path, Instance*& instance) {
    const char* name_space = name_space_of(path);
    return make_instance(
        CMPIObjectPath_Container(meta_class->meta_repository, broker, name_space, path), meta_class,
        FLAG_KEY, name_space, instance);
}

CMPIrc make_cimple_instance(const CMPIBroker* broker, const Meta_Class* meta_class,
                            const CMPIObjectPath* path, const CMPIInstance* cmpi_instance,
                            Instance*& instance) {
    if (cmpi_instance == nullptr) {
        return CMPI_RC_ERR_FAILED;
    }
    const char* name_space = name_space_of(path);
    return make_instance(
        CMPIInstance_Container(meta_class->meta_repository, broker, name_space, cmpi_instance),
        meta_class, 0, name_space, instance);
}

CMPIrc make_cimple_method(const CMPIBroker* broker, const Meta_Class* meta_class,
                          const Meta_Method* meta_method, const CMPIObjectPath* path,
                          const CMPIArgs* args, Instance*& instance) {
    const char* name_space = name_space_of(path);
    return make_instance(CMPIArgs_Container(meta_class->meta_repository, broker, name_space, args),
                         meta_method, FLAG_IN, name_space, instance);
}

CMPIrc make_CMPI_object_path(const CMPIBroker* broker, const Instance* instance,
                             const char* name_space, CMPIObjectPath*& path, CMPI_Made* made) {
    if (instance == nullptr) {
        return CMPI_RC_ERR_FAILED;
    }
    CMPIStatus status{CMPI_RC_OK, nullptr};
    const Maker maker{broker, name_space, made};
    CMPIObjectPath* const result =
        maker.own(CMNewObjectPath(broker, name_space, instance->__meta_class->name, &status));
    if (result == nullptr) {
        return CMPI_RC_ERR_FAILED;
    }
    CMPIObjectPath_Container keys(nullptr, broker, name_space, result, 0, made);
    convert(keys, instance, FLAG_KEY);
    path = result;
    return CMPI_RC_OK;
}

CMPIrc make_CMPI_instance(const CMPIBroker* broker, const Instance* instance,
                          const char* name_space, const CMPIObjectPath* path,
                          const char** properties, CMPIInstance*& cmpi_instance, CMPI_Made* made) {
    if (instance == nullptr) {
        return CMPI_RC_ERR_FAILED;
    }
    if (path == nullptr) {
        log(LL_WARN, source, __LINE__, "No ObjectPath built before call to make_CMPI_instance");
        CMPIObjectPath* built = nullptr;
        const CMPIrc rc = make_CMPI_object_path(broker, instance, name_space, built, made);
        if (rc != CMPI_RC_OK) {
            return rc;
        }
        path = built;
    }
    CMPIInstance* const result = Maker{broker, name_space, made}.instance(path);
    if (result == nullptr) {
        return CMPI_RC_ERR_FAILED;
    }
    if (properties != nullptr) {
        const CMPIStatus status = CMSetPropertyFilter(result, properties, nullptr);
        if (status.rc != CMPI_RC_OK) {
            return status.rc;
        }
    }
    CMPIInstance_Container features(nullptr, broker, name_space, result, 0, made);
    convert(features, instance, 0);
    cmpi_instance = result;
    return CMPI_RC_OK;
}

CMPIrc make_CMPI_method(const CMPIBroker* broker, const char* name_space,
                        const Instance* method_instance, CMPIArgs* args, CMPIValue& return_value,
                        CMPIType& return_type) {
    return_value = CMPIValue{};
    return_type = CMPI_null;
    CMPIArgs_Container container(nullptr, broker, name_space, args);
    if (convert(container, method_instance, FLAG_OUT) != 0) {
        return CMPI_RC_ERR_FAILED;
    }
    return_value = container.return_value();
    return_type = container.return_type();
    return CMPI_RC_OK;
}

} // namespace cimple
