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
          _made(broker) {}

    // The namespace of the request.
    const char* name_space() const noexcept { return _name_space; }
    // The namespace of the instance itself, or of the request if it has none.
    const char* own_name_space(const Instance& instance) const noexcept {
        return instance.__name_space.empty() ? _name_space : instance.__name_space.c_str();
    }

    // True if there is an instance and the delivery hasn't ended.
    bool wants(const Instance* instance) const noexcept {
        return instance != nullptr && _rc == CMPI_RC_OK;
    }

    // Each sends one object: false if that failed.
    bool send_path(const Instance& instance, const char* name_space);
    // With `filtered` the instance's null flags are set by the property list, so that what it holds
    // as NULL goes out with the zero value. An instance without a path is left out; that alone
    // doesn't end the delivery.
    bool send_instance(Instance& instance, bool filtered = false);
    // The path comes of the conversion, which makes it in `name_space`.
    bool send_pathless(const Instance& instance, const char* name_space);
    // The instance in its current state, as the object manager gets it.
    bool send_current(const Instance& instance, const char* name_space, const CMPIContext* context);

private:
    bool send(const CMPIInstance* cmpi_instance);

    const CMPIBroker* _broker;
    const CMPIResult* _result;
    const char* _name_space;
    const char** _properties;
    CMPIrc _rc = CMPI_RC_OK;
    CMPI_Made _made;
};

} // namespace cimple

#endif
