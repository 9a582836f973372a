// A stand-in for the HBA API library and the RM library in one, whose every answer a test sets. It
// knows no hardware: it hands out what stands in the records below.
#pragma once

#include "access/rm/rm_api.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fake {

// One value of an attribute buffer. The length that the library tells can differ from the bytes
// that are there.
struct Attribute {
    std::string bytes;
    std::optional<uint16_t> toldLength = std::nullopt;
    RM_STATUS status = RM_STATUS_OK;
};
using Attributes = std::map<uint16_t, Attribute>;

// An integer, or a counter, as it stands in an attribute buffer.
template <class Number> Attribute valueOf(Number number) {
    return {std::string(reinterpret_cast<const char*>(&number), sizeof number)};
}

// Without an end if the text fills the field.
template <std::size_t size> void put(char (&field)[size], const std::string& text) {
    text.copy(field, size);
}

struct Port {
    HBA_PORTATTRIBUTES record{};
    Attributes attributes;
    Attributes statistics;
    std::vector<RM_DRIVERPARAM> params;
    std::vector<std::pair<std::string, std::string>> vpd; // keywords and values
    std::optional<RM_SFFDATA> transceiver;
    std::vector<RM_LOADENTRY> images;
    std::vector<RM_VPORTENTRY> virtualPorts;
};

struct Adapter {
    std::string name;
    HBA_ADAPTERATTRIBUTES record{};
    std::vector<Port> ports;
    Attributes attributes; // of the adapter, under the name of port 0
    uint32_t driverType = 0;
    std::vector<HBA_FCPSCSIENTRY> targets;
};

// A command on its way to a logical unit: the operation code, and of an Inquiry its page.
struct ScsiCommand {
    uint8_t code;
    uint32_t page;
    uint64_t lun;
};

// Who wants to hear of a port's events; without a callback once that has ended.
struct Registration {
    HBA_PORT_EVENT_CALLBACK callback;
    void* data;
    HBA_WWN port;
};

struct Libraries {
    std::vector<Adapter> adapters;
    std::deque<Registration> registrations; // the first one has the handle 1
    std::optional<uint32_t> toldAdapters;   // in place of their number

    std::vector<RM_DRIVERPARAM> globalParams;
    RM_STATUS tooSmall = RM_STATUS_MORE_DATA; // for lack of room
    std::optional<uint32_t> toldNeed;         // in place of the room that the parameters need
    std::optional<uint32_t> toldParams;       // in place of their number
    std::optional<uint32_t> toldImages;       // in place of the load list's count
    std::optional<uint32_t> toldTargets;      // in place of the mapping's count
    // What a logical unit writes to response and sense data, and its status, else nothing and 0.
    std::function<uint32_t(const ScsiCommand&, uint8_t*, uint8_t*)> scsi;
    void* attributePlace = nullptr; // where values are told to be, in place of the truth
    // From the cursor and the next one, where a walk through the VPD leads.
    std::function<char*(char*, char*)> vpdStep;

    // Requests that change an adapter or reach for a target, each the entry point with its
    // arguments; and what the other calls write, where it is set.
    std::vector<std::string> requests;
    std::deque<RM_DIAGRESULT> results; // of diagnostic tests, one a call and the last for ever
    std::string dumpDirectory;
    std::optional<uint32_t> number; // a count or state
    std::vector<std::string> dumpFiles;
    std::optional<uint32_t> toldVirtualPorts; // in place of their number
    std::vector<RM_VMENTRY> machines;         // of every virtual port

    // Statuses for the next calls of an entry point, one a call; 0 lets a call through.
    std::map<std::string, std::deque<uint32_t>, std::less<>> statuses;
    std::map<std::string, int, std::less<>> calls;
    int openHandles = 0;

    // Runs in every call before it is answered, with the name of the entry point.
    std::function<void(const std::string&)> entered;
    std::function<int32_t()> initLib; // what LRM_InitLib does, else 0
};

using Access = Libraries* (*)();
constexpr char accessName[] = "fake_libraries";

} // namespace fake

extern "C" fake::Libraries* fake_libraries();
