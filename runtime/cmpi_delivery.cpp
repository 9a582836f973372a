#include "runtime/cmpi_delivery.h"

#include <cmpimacs.h>

namespace cimple {

bool Delivery::send_path(const Instance& instance, const char* name_space) {
    const CMPI_Delivery_Scope scope(_made);
    CMPIObjectPath* path = nullptr;
    _rc = make_CMPI_object_path(_broker, &instance, name_space, path, &_made);
    if (path == nullptr) {
        return false;
    }
    CMReturnObjectPath(_result, path);
    return true;
}

bool Delivery::send_instance(Instance& instance, bool filtered) {
    const CMPI_Delivery_Scope scope(_made);
    CMPIObjectPath* path = nullptr;
    if (make_CMPI_object_path(_broker, &instance, _name_space, path, &_made) != CMPI_RC_OK) {
        return false;
    }
    if (filtered) {
        filter_properties(&instance, _properties, false);
    }
    CMPIInstance* cmpi_instance = nullptr;
    _rc = make_CMPI_instance(_broker, &instance, _name_space, path, _properties, cmpi_instance,
                             &_made);
    return _rc == CMPI_RC_OK && send(cmpi_instance);
}

bool Delivery::send_pathless(const Instance& instance, const char* name_space) {
    const CMPI_Delivery_Scope scope(_made);
    CMPIInstance* cmpi_instance = nullptr;
    make_CMPI_instance(_broker, &instance, name_space, nullptr, _properties, cmpi_instance, &_made);
    return send(cmpi_instance);
}

bool Delivery::send_current(const Instance& instance, const char* name_space,
                            const CMPIContext* context) {
    const CMPI_Delivery_Scope scope(_made);
    CMPIObjectPath* path = nullptr;
    _rc = make_CMPI_object_path(_broker, &instance, name_space, path, &_made);
    if (path == nullptr) {
        return false;
    }
    CMPIInstance* const current = CBGetInstance(_broker, context, path, _properties, nullptr);
    if (current != nullptr) {
        _made.keep(current);
    }
    return send(current);
}

bool Delivery::send(const CMPIInstance* cmpi_instance) {
    if (cmpi_instance == nullptr) {
        _rc = CMPI_RC_ERR_FAILED;
        return false;
    }
    CMReturnInstance(_result, cmpi_instance);
    return true;
}

} // namespace cimple
