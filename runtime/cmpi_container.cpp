#include "runtime/cmpi_container.h"

#include "runtime/cancellation.h"
#include "runtime/log.h"

#include <cmpimacs.h>

#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace cimple {

namespace {

constexpr const char* container_source = "Container";
constexpr const char* source = "CMPI_Containers";

// Sets `value` to `number` as a `T`, with the null flag it had.
template <class T, class N> void narrow(Value& value, N number) {
    const bool null = value.null();
    value.set<T>(static_cast<T>(number));
    value.set_null(null);
}

void narrow_uint64(Value& value, sint32 expected) {
    const uint64 number = *value.get<uint64>();
    switch (expected) {
    case UINT8:
        return narrow<uint8>(value, number);
    case SINT8:
        return narrow<sint8>(value, number);
    case UINT16:
        return narrow<uint16>(value, number);
    case SINT16:
        return narrow<sint16>(value, number);
    case UINT32:
        return narrow<uint32>(value, number);
    case SINT32:
        return narrow<sint32>(value, number);
    case SINT64:
        return narrow<sint64>(value, number);
    default:
        return;
    }
}

bool begins_with(const char* text, const char* word) noexcept {
    return strncasecmp(text, word, std::strlen(word)) == 0;
}

// Reads `text` as a scalar of the kind `expected`; false if it isn't cast.
bool scalar_of_text(const char* text, sint32 expected, CMPIData& out) {
    if (expected == BOOLEAN) {
        if (!begins_with(text, "true") && !begins_with(text, "false")) {
            return false;
        }
        out.type = CMPI_boolean;
        out.value.boolean = begins_with(text, "true");
        return true;
    }
    const long number = std::strtol(text, nullptr, 10);
    switch (expected) {
    case UINT8:
        out.type = CMPI_uint8;
        out.value.uint8 = static_cast<CMPIUint8>(number);
        return true;
    case SINT8:
        out.type = CMPI_sint8;
        out.value.sint8 = static_cast<CMPISint8>(number);
        return true;
    case UINT16:
        out.type = CMPI_uint16;
        out.value.uint16 = static_cast<CMPIUint16>(number);
        return true;
    case SINT16:
        out.type = CMPI_sint16;
        out.value.sint16 = static_cast<CMPISint16>(number);
        return true;
    case UINT32:
        out.type = CMPI_uint32;
        out.value.uint32 = static_cast<CMPIUint32>(number);
        return true;
    case SINT32:
        out.type = CMPI_sint32;
        out.value.sint32 = static_cast<CMPISint32>(number);
        return true;
    case Value::NONE:
        log(LL_WARN, source, __LINE__, "missing type");
        return false;
    default:
        log(LL_WARN, source, __LINE__, "Default case - unsupported type");
        return false;
    }
}

// Clients that don't know a method's parameters send every argument as a string.
void cast_cmpi_string_to_scalar(CMPIData& data, sint32 expected) {
    if (expected > REAL64) {
        log(LL_INFO, source, __LINE__, "cast_cmpi_string_to_scalar(): Not supported");
        return;
    }
    CMPIString* string = data.value.string;
    if (string == nullptr) {
        log(LL_INFO, source, __LINE__, "ignored null CMPI string");
        return;
    }
    const char* text = CMGetCharsPtr(string, nullptr);
    if (text == nullptr) {
        log(LL_WARN, source, __LINE__, "CMGetCharsPtr() failed");
        return;
    }
    CMPIData cast{};
    if (scalar_of_text(text, expected, cast)) {
        CMRelease(string);
        data = cast;
        log(LL_WARN, source, __LINE__, "converting string to registered parameter type");
    }
}

bool selected(const Meta_Feature& feature, uint32 flags) noexcept {
    return flags == 0 || feature.has(flags);
}

// Makes every feature of a new instance NULL; a single reference is so already.
void set_all_null(Instance* instance) noexcept {
    set_null_flags(instance, true, true, 1);
    for (const Meta_Feature* feature : *instance->__meta_class) {
        if (feature->has(FLAG_REFERENCE) && as_reference(*feature).is_array()) {
            null_flag(instance, as_reference(*feature)) = 1;
        }
    }
}

// Where the value of a feature lies, if it is one that a container can have: no method, not NULL.
bool view_of(const Instance* instance, const Meta_Feature& feature, Value_View& view) noexcept {
    if (feature.has(FLAG_PROPERTY)) {
        const Meta_Property& property = as_property(feature);
        view = {Value::kind_of(feature), field(instance, property.offset)};
        return null_flag(instance, property) == 0;
    }
    if (feature.has(FLAG_REFERENCE)) {
        const Meta_Reference& reference = as_reference(feature);
        view = {Value::kind_of(feature), field(instance, reference.offset)};
        return reference.is_array() ? null_flag(instance, reference) == 0
                                    : reference_field(instance, reference) != nullptr;
    }
    return false;
}

} // namespace

