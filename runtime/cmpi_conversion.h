// Conversion between the CMPI data of an object manager and the runtime's instances.
#ifndef TVR_RUNTIME_CMPI_CONVERSION_H
#define TVR_RUNTIME_CMPI_CONVERSION_H

#include "runtime/cmpi_made.h"
#include "runtime/value.h"

#include <cmpidt.h>
#include <cmpift.h>

namespace cimple {

// Whole objects. Each returns CMPI_RC_OK and a new object, or an error with the out argument as it
// was. A single value that can't be converted is logged and left out, NULL in an instance and
// absent in a CMPI object; it never fails the conversion. Nothing that the object manager hands
// over is trusted: null objects, null texts, failing calls and wrong types count as such a value.
//
// New instances belong to the caller by one count. New CMPI objects, and what was made on the way
// to them, belong to `made`; without one they are left to the scope of the call in progress.
//
// What comes in carries the namespace of the path, down to nested instances, of which those that
// came with a namespace of their own keep it. A nested instance goes out in its own namespace, or
// without one in `name_space`.

// An instance of `meta_class` with the keys that the path has; all else is NULL.
CMPIrc make_cimple_reference(const CMPIBroker* broker, const Meta_Class* meta_class,
                             const CMPIObjectPath* path, Instance*& instance);

// An instance of `meta_class` with what the CMPI instance has; all else is NULL.
CMPIrc make_cimple_instance(const CMPIBroker* broker, const Meta_Class* meta_class,
                            const CMPIObjectPath* path, const CMPIInstance* cmpi_instance,
                            Instance*& instance);

// A method call with those arguments that are inputs; all else is NULL.
CMPIrc make_cimple_method(const CMPIBroker* broker, const Meta_Class* meta_class,
                          const Meta_Method* meta_method, const CMPIObjectPath* path,
                          const CMPIArgs* args, Instance*& instance);

CMPIrc make_CMPI_object_path(const CMPIBroker* broker, const Instance* instance,
                             const char* name_space, CMPIObjectPath*& path,
                             CMPI_Made* made = nullptr);

// The features of `instance` that aren't NULL, through the property filter if `properties` isn't
// null. A null `path` is built. Also returns what CMSetPropertyFilter answers.
CMPIrc make_CMPI_instance(const CMPIBroker* broker, const Instance* instance,
                          const char* name_space, const CMPIObjectPath* path,
                          const char** properties, CMPIInstance*& cmpi_instance,
                          CMPI_Made* made = nullptr);

// Adds the outputs of a method call to `args`; the return value goes apart, type 0 if it is NULL.
CMPIrc make_CMPI_method(const CMPIBroker* broker, const char* name_space,
                        const Instance* method_instance, CMPIArgs* args, CMPIValue& return_value,
                        CMPIType& return_type);

// Namespace of a path, as long as the path's scope lasts; empty if it is unset. So for the class.
const char* name_space_of(const CMPIObjectPath* path);
const char* class_name_of(const CMPIObjectPath* path);

// Single values.

// A value of any kind where it lies: `payload` points to the field's scalar, `String`, `Datetime`,
// array or `Instance*`. Never NULL. Valid as long as the field stays as it is.
struct Value_View {
    sint32 kind;
    const void* payload;
};

// Nested instances and references deeper than this are refused, so that an object that refers to
// itself ends.
constexpr int max_nesting = 32;

// 0, or -1 with a line in the runtime's log. The classes of nested objects come from `repository`.
int cmpi_to_cimple_value(const Meta_Repository* repository, const CMPIBroker* broker,
                         const char* name_space, const CMPIData& data, Value& value, int depth = 0);

// 0, or -1 with a line in the runtime's log. `flags` are those of the feature: an instance becomes
// a CMPI_instance for an embedded one, else a CMPI_ref. What `data` refers to belongs to `made`, or
// to the scope.
int _to_cmpi_data(const CMPIBroker* broker, const char* name_space, const Value_View& value,
                  uint32 flags, CMPIData& data, CMPI_Made* made = nullptr);

// False if the state of a datum says that its value is null, missing or bad, and so not to be read.
constexpr bool has_value(const CMPIData& data) noexcept {
    return (data.state & (CMPI_nullValue | CMPI_notFound | CMPI_badValue)) == 0;
}

} // namespace cimple

#endif
