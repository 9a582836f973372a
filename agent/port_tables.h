// What the adapters' numbers are called in CIM: port types, port states, classes of service, FC-4
// types and speeds.
#ifndef TVR_AGENT_PORT_TABLES_H
#define TVR_AGENT_PORT_TABLES_H

#include "runtime/array.h"

#include <array>

namespace cimple {

struct Port_Type {
    uint16 type;
    const char* text; // null where the type says it all
};
// Of the HBA API's port type, or of the vendor's 20 and 21.
Port_Type port_type(uint32 type) noexcept;

struct Port_Status {
    uint16 operational_status;
    const char* description;
};
// Of an FC port, from its state: those of the HBA API, 1 to 8, and the vendor's 20 to 22.
Port_Status port_status(uint32 state) noexcept;
// Of a controller of the port, from the port's state.
Port_Status controller_status(uint32 state) noexcept;

// From the mask of classes of service; one element 0 if no known class is set.
Array<uint16> classes_of_service(uint32 mask);

// From 32 entries of one byte each. One element 0 if all are 0; 1 ("other") comes last if a bit is
// set that has no value of its own.
Array<uint16> fc4_types(const std::array<uint32, 32>& entries);

// Bits per second; 0 for what isn't exactly one known speed.
uint64 port_speed(uint32 speed) noexcept;
// Of the highest known speed in a mask of supported ones; 0 if there is none.
uint64 highest_speed(uint32 mask) noexcept;

} // namespace cimple

#endif
