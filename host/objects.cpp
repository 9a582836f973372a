#include "host/objects.h"

#include "host/declared_type.h"

#include <algorithm>
#include <cstring>

namespace tvrhost {

// ---- making

namespace {

template <class O>
O* adopted(Books& books, const char* kind, decltype(O::ft) table, typename O::Value content,
           bool clone) {
    auto object = std::make_unique<O>(books, kind, table, std::move(content));
    O* const result = object.get();
    books.adopt(std::move(object), clone);
    return result;
}

bool contains(const std::vector<std::string>& names, std::string_view name) noexcept {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& each) { return same_name(each, name); });
}

} // namespace

bool Instance_Content::is_key(std::string_view property) const noexcept {
    if (keys) {
        return contains(*keys, property);
    }
    if (instance.path.keys.has(property)) {
        return true;
    }
    const tvrmof::Feature* const feature = model == nullptr ? nullptr : model->find(property);
    return feature != nullptr && feature->is_key();
}

bool Instance_Content::passes(std::string_view property) const noexcept {
    return !allowed || contains(*allowed, property) || is_key(property);
}

String_Object* Books::make(std::string text, bool clone) {
    String_Object* const object =
        adopted<String_Object>(*this, "CMPIString", &ft.string, std::move(text), clone);
    object->hdl = object->content->data(); // its characters
    return object;
}
Array_Object* Books::make(Array_Content content, bool clone) {
    return adopted<Array_Object>(*this, "CMPIArray", &ft.array, std::move(content), clone);
}
Datetime_Object* Books::make(Cim_Datetime value, bool clone) {
    return adopted<Datetime_Object>(*this, "CMPIDateTime", &ft.datetime, std::move(value), clone);
}
Path_Object* Books::make(Path_Content content, bool clone) {
    return adopted<Path_Object>(*this, "CMPIObjectPath", &ft.path, std::move(content), clone);
}
Instance_Object* Books::make(Instance_Content content, bool clone) {
    return adopted<Instance_Object>(*this, "CMPIInstance", &ft.instance, std::move(content), clone);
}
Instance_Object* Books::make(Cim_Instance instance) {
    const tvrmof::Class* const model =
        schema == nullptr ? nullptr : schema->find(instance.class_name());
    return make(Instance_Content{std::move(instance), model, {}, {}, {}});
}
Args_Object* Books::make_args(Named_Values values, bool clone) {
    return adopted<Args_Object>(*this, "CMPIArgs", &ft.args, Args_Content{std::move(values)},
                                clone);
}
Enumeration_Object* Books::make(Enumeration_Content content, bool clone) {
    return adopted<Enumeration_Object>(*this, "CMPIEnumeration", &ft.enumeration,
                                       std::move(content), clone);
}
Context_Object* Books::make_context(Named_Values entries, bool clone) {
    return adopted<Context_Object>(*this, "CMPIContext", &ft.context, std::move(entries), clone);
}
Result_Object* Books::make(Result_Content content, bool clone) {
    return adopted<Result_Object>(*this, "CMPIResult", &ft.result, content, clone);
}
Select_Object* Books::make(Select_Content content, bool clone) {
    return adopted<Select_Object>(*this, "CMPISelectExp", &ft.select, std::move(content), clone);
}

template <> decltype(String_Object::ft) table_of<String_Object>(const Tables& tables) noexcept {
    return &tables.string;
}
template <> decltype(Array_Object::ft) table_of<Array_Object>(const Tables& tables) noexcept {
    return &tables.array;
}
template <> decltype(Datetime_Object::ft) table_of<Datetime_Object>(const Tables& tables) noexcept {
    return &tables.datetime;
}
template <> decltype(Path_Object::ft) table_of<Path_Object>(const Tables& tables) noexcept {
    return &tables.path;
}
template <> decltype(Instance_Object::ft) table_of<Instance_Object>(const Tables& tables) noexcept {
    return &tables.instance;
}
template <> decltype(Args_Object::ft) table_of<Args_Object>(const Tables& tables) noexcept {
    return &tables.args;
}
template <>
decltype(Enumeration_Object::ft) table_of<Enumeration_Object>(const Tables& tables) noexcept {
    return &tables.enumeration;
}
template <> decltype(Context_Object::ft) table_of<Context_Object>(const Tables& tables) noexcept {
    return &tables.context;
}
template <> decltype(Result_Object::ft) table_of<Result_Object>(const Tables& tables) noexcept {
    return &tables.result;
}
template <> decltype(Select_Object::ft) table_of<Select_Object>(const Tables& tables) noexcept {
    return &tables.select;
}