int convert(const Container& container, const Meta_Structure* structure, uint32 flags,
            Instance*& instance) {
    if (instance == nullptr) {
        instance = create(structure, false);
    }
    set_all_null(instance);

    String name;
    Value value;
    const uint32 size = container.get_size();
    for (uint32 i = 0; i < size; ++i) {
        if (container.get_name(i, name) != 0) {
            log(LL_WARN, container_source, __LINE__, "get_name() failed: class=%s, index=%u",
                structure->name, i);
            continue;
        }
        const Meta_Feature* feature =
            find_feature(structure, name.c_str(), PROPERTIES_AND_REFERENCES);
        if (feature == nullptr) {
            log(LL_WARN, container_source, __LINE__, "unknown feature: %s.%s", structure->name,
                name.c_str());
            continue;
        }
        if (!selected(*feature, flags)) {
            continue;
        }
        const sint32 kind = Value::kind_of(*feature);
        if (kind == Value::NONE) {
            log(LL_WARN, container_source, __LINE__, "unexpected error: %s.%s", structure->name,
                name.c_str());
            continue;
        }
        if (container.get_value(i, kind, value) != 0 || Value::set(value, instance, feature) != 0) {
            log(LL_WARN, container_source, __LINE__, "conversion error: %s.%s", structure->name,
                name.c_str());
        }
        value.clear();
    }
    return 0;
}

int convert(Container& container, const Instance* instance, uint32 flags) {
    if (instance == nullptr) {
        log(LL_WARN, container_source, __LINE__, "ignored null instance arg");
        return -1;
    }
    const Meta_Structure& structure = *instance->__meta_class;
    for (const Meta_Feature* feature : structure) {
        Value_View value;
        if (!selected(*feature, flags) || !view_of(instance, *feature, value)) {
            continue;
        }
        if (container.set_value(feature->name, value, feature->flags) != 0) {
            log(LL_WARN, container_source, __LINE__, "conversion error: %s.%s", structure.name,
                feature->name);
        }
    }
    return 0;
}

// CMPI_Container

int CMPI_Container::get_name(uint32 index, String& name) const {
    if (index >= get_size()) {
        log(LL_WARN, source, __LINE__, "bounds error");
        return -1;
    }
    CMPIString* string = nullptr;
    CMPIData data{};
    if (!read(index, &string, data)) {
        return -1;
    }
    const char* text = string == nullptr ? nullptr : CMGetCharsPtr(string, nullptr);
    name = text == nullptr ? "" : text;
    return 0;
}

int CMPI_Container::get_value(uint32 index, sint32 expected, Value& value) const {
    if (index >= get_size()) {
        log(LL_WARN, source, __LINE__, "bounds error");
        return -1;
    }
    CMPIString* string = nullptr;
    CMPIData data{};
    if (!read(index, &string, data)) {
        return -1;
    }
    adapt(expected, data);
    if (cmpi_to_cimple_value(_repository, _broker, _name_space, data, value, _depth) != 0) {
        log(LL_WARN, source, __LINE__, "cmpi_to_cimple_value() failed");
        return -1;
    }
    adapt(expected, value);
    if (value.type() != expected) {
        const char* text = string == nullptr ? nullptr : CMGetCharsPtr(string, nullptr);
        log(LL_WARN, source, __LINE__, "type mismatch on %s: %s/%s", text == nullptr ? "" : text,
            Value::kind_name(value.type()), Value::kind_name(expected));
        return -1;
    }
    return 0;
}

// CMPIArgs_Container

