#include "agent/port_lookup.h"

namespace cimple {

namespace {

bool has_port(const Class_Map<TVRHBA_FCPort>& ports, const String& device_id) {
    for (const TVRHBA_FCPort* port : ports) {
        if (port->DeviceID.value.equali(device_id.c_str())) {
            return true;
        }
    }
    return false;
}

} // namespace

bool IsValidFCPort(const Instance_Maps& maps, const String& device_id) {
    TVR_LOG("Checking the FCPort");
    if (has_port(maps.m_TVRHBA_FCPort_map, device_id)) {
        TVR_LOG("Valid FCPort WWPN Passed");
        return true;
    }
    TVR_LOG("Could not find the passed FCPort in the map");
    return false;
}

bool IsValidLogicalPort(const Instance_Maps& maps, const String& device_id) {
    TVR_LOG("Checking the FCPort");
    if (has_port(maps.m_TVRHBA_FCPort_map, device_id)) {
        TVR_LOG("Valid WWPN Passed");
        return true;
    }
    TVR_LOG("Could not find the passed LogicalPort in the provider resource map");
    return false;
}

} // namespace cimple
