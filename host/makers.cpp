// The broker's table of makers.
#include "host/broker.h"

#include "host/declared_type.h"

#include <cstdarg>
#include <cstring>

namespace tvrhost {

namespace {

void set(CMPIStatus* to, CMPIrc rc) noexcept {
    if (to != nullptr) {
        *to = {rc, nullptr};
    }
}

std::string text_of(const char* chars) {
    return chars == nullptr ? std::string() : chars;
}

CMPIInstance* new_instance(const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* rc) {
    Books& books = side_of(broker).books;
    auto* from = argument<Path_Object>(books, path, "newInstance");
    set(rc, from == nullptr ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_OK);
    return from == nullptr ? nullptr : books.make(Cim_Instance(books.copy(*from, "newInstance")));
}

CMPIObjectPath* new_path(const CMPIBroker* broker, const char* name_space, const char* class_name,
                         CMPIStatus* rc) {
    set(rc, CMPI_RC_OK);
    return side_of(broker).books.make(Cim_Path(text_of(name_space), text_of(class_name)));
}

CMPIArgs* new_args(const CMPIBroker* broker, CMPIStatus* rc) {
    set(rc, CMPI_RC_OK);
    return side_of(broker).books.make_args({});
}

CMPIString* new_string(const CMPIBroker* broker, const char* data, CMPIStatus* rc) {
    set(rc, CMPI_RC_OK);
    return side_of(broker).books.make(text_of(data));
}

CMPIArray* new_array(const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* rc) {
    Books& books = side_of(broker).books;
    Cim_Value element;
    if (const CMPIrc code = books.plain(nullptr, type, element, "newArray");
        code != CMPI_RC_OK || element.is_array() || element.type() == Cim_Type::none) {
        set(rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
        return nullptr;
    }
    set(rc, CMPI_RC_OK);
    return books.make(Array_Content{element.type(), std::vector<Cim_Value>(size, element)});
}

CMPIDateTime* new_datetime(const CMPIBroker* broker, CMPIStatus* rc) {
    set(rc, CMPI_RC_OK);
    return side_of(broker).books.make(Cim_Datetime::now());
}

CMPIDateTime* new_datetime_binary(const CMPIBroker* broker, CMPIUint64 microseconds,
                                  CMPIBoolean interval, CMPIStatus* rc) {
    set(rc, CMPI_RC_OK);
    return side_of(broker).books.make(Cim_Datetime::from_microseconds(microseconds, interval != 0));
}

CMPIDateTime* new_datetime_chars(const CMPIBroker* broker, const char* text, CMPIStatus* rc) {
    try {
        set(rc, CMPI_RC_OK);
        return side_of(broker).books.make(Cim_Datetime(text_of(text)));
    } catch (const Value_Error& error) {
        set(rc, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
}

CMPISelectExp* new_select(const CMPIBroker* broker, const char* query, const char* language,
                          CMPIArray** projection, CMPIStatus* rc) {
    if (projection != nullptr) {
        *projection = nullptr;
    }
    set(rc, CMPI_RC_OK);
    return side_of(broker).books.make(Select_Content{text_of(query), text_of(language)});
}

CMPIBoolean path_is_a(const CMPIBroker* broker, const CMPIObjectPath* path, const char* class_name,
                      CMPIStatus* rc) {
    Books& books = side_of(broker).books;
    const auto* object = argument<Path_Object>(books, path, "classPathIsA");
    set(rc, object == nullptr ? CMPI_RC_ERR_INVALID_PARAMETER : CMPI_RC_OK);
    if (object == nullptr) {
        return 0;
    }
    const std::string wanted = text_of(class_name);
    const std::string& found = object->content->path.class_name;
    return same_name(found, wanted) ||
           (books.schema != nullptr && books.schema->is_a(found, wanted));
}

// An object of any kind: what stands first in each is the handle and the table.
struct Any_Pair {
    void* hdl;
    const void* ft;
};

// "CMPIString" and the like, or null for what is none of ours.
const char* kind_of(const Tables& ft, const void* object) noexcept {
    if (object == nullptr) {
        return nullptr;
    }
    const void* const table = static_cast<const Any_Pair*>(object)->ft;
    const std::pair<const void*, const char*> kinds[] = {
        {&ft.string, "CMPIString"},           {&ft.array, "CMPIArray"},
        {&ft.datetime, "CMPIDateTime"},       {&ft.path, "CMPIObjectPath"},
        {&ft.instance, "CMPIInstance"},       {&ft.args, "CMPIArgs"},
        {&ft.enumeration, "CMPIEnumeration"}, {&ft.context, "CMPIContext"},
        {&ft.result, "CMPIResult"},           {&ft.select, "CMPISelectExp"}};
    for (const auto& [known, kind] : kinds) {
        if (table == known) {
            return kind;
        }
    }
    return nullptr;
}

CMPIString* type_text(const CMPIBroker* broker, const void* object, CMPIStatus* rc) {
    Books& books = side_of(broker).books;
    const char* const kind = kind_of(books.ft, object);
    set(rc, kind == nullptr ? CMPI_RC_ERR_INVALID_HANDLE : CMPI_RC_OK);
    return kind == nullptr ? nullptr : books.make(std::string(kind));
}

CMPIBoolean is_of_type(const CMPIBroker* broker, const void* object, const char* type,
                       CMPIStatus* rc) {
    const char* const kind = kind_of(side_of(broker).books.ft, object);
    set(rc, kind == nullptr ? CMPI_RC_ERR_INVALID_HANDLE : CMPI_RC_OK);
    return kind != nullptr && text_of(type) == kind;
}

CMPIString* object_text(const CMPIBroker* broker, const void* object, CMPIStatus* rc) {
    Books& books = side_of(broker).books;
    const char* const kind = kind_of(books.ft, object);
    const std::string_view name = kind == nullptr ? "" : kind;
    const auto text = [&]<class O>(O* alive, auto convert) -> CMPIString* {
        set(rc, alive == nullptr ? CMPI_RC_ERR_INVALID_HANDLE : CMPI_RC_OK);
        return alive == nullptr ? nullptr
                                : books.make(std::string(convert(books.read(*alive, "toString"))));
    };
    if (name == "CMPIString") {
        return text(
            argument<String_Object>(books, static_cast<const CMPIString*>(object), "toString"),
            [](const std::string& chars) { return chars; });
    }
    if (name == "CMPIObjectPath") {
        return text(
            argument<Path_Object>(books, static_cast<const CMPIObjectPath*>(object), "toString"),
            [](const Cim_Path& path) { return path.text(); });
    }
    if (name == "CMPIInstance") {
        return text(
            argument<Instance_Object>(books, static_cast<const CMPIInstance*>(object), "toString"),
            [](const Instance_Content& content) { return content.instance.text(); });
    }
    if (name == "CMPIDateTime") {
        return text(
            argument<Datetime_Object>(books, static_cast<const CMPIDateTime*>(object), "toString"),
            [](const Cim_Datetime& datetime) { return datetime.text(); });
    }
    return type_text(broker, object, rc);
}

// The default message with $0 to $9 replaced by the arguments: a type code and a value each.
CMPIString* message(const CMPIBroker* broker, const char* text, CMPIStatus* rc, CMPICount count,
                    va_list arguments) {
    std::vector<std::string> inserts;
    for (CMPICount i = 0; i < count && i < 10; ++i) {
        // The caller has started the list.
        const int type = va_arg(arguments, int); // NOLINT(clang-analyzer-valist.Uninitialized)
        switch (type) {
        case CMPI_sint32:
            inserts.push_back(std::to_string(va_arg(arguments, CMPISint32)));
            break;
        case CMPI_uint32:
            inserts.push_back(std::to_string(va_arg(arguments, CMPIUint32)));
            break;
        case CMPI_sint64:
            inserts.push_back(std::to_string(va_arg(arguments, CMPISint64)));
            break;
        case CMPI_uint64:
            inserts.push_back(std::to_string(va_arg(arguments, CMPIUint64)));
            break;
        case CMPI_real64:
            inserts.push_back(Cim_Value(va_arg(arguments, double)).plain());
            break;
        case CMPI_boolean:
            inserts.push_back(va_arg(arguments, int) != 0 ? "true" : "false");
            break;
        case CMPI_chars:
            inserts.push_back(text_of(va_arg(arguments, const char*)));
            break;
        case CMPI_string: {
            const auto* string = va_arg(arguments, const CMPIString*);
            const auto* object = argument<String_Object>(side_of(broker).books, string, "message");
            inserts.push_back(object == nullptr ? std::string() : *object->content);
            break;
        }
        default:
            set(rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
            return nullptr;
        }
    }
    std::string result;
    for (const char* c = text == nullptr ? "" : text; *c != '\0'; ++c) {
        const auto index = static_cast<std::size_t>(c[1] - '0');
        if (*c == '$' && c[1] >= '0' && c[1] <= '9' && index < inserts.size()) {
            result += inserts[index];
            ++c;
        } else {
            result += *c;
        }
    }
    set(rc, CMPI_RC_OK);
    return side_of(broker).books.make(std::move(result));
}

CMPIString* get_message(const CMPIBroker* broker, const char*, const char* text, CMPIStatus* rc,
                        CMPICount count, ...) {
    va_list arguments;
    va_start(arguments, count);
    CMPIString* const result = message(broker, text, rc, count, arguments);
    va_end(arguments);
    return result;
}

CMPIString* get_message2(const CMPIBroker* broker, const char*, const CMPIMsgFileHandle,
                         const char* text, CMPIStatus* rc, CMPICount count, ...) {
    va_list arguments;
    va_start(arguments, count);
    CMPIString* const result = message(broker, text, rc, count, arguments);
    va_end(arguments);
    return result;
}

CMPIStatus log(const CMPIBroker* broker, const char* origin, const char* text,
               const CMPIString* string) {
    Broker_Side& side = side_of(broker);
    const auto* object = argument<String_Object>(side.books, string, "logging");
    if (side.options.on_log) {
        side.options.on_log(text_of(origin) + ": " +
                            (object == nullptr ? text_of(text) : *object->content));
    }
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus log_message(const CMPIBroker* broker, CMPISeverity, const char* id, const char* text,
                       const CMPIString* string) {
    return log(broker, id, text, string);
}

CMPIStatus trace(const CMPIBroker* broker, CMPILevel, const char* component, const char* text,
                 const CMPIString* string) {
    return log(broker, component, text, string);
}

CMPIError* new_error(const CMPIBroker*, const char*, const char*, const char*,
                     const CMPIErrorSeverity, const CMPIErrorProbableCause, const CMPIrc,
                     CMPIStatus* rc) {
    set(rc, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

CMPIStatus open_messages(const CMPIBroker*, const char*, CMPIMsgFileHandle* handle) {
    if (handle != nullptr) {
        *handle = nullptr; // the default messages are used
    }
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus close_messages(const CMPIBroker*, const CMPIMsgFileHandle) {
    return {CMPI_RC_OK, nullptr};
}

CMPIPropertyList* new_property_list(const CMPIBroker*, const char**, CMPIStatus* rc) {
    set(rc, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

CMPIString* new_string_cp(const CMPIBroker* broker, const char* data, const CMPICodepageID,
                          CMPIStatus* rc) {
    return new_string(broker, data, rc);
}

CMPIEnumerationFilter* new_filter(const CMPIBroker*, const char*, const char*, CMPIStatus* rc) {
    set(rc, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

} // namespace

void fill_makers(Tables& tables, int version) {
    CMPIBrokerEncFT& t = tables.makers;
    t = {version,
         new_instance,
         new_path,
         new_args,
         new_string,
         new_array,
         new_datetime,
         new_datetime_binary,
         new_datetime_chars,
         new_select,
         path_is_a,
         object_text,
         is_of_type,
         type_text,
         get_message,
         log_message,
         trace,
         new_error,
         open_messages,
         close_messages,
         get_message2,
         new_property_list,
         new_string_cp,
         new_filter};
    if (version < 200) {
        t.newCMPIError = nullptr;
        t.openMessageFile = nullptr;
        t.closeMessageFile = nullptr;
        t.getMessage2 = nullptr;
    }
    if (version < 210) {
        t.newPropertyList = nullptr;
        t.newStringCP = nullptr;
        t.newEnumerationFilter = nullptr;
    }
}

} // namespace tvrhost
