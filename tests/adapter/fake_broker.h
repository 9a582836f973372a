// A small object manager for tests: every CMPI object in memory, every call can be made to fail,
// and any datum can be handed out, sound or not. A double release or a use after release is a
// failed test.
#ifndef TVR_TESTS_ADAPTER_FAKE_BROKER_H
#define TVR_TESTS_ADAPTER_FAKE_BROKER_H

#include <cmpidt.h>
#include <cmpift.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace fake {

class Broker;

struct Text {
    using Type = CMPIString;
    std::string chars;
};
struct When {
    using Type = CMPIDateTime;
    std::string chars;
};
struct List;
struct Path;
struct Inst;

// A value as an object holds it. An object type without content is a null pointer.
struct Datum {
    CMPIType type = CMPI_null;
    CMPIValueState state = CMPI_goodValue;
    CMPIValue scalar{};
    std::variant<std::monostate, std::shared_ptr<Text>, std::shared_ptr<When>,
                 std::shared_ptr<List>, std::shared_ptr<Path>, std::shared_ptr<Inst>>
        object;

    // The content of an object type; null if it isn't one of that kind.
    template <class T> T* as() const {
        auto held = std::get_if<std::shared_ptr<T>>(&object);
        return held == nullptr ? nullptr : held->get();
    }
    // The characters of a string or datetime.
    std::string text() const;
};

struct Entry {
    std::string name;
    Datum datum;
};

struct Entries : std::vector<Entry> {
    Datum* find(const std::string& name);
    const Datum* find(const std::string& name) const {
        return const_cast<Entries*>(this)->find(name);
    }
    void set(const std::string& name, Datum datum);
};

struct List {
    using Type = CMPIArray;
    CMPIType type = CMPI_null;
    std::vector<Datum> elements;
};
struct Path {
    using Type = CMPIObjectPath;
    std::string name_space;
    std::string class_name;
    Entries keys;
};
struct Inst {
    using Type = CMPIInstance;
    Path path;
    Entries properties;
    bool throws = false;             // getPropertyAt throws
    bool filtered = false;           // a filter was set: only these properties and the keys go in
    std::set<std::string> allowed{}; // names of the filter
};
struct Args {
    using Type = CMPIArgs;
    Entries arguments;
};
struct Result {
    using Type = CMPIResult;
    std::vector<Datum> data;
    int done = 0;
};
struct Enumeration {
    using Type = CMPIEnumeration;
    std::vector<Datum> elements;
    std::size_t position = 0;
};
struct Context {
    using Type = CMPIContext;
    Entries entries;
    enum { of_request, prepared, attached } state = of_request;
};

// Makers of values.
template <class Content> Datum object(CMPIType type, Content content) {
    return {type, CMPI_goodValue, {}, std::make_shared<Content>(std::move(content))};
}
template <class T> Datum scalar(CMPIType type, T CMPIValue::*member, T value) {
    Datum datum{type, CMPI_goodValue, {}, {}};
    datum.scalar.*member = value;
    return datum;
}
inline Datum string(const std::string& chars) {
    return object(CMPI_string, Text{chars});
}
inline Datum datetime(const std::string& chars) {
    return object(CMPI_dateTime, When{chars});
}
inline Datum uint16(CMPIUint16 value) {
    return scalar(CMPI_uint16, &CMPIValue::uint16, value);
}
inline Datum uint32(CMPIUint32 value) {
    return scalar(CMPI_uint32, &CMPIValue::uint32, value);
}
inline Datum uint64(CMPIUint64 value) {
    return scalar(CMPI_uint64, &CMPIValue::uint64, value);
}
inline Datum sint64(CMPISint64 value) {
    return scalar(CMPI_sint64, &CMPIValue::sint64, value);
}
inline Datum boolean(bool value) {
    return scalar(CMPI_boolean, &CMPIValue::boolean, static_cast<CMPIBoolean>(value));
}
inline Datum reference(Path path) {
    return object(CMPI_ref, std::move(path));
}
inline Datum instance(Inst inst) {
    return object(CMPI_instance, std::move(inst));
}
inline Datum list(CMPIType type, std::vector<Datum> elements) {
    return object(static_cast<CMPIType>(type | CMPI_ARRAY), List{type, std::move(elements)});
}
inline Datum null_of(CMPIType type) {
    return {type, CMPI_nullValue, {}, {}};
}

// What a handle points to.
struct Object {
    explicit Object(Broker& owner) : broker(owner) {}
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    Broker& broker;
};
template <class Content> struct Handle : Object {
    Handle(Broker& owner, std::shared_ptr<Content> held);

    typename Content::Type cmpi;
    std::shared_ptr<Content> content;
};

class Broker {
public:
    Broker();

    const CMPIBroker* get() const { return &_broker; }

    // Handles for the calls of a test; they belong to the scope.
    CMPIObjectPath* path(Path content) { return add(std::move(content)); }
    CMPIInstance* instance(Inst content) { return add(std::move(content)); }
    CMPIArgs* args(Args content) { return add(std::move(content)); }
    CMPIContext* context(Context content = {}) { return add(std::move(content)); }
    CMPIResult* result();
    static Result& of(const CMPIResult* result) { return content<Result>(result); }
    static Args& of(const CMPIArgs* args) { return content<Args>(args); }
    static Inst& of(const CMPIInstance* instance) { return content<Inst>(instance); }
    static Path& of(const CMPIObjectPath* path) { return content<Path>(path); }
    static List& of(const CMPIArray* array) { return content<List>(array); }
    template <class Content> static Content& content(const typename Content::Type* object) {
        return *static_cast<Handle<Content>*>(object->hdl)->content;
    }

    // Drops all handles, as at the end of a call into a module.
    void end_scope();
    // Handles that were made and not released.
    std::size_t live() const;

    // The calls by name that fail each time, and the number of the one call that fails.
    std::set<std::string> failing;
    std::set<std::string> seen; // the names of the calls that came
    long fail_at = 0;
    long calls() const { return _calls; }
    bool fails(const char* call);

    // What enumerateInstances answers, by class name; and the paths it was asked for.
    std::map<std::string, std::vector<Datum>> instances;
    std::vector<Path> asked;
    // The number of the element at which getNext fails, from 1.
    std::size_t fail_element = 0;
    // What getInstance answers; the paths go into `asked` too. Null for none.
    std::function<std::shared_ptr<Inst>(const Path&, const char** properties)> get_instance;

    // Contexts of attached threads: made, and ended by a detach.
    int prepared = 0;
    int detached = 0;

    template <class Content> typename Content::Type* add(std::shared_ptr<Content> content) {
        auto handle = std::make_unique<Handle<Content>>(*this, std::move(content));
        auto* made = &handle->cmpi;
        const std::lock_guard lock(_mutex);
        Object* object = handle.get();
        _live.emplace(object, std::move(handle));
        return made;
    }
    template <class Content> typename Content::Type* add(Content content) {
        return add(std::make_shared<Content>(std::move(content)));
    }
    void drop(Object* object);

private:
    CMPIBroker _broker;
    mutable std::mutex _mutex;
    std::map<Object*, std::unique_ptr<Object>> _live;
    long _calls = 0;
};

} // namespace fake

#endif