// ---- values

CMPIData Books::data(const Cim_Value& value, CMPIValueState extra_state) {
    CMPIData result{};
    const auto type = static_cast<CMPIType>(value.type());
    result.type = value.is_array() ? static_cast<CMPIType>(type | CMPI_ARRAY) : type;
    result.state = extra_state;
    if (value.is_null()) {
        result.state = static_cast<CMPIValueState>(result.state | CMPI_nullValue);
        return result;
    }
    if (value.is_array()) {
        result.value.array = make(Array_Content{value.type(), value.elements()});
        return result;
    }
    switch (value.type()) {
    case Cim_Type::boolean:
        result.value.boolean = value.as_bool() ? 1 : 0;
        break;
    case Cim_Type::real32:
        result.value.real32 = static_cast<float>(value.as_real());
        break;
    case Cim_Type::real64:
        result.value.real64 = value.as_real();
        break;
    case Cim_Type::char16:
    case Cim_Type::uint16:
        result.value.uint16 = static_cast<CMPIUint16>(value.as_uint());
        break;
    case Cim_Type::uint8:
        result.value.uint8 = static_cast<CMPIUint8>(value.as_uint());
        break;
    case Cim_Type::uint32:
        result.value.uint32 = static_cast<CMPIUint32>(value.as_uint());
        break;
    case Cim_Type::uint64:
        result.value.uint64 = value.as_uint();
        break;
    case Cim_Type::sint8:
        result.value.sint8 = static_cast<CMPISint8>(value.as_int());
        break;
    case Cim_Type::sint16:
        result.value.sint16 = static_cast<CMPISint16>(value.as_int());
        break;
    case Cim_Type::sint32:
        result.value.sint32 = static_cast<CMPISint32>(value.as_int());
        break;
    case Cim_Type::sint64:
        result.value.sint64 = value.as_int();
        break;
    case Cim_Type::string:
        result.value.string = make(value.as_string());
        break;
    case Cim_Type::datetime:
        result.value.dateTime = make(value.as_datetime());
        break;
    case Cim_Type::reference:
        result.value.ref = make(Cim_Path(value.as_path()));
        break;
    case Cim_Type::instance:
        result.value.inst = make(Cim_Instance(value.as_instance()));
        break;
    case Cim_Type::none:
        break;
    }
    return result;
}

namespace {

// The plain type of a code without the array bit; `none` for a code that no value has.
Cim_Type plain_type(unsigned code) noexcept {
    if (code == CMPI_chars) {
        return Cim_Type::string;
    }
    const auto type = static_cast<Cim_Type>(code);
    return std::strcmp(type_name(type), "none") == 0 ? Cim_Type::none : type;
}

// Hands the content of an object to `convert`. A null object, which stands for NULL, is passed
// over; one that has ended is an error.
template <class O, class Convert>
CMPIrc take(Books& books, const typename O::Pair* pair, const char* operation, Convert convert) {
    if (pair == nullptr) {
        return CMPI_RC_OK;
    }
    O* const object = argument<O>(books, pair, operation);
    return object == nullptr ? CMPI_RC_ERR_INVALID_HANDLE : convert(books.read(*object, operation));
}

CMPIrc not_of_type(Books& books, Cim_Type found, Cim_Type wanted) {
    books.fault(Fault_Kind::schema_mismatch, std::string("an array of ") + type_name(found) +
                                                 " handed over as one of " + type_name(wanted));
    return CMPI_RC_ERR_TYPE_MISMATCH;
}

// What refers to itself has no end.
constexpr int deepest = 64;
thread_local int depth = 0;

struct Deeper {
    Deeper() { ++depth; }
    ~Deeper() { --depth; }
    Deeper(const Deeper&) = delete;
    Deeper& operator=(const Deeper&) = delete;
};

} // namespace

