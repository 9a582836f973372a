#include "access/attribute_buffer.h"
#include "access/method_wrapper.h"
#include "common/tvr_common.h"
#include "model/adapter.h"
#include "model/hba_access.h"
#include "model/port.h"

#include <algorithm>

namespace cimple {

FCPortAttributes::FCPortAttributes(const Adapter& adapter, uint32 portIndex) {
    readHBAAttributes(adapter, portIndex);
    readRMAttributes();
}

void FCPortAttributes::readHBAAttributes(const Adapter& adapter, uint32 portIndex) {
    HBA_PORTATTRIBUTES record;
    const HBA_STATUS status = OpenAdapter(adapter.getAdapterName()).readPort(portIndex, record);
    if (status != HBA_STATUS_OK) {
        TVR_LOG("(portIndex=%d) failed with hbaStatus %d", portIndex, status);
        throw std::runtime_error("HBA_GetAdapterPortAttributes failed");
    }
    NodeWWN = wwnToText(record.NodeWWN.wwn);
    PortWWN = wwnToText(record.PortWWN.wwn);
    PortFcId = record.PortFcId;
    PortType = record.PortType;
    PortState = record.PortState;
    PortSupportedClassofService = record.PortSupportedClassofService;
    std::ranges::copy(record.PortSupportedFc4Types.bits, PortSupportedFc4Types.begin());
    std::ranges::copy(record.PortActiveFc4Types.bits, PortActiveFc4Types.begin());
    PortSymbolicName = toString(record.PortSymbolicName);
    OSDeviceName = toString(record.OSDeviceName);
    PortSupportedSpeed = record.PortSupportedSpeed;
    PortSpeed = record.PortSpeed;
    PortMaxFrameSize = record.PortMaxFrameSize;
    FabricName = wwnToText(record.FabricName.wwn);
    NumberofDiscoveredPorts = record.NumberofDiscoveredPorts;
    TVR_LOG("Port 0's WWPN: %s", PortWWN.c_str());
}

// The physical state takes the place of the HBA API's. Where the RM library tells none, the HBA
// API's stays.
void FCPortAttributes::readRMAttributes() {
    HBA_WWN wwn;
    if (TVR_MethodWrapper::string2HBAName(wwn, PortWWN) == 0) {
        TVR_LOG("TVR_MethodWrapper::string2HBAName failed");
        throw std::runtime_error("not a port name");
    }
    AttributeBuffer buffer(RM_PORT_ATTRIBUTES_SIZE);
    const RM_STATUS status = rm::LRM_GetPortAttributes(wwn, buffer.data(), &buffer.size);
    if (status != RM_STATUS_OK) {
        TVR_LOG("RM_GetPortAttributes call failed (%d)\n", status);
        throw std::runtime_error("LRM_GetPortAttributes failed");
    }
    PortState = findHBAAttributeInt(buffer, RM_PA_PHYSICAL_STATE, "_PortState").value_or(PortState);
    TVR_LOG("Physical port state for FC Port: %d", PortState);
}

} // namespace cimple
