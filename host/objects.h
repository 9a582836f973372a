// The encapsulated data of CMPI: contents, making, and the way between CMPI's values and plain
// ones.
//
// What a module gives to a setter may be kept as the pointer that it is, and is then looked at when
// the object that it went into is read: handed over, cloned, taken as a template or asked for it.
// Arrays always keep their elements so; paths, instances and arguments do as the options say.
#ifndef TVR_HOST_OBJECTS_H
#define TVR_HOST_OBJECTS_H

#include "host/tracker.h"

namespace tvrhost {

// A value whose object the module still owns.
struct Kept {
    CMPIType type = CMPI_null; // null for a value that isn't kept
    CMPIValue value{};
};
struct Kept_Value : Kept {
    std::size_t index; // of the place in the named values
};
using Kept_Values = std::vector<Kept_Value>;

struct Array_Content {
    Cim_Type type;
    std::vector<Cim_Value> elements;
    std::vector<Kept> kept{}; // by index, empty if nothing is kept
};

// What is kept stands as NULL in the plain content, at its place, until the object is read.
struct Path_Content {
    Cim_Path path;
    Kept_Values kept{};
};

struct Args_Content {
    Named_Values values;
    Kept_Values kept{};
};

struct Instance_Content {
    Cim_Instance instance;
    const tvrmof::Class* model; // null if the schema doesn't have the class
    // A property filter: only these, and the keys, are taken.
    std::optional<std::vector<std::string>> allowed;
    std::optional<std::vector<std::string>> keys; // instead of the class's
    Kept_Values kept{};

    bool passes(std::string_view property) const noexcept;
    bool is_key(std::string_view property) const noexcept;
};

struct Enumeration_Content {
    Cim_Type type; // instance or reference
    std::vector<Cim_Value> items;
    std::size_t next = 0;
};

struct Select_Content {
    std::string query;
    std::string language;
};

// `answer` lives as long as the call.
struct Result_Content {
    Answer* answer;
};

inline std::string_view name_of(const Path_Content& content) noexcept {
    return content.path.class_name;
}
inline std::string_view name_of(const Instance_Content& content) noexcept {
    return content.instance.path.class_name;
}

using String_Object = Object<CMPIString, std::string>;
using Array_Object = Object<CMPIArray, Array_Content>;
using Datetime_Object = Object<CMPIDateTime, Cim_Datetime>;
using Path_Object = Object<CMPIObjectPath, Path_Content>;
using Instance_Object = Object<CMPIInstance, Instance_Content>;
using Args_Object = Object<CMPIArgs, Args_Content>;
using Enumeration_Object = Object<CMPIEnumeration, Enumeration_Content>;
using Context_Object = Object<CMPIContext, Named_Values>;
using Result_Object = Object<CMPIResult, Result_Content>;
using Select_Object = Object<CMPISelectExp, Select_Content>;

// One set of tables claims and ends at version 100, one at 210.
struct Tables {
    CMPIStringFT string;
    CMPIArrayFT array;
    CMPIDateTimeFT datetime;
    CMPIObjectPathFT path;
    CMPIInstanceFT instance;
    CMPIArgsFT args;
    CMPIEnumerationFT enumeration;
    CMPIContextFT context;
    CMPIResultFT result;
    CMPISelectExpFT select;
    CMPIBrokerEncFT makers;
    CMPIBrokerFT broker;
};
const Tables& tables_of(int version) noexcept;

// A tracker that knows tables and schema.
class Books : public Tracker {
public:
    Books(const Tables& tables, const tvrmof::Schema* class_model, const Options& options)
        : Tracker(options.tombstones), ft(tables), schema(class_model), keeps(options.keeps) {}

    String_Object* make(std::string text, bool clone = false);
    Array_Object* make(Array_Content content, bool clone = false);
    Datetime_Object* make(Cim_Datetime value, bool clone = false);
    Path_Object* make(Path_Content content, bool clone = false);
    Path_Object* make(Cim_Path path) { return make(Path_Content{std::move(path)}); }
    Instance_Object* make(Instance_Content content, bool clone = false);
    Instance_Object* make(Cim_Instance instance);
    Args_Object* make_args(Named_Values values, bool clone = false);
    Enumeration_Object* make(Enumeration_Content content, bool clone = false);
    Context_Object* make_context(Named_Values entries, bool clone = false);
    Result_Object* make(Result_Content content, bool clone = false);
    Select_Object* make(Select_Content content, bool clone = false);

    // A value for the module; objects in it are made in the thread's scope.
    CMPIData data(const Cim_Value& value, CMPIValueState extra_state = CMPI_goodValue);
    // The plain form of what the module hands over, looked at now; a code other than 0 leaves
    // `plain_value`. `operation` tells in faults what is going on.
    CMPIrc plain(const CMPIValue* value, CMPIType type, Cim_Value& plain_value,
                 const char* operation);
    // The same for what a setter is given: an object is only looked at for its life and kind, and
    // `kept` says where it is; `plain_value` is then NULL of its type.
    CMPIrc keep(const CMPIValue* value, CMPIType type, Cim_Value& plain_value, Kept& kept,
                const char* operation);
    // As `keep` or as `plain`, as the options say; for paths, instances and arguments.
    CMPIrc take(const CMPIValue* value, CMPIType type, Cim_Value& plain_value, Kept& kept,
                const char* operation) {
        return keeps == Keeps::everything ? keep(value, type, plain_value, kept, operation)
                                          : plain(value, type, plain_value, operation);
    }

    // The contents with all that they keep looked at now, in place or copied. What has ended by
    // then is a fault, and NULL.
    const Cim_Path& read(Path_Object& object, const char* operation);
    const Instance_Content& read(Instance_Object& object, const char* operation);
    const Named_Values& read(Args_Object& object, const char* operation);
    Cim_Path copy(const Path_Object& object, const char* operation);
    Cim_Instance copy(const Instance_Object& object, const char* operation);
    const std::vector<Cim_Value>& read(Array_Object& object, const char* operation);
    template <class Cmpi, class Content>
    const Content& read(Object<Cmpi, Content>& object, const char*) {
        return *object.content;
    }

    const Tables& ft;
    const tvrmof::Schema* const schema;
    const Keeps keeps;

private:
    Cim_Value look_at(const Kept& kept, const char* operation);
    void look_at(Named_Values& values, const Kept_Values& kept, const char* operation);
};

// Puts a value into a list of named ones, and what is kept of it beside.
void set(Named_Values& values, Kept_Values& all_kept, std::string_view name, Cim_Value value,
         const Kept& kept);

inline Books& books_of(const Tracked& object) noexcept {
    return static_cast<Books&>(object.tracker);
}

// The table of ours that objects of that kind have.
template <class O> decltype(O::ft) table_of(const Tables& tables) noexcept;

// The object behind a pair that the module hands in as an argument; null, with a fault, if it isn't
// alive or isn't ours, and null without a fault for null. What it keeps is yet to be read.
template <class O> O* argument(Books& books, const typename O::Pair* pair, const char* operation) {
    if (pair == nullptr) {
        return nullptr;
    }
    if (pair->ft != table_of<O>(books.ft)) {
        books.fault(Fault_Kind::foreign_object,
                    std::string(operation) + " with an object of another kind or origin");
        return nullptr;
    }
    O* const object = static_cast<O*>(const_cast<typename O::Pair*>(pair));
    return books.is_live(*object, operation) ? object : nullptr;
}

// Fills the parts of the tables that each source file defines.
void fill_makers(Tables& tables, int version);
void fill_broker(Tables& tables, int version);

} // namespace tvrhost

#endif
