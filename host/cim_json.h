// CIM data as JSON, in both directions. A number is a number, a datetime and a path are their text,
// an instance is an object of "class", "path" and "properties", NULL is null.
#ifndef TVR_HOST_CIM_JSON_H
#define TVR_HOST_CIM_JSON_H

#include "host/cim_value.h"
#include "schema/mof_reader.h"
#include "json/json.h"

namespace tvrhost {

using tvrjson::Json;

Json to_json(const Cim_Value& value);
Json to_json(const Cim_Path& path); // "class", "namespace", "keys" and the whole "path" as text
Json to_json(const Cim_Instance& instance);

// A value of a declared type. Throws Value_Error.
Cim_Value value_from_json(const Json& json, const tvrmof::Typed& declared,
                          const tvrmof::Schema* schema, const std::string& name_space);

// An object of "class", perhaps "namespace", and "properties". Without a schema, types are those
// that JSON shows. Keys of the path are taken from the properties. Throws Value_Error.
Cim_Instance instance_from_json(const Json& json, const tvrmof::Schema* schema,
                                const std::string& name_space);

} // namespace tvrhost

#endif
