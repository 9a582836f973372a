#include "host/cim_json.h"

#include "host/declared_type.h"
#include "host/object_manager.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <set>

namespace tvrhost {

Json to_json(const Cim_Value& value) {
    if (value.is_null()) {
        return nullptr;
    }
    if (value.is_array()) {
        Json array = Json::array();
        for (const Cim_Value& element : value.elements()) {
            array.push_back(to_json(element));
        }
        return array;
    }
    switch (value.type()) {
    case Cim_Type::boolean:
        return value.as_bool();
    case Cim_Type::real32:
    case Cim_Type::real64: // no more digits than the value has
        return std::isfinite(value.as_real()) ? Json(std::stod(value.plain()))
                                              : Json(value.plain());
    case Cim_Type::sint8:
    case Cim_Type::sint16:
    case Cim_Type::sint32:
    case Cim_Type::sint64:
        return value.as_int();
    case Cim_Type::string:
    case Cim_Type::datetime:
    case Cim_Type::reference:
        return value.plain();
    case Cim_Type::instance:
        return to_json(value.as_instance());
    default:
        return value.as_uint();
    }
}

Json to_json(const Cim_Path& path) {
    Json json = {{"path", path.text()}, {"class", path.class_name}, {"namespace", path.name_space}};
    Json keys = Json::object();
    for (const Named_Value& key : path.keys) {
        keys[key.name] = to_json(key.value);
    }
    json["keys"] = std::move(keys);
    return json;
}

Json to_json(const Cim_Instance& instance) {
    Json properties = Json::object();
    for (const Named_Value& property : instance.properties) {
        properties[property.name] = to_json(property.value);
    }
    return {{"class", instance.class_name()},
            {"path", instance.path.text()},
            {"properties", std::move(properties)}};
}

namespace {

Cim_Value untyped(const Json& json) {
    if (json.is_boolean()) {
        return json.as_boolean();
    }
    if (json.is_unsigned()) {
        return json.as_unsigned();
    }
    if (json.is_negative()) {
        return json.as_negative();
    }
    if (json.is_number()) {
        return json.as_number();
    }
    if (json.is_string()) {
        return json.as_string();
    }
    if (json.is_array()) {
        std::vector<Cim_Value> elements;
        for (const Json& element : json.elements()) {
            elements.push_back(untyped(element));
        }
        const Cim_Type type = elements.empty() ? Cim_Type::string : elements.front().type();
        return Cim_Value::array(type, std::move(elements));
    }
    if (json.is_null()) {
        return {};
    }
    throw Value_Error("an object cannot stand here");
}

tvrmof::Feature element_of(const tvrmof::Typed& declared) {
    tvrmof::Feature element;
    static_cast<tvrmof::Typed&>(element) = declared;
    element.is_array = false;
    return element;
}

} // namespace

Cim_Value value_from_json(const Json& json, const tvrmof::Typed& declared,
                          const tvrmof::Schema* schema, const std::string& name_space) {
    const Cim_Type type = declared_type(declared);
    if (json.is_null()) {
        return Cim_Value::null(type, declared.is_array);
    }
    if (declared.is_array) {
        if (!json.is_array()) {
            throw Value_Error(std::string("takes an array of ") + type_name(type) + ", not " +
                              json.text(-1));
        }
        const tvrmof::Feature element = element_of(declared);
        std::vector<Cim_Value> elements;
        for (const Json& each : json.elements()) {
            elements.push_back(value_from_json(each, element, schema, name_space));
        }
        return Cim_Value::array(type, std::move(elements));
    }
    if (type == Cim_Type::instance) {
        return instance_from_json(json, schema, name_space);
    }
    const bool text =
        type == Cim_Type::string || type == Cim_Type::datetime || type == Cim_Type::reference;
    if (json.is_array() || json.is_object() || (text && !json.is_string())) {
        throw Value_Error(std::string("takes ") + type_name(type) + ", not " + json.text(-1));
    }
    if (type == Cim_Type::string) {
        return json.as_string();
    }
    return parse_value(json.is_string() ? json.as_string() : json.text(-1), declared, schema,
                       name_space);
}

Cim_Instance instance_from_json(const Json& json, const tvrmof::Schema* schema,
                                const std::string& name_space) {
    const Json* const class_name = json.find("class");
    if (class_name == nullptr || !class_name->is_string()) {
        throw Value_Error("an instance is an object with \"class\" and \"properties\"");
    }
    Cim_Instance instance;
    instance.path.class_name = class_name->as_string();
    instance.path.name_space = name_space;
    for (const auto& [name, value] : json.members()) {
        if (name == "namespace" && value.is_string()) {
            instance.path.name_space = value.as_string();
        } else if (name == "properties" ? !value.is_object() : name != "class" && name != "path") {
            throw Value_Error("instance of " + instance.path.class_name + ": \"" + name +
                              "\" cannot stand here; \"class\", \"namespace\" (text) and "
                              "\"properties\" (object) can");
        }
    }
    const tvrmof::Class* model = nullptr;
    if (schema != nullptr) {
        model = schema->find(instance.path.class_name);
        if (model == nullptr) {
            throw Value_Error("the schema has no class " + instance.path.class_name);
        }
        instance.path.class_name = model->name;
    }
    const Json* const properties = json.find("properties");
    if (properties == nullptr) {
        return instance;
    }
    for (const auto& [name, value] : properties->members()) {
        const std::string place = instance.path.class_name + "." + name + ": ";
        const tvrmof::Feature* feature = model == nullptr ? nullptr : model->find(name);
        if (model != nullptr &&
            (feature == nullptr || feature->kind == tvrmof::Feature_Kind::method)) {
            throw Value_Error(place + "the class has no such property");
        }
        try {
            Cim_Value read = feature == nullptr ? untyped(value)
                                                : value_from_json(value, *feature, schema,
                                                                  instance.path.name_space);
            instance.properties.set(feature == nullptr ? name : feature->name, std::move(read));
        } catch (const Value_Error& error) {
            throw Value_Error(place + error.what());
        }
    }
    if (model != nullptr) {
        for (const tvrmof::Feature* key : model->keys()) {
            if (const Cim_Value* value = instance.properties.find(key->name)) {
                instance.path.keys.set(key->name, *value);
            }
        }
    }
    return instance;
}

std::vector<Cim_Instance> read_instances(const std::string& file, const tvrmof::Schema* schema) {
    std::ifstream stream(file);
    if (!stream) {
        throw Start_Error("instance file " + file + ": cannot be read");
    }
    std::vector<Cim_Instance> instances;
    std::set<std::string> paths;
    std::size_t index = 0;
    try {
        const Json json = Json::parse(std::string(std::istreambuf_iterator<char>(stream), {}));
        const Json* const named = json.find("instances");
        const Json* const list = named == nullptr ? &json : named;
        if (!list->is_array()) {
            throw Value_Error("takes an array of instances, or an object with \"instances\"");
        }
        for (const Json& each : list->elements()) {
            instances.push_back(instance_from_json(each, schema, "root/tavrin"));
            if (instances.back().path.keys.empty() && schema != nullptr) {
                throw Value_Error("instance of " + instances.back().class_name() +
                                  " has none of its keys");
            }
            const std::string path = instances.back().path.text();
            if (!paths.insert(path).second) {
                throw Value_Error(path + " is there already");
            }
            ++index;
        }
    } catch (const std::ios_base::failure&) { // a directory, for one
        throw Start_Error("instance file " + file + ": cannot be read");
    } catch (const tvrjson::Parse_Error& error) {
        throw Start_Error("instance file " + file + ": " + error.what());
    } catch (const Value_Error& error) {
        throw Start_Error("instance file " + file + ": [" + std::to_string(index) +
                          "]: " + error.what());
    }
    return instances;
}

} // namespace tvrhost
