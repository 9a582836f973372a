#include "host/tvrcim/value_names.h"

#include <algorithm>
#include <span>

namespace tvrcim {

using tvrhost::Cim_Value;

namespace {

struct Name {
    std::uint64_t value;
    const char* text;
};

constexpr Name operational_status[] = {{0, "Unknown"},
                                       {1, "Other"},
                                       {2, "OK"},
                                       {3, "Degraded"},
                                       {4, "Stressed"},
                                       {5, "Predictive Failure"},
                                       {6, "Error"},
                                       {7, "Non-Recoverable Error"},
                                       {8, "Starting"},
                                       {9, "Stopping"},
                                       {10, "Stopped"},
                                       {11, "In Service"},
                                       {12, "No Contact"},
                                       {13, "Lost Communication"},
                                       {14, "Aborted"},
                                       {15, "Dormant"},
                                       {16, "Supporting Entity in Error"},
                                       {17, "Completed"},
                                       {18, "Power Mode"},
                                       {19, "Relocating"},
                                       // of the ports of this module
                                       {0x8008, "Loopback"},
                                       {0x8014, "Operational, needs reset"},
                                       {0x8015, "Link down, needs reset"},
                                       {0x8016, "Disabled"}};
constexpr Name health_state[] = {{0, "Unknown"},
                                 {5, "OK"},
                                 {10, "Degraded/Warning"},
                                 {15, "Minor failure"},
                                 {20, "Major failure"},
                                 {25, "Critical failure"},
                                 {30, "Non-recoverable error"}};
constexpr Name communication_status[] = {{0, "Unknown"},
                                         {1, "Not Available"},
                                         {2, "Communication OK"},
                                         {3, "Lost Communication"},
                                         {4, "No Contact"}};
constexpr Name primary_status[] = {{0, "Unknown"}, {1, "OK"}, {2, "Degraded"}, {3, "Error"}};
constexpr Name job_state[] = {
    {2, "New"},        {3, "Starting"},       {4, "Running"},
    {5, "Suspended"},  {6, "Shutting Down"},  {7, "Completed"},
    {8, "Terminated"}, {9, "Killed"},         {10, "Exception"},
    {11, "Service"},   {12, "Query Pending"}, {0x8000, "Failed"}}; // of the tests of this module
constexpr Name completion_state[] = {{0, "Unknown"},   {1, "Other"},  {2, "OK"},
                                     {3, "Warning"},   {4, "Failed"}, {5, "Aborted"},
                                     {6, "Incomplete"}};
constexpr Name enabled_state[] = {{0, "Unknown"},  {1, "Other"},         {2, "Enabled"},
                                  {3, "Disabled"}, {4, "Shutting Down"}, {5, "Not Applicable"},
                                  {6, "Offline"},  {7, "In Test"},       {8, "Deferred"},
                                  {9, "Quiesce"},  {10, "Starting"}};
constexpr Name requested_state[] = {{0, "Unknown"},   {2, "Enabled"},   {3, "Disabled"},
                                    {4, "Shut Down"}, {5, "No Change"}, {6, "Offline"},
                                    {7, "Test"},      {8, "Deferred"},  {9, "Quiesce"},
                                    {10, "Reboot"},   {11, "Reset"},    {12, "Not Applicable"}};
constexpr Name enabled_default[] = {{2, "Enabled"}, {3, "Disabled"},   {5, "Not Applicable"},
                                    {6, "Offline"}, {7, "No Default"}, {9, "Quiesce"}};
constexpr Name availability[] = {
    {1, "Other"},    {2, "Unknown"},        {3, "Running"},         {4, "Warning"},
    {5, "In Test"},  {6, "Not Applicable"}, {7, "Power Off"},       {8, "Off Line"},
    {9, "Off Duty"}, {10, "Degraded"},      {11, "Not Installed"},  {12, "Install Error"},
    {18, "Paused"},  {19, "Not Ready"},     {20, "Not Configured"}, {21, "Quiesced"}};
constexpr Name location_indicator[] = {{0, "Unknown"}, {2, "On"}, {3, "Off"}, {4, "Not Supported"}};
constexpr Name usage_restriction[] = {
    {0, "Unknown"}, {2, "Front-end only"}, {3, "Back-end only"}, {4, "Not restricted"}};
constexpr Name port_type[] = {{0, "Unknown"}, {1, "Other"}, {10, "N"}, {11, "NL"},
                              {12, "F/NL"},   {13, "Nx"},   {14, "E"}, {15, "F"},
                              {16, "FL"},     {17, "B"},    {18, "G"}};
constexpr Name link_technology[] = {{0, "Unknown"}, {1, "Other"}, {2, "Ethernet"}, {3, "IB"},
                                    {4, "FC"},      {5, "FDDI"},  {6, "ATM"}};
constexpr Name fc4_type[] = {{0, "Unknown"},
                             {1, "Other"},
                             {4, "ISO/IEC 8802-2 LLC"},
                             {5, "IP over FC"},
                             {8, "SCSI-FCP"},
                             {9, "SCSI-GPP"},
                             {25, "SBCCS Channel"},
                             {26, "SBCCS Control Unit"},
                             {27, "FC-SB-2 Channel"},
                             {28, "FC-SB-2 Control Unit"},
                             {32, "Fibre Channel Services"},
                             {33, "FC-FG"},
                             {34, "FC-SW"},
                             {35, "FC-AL"},
                             {36, "SNMP"}};
constexpr Name controller_protocol[] = {{1, "Other"},
                                        {2, "Unknown"},
                                        {9, "SCSI Parallel Interface"},
                                        {10, "SCSI Fibre Channel Protocol"}};
constexpr Name classification[] = {{0, "Unknown"},
                                   {1, "Other"},
                                   {2, "Driver"},
                                   {3, "Configuration Software"},
                                   {4, "Application Software"},
                                   {5, "Instrumentation"},
                                   {6, "Firmware/BIOS"},
                                   {7, "Diagnostic Software"},
                                   {8, "Operating System"},
                                   {9, "Middleware"},
                                   {10, "Firmware"},
                                   {11, "BIOS/FCode"},
                                   {12, "Support/Service Pack"},
                                   {13, "Software Bundle"}};
constexpr Name package_type[] = {
    {0, "Unknown"}, {1, "Other"}, {2, "Rack"}, {3, "Chassis/Frame"}, {9, "Module/Card"}};
constexpr Name connection_type[] = {{1, "Other"}, {2, "Fibre Channel"}};
constexpr Name scsi_role[] = {
    {0, "Unknown"}, {2, "Initiator"}, {3, "Target"}, {4, "Initiator and Target"}};
constexpr Name organisation[] = {{1, "Other"}, {2, "DMTF"}, {11, "SNIA"}};
constexpr Name advertise_type[] = {{1, "Other"}, {2, "Not Advertised"}, {3, "SLP"}, {4, "UDDI"}};
constexpr Name log_state[] = {{0, "Unknown"}, {2, "Normal"}, {3, "Erasing"}, {4, "Not Applicable"}};

// Of a property in the class that declares it and those below.
struct Table {
    const char* class_name;
    const char* property;
    std::span<const Name> names;
};

constexpr Table tables[] = {
    {"CIM_ManagedSystemElement", "OperationalStatus", operational_status},
    {"CIM_ManagedSystemElement", "HealthState", health_state},
    {"CIM_ManagedSystemElement", "CommunicationStatus", communication_status},
    {"CIM_ManagedSystemElement", "PrimaryStatus", primary_status},
    {"CIM_EnabledLogicalElement", "EnabledState", enabled_state},
    {"CIM_EnabledLogicalElement", "RequestedState", requested_state},
    {"CIM_EnabledLogicalElement", "TransitioningToState", requested_state},
    {"CIM_EnabledLogicalElement", "EnabledDefault", enabled_default},
    {"CIM_LogicalDevice", "Availability", availability},
    {"CIM_LogicalDevice", "LocationIndicator", location_indicator},
    {"CIM_LogicalPort", "UsageRestriction", usage_restriction},
    {"CIM_NetworkPort", "LinkTechnology", link_technology},
    {"CIM_FCPort", "PortType", port_type},
    {"CIM_FCPort", "SupportedFC4Types", fc4_type},
    {"CIM_FCPort", "ActiveFC4Types", fc4_type},
    {"CIM_PortController", "ControllerType", link_technology},
    {"CIM_Controller", "ProtocolSupported", controller_protocol},
    {"CIM_SoftwareIdentity", "Classifications", classification},
    {"CIM_PhysicalPackage", "PackageType", package_type},
    {"CIM_SCSIProtocolEndpoint", "ConnectionType", connection_type},
    {"CIM_SCSIProtocolEndpoint", "Role", scsi_role},
    {"CIM_RegisteredSpecification", "RegisteredOrganization", organisation},
    {"CIM_RegisteredSpecification", "AdvertiseTypes", advertise_type},
    {"CIM_Log", "LogState", log_state},
    {"CIM_ConcreteJob", "JobState", job_state},
    {"CIM_DiagnosticCompletionRecord", "CompletionState", completion_state},
};

bool is_below(const tvrmof::Class* model, std::string_view name) {
    for (; model != nullptr; model = model->super) {
        if (tvrmof::same_name(model->name, name)) {
            return true;
        }
    }
    return false;
}

std::span<const Name> names_of(const tvrmof::Class* model, const std::string& property) {
    const auto table = std::find_if(std::begin(tables), std::end(tables), [&](const Table& each) {
        return tvrmof::same_name(each.property, property) && is_below(model, each.class_name);
    });
    return table == std::end(tables) ? std::span<const Name>() : table->names;
}

std::string with_name(const Cim_Value& value, std::span<const Name> names) {
    std::string literal = value.literal();
    const auto name = std::find_if(names.begin(), names.end(), [&](const Name& each) {
        return literal == std::to_string(each.value);
    });
    return name == names.end() ? literal : literal + " (" + name->text + ")";
}

} // namespace

std::string named_literal(const tvrmof::Class* model, const tvrhost::Named_Value& property) {
    const Cim_Value& value = property.value;
    const std::span<const Name> names = names_of(model, property.name);
    if (names.empty() || value.is_null()) {
        return value.literal();
    }
    if (!value.is_array()) {
        return with_name(value, names);
    }
    std::string text = "{";
    for (const Cim_Value& element : value.elements()) {
        text += (text.size() == 1 ? "" : ", ") + with_name(element, names);
    }
    return text + "}";
}

std::string number_of_name(const tvrmof::Class* model, const std::string& property,
                           const std::string& text) {
    for (const Name& name : names_of(model, property)) {
        if (tvrmof::same_name(name.text, text)) {
            return std::to_string(name.value);
        }
    }
    return text;
}

} // namespace tvrcim
