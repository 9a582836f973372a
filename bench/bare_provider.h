// A provider written by hand against CMPI alone, with no runtime between: it hands out instances
// that it is given, as directly as CMPI allows. The cost of an answer from it is the least that a
// provider can cost in the same object manager.
//
//     Bare_Provider provider("TVRHBA_FCPort", ports);
//     options.factories = provider.factories();
//
// One at a time may exist, and the object manager shuts down before it ends. Its functions may run
// on several threads.
#ifndef TVR_BENCH_BARE_PROVIDER_H
#define TVR_BENCH_BARE_PROVIDER_H

#include "host/object_manager.h"

#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

#include <string>
#include <vector>

namespace tvrbench {

class Bare_Provider {
public:
    Bare_Provider(std::string class_name, const std::vector<tvrhost::Cim_Instance>& instances)
        : _class_name(std::move(class_name)) {
        for (const tvrhost::Cim_Instance& instance : instances) {
            Record record;
            for (const tvrhost::Named_Value& key : instance.path.keys)
                record.keys.push_back(field(key));
            for (const tvrhost::Named_Value& property : instance.properties)
                record.properties.push_back(field(property));
            _records.push_back(std::move(record));
        }
        current() = this;
    }
    ~Bare_Provider() { current() = nullptr; }
    Bare_Provider(const Bare_Provider&) = delete;
    Bare_Provider& operator=(const Bare_Provider&) = delete;

    tvrhost::Factory_Lookup factories() const {
        return [wanted = _class_name + "_Create_InstanceMI"](const std::string& name) {
            return name == wanted ? reinterpret_cast<tvrhost::Any_Function>(create) : nullptr;
        };
    }

private:
    // A value ready for CMPI: a number as it is, all else as text, an array as such fields.
    struct Field {
        std::string name;
        CMPIType type; // CMPI_chars for a string; of the elements, for an array
        CMPIValue number;
        std::string text;
        bool is_array;
        std::vector<Field> elements;
    };
    struct Record {
        std::vector<Field> keys;
        std::vector<Field> properties;
    };

    static Field field(const tvrhost::Named_Value& from) {
        Field result = scalar(from.value);
        result.name = from.name;
        return result;
    }

    static Field scalar(const tvrhost::Cim_Value& value) {
        Field result{{}, static_cast<CMPIType>(value.type()), {}, {}, value.is_array(), {}};
        if (value.is_null())
            return result;
        if (value.is_array()) {
            for (const tvrhost::Cim_Value& element : value.elements())
                result.elements.push_back(scalar(element));
            return result;
        }
        switch (value.type()) {
        case tvrhost::Cim_Type::string:
            result.type = CMPI_chars;
            result.text = value.as_string();
            break;
        case tvrhost::Cim_Type::datetime:
            result.text = value.as_datetime().text();
            break;
        case tvrhost::Cim_Type::boolean:
            result.number.boolean = value.as_bool() ? 1 : 0;
            break;
        case tvrhost::Cim_Type::real32:
            result.number.real32 = static_cast<float>(value.as_real());
            break;
        case tvrhost::Cim_Type::real64:
            result.number.real64 = value.as_real();
            break;
        case tvrhost::Cim_Type::sint8:
        case tvrhost::Cim_Type::sint16:
        case tvrhost::Cim_Type::sint32:
        case tvrhost::Cim_Type::sint64:
            result.number.sint64 = value.as_int(); // little-endian: the low bytes are the number
            break;
        default:
            result.number.uint64 = value.as_uint();
        }
        return result;
    }

    // What was made for one delivery: it may only go when what it was put into has been handed over
    // and released.
    class Made {
    public:
        ~Made() {
            for (CMPIArray* array : arrays)
                CMRelease(array);
            for (CMPIDateTime* datetime : datetimes)
                CMRelease(datetime);
        }
        std::vector<CMPIArray*> arrays;
        std::vector<CMPIDateTime*> datetimes;
    };

    static const CMPIValue* value_of(const CMPIBroker* broker, const Field& from,
                                     CMPIValue& storage, Made& made) {
        if (from.is_array) {
            const CMPIType element = from.type == CMPI_chars ? CMPIType{CMPI_string} : from.type;
            storage.array =
                CMNewArray(broker, static_cast<CMPICount>(from.elements.size()), element, nullptr);
            made.arrays.push_back(storage.array);
            for (CMPICount i = 0; i < from.elements.size(); ++i) {
                CMPIValue each;
                CMSetArrayElementAt(storage.array, i,
                                    value_of(broker, from.elements[i], each, made),
                                    from.elements[i].type);
            }
            return &storage;
        }
        if (from.type == CMPI_chars)
            return reinterpret_cast<const CMPIValue*>(from.text.c_str());
        if (from.type == CMPI_dateTime) {
            storage.dateTime = CMNewDateTimeFromChars(broker, from.text.c_str(), nullptr);
            made.datetimes.push_back(storage.dateTime);
            return &storage;
        }
        return &from.number;
    }

