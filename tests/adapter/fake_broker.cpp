#include "tests/adapter/fake_broker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <strings.h>
#include <tuple>
#include <type_traits>

// Tables of this broker end at version 100.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace fake {

namespace {

constexpr CMPIStatus ok{CMPI_RC_OK, nullptr};
constexpr CMPIStatus failed{CMPI_RC_ERR_FAILED, nullptr};

void set(CMPIStatus* rc, CMPIStatus status) {
    if (rc != nullptr) {
        *rc = status;
    }
}

Broker& of(const CMPIBroker* broker) {
    return *static_cast<Broker*>(const_cast<void*>(broker->hdl));
}

template <class Content> Handle<Content>& handle_of(const typename Content::Type* object) {
    return *static_cast<Handle<Content>*>(object->hdl);
}

// The handle behind an object; null, with the status saying so, if the call is to fail.
template <class Content>
Handle<Content>* enter(const typename Content::Type* object, const char* call, CMPIStatus* rc) {
    Handle<Content>& handle = handle_of<Content>(object);
    const bool fails = handle.broker.fails(call);
    set(rc, fails ? failed : ok);
    return fails ? nullptr : &handle;
}

template <class Content> CMPIStatus release(typename Content::Type* object) {
    Handle<Content>& handle = handle_of<Content>(object);
    handle.broker.drop(&handle);
    return ok;
}

template <class Content>
typename Content::Type* no_clone(const typename Content::Type*, CMPIStatus* rc) {
    ADD_FAILURE() << "an unexpected clone";
    set(rc, failed);
    return nullptr;
}

// A datum with a handle of its own.
CMPIData data_of(Broker& broker, const Datum& datum) {
    CMPIData data{datum.type, datum.state, datum.scalar};
    std::visit(
        [&]<class Held>(const Held& held) {
            if constexpr (!std::is_same_v<Held, std::monostate>) {
                const auto* object = broker.add(held);
                // NOLINTNEXTLINE(bugprone-sizeof-expression): the pointer itself is the value
                std::memcpy(&data.value, &object, sizeof object);
            }
        },
        datum.object);
    return data;
}

template <class Content> void hold(Datum& datum, const typename Content::Type* object) {
    if (object != nullptr) {
        datum.object = std::make_shared<Content>(Broker::content<Content>(object));
    }
}

// A copy of what a setter is given.
Datum datum_of(const CMPIValue* value, CMPIType type) {
    if (type == CMPI_chars) {
        return string(reinterpret_cast<const char*>(value));
    }
    Datum datum{type, CMPI_goodValue, {}, {}};
    if (value == nullptr) {
        datum.state = CMPI_nullValue;
    } else if ((type & CMPI_ARRAY) != 0) {
        hold<List>(datum, value->array);
    } else if (type == CMPI_string) {
        hold<Text>(datum, value->string);
    } else if (type == CMPI_dateTime) {
        hold<When>(datum, value->dateTime);
    } else if (type == CMPI_ref) {
        hold<Path>(datum, value->ref);
    } else if (type == CMPI_instance) {
        hold<Inst>(datum, value->inst);
    } else {
        datum.scalar = *value;
    }
    return datum;
}

// The name of a call as an argument of a template.
template <std::size_t size> struct Call {
    char name[size];
    constexpr Call(const char (&text)[size]) { std::copy_n(text, size, name); }
};

template <class Content, auto held, Call call>
CMPICount count_of(const typename Content::Type* object, CMPIStatus* rc) {
    const auto* handle = enter<Content>(object, call.name, rc);
    return handle == nullptr ? 0 : static_cast<CMPICount>((*handle->content.*held).size());
}

template <class Content, auto held, Call call>
CMPIData entry_at(const typename Content::Type* object, CMPICount index, CMPIString** name,
                  CMPIStatus* rc) {
    const auto* handle = enter<Content>(object, call.name, rc);
    if (handle == nullptr || index >= (*handle->content.*held).size()) {
        set(rc, failed);
        return CMPIData{};
    }
    const Entry& entry = (*handle->content.*held)[index];
    if (name != nullptr) {
        *name = handle->broker.add(Text{entry.name});
    }
    return data_of(handle->broker, entry.datum);
}

template <class Content, auto held, Call call>
CMPIStatus set_entry(const typename Content::Type* object, const char* name, const CMPIValue* value,
                     CMPIType type) {
    const auto* handle = enter<Content>(object, call.name, nullptr);
    if (handle == nullptr) {
        return failed;
    }
    (*handle->content.*held).set(name, datum_of(value, type));
    return ok;
}

// Function tables; null where the adapter calls nothing.

const CMPIStringFT string_ft{100, release<Text>, no_clone<Text>,
                             [](const CMPIString* string, CMPIStatus* rc) -> const char* {
                                 const auto* handle = enter<Text>(string, "getCharPtr", rc);
                                 return handle == nullptr ? nullptr
                                                          : handle->content->chars.c_str();
                             }};

const CMPIDateTimeFT datetime_ft{
    100, release<When>, no_clone<When>, nullptr,
    [](const CMPIDateTime* datetime, CMPIStatus* rc) -> CMPIString* {
        const auto* handle = enter<When>(datetime, "getStringFormat", rc);
        return handle == nullptr ? nullptr : handle->broker.add(Text{handle->content->chars});
    }};

const CMPIArrayFT array_ft{
    100,
    release<List>,
    no_clone<List>,
    [](const CMPIArray* array, CMPIStatus* rc) -> CMPICount {
        const auto* handle = enter<List>(array, "getSize", rc);
        return handle == nullptr ? 0 : static_cast<CMPICount>(handle->content->elements.size());
    },
    nullptr,
    [](const CMPIArray* array, CMPICount index, CMPIStatus* rc) -> CMPIData {
        const auto* handle = enter<List>(array, "getElementAt", rc);
        if (handle == nullptr || index >= handle->content->elements.size()) {
            set(rc, failed);
            return CMPIData{};
        }
        return data_of(handle->broker, handle->content->elements[index]);
    },
    [](const CMPIArray* array, CMPICount index, const CMPIValue* value,
       CMPIType type) -> CMPIStatus {
        const auto* handle = enter<List>(array, "setElementAt", nullptr);
        if (handle == nullptr || index >= handle->content->elements.size() ||
            (type == CMPI_chars ? CMPIType{CMPI_string} : type) != handle->content->type) {
            return failed;
        }
        handle->content->elements[index] = datum_of(value, type);
        return ok;
    }};

const CMPIEnumerationFT enumeration_ft{
    100, release<Enumeration>, no_clone<Enumeration>,
    [](const CMPIEnumeration* enumeration, CMPIStatus* rc) -> CMPIData {
        const auto* handle = enter<Enumeration>(enumeration, "getNext", rc);
        if (handle == nullptr || handle->content->position >= handle->content->elements.size() ||
            handle->content->position + 1 == handle->broker.fail_element) {
            set(rc, failed);
            return CMPIData{};
        }
        return data_of(handle->broker, handle->content->elements[handle->content->position++]);
    },
    [](const CMPIEnumeration* enumeration, CMPIStatus* rc) -> CMPIBoolean {
        const auto* handle = enter<Enumeration>(enumeration, "hasNext", rc);
        return handle != nullptr && handle->content->position < handle->content->elements.size();
    }};

const CMPIInstanceFT instance_ft{
    100,
    release<Inst>,
    no_clone<Inst>,
    nullptr,
    [](const CMPIInstance* instance, CMPICount index, CMPIString** name, CMPIStatus* rc) {
        if (Broker::of(instance).throws) {
            throw std::runtime_error("getPropertyAt");
        }
        return entry_at<Inst, &Inst::properties, "getPropertyAt">(instance, index, name, rc);
    },
    count_of<Inst, &Inst::properties, "getPropertyCount">,
    [](const CMPIInstance* instance, const char* name, const CMPIValue* value, CMPIType type) {
        const Inst& content = Broker::of(instance);
        if (content.filtered && !content.allowed.contains(name) &&
            content.path.keys.find(name) == nullptr) {
            return ok;
        }
        return set_entry<Inst, &Inst::properties, "setProperty">(instance, name, value, type);
    },
    [](const CMPIInstance* instance, CMPIStatus* rc) -> CMPIObjectPath* {
        const auto* handle = enter<Inst>(instance, "getObjectPath", rc);
        return handle == nullptr ? nullptr : handle->broker.path(handle->content->path);
    },
    [](const CMPIInstance* instance, const char** properties, const char**) {
        const auto* handle = enter<Inst>(instance, "setPropertyFilter", nullptr);
        if (handle == nullptr) {
            return failed;
        }
        handle->content->filtered = true;
        for (; *properties != nullptr; ++properties) {
            handle->content->allowed.insert(*properties);
        }
        return ok;
    }};

template <auto name, Call call> CMPIString* name_of(const CMPIObjectPath* path, CMPIStatus* rc) {
    const auto* handle = enter<Path>(path, call.name, rc);
    return handle == nullptr ? nullptr : handle->broker.add(Text{*handle->content.*name});
}

const CMPIObjectPathFT path_ft{100,
                               release<Path>,
                               no_clone<Path>,
                               nullptr,
                               name_of<&Path::name_space, "getNameSpace">,
                               nullptr,
                               nullptr,
                               nullptr,
                               name_of<&Path::class_name, "getClassName">,
                               set_entry<Path, &Path::keys, "addKey">,
                               nullptr,
                               entry_at<Path, &Path::keys, "getKeyAt">,
                               count_of<Path, &Path::keys, "getKeyCount">};

const CMPIArgsFT args_ft{100,
                         release<Args>,
                         no_clone<Args>,
                         set_entry<Args, &Args::arguments, "addArg">,
                         nullptr,
                         entry_at<Args, &Args::arguments, "getArgAt">,
                         count_of<Args, &Args::arguments, "getArgCount">};

template <class Content>
CMPIStatus return_datum(const CMPIResult* result, const typename Content::Type* object,
                        CMPIType type) {
    const auto* handle = enter<Result>(result, "returnData", nullptr);
    if (handle == nullptr) {
        return failed;
    }
    Datum datum{type, CMPI_goodValue, {}, {}};
    hold<Content>(datum, object);
    handle->content->data.push_back(std::move(datum));
    return ok;
}

const CMPIResultFT result_ft{100,
                             release<Result>,
                             no_clone<Result>,
                             [](const CMPIResult* result, const CMPIValue* value, CMPIType type) {
                                 const auto* handle = enter<Result>(result, "returnData", nullptr);
                                 if (handle == nullptr) {
                                     return failed;
                                 }
                                 handle->content->data.push_back(datum_of(value, type));
                                 return ok;
                             },
                             [](const CMPIResult* result, const CMPIInstance* instance) {
                                 return return_datum<Inst>(result, instance, CMPI_instance);
                             },
                             [](const CMPIResult* result, const CMPIObjectPath* path) {
                                 return return_datum<Path>(result, path, CMPI_ref);
                             },
                             [](const CMPIResult* result) {
                                 ++Broker::of(result).done;
                                 return ok;
                             }};

const CMPIContextFT context_ft{
    100, release<Context>, no_clone<Context>,
    [](const CMPIContext* context, const char* name, CMPIStatus* rc) -> CMPIData {
        const Handle<Context>& handle = handle_of<Context>(context);
        const Datum* datum = handle.content->entries.find(name);
        set(rc, datum == nullptr ? CMPIStatus{CMPI_RC_ERR_NOT_FOUND, nullptr} : ok);
        return datum == nullptr ? CMPIData{} : data_of(handle.broker, *datum);
    }};

// A new object of the broker's, or null.
template <class Content>
typename Content::Type* make(const CMPIBroker* broker, const char* call, Content content,
                             CMPIStatus* rc) {
    const bool fails = of(broker).fails(call);
    set(rc, fails ? failed : ok);
    return fails ? nullptr : of(broker).add(std::move(content));
}

const CMPIBrokerEncFT enc_ft{
    100,
    [](const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* rc) {
        return make(broker, "newInstance", Inst{Broker::of(path), {}}, rc);
    },
    [](const CMPIBroker* broker, const char* name_space, const char* class_name, CMPIStatus* rc) {
        return make(broker, "newObjectPath", Path{name_space, class_name, {}}, rc);
    },
    [](const CMPIBroker* broker, CMPIStatus* rc) { return make(broker, "newArgs", Args{}, rc); },
    [](const CMPIBroker* broker, const char* chars, CMPIStatus* rc) {
        return make(broker, "newString", Text{chars}, rc);
    },
    [](const CMPIBroker* broker, CMPICount size, CMPIType type, CMPIStatus* rc) {
        return make(broker, "newArray", List{type, std::vector<Datum>(size, null_of(type))}, rc);
    },
    nullptr,
    nullptr,
    [](const CMPIBroker* broker, const char* chars, CMPIStatus* rc) {
        return make(broker, "newDateTimeFromChars", When{chars}, rc);
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
        return self.context(Context{{}, Context::prepared});
    },
    [](const CMPIBroker* broker, const CMPIContext* context) {
        Context& content = Broker::content<Context>(context);
        EXPECT_EQ(content.state, Context::prepared);
        if (of(broker).fails("attachThread")) {
            return failed;
        }
        content.state = Context::attached;
        return ok;
    },
    [](const CMPIBroker* broker, const CMPIContext* context) {
        EXPECT_EQ(Broker::content<Context>(context).state, Context::attached);
        ++of(broker).detached;
        return release<Context>(const_cast<CMPIContext*>(context));
    },
    nullptr,
    nullptr,
    [](const CMPIBroker* broker, const CMPIContext*, const CMPIObjectPath* path,
       const char** properties, CMPIStatus* rc) -> CMPIInstance* {
        Broker& self = of(broker);
        self.asked.push_back(Broker::of(path));
        const std::shared_ptr<Inst> got = self.get_instance(Broker::of(path), properties);
        set(rc, got == nullptr ? failed : ok);
        return got == nullptr ? nullptr : self.add(got);
    },
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    [](const CMPIBroker* broker, const CMPIContext*, const CMPIObjectPath* path, const char**,
       CMPIStatus* rc) -> CMPIEnumeration* {
        Broker& self = of(broker);
        const Path& content = Broker::of(path);
        if (self.fails("enumerateInstances")) {
            set(rc, failed);
            return nullptr;
        }
        self.asked.push_back(content);
        set(rc, ok);
        return self.add(Enumeration{self.instances[content.class_name]});
    }};

const std::tuple tables{&string_ft, &datetime_ft, &array_ft,       &path_ft,   &instance_ft,
                        &args_ft,   &result_ft,   &enumeration_ft, &context_ft};

} // namespace

template <class Content>
Handle<Content>::Handle(Broker& owner, std::shared_ptr<Content> held)
    : Object(owner), cmpi{this, std::get<decltype(cmpi.ft)>(tables)}, content(std::move(held)) {}

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
            std::make_shared<List>(List{type, std::move(elements)})};
}
Datum null_of(CMPIType type) {
    return {type, CMPI_nullValue, {}, {}};
}

// Broker

Broker::Broker() : _broker{this, &broker_ft, &enc_ft, nullptr} {}

CMPIObjectPath* Broker::path(Path content) {
    return add(std::move(content));
}
CMPIInstance* Broker::instance(Inst content) {
    return add(std::move(content));
}
CMPIArgs* Broker::args(Args content) {
    return add(std::move(content));
}
CMPIContext* Broker::context(Context content) {
    return add(std::move(content));
}
CMPIResult* Broker::result() {
    return add(Result());
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
    seen.insert(call);
    return ++_calls == fail_at || failing.contains(call);
}

void Broker::drop(Object* object) {
    const std::lock_guard lock(_mutex);
    if (_live.erase(object) == 0) {
        ADD_FAILURE() << "released twice";
    }
}

} // namespace fake
