// The function tables of the encapsulated data.
#include "host/declared_type.h"
#include "host/filters.h"
#include "host/objects.h"

#include <algorithm>
#include <cstring>

namespace tvrhost {

namespace {

CMPIStatus status(CMPIrc rc) noexcept {
    return {rc, nullptr};
}

void set(CMPIStatus* to, CMPIrc rc) noexcept {
    if (to != nullptr) {
        *to = status(rc);
    }
}

std::string_view text_of(const char* chars) noexcept {
    return chars == nullptr ? std::string_view() : std::string_view(chars);
}

// The live object of a call's first argument, or null with the code set.
template <class O> O* self(const typename O::Pair* pair, const char* operation, CMPIStatus* rc) {
    O* const object = static_cast<O*>(const_cast<typename O::Pair*>(pair));
    const bool live = object != nullptr && object->tracker.is_live(*object, operation);
    set(rc, live ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return live ? object : nullptr;
}

template <class O> CMPIStatus release(typename O::Pair* pair) {
    O* const object = static_cast<O*>(pair);
    if (object == nullptr || !object->tracker.release(*object, __builtin_return_address(0))) {
        return status(CMPI_RC_ERR_INVALID_HANDLE);
    }
    return status(CMPI_RC_OK);
}

// Clones of strings, arrays and the like: a copy of the content in an object of its own.
template <class O> typename O::Pair* clone(const typename O::Pair* pair, CMPIStatus* rc) {
    O* const object = self<O>(pair, "clone", rc);
    if (object == nullptr) {
        return nullptr;
    }
    if constexpr (std::is_same_v<O, Result_Object>) {
        set(rc, CMPI_RC_ERR_NOT_SUPPORTED); // a result ends with its call
        return nullptr;
    } else if constexpr (std::is_same_v<O, Args_Object>) {
        return books_of(*object).make_args(books_of(*object).read(*object, "clone"), true);
    } else if constexpr (std::is_same_v<O, Array_Object>) {
        const Cim_Type type = object->content->type;
        return books_of(*object).make(Array_Content{type, books_of(*object).read(*object, "clone")},
                                      true);
    } else if constexpr (std::is_same_v<O, Path_Object>) {
        return books_of(*object).make(Path_Content{books_of(*object).read(*object, "clone")}, true);
    } else if constexpr (std::is_same_v<O, Instance_Object>) {
        Instance_Content copy = books_of(*object).read(*object, "clone");
        copy.kept.clear();
        return books_of(*object).make(std::move(copy), true);
    } else if constexpr (std::is_same_v<O, Context_Object>) {
        return books_of(*object).make_context(*object->content, true);
    } else {
        return books_of(*object).make(typename O::Value(*object->content), true);
    }
}

constexpr CMPIData no_data(CMPIValueState state) noexcept {
    CMPIData data{};
    data.state = state;
    return data;
}
constexpr CMPIData missing = no_data(CMPI_nullValue | CMPI_notFound);
constexpr CMPIData bad = no_data(CMPI_nullValue | CMPI_badValue);

CMPIData named(Books& books, const Named_Values& values, const char* name, CMPIrc none,
               CMPIStatus* rc, CMPIValueState state = CMPI_goodValue) {
    const Cim_Value* const value = values.find(text_of(name));
    if (value == nullptr) {
        set(rc, none);
        return missing;
    }
    return books.data(*value, state);
}

CMPIData at(Books& books, const Named_Values& values, CMPICount index, CMPIString** name,
            CMPIrc none, CMPIStatus* rc, CMPIValueState state = CMPI_goodValue) {
    if (name != nullptr) {
        *name = nullptr;
    }
    if (index >= values.size()) {
        set(rc, none);
        return missing;
    }
    const Named_Value& value = values.begin()[index];
    if (name != nullptr) {
        *name = books.make(value.name);
    }
    return books.data(value.value, state);
}

// ---- string

const char* string_chars(const CMPIString* string, CMPIStatus* rc) {
    String_Object* const object = self<String_Object>(string, "getCharPtr", rc);
    return object == nullptr ? nullptr : object->content->c_str();
}

char* string_new_chars(const CMPIString* string, const CMPICodepageID, CMPIStatus* rc) {
    String_Object* const object = self<String_Object>(string, "newCharsCP", rc);
    return object == nullptr ? nullptr : strdup(object->content->c_str());
}

// ---- array

CMPICount array_size(const CMPIArray* array, CMPIStatus* rc) {
    Array_Object* const object = self<Array_Object>(array, "getSize", rc);
    return object == nullptr ? 0 : static_cast<CMPICount>(object->content->elements.size());
}

CMPIType array_type(const CMPIArray* array, CMPIStatus* rc) {
    Array_Object* const object = self<Array_Object>(array, "getSimpleType", rc);
    return object == nullptr ? CMPIType{CMPI_null} : static_cast<CMPIType>(object->content->type);
}

// An element belongs to its array: one that the module has set is the very object that it gave.
CMPIData element_data(Array_Object& object, CMPICount index) {
    const Array_Content& content = *object.content;
    if (index < content.kept.size() && content.kept[index].type != CMPI_null) {
        return {content.kept[index].type, CMPI_goodValue, content.kept[index].value};
    }
    CMPIData data = books_of(object).data(content.elements[index]);
    if (data.state != CMPI_goodValue) {
        return data;
    }
    switch (content.type) {
    case Cim_Type::string:
        static_cast<String_Object*>(data.value.string)->is_element = true;
        break;
    case Cim_Type::datetime:
        static_cast<Datetime_Object*>(data.value.dateTime)->is_element = true;
        break;
    case Cim_Type::reference:
        static_cast<Path_Object*>(data.value.ref)->is_element = true;
        break;
    case Cim_Type::instance:
        static_cast<Instance_Object*>(data.value.inst)->is_element = true;
        break;
    default:
        break;
    }
    return data;
}

CMPIData array_get(const CMPIArray* array, CMPICount index, CMPIStatus* rc) {
    Array_Object* const object = self<Array_Object>(array, "getElementAt", rc);
    if (object == nullptr) {
        return bad;
    }
    if (index >= object->content->elements.size()) {
        set(rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return missing;
    }
    return element_data(*object, index);
}

CMPIStatus array_set(const CMPIArray* array, CMPICount index, const CMPIValue* value,
                     CMPIType type) {
    CMPIStatus rc;
    Array_Object* const object = self<Array_Object>(array, "setElementAt", &rc);
    if (object == nullptr) {
        return rc;
    }
    Books& books = books_of(*object);
    Array_Content& content = *object->content;
    if (index >= content.elements.size()) {
        return status(CMPI_RC_ERR_NO_SUCH_PROPERTY);
    }
    Cim_Value element;
    Kept kept;
    if (const CMPIrc code = books.keep(value, type, element, kept, "setElementAt");
        code != CMPI_RC_OK) {
        return status(code);
    }
    if (element.type() == Cim_Type::none) {
        element = Cim_Value::null(content.type);
    }
    if (element.is_array() || element.type() != content.type) {
        books.fault(Fault_Kind::schema_mismatch, "an element of " +
                                                     type_text(element.type(), element.is_array()) +
                                                     " in an array of " + type_name(content.type));
        return status(CMPI_RC_ERR_TYPE_MISMATCH);
    }
    content.elements[index] = std::move(element);
    if (kept.type != CMPI_null || !content.kept.empty()) {
        content.kept.resize(content.elements.size());
        content.kept[index] = kept;
    }
    return status(CMPI_RC_OK);
}

// ---- datetime

CMPIUint64 datetime_binary(const CMPIDateTime* datetime, CMPIStatus* rc) {
    Datetime_Object* const object = self<Datetime_Object>(datetime, "getBinaryFormat", rc);
    return object == nullptr ? 0 : object->content->microseconds();
}

CMPIString* datetime_string(const CMPIDateTime* datetime, CMPIStatus* rc) {
    Datetime_Object* const object = self<Datetime_Object>(datetime, "getStringFormat", rc);
    return object == nullptr ? nullptr : books_of(*object).make(object->content->text());
}

CMPIBoolean datetime_is_interval(const CMPIDateTime* datetime, CMPIStatus* rc) {
    Datetime_Object* const object = self<Datetime_Object>(datetime, "isInterval", rc);
    return object != nullptr && object->content->is_interval();
}

// ---- object path

template <std::string Cim_Path::*Member>
CMPIStatus path_set(const CMPIObjectPath* path, const char* text) {
    CMPIStatus rc;
    if (Path_Object* const object = self<Path_Object>(path, "a setter", &rc)) {
        object->content->path.*Member = text_of(text);
    }
    return rc;
}

template <std::string Cim_Path::*Member>
CMPIString* path_get(const CMPIObjectPath* path, CMPIStatus* rc) {
    Path_Object* const object = self<Path_Object>(path, "a getter", rc);
    return object == nullptr ? nullptr : books_of(*object).make(object->content->path.*Member);
}

CMPIStatus path_add_key(const CMPIObjectPath* path, const char* key, const CMPIValue* value,
                        const CMPIType type) {
    CMPIStatus rc;
    Path_Object* const object = self<Path_Object>(path, "addKey", &rc);
    if (object == nullptr) {
        return rc;
    }
    Books& books = books_of(*object);
    Cim_Value plain;
    Kept kept;
    if (const CMPIrc code = books.take(value, type, plain, kept, "addKey"); code != CMPI_RC_OK) {
        return status(code);
    }
    const Cim_Path& content = object->content->path;
    const tvrmof::Class* const model =
        books.schema == nullptr ? nullptr : books.schema->find(content.class_name);
    if (model != nullptr) {
        const tvrmof::Feature* const feature = model->find(text_of(key));
        if (feature == nullptr || !feature->is_key()) {
            books.fault(Fault_Kind::schema_mismatch,
                        "key " + model->name + "." + std::string(text_of(key)) + " does not exist");
            return status(CMPI_RC_ERR_NO_SUCH_PROPERTY);
        }
        if (!fits(*feature, plain.type(), plain.is_array())) {
            books.fault(Fault_Kind::schema_mismatch, "key " + model->name + "." + feature->name +
                                                         " set as " +
                                                         type_text(plain.type(), plain.is_array()));
            return status(CMPI_RC_ERR_TYPE_MISMATCH);
        }
    }
    tvrhost::set(object->content->path.keys, object->content->kept, text_of(key), std::move(plain),
                 kept);
    return status(CMPI_RC_OK);
}

CMPIData path_key(const CMPIObjectPath* path, const char* key, CMPIStatus* rc) {
    Path_Object* const object = self<Path_Object>(path, "getKey", rc);
    return object == nullptr
               ? bad
               : named(books_of(*object), books_of(*object).read(*object, "getKey").keys, key,
                       CMPI_RC_ERR_NOT_FOUND, rc, CMPI_keyValue);
}

CMPIData path_key_at(const CMPIObjectPath* path, CMPICount index, CMPIString** name,
                     CMPIStatus* rc) {
    Path_Object* const object = self<Path_Object>(path, "getKeyAt", rc);
    return object == nullptr
               ? bad
               : at(books_of(*object), books_of(*object).read(*object, "getKeyAt").keys, index,
                    name, CMPI_RC_ERR_NOT_FOUND, rc, CMPI_keyValue);
}

CMPICount path_key_count(const CMPIObjectPath* path, CMPIStatus* rc) {
    Path_Object* const object = self<Path_Object>(path, "getKeyCount", rc);
    return object == nullptr ? 0 : static_cast<CMPICount>(object->content->path.keys.size());
}

CMPIStatus path_take_name_space(const CMPIObjectPath* path, const CMPIObjectPath* source) {
    CMPIStatus rc;
    Path_Object* const object = self<Path_Object>(path, "setNameSpaceFromObjectPath", &rc);
    if (object == nullptr) {
        return rc;
    }
    const auto* from = argument<Path_Object>(books_of(*object), source, "setNameSpace");
    if (from == nullptr) {
        return status(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    object->content->path.name_space = from->content->path.name_space;
    return rc;
}

CMPIStatus path_take_host(const CMPIObjectPath* path, const CMPIObjectPath* source) {
    const CMPIStatus rc = path_take_name_space(path, source);
    if (rc.rc == CMPI_RC_OK) {
        static_cast<Path_Object*>(const_cast<CMPIObjectPath*>(path))->content->path.host =
            static_cast<const Path_Object*>(source)->content->path.host;
    }
    return rc;
}

const tvrmof::Class* class_of(const CMPIObjectPath* path, CMPIStatus* rc) {
    Path_Object* const object = self<Path_Object>(path, "a qualifier's getter", rc);
    if (object == nullptr || books_of(*object).schema == nullptr) {
        return nullptr;
    }
    return books_of(*object).schema->find(object->content->path.class_name);
}

CMPIData qualifier(const CMPIObjectPath* path, const tvrmof::Qualifiers* qualifiers,
                   const char* name, CMPIStatus* rc) {
    const tvrmof::Qualifier* const found =
        qualifiers == nullptr ? nullptr : qualifiers->find(text_of(name));
    if (found == nullptr) {
        if (rc == nullptr || rc->rc == CMPI_RC_OK) {
            set(rc, CMPI_RC_ERR_NOT_FOUND);
        }
        return missing;
    }
    const Cim_Value value =
        found->value ? std::visit([](const auto& each) { return Cim_Value(each); }, *found->value)
                     : Cim_Value(true);
    return books_of(*static_cast<const Path_Object*>(path)).data(value);
}

CMPIData class_qualifier(const CMPIObjectPath* path, const char* name, CMPIStatus* rc) {
    const tvrmof::Class* const model = class_of(path, rc);
    return qualifier(path, model == nullptr ? nullptr : &model->qualifiers, name, rc);
}

CMPIData feature_qualifier(const CMPIObjectPath* path, const char* feature, const char* name,
                           CMPIStatus* rc) {
    const tvrmof::Class* const model = class_of(path, rc);
    const tvrmof::Feature* const found = model == nullptr ? nullptr : model->find(text_of(feature));
    return qualifier(path, found == nullptr ? nullptr : &found->qualifiers, name, rc);
}

CMPIData parameter_qualifier(const CMPIObjectPath* path, const char* method, const char* parameter,
                             const char* name, CMPIStatus* rc) {
    const tvrmof::Class* const model = class_of(path, rc);
    const tvrmof::Feature* const found =
        model == nullptr ? nullptr : model->find(text_of(method), tvrmof::Feature_Kind::method);
    const tvrmof::Parameter* const typed =
        found == nullptr ? nullptr : found->parameter(text_of(parameter));
    return qualifier(path, typed == nullptr ? nullptr : &typed->qualifiers, name, rc);
}

CMPIString* path_text(const CMPIObjectPath* path, CMPIStatus* rc) {
    Path_Object* const object = self<Path_Object>(path, "toString", rc);
    return object == nullptr
               ? nullptr
               : books_of(*object).make(books_of(*object).read(*object, "toString").text());
}

// ---- instance

CMPIData instance_property(const CMPIInstance* instance, const char* name, CMPIStatus* rc) {
    Instance_Object* const object = self<Instance_Object>(instance, "getProperty", rc);
    if (object == nullptr) {
        return bad;
    }
    const Instance_Content& content = books_of(*object).read(*object, "getProperty");
    const bool key = content.is_key(text_of(name));
    return named(books_of(*object), content.instance.properties, name, CMPI_RC_ERR_NO_SUCH_PROPERTY,
                 rc, key ? CMPI_keyValue : CMPI_goodValue);
}

CMPIData instance_property_at(const CMPIInstance* instance, CMPICount index, CMPIString** name,
                              CMPIStatus* rc) {
    Instance_Object* const object = self<Instance_Object>(instance, "getPropertyAt", rc);
    if (object == nullptr) {
        return bad;
    }
    const Instance_Content& content = books_of(*object).read(*object, "getPropertyAt");
    const Named_Values& properties = content.instance.properties;
    const bool key = index < properties.size() && content.is_key(properties.begin()[index].name);
    return at(books_of(*object), properties, index, name, CMPI_RC_ERR_NO_SUCH_PROPERTY, rc,
              key ? CMPI_keyValue : CMPI_goodValue);
}

CMPICount instance_property_count(const CMPIInstance* instance, CMPIStatus* rc) {
    Instance_Object* const object = self<Instance_Object>(instance, "getPropertyCount", rc);
    return object == nullptr ? 0
                             : static_cast<CMPICount>(object->content->instance.properties.size());
}

CMPIStatus instance_set(const CMPIInstance* instance, const char* name, const CMPIValue* value,
                        CMPIType type) {
    CMPIStatus rc;
    Instance_Object* const object = self<Instance_Object>(instance, "setProperty", &rc);
    if (object == nullptr) {
        return rc;
    }
    Books& books = books_of(*object);
    Instance_Content& content = *object->content;
    std::string_view property = text_of(name);
    Cim_Value plain;
    Kept kept;
    if (const CMPIrc code = books.take(value, type, plain, kept, "setProperty");
        code != CMPI_RC_OK) {
        return status(code);
    }
    if (content.model != nullptr) {
        const tvrmof::Feature* const feature = content.model->find(property);
        if (feature == nullptr || feature->kind == tvrmof::Feature_Kind::method) {
            books.fault(Fault_Kind::schema_mismatch, "property " + content.model->name + "." +
                                                         std::string(property) + " does not exist");
            return status(CMPI_RC_ERR_NO_SUCH_PROPERTY);
        }
        if (plain.type() == Cim_Type::none) {
            plain = Cim_Value::null(declared_type(*feature), feature->is_array);
        }
        if (!fits(*feature, plain.type(), plain.is_array())) {
            books.fault(Fault_Kind::schema_mismatch,
                        "property " + content.model->name + "." + feature->name + " is " +
                            type_text(declared_type(*feature), feature->is_array) + ", set as " +
                            type_text(plain.type(), plain.is_array()));
            return status(CMPI_RC_ERR_TYPE_MISMATCH);
        }
    }
    // What the filter keeps out is no error: the client didn't ask for it.
    if (content.passes(property)) {
        tvrhost::set(content.instance.properties, content.kept, property, std::move(plain), kept);
    }
    return status(CMPI_RC_OK);
}

CMPIStatus instance_set_with_origin(const CMPIInstance* instance, const char* name,
                                    const CMPIValue* value, const CMPIType type, const char*) {
    return instance_set(instance, name, value, type);
}

CMPIObjectPath* instance_path(const CMPIInstance* instance, CMPIStatus* rc) {
    Instance_Object* const object = self<Instance_Object>(instance, "getObjectPath", rc);
    return object == nullptr ? nullptr
                             : books_of(*object).make(Cim_Path(object->content->instance.path));
}

CMPIStatus instance_set_path(const CMPIInstance* instance, const CMPIObjectPath* path) {
    CMPIStatus rc;
    Instance_Object* const object = self<Instance_Object>(instance, "setObjectPath", &rc);
    if (object == nullptr) {
        return rc;
    }
    auto* from = argument<Path_Object>(books_of(*object), path, "setObjectPath");
    if (from == nullptr) {
        return status(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    object->content->instance.path = books_of(*object).read(*from, "setObjectPath");
    return rc;
}

std::optional<std::vector<std::string>> names(const char** list) {
    if (list == nullptr) {
        return std::nullopt;
    }
    std::vector<std::string> result;
    for (; *list != nullptr; ++list) {
        result.emplace_back(*list);
    }
    return result;
}

CMPIStatus instance_filter(const CMPIInstance* instance, const char** properties,
                           const char** key_list) {
    CMPIStatus rc;
    Instance_Object* const object = self<Instance_Object>(instance, "setPropertyFilter", &rc);
    if (object == nullptr) {
        return rc;
    }
    Instance_Content& content = *object->content;
    content.allowed = names(properties);
    content.keys = names(key_list);
    books_of(*object).read(*object, "setPropertyFilter");
    content.kept.clear();
    std::erase_if(content.instance.properties,
                  [&](const Named_Value& property) { return !content.passes(property.name); });
    return rc;
}

// ---- arguments

CMPIStatus args_add(const CMPIArgs* args, const char* name, const CMPIValue* value,
                    const CMPIType type) {
    CMPIStatus rc;
    Args_Object* const object = self<Args_Object>(args, "addArg", &rc);
    if (object == nullptr) {
        return rc;
    }
    Cim_Value plain;
    Kept kept;
    if (const CMPIrc code = books_of(*object).take(value, type, plain, kept, "addArg");
        code != CMPI_RC_OK) {
        return status(code);
    }
    tvrhost::set(object->content->values, object->content->kept, text_of(name), std::move(plain),
                 kept);
    return rc;
}

CMPIData args_get(const CMPIArgs* args, const char* name, CMPIStatus* rc) {
    Args_Object* const object = self<Args_Object>(args, "getArg", rc);
    return object == nullptr ? bad
                             : named(books_of(*object), books_of(*object).read(*object, "getArg"),
                                     name, CMPI_RC_ERR_NOT_FOUND, rc);
}

CMPIData args_get_at(const CMPIArgs* args, CMPICount index, CMPIString** name, CMPIStatus* rc) {
    Args_Object* const object = self<Args_Object>(args, "getArgAt", rc);
    return object == nullptr ? bad
                             : at(books_of(*object), books_of(*object).read(*object, "getArgAt"),
                                  index, name, CMPI_RC_ERR_NOT_FOUND, rc);
}

CMPICount args_count(const CMPIArgs* args, CMPIStatus* rc) {
    Args_Object* const object = self<Args_Object>(args, "getArgCount", rc);
    return object == nullptr ? 0 : static_cast<CMPICount>(object->content->values.size());
}

// ---- enumeration

CMPIData enumeration_next(const CMPIEnumeration* enumeration, CMPIStatus* rc) {
    Enumeration_Object* const object = self<Enumeration_Object>(enumeration, "getNext", rc);
    if (object == nullptr) {
        return bad;
    }
    Enumeration_Content& content = *object->content;
    if (content.next >= content.items.size()) {
        set(rc, CMPI_RC_ERR_FAILED);
        return missing;
    }
    return books_of(*object).data(content.items[content.next++]);
}

CMPIBoolean enumeration_has_next(const CMPIEnumeration* enumeration, CMPIStatus* rc) {
    Enumeration_Object* const object = self<Enumeration_Object>(enumeration, "hasNext", rc);
    return object != nullptr && object->content->next < object->content->items.size();
}

CMPIArray* enumeration_array(const CMPIEnumeration* enumeration, CMPIStatus* rc) {
    Enumeration_Object* const object = self<Enumeration_Object>(enumeration, "toArray", rc);
    if (object == nullptr) {
        return nullptr;
    }
    const Enumeration_Content& content = *object->content;
    return books_of(*object).make(Array_Content{content.type, content.items});
}

// ---- context

CMPIData context_get(const CMPIContext* context, const char* name, CMPIStatus* rc) {
    Context_Object* const object = self<Context_Object>(context, "getEntry", rc);
    return object == nullptr
               ? bad
               : named(books_of(*object), *object->content, name, CMPI_RC_ERR_NOT_FOUND, rc);
}

CMPIData context_get_at(const CMPIContext* context, CMPICount index, CMPIString** name,
                        CMPIStatus* rc) {
    Context_Object* const object = self<Context_Object>(context, "getEntryAt", rc);
    return object == nullptr
               ? bad
               : at(books_of(*object), *object->content, index, name, CMPI_RC_ERR_NOT_FOUND, rc);
}

CMPICount context_count(const CMPIContext* context, CMPIStatus* rc) {
    Context_Object* const object = self<Context_Object>(context, "getEntryCount", rc);
    return object == nullptr ? 0 : static_cast<CMPICount>(object->content->size());
}

CMPIStatus context_add(const CMPIContext* context, const char* name, const CMPIValue* value,
                       const CMPIType type) {
    CMPIStatus rc;
    Context_Object* const object = self<Context_Object>(context, "addEntry", &rc);
    if (object == nullptr) {
        return rc;
    }
    Cim_Value plain;
    if (const CMPIrc code = books_of(*object).plain(value, type, plain, "addEntry");
        code != CMPI_RC_OK) {
        return status(code);
    }
    object->content->set(text_of(name), std::move(plain));
    return rc;
}

// ---- result

// The answer that a return goes to, or null with the code set.
Answer* open_answer(const CMPIResult* result, const char* operation, CMPIStatus* rc) {
    Result_Object* const object = self<Result_Object>(result, operation, rc);
    if (object == nullptr) {
        return nullptr;
    }
    Answer* const answer = object->content->answer;
    if (answer->done) {
        object->tracker.fault(Fault_Kind::result_after_done,
                              std::string(operation) + " after returnDone");
        *rc = status(CMPI_RC_ERR_FAILED);
        return nullptr;
    }
    return answer;
}

CMPIStatus result_data(const CMPIResult* result, const CMPIValue* value, const CMPIType type) {
    CMPIStatus rc;
    Answer* const answer = open_answer(result, "returnData", &rc);
    if (answer == nullptr) {
        return rc;
    }
    Cim_Value plain;
    if (const CMPIrc code = books_of(*static_cast<const Result_Object*>(result))
                                .plain(value, type, plain, "returnData");
        code != CMPI_RC_OK) {
        return status(code);
    }
    answer->data.push_back(std::move(plain));
    return rc;
}

CMPIStatus result_instance(const CMPIResult* result, const CMPIInstance* instance) {
    CMPIStatus rc;
    Answer* const answer = open_answer(result, "returnInstance", &rc);
    if (answer == nullptr) {
        return rc;
    }
    Books& books = books_of(*static_cast<const Result_Object*>(result));
    auto* object = argument<Instance_Object>(books, instance, "returnInstance");
    if (object == nullptr) {
        return status(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    answer->instances.push_back(books.copy(*object, "returnInstance"));
    return rc;
}

CMPIStatus result_path(const CMPIResult* result, const CMPIObjectPath* path) {
    CMPIStatus rc;
    Answer* const answer = open_answer(result, "returnObjectPath", &rc);
    if (answer == nullptr) {
        return rc;
    }
    Books& books = books_of(*static_cast<const Result_Object*>(result));
    auto* object = argument<Path_Object>(books, path, "returnObjectPath");
    if (object == nullptr) {
        return status(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    answer->paths.push_back(books.copy(*object, "returnObjectPath"));
    return rc;
}

CMPIStatus result_done(const CMPIResult* result) {
    CMPIStatus rc;
    if (Answer* const answer = open_answer(result, "returnDone", &rc)) {
        answer->done = true;
    }
    return rc;
}

CMPIStatus result_error(const CMPIResult* result, const CMPIError*) {
    CMPIStatus rc;
    return self<Result_Object>(result, "returnError", &rc) == nullptr
               ? rc
               : status(CMPI_RC_ERR_NOT_SUPPORTED);
}

// ---- select expression

CMPIBoolean select_evaluate(const CMPISelectExp* select, const CMPIInstance* instance,
                            CMPIStatus* rc) {
    Select_Object* const object = self<Select_Object>(select, "evaluate", rc);
    if (object == nullptr) {
        return 0;
    }
    Books& books = books_of(*object);
    const auto* tested = argument<Instance_Object>(books, instance, "evaluate");
    const std::optional<std::string> wanted = selected_class(object->content->query);
    if (tested == nullptr || !wanted) {
        set(rc, tested == nullptr ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_ERR_INVALID_QUERY);
        return 0;
    }
    const std::string& found = tested->content->instance.class_name();
    return same_name(found, *wanted) ||
           (books.schema != nullptr && books.schema->is_a(found, *wanted));
}

CMPIString* select_string(const CMPISelectExp* select, CMPIStatus* rc) {
    Select_Object* const object = self<Select_Object>(select, "getString", rc);
    return object == nullptr ? nullptr : books_of(*object).make(object->content->query);
}

CMPISelectCond* select_condition(const CMPISelectExp* select, CMPIStatus* rc) {
    if (self<Select_Object>(select, "getDOC or getCOD", rc) != nullptr) {
        set(rc, CMPI_RC_ERR_NOT_SUPPORTED);
    }
    return nullptr;
}

CMPIBoolean select_accessor(const CMPISelectExp* select, CMPIAccessor*, void*, CMPIStatus* rc) {
    if (self<Select_Object>(select, "evaluateUsingAccessor", rc) != nullptr) {
        set(rc, CMPI_RC_ERR_NOT_SUPPORTED);
    }
    return 0;
}

Tables make_tables(int version) {
    Tables t{};
    t.string = {version, release<String_Object>, clone<String_Object>, string_chars,
                string_new_chars};
    t.array = {
        version,  release<Array_Object>, clone<Array_Object>, array_size, array_type, array_get,
        array_set};
    t.datetime = {version,         release<Datetime_Object>, clone<Datetime_Object>,
                  datetime_binary, datetime_string,          datetime_is_interval};
    t.path = {version,
              release<Path_Object>,
              clone<Path_Object>,
              path_set<&Cim_Path::name_space>,
              path_get<&Cim_Path::name_space>,
              path_set<&Cim_Path::host>,
              path_get<&Cim_Path::host>,
              path_set<&Cim_Path::class_name>,
              path_get<&Cim_Path::class_name>,
              path_add_key,
              path_key,
              path_key_at,
              path_key_count,
              path_take_name_space,
              path_take_host,
              class_qualifier,
              feature_qualifier,
              feature_qualifier,
              parameter_qualifier,
              path_text};
    t.instance = {version,
                  release<Instance_Object>,
                  clone<Instance_Object>,
                  instance_property,
                  instance_property_at,
                  instance_property_count,
                  instance_set,
                  instance_path,
                  instance_filter,
                  instance_set_path,
                  instance_set_with_origin};
    t.args = {version,  release<Args_Object>, clone<Args_Object>, args_add,
              args_get, args_get_at,          args_count};
    t.enumeration = {version,          release<Enumeration_Object>, clone<Enumeration_Object>,
                     enumeration_next, enumeration_has_next,        enumeration_array};
    t.context = {version,     release<Context_Object>, clone<Context_Object>,
                 context_get, context_get_at,          context_count,
                 context_add};
    t.result = {version,
                release<Result_Object>,
                clone<Result_Object>,
                result_data,
                result_instance,
                result_path,
                result_done,
                result_error};
    t.select = {version,       release<Select_Object>, clone<Select_Object>, select_evaluate,
                select_string, select_condition,       select_condition,     select_accessor};
    if (version < 200) {
        t.instance.setObjectPath = nullptr;
        t.instance.setPropertyWithOrigin = nullptr;
        t.result.returnError = nullptr;
    }
    if (version < 210) {
        t.string.newCharsCP = nullptr;
    }
    fill_makers(t, version);
    fill_broker(t, version);
    return t;
}

} // namespace

const Tables& tables_of(int version) noexcept {
    static const Tables oldest = make_tables(100);
    static const Tables newest = make_tables(210);
    return version < 210 ? oldest : newest;
}

} // namespace tvrhost
