// The transceiver of a port.
#include "access/bounded_text.h"
#include "access/inventory.h"
#include "access/method_wrapper.h"
#include "agent/creation.h"
#include "agent/port_inventory.h"
#include "common/formatted.h"

#include <algorithm>

namespace cimple {

namespace {

constexpr uint16 removal_condition_not_applicable = 2;

bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Without the white space at the end. A text of nothing else keeps its first character.
std::string trimmed(std::string text) {
    while (text.size() > 1 && is_space(text.back())) {
        text.pop_back();
    }
    return text;
}

void set_manufacture_date(TVRHBA_Transceiver& transceiver, const char (&code)[6]) {
    TVR_LOG("DateCode: %s", toString(code).c_str());
    if (!std::all_of(code, code + sizeof code, [](char c) { return c >= '0' && c <= '9'; })) {
        return;
    }
    const auto number = [&code](int i) { return (code[i] - '0') * 10 + (code[i + 1] - '0'); };
    const int year = number(0) + (number(0) > 69 ? 1900 : 2000);
    const std::string text = formatted("%04d%02d%02d000000.000000+000", year, number(2), number(4));
    TVR_LOG("%s", text.c_str());
    Datetime date;
    if (date.set(text.c_str())) {
        transceiver.ManufactureDate.set(date);
        TVR_LOG("ManufactureDate: %s", date.ascii().c_str());
    }
}

void set_identity(TVRHBA_Transceiver& transceiver, const RM_SFFDATA& data) {
    transceiver.Identifier.set(data.identifier);
    TVR_LOG("Identifier: %xh", data.identifier);
    transceiver.ExtIdentifier.set(data.extendedIdentifier);
    TVR_LOG("ExtIdentifier: %xh", data.extendedIdentifier);
    transceiver.Connector.set(data.connector);
    TVR_LOG("Connector: %xh", data.connector);
    transceiver.WaveLength.set(data.wavelength);
    TVR_LOG("Wavelength: %d nm", data.wavelength);
}

void set_diagnostics(TVRHBA_Transceiver& transceiver, const RM_SFFDATA& data) {
    transceiver.Temperature.set(data.temperature);
    transceiver.TemperatureUnit.set("Celsius");
    TVR_LOG("Temperature: %-6.2f C", static_cast<double>(data.temperature));
    transceiver.Vcc.set(data.vcc);
    TVR_LOG("Vcc:  %-6.2f V", static_cast<double>(data.vcc));
    transceiver.TxBiasCurrent.set(data.txBiasCurrent);
    TVR_LOG("TxBiasCurrent: %-6.2f mA", static_cast<double>(data.txBiasCurrent));
    transceiver.TxPower.set(data.txPower);
    TVR_LOG("TxPower: %-6.2f mW", static_cast<double>(data.txPower));
    transceiver.RxPower.set(data.rxPower);
    TVR_LOG("RxPower: %-6.2f mW", static_cast<double>(data.rxPower));
}

void fill(TVRHBA_Transceiver& transceiver, const std::string& deviceId, const RM_SFFDATA& data) {
    transceiver.CreationClassName.set("TVRHBA_Transceiver");
    transceiver.Description.set("Tavrin PhysicalComponent Data");
    transceiver.RemovalConditions.set(removal_condition_not_applicable);
    transceiver.OperationalStatus.set(Array<uint16>{0});
    transceiver.StatusDescriptions.set(Array<String>{"unknown"});

    TVR_LOG("PhysicalComponentInstance for : %s", deviceId.c_str());
    const std::string vendor = trimmed(toString(data.vendorName));
    transceiver.Manufacturer.set(vendor);
    TVR_LOG("VendorName: %s", vendor.c_str());
    const std::string oui =
        formatted("%02X-%02X-%02x", data.vendorOui[0], data.vendorOui[1], data.vendorOui[2]);
    transceiver.OUI.set(oui);
    TVR_LOG("VendorOUI: %s", oui.c_str());
    const std::string part = toString(data.vendorPartNumber);
    transceiver.PartNumber.set(part);
    TVR_LOG("VendorPN: %s", part.c_str());
    const std::string revision = trimmed(toString(data.vendorRevision));
    transceiver.Version.set(revision);
    TVR_LOG("VendorRev: %s", revision.c_str());
    const std::string serial = trimmed(toString(data.vendorSerialNumber));
    transceiver.SerialNumber.set(serial);
    TVR_LOG("VendorSN: %s#", serial.c_str());
    const String name = deviceId + ":" + serial;
    transceiver.Tag.set(name);
    transceiver.Name.set(name);
    transceiver.ElementName.set(name);
    transceiver.InstanceID.set(name);

    set_manufacture_date(transceiver, data.dateCode);
    if (data.hasIdentity != 0) {
        set_identity(transceiver, data);
    }
    if (data.hasDiagnostics != 0) {
        set_diagnostics(transceiver, data);
    }
}

} // namespace

TVRHBA_Transceiver* CreateTransceiver(Instance_Maps& maps, const std::string& deviceId) try {
    HBA_WWN name;
    if (!TVR_MethodWrapper::deviceIdToHBAName(name, deviceId)) {
        return nullptr;
    }
    RM_SFFDATA data;
    if (readTransceiver(name, data) != RM_STATUS_OK) {
        TVR_LOG("Unable to obtain transceiver data for this host bus adapter.");
        return nullptr;
    }
    TVR_LOG("RM_GetSffData succesful");
    auto transceiver = try_make<TVRHBA_Transceiver>();
    if (!transceiver) {
        TVR_LOG("Success...");
        return nullptr;
    }
    fill(*transceiver, deviceId, data);
    TVRHBA_Transceiver* inserted = insert(maps.m_CIM_PhysicalComponent_map, std::move(transceiver),
                                          "Insert Failed : m_CIM_PhysicalComponent_map ");
    if (inserted != nullptr) {
        TVR_LOG("Success...");
    }
    return inserted;
} catch (const std::bad_alloc&) {
    return nullptr;
}

} // namespace cimple
