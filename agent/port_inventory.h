// What a port's hardware tells of its making: vital product data, transceiver, images in the flash.
// All are called for each port during a rebuild of the adapter maps, under m_ProviderDataMutex.
// `deviceId` is the port's WWPN in 16 digits. A failure is logged and leaves what was made before;
// none ends the rebuild, exhausted memory neither.
#ifndef TVR_AGENT_PORT_INVENTORY_H
#define TVR_AGENT_PORT_INVENTORY_H

#include "agent/instance_maps.h"
#include "model/adapter.h"

#include <string>

namespace cimple {

// Appends what the vital product data hold to the port's identifications. 0; 1 for a name that
// can't be converted or without memory; or the library's status.
uint32 FillPortVPD(TVRHBA_FCPort& port, const std::string& deviceId);

// Makes the port's instance of vital product data. 0, also where memory doesn't suffice to begin
// one; 1 for a name that can't be converted, one that has an instance already, or if memory ends
// on the way; or the library's status.
uint32 CreateVPD(Instance_Maps& maps, const std::string& deviceId);

// Makes the instance of the port's transceiver, which the agent's map owns. Null if there is none.
TVRHBA_Transceiver* CreateTransceiver(Instance_Maps& maps, const std::string& deviceId);

// Makes the instances of the images in the adapter's flash, each joined with the port's controller.
// 0, or 1 if the library fails, two images have the same name or memory ends.
uint32 CreateFlashContents(Instance_Maps& maps, const std::string& deviceId,
                           const FCAdapterAttributes& attributes,
                           const TVRHBA_PortController& controller);

} // namespace cimple

#endif
