#include "runtime/cmpi_delivery.h"

#include "runtime/cmpi_owned.h"

namespace cimple {

CMPIObjectPath* Delivery::path_of(const Instance& instance, const char* name_space) {
    CMPIObjectPath* path = nullptr;
    _rc = make_CMPI_object_path(_broker, &instance, name_space, path, &_strings);
    return path;
}

bool Delivery::send_path(const Instance& instance, const char* name_space) {
    const CMPI_Owned<CMPIObjectPath> path(path_of(instance, name_space));
    if (!path) {
        return false;
    }
    CMReturnObjectPath(_result, path.get());
    return true;
}

bool Delivery::send_instance(Instance& instance, bool filtered) {
    CMPIObjectPath* made = nullptr;
    if (make_CMPI_object_path(_broker, &instance, _name_space, made, &_strings) != CMPI_RC_OK) {
        return false;
    }
    // Released here: else a long enumeration would heap the paths up until its end.
    const CMPI_Owned<CMPIObjectPath> path(made);
    if (filtered) {
        filter_properties(&instance, _properties, false);
    }
    CMPIInstance* cmpi_instance = nullptr;
    _rc = make_CMPI_instance(_broker, &instance, _name_space, path.get(), _properties,
                             cmpi_instance, &_strings);
    return _rc == CMPI_RC_OK && send(cmpi_instance);
}

bool Delivery::send_pathless(const Instance& instance, const char* name_space) {
    CMPIInstance* cmpi_instance = nullptr;
    make_CMPI_instance(_broker, &instance, name_space, nullptr, _properties, cmpi_instance,
                       &_strings);
    return send(cmpi_instance);
}

bool Delivery::send(CMPIInstance* cmpi_instance) {
    if (cmpi_instance == nullptr) {
        _rc = CMPI_RC_ERR_FAILED;
        return false;
    }
    const CMPI_Owned<CMPIInstance> owned(cmpi_instance);
    CMReturnInstance(_result, cmpi_instance);
    return true;
}

} // namespace cimple
