#include "bench/bare_provider.h"

#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

#include <cstdio>
#include <cstdlib>

namespace tvrbench {

namespace {

using tvrhost::Cim_Type;
using tvrhost::Cim_Value;

// A value as a provider has it ready: a scalar in CMPI's form, or a text, or an array of either.
struct Ready_Value {
    std::string name;
    CMPIType type = CMPI_null; // of the elements, for an array
    bool is_array = false;
    std::vector<CMPIValue> scalars;
    std::vector<std::string> texts;
};

struct Ready_Instance {
    std::vector<Ready_Value> keys;
    std::vector<Ready_Value> properties;
};

std::string class_name;
std::vector<Ready_Instance> ready;

void append(Ready_Value& ready_value, const Cim_Value& value) {
    CMPIValue scalar{};
    switch (value.type()) {
    case Cim_Type::boolean:
        scalar.boolean = value.as_bool() ? 1 : 0;
        break;
    case Cim_Type::uint16:
        scalar.uint16 = static_cast<CMPIUint16>(value.as_uint());
        break;
    case Cim_Type::uint32:
        scalar.uint32 = static_cast<CMPIUint32>(value.as_uint());
        break;
    case Cim_Type::uint64:
        scalar.uint64 = value.as_uint();
        break;
    case Cim_Type::string:
        ready_value.texts.push_back(value.as_string());
        return;
    default:
        std::fprintf(stderr, "tvr_bench: %s has a type that the bare provider doesn't know\n",
                     ready_value.name.c_str());
        std::exit(1);
    }
    ready_value.scalars.push_back(scalar);
}

std::vector<Ready_Value> ready_values(const tvrhost::Named_Values& values) {
    std::vector<Ready_Value> out;
    for (const tvrhost::Named_Value& named : values) {
        if (named.value.is_null()) {
            continue;
        }
        Ready_Value value{
            named.name, static_cast<CMPIType>(named.value.type()), named.value.is_array(), {}, {}};
        if (value.is_array) {
            for (const Cim_Value& element : named.value.elements()) {
                append(value, element);
            }
        } else {
            append(value, named.value);
        }
        out.push_back(std::move(value));
    }
    return out;
}

const CMPIBroker* broker;

void set(const CMPIInstance* instance, const Ready_Value& value) {
    if (!value.is_array) {
        if (value.type == CMPI_string) {
            CMSetProperty(instance, value.name.c_str(), value.texts[0].c_str(), CMPI_chars);
        } else {
            CMSetProperty(instance, value.name.c_str(), &value.scalars[0], value.type);
        }
        return;
    }
    const std::size_t size = value.type == CMPI_string ? value.texts.size() : value.scalars.size();
    CMPIArray* array = CMNewArray(broker, static_cast<CMPICount>(size), value.type, nullptr);
    for (CMPICount i = 0; i < size; ++i) {
        if (value.type == CMPI_string) {
            CMSetArrayElementAt(array, i, value.texts[i].c_str(), CMPI_chars);
        } else {
            CMSetArrayElementAt(array, i, &value.scalars[i], value.type);
        }
    }
    CMPIValue holder;
    holder.array = array;
    CMSetProperty(instance, value.name.c_str(), &holder,
                  static_cast<CMPIType>(value.type | CMPI_ARRAY));
    CMRelease(array);
}

CMPIStatus enumerate(CMPIInstanceMI*, const CMPIContext*, const CMPIResult* result,
                     const CMPIObjectPath* class_path, const char** properties) {
    CMPIString* name_space = CMGetNameSpace(class_path, nullptr);
    for (const Ready_Instance& instance : ready) {
        CMPIObjectPath* path =
            CMNewObjectPath(broker, CMGetCharPtr(name_space), class_name.c_str(), nullptr);
        for (const Ready_Value& key : instance.keys) {
            CMAddKey(path, key.name.c_str(), key.texts[0].c_str(), CMPI_chars);
        }
        CMPIInstance* out = CMNewInstance(broker, path, nullptr);
        if (properties != nullptr) {
            CMSetPropertyFilter(out, properties, nullptr);
        }
        for (const Ready_Value& property : instance.properties) {
            set(out, property);
        }
        CMReturnInstance(result, out);
        CMRelease(out);
        CMRelease(path);
    }
    CMReturnDone(result);
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus cleanup(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean) {
    return {CMPI_RC_OK, nullptr};
}

CMPIInstanceMI* create(const CMPIBroker* mb, const CMPIContext*, CMPIStatus*) {
    static const CMPIInstanceMIFT table = [] {
        CMPIInstanceMIFT ft{};
        ft.ftVersion = 100;
        ft.miVersion = 100;
        ft.miName = "instancebare";
        ft.cleanup = cleanup;
        ft.enumerateInstances = enumerate;
        return ft;
    }();
    static CMPIInstanceMI mi{nullptr, &table};
    broker = mb;
    return &mi;
}

} // namespace

void set_bare_instances(const std::vector<tvrhost::Cim_Instance>& instances) {
    ready.clear();
    for (const tvrhost::Cim_Instance& instance : instances) {
        class_name = instance.class_name();
        ready.push_back({ready_values(instance.path.keys), ready_values(instance.properties)});
    }
}

tvrhost::Any_Function bare_factory(const std::string& name) {
    return name.ends_with("_Create_InstanceMI") ? reinterpret_cast<tvrhost::Any_Function>(create)
                                                : nullptr;
}

} // namespace tvrbench
