#include "tests/adapter/fake_broker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <strings.h>

// Tables of this broker end at version 100.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace fake {

namespace {

constexpr CMPIStatus ok{CMPI_RC_OK, nullptr};
constexpr CMPIStatus failed{CMPI_RC_ERR_FAILED, nullptr};

using String_Handle = Handle<CMPIString, Text>;
using Datetime_Handle = Handle<CMPIDateTime, When>;
using Array_Handle = Handle<CMPIArray, List>;
using Path_Handle = Handle<CMPIObjectPath, Path>;
using Instance_Handle = Handle<CMPIInstance, Inst>;
using Args_Handle = Handle<CMPIArgs, Args>;
using Result_Handle = Handle<CMPIResult, Result>;
using Enumeration_Handle = Handle<CMPIEnumeration, Enumeration>;
using Context_Handle = Handle<CMPIContext, Context>;

void set(CMPIStatus* rc, CMPIStatus status) {
    if (rc != nullptr) {
        *rc = status;
    }
}

template <class H> H& of(const typename H::Type* object) {
    return *static_cast<H*>(object->hdl);
}

Broker& of(const CMPIBroker* broker) {
    return *static_cast<Broker*>(const_cast<void*>(broker->hdl));
}

template <class H> CMPIStatus release(typename H::Type* object) {
    H& handle = of<H>(object);
    handle.broker.drop(&handle);
    return ok;
}

template <class H> typename H::Type* no_clone(const typename H::Type*, CMPIStatus* rc) {
    ADD_FAILURE() << "an unexpected clone";
    set(rc, failed);
    return nullptr;
}

CMPIType element_type(CMPIType type) {
    return static_cast<CMPIType>(type & ~CMPI_ARRAY);
}

// The value of a datum with handles of its own.
CMPIValue value_of(Broker& broker, const Datum& datum) {
    CMPIValue value = datum.scalar;
    if (auto text = std::get_if<std::shared_ptr<Text>>(&datum.object)) {
        value.string = &broker.add<String_Handle>(*text).cmpi;
    } else if (auto when = std::get_if<std::shared_ptr<When>>(&datum.object)) {
        value.dateTime = &broker.add<Datetime_Handle>(*when).cmpi;
    } else if (auto list = std::get_if<std::shared_ptr<List>>(&datum.object)) {
        value.array = &broker.add<Array_Handle>(*list).cmpi;
    } else if (auto path = std::get_if<std::shared_ptr<Path>>(&datum.object)) {
        value.ref = &broker.add<Path_Handle>(*path).cmpi;
    } else if (auto inst = std::get_if<std::shared_ptr<Inst>>(&datum.object)) {
        value.inst = &broker.add<Instance_Handle>(*inst).cmpi;
    }
    return value;
}

CMPIData data_of(Broker& broker, const Datum& datum) {
    return CMPIData{datum.type, datum.state, value_of(broker, datum)};
}

// A copy of what a setter is given.
Datum datum_of(const CMPIValue* value, CMPIType type) {
    Datum datum{type, CMPI_goodValue, {}, {}};
    if (value == nullptr) {
        datum.state = CMPI_nullValue;
        return datum;
    }
    if ((type & CMPI_ARRAY) != 0) {
        if (value->array != nullptr) {
            datum.object = std::make_shared<List>(*of<Array_Handle>(value->array).content);
        }
        return datum;
    }
    switch (type) {
    case CMPI_string:
        if (value->string != nullptr) {
            datum.object = std::make_shared<Text>(*of<String_Handle>(value->string).content);
        }
        return datum;
    case CMPI_dateTime:
        if (value->dateTime != nullptr) {
            datum.object = std::make_shared<When>(*of<Datetime_Handle>(value->dateTime).content);
        }
        return datum;
    case CMPI_ref:
        if (value->ref != nullptr) {
            datum.object = std::make_shared<Path>(*of<Path_Handle>(value->ref).content);
        }
        return datum;
    case CMPI_instance:
        if (value->inst != nullptr) {
            datum.object = std::make_shared<Inst>(*of<Instance_Handle>(value->inst).content);
        }
        return datum;
    default:
        datum.scalar = *value;
        return datum;
    }
}

CMPIString* string_of(Broker& broker, const std::string& chars) {
    return &broker.add<String_Handle>(std::make_shared<Text>(Text{chars})).cmpi;
}

CMPIData entry_at(Broker& broker, const Entries& entries, CMPICount index, CMPIString** name,
                  CMPIStatus* rc) {
    if (index >= entries.size()) {
        set(rc, failed);
        return CMPIData{};
    }
    set(rc, ok);
    if (name != nullptr) {
        *name = string_of(broker, entries[index].name);
    }
    return data_of(broker, entries[index].datum);
}

// Function tables

const CMPIStringFT string_ft{
    100, release<String_Handle>, no_clone<String_Handle>,
    [](const CMPIString* string, CMPIStatus* rc) -> const char* {
        const Text& text = *of<String_Handle>(string).content;
        const bool fails = text.unreadable || of<String_Handle>(string).broker.fails("getCharPtr");
        set(rc, fails ? failed : ok);
        return fails ? nullptr : text.chars.c_str();
    }};

const CMPIDateTimeFT datetime_ft{100,
                                 release<Datetime_Handle>,
                                 no_clone<Datetime_Handle>,
                                 [](const CMPIDateTime*, CMPIStatus* rc) -> CMPIUint64 {
                                     set(rc, failed);
                                     return 0;
                                 },
                                 [](const CMPIDateTime* datetime, CMPIStatus* rc) -> CMPIString* {
                                     Datetime_Handle& handle = of<Datetime_Handle>(datetime);
                                     if (handle.broker.fails("getStringFormat")) {
                                         set(rc, failed);
                                         return nullptr;
                                     }
                                     set(rc, ok);
                                     return string_of(handle.broker, handle.content->chars);
                                 },
                                 [](const CMPIDateTime* datetime, CMPIStatus* rc) -> CMPIBoolean {
                                     set(rc, ok);
                                     return of<Datetime_Handle>(datetime).content->chars.find(
                                                ':') != std::string::npos;
                                 }};

const CMPIArrayFT array_ft{
    100,
    release<Array_Handle>,
    no_clone<Array_Handle>,
    [](const CMPIArray* array, CMPIStatus* rc) -> CMPICount {
        Array_Handle& handle = of<Array_Handle>(array);
        const bool fails = handle.broker.fails("getSize");
        set(rc, fails ? failed : ok);
        return fails ? 0 : static_cast<CMPICount>(handle.content->elements.size());
    },
    [](const CMPIArray* array, CMPIStatus* rc) -> CMPIType {
        set(rc, ok);
        return of<Array_Handle>(array).content->type;
    },
    [](const CMPIArray* array, CMPICount index, CMPIStatus* rc) -> CMPIData {
        Array_Handle& handle = of<Array_Handle>(array);
        if (handle.broker.fails("getElementAt") || index >= handle.content->elements.size()) {
            set(rc, failed);
            return CMPIData{};
        }
        set(rc, ok);
        return data_of(handle.broker, handle.content->elements[index]);
    },
    [](const CMPIArray* array, CMPICount index, const CMPIValue* value,
       CMPIType type) -> CMPIStatus {
        Array_Handle& handle = of<Array_Handle>(array);
        if (handle.broker.fails("setElementAt") || index >= handle.content->elements.size() ||
            type != handle.content->type) {
            return failed;
        }
        handle.content->elements[index] = datum_of(value, type);
        return ok;
    }};

const CMPIEnumerationFT enumeration_ft{
    100,
    release<Enumeration_Handle>,
    no_clone<Enumeration_Handle>,
    [](const CMPIEnumeration* enumeration, CMPIStatus* rc) -> CMPIData {
        Enumeration_Handle& handle = of<Enumeration_Handle>(enumeration);
        Enumeration& content = *handle.content;
        if (handle.broker.fails("getNext") || content.position >= content.elements.size() ||
            content.position + 1 == handle.broker.fail_element) {
            set(rc, failed);
            return CMPIData{};
        }
        set(rc, ok);
        return data_of(handle.broker, content.elements[content.position++]);
    },
    [](const CMPIEnumeration* enumeration, CMPIStatus* rc) -> CMPIBoolean {
        Enumeration_Handle& handle = of<Enumeration_Handle>(enumeration);
        const bool fails = handle.broker.fails("hasNext");
        set(rc, fails ? failed : ok);
        return !fails && handle.content->position < handle.content->elements.size();
    },
    [](const CMPIEnumeration*, CMPIStatus* rc) -> CMPIArray* {
        set(rc, failed);
        return nullptr;
    }};

const CMPIInstanceFT instance_ft{
    100,
    release<Instance_Handle>,
    no_clone<Instance_Handle>,
    [](const CMPIInstance*, const char*, CMPIStatus* rc) -> CMPIData {
        set(rc, failed);
        return CMPIData{};
    },
    [](const CMPIInstance* instance, CMPICount index, CMPIString** name,
       CMPIStatus* rc) -> CMPIData {
        Instance_Handle& handle = of<Instance_Handle>(instance);
        if (handle.content->throws) {
            throw std::runtime_error("getPropertyAt");
        }
        if (handle.broker.fails("getPropertyAt")) {
            set(rc, failed);
            return CMPIData{};
        }
        return entry_at(handle.broker, handle.content->properties, index, name, rc);
    },
    [](const CMPIInstance* instance, CMPIStatus* rc) -> CMPICount {
        Instance_Handle& handle = of<Instance_Handle>(instance);
        const bool fails = handle.broker.fails("getPropertyCount");
        set(rc, fails ? failed : ok);
        return fails ? 0 : static_cast<CMPICount>(handle.content->properties.size());
    },
    [](const CMPIInstance* instance, const char* name, const CMPIValue* value,
       CMPIType type) -> CMPIStatus {
        Instance_Handle& handle = of<Instance_Handle>(instance);
        if (handle.broker.fails("setProperty")) {
            return failed;
        }
        Inst& content = *handle.content;
        if (!content.filtered || content.allowed.contains(name) ||
            content.path.keys.find(name) != nullptr) {
            content.properties.set(name, datum_of(value, type));
        }
        return ok;
    },
    [](const CMPIInstance* instance, CMPIStatus* rc) -> CMPIObjectPath* {
        Instance_Handle& handle = of<Instance_Handle>(instance);
        if (handle.content->pathless || handle.broker.fails("getObjectPath")) {
            set(rc, failed);
            return nullptr;
        }
        set(rc, ok);
        return &handle.broker.add<Path_Handle>(std::make_shared<Path>(handle.content->path)).cmpi;
    },
    [](const CMPIInstance* instance, const char** properties, const char**) -> CMPIStatus {
        Instance_Handle& handle = of<Instance_Handle>(instance);
        if (handle.broker.fails("setPropertyFilter")) {
            return failed;
        }
        handle.content->filtered = true;
        for (; *properties != nullptr; ++properties) {
            handle.content->allowed.insert(*properties);
        }
        return ok;
    }};

CMPIString* name_of(const CMPIObjectPath* path, const char* call, std::string Path::*name,
                    CMPIStatus* rc) {
    Path_Handle& handle = of<Path_Handle>(path);
    if (handle.broker.fails(call)) {
        set(rc, failed);
        return nullptr;
    }
    set(rc, ok);
    return handle.content->unset_names ? nullptr : string_of(handle.broker, *handle.content.*name);
}

const CMPIObjectPathFT path_ft{
    100,
    release<Path_Handle>,
    no_clone<Path_Handle>,
    nullptr,
    [](const CMPIObjectPath* path, CMPIStatus* rc) {
        return name_of(path, "getNameSpace", &Path::name_space, rc);
    },
    nullptr,
    nullptr,
    nullptr,
    [](const CMPIObjectPath* path, CMPIStatus* rc) {
        return name_of(path, "getClassName", &Path::class_name, rc);
    },
    [](const CMPIObjectPath* path, const char* key, const CMPIValue* value,
       CMPIType type) -> CMPIStatus {
        Path_Handle& handle = of<Path_Handle>(path);
        if (handle.broker.fails("addKey")) {
            return failed;
        }
        handle.content->keys.set(key, datum_of(value, type));
        return ok;
    },
    nullptr,
    [](const CMPIObjectPath* path, CMPICount index, CMPIString** name, CMPIStatus* rc) -> CMPIData {
        Path_Handle& handle = of<Path_Handle>(path);
        if (handle.broker.fails("getKeyAt")) {
            set(rc, failed);
            return CMPIData{};
        }
        return entry_at(handle.broker, handle.content->keys, index, name, rc);
    },
    [](const CMPIObjectPath* path, CMPIStatus* rc) -> CMPICount {
        Path_Handle& handle = of<Path_Handle>(path);
        const bool fails = handle.broker.fails("getKeyCount");
        set(rc, fails ? failed : ok);
        return fails ? 0 : static_cast<CMPICount>(handle.content->keys.size());
    }};

const CMPIArgsFT args_ft{
    100,
    release<Args_Handle>,
    no_clone<Args_Handle>,
    [](const CMPIArgs* args, const char* name, const CMPIValue* value,
       CMPIType type) -> CMPIStatus {
        Args_Handle& handle = of<Args_Handle>(args);
        if (handle.broker.fails("addArg")) {
            return failed;
        }
        handle.content->arguments.set(name, datum_of(value, type));
        return ok;
    },
    nullptr,
    [](const CMPIArgs* args, CMPICount index, CMPIString** name, CMPIStatus* rc) -> CMPIData {
        Args_Handle& handle = of<Args_Handle>(args);
        if (handle.broker.fails("getArgAt")) {
            set(rc, failed);
            return CMPIData{};
        }
        return entry_at(handle.broker, handle.content->arguments, index, name, rc);
    },
    [](const CMPIArgs* args, CMPIStatus* rc) -> CMPICount {
        Args_Handle& handle = of<Args_Handle>(args);
        const bool fails = handle.broker.fails("getArgCount");
        set(rc, fails ? failed : ok);
        return fails ? 0 : static_cast<CMPICount>(handle.content->arguments.size());
    }};

CMPIStatus return_datum(const CMPIResult* result, Datum datum) {
    Result_Handle& handle = of<Result_Handle>(result);
    if (handle.broker.fails("returnData")) {
        return failed;
    }
    handle.content->data.push_back(std::move(datum));
    return ok;
}

const CMPIResultFT result_ft{100,
                             release<Result_Handle>,
                             no_clone<Result_Handle>,
                             [](const CMPIResult* result, const CMPIValue* value, CMPIType type) {
                                 return return_datum(result, datum_of(value, type));
                             },
                             [](const CMPIResult* result, const CMPIInstance* instance) {
                                 CMPIValue value{};
                                 value.inst = const_cast<CMPIInstance*>(instance);
                                 return return_datum(result, datum_of(&value, CMPI_instance));
                             },
                             [](const CMPIResult* result, const CMPIObjectPath* path) {
                                 CMPIValue value{};
                                 value.ref = const_cast<CMPIObjectPath*>(path);
                                 return return_datum(result, datum_of(&value, CMPI_ref));
                             },
                             [](const CMPIResult* result) {
                                 ++of<Result_Handle>(result).content->done;
                                 return ok;
                             }};

const CMPIContextFT context_ft{
    100,
    release<Context_Handle>,
    no_clone<Context_Handle>,
    [](const CMPIContext* context, const char* name, CMPIStatus* rc) -> CMPIData {
        Context_Handle& handle = of<Context_Handle>(context);
        const Datum* datum = handle.content->entries.find(name);
        set(rc, datum == nullptr ? CMPIStatus{CMPI_RC_ERR_NOT_FOUND, nullptr} : ok);
        return datum == nullptr ? CMPIData{} : data_of(handle.broker, *datum);
    },
    nullptr,
    nullptr,
    nullptr};

// A new object of the broker's, or null.
template <class H, class Content>
typename H::Type* make(const CMPIBroker* broker, const char* call, Content content,
                       CMPIStatus* rc) {
    if (of(broker).fails(call)) {
        set(rc, failed);
        return nullptr;
    }
    set(rc, ok);
    return &of(broker).add<H>(std::make_shared<Content>(std::move(content))).cmpi;
}

const CMPIBrokerEncFT enc_ft{
    100,
    [](const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* rc) {
        return make<Instance_Handle>(broker, "newInstance",
                                     Inst{*of<Path_Handle>(path).content, {}}, rc);
    },
    [](const CMPIBroker* broker, const char* name_space, const char* class_name, CMPIStatus* rc) {
        return make<Path_Handle>(broker, "newObjectPath", Path{name_space, class_name, {}}, rc);
    },
    [](const CMPIBroker* broker, CMPIStatus* rc) {
        return make<Args_Handle>(broker, "newArgs", Args{}, rc);
    },
    [](const CMPIBroker* broker, const char* chars, CMPIStatus* rc) {
        return make<String_Handle>(broker, "newString", Text{chars}, rc);
    },
    [](const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* rc) {
        return make<Array_Handle>(broker, "newArray",
                                  List{type, std::vector<Datum>(size, null_of(type))}, rc);
    },
    nullptr,
    nullptr,
    [](const CMPIBroker* broker, const char* chars, CMPIStatus* rc) {
        return make<Datetime_Handle>(broker, "newDateTimeFromChars", When{chars}, rc);
    }};

const CMPIBrokerFT broker_ft{
    0,
    100,
    "fake",
    [](const CMPIBroker* broker, const CMPIContext*) -> CMPIContext* {
        Broker& self = of(broker);
        if (self.fails("prepareAttachThread")) {
            return nullptr;
        }
        ++self.prepared;
        return self.context(Context{{}, true});
    },
    [](const CMPIBroker* broker, const CMPIContext* context) {
        Context& content = *of<Context_Handle>(context).content;
        EXPECT_TRUE(content.prepared && !content.attached);
        content.attached = !of(broker).fails("attachThread");
        return content.attached ? ok : failed;
    },
    [](const CMPIBroker* broker, const CMPIContext* context) {
        Context_Handle& handle = of<Context_Handle>(context);
        EXPECT_TRUE(handle.content->attached);
        ++of(broker).detached;
        handle.broker.drop(&handle);
        return ok;
    },
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    [](const CMPIBroker* broker, const CMPIContext*, const CMPIObjectPath* path, const char**,
       CMPIStatus* rc) -> CMPIEnumeration* {
        Broker& self = of(broker);
        const Path& content = *of<Path_Handle>(path).content;
        if (self.fails("enumerateInstances")) {
            set(rc, failed);
            return nullptr;
        }
        self.asked.push_back(content);
        set(rc, ok);
        auto enumeration =
            std::make_shared<Enumeration>(Enumeration{self.instances[content.class_name]});
        return &self.add<Enumeration_Handle>(std::move(enumeration)).cmpi;
    }};

const CMPIStringFT* table(const CMPIString*) {
    return &string_ft;
}
const CMPIDateTimeFT* table(const CMPIDateTime*) {
    return &datetime_ft;
}
const CMPIArrayFT* table(const CMPIArray*) {
    return &array_ft;
}
const CMPIObjectPathFT* table(const CMPIObjectPath*) {
    return &path_ft;
}
const CMPIInstanceFT* table(const CMPIInstance*) {
    return &instance_ft;
}
const CMPIArgsFT* table(const CMPIArgs*) {
    return &args_ft;
}
const CMPIResultFT* table(const CMPIResult*) {
    return &result_ft;
}
const CMPIEnumerationFT* table(const CMPIEnumeration*) {
    return &enumeration_ft;
}
const CMPIContextFT* table(const CMPIContext*) {
    return &context_ft;
}

} // namespace