    static CMPIType type_of(const Field& from) {
        return from.is_array ? static_cast<CMPIType>(from.type | CMPI_ARRAY) : from.type;
    }

    CMPIObjectPath* path_of(const CMPIObjectPath* request, const Record& record, Made& made) const {
        CMPIString* const name_space = CMGetNameSpace(request, nullptr);
        CMPIObjectPath* const path =
            CMNewObjectPath(_broker, CMGetCharPtr(name_space), _class_name.c_str(), nullptr);
        CMRelease(name_space);
        for (const Field& key : record.keys) {
            CMPIValue storage;
            CMAddKey(path, key.name.c_str(), value_of(_broker, key, storage, made), type_of(key));
        }
        return path;
    }

    CMPIInstance* instance_of(const CMPIObjectPath* path, const char** properties,
                              const Record& record, Made& made) const {
        CMPIInstance* const instance = CMNewInstance(_broker, path, nullptr);
        if (properties != nullptr)
            CMSetPropertyFilter(instance, properties, nullptr);
        for (const Field& property : record.properties) {
            CMPIValue storage;
            CMSetProperty(instance, property.name.c_str(),
                          value_of(_broker, property, storage, made), type_of(property));
        }
        return instance;
    }

    static Bare_Provider& of(CMPIInstanceMI* mi) { return *static_cast<Bare_Provider*>(mi->hdl); }

    static CMPIStatus cleanup(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean) {
        return {CMPI_RC_OK, nullptr};
    }

    static CMPIStatus names(CMPIInstanceMI* mi, const CMPIContext*, const CMPIResult* result,
                            const CMPIObjectPath* path) {
        for (const Record& record : of(mi)._records) {
            Made made;
            CMPIObjectPath* const each = of(mi).path_of(path, record, made);
            CMReturnObjectPath(result, each);
            CMRelease(each);
        }
        return CMReturnDone(result);
    }

    static CMPIStatus instances(CMPIInstanceMI* mi, const CMPIContext*, const CMPIResult* result,
                                const CMPIObjectPath* path, const char** properties) {
        for (const Record& record : of(mi)._records) {
            Made made;
            CMPIObjectPath* const each = of(mi).path_of(path, record, made);
            CMPIInstance* const instance = of(mi).instance_of(each, properties, record, made);
            CMReturnInstance(result, instance);
            CMRelease(instance);
            CMRelease(each);
        }
        return CMReturnDone(result);
    }

    static CMPIStatus get(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*,
                          const CMPIObjectPath*, const char**) {
        return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    }
    static CMPIStatus create_instance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*,
                                      const CMPIObjectPath*, const CMPIInstance*) {
        return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    }
    static CMPIStatus modify(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*,
                             const CMPIObjectPath*, const CMPIInstance*, const char**) {
        return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    }
    static CMPIStatus remove(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*,
                             const CMPIObjectPath*) {
        return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    }
    static CMPIStatus query(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*,
                            const CMPIObjectPath*, const char*, const char*) {
        return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    }

    static CMPIInstanceMI* create(const CMPIBroker* broker, const CMPIContext*, CMPIStatus*) {
        Bare_Provider& self = *current();
        self._broker = broker;
        self._table.ftVersion = 100;
        self._table.miVersion = 100;
        self._table.miName = "bare";
        self._table.cleanup = cleanup;
        self._table.enumerateInstanceNames = names;
        self._table.enumerateInstances = instances;
        self._table.getInstance = get;
        self._table.createInstance = create_instance;
        self._table.modifyInstance = modify;
        self._table.deleteInstance = remove;
        self._table.execQuery = query;
        self._mi.hdl = &self;
        self._mi.ft = &self._table;
        return &self._mi;
    }

    static Bare_Provider*& current() {
        static Bare_Provider* provider = nullptr;
        return provider;
    }

    std::string _class_name;
    std::vector<Record> _records;
    const CMPIBroker* _broker = nullptr;
    CMPIInstanceMIFT _table{};
    CMPIInstanceMI _mi{};
};

} // namespace tvrbench

#endif
