// Ports of the tree, with their attributes and their counters.
#ifndef TVR_MODEL_PORT_H
#define TVR_MODEL_PORT_H

#include "model/target.h"
#include "runtime/type.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace cimple {

class Adapter;

class PortAttributes {
public:
    virtual ~PortAttributes() = default;
};

class PortStatistics {
public:
    virtual ~PortStatistics() = default;
};

class Port {
public:
    explicit Port(Adapter* owner) noexcept : adapter(owner) {}
    virtual ~Port();
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    virtual PortAttributes* getAttributes() const = 0;
    // Fetches fresh counters, keeps them in place of the old ones and answers them. Throws
    // std::runtime_error when there are none to be had; the old ones then stay.
    virtual PortStatistics* getStatistics() = 0;
    virtual Adapter* getAdapter() const = 0;
    // Discovers the targets anew, each row of the owner's mapping. The old ones end first. Throws
    // std::runtime_error when the adapter can't be opened; a row whose target can't be had is left
    // out.
    virtual void rescanTargets(const Adapter& owner) = 0;
    virtual const std::vector<std::unique_ptr<Target>>& getTargets() const = 0;
    // Throws std::out_of_range.
    virtual Target* getTarget(std::size_t index) const = 0;
    virtual std::size_t getTargetCount() const = 0;

    // WWPN in 16 digits, the name by which the RM library knows the port.
    const std::string& getPortName() const noexcept { return portName; }
    // Index within the adapter. Indexes have gaps where a port could not be read.
    uint32 getPortIndex() const noexcept { return portIndex; }
    // The counters of the last fetch; null before the first.
    PortStatistics* heldStatistics() const noexcept { return statistics.get(); }

protected:
    void freeTargets() noexcept;

    std::string portName;
    uint32 portIndex = 0;
    std::unique_ptr<PortAttributes> attributes;
    std::unique_ptr<PortStatistics> statistics;
    std::vector<std::unique_ptr<Target>> targets;
    Adapter* adapter;
};

// What the HBA API tells of a port, and its physical state as the RM library tells it. Filled by
// its constructor, so that an object is complete.
class FCPortAttributes final : public PortAttributes {
public:
    // Throws std::runtime_error when the libraries don't answer.
    FCPortAttributes(const Adapter& adapter, uint32 portIndex);

    std::string NodeWWN; // names in 16 digits
    std::string PortWWN;
    uint32 PortFcId = 0;
    uint32 PortType = 1;
    // The physical state: a state of the HBA API, or 20 to 22; 1 is unknown. The RM library tells
    // it; where it doesn't, this is the HBA API's state of the port.
    uint32 PortState = 1;
    uint32 PortSupportedClassofService = 0;
    std::array<uint32, 32> PortSupportedFc4Types{};
    std::array<uint32, 32> PortActiveFc4Types{};
    std::string PortSymbolicName;
    std::string OSDeviceName;
    uint32 PortSupportedSpeed = 0;
    uint32 PortSpeed = 0;
    uint32 PortMaxFrameSize = 0;
    std::string FabricName;
    uint32 NumberofDiscoveredPorts = 0;

private:
    void readHBAAttributes(const Adapter& adapter, uint32 portIndex);
    void readRMAttributes();
};

// The counters of a port. One that the adapter does not supply reads `notReported`.
class FCPortStatistics final : public PortStatistics {
public:
    static constexpr uint64 notReported = 0xFFFFFFFF;

    // Throws std::runtime_error when the library doesn't answer.
    explicit FCPortStatistics(const std::string& portName);

    uint64 secondsSinceReset = notReported;
    uint64 txFrames = notReported;
    uint64 txWords = notReported; // of 4 bytes
    uint64 rxFrames = notReported;
    uint64 rxWords = notReported;
    uint64 lipCount = notReported;
    uint64 nosCount = notReported;
    uint64 errorFrames = notReported;
    uint64 dumpedFrames = notReported;
    uint64 linkFailures = notReported;
    uint64 lossOfSync = notReported;
    uint64 lossOfSignal = notReported;
    uint64 primitiveSeqErrors = notReported;
    uint64 invalidTxWords = notReported;
    uint64 invalidCRC = notReported;
    uint64 txSequences = notReported;
    uint64 rxSequences = notReported;
    uint64 exchangesOriginated = notReported;
    uint64 exchangesResponded = notReported;
    uint64 activeXRIs = notReported;
    uint64 activeRPIs = notReported;
    uint64 elasticBufferOverruns = notReported;
    uint64 linkTransitions = notReported;
    uint64 primitiveSeqTimeouts = notReported;
    uint64 arbitrationTimeouts = notReported;
};

class FCPort final : public Port {
public:
    // Reads the port; throws std::runtime_error when that can't be done.
    FCPort(Adapter* adapter, uint32 portIndex);
    ~FCPort() override;

    PortAttributes* getAttributes() const override { return attributes.get(); }
    PortStatistics* getStatistics() override;
    Adapter* getAdapter() const override { return adapter; }
    void rescanTargets(const Adapter& owner) override;
    const std::vector<std::unique_ptr<Target>>& getTargets() const override { return targets; }
    Target* getTarget(std::size_t index) const override { return targets.at(index).get(); }
    std::size_t getTargetCount() const override { return targets.size(); }

    // Node WWN in 16 digits.
    const std::string& getNodeName() const noexcept { return nodeName; }
    // The attributes by their own type.
    const FCPortAttributes* getFCAttributes() const noexcept {
        return static_cast<const FCPortAttributes*>(attributes.get());
    }

private:
    std::string nodeName;
};

} // namespace cimple

#endif
