// The way of an answer's instances to the client, one at a time.
#ifndef TVR_RUNTIME_CMPI_DELIVERY_H
#define TVR_RUNTIME_CMPI_DELIVERY_H

#include "runtime/cmpi_conversion.h"

namespace cimple {

// Where the instances of an answer go. A conversion that fails ends the delivery; the client isn't
// told of it, and keeps what it has. Lives within one entry.
class Delivery {
public:
    Delivery(const CMPIBroker* broker, const CMPIResult* result, const char* name_space,
             const char** properties = nullptr) noexcept
        : _broker(broker), _result(result), _name_space(name_space), _properties(properties),
          _strings(broker) {}

    // The namespace of the request, and the wanted properties: null for all.
    const char* name_space() const noexcept { return _name_space; }
    const char** properties() const noexcept { return _properties; }
    // The namespace of the instance itself, or of the request if it has none.
    const char* own_name_space(const Instance& instance) const noexcept {
        return instance.__name_space.empty() ? _name_space : instance.__name_space.c_str();
    }

    // True if there is an instance and the delivery hasn't ended.
    bool wants(const Instance* instance) const noexcept {
        return instance != nullptr && _rc == CMPI_RC_OK;
    }

    // The path of an instance, the caller's to release; null ends the delivery.
    CMPIObjectPath* path_of(const Instance& instance, const char* name_space);

    // Each sends one object: false if that failed.
    bool send_path(const Instance& instance, const char* name_space);
    // With `filtered` the instance's null flags are set by the property list, so that what it holds
    // as NULL goes out with the zero value. An instance without a path is left out; that alone
    // doesn't end the delivery.
    bool send_instance(Instance& instance, bool filtered = false);
    // The path comes of the conversion, which makes it in `name_space`.
    bool send_pathless(const Instance& instance, const char* name_space);
    // Takes the object over; null ends the delivery.
    bool send(CMPIInstance* cmpi_instance);

private:
    const CMPIBroker* _broker;
    const CMPIResult* _result;
    const char* _name_space;
    const char** _properties;
    CMPIrc _rc = CMPI_RC_OK;
    CMPI_Strings _strings;
};

} // namespace cimple

#endif