template <class C, class Content>
Handle<C, Content>::Handle(Broker& owner, std::shared_ptr<Content> held)
    : Object(owner), cmpi{this, table(static_cast<C*>(nullptr))}, content(std::move(held)) {}

// Data

std::string Datum::text() const {
    if (const Text* held = as<Text>()) {
        return held->chars;
    }
    const When* when = as<When>();
    return when == nullptr ? "" : when->chars;
}

Datum* Entries::find(const std::string& name) {
    const auto found = std::find_if(begin(), end(), [&](const Entry& entry) {
        return strcasecmp(entry.name.c_str(), name.c_str()) == 0;
    });
    return found == end() ? nullptr : &found->datum;
}

void Entries::set(const std::string& name, Datum datum) {
    if (Datum* present = find(name)) {
        *present = std::move(datum);
    } else {
        push_back({name, std::move(datum)});
    }
}

Datum string(const std::string& chars) {
    return {CMPI_string, CMPI_goodValue, {}, std::make_shared<Text>(Text{chars})};
}
Datum datetime(const std::string& chars) {
    return {CMPI_dateTime, CMPI_goodValue, {}, std::make_shared<When>(When{chars})};
}
Datum uint16(CMPIUint16 value) {
    return scalar(CMPI_uint16, &CMPIValue::uint16, value);
}
Datum uint32(CMPIUint32 value) {
    return scalar(CMPI_uint32, &CMPIValue::uint32, value);
}
Datum uint64(CMPIUint64 value) {
    return scalar(CMPI_uint64, &CMPIValue::uint64, value);
}
Datum sint64(CMPISint64 value) {
    return scalar(CMPI_sint64, &CMPIValue::sint64, value);
}
Datum boolean(bool value) {
    return scalar(CMPI_boolean, &CMPIValue::boolean, static_cast<CMPIBoolean>(value));
}
Datum reference(Path path) {
    return {CMPI_ref, CMPI_goodValue, {}, std::make_shared<Path>(std::move(path))};
}
Datum instance(Inst inst) {
    return {CMPI_instance, CMPI_goodValue, {}, std::make_shared<Inst>(std::move(inst))};
}
Datum list(CMPIType type, std::vector<Datum> elements) {
    return {static_cast<CMPIType>(type | CMPI_ARRAY),
            CMPI_goodValue,
            {},
            std::make_shared<List>(List{element_type(type), std::move(elements)})};
}
Datum null_of(CMPIType type) {
    return {type, CMPI_nullValue, {}, {}};
}

