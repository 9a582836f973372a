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

// The element of an array or enumeration; without a handle the call fails.
template <class Content>
CMPIData datum_at(const Handle<Content>* handle, std::size_t index, CMPIStatus* rc) {
    if (handle == nullptr || index >= handle->content->elements.size()) {
        set(rc, failed);
        return CMPIData{};
    }
    return data_of(handle->broker, handle->content->elements[index]);
}

template <class Content, auto text, Call call>
CMPIString* text_of(const typename Content::Type* object, CMPIStatus* rc) {
    const auto* handle = enter<Content>(object, call.name, rc);
    return handle == nullptr ? nullptr : handle->broker.add(Text{*handle->content.*text});
}

// Function tables; null where the adapter calls nothing.

const CMPIStringFT string_ft{
    .release = release<Text>, .getCharPtr = [](const CMPIString* string, CMPIStatus* rc) {
        const auto* handle = enter<Text>(string, "getCharPtr", rc);
        return handle == nullptr ? nullptr : handle->content->chars.c_str();
    }};

const CMPIDateTimeFT datetime_ft{.release = release<When>,
                                 .getStringFormat = text_of<When, &When::chars, "getStringFormat">};

CMPIStatus set_element(const CMPIArray* array, CMPICount index, const CMPIValue* value,
                       CMPIType type) {
    const auto* handle = enter<List>(array, "setElementAt", nullptr);
    if (handle == nullptr || index >= handle->content->elements.size() ||
        (type == CMPI_chars ? CMPIType{CMPI_string} : type) != handle->content->type) {
        return failed;
    }
    handle->content->elements[index] = datum_of(value, type);
    return ok;
}

const CMPIArrayFT array_ft{.release = release<List>,
                           .getSize = count_of<List, &List::elements, "getSize">,
                           .getElementAt =
                               [](const CMPIArray* array, CMPICount index, CMPIStatus* rc) {
                                   const auto* handle = enter<List>(array, "getElementAt", rc);
                                   return datum_at(handle, index, rc);
                               },
                           .setElementAt = set_element};

const CMPIEnumerationFT enumeration_ft{
    .release = release<Enumeration>,
    .getNext =
        [](const CMPIEnumeration* enumeration, CMPIStatus* rc) {
            auto* handle = enter<Enumeration>(enumeration, "getNext", rc);
            if (handle != nullptr && handle->content->position + 1 == handle->broker.fail_element) {
                handle = nullptr;
            }
            return datum_at(handle, handle == nullptr ? 0 : handle->content->position++, rc);
        },
    .hasNext = [](const CMPIEnumeration* enumeration, CMPIStatus* rc) -> CMPIBoolean {
        const auto* handle = enter<Enumeration>(enumeration, "hasNext", rc);
        return handle != nullptr && handle->content->position < handle->content->elements.size();
    }};

const CMPIInstanceFT instance_ft{
    .release = release<Inst>,
    .getPropertyAt =
        [](const CMPIInstance* instance, CMPICount index, CMPIString** name, CMPIStatus* rc) {
            if (Broker::of(instance).throws) {
                throw std::runtime_error("getPropertyAt");
            }
            return entry_at<Inst, &Inst::properties, "getPropertyAt">(instance, index, name, rc);
        },
    .getPropertyCount = count_of<Inst, &Inst::properties, "getPropertyCount">,
    .setProperty =
        [](const CMPIInstance* instance, const char* name, const CMPIValue* value, CMPIType type) {
            const Inst& content = Broker::of(instance);
            if (content.filtered && !content.allowed.contains(name) &&
                content.path.keys.find(name) == nullptr) {
                return ok;
            }
            return set_entry<Inst, &Inst::properties, "setProperty">(instance, name, value, type);
        },
    .getObjectPath =
        [](const CMPIInstance* instance, CMPIStatus* rc) {
            const auto* handle = enter<Inst>(instance, "getObjectPath", rc);
            return handle == nullptr ? nullptr : handle->broker.path(handle->content->path);
        },
    .setPropertyFilter =
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

const CMPIObjectPathFT path_ft{.release = release<Path>,
                               .getNameSpace = text_of<Path, &Path::name_space, "getNameSpace">,
                               .getClassName = text_of<Path, &Path::class_name, "getClassName">,
                               .addKey = set_entry<Path, &Path::keys, "addKey">,
                               .getKeyAt = entry_at<Path, &Path::keys, "getKeyAt">,
                               .getKeyCount = count_of<Path, &Path::keys, "getKeyCount">};

const CMPIArgsFT args_ft{.release = release<Args>,
                         .addArg = set_entry<Args, &Args::arguments, "addArg">,
                         .getArgAt = entry_at<Args, &Args::arguments, "getArgAt">,
                         .getArgCount = count_of<Args, &Args::arguments, "getArgCount">};

CMPIStatus return_data(const CMPIResult* result, const CMPIValue* value, CMPIType type) {
    const auto* handle = enter<Result>(result, "returnData", nullptr);
    if (handle == nullptr) {
        return failed;
    }
    handle->content->data.push_back(datum_of(value, type));
    return ok;
}
template <class Object, CMPIType type>
CMPIStatus return_object(const CMPIResult* result, const Object* object) {
    CMPIValue value{};
    std::memcpy(&value, &object, sizeof(void*));
    return return_data(result, &value, type);
}

const CMPIResultFT result_ft{.release = release<Result>,
                             .returnData = return_data,
                             .returnInstance = return_object<CMPIInstance, CMPI_instance>,
                             .returnObjectPath = return_object<CMPIObjectPath, CMPI_ref>,
                             .returnDone = [](const CMPIResult* result) {
                                 ++Broker::of(result).done;
                                 return ok;
                             }};

const CMPIContextFT context_ft{
    .release = release<Context>,
    .getEntry = [](const CMPIContext* context, const char* name, CMPIStatus* rc) {
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

// Broker

Broker::Broker() : _broker{this, &broker_ft, &enc_ft, nullptr} {}

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