// ---- what is kept

CMPIrc Books::keep(const CMPIValue* value, CMPIType type, Cim_Value& plain_value, Kept& kept,
                   const char* operation) {
    const bool array = (type & CMPI_ARRAY) != 0;
    const Cim_Type wanted = plain_type(type & ~static_cast<unsigned>(CMPI_ARRAY));
    // Of other values no more than their own bytes may be looked at.
    const bool is_object = array || wanted == Cim_Type::string || wanted == Cim_Type::datetime ||
                           wanted == Cim_Type::reference || wanted == Cim_Type::instance;
    if (wanted == Cim_Type::none || !is_object || type == CMPI_chars || value == nullptr ||
        value->string == nullptr) {
        return plain(value, type, plain_value, operation);
    }
    const auto alive = [&]<class O>(const typename O::Pair* pair, O*) {
        return argument<O>(*this, pair, operation) != nullptr;
    };
    bool live = false;
    if (array) {
        const auto* const object = argument<Array_Object>(*this, value->array, operation);
        live = object != nullptr;
        if (live && object->content->type != wanted) {
            return not_of_type(*this, object->content->type, wanted);
        }
    } else if (wanted == Cim_Type::string) {
        live = alive(value->string, static_cast<String_Object*>(nullptr));
    } else if (wanted == Cim_Type::datetime) {
        live = alive(value->dateTime, static_cast<Datetime_Object*>(nullptr));
    } else if (wanted == Cim_Type::reference) {
        live = alive(value->ref, static_cast<Path_Object*>(nullptr));
    } else {
        live = alive(value->inst, static_cast<Instance_Object*>(nullptr));
    }
    if (!live) {
        return CMPI_RC_ERR_INVALID_HANDLE;
    }
    plain_value = Cim_Value::null(wanted, array);
    kept.type = type;
    kept.value.string = value->string; // the pointer, of whatever kind
    return CMPI_RC_OK;
}

Cim_Value Books::look_at(const Kept& kept, const char* operation) {
    Cim_Value value;
    const Deeper deeper;
    if (depth > deepest) {
        fault(Fault_Kind::schema_mismatch, std::string(operation) + " of what refers to itself");
    } else if (plain(&kept.value, kept.type, value, operation) == CMPI_RC_OK) {
        return value;
    }
    return Cim_Value::null(plain_type(kept.type & ~static_cast<unsigned>(CMPI_ARRAY)),
                           (kept.type & CMPI_ARRAY) != 0);
}

void Books::look_at(Named_Values& values, const Kept_Values& kept, const char* operation) {
    for (const Kept_Value& each : kept) {
        values[each.index].value = look_at(each, operation);
    }
}

const Cim_Path& Books::read(Path_Object& object, const char* operation) {
    look_at(object.content->path.keys, object.content->kept, operation);
    return object.content->path;
}
const Instance_Content& Books::read(Instance_Object& object, const char* operation) {
    look_at(object.content->instance.properties, object.content->kept, operation);
    return *object.content;
}
const Named_Values& Books::read(Args_Object& object, const char* operation) {
    look_at(object.content->values, object.content->kept, operation);
    return object.content->values;
}
Cim_Path Books::copy(const Path_Object& object, const char* operation) {
    Cim_Path path = object.content->path;
    look_at(path.keys, object.content->kept, operation);
    return path;
}
Cim_Instance Books::copy(const Instance_Object& object, const char* operation) {
    Cim_Instance instance = object.content->instance;
    look_at(instance.properties, object.content->kept, operation);
    return instance;
}
const std::vector<Cim_Value>& Books::read(Array_Object& object, const char* operation) {
    Array_Content& content = *object.content;
    for (std::size_t i = 0; i < content.kept.size(); ++i) {
        if (content.kept[i].type != CMPI_null) {
            content.elements[i] = look_at(content.kept[i], operation);
        }
    }
    return content.elements;
}