// Broker

Broker::Broker() : _broker{this, &broker_ft, &enc_ft, nullptr} {}

CMPIObjectPath* Broker::path(Path content) {
    return &add<Path_Handle>(std::make_shared<Path>(std::move(content))).cmpi;
}
CMPIInstance* Broker::instance(Inst content) {
    return &add<Instance_Handle>(std::make_shared<Inst>(std::move(content))).cmpi;
}
CMPIArgs* Broker::args(Args content) {
    return &add<Args_Handle>(std::make_shared<Args>(std::move(content))).cmpi;
}
CMPIContext* Broker::context(Context content) {
    return &add<Context_Handle>(std::make_shared<Context>(std::move(content))).cmpi;
}
CMPIResult* Broker::result() {
    return &add<Result_Handle>(std::make_shared<Result>()).cmpi;
}
Result& Broker::of(const CMPIResult* result) {
    return *fake::of<Result_Handle>(result).content;
}
Args& Broker::of(const CMPIArgs* args) {
    return *fake::of<Args_Handle>(args).content;
}
Inst& Broker::of(const CMPIInstance* instance) {
    return *fake::of<Instance_Handle>(instance).content;
}
Path& Broker::of(const CMPIObjectPath* path) {
    return *fake::of<Path_Handle>(path).content;
}
List& Broker::of(const CMPIArray* array) {
    return *fake::of<Array_Handle>(array).content;
}

void Broker::end_scope() {
    const std::lock_guard lock(_mutex);
    _live.clear();
}

std::size_t Broker::live() const {
    const std::lock_guard lock(_mutex);
    return _live.size();
}

bool Broker::fails(const char* call) {
    const std::lock_guard lock(_mutex);
    return ++_calls == fail_at || failing.contains(call);
}

void Broker::drop(Object* object) {
    const std::lock_guard lock(_mutex);
    if (_live.erase(object) == 0) {
        ADD_FAILURE() << "released twice";
    }
}

} // namespace fake
