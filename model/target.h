// Targets of the tree.
#ifndef TVR_MODEL_TARGET_H
#define TVR_MODEL_TARGET_H

#include "access/rm/hba_api.h"
#include "common/tvr_common.h"
#include "runtime/type.h"

#include <string>

namespace cimple {

class Adapter;

// One row of a port's target mapping: one logical unit of one remote port, and what it answered to
// SCSI commands.
class Target {
public:
    // Interrogates the unit of the row. Throws std::runtime_error only when the adapter can't be
    // opened; where a command fails its texts are "Unknown" and its numbers 0.
    Target(const Adapter& adapter, const HBA_FCPSCSIENTRY& row);
    virtual ~Target() = default;
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    uint32 FcId = 0;
    std::string NodeWWN; // names in 16 digits
    std::string PortWWN;
    uint64 FcpLun = 0; // its 8 bytes as the library stores them

    // The operating system's name and address of the unit.
    std::string OSDeviceName;
    uint32 ScsiBusNumber = 0;
    uint32 ScsiTargetNumber = 0;
    uint32 ScsiOSLun = 0;

    uint64 blockSize = 0; // bytes, 0 when unknown
    uint64 maxLBA = 0;    // of the last block, 0 when unknown
    uint32 peripheralType = 0;
    std::string vendor;
    std::string product;
    std::string revision;
    std::string serialNumber;
    DeviceIdentifier deviceIdentifier;

private:
    void ask(const Adapter& adapter, const HBA_FCPID& unit);
};

} // namespace cimple

#endif
