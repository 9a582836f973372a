// Adapters of the tree: one function of a board, as the HBA API counts them.
#ifndef TVR_MODEL_ADAPTER_H
#define TVR_MODEL_ADAPTER_H

#include "runtime/type.h"

#include <memory>
#include <string>
#include <vector>

namespace cimple {

class Port;

class AdapterAttributes {
public:
    virtual ~AdapterAttributes() = default;
};

class AdapterStatistics {
public:
    virtual ~AdapterStatistics() = default;
};

enum AdapterType : sint32 { ADAPTER_NONE = 0, ADAPTER_FC = 1 };

class Adapter {
public:
    // Name " ", number -1, no type.
    Adapter();
    Adapter(const std::string& name, sint32 number, sint32 type);
    virtual ~Adapter();
    Adapter(const Adapter&) = delete;
    Adapter& operator=(const Adapter&) = delete;

    // The name by which the HBA API opens the adapter.
    virtual const std::string& getAdapterName() const = 0;
    // Index in the library's list of adapters.
    virtual const sint32& getAdapterNumber() const = 0;
    // Attribute 556: 1, 2 and 3 are functions of a converged adapter, which the tree never holds.
    virtual const uint32& getFunctionType() const = 0;
    virtual AdapterAttributes* getAttributes() const = 0;
    virtual AdapterStatistics* getStatistics() const = 0;
    virtual std::size_t getPortCount() const = 0;
    virtual const std::vector<std::unique_ptr<Port>>& getPorts() const = 0;
    // Throws std::out_of_range.
    virtual Port* getPort(std::size_t index) const = 0;
    // Discovers the targets of all ports anew.
    virtual void rescanTargets() = 0;

    sint32 getAdapterType() const noexcept { return adapterType; }

protected:
    std::unique_ptr<AdapterAttributes> attributes;
    std::unique_ptr<AdapterStatistics> statistics;
    std::vector<std::unique_ptr<Port>> ports;
    std::string adapterName;
    sint32 adapterNumber;
    uint32 functionType = 0;
    sint32 adapterType;
};

// What the HBA API and the RM library tell of an FC adapter. Filled by its constructor, so that an
// object is complete.
class FCAdapterAttributes final : public AdapterAttributes {
public:
    // Throws std::runtime_error when the adapter can't be opened or its attributes can't be had. A
    // single attribute that is missing keeps its start value.
    explicit FCAdapterAttributes(const Adapter& adapter);

    // Of the HBA API.
    std::string Manufacturer;
    std::string SerialNumber;
    std::string Model;
    std::string ModelDescription;
    std::string NodeSymbolicName;
    std::string HardwareVersion;
    std::string DriverVersion;
    std::string OptionROMVersion;
    std::string FirmwareVersion;
    std::string DriverName;
    std::string NodeWWN; // 16 digits
    uint32 VendorSpecificID = 0;
    uint32 NumberOfPorts = 0;

    // Of the RM library. Temperatures in degrees Celsius.
    uint32 boardTemperature = 0;
    uint32 thresholdWarningTemp = 0;
    uint32 thresholdCriticalTemp = 0;
    uint32 deviceID = 0;
    uint32 modelID = 0;
    uint32 driverType = 0;
    uint32 diagVersion = 0;
    uint32 portNumber = 0;
    uint32 functionType = 0;
    uint32 sliMode = 0;
    std::string ieeeAddress; // six pairs of lower-case digits with colons
    std::string bootBiosVersion;
    std::string kernelVersion;
    std::string initialFirmwareLoad;
    std::string operationalFirmware;
    std::string fcUniversalVersion;
    std::string fcX86BiosVersion;
    std::string fcEfiVersion;
    std::string fcFcodeVersion;
    std::string ulpFirmwareVersion;
    std::string ulpFirmwareName;
    std::string spFirmwareVersion;
    std::string spFirmwareName;
    bool bootCodeEnabled = false;

private:
    std::string readHBAAttributes(const Adapter& adapter);
    void readRMAttributes(const std::string& portName);
};

class FCAdapterStatistics final : public AdapterStatistics {
public:
    explicit FCAdapterStatistics(const Adapter& adapter);
};

class FCAdapter final : public Adapter {
public:
    // A count of ports above is taken for this many.
    static constexpr uint32 maxPorts = 1024;

    FCAdapter() = default;
    // Reads the adapter and its ports. Throws std::runtime_error when the adapter can't be read; a
    // port that can't be read is left out.
    FCAdapter(const std::string& name, sint32 number);
    ~FCAdapter() override;

    const std::string& getAdapterName() const override { return adapterName; }
    const sint32& getAdapterNumber() const override { return adapterNumber; }
    const uint32& getFunctionType() const override { return functionType; }
    AdapterAttributes* getAttributes() const override { return attributes.get(); }
    AdapterStatistics* getStatistics() const override { return statistics.get(); }
    std::size_t getPortCount() const override { return ports.size(); }
    const std::vector<std::unique_ptr<Port>>& getPorts() const override { return ports; }
    Port* getPort(std::size_t index) const override { return ports.at(index).get(); }
    // A port whose targets can't be had has none then.
    void rescanTargets() override;

    // The attributes by their own type; null for a default-constructed adapter.
    const FCAdapterAttributes* getFCAttributes() const noexcept {
        return static_cast<const FCAdapterAttributes*>(attributes.get());
    }
};

} // namespace cimple

#endif