void set(Named_Values& values, Kept_Values& all_kept, std::string_view name, Cim_Value value,
         const Kept& kept) {
    const std::size_t index = values.set(name, std::move(value));
    std::erase_if(all_kept, [&](const Kept_Value& each) { return each.index == index; });
    if (kept.type != CMPI_null) {
        constexpr std::size_t usual = 16;
        if (all_kept.empty()) {
            all_kept.reserve(usual);
        }
        all_kept.push_back({kept, index});
    }
}

// ---- plain forms

CMPIrc Books::plain(const CMPIValue* value, CMPIType type, Cim_Value& plain_value,
                    const char* operation) {
    if (type == CMPI_null) {
        plain_value = Cim_Value();
        return CMPI_RC_OK;
    }
    const bool array = (type & CMPI_ARRAY) != 0;
    const Cim_Type wanted = plain_type(type & ~static_cast<unsigned>(CMPI_ARRAY));
    if (wanted == Cim_Type::none) {
        return CMPI_RC_ERR_INVALID_DATA_TYPE;
    }
    if (value == nullptr) {
        plain_value = Cim_Value::null(wanted, array);
        return CMPI_RC_OK;
    }
    if (type == CMPI_chars) {
        plain_value = std::string(reinterpret_cast<const char*>(value));
        return CMPI_RC_OK;
    }
    plain_value = Cim_Value::null(wanted, array);
    if (array) {
        Array_Object* const object = value->array == nullptr
                                         ? nullptr
                                         : argument<Array_Object>(*this, value->array, operation);
        if (object == nullptr) {
            return value->array == nullptr ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE;
        }
        if (object->content->type != wanted) {
            return not_of_type(*this, object->content->type, wanted);
        }
        plain_value = Cim_Value::array(wanted, read(*object, operation));
        return CMPI_RC_OK;
    }
    const auto copy = [&](const auto& content) {
        plain_value = content;
        return CMPI_RC_OK;
    };
    switch (wanted) {
    case Cim_Type::boolean:
        plain_value = value->boolean != 0;
        break;
    case Cim_Type::char16:
        plain_value = static_cast<char16_t>(value->char16);
        break;
    case Cim_Type::real32:
        plain_value = value->real32;
        break;
    case Cim_Type::real64:
        plain_value = value->real64;
        break;
    case Cim_Type::uint8:
        plain_value = value->uint8;
        break;
    case Cim_Type::uint16:
        plain_value = value->uint16;
        break;
    case Cim_Type::uint32:
        plain_value = value->uint32;
        break;
    case Cim_Type::uint64:
        plain_value = value->uint64;
        break;
    case Cim_Type::sint8:
        plain_value = std::int8_t{value->sint8};
        break;
    case Cim_Type::sint16:
        plain_value = value->sint16;
        break;
    case Cim_Type::sint32:
        plain_value = value->sint32;
        break;
    case Cim_Type::sint64:
        plain_value = std::int64_t{value->sint64};
        break;
    case Cim_Type::string:
        return tvrhost::take<String_Object>(*this, value->string, operation, copy);
    case Cim_Type::datetime:
        return tvrhost::take<Datetime_Object>(*this, value->dateTime, operation, copy);
    case Cim_Type::reference:
        return tvrhost::take<Path_Object>(*this, value->ref, operation, copy);
    case Cim_Type::instance:
        return tvrhost::take<Instance_Object>(*this, value->inst, operation,
                                              [&](const Instance_Content& content) {
                                                  plain_value = content.instance;
                                                  return CMPI_RC_OK;
                                              });
    case Cim_Type::none:
        break;
    }
    return CMPI_RC_OK;
}

} // namespace tvrhost