uint32 CMPIArgs_Container::get_size() const {
    return _args == nullptr ? 0 : CMGetArgCount(_args, nullptr);
}

bool CMPIArgs_Container::read(uint32 index, CMPIString** name, CMPIData& data) const {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    data = CMGetArgAt(_args, index, name, &status);
    if (status.rc != CMPI_RC_OK) {
        log(LL_WARN, source, __LINE__, "CMGetArgAt() failed");
    }
    return status.rc == CMPI_RC_OK;
}

void CMPIArgs_Container::adapt(sint32 expected, CMPIData& data) const {
    if (data.type == CMPI_string && has_value(data) && expected != STRING) {
        cast_cmpi_string_to_scalar(data, expected);
    }
}

// An empty list of embedded instances may come as a boolean.
void CMPIArgs_Container::adapt(sint32 expected, Value& value) const {
    if (value.type() == BOOLEAN && expected == Value::INSTANCE_ARRAY) {
        value.set_null_of(Value::INSTANCE_ARRAY);
    }
}

int CMPIArgs_Container::set_value(const char* name, const Value_View& value, uint32 flags) {
    CMPIData data;
    if (to_data(value, flags, data) != 0) {
        log(LL_WARN, source, __LINE__, "_to_cmpi_data() failed: feature=%s", name);
        return -1;
    }
    if (std::strcmp(name, "return_value") == 0) {
        _return_type = data.type;
        _return_value = data.value;
        return 0;
    }
    if (_args == nullptr || CMAddArg(_args, name, &data.value, data.type).rc != CMPI_RC_OK) {
        log(LL_WARN, source, __LINE__, "CMAddArg() failed");
        return -1;
    }
    return 0;
}

// CMPIObjectPath_Container

uint32 CMPIObjectPath_Container::get_size() const {
    return _path == nullptr ? 0 : CMGetKeyCount(_path, nullptr);
}

bool CMPIObjectPath_Container::read(uint32 index, CMPIString** name, CMPIData& data) const {
    CMPIStatus status{CMPI_RC_OK, nullptr};
    data = CMGetKeyAt(_path, index, name, &status);
    if (status.rc != CMPI_RC_OK) {
        log(LL_WARN, source, __LINE__, "CMGetKeyAt() failed");
    }
    return status.rc == CMPI_RC_OK;
}

void CMPIObjectPath_Container::adapt(sint32 expected, Value& value) const {
    if (value.type() == UINT64) {
        narrow_uint64(value, expected);
    } else if (value.type() == SINT64 && expected == UINT32) {
        narrow<uint32>(value, *value.get<sint64>());
    }
}

int CMPIObjectPath_Container::set_value(const char* name, const Value_View& value, uint32 flags) {
    CMPIData data;
    if (to_data(value, flags, data) != 0) {
        return -1;
    }
    if (CMAddKey(_path, name, &data.value, data.type).rc != CMPI_RC_OK) {
        log(LL_WARN, source, __LINE__, "CMAddKey() failed");
        return -1;
    }
    return 0;
}

// CMPIInstance_Container

uint32 CMPIInstance_Container::get_size() const {
    return _instance == nullptr ? 0 : CMGetPropertyCount(_instance, nullptr);
}

bool CMPIInstance_Container::read(uint32 index, CMPIString** name, CMPIData& data) const {
    try {
        CMPIStatus status{CMPI_RC_OK, nullptr};
        data = CMGetPropertyAt(_instance, index, name, &status);
        if (status.rc != CMPI_RC_OK) {
            log(LL_WARN, source, __LINE__, "CMGetPropertyAt() failed");
        }
        return status.rc == CMPI_RC_OK;
    } catch (...) {
        pass_cancellation();
        log(LL_WARN, source, __LINE__, "CMGetPropertyAt() threw exception: index=%u size=%u", index,
            get_size());
        return false;
    }
}

int CMPIInstance_Container::set_value(const char* name, const Value_View& value, uint32 flags) {
    CMPIData data;
    if (to_data(value, flags, data) != 0) {
        return -1;
    }
    if (CMSetProperty(_instance, name, &data.value, data.type).rc != CMPI_RC_OK) {
        log(LL_WARN, source, __LINE__, "CMSetProperty() failed: %s", name);
        return -1;
    }
    return 0;
}

} // namespace cimple
